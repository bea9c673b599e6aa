#include <lapwing/kit/comparison.h>
#include <lapwing/kit/shaping.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

using namespace std::chrono_literals;

namespace {

using lapwing::Comparison;
using lapwing::Interval;
using lapwing::Recording;
using lapwing::Tolerance;
using lapwing::Verdict;
using Durations = std::vector<Milliseconds>;
using Recordings = std::vector<Recording>;
using Counts = std::vector<std::int64_t>;

// Two recordings each have the same time, so that their ids tell which one is newer.
Recording recordingAt(int place, Durations samples) {
    const auto time = std::chrono::system_clock::time_point(std::chrono::seconds((place + 1) / 2));
    return {std::to_string(1000 + place), time, {}, {{}, {{"Scan", std::move(samples)}}}};
}

// Recordings of `size` samples each, the last one of what is left. They are not in their order.
Recordings recordingsOf(const Counts& counts, std::size_t size = 1) {
    Recordings recordings;
    for (std::size_t sample = 0; sample < counts.size(); ++sample) {
        if (sample % size == 0) {
            recordings.push_back(recordingAt(static_cast<int>(recordings.size()), {}));
        }
        recordings.back().profile.samples["Scan"].emplace_back(counts[sample]);
    }
    const auto half = static_cast<std::ptrdiff_t>(recordings.size() / 2);
    std::rotate(recordings.begin(), recordings.begin() + half, recordings.end());
    return recordings;
}

Comparison compareScan(const Recordings& before, const Recordings& after,
                       const Tolerance& tolerance = {}) {
    return lapwing::compare(before, after, tolerance).at(0);
}

void expectInterval(const Comparison& row, double low, double high) {
    ASSERT_TRUE(row.interval);
    EXPECT_DOUBLE_EQ(row.interval->low, low);
    EXPECT_DOUBLE_EQ(row.interval->high, high);
}

// With five recordings a side, the interval goes from the smallest to the largest difference.
TEST(Comparison, DecidesByTheWholeInterval) {
    struct Case {
        Counts before;
        Counts after;
        Tolerance tolerance;
        double margin;
        double shift;
        Interval interval;
        Verdict verdict;
        std::optional<std::size_t> needed;
    };
    const Counts hundred(5, 100);
    for (const Case& row :
         {Case{hundred, {95, 100, 100, 100, 105}, {}, 5, 0, {-5, 5}, Verdict::Same, {}},
          Case{hundred, {95, 100, 100, 100, 106}, {}, 5, 0, {-5, 6}, Verdict::Undecided, 7},
          Case{hundred, {94, 99, 99, 100, 105}, {}, 5, -1, {-6, 5}, Verdict::Undecided, 7},
          Case{hundred, {105, 106, 107, 108, 109}, {}, 5, 7, {5, 9}, Verdict::Undecided, 1},
          Case{hundred, {106, 106, 107, 108, 109}, {}, 5, 7, {6, 9}, Verdict::Slower, {}},
          Case{hundred, {95, 94, 92, 94, 91}, {}, 5, -6, {-9, -5}, Verdict::Undecided, 1},
          Case{hundred, {94, 94, 92, 94, 91}, {}, 5, -6, {-9, -6}, Verdict::Faster, {}},
          Case{{9, 9, 10, 11, 11}, Counts(5, 10), {}, 1, 0, {-1, 1}, Verdict::Same, {}},
          Case{{8, 9, 10, 11, 12}, Counts(5, 10), {}, 1, 0, {-2, 2}, Verdict::Undecided, 20},
          Case{
              {8, 9, 10, 11, 90}, Counts(5, 10), {9ms, 1}, 9, 0, {-80, 2}, Verdict::Undecided, 104},
          Case{hundred, hundred, {0ms, 0}, 0, 0, {0, 0}, Verdict::Same, {}},
          Case{hundred, {100, 100, 100, 100, 101}, {0ms, 0}, 0, 0, {0, 1}, Verdict::Undecided, {}},
          Case{hundred,
               {1, 1, 1, 1, std::numeric_limits<std::int64_t>::max()},
               {1ms, 0},
               1,
               -99,
               {-99, std::ldexp(1, 63)},
               Verdict::Undecided,
               std::numeric_limits<std::size_t>::max()}}) {
        SCOPED_TRACE(testing::PrintToString(row.before) + testing::PrintToString(row.after));
        const Comparison actual =
            compareScan(recordingsOf(row.before), recordingsOf(row.after), row.tolerance);
        EXPECT_EQ(actual.verdict, row.verdict);
        EXPECT_FALSE(actual.provisional);
        EXPECT_EQ(actual.margin, row.margin);
        EXPECT_EQ(actual.shift, row.shift);
        expectInterval(actual, row.interval.low, row.interval.high);
        EXPECT_EQ(actual.needed, row.needed);
    }
}

TEST(Comparison, TakesTheExactIntervalOfTheNewest64Recordings) {
    struct Case {
        std::size_t before;
        std::size_t after;
        std::size_t rank;
    };
    for (const Case& row : {Case{5, 5, 1}, Case{5, 6, 2}, Case{6, 6, 3}, Case{10, 10, 17},
                            Case{20, 20, 106}, Case{64, 64, 1510}, Case{64, 70, 1510}}) {
        SCOPED_TRACE(row.after);
        Counts before(row.before);
        std::iota(before.begin(), before.end(), 0);
        Counts after(row.after);
        std::generate(after.rbegin(), after.rend(), [next = -64]() mutable { return next += 64; });
        const std::size_t counted = std::min<std::size_t>(row.after, 64);
        const auto difference = [&](std::size_t rank) {
            return static_cast<double>((rank - 1) / row.before * 64 + (rank - 1) % row.before + 1) -
                   static_cast<double>(row.before);
        };
        const Comparison actual = compareScan(recordingsOf(before), recordingsOf(after));
        EXPECT_EQ(actual.after->count, counted);
        expectInterval(actual, difference(row.rank),
                       difference(row.before * counted + 1 - row.rank));
    }
}

TEST(Comparison, TakesTheMediansOfRecordingsWhateverTheirSize) {
    const Comparison row = compareScan(recordingsOf(Counts(5, 10)),
                                       recordingsOf({10, 90, 13, 14, 90, 10, 90, 13, 14, 90, 10,
                                                     90, 13, 14, 90, 10, 90, 13, 14, 90, 17, 12},
                                                    5));
    EXPECT_EQ(row.after->count, 22U);
    EXPECT_EQ(row.shift, 4);
    expectInterval(row, 4, 4.5);
}

Counts repeated(const Counts& counts, int times) {
    Counts all;
    for (int time = 0; time < times; ++time) {
        all.insert(all.end(), counts.begin(), counts.end());
    }
    return all;
}

// The interval of six blocks a side goes from the third smallest to the third largest difference.
TEST(Comparison, IsProvisionalWithBlocksOfSamples) {
    struct Case {
        const char* name;
        Counts before;
        Counts after;
        std::optional<Interval> interval;
        Verdict verdict;
    };
    Counts outlier = repeated({100, 100, 100, 110, 110, 110}, 3);
    outlier[16] = 1'000'000;
    const Counts rising = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
    const Counts six(6, 100);
    for (const Case& row :
         {Case{"equal", six, Counts(6, 120), Interval{20, 20}, Verdict::Same},
          Case{"slower", six, Counts(6, 121), Interval{21, 21}, Verdict::Slower},
          Case{"six, each apart",
               six,
               {121, 119, 123, 120, 122, 118},
               Interval{18, 23},
               Verdict::Undecided},
          Case{"five", six, Counts(5, 100), {}, Verdict::TooFew},
          Case{"one", six, {100}, {}, Verdict::TooFew},
          Case{"rising", six, rising, {}, Verdict::TooFew},
          Case{"runs of two", six, repeated({100, 100, 110, 110}, 2), {}, Verdict::TooFew},
          Case{"runs of three", six, repeated({100, 100, 100, 110, 110, 110}, 3), Interval{0, 10},
               Verdict::Same},
          Case{"outlier", six, outlier, Interval{0, 10}, Verdict::Same},
          Case{"16 blocks", six, repeated({100, 200}, 16), Interval{50, 50}, Verdict::Slower}}) {
        SCOPED_TRACE(row.name);
        const Comparison actual = compareScan(recordingsOf(row.before),
                                              recordingsOf(row.after, (row.after.size() + 3) / 4));
        EXPECT_TRUE(actual.provisional);
        EXPECT_EQ(actual.needed, 5U);
        EXPECT_EQ(actual.margin, 20);
        EXPECT_EQ(actual.verdict, row.verdict);
        EXPECT_EQ(actual.interval.has_value(), row.interval.has_value());
        if (row.interval) {
            expectInterval(actual, row.interval->low, row.interval->high);
        }
    }
}

TEST(Comparison, ListsNamesOnOneSideOnly) {
    Recording before = recordingAt(1, {1ms});
    before.profile.samples["Load"] = {3ms};
    before.profile.samples["idle"] = {};
    Recording after = recordingAt(1, {});
    after.profile.samples["Save"] = {4ms};
    const auto rows = lapwing::compare({before}, {after});
    ASSERT_EQ(rows.size(), 3U);
    const auto expectRow = [](const Comparison& row, const char* name, Verdict verdict) {
        EXPECT_EQ(row.name, name);
        EXPECT_EQ(row.verdict, verdict);
        EXPECT_EQ(row.before.has_value(), verdict == Verdict::OnlyBefore);
        EXPECT_EQ(row.after.has_value(), verdict == Verdict::OnlyAfter);
        EXPECT_FALSE(row.provisional || row.shift || row.interval || row.margin || row.needed);
    };
    expectRow(rows[0], "Load", Verdict::OnlyBefore);
    expectRow(rows[1], "Save", Verdict::OnlyAfter);
    expectRow(rows[2], "Scan", Verdict::OnlyBefore);
}

TEST(Comparison, RefusesMarginsOutOfRange) {
    for (const Tolerance& bad : {Tolerance{-1ms, 5}, Tolerance{1ms, -0.1},
                                 Tolerance{1ms, std::nan("")}, Tolerance{1ms, HUGE_VAL}}) {
        EXPECT_THROW((void)lapwing::compare({}, {}, bad), std::invalid_argument);
    }
}

// An operation of about 120 ms: lognormal, with outliers, cut to whole milliseconds. The standard
// library's distributions differ between systems.
class Operation {
public:
    Recordings record(int recordings, int samples, double correlation, double drift) {
        Recordings all;
        for (int place = 0; place < recordings; ++place) {
            const double level = 120 * (1 + drift * normal());
            double state = normal();
            Durations durations;
            for (int sample = 0; sample < samples; ++sample) {
                const double factor = uniform() < 0.01 ? 3 : 1;
                durations.emplace_back(
                    static_cast<std::int64_t>(factor * level * std::exp(0.15 * state)));
                state = correlation * state + std::sqrt(1 - correlation * correlation) * normal();
            }
            all.push_back(recordingAt(place, std::move(durations)));
        }
        return all;
    }

private:
    double uniform() { return (static_cast<double>(random() >> 11U) + 0.5) / 9007199254740992.0; }
    double normal() {
        return std::sqrt(-2 * std::log(uniform())) * std::cos(6.283185307179586 * uniform());
    }

    std::mt19937_64 random{20261121};
};

TEST(Comparison, RaisesNoFalseAlarmsAndMissesNoLargeChange) {
    struct Case {
        const char* name;
        int recordings;
        int samples;
        double correlation;
        double drift;
    };
    for (const Case& row : {Case{"independent", 10, 40, 0, 0}, Case{"correlated", 10, 40, 0.9, 0},
                            Case{"drifting", 10, 40, 0, 0.05}, Case{"single", 1, 1000, 0, 0}}) {
        Operation operation;
        int changed = 0;
        int slower = 0;
        for (int pair = 0; pair < 1000; ++pair) {
            const Recordings before =
                operation.record(row.recordings, row.samples, row.correlation, row.drift);
            Recordings after =
                operation.record(row.recordings, row.samples, row.correlation, row.drift);
            const Verdict verdict = compareScan(before, after).verdict;
            changed += verdict == Verdict::Slower || verdict == Verdict::Faster ? 1 : 0;
            for (Recording& recording : after) {
                recording.profile = lapwing::scaled(std::move(recording.profile), 1.5);
            }
            slower += compareScan(before, after).verdict == Verdict::Slower ? 1 : 0;
        }
        EXPECT_LE(changed, 15) << row.name;
        EXPECT_GE(slower, 980) << row.name;
    }
}

}  // namespace
