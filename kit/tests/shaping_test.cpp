#include <lapwing/kit/shaping.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

using namespace std::chrono_literals;

namespace {

using Durations = std::vector<Milliseconds>;
using Samples = std::unordered_map<std::string, Durations>;
using Notes = std::unordered_map<std::string, std::string>;

constexpr Milliseconds odd = Milliseconds((1LL << 60) + 1);

// "idle" has no samples, "noted" has a note only.
const Notes notes{{"a", "note of a"}, {"noted", "text"}};
const TimingProfile profile{notes, {{"a", {5ms, -5ms, 9ms, 1ms}}, {"b", {7ms}}, {"idle", {}}}};

void expectProfile(const TimingProfile& actual, const Samples& samples, const Notes& kept) {
    EXPECT_EQ(actual.samples, samples);
    EXPECT_EQ(actual.notes, kept);
}

std::string errorOf(const std::function<void()>& act) {
    try {
        act();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "no error";
}

TEST(Shaping, ChangesTheSamplesAndKeepsTheRest) {
    const auto expectSamples = [](const TimingProfile& actual, const Durations& a,
                                  const Durations& b) {
        expectProfile(actual, {{"a", a}, {"b", b}, {"idle", {}}}, notes);
    };
    expectSamples(lapwing::scaled(profile, 0.5), {3ms, -3ms, 5ms, 1ms}, {4ms});
    expectSamples(lapwing::trimmed(profile, 50, 75), {5ms, 1ms}, {7ms});
    expectSamples(lapwing::trimmed(profile, 25, 25), {-5ms}, {7ms});
    expectSamples(lapwing::reducedToPercentile(profile, 100), {9ms}, {7ms});
    expectSamples(lapwing::reducedToAverage(profile), {2ms}, {7ms});
}

TEST(Shaping, ScalesWithRoundingAndWithinTheLimits) {
    struct Case {
        Milliseconds sample;
        double factor;
        Milliseconds result;
    };
    const Milliseconds most = Milliseconds::max();
    const Milliseconds least = Milliseconds::min();
    for (const Case& row :
         {Case{5ms, 0.7, 4ms}, Case{-5ms, 0.7, -4ms}, Case{7ms, 0, 0ms}, Case{odd, 1, odd},
          Case{most, 1, most}, Case{odd, 7.5, odd / 2 * 15}, Case{odd, 8, most},
          Case{-odd, 7.5, -odd / 2 * 15}, Case{-odd, 9, least}, Case{least, 1e308, least}}) {
        const TimingProfile result = lapwing::scaled({{}, {{"a", {row.sample}}}}, row.factor);
        EXPECT_EQ(result.samples.at("a"), Durations{row.result})
            << row.sample.count() << " * " << row.factor;
    }
}

TEST(Shaping, RenamesAndJoins) {
    expectProfile(lapwing::renamed(profile, "b", "c"),
                  {{"a", {5ms, -5ms, 9ms, 1ms}}, {"c", {7ms}}, {"idle", {}}}, notes);
    expectProfile(lapwing::renamed(profile, "b", "a"),
                  {{"a", {5ms, -5ms, 9ms, 1ms, 7ms}}, {"idle", {}}}, notes);
    expectProfile(lapwing::renamed(profile, "a", "b"),
                  {{"b", {7ms, 5ms, -5ms, 9ms, 1ms}}, {"idle", {}}},
                  {{"b", "note of a"}, {"noted", "text"}});
    expectProfile(lapwing::renamed(profile, "noted", "a"), profile.samples, {{"a", "note of a"}});
    expectProfile(lapwing::renamed(profile, "a", "a"), profile.samples, notes);
}

TEST(Shaping, SelectsByName) {
    expectProfile(lapwing::only(profile, {"a", "b", "a"}),
                  {{"a", {5ms, -5ms, 9ms, 1ms}}, {"b", {7ms}}}, {{"a", "note of a"}});
    expectProfile(lapwing::without(profile, {"a", "b", "a"}), {{"idle", {}}}, {{"noted", "text"}});
}

TEST(Shaping, RefusesUnknownNamesAndListsTheKnownOnes) {
    const std::string expected = R"(no name "x"; there is "a", "b", "idle", "noted")";
    EXPECT_EQ(errorOf([] { (void)lapwing::renamed(profile, "x", "x"); }), expected);
    EXPECT_EQ(errorOf([] { (void)lapwing::only(profile, {"a", "x"}); }), expected);
    EXPECT_EQ(errorOf([] { (void)lapwing::without(profile, {"x"}); }), expected);
    EXPECT_EQ(errorOf([] { (void)lapwing::only({}, {"x"}); }), R"(no name "x"; there is none)");
    TimingProfile many;
    for (char name = 'a'; name <= 'w'; ++name) {
        many.notes[std::string(1, name)] = "";
    }
    const std::string shortened = errorOf([&] { (void)lapwing::only(many, {"x"}); });
    EXPECT_EQ(shortened.substr(shortened.size() - 19), R"("s", "t" and 3 more)");
}

TEST(Shaping, RefusesNumbersOutOfRange) {
    for (const double bad : {-0.001, std::nan(""), std::numeric_limits<double>::infinity()}) {
        EXPECT_NE(errorOf([=] { (void)lapwing::scaled({}, bad); }), "no error");
        EXPECT_NE(errorOf([=] { (void)lapwing::reducedToPercentile({}, bad); }), "no error");
        EXPECT_NE(errorOf([=] { (void)lapwing::trimmed({}, bad, 90); }), "no error");
        EXPECT_NE(errorOf([=] { (void)lapwing::trimmed({}, 10, bad); }), "no error");
    }
    EXPECT_NE(errorOf([] { (void)lapwing::trimmed({}, 51, 50); }), "no error");
}

}  // namespace
