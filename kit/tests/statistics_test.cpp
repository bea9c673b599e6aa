#include <lapwing/kit/statistics.h>

#include "support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <tuple>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

// In descending order, so that each sample is its own rank.
Durations ranksTo(std::size_t count) {
    Durations samples(count);
    std::iota(samples.rbegin(), samples.rend(), 1ms);
    return samples;
}

TEST(Percentile, IsTheSampleOfTheNearestRank) {
    const std::tuple<std::size_t, double, Milliseconds> cases[] = {
        {1, 0, 1ms},     {4, 50, 2ms},      {5, 50, 3ms},  {11, 90, 10ms},     {100, 29, 29ms},
        {100, 55, 55ms}, {100, 55.5, 56ms}, {9, 100, 9ms}, {1000, 99.9, 999ms}};
    for (const auto& [count, percent, expected] : cases) {
        EXPECT_EQ(percentile(ranksTo(count), percent), expected);
    }
    for (const double percent : {-0.001, 100.001, std::nan("")}) {
        EXPECT_THROW((void)percentile({1ms}, percent), std::invalid_argument) << percent;
    }
    EXPECT_THROW((void)percentile({}, 50), std::invalid_argument);
}

TEST(Summary, HoldsValuesThatDidOccur) {
    EXPECT_FALSE(summarize({}));
    const Summary all = summarize(ranksTo(200)).value();
    EXPECT_EQ(all.count, 200U);
    EXPECT_EQ((Durations{all.minimum, all.median, all.p90, all.p99, all.maximum}),
              (Durations{1ms, 100ms, 180ms, 198ms, 200ms}));
}

TEST(Summary, IsAccurateForLargeAndNegativeSamples) {
    constexpr Milliseconds large(1LL << 62);
    const std::tuple<Durations, Milliseconds, double, double> cases[] = {
        {{7ms}, 7ms, 7, 0},
        {{5ms, 6ms}, 5ms, 5.5, std::sqrt(0.5)},
        {{-3ms, 1ms}, Milliseconds::max(), -1, std::sqrt(8)},
        {{large + 4ms, large, large + 2ms}, large + 2ms, std::ldexp(1, 62), 2},
        {{-large, 4ms, large}, 1ms, 4 / 3.0, std::ldexp(1, 62)}};
    for (const auto& [samples, average, mean, deviation] : cases) {
        const Summary summary = summarize(samples).value();
        EXPECT_EQ(summary.average, average);
        EXPECT_DOUBLE_EQ(summary.mean, mean);
        EXPECT_DOUBLE_EQ(summary.standardDeviation, deviation);
    }
}

}  // namespace
