include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/lapwing)

install(TARGETS lapwing EXPORT lapwing-targets)
install(DIRECTORY include/lapwing ${CMAKE_CURRENT_BINARY_DIR}/generated/lapwing
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT lapwing-targets NAMESPACE lapwing:: DESTINATION ${package_dir})

write_basic_package_version_file(lapwing-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    cmake/lapwing-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/lapwing-config-version.cmake
    DESTINATION ${package_dir})
