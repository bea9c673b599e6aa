#include <lapwing/kit/replay.h>
#include <lapwing/kit/wait.h>

#include "support.h"
#include "system_timer.h"

#include <gtest/gtest.h>

#include <atomic>
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

Time lapwing::coarseNow() noexcept {
    return now();
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
        Time deadline;
        std::size_t earlyWakeUps;
        Clock::duration late;
        std::size_t sleeps;
        Waiting waiting;
        int readings;
    } cases[] = {
        {"exact", start + 5ms, 0, 0ns, 1, exact, 2 + spins},
        {"exact, woken early", start + 5ms, 3, 0ns, 4, exact, 5 + spins},
        {"exact, woken late", start + 5ms, 0, 9ms, 1, exact, 3},
        {"exact and near", start + timerTolerance / 2, 0, 0ns, 0, exact, 1 + spins / 2},
        {"exact and past", start - 1ns, 0, 0ns, 0, exact, 2},
        {"exact and last", Time::max(), 1, 0ns, 2, exact, 3 + spins},
        {"economical", start + 5ms, 0, 0ns, 1, economical, 2},
        {"economical, woken early", start + 5ms, 3, 0ns, 4, economical, 5},
        {"economical and first", Time::min(), 0, 0ns, 0, economical, 1},
        {"economical and last", Time::max(), 1, 0ns, 2, economical, 3},
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
    for (const Waiting waiting : {exact, economical}) {
        Replayer replayer({{}, {{"Scan", {9ms}}}}, ReplayPolicy::average(), waiting);
        Time wakeUp;
        onSleep = [&](Time end) { passUntil(wakeUp = end); };
        passUntil(Time(1h));
        replayer.run("Scan", [] { elapsed += 3'000'000; });
        replayer.run("Scan", [] { elapsed += 9'000'000; });
        const auto steps = replayer.report().operations["Scan"].steps;
        EXPECT_EQ(wakeUp, Time(1h + 9ms) - (waiting == exact ? timerTolerance : 0us));
        EXPECT_EQ(steps.at(0).work, 3ms + perReading);
        EXPECT_EQ(steps.at(0).ended, 9ms + perReading);
        EXPECT_EQ(steps.at(1).work, 9ms + perReading);
    }
}

TEST(Wait, RunsInParallelAndLocksNothingMeanwhile) {
    Replayer replayer({{}, {{"Scan", {9ms}}}}, ReplayPolicy::average(), economical);
    std::atomic<int> asleep{0};
    std::atomic<bool> reported{false};
    onSleep = [&](Time end) {
        if (++asleep == 8) {
            EXPECT_TRUE(replayer.report().operations["Scan"].steps.empty());
            reported = true;
        }
        while (!reported) {
            std::this_thread::yield();
        }
        passUntil(end);
    };
    onEightThreads([&replayer](int) { replayer("Scan", 0ms); });
    EXPECT_EQ(replayer.report().operations["Scan"].steps.size(), 8U);
}

}  // namespace
