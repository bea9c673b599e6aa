include(${CMAKE_CURRENT_LIST_DIR}/lapwing-targets.cmake)
