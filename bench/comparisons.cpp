#include "comparisons.h"

#include <sstream>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace comparisons {

namespace {

// The report finds the bounds in the output's context.
void addBound(const std::string& key, double bound) {
    std::ostringstream text;
    text << bound;
    benchmark::AddCustomContext(key, text.str());
}

void measure(const Comparison& comparison, const std::string& side, const Body& body,
             std::int64_t iterations) {
    auto* const benchmark =
        benchmark::RegisterBenchmark((comparison.name + "/" + side).c_str(), body);
    if (comparison.threads > 1) {
        benchmark->Threads(comparison.threads);
    }
    if (comparison.isWallTime || comparison.threads > 1) {
        benchmark->UseRealTime();
    }
    if (iterations > 0) {
        benchmark->Iterations(iterations);
    }
}

void measure(const Growth& growth, const std::string& side, const Body& body) {
    auto* const benchmark = benchmark::RegisterBenchmark((growth.name + "/" + side).c_str(), body);
    for (std::int64_t size = growth.first; size <= growth.last; size *= 10) {
        benchmark->Arg(size);
    }
}

}  // namespace

void add(const Comparison& comparison) {
    addBound(comparison.name + "/times floor", comparison.timesFloor);
    measure(comparison, "lapwing", comparison.lapwing, comparison.iterations);
    measure(comparison, "floor", comparison.floor, comparison.iterations);
    for (const Peer& peer : comparison.peers) {
        addBound(comparison.name + "/peer/" + peer.name, peer.timesFaster);
        if (peer.body) {
            measure(comparison, peer.name, peer.body, 0);
        }
    }
}

void add(const Growth& growth) {
    measure(growth, "lapwing", growth.lapwing);
    measure(growth, "floor", growth.floor);
}

std::size_t allocatedBytes() {
#if defined(__GLIBC__)
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#else
    return 0;
#endif
}

}  // namespace comparisons
