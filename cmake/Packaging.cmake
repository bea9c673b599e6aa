set(CPACK_PACKAGE_VENDOR "The Lapwing maintainers")
set(CPACK_PACKAGE_CONTACT "The Lapwing maintainers <maintainers@lapwing.invalid>")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "This package holds the library that programs load.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "This package holds what is needed to build programs with it.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# The pages, with what they link to. Their links to headers lead to where those are installed.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_DOCDIR}
    OUTPUT_VARIABLE headers)
file(GLOB pages CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.md docs/*.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${pages})
foreach(page IN LISTS pages)
    file(READ ${page} text)
    string(REGEX REPLACE "\\]\\((\\.\\./|)(kit/|)include/" "](\\1${headers}/" text "${text}")
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/pages/${page} "${text}")
endforeach()
install(DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/pages/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
    FILES_MATCHING PATTERN *.cpp PATTERN *.h PATTERN *.svg)

# The kit contains code of nlohmann-json, whose licence asks for its notice.
set(notices ${CMAKE_INSTALL_DOCDIR}/licences)
if(LAPWING_BUILD_KIT)
    set(LAPWING_JSON_LICENCE /usr/share/doc/nlohmann-json3-dev/copyright CACHE FILEPATH
        "Licence of nlohmann-json, which is installed with the kit")
    if(EXISTS ${LAPWING_JSON_LICENCE})
        install(FILES ${LAPWING_JSON_LICENCE} DESTINATION ${notices} RENAME nlohmann-json.txt)
    else()
        message(WARNING "What is installed will lack the licence of nlohmann-json: set "
            "LAPWING_JSON_LICENCE to the file that holds it.")
    endif()
endif()

# The notices are those of the Debian packages that the DLLs come from.
if(LAPWING_INSTALL_RUNTIME)
    foreach(dll IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
            OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        file(REAL_PATH ${path} path)
        execute_process(COMMAND dpkg-query -S ${path}
            OUTPUT_VARIABLE package COMMAND_ERROR_IS_FATAL ANY)
        string(REGEX REPLACE ":.*" "" package ${package})
        set(stripped ${CMAKE_CURRENT_BINARY_DIR}/runtime/${dll})
        file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/runtime)
        execute_process(COMMAND ${CMAKE_STRIP} -o ${stripped} ${path} COMMAND_ERROR_IS_FATAL ANY)
        install(FILES ${stripped} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
        install(FILES /usr/share/doc/${package}/copyright
            DESTINATION ${notices} RENAME ${dll}.txt COMPONENT runtime)
    endforeach()
    install(FILES /usr/share/common-licenses/GPL-3 DESTINATION ${notices} COMPONENT runtime)
endif()

# Archives are named after the compiler too, since hosts must share it.
string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}-${CMAKE_CXX_COMPILER_ID}" platform)
set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-${platform})

get_target_property(so_version lapwing SOVERSION)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME liblapwing${so_version})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liblapwing-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)

include(CPack)
