#include <lapwing/kit/replay.h>

#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <utility>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

constexpr Milliseconds week = 168h;
constexpr Milliseconds wide(1LL << 62);
constexpr Milliseconds forever = Milliseconds::max();
const TimingProfile profile{{{"Scan", "slow"}, {"noted", "why"}, {"other", ""}},
                            {{"Scan", {9ms, 5ms, 6ms}}, {"Print", {9ms, 5ms, 6ms}}}};
const ReplayPolicy average = ReplayPolicy::average();
const ReplayPolicy order = ReplayPolicy::recordedOrder();
const ReplayPolicy random5 = ReplayPolicy::random(5).jittered(100ms, 5).scaled(50);

std::vector<Milliseconds::rep> targetsOf(const Replayer& replayer, const std::string& name) {
    std::vector<Milliseconds::rep> targets;
    const std::vector<ReplayStep> steps = replayer.report().operations[name].steps;
    std::transform(steps.begin(), steps.end(), std::back_inserter(targets),
                   [](const ReplayStep& step) { return step.target.count(); });
    return targets;
}

// Such calls have taken too long to be padded, whatever their target is.
void call(Replayer& replayer, const std::string& name, std::size_t times) {
    for (std::size_t i = 0; i < times; ++i) {
        replayer(name, week);
    }
}

TEST(Replay, TakesItsTargetsFromThePolicy) {
    const std::pair<ReplayPolicy, std::vector<Milliseconds::rep>> cases[] = {
        {average, {6, 6}},
        {ReplayPolicy::percentile(100), {9, 9}},
        {order, {9, 5, 6, 9, 5, 6, 9}},
        {order.scaled(0.7), {6, 4, 4}},
        {ReplayPolicy::percentile(0).scaled(0.5).scaled(3), {8, 8}},
        {order.capped(5ms).capped(6ms), {5, 5, 5}},
        {ReplayPolicy::random(1), {9, 5, 6, 6, 5, 6, 9, 6, 6, 6, 9, 5}},
        {ReplayPolicy::random(1ULL << 32), {5, 6, 9, 9, 9, 5, 9, 9, 5, 9, 9, 6}},
        {ReplayPolicy::percentile(0).jittered(7ms, 1), {1, 4, 6, 11, 4, 10, 2, 11, 12, 0, 0, 0}},
        {random5, {453, 271, 248, 379, 203, 237, 448, 238, 196, 218, 330, 315}},
        {average.capped(605ms).jittered(9ms, 4).scaled(100), {600, 603, 595, 604, 603, 592, 605}},
        {average.jittered(wide, 1).capped(1ms), {0, 0, 1, 0, 1, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 1}},
    };
    for (const auto& [policy, expected] : cases) {
        Replayer replayer(profile, policy);
        call(replayer, "Scan", expected.size());
        EXPECT_EQ(targetsOf(replayer, "Scan"), expected);
    }
}

TEST(Replay, GivesEachNameItsSequenceWhicheverThreadsCall) {
    Replayer shared(profile, random5);
    onEightThreads([&shared](int) {
        for (int i = 0; i < 200; ++i) {
            call(shared, "Scan", 1);
            call(shared, "Print", 1);
        }
    });
    Replayer alone(profile, random5);
    call(alone, "Scan", 1600);
    const auto sorted = [](auto targets) {
        std::sort(targets.begin(), targets.end());
        return targets;
    };
    EXPECT_EQ(sorted(targetsOf(shared, "Scan")), sorted(targetsOf(alone, "Scan")));
    EXPECT_NE(sorted(targetsOf(shared, "Scan")), sorted(targetsOf(shared, "Print")));
}

TEST(Replay, ReturnsWhatTheWorkReturns) {
    Replayer replayer({});
    int value = 1;
    const auto constant = [&]() -> const int& { return value; };
    const auto expiring = [&]() -> int&& { return static_cast<int&&>(value); };
    static_assert(std::is_same_v<decltype(replayer.run("", constant)), const int&>);
    static_assert(std::is_same_v<decltype(replayer.run("", expiring)), int&&>);
    int&& moved = replayer.run("", expiring);
    EXPECT_EQ(&moved, &value);
    EXPECT_EQ(&replayer.run("", constant), &value);
    EXPECT_EQ(*replayer.run("", [] { return std::make_unique<int>(7); }), 7);
    EXPECT_EQ(targetsOf(replayer, "").size(), 3U);
}

TEST(Replay, LeavesFailedWorkOut) {
    Replayer replayer(profile, order);
    const auto fail = [] { throw std::runtime_error("jam"); };
    EXPECT_THROW(replayer.run("Scan", fail), std::runtime_error);
    EXPECT_THROW(replayer.run("unknown", fail), std::runtime_error);
    EXPECT_EQ(replayer.report().operations.size(), 2U);
    call(replayer, "Scan", 1);
    EXPECT_EQ(targetsOf(replayer, "Scan"), std::vector<Milliseconds::rep>{9});
}

TEST(Replay, ServesTheCoreAsAHandler) {
    Replayer replayer(profile, average, Waiting::Economical);
    TimingProfileCollector collector;
    const auto work = [](Instrumentation&) { std::this_thread::sleep_for(2ms); };
    emulateTimingProfile(std::ref(replayer), "Scan", work);
    collectTimingProfileSampleAndEmulate(std::ref(collector), std::ref(replayer), "Scan", work);
    const auto steps = replayer.report().operations["Scan"].steps;
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_GE(std::min(steps[0].ended, steps[1].ended), 6ms);
    EXPECT_EQ(steps[1].work, collector.extractProfile().samples.at("Scan").at(0));
}

TEST(Replay, ReportsNamesThatHaveSamplesOrWereCalled) {
    Replayer replayer(profile);
    replayer("noted", -3ms);
    replayer("unknown", forever);
    auto operations = replayer.report().operations;
    ASSERT_EQ(operations.size(), 4U);
    EXPECT_EQ(operations["Scan"].recorded, 6ms);
    EXPECT_EQ(operations["noted"].note, "why");
    EXPECT_EQ(operations["noted"].steps.at(0).work, 0ns);
    EXPECT_EQ(operations["unknown"].recorded, std::nullopt);
    EXPECT_EQ(operations["unknown"].steps.at(0).work, week);
}

TEST(Replay, RefusesProfilesThatItCannotReplay) {
    const std::string fine = "nothing was thrown";
    const std::string refused = R"(cannot replay "a\n": )";
    const std::string tooLong = refused + "it could be made to last longer than seven days";
    const std::tuple<ReplayPolicy, Durations, std::string> cases[] = {
        {order, {}, refused + "it has no samples"},
        {order.scaled(0), {3ms, -7ms}, refused + "a sample is negative: -7 ms"},
        {order, {0ms, week}, fine},
        {order, {week + 1ms, 0ms}, tooLong},
        {average, {week + 1ms, 0ms}, fine},
        {order.scaled(1e300), {1ms}, tooLong},
        {order.jittered(1ms, 1), {week}, tooLong},
        {order.jittered(forever, 1), {0ms}, tooLong},
        {order.capped(week + 1ms), {week + 1ms}, tooLong},
        {order.capped(week).jittered(forever, 1), {forever}, fine},
    };
    for (const auto& row : cases) {
        const auto load = [&] { Replayer({{}, {{"a\n", std::get<1>(row)}}}, std::get<0>(row)); };
        EXPECT_EQ(messageOf<std::invalid_argument>(load), std::get<2>(row)) << &row - cases;
    }
}

TEST(Replay, RefusesArgumentsOutOfRange) {
    for (const double bad : {-0.001, std::nan(""), HUGE_VAL}) {
        EXPECT_THROW((void)ReplayPolicy::percentile(bad), std::invalid_argument) << bad;
        EXPECT_THROW((void)average.scaled(bad), std::invalid_argument) << bad;
    }
    EXPECT_THROW((void)average.scaled(1e200).scaled(1e200), std::invalid_argument);
    EXPECT_THROW((void)average.jittered(-1ms, 1), std::invalid_argument);
    EXPECT_THROW((void)average.capped(-1ms), std::invalid_argument);
}

}  // namespace
