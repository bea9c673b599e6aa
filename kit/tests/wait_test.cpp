#include <lapwing/kit/replay.h>
#include <lapwing/kit/wait.h>

#include "system_timer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

using Time = Clock::time_point;
constexpr auto exact = Waiting::Exact;
constexpr auto economical = Waiting::Economical;

// Here time passes with each reading of the clock, and as tests say.
constexpr std::chrono::nanoseconds perReading = 10us;
std::atomic<std::chrono::nanoseconds::rep> elapsed{0};
std::atomic<int> readings{0};
std::function<void(Time)> onSleep;

void passUntil(Time end) {  // the next reading
    elapsed = std::chrono::nanoseconds(end.time_since_epoch()).count() - perReading.count();
}

}  // namespace

Time lapwing::now() noexcept {
    ++readings;
    return Time(std::chrono::nanoseconds(elapsed += perReading.count()));
}

void lapwing::sleepUntilAbout(Time time) noexcept {
    onSleep(time);
}

namespace {

TEST(Wait, SleepsUntilItsPointAndSpinsOnlyIfItIsToBeExact) {
    constexpr int spins = timerTolerance / perReading;
    constexpr Time start(1h);
    const struct {
        const char* name;
        Waiting waiting;
        Time deadline;
        std::size_t earlyWakeUps;
        Clock::duration late;
        std::size_t sleeps;
        std::ptrdiff_t readings;
    } cases[] = {
        {"exact", exact, start + 5ms, 0, 0ns, 1, 2 + spins},
        {"exact, woken early", exact, start + 5ms, 3, 0ns, 4, 5 + spins},
        {"exact, woken late", exact, start + 5ms, 0, 9ms, 1, 3},
        {"exact and near", exact, start + timerTolerance / 2, 0, 0ns, 0, 1 + spins / 2},
        {"exact and past", exact, start - 1ns, 0, 0ns, 0, 2},
        {"exact and first", exact, Time::min(), 0, 0ns, 0, 1},
        {"exact and last", exact, Time::max(), 1, 0ns, 2, 3 + spins},
        {"economical", economical, start + 5ms, 0, 0ns, 1, 2},
        {"economical, woken early", economical, start + 5ms, 3, 0ns, 4, 5},
        {"economical and past", economical, start, 0, 0ns, 0, 1},
        {"economical and first", economical, Time::min(), 0, 0ns, 0, 1},
        {"economical and last", economical, Time::max(), 1, 0ns, 2, 3},
    };
    for (const auto& row : cases) {
        std::vector<Time> sleeps;
        onSleep = [&](Time end) {
            sleeps.push_back(end);
            if (sleeps.size() > row.earlyWakeUps) {
                passUntil(end + row.late);
            }
        };
        passUntil(start);
        readings = 0;
        waitUntil(row.deadline, row.waiting);
        EXPECT_EQ(readings, row.readings) << row.name;
        const auto before = row.waiting == exact && row.sleeps > 0 ? timerTolerance : 0us;
        const Time wakeUp = row.deadline - before;
        EXPECT_EQ(sleeps, std::vector<Time>(row.sleeps, wakeUp)) << row.name;
    }
}

TEST(Wait, PadsWhatWorkTookInNanoseconds) {
    onSleep = passUntil;
    for (const auto took : {0ns, 3'000'000ns, 9'000'000ns}) {
        Replayer replayer({{}, {{"Scan", {9ms}}}});
        replayer.run("Scan", [&] { elapsed += took.count(); });
        const ReplayStep step = replayer.report().operations["Scan"].steps.at(0);
        EXPECT_EQ(step.work, took + perReading);
        EXPECT_EQ(step.ended, 9ms + perReading * (took < 9ms ? 1 : 2));
    }
}

TEST(Wait, RunsInParallelAndLocksNothingMeanwhile) {
    Replayer replayer({{}, {{"Scan", {9ms}}}}, ReplayPolicy::average(), economical);
    std::vector<std::thread> threads(8);
    std::atomic<std::size_t> asleep{0};
    std::atomic<bool> reported{false};
    onSleep = [&](Time end) {
        if (++asleep == threads.size()) {
            EXPECT_TRUE(replayer.report().operations["Scan"].steps.empty());
            reported = true;
        }
        while (!reported) {
            std::this_thread::yield();
        }
        passUntil(end);
    };
    for (std::thread& thread : threads) {
        thread = std::thread([&] { replayer("Scan", 0ms); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(replayer.report().operations["Scan"].steps.size(), threads.size());
}

}  // namespace
