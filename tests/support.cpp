#include "support.h"

#include "clock.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <thread>

namespace {

using lapwing::Clock;

FakeClock* fakeClock = nullptr;

thread_local bool areAllocationsCounted = false;
thread_local std::size_t allocationCount = 0;
thread_local std::size_t failingAllocation = 0;

}  // namespace

Clock::time_point lapwing::now() noexcept {
    return fakeClock != nullptr ? fakeClock->read() : Clock::now();
}

void lapwing::sleepFor(Clock::duration pause) {
    if (fakeClock != nullptr) {
        fakeClock->sleep(pause);
    } else {
        std::this_thread::sleep_for(pause);
    }
}

FakeClock::FakeClock() {
    fakeClock = this;
}

FakeClock::~FakeClock() {
    fakeClock = nullptr;
}

void exitOnTerminate() {
    std::set_terminate([] {
        std::fputs("terminated", stderr);
        std::_Exit(3);
    });
}

void* operator new(std::size_t size) {
    if (areAllocationsCounted && ++allocationCount == failingAllocation) {
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

std::size_t countAllocations(const std::function<void()>& action, std::size_t failing) {
    struct Counting {
        ~Counting() { areAllocationsCounted = false; }
    } const counting;
    allocationCount = 0;
    failingAllocation = failing;
    areAllocationsCounted = true;
    action();
    return allocationCount;
}

std::size_t failEachAllocation(const std::function<void()>& action,
                               const std::function<void()>& verify) {
    for (std::size_t failing = 1;; ++failing) {
        try {
            countAllocations(action, failing);
            return failing - 1;
        } catch (const std::bad_alloc&) {
        }
        verify();
    }
}
