#include <lapwing/kit/shaping.h>

#include "support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

const decltype(TimingProfile::notes) notes{{"a", "of a"}, {"noted", ""}};
const Durations a{5ms, -5ms, 9ms, 1ms};
const TimingProfile profile{notes, {{"a", a}, {"b", {7ms}}, {"idle", {}}}};

TEST(Shaping, GivesANewProfile) {
    constexpr Milliseconds most = Milliseconds::max();
    constexpr Milliseconds least = Milliseconds::min();
    constexpr Milliseconds odd((1LL << 60) + 1);
    const TimingProfile large{{}, {{"a", {odd, -odd, least}}}};
    const std::pair<TimingProfile, TimingProfile> cases[] = {
        {scaled(profile, 0.7), {notes, {{"a", {4ms, -4ms, 6ms, 1ms}}, {"b", {5ms}}, {"idle", {}}}}},
        {scaled(large, 1), large},
        {scaled(large, 7.5), {{}, {{"a", {odd / 2 * 15, odd / 2 * -15, least}}}}},
        {scaled(large, 8), {{}, {{"a", {most, least, least}}}}},
        {trimmed(profile, 50, 75), {notes, {{"a", {5ms, 1ms}}, {"b", {7ms}}, {"idle", {}}}}},
        {trimmed(profile, 0, 0), {notes, {{"a", {-5ms}}, {"b", {7ms}}, {"idle", {}}}}},
        {reducedToPercentile(profile, 100), {notes, {{"a", {9ms}}, {"b", {7ms}}, {"idle", {}}}}},
        {reducedToAverage(profile), {notes, {{"a", {2ms}}, {"b", {7ms}}, {"idle", {}}}}},
        {renamed(profile, "b", "a"), {notes, {{"a", {5ms, -5ms, 9ms, 1ms, 7ms}}, {"idle", {}}}}},
        {renamed(profile, "a", "b"),
         {{{"b", "of a"}, {"noted", ""}}, {{"b", {7ms, 5ms, -5ms, 9ms, 1ms}}, {"idle", {}}}}},
        {renamed(profile, "noted", "a"), {{{"a", "of a"}}, profile.samples}},
        {renamed(profile, "a", "a"), profile},
        {only(profile, {"a", "b", "a"}), {{{"a", "of a"}}, {{"a", a}, {"b", {7ms}}}}},
        {without(profile, {"b", "a", "a"}), {{{"noted", ""}}, {{"idle", {}}}}},
    };
    for (const auto& [actual, expected] : cases) {
        EXPECT_EQ(actual.samples, expected.samples);
        EXPECT_EQ(actual.notes, expected.notes);
    }
}

TEST(Shaping, RefusesUnknownNames) {
    const auto errorOf = [](const auto& call) { return messageOf<std::invalid_argument>(call); };
    const std::string expected = R"(no name "x"; there is "a", "b", "idle", "noted")";
    EXPECT_EQ(errorOf([] { return renamed(profile, "x", "x"); }), expected);
    EXPECT_EQ(errorOf([] { return only(profile, {"a", "x"}); }), expected);
    EXPECT_EQ(errorOf([] { return without(profile, {"x"}); }), expected);
    EXPECT_EQ(errorOf([] { return without({}, {"x"}); }),
              R"(no name "x"; the profile has no names)");
}

TEST(Shaping, RefusesNumbersOutOfRange) {
    for (const double bad : {-0.001, std::nan(""), HUGE_VAL}) {
        EXPECT_THROW((void)scaled({}, bad), std::invalid_argument) << bad;
        EXPECT_THROW((void)reducedToPercentile({}, bad), std::invalid_argument) << bad;
        EXPECT_THROW((void)trimmed({}, bad, 90), std::invalid_argument) << bad;
        EXPECT_THROW((void)trimmed({}, 10, bad), std::invalid_argument) << bad;
    }
    EXPECT_THROW((void)trimmed({}, 51, 50), std::invalid_argument);
}

}  // namespace
