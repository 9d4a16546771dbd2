include(${CMAKE_CURRENT_LIST_DIR}/ala-targets.cmake)
