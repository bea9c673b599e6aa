#include "support.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <new>

namespace {

std::atomic<bool> isClockFake{false};
std::atomic<std::int64_t> fakeTime{0};
std::atomic<std::int64_t> fakeTimePerReading{0};
std::atomic<int> clockReadings{0};

thread_local bool areAllocationsCounted = false;
thread_local std::size_t allocationCount = 0;
thread_local std::size_t failingAllocation = 0;

std::int64_t nextFakeTime() {
    return fakeTime += fakeTimePerReading;
}

#ifdef _MSC_VER
// Microsoft's steady clock is inline: nothing can stand in for it.
std::int64_t systemTime() {
    return 0;
}
#else
std::int64_t systemTime() {
    constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * nanosecondsPerSecond + now.tv_nsec;
}
#endif

}  // namespace

#ifndef _MSC_VER
std::chrono::steady_clock::time_point std::chrono::steady_clock::now() noexcept {
    ++clockReadings;
    return time_point(duration(isClockFake ? nextFakeTime() : systemTime()));
}
#endif

FakeClock::FakeClock(std::chrono::nanoseconds perReading) {
    fakeTime = systemTime();
    fakeTimePerReading = perReading.count();
    clockReadings = 0;
    isClockFake = true;
}

FakeClock::~FakeClock() {
    isClockFake = false;
}

void FakeClock::advance(std::chrono::nanoseconds time) {
    fakeTime += time.count();
}

int FakeClock::readings() {
    return clockReadings;
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
