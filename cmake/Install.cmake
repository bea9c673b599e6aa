include(CMakePackageConfigHelpers)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/lapwing)

install(TARGETS lapwing EXPORT lapwing-targets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY include/lapwing ${CMAKE_CURRENT_BINARY_DIR}/generated/lapwing
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN *.h)
install(EXPORT lapwing-targets NAMESPACE lapwing:: DESTINATION ${package_dir})

write_basic_package_version_file(lapwing-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    cmake/lapwing-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/lapwing-config-version.cmake
    DESTINATION ${package_dir})

# The prefix is where the file lies, so that an installation can be moved, unless the folder of
# libraries was fixed by an absolute path.
set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(pc_prefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(pc_prefix /)
    cmake_path(RELATIVE_PATH pc_prefix BASE_DIRECTORY /${pc_dir})
    string(PREPEND pc_prefix "\${pcfiledir}/")
endif()
cmake_path(APPEND pc_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
cmake_path(APPEND pc_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
configure_file(cmake/lapwing.pc.in lapwing.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/lapwing.pc DESTINATION ${pc_dir})

if(LAPWING_BUILD_KIT)
    install(TARGETS lapwing_kit EXPORT lapwing-kit-targets)
    install(DIRECTORY kit/include/lapwing DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN *.h)
    install(EXPORT lapwing-kit-targets NAMESPACE lapwing:: DESTINATION ${package_dir})
    configure_file(cmake/lapwing-kit.pc.in lapwing-kit.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/lapwing-kit.pc DESTINATION ${pc_dir})
endif()

if(LAPWING_BUILD_COMMAND)
    # The archives can be unpacked anywhere.
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
        OUTPUT_VARIABLE libraries)
    set_target_properties(lapwing_command PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
    install(TARGETS lapwing_command RUNTIME COMPONENT tools)
    install(FILES command/lapwing.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
    install(FILES command/lapwing.bash RENAME lapwing COMPONENT tools
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()
