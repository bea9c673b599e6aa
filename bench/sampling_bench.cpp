#include <lapwing/timing_profiles.h>

#include "comparisons.h"
#include "floors.h"

namespace {

const std::string name = "SceneLoader::load";

void sample(benchmark::State& state) {
    TimingProfileCollector collector;
    comparisons::repeat(state, [&] {
        collectTimingProfileSample(std::ref(collector), name, [](Instrumentation&) {});
    });
}

void sampleFloor(benchmark::State& state) {
    floors::Collector collector;
    const auto collect = [&](const std::string& operation, Milliseconds duration) {
        collector.collect(operation, duration);
    };
    comparisons::repeat(state, [&] { floors::collectTimed(collect, name, [](floors::Scope&) {}); });
}

}  // namespace

void compareSampling() {
    comparisons::Comparison comparison{"collectTimingProfileSample around empty work", 1.10, sample,
                                       sampleFloor};
    comparison.iterations = 200'000;
    comparisons::add(comparison);
}
