#include <thread>

#include "comparisons.h"

int main(int argc, char** argv) {
    // Hosts have threads. In a process that has never had a second one, the C library leaves out
    // the atomic part of each lock.
    std::thread([] {}).join();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::AddCustomContext("compiler", LAPWING_BENCH_COMPILER);
    benchmark::AddCustomContext("build", LAPWING_BENCH_BUILD);
    compareSettings();
    compareInstrumentation();
    compareCollector();
    compareEmulator();
    compareSampling();
#if defined(LAPWING_BENCH_KIT)
    compareRecordingFiles();
    compareReplayer();
    compareLayeredSettings();
#endif
#if defined(LAPWING_BENCH_COMMAND)
    compareProcesses();
#endif
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
