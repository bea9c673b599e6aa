include(${CMAKE_CURRENT_LIST_DIR}/lapwing-targets.cmake)

# Microsoft's debug and release runtimes do not mix. So release hosts of any kind get a release
# DLL, and debug hosts fail to link, rather than to run, where no debug DLL is installed.
if(WIN32 AND NOT MINGW)
    get_target_property(installed lapwing::lapwing IMPORTED_CONFIGURATIONS)
    if("RELEASE" IN_LIST installed)
        set_target_properties(lapwing::lapwing PROPERTIES
            MAP_IMPORTED_CONFIG_RELWITHDEBINFO "RelWithDebInfo;Release"
            MAP_IMPORTED_CONFIG_MINSIZEREL "MinSizeRel;Release")
    endif()
    if(NOT "DEBUG" IN_LIST installed)
        set_property(TARGET lapwing::lapwing APPEND PROPERTY
            INTERFACE_LINK_LIBRARIES $<$<CONFIG:Debug>:lapwingd>)
    endif()
    unset(installed)
endif()
