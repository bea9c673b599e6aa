// How far calls that replay a recorded average end from it, next to a bare sleep to the same
// deadline. Prints one JSON object per kind of call, with each call's lateness in nanoseconds.

#include <lapwing/timing_profiles.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <thread>

#if defined(__linux__)
#include <ctime>
#endif

namespace {

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::nanoseconds;

const std::string name = "SceneLoader::load";

struct Call {
    Milliseconds average;
    Nanoseconds standIn;
};

struct Lateness {
    std::vector<std::int64_t> lapwing;
    std::vector<std::int64_t> bare;
};

void workFor(Nanoseconds duration) {
    const Clock::time_point end = Clock::now() + duration;
    while (Clock::now() < end) {
    }
}

void sleepUntil(Clock::time_point deadline) {
#if defined(__linux__)
    const auto count = deadline.time_since_epoch().count();
    const timespec time{count / 1'000'000'000, count % 1'000'000'000};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr);
#else
    std::this_thread::sleep_until(deadline);
#endif
}

template <class Replay>
std::int64_t lateness(const Call& call, Replay replay) {
    const Clock::time_point start = Clock::now();
    replay(start);
    return (Clock::now() - start - call.average).count();
}

Lateness measure(const Call& call, Milliseconds time) {
    TimingProfile profile;
    profile.samples[name] = {call.average};
    TimingProfileEmulator emulator;
    emulator.setProfile(profile);
    Lateness result;
    const auto calls = std::clamp<std::int64_t>(time / call.average, 1, 500);
    for (std::int64_t i = 0; i < calls; ++i) {
        result.lapwing.push_back(lateness(call, [&](Clock::time_point) {
            emulateTimingProfile(std::ref(emulator), name,
                                 [&](Instrumentation&) { workFor(call.standIn); });
        }));
        result.bare.push_back(lateness(call, [&](Clock::time_point start) {
            workFor(call.standIn);
            sleepUntil(start + call.average);
        }));
    }
    return result;
}

void print(const std::vector<std::int64_t>& values) {
    const char* separator = "[";
    for (const std::int64_t value : values) {
        std::cout << separator << value;
        separator = ",";
    }
    std::cout << ']';
}

void report(const char* load, const Call& call, Milliseconds time) {
    const Lateness result = measure(call, time);
    std::cout << R"({"load":")" << load << R"(","average_ms":)" << call.average.count()
              << R"(,"stand_in_ns":)" << call.standIn.count() << R"(,"lapwing":)";
    print(result.lapwing);
    std::cout << R"(,"bare":)";
    print(result.bare);
    std::cout << '}' << std::endl;
}

void reportAll(const char* load, Milliseconds time) {
    for (const int average : {1, 2, 5, 10, 50, 200}) {
        for (const int percent : {0, 10, 90}) {
            const Milliseconds whole(average);
            report(load, {whole, Nanoseconds(whole) * percent / 100}, time);
        }
    }
}

class EveryCoreBusy {
public:
    EveryCoreBusy() {
        for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i) {
            threads.emplace_back([this] {
                while (!isOver) {
                }
            });
        }
    }
    EveryCoreBusy(const EveryCoreBusy&) = delete;
    EveryCoreBusy& operator=(const EveryCoreBusy&) = delete;
    ~EveryCoreBusy() {
        isOver = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

private:
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
};

}  // namespace

// The argument is how many milliseconds of sleep to spend on each kind of call.
int main(int argc, char** argv) {
    const Milliseconds time(argc > 1 ? std::atoi(argv[1]) : 0);
    reportAll("idle", time);
    const EveryCoreBusy busy;
    reportAll("busy", time);
}
