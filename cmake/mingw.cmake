# Compiles for Windows with MinGW-w64; included by mingw64.cmake and mingw32.cmake, which set
# mingw_target. The compilers with POSIX threads are named in full, Debian has both kinds.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${mingw_target}-gcc-posix)
set(CMAKE_CXX_COMPILER ${mingw_target}-g++-posix)
set(CMAKE_RC_COMPILER ${mingw_target}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${mingw_target})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
