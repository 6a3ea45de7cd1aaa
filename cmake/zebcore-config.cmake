include("${CMAKE_CURRENT_LIST_DIR}/zebcore-targets.cmake")
