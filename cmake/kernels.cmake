# Sources named *_4.cpp, *_8.cpp and *_16.cpp are compiled once for every instruction set: for as
# many lanes of floats as their names say. Takes those that this machine can't have off the list.
function(zeb_kernel_sources list)
  set(sources ${${list}})
  set(kernels4 ${sources})
  set(kernels8 ${sources})
  set(kernels16 ${sources})
  list(FILTER kernels4 INCLUDE REGEX "_4\\.cpp$")
  list(FILTER kernels8 INCLUDE REGEX "_8\\.cpp$")
  list(FILTER kernels16 INCLUDE REGEX "_16\\.cpp$")
  # Vectors are handed over by value, but never to another translation unit.
  set(all -Wno-psabi)
  if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 8)
    # The stack is aligned to 16 bytes there, which GCC forgets when vectors are longer.
    list(APPEND all -Wa,-muse-unaligned-vector-move)
  endif()
  set_property(SOURCE ${kernels4} PROPERTY COMPILE_OPTIONS ${all})
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "86|AMD64")
    set_property(SOURCE ${kernels8} PROPERTY COMPILE_OPTIONS ${all} -mavx2)
    set(avx512 -mavx512f -mavx512dq -mavx512vl -mavx512bw -mprefer-vector-width=512)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # To GCC its own header looks as if it left variables uninitialized.
      list(APPEND avx512 -Wno-uninitialized -Wno-maybe-uninitialized)
    endif()
    set_property(SOURCE ${kernels16} PROPERTY COMPILE_OPTIONS ${all} ${avx512})
  else()
    list(REMOVE_ITEM sources ${kernels8} ${kernels16})
  endif()
  # Headers compiled for another instruction set don't fit.
  set_property(SOURCE ${kernels4} ${kernels8} ${kernels16} PROPERTY SKIP_PRECOMPILE_HEADERS ON)
  set(${list} ${sources} PARENT_SCOPE)
endfunction()
