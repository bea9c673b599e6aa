set(CPACK_PACKAGE_VENDOR "The Lapwing maintainers")
set(CPACK_PACKAGE_CONTACT "The Lapwing maintainers <maintainers@lapwing.invalid>")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "This package holds the library that programs load.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "This package holds what is needed to build programs with it.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "This package holds a command that records how long programs take.")
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
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
    FILES_MATCHING PATTERN *.cpp PATTERN *.h PATTERN *.svg PATTERN *.png)

# The kit contains code of nlohmann-json, and the command that of CLI11, too. Their licences ask for
# their notices.
set(notices ${CMAKE_INSTALL_DOCDIR}/licences)

# install_notice(NAME PACKAGE COMPONENT FOLDER): as the Debian package has it.
function(install_notice name package component folder)
    string(TOUPPER "LAPWING_${name}_LICENCE" variable)
    set(${variable} /usr/share/doc/${package}/copyright CACHE FILEPATH
        "Licence of what ${package} holds, which is installed")
    if(EXISTS ${${variable}})
        string(REGEX REPLACE "3?-dev$" "" file ${package})
        install(FILES ${${variable}} DESTINATION ${folder}/licences RENAME ${file}.txt
            COMPONENT ${component})
    else()
        message(WARNING
            "What is installed will lack the licence of ${name}: set ${variable} to its file.")
    endif()
endfunction()

set(notices ${CMAKE_INSTALL_DOCDIR}/licences)
set(LAPWING_TOOLS_DOCDIR ${CMAKE_INSTALL_DOCDIR} CACHE STRING "Where licences of the tools go")
if(LAPWING_BUILD_KIT)
    install_notice(json nlohmann-json3-dev development ${CMAKE_INSTALL_DOCDIR})
endif()
if(LAPWING_BUILD_COMMAND)
    install_notice(json nlohmann-json3-dev tools ${LAPWING_TOOLS_DOCDIR})
    install_notice(cli11 libcli11-dev tools ${LAPWING_TOOLS_DOCDIR})
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
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME lapwing-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)

include(CPack)
