option(LAPWING_BUILD_TESTS "Build the tests, which need GoogleTest" OFF)
option(LAPWING_BUILD_EXAMPLES "Build the example host, which needs the kit" OFF)
option(LAPWING_BUILD_BENCHMARKS "Build the benchmarks, which need Google Benchmark" OFF)
option(LAPWING_BUILD_KIT "Build the kit, which needs nlohmann-json" OFF)
option(LAPWING_BUILD_COMMAND "Build the lapwing command, which needs the kit and CLI11" OFF)
option(LAPWING_BUILD_FUZZERS "Build the kit's fuzz target, which needs clang" OFF)
option(LAPWING_INSTALL_RUNTIME "Install MinGW's runtime DLLs, with their licences, too" OFF)
option(LAPWING_WARNINGS_AS_ERRORS "Stop at warnings" OFF)
if(LAPWING_BUILD_EXAMPLES OR LAPWING_BUILD_COMMAND)
    set(LAPWING_BUILD_KIT ON)
endif()

if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_CXX_EXTENSIONS OFF)
    # One folder for all of them, since Windows looks for a DLL beside the program.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
    get_property(is_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(NOT is_multi_config AND NOT CMAKE_BUILD_TYPE)
        set(CMAKE_BUILD_TYPE Release CACHE STRING
            "Release, Debug, RelWithDebInfo or MinSizeRel" FORCE)
    endif()
endif()

# Off: g++ 12 accuses its own std::string in C++20.
add_library(lapwing_warnings INTERFACE)
target_compile_options(lapwing_warnings INTERFACE
    $<$<COMPILE_LANG_AND_ID:CXX,GNU,Clang,AppleClang>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow;$<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>;$<$<BOOL:${LAPWING_WARNINGS_AS_ERRORS}>:-Werror>>
    $<$<COMPILE_LANG_AND_ID:CXX,MSVC>:/W4;/permissive-;$<$<BOOL:${LAPWING_WARNINGS_AS_ERRORS}>:/WX>>)
