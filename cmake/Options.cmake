# Everything but the library is for those who work on it, not for projects that include it.
option(LAPWING_BUILD_EXAMPLES "Build the example hosts" ${PROJECT_IS_TOP_LEVEL})
option(LAPWING_BUILD_BENCHMARKS "Build the benchmarks" ${PROJECT_IS_TOP_LEVEL})
set(LAPWING_BUILD_TESTS OFF)
if(PROJECT_IS_TOP_LEVEL AND BUILD_TESTING)
    set(LAPWING_BUILD_TESTS ON)
endif()

if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_CXX_EXTENSIONS OFF)
endif()

get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(PROJECT_IS_TOP_LEVEL AND NOT is_multi_config AND NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Release, Debug, RelWithDebInfo or MinSizeRel" FORCE)
endif()

option(LAPWING_WARNINGS_AS_ERRORS "Stop at warnings" OFF)
add_library(lapwing_warnings INTERFACE)
target_compile_options(lapwing_warnings INTERFACE
    $<$<COMPILE_LANG_AND_ID:CXX,GNU,Clang,AppleClang>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow;$<$<BOOL:${LAPWING_WARNINGS_AS_ERRORS}>:-Werror>>
    $<$<COMPILE_LANG_AND_ID:CXX,MSVC>:/W4;/permissive-;$<$<BOOL:${LAPWING_WARNINGS_AS_ERRORS}>:/WX>>)
