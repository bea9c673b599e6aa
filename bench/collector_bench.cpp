#include <lapwing/timing_profiles.h>

#include "comparisons.h"
#include "floors.h"

#include <algorithm>
#include <memory>
#include <random>

#if defined(LAPWING_BENCH_PROMETHEUS)
#include <prometheus/histogram.h>
#endif

namespace {

const std::string name = "SceneLoader::load";

void collect(TimingProfileCollector& collector, const std::string& operation) {
    collector.collectSample(operation, Milliseconds(5));
}
void collect(floors::Collector& collector, const std::string& operation) {
    collector.collect(operation, Milliseconds(5));
}
TimingProfile extract(const TimingProfileCollector& collector) {
    return collector.extractProfile();
}
TimingProfile extract(const floors::Collector& collector) {
    return collector.extract();
}

// The threads of one run share a collector: the first makes it and takes it away, while the others
// wait at the start and at the end of the measurement.
template <class Collector>
void collectTogether(benchmark::State& state) {
    static std::unique_ptr<Collector> collector;
    if (state.thread_index() == 0) {
        collector = std::make_unique<Collector>();
    }
    comparisons::repeat(state, [&] { collect(*collector, name); });
    if (state.thread_index() == 0) {
        collector.reset();
    }
}

comparisons::Body observeHistogram() {
#if defined(LAPWING_BENCH_PROMETHEUS)
    return [](benchmark::State& state) {
        prometheus::Histogram histogram({1, 2, 5, 10, 20, 50, 100, 200, 500, 1000});
        comparisons::repeat(state, [&] { histogram.Observe(5); });
    };
#else
    return {};
#endif
}

std::vector<std::string> names(std::int64_t count) {
    std::vector<std::string> result;
    for (std::int64_t i = 0; i < count; ++i) {
        result.push_back("SceneLoader::load/" + std::to_string(i));
    }
    std::shuffle(result.begin(), result.end(), std::mt19937());
    return result;
}

template <class Collector>
void copyEverything(benchmark::State& state, int samplesPerName) {
    Collector collector;
    for (const std::string& operation : names(100)) {
        for (int i = 0; i < samplesPerName; ++i) {
            collect(collector, operation);
        }
    }
    comparisons::repeat(state, [&] { return extract(collector); });
}

template <class Collector>
void fill(Collector& collector, std::int64_t samples) {
    for (std::int64_t i = 0; i < samples; ++i) {
        collect(collector, name);
    }
}

template <class Collector>
double bytesPerSample(std::int64_t samples) {
    const std::size_t before = comparisons::allocatedBytes();
    Collector collector;
    fill(collector, samples);
    const std::size_t bytes = comparisons::allocatedBytes() - before;
    return static_cast<double>(bytes) / static_cast<double>(samples);
}

template <class Collector>
void growOneName(benchmark::State& state) {
    state.counters["bytes per item"] = bytesPerSample<Collector>(state.range(0));
    comparisons::repeat(state, [&] {
        Collector collector;
        fill(collector, state.range(0));
    });
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Collector>
void growManyNames(benchmark::State& state) {
    const std::vector<std::string> operations = names(state.range(0));
    Collector collector;
    for (const std::string& operation : operations) {
        collect(collector, operation);
    }
    auto next = operations.begin();
    comparisons::repeat(state, [&] {
        collect(collector, *next);
        next = next + 1 == operations.end() ? operations.begin() : next + 1;
    });
    state.SetItemsProcessed(state.iterations());
}

void compareCollecting(int threads, double timesFloor,
                       const std::vector<comparisons::Peer>& peers) {
    comparisons::Comparison comparison{"collectSample on a known name: " + std::to_string(threads) +
                                           (threads == 1 ? " thread" : " threads"),
                                       timesFloor, collectTogether<TimingProfileCollector>,
                                       collectTogether<floors::Collector>, peers};
    comparison.threads = threads;
    comparison.iterations = threads == 1 ? 1'000'000 : 500'000;
    comparisons::add(comparison);
}

void compareExtracting(int samplesPerName) {
    comparisons::add(
        {"extractProfile: 100 names by " + std::to_string(samplesPerName) + " samples", 1.05,
         [=](auto& state) { copyEverything<TimingProfileCollector>(state, samplesPerName); },
         [=](auto& state) { copyEverything<floors::Collector>(state, samplesPerName); }});
}

}  // namespace

void compareCollector() {
    compareCollecting(1, 1.05, {{"prometheus-cpp Histogram::Observe", 0.9, observeHistogram()}});
    compareCollecting(2, 1.10, {});
    compareCollecting(8, 1.10, {});
    compareExtracting(100);
    compareExtracting(10'000);
    comparisons::add({"samples under one name", 1'000, 10'000'000,
                      growOneName<TimingProfileCollector>, growOneName<floors::Collector>});
    comparisons::add({"names", 1, 100'000, growManyNames<TimingProfileCollector>,
                      growManyNames<floors::Collector>});
}
