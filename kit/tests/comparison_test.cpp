#include <lapwing/kit/comparison.h>
#include <lapwing/kit/shaping.h>

#include "support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numeric>
#include <random>
#include <sstream>
#include <tuple>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

using Counts = std::vector<std::int64_t>;

// Recordings of `size` samples each, the last one of what is left. They are not in their order, and
// some have the same time, so that their ids tell which one is newer.
std::vector<Recording> recordingsOf(const Counts& counts, std::size_t size = 1) {
    std::vector<Recording> recordings;
    for (std::size_t sample = 0; sample < counts.size(); ++sample) {
        if (sample % size == 0) {
            const auto place = static_cast<int>(recordings.size());
            recordings.push_back(recording(std::to_string(1000 + place), (place + 1) / 2, {}));
        }
        recordings.back().profile.samples["Scan"].emplace_back(counts[sample]);
    }
    const auto half = static_cast<std::ptrdiff_t>(recordings.size() / 2);
    std::rotate(recordings.begin(), recordings.begin() + half, recordings.end());
    return recordings;
}

std::string described(const Comparison& row) {
    const char* const verdicts[] = {"slower",  "faster",      "same",      "undecided",
                                    "too few", "only before", "only after"};
    std::ostringstream text;
    text << verdicts[static_cast<int>(row.verdict)];
    if (row.interval) {
        text << " by " << *row.shift << ", " << row.interval->low << " to " << row.interval->high;
    }
    text << (row.margin ? ", margin " + std::to_string(std::lround(*row.margin)) : "")
         << (row.needed ? ", needs " + std::to_string(*row.needed) : "")
         << (row.provisional ? ", provisional" : "");
    return text.str();
}

// Six recordings before are equal. So the interval goes from the smallest of five recordings after
// to the largest, and from the third smallest of six blocks to the third largest.
TEST(Comparison, DecidesByTheWholeInterval) {
    Counts alternating(32, 100);
    for (std::size_t sample = 0; sample < alternating.size(); sample += 2) {
        alternating[sample] = 200;
    }
    const std::string end = ", margin 20, needs 5, provisional";
    const struct {
        Counts after;
        std::string result;
        std::size_t size = 1;
        Tolerance tolerance = {};
    } rows[] = {
        {{95, 100, 100, 100, 105}, "same by 0, -5 to 5, margin 5"},
        {{95, 100, 100, 100, 106}, "undecided by 0, -5 to 6, margin 5, needs 7"},
        {{94, 99, 99, 100, 105}, "undecided by -1, -6 to 5, margin 5, needs 7"},
        {{105, 106, 107, 108, 109}, "undecided by 7, 5 to 9, margin 5, needs 1"},
        {{106, 106, 107, 108, 109}, "slower by 7, 6 to 9, margin 5"},
        {{95, 94, 92, 94, 91}, "undecided by -6, -9 to -5, margin 5, needs 1"},
        {{94, 94, 92, 94, 91}, "faster by -6, -9 to -6, margin 5"},
        {{100, 108, 108, 108, 150}, "undecided by 8, 0 to 50, margin 9, needs 39", 1, {9ms, 1}},
        {{100, 100, 100, 100, 101}, "undecided by 0, 0 to 1, margin 0", 1, {0ms, 0}},
        {{9, 90, 10, 10, 9, 90, 10, 10, 9, 90, 10, 10, 9, 90, 10, 10, 1, 2},
         "faster by -90, -98.5 to -90, margin 5",
         4},
        {Counts(6, 120), "same by 20, 20 to 20" + end, 2},
        {{121, 119, 123, 120, 122, 118}, "undecided by 20.5, 18 to 23" + end, 5},
        {Counts(5, 100), "too few" + end, 2},
        {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, "too few" + end, 5},
        {{120, 110, 120, 110, 110, 110, 110, 110, 110, 100, 100, 120, 120, 120},
         "same by 10, 5 to 20" + end,
         4},
        {{100, 100, 100, 110, 110, 110, 100, 100, 100, 110, 110, 110, 100, 100, 100, 110, 1'000'000,
          110},
         "same by 5, 0 to 10" + end,
         5},
        {alternating, "slower by 50, 50 to 50" + end, 8},
    };
    for (const auto& row : rows) {
        const auto after = recordingsOf(row.after, row.size);
        const Comparison found = compare(recordingsOf(Counts(6, 100)), after, row.tolerance).at(0);
        EXPECT_EQ(described(found), row.result);
        EXPECT_EQ(found.after->count, row.after.size());
    }
    const auto small = compare(recordingsOf(Counts(6, 10)), recordingsOf({9, 9, 10, 11, 11})).at(0);
    EXPECT_EQ(described(small), "same by 0, -1 to 1, margin 1");
}

// All differences are different, and follow each other in steps of one within each recording after.
TEST(Comparison, TakesTheExactIntervalOfTheNewest64Recordings) {
    const int rows[][3] = {{5, 6, 2}, {10, 10, 17}, {20, 20, 106}, {64, 70, 1510}};
    for (const auto& [before, after, rank] : rows) {
        Counts old(static_cast<std::size_t>(before));
        Counts fresh(static_cast<std::size_t>(after));
        std::iota(old.begin(), old.end(), 0);
        std::generate(fresh.rbegin(), fresh.rend(), [next = -64]() mutable { return next += 64; });
        const auto row = compare(recordingsOf(old), recordingsOf(fresh)).at(0);
        const int whole = (rank - 1) / before;
        const int rest = (rank - 1) % before;
        EXPECT_EQ(row.recordingsBefore, static_cast<std::size_t>(before));
        EXPECT_EQ(row.recordingsAfter, static_cast<std::size_t>(std::min(after, 64)));
        EXPECT_EQ(row.interval->low, whole * 64 + rest - before + 1) << rank;
        EXPECT_EQ(row.interval->high, (std::min(after, 64) - 1 - whole) * 64 - rest);
    }
}

TEST(Comparison, ListsNamesOnOneSideOnly) {
    Recording after = recording("1", 0, {});
    after.profile.samples["Save"] = {4ms};
    const auto rows = compare({recording("2")}, {after});
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].name + ' ' + described(rows[0]), "Save only after");
    EXPECT_EQ(rows[1].name + ' ' + described(rows[1]), "Scan only before");
    EXPECT_TRUE(rows[0].after && !rows[0].before && rows[1].before && !rows[1].after);
}

TEST(Comparison, RefusesBadMargins) {
    for (const Tolerance& bad : {Tolerance{-1ms, 5}, Tolerance{1ms, -0.1}, Tolerance{1ms, HUGE_VAL},
                                 Tolerance{1ms, NAN}}) {
        EXPECT_THROW((void)compare({}, {}, bad), std::invalid_argument);
    }
}

// A thousand operations of about 120 ms: lognormal, with outliers, cut to whole milliseconds. The
// standard library's distributions differ between systems.
std::vector<Recording> simulated(int recordings, std::size_t samples, double correlation,
                                 double drift, std::mt19937_64& random) {
    const auto uniform = [&] { return (static_cast<double>(random() >> 11U) + 0.5) / 0x1p53; };
    const auto normal = [&] {
        return std::sqrt(-2 * std::log(uniform())) * std::cos(6.283185307179586 * uniform());
    };
    std::vector<Recording> all;
    for (int place = 0; place < recordings; ++place) {
        all.push_back(recording(std::to_string(place), place, {}));
        for (int name = 0; name < 1000; ++name) {
            Durations& durations = all.back().profile.samples[std::to_string(name)];
            const double level = 120 * (1 + drift * normal());
            double state = normal();
            while (durations.size() < samples) {
                const double time = level * (uniform() < 0.01 ? 3 : 1) * std::exp(0.15 * state);
                durations.emplace_back(static_cast<std::int64_t>(time));
                state = correlation * state + std::sqrt(1 - correlation * correlation) * normal();
            }
        }
    }
    return all;
}

TEST(Comparison, RaisesNoFalseAlarmsAndMissesNoLargeChange) {
    const std::tuple<int, std::size_t, double, double> conditions[] = {
        {10, 40, 0, 0}, {10, 40, 0.9, 0}, {10, 40, 0, 0.05}, {1, 1000, 0, 0}};
    for (const auto& [recordings, samples, correlation, drift] : conditions) {
        SCOPED_TRACE(testing::Message() << samples << ' ' << correlation << ' ' << drift);
        std::mt19937_64 random(20261121);
        const auto before = simulated(recordings, samples, correlation, drift, random);
        auto after = simulated(recordings, samples, correlation, drift, random);
        const auto counts = [&] {
            std::map<Verdict, int> verdicts;
            for (const Comparison& row : compare(before, after)) {
                ++verdicts[row.verdict];
            }
            return verdicts;
        };
        EXPECT_LE(counts()[Verdict::Slower] + counts()[Verdict::Faster], 15);
        for (Recording& each : after) {
            each.profile = scaled(each.profile, 1.5);
        }
        EXPECT_GE(counts()[Verdict::Slower], 980);
    }
}

}  // namespace
