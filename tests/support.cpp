#include "support.h"

#include "clock.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

using namespace std::chrono_literals;

namespace {

lapwing::Clock::time_point currentTime{1h};

// The allocation that counts it down to 0 fails.
thread_local std::size_t allocationsToFailure = 0;

}  // namespace

lapwing::Clock::time_point lapwing::now() noexcept {
    return currentTime;
}

void lapwing::sleepFor(Clock::duration pause) {
    advanceClock(std::min<Clock::duration>(pause, 7ms));
}

void advanceClock(std::chrono::nanoseconds length) {
    currentTime += length;
}

void* operator new(std::size_t size) {
    const bool isFailing = allocationsToFailure != 0 && --allocationsToFailure == 0;
    void* const memory = isFailing ? nullptr : std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

std::size_t failEachAllocation(const std::function<void()>& action,
                               const std::function<void()>& verify) {
    for (std::size_t failed = 0;; ++failed) {
        allocationsToFailure = failed + 1;
        try {
            action();
        } catch (const std::bad_alloc&) {
        }
        if (std::exchange(allocationsToFailure, 0) != 0) {
            return failed;
        }
        verify();
    }
}
