#include <lapwing/kit/statistics.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numeric>

using namespace std::chrono_literals;

namespace {

using Durations = std::vector<Milliseconds>;

constexpr Milliseconds large = Milliseconds(1LL << 62);

// In descending order, so that each sample is its own rank.
Durations ranksTo(std::size_t count) {
    Durations samples(count);
    std::iota(samples.rbegin(), samples.rend(), 1ms);
    return samples;
}

TEST(Percentile, IsTheSampleOfTheNearestRank) {
    using Case = std::array<double, 3>;
    for (const auto& [count, percent, rank] :
         {Case{1, 0, 1}, Case{4, 50, 2}, Case{5, 50, 3}, Case{11, 90, 10}, Case{100, 29, 29},
          Case{100, 55, 55}, Case{100, 55.5, 56}, Case{9, 100, 9}, Case{1000, 99.9, 999}}) {
        const auto samples = ranksTo(static_cast<std::size_t>(count));
        const auto sample = static_cast<double>(lapwing::percentile(samples, percent).count());
        EXPECT_EQ(sample, rank) << percent << "% of " << count;
    }
    for (const double percent : {-0.001, 100.001, std::nan("")}) {
        EXPECT_THROW((void)lapwing::percentile({1ms}, percent), std::invalid_argument) << percent;
    }
    EXPECT_THROW((void)lapwing::percentile({}, 50), std::invalid_argument);
}

TEST(Summary, HoldsValuesThatDidOccur) {
    EXPECT_FALSE(lapwing::summarize({}));
    const auto summary = lapwing::summarize(ranksTo(200));
    EXPECT_EQ(summary->count, 200U);
    EXPECT_EQ((Durations{summary->minimum, summary->median, summary->p90, summary->p99,
                         summary->maximum}),
              (Durations{1ms, 100ms, 180ms, 198ms, 200ms}));
}

TEST(Summary, IsAccurateForLargeAndNegativeSamples) {
    struct Case {
        Durations samples;
        Milliseconds average;
        double mean;
        double deviation;
    };
    for (const auto& [samples, average, mean, deviation] :
         {Case{{7ms}, 7ms, 7, 0}, Case{{5ms, 6ms}, 5ms, 5.5, std::sqrt(0.5)},
          Case{{-3ms, 1ms}, Milliseconds::max(), -1, std::sqrt(8)},
          Case{{large + 4ms, large, large + 2ms}, large + 2ms, std::ldexp(1, 62), 2},
          Case{{-large, 4ms, large}, 1ms, 4 / 3.0, std::ldexp(1, 62)}}) {
        const auto summary = lapwing::summarize(samples);
        EXPECT_EQ(summary->average, average);
        EXPECT_DOUBLE_EQ(summary->mean, mean);
        EXPECT_DOUBLE_EQ(summary->standardDeviation, deviation);
    }
}

}  // namespace
