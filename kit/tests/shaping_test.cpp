#include <lapwing/kit/shaping.h>

#include <gtest/gtest.h>

#include <cmath>

using namespace std::chrono_literals;

namespace {

using Durations = std::vector<Milliseconds>;
using Samples = std::unordered_map<std::string, Durations>;
using Notes = std::unordered_map<std::string, std::string>;

constexpr Milliseconds odd = Milliseconds((1LL << 60) + 1);

const Notes notes{{"a", "of a"}, {"noted", ""}};
const TimingProfile profile{notes, {{"a", {5ms, -5ms, 9ms, 1ms}}, {"b", {7ms}}, {"idle", {}}}};

void expectProfile(const TimingProfile& actual, const Samples& samples, const Notes& kept) {
    EXPECT_EQ(actual.samples, samples);
    EXPECT_EQ(actual.notes, kept);
}

template <class Act>
std::string errorOf(Act act) {
    try {
        act();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

TEST(Shaping, ChangesTheSamplesOfEachName) {
    const auto expectA = [](const TimingProfile& actual, const Durations& a, Milliseconds b) {
        expectProfile(actual, {{"a", a}, {"b", {b}}, {"idle", {}}}, notes);
    };
    expectA(lapwing::scaled(profile, 0.7), {4ms, -4ms, 6ms, 1ms}, 5ms);
    expectA(lapwing::trimmed(profile, 50, 75), {5ms, 1ms}, 7ms);
    expectA(lapwing::reducedToPercentile(profile, 100), {9ms}, 7ms);
    expectA(lapwing::reducedToAverage(profile), {2ms}, 7ms);
    const TimingProfile limits{{}, {{"a", {odd, -odd, Milliseconds::min()}}}};
    EXPECT_EQ(lapwing::scaled(limits, 1).samples, limits.samples);
    expectProfile(lapwing::scaled(limits, 8),
                  {{"a", {Milliseconds::max(), Milliseconds::min(), Milliseconds::min()}}}, {});
    EXPECT_EQ(lapwing::scaled(limits, 7.5).samples.at("a")[0], odd / 2 * 15);
}

TEST(Shaping, RenamesJoinsAndSelects) {
    const Durations a = profile.samples.at("a");
    expectProfile(lapwing::renamed(profile, "b", "a"),
                  {{"a", {5ms, -5ms, 9ms, 1ms, 7ms}}, {"idle", {}}}, notes);
    expectProfile(lapwing::renamed(profile, "a", "b"),
                  {{"b", {7ms, 5ms, -5ms, 9ms, 1ms}}, {"idle", {}}},
                  {{"b", "of a"}, {"noted", ""}});
    expectProfile(lapwing::renamed(profile, "noted", "a"), profile.samples, {{"a", "of a"}});
    expectProfile(lapwing::renamed(profile, "a", "a"), profile.samples, notes);
    expectProfile(lapwing::only(profile, {"a", "b", "a"}), {{"a", a}, {"b", {7ms}}},
                  {{"a", "of a"}});
    expectProfile(lapwing::without(profile, {"b", "a", "a"}), {{"idle", {}}}, {{"noted", ""}});
}

TEST(Shaping, RefusesUnknownNamesAndNumbersOutOfRange) {
    const std::string expected = R"(no name "x"; there is "a", "b", "idle", "noted")";
    EXPECT_EQ(errorOf([] { (void)lapwing::renamed(profile, "x", "x"); }), expected);
    EXPECT_EQ(errorOf([] { (void)lapwing::only(profile, {"a", "x"}); }), expected);
    EXPECT_EQ(errorOf([] { (void)lapwing::without(profile, {"x"}); }), expected);
    TimingProfile many;
    EXPECT_EQ(errorOf([&] { (void)lapwing::only(many, {"x"}); }),
              R"(no name "x"; the profile has no names)");
    for (char name = 'a'; name <= 'w'; ++name) {
        many.notes[std::string(1, name)] = "";
    }
    const std::string cut = errorOf([&] { (void)lapwing::only(many, {"x"}); });
    EXPECT_EQ(cut.substr(cut.find("\"s")), R"("s", "t" and 3 more)");
    for (const double bad : {-0.001, std::nan(""), HUGE_VAL}) {
        EXPECT_NE(errorOf([=] { (void)lapwing::scaled({}, bad); }), "");
        EXPECT_NE(errorOf([=] { (void)lapwing::reducedToPercentile({}, bad); }), "");
        EXPECT_NE(errorOf([=] { (void)lapwing::trimmed({}, bad, 90); }), "");
        EXPECT_NE(errorOf([=] { (void)lapwing::trimmed({}, 10, bad); }), "");
    }
    EXPECT_NE(errorOf([] { (void)lapwing::trimmed({}, 51, 50); }), "");
    EXPECT_EQ(errorOf([] { (void)lapwing::trimmed({}, 0, 0); }), "");
}

}  // namespace
