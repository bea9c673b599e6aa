#include "rows.h"

#include <sstream>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace rows {

namespace {

// The report reads what a row is about from the context, under keys that begin with its name.
void describe(const std::string& key, const std::string& text) {
    benchmark::AddCustomContext(key, text);
}

std::string decimal(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

void measure(const Row& row, const std::string& side, const Body& body) {
    auto* const benchmark = benchmark::RegisterBenchmark((row.name + "/" + side).c_str(), body);
    if (row.threads > 1) {
        benchmark->Threads(row.threads)->UseRealTime();
    }
    if (row.iterations > 0) {
        benchmark->Iterations(row.iterations);
    }
}

void measure(const Growth& growth, const std::string& side, const Body& body) {
    auto* const benchmark = benchmark::RegisterBenchmark((growth.name + "/" + side).c_str(), body);
    for (std::int64_t size = growth.first; size <= growth.last; size *= 10) {
        benchmark->Arg(size);
    }
}

}  // namespace

void add(const Row& row) {
    describe(row.name + "/floor does", row.floorDoes);
    describe(row.name + "/times floor", decimal(row.timesFloor));
    measure(row, "lapwing", row.lapwing);
    measure(row, "floor", row.floor);
    for (const Peer& peer : row.peers) {
        describe(row.name + "/peer/" + peer.name, decimal(peer.timesFaster));
        if (peer.body) {
            measure(row, peer.name, peer.body);
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

}  // namespace rows
