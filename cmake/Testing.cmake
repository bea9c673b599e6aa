enable_testing()

# GoogleTest: its sources where they are given or where Debian keeps them, since a sanitizer or
# another standard library wants it built alike; else an installed package.
set(LAPWING_GOOGLETEST_SOURCE "/usr/src/googletest" CACHE PATH "Sources of GoogleTest")
if(EXISTS ${LAPWING_GOOGLETEST_SOURCE}/CMakeLists.txt)
    set(BUILD_GMOCK OFF)
    set(INSTALL_GTEST OFF)
    set(gtest_force_shared_crt ON)
    add_subdirectory(${LAPWING_GOOGLETEST_SOURCE} googletest EXCLUDE_FROM_ALL)
else()
    find_package(GTest QUIET)
endif()
if(NOT TARGET GTest::gtest_main)
    message(FATAL_ERROR "LAPWING_BUILD_TESTS needs GoogleTest, which was not found. Install it "
        "(Debian's package googletest), or set LAPWING_GOOGLETEST_SOURCE to the folder of its "
        "sources.")
endif()
