include(${CMAKE_CURRENT_LIST_DIR}/lapwing-targets.cmake)

# Microsoft's debug and release runtimes do not mix, so neither stands in for the other.
if(WIN32 AND NOT MINGW)
    set_target_properties(lapwing::lapwing PROPERTIES
        MAP_IMPORTED_CONFIG_DEBUG Debug
        MAP_IMPORTED_CONFIG_RELEASE "Release;RelWithDebInfo;MinSizeRel"
        MAP_IMPORTED_CONFIG_RELWITHDEBINFO "RelWithDebInfo;Release;MinSizeRel"
        MAP_IMPORTED_CONFIG_MINSIZEREL "MinSizeRel;Release;RelWithDebInfo")
endif()
