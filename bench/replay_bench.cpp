// How far calls that replay a recorded average end from it, and the processor time that they spend
// besides their work, next to a bare sleep to the same deadline. Prints one JSON object per kind of
// call, with the figures of each call in nanoseconds.

#include <lapwing/kit/replay.h>
#include <lapwing/timing_profiles.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <iostream>
#include <thread>

namespace {

using lapwing::Replayer;
using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::nanoseconds;

const std::string name = "SceneLoader::load";

struct Call {
    Milliseconds average;
    Nanoseconds standIn;
};

// Zero where the system does not tell it.
Nanoseconds processorTime() {
#if defined(CLOCK_THREAD_CPUTIME_ID)
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + Nanoseconds(time.tv_nsec);
#else
    return Nanoseconds::zero();
#endif
}

// Keeps the processor busy as work would, and knows how much of its time that took.
class StandIn {
public:
    explicit StandIn(Nanoseconds time) : duration(time) {}

    void operator()() {
        const Clock::time_point end = Clock::now() + duration;
        const Nanoseconds before = processorTime();
        while (Clock::now() < end) {
        }
        spent += processorTime() - before;
    }

    [[nodiscard]] Nanoseconds processorTimeSpent() const { return spent; }

private:
    Nanoseconds duration;
    Nanoseconds spent{0};
};

void sleepUntil(Clock::time_point deadline) {
#if defined(__linux__)
    const auto count = deadline.time_since_epoch().count();
    const timespec time{count / 1'000'000'000, count % 1'000'000'000};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr);
#else
    std::this_thread::sleep_until(deadline);
#endif
}

// One way to make calls last, and the figures of each call.
struct Way {
    const char* title;
    std::function<void(Clock::time_point start, StandIn& work)> replay;
    std::vector<std::int64_t> late = {};
    std::vector<std::int64_t> spent = {};
};

void measure(Way& way, const Call& call) {
    StandIn work(call.standIn);
    const Nanoseconds before = processorTime();
    const Clock::time_point start = Clock::now();
    way.replay(start, work);
    const Clock::time_point end = Clock::now();
    const Nanoseconds spent = processorTime() - before - work.processorTimeSpent();
    way.late.push_back((end - start - call.average).count());
    way.spent.push_back(spent.count());
}

void print(const std::vector<std::int64_t>& values) {
    const char* separator = "[";
    for (const std::int64_t value : values) {
        std::cout << separator << value;
        separator = ",";
    }
    std::cout << ']';
}

void print(const Way& way) {
    std::cout << R"(,")" << way.title << R"(":{"late":)";
    print(way.late);
    std::cout << R"(,"spent":)";
    print(way.spent);
    std::cout << '}';
}

void print(const char* load, const Call& call, const std::vector<Way>& ways) {
    std::cout << R"({"load":")" << load << R"(","average_ms":)" << call.average.count()
              << R"(,"stand_in_ns":)" << call.standIn.count();
    for (const Way& way : ways) {
        print(way);
    }
    std::cout << '}' << std::endl;
}

// The ways take turns.
void measure(std::vector<Way>& ways, const Call& call, Milliseconds time) {
    const auto calls = std::clamp<std::int64_t>(time / call.average, 1, 500);
    for (std::int64_t i = 0; i < calls; ++i) {
        for (Way& way : ways) {
            measure(way, call);
        }
    }
}

void report(const char* load, const Call& call, Milliseconds time) {
    TimingProfile profile;
    profile.samples[name] = {call.average};
    TimingProfileEmulator emulator;
    emulator.setProfile(profile);
    Replayer exact(profile);
    Replayer economical(profile, lapwing::ReplayPolicy::average(), lapwing::Waiting::Economical);
    std::vector<Way> ways = {
        {"emulator",
         [&](Clock::time_point, StandIn& work) {
             emulateTimingProfile(std::ref(emulator), name, [&](Instrumentation&) { work(); });
         }},
        {"exact", [&](Clock::time_point, StandIn& work) { exact.run(name, work); }},
        {"economical", [&](Clock::time_point, StandIn& work) { economical.run(name, work); }},
        {"bare",
         [&](Clock::time_point start, StandIn& work) {
             work();
             sleepUntil(start + call.average);
         }},
    };
    measure(ways, call, time);
    print(load, call, ways);
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

// The argument is how many milliseconds of calls to make in each way, for each kind of call.
int main(int argc, char** argv) {
    const Milliseconds time(argc > 1 ? std::atoi(argv[1]) : 0);
    reportAll("idle", time);
    const EveryCoreBusy busy;
    reportAll("busy", time);
}
