# Everything but the library is for those who work on it, not for projects that include it.
option(LAPWING_BUILD_EXAMPLES "Build the example hosts" ${PROJECT_IS_TOP_LEVEL})
option(LAPWING_BUILD_BENCHMARKS "Build the benchmarks" ${PROJECT_IS_TOP_LEVEL})
set(LAPWING_BUILD_TESTS OFF)
if(PROJECT_IS_TOP_LEVEL AND BUILD_TESTING)
    set(LAPWING_BUILD_TESTS ON)
endif()

get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(PROJECT_IS_TOP_LEVEL AND NOT is_multi_config AND NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Release, Debug, RelWithDebInfo or MinSizeRel" FORCE)
endif()

# Whether warnings are errors is for the build to say: the presets do.
add_library(lapwing_warnings INTERFACE)
target_compile_options(lapwing_warnings INTERFACE
    $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow>
    $<$<CXX_COMPILER_ID:MSVC>:/W4;/permissive->)
