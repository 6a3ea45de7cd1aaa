# Mistakes with memory end the program: buffers that overflow are found where their size is known, and
# so are stacks that were written over; calls and jumps go where functions and labels are; tables of
# the linker are read-only before the first call.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
  string(MAKE_C_IDENTIFIER "ZEB_HAS${flag}" has)
  check_cxx_compiler_flag(${flag} ${has})
  if(${has})
    target_compile_options(zeb_build INTERFACE ${flag})
  endif()
endforeach()
# Sizes are only known to a compiler that optimizes.
target_compile_options(zeb_build INTERFACE
  $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
target_link_options(zeb_build INTERFACE LINKER:-z,relro,-z,now LINKER:-z,noexecstack)
