# The kit is loaded wherever it is installed; naming it as a component requires it.
foreach(component IN LISTS lapwing_FIND_COMPONENTS)
    if(NOT component STREQUAL kit)
        set(reason "has no component \"${component}\", only \"kit\"")
    elseif(NOT EXISTS ${CMAKE_CURRENT_LIST_DIR}/lapwing-kit-targets.cmake)
        set(reason "was installed without the kit: build it with -DLAPWING_BUILD_KIT=ON")
    else()
        set(lapwing_${component}_FOUND TRUE)
        continue()
    endif()
    set(lapwing_${component}_FOUND FALSE)
    if(lapwing_FIND_REQUIRED_${component})
        set(lapwing_NOT_FOUND_MESSAGE "lapwing in ${CMAKE_CURRENT_LIST_DIR} ${reason}")
        set(lapwing_FOUND FALSE)
        return()
    endif()
endforeach()

include(${CMAKE_CURRENT_LIST_DIR}/lapwing-targets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/lapwing-kit-targets.cmake OPTIONAL)

# Microsoft's debug and release runtimes do not mix. So release hosts of any kind get a release
# DLL, and debug hosts fail to link, rather than to run, where no debug DLL is installed.
if(WIN32 AND NOT MINGW)
    get_target_property(installed lapwing::lapwing IMPORTED_CONFIGURATIONS)
    if("RELEASE" IN_LIST installed)
        foreach(target IN ITEMS lapwing::lapwing lapwing::kit)
            if(TARGET ${target})
                set_target_properties(${target} PROPERTIES
                    MAP_IMPORTED_CONFIG_RELWITHDEBINFO "RelWithDebInfo;Release"
                    MAP_IMPORTED_CONFIG_MINSIZEREL "MinSizeRel;Release")
            endif()
        endforeach()
    endif()
    if(NOT "DEBUG" IN_LIST installed)
        set_property(TARGET lapwing::lapwing APPEND PROPERTY
            INTERFACE_LINK_LIBRARIES $<$<CONFIG:Debug>:lapwingd>)
    endif()
    unset(installed)
endif()
