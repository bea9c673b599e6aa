// What a benchmark consists of: the library, the floor and the peers, side by side under one name.

#ifndef LAPWING_BENCH_COMPARISONS_H
#define LAPWING_BENCH_COMPARISONS_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

namespace comparisons {

using Body = std::function<void(benchmark::State&)>;

struct Peer {
    std::string name;
    // How many times faster than the peer the library must be.
    double timesFaster;
    // Empty if the peer was not installed when this was built.
    Body body;
};

struct Comparison {
    std::string name;
    // How many times the floor's time the library may take.
    double timesFloor;
    Body lapwing;
    Body floor;
    std::vector<Peer> peers = {};
    int threads = 1;
    // Zero: as many as take long enough, as with peers. A number, where what is measured grows.
    std::int64_t iterations = 0;
    // Whether the wall's time counts, as it does for several threads.
    bool isWallTime = false;
};

void add(const Comparison& comparison);

// Cost per item, from the first size to the last in steps of ten. A body takes the size from
// state.range(0).
struct Growth {
    std::string name;
    std::int64_t first;
    std::int64_t last;
    Body lapwing;
    Body floor;
};

void add(const Growth& growth);

// The bytes that the process has allocated; zero where that is unknown.
std::size_t allocatedBytes();

template <class Operation>
void repeat(benchmark::State& state, Operation operation) {
    for ([[maybe_unused]] auto _ : state) {
        if constexpr (std::is_void_v<decltype(operation())>) {
            operation();
        } else {
            auto result = operation();
            benchmark::DoNotOptimize(result);
        }
        benchmark::ClobberMemory();
    }
}

}  // namespace comparisons

// One for each unit.
void compareSettings();
void compareInstrumentation();
void compareCollector();
void compareEmulator();
void compareSampling();
void compareRecordingFiles();
void compareReplayer();
void compareLayeredSettings();
void compareProcesses();

#endif  // LAPWING_BENCH_COMPARISONS_H
