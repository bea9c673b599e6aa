#include "rows.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::AddCustomContext("compiler", LAPWING_BENCH_COMPILER);
    benchmark::AddCustomContext("build", LAPWING_BENCH_BUILD);
    addSettingsRows();
    addInstrumentationRows();
    addCollectorRows();
    addEmulatorRows();
    addSamplingRows();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
