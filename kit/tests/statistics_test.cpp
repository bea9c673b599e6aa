#include <lapwing/kit/statistics.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace std::chrono_literals;

namespace {

using Durations = std::vector<Milliseconds>;

constexpr Milliseconds large = Milliseconds(1LL << 62);
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// The numbers from 1 to `count` in descending order, so that each is its own rank.
Durations ranksTo(std::int64_t count) {
    Durations samples;
    for (std::int64_t rank = count; rank >= 1; --rank) {
        samples.emplace_back(rank);
    }
    return samples;
}

TEST(Percentile, IsTheSampleOfTheNearestRank) {
    struct Case {
        std::int64_t count;
        double percent;
        std::int64_t rank;
    };
    for (const Case& row :
         {Case{1, 0, 1}, Case{1, 100, 1}, Case{4, 50, 2}, Case{5, 50, 3}, Case{11, 90, 10},
          Case{100, 0, 1}, Case{100, 29, 29}, Case{100, 55, 55}, Case{100, 55.5, 56},
          Case{100, 100, 100}, Case{1000, 99.9, 999}, Case{1000, 0.1, 1}}) {
        EXPECT_EQ(lapwing::percentile(ranksTo(row.count), row.percent).count(), row.rank)
            << row.percent << "% of " << row.count;
    }
}

TEST(Percentile, RefusesOtherPercentagesAndNoSamples) {
    for (const double percent : {-0.001, 100.001, notANumber}) {
        EXPECT_THROW((void)lapwing::percentile({1ms}, percent), std::invalid_argument) << percent;
    }
    EXPECT_THROW((void)lapwing::percentile({}, 50), std::invalid_argument);
}

TEST(Summary, HoldsTheUsualFigures) {
    EXPECT_FALSE(lapwing::summarize({}));
    const auto summary = lapwing::summarize(ranksTo(200));
    ASSERT_TRUE(summary);
    EXPECT_EQ(summary->count, 200U);
    const Durations figures{summary->average, summary->minimum, summary->median,
                            summary->p90,     summary->p99,     summary->maximum};
    EXPECT_EQ(figures, (Durations{100ms, 1ms, 100ms, 180ms, 198ms, 200ms}));
}

TEST(Summary, IsAccurateForLargeAndNegativeSamples) {
    struct Case {
        Durations samples;
        double mean;
        double standardDeviation;
    };
    for (const Case& row :
         {Case{{7ms}, 7, 0}, Case{{2ms, 4ms, 4ms, 4ms, 5ms, 5ms, 7ms, 9ms}, 5, std::sqrt(32 / 7.0)},
          Case{{-3ms, 1ms, 0ms}, -2 / 3.0, std::sqrt(13 / 3.0)},
          Case{{large, large + 2ms, large + 4ms}, std::ldexp(1, 62), 2},
          Case{{-large, 3ms, large}, 1, std::ldexp(1, 62)},
          Case{{Milliseconds::min(), Milliseconds::max()},
               -0.5,
               std::ldexp(1, 64) / std::sqrt(2)}}) {
        const auto summary = lapwing::summarize(row.samples);
        ASSERT_TRUE(summary);
        EXPECT_DOUBLE_EQ(summary->mean, row.mean);
        EXPECT_DOUBLE_EQ(summary->standardDeviation, row.standardDeviation);
    }
}

// The emulator tells its average as the difference to a run that took longer.
TEST(Summary, HasTheAverageThatTheEmulatorPadsTo) {
    for (const Durations& samples :
         {Durations{5ms, 6ms}, Durations{-3ms, 2ms, -1ms}, Durations{large, large, large, 5ms}}) {
        TimingProfileEmulator emulator;
        emulator.setProfile({{}, {{"a", samples}}});
        emulator.emulateProfile("a", Milliseconds::max());
        const Milliseconds overrun = emulator.extractErrorProfile().samples.at("a").front();
        EXPECT_EQ(lapwing::summarize(samples)->average, Milliseconds::max() + overrun);
    }
}

}  // namespace
