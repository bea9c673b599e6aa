#include <lapwing/kit/comparison.h>
#include <lapwing/kit/shaping.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <random>
#include <set>
#include <sstream>

using namespace std::chrono_literals;

namespace {

using lapwing::Comparison;
using lapwing::Recording;
using lapwing::Tolerance;
using lapwing::Verdict;
using Counts = std::vector<std::int64_t>;

// Two recordings each have the same time, so that their ids tell which one is newer.
Recording recordingAt(int place, const std::vector<Milliseconds>& samples) {
    const auto time = std::chrono::system_clock::time_point(std::chrono::seconds((place + 1) / 2));
    return {std::to_string(1000 + place), time, {}, {{}, {{"Scan", samples}}}};
}

// Recordings of `size` samples each, the last one of what is left. They are not in their order.
std::vector<Recording> recordingsOf(const Counts& counts, std::size_t size = 1) {
    std::vector<Recording> recordings;
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

std::string described(const Comparison& row) {
    constexpr std::array<const char*, 7> verdicts{
        "slower", "faster", "same", "undecided", "too few", "only before", "only after"};
    std::ostringstream text;
    text << verdicts.at(static_cast<std::size_t>(row.verdict));
    if (row.shift || row.interval) {
        text << " by " << row.shift.value() << ", " << row.interval.value().low << " to "
             << row.interval.value().high;
    }
    text << (row.margin ? ", margin " + std::to_string(std::lround(*row.margin)) : "")
         << (row.needed ? ", needs " + std::to_string(*row.needed) : "")
         << (row.provisional ? ", provisional" : "");
    return text.str();
}

struct Case {
    Counts before;
    Counts after;
    std::string result;
    Tolerance tolerance = {};
    std::size_t size = 1;
};

// With five recordings a side, the interval goes from the smallest to the largest difference; with
// six blocks, from the third smallest to the third largest.
TEST(Comparison, DecidesByTheWholeInterval) {
    const Counts five(5, 100);
    const Counts six(6, 100);
    const Counts runs{100, 100, 100, 110, 110, 110, 100, 100, 100,
                      110, 110, 110, 100, 100, 100, 110, 110, 110};
    const Counts twos{120, 110, 120, 110, 110, 110, 110, 110, 110, 100, 100, 120, 120, 120};
    Counts outlier = runs;
    outlier[16] = 1'000'000;
    Counts alternating(32, 100);
    for (std::size_t sample = 0; sample < alternating.size(); sample += 2) {
        alternating[sample] = 200;
    }
    const Counts fives{9,  90, 13, 14, 90, 9,  90, 13, 14, 90, 9,
                       90, 13, 14, 90, 9,  90, 13, 14, 90, 1,  2};
    const std::string end = ", margin 20, needs 5, provisional";
    for (const Case& row :
         {Case{five, {95, 100, 100, 100, 105}, "same by 0, -5 to 5, margin 5"},
          Case{five, {95, 100, 100, 100, 106}, "undecided by 0, -5 to 6, margin 5, needs 7"},
          Case{five, {94, 99, 99, 100, 105}, "undecided by -1, -6 to 5, margin 5, needs 7"},
          Case{five, {105, 106, 107, 108, 109}, "undecided by 7, 5 to 9, margin 5, needs 1"},
          Case{five, {106, 106, 107, 108, 109}, "slower by 7, 6 to 9, margin 5"},
          Case{five, {95, 94, 92, 94, 91}, "undecided by -6, -9 to -5, margin 5, needs 1"},
          Case{five, {94, 94, 92, 94, 91}, "faster by -6, -9 to -6, margin 5"},
          Case{{9, 9, 10, 11, 11}, Counts(5, 10), "same by 0, -1 to 1, margin 1"},
          Case{five,
               {100, 108, 108, 108, 108, 150},
               "undecided by 8, 0 to 50, margin 9, needs 39",
               {9ms, 1}},
          Case{five, {100, 100, 100, 100, 101}, "undecided by 0, 0 to 1, margin 0", {0ms, 0}},
          Case{five, fives, "faster by -86, -98.5 to -86, margin 5", {}, 5},
          Case{six, Counts(6, 120), "same by 20, 20 to 20" + end, {}, 2},
          Case{six, {121, 119, 123, 120, 122, 118}, "undecided by 20.5, 18 to 23" + end, {}, 5},
          Case{six, Counts(5, 100), "too few" + end, {}, 2},
          Case{six, {100}, "too few" + end},
          Case{six, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, "too few" + end, {}, 5},
          Case{six, {100, 100, 110, 110, 100, 100, 110, 110}, "too few" + end, {}, 2},
          Case{six, twos, "same by 10, 5 to 20" + end, {}, 4},
          Case{six, runs, "same by 5, 0 to 10" + end, {}, 7},
          Case{six, outlier, "same by 5, 0 to 10" + end, {}, 5},
          Case{six, alternating, "slower by 50, 50 to 50" + end, {}, 8}}) {
        const auto after = recordingsOf(row.after, row.size);
        const auto rows = lapwing::compare(recordingsOf(row.before), after, row.tolerance);
        EXPECT_EQ(described(rows.at(0)), row.result) << testing::PrintToString(row.after);
        EXPECT_EQ(rows[0].after->count, row.after.size());
    }
}

TEST(Comparison, TakesTheExactIntervalOfTheNewest64Recordings) {
    using Sizes = std::array<int, 3>;
    for (const auto& [before, after, rank] :
         {Sizes{5, 6, 2}, Sizes{10, 10, 17}, Sizes{20, 20, 106}, Sizes{64, 70, 1510}}) {
        Counts old(static_cast<std::size_t>(before));
        Counts fresh(static_cast<std::size_t>(after));
        std::iota(old.begin(), old.end(), 0);
        std::generate(fresh.rbegin(), fresh.rend(), [next = -64]() mutable { return next += 64; });
        const auto row = lapwing::compare(recordingsOf(old), recordingsOf(fresh)).at(0);
        const int whole = (rank - 1) / before;
        const int rest = (rank - 1) % before;
        EXPECT_EQ(row.interval->low, whole * 64 + rest - before + 1) << rank;
        EXPECT_EQ(row.interval->high, (std::min(after, 64) - 1 - whole) * 64 - rest);
    }
}

TEST(Comparison, ListsNamesOnOneSideOnlyAndRefusesBadMargins) {
    Recording before = recordingAt(1, {1ms});
    before.profile.samples["idle"] = {};
    Recording after = recordingAt(1, {});
    after.profile.samples["Save"] = {4ms};
    const auto rows = lapwing::compare({before}, {after});
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].name + ' ' + described(rows[0]), "Save only after");
    EXPECT_EQ(rows[1].name + ' ' + described(rows[1]), "Scan only before");
    EXPECT_TRUE(rows[0].after && !rows[0].before && rows[1].before && !rows[1].after);
    for (const Tolerance& bad : {Tolerance{-1ms, 5}, Tolerance{1ms, -0.1}, Tolerance{1ms, HUGE_VAL},
                                 Tolerance{1ms, std::nan("")}}) {
        EXPECT_THROW((void)lapwing::compare({}, {}, bad), std::invalid_argument);
    }
}

// A thousand operations of about 120 ms: lognormal, with outliers, cut to whole milliseconds. The
// standard library's distributions differ between systems.
struct Operations {
    int recordings;
    std::size_t samples;
    double correlation;
    double drift;
    std::mt19937_64 random{20261121};

    double uniform() { return (static_cast<double>(random() >> 11U) + 0.5) / 9007199254740992; }
    double normal() {
        return std::sqrt(-2 * std::log(uniform())) * std::cos(6.283185307179586 * uniform());
    }
    std::vector<Milliseconds> run() {
        const double level = 120 * (1 + drift * normal());
        double state = normal();
        std::vector<Milliseconds> durations(samples);
        for (Milliseconds& duration : durations) {
            const double time = level * (uniform() < 0.01 ? 3 : 1) * std::exp(0.15 * state);
            duration = Milliseconds(static_cast<std::int64_t>(time));
            state = correlation * state + std::sqrt(1 - correlation * correlation) * normal();
        }
        return durations;
    }
    std::vector<Recording> record() {
        std::vector<Recording> all;
        for (int place = 0; place < recordings; ++place) {
            all.push_back(recordingAt(place, {}));
            for (int name = 0; name < 1000; ++name) {
                all.back().profile.samples[std::to_string(name)] = run();
            }
        }
        return all;
    }
};

TEST(Comparison, RaisesNoFalseAlarmsAndMissesNoLargeChange) {
    for (Operations operations : {Operations{10, 40, 0, 0}, Operations{10, 40, 0.9, 0},
                                  Operations{10, 40, 0, 0.05}, Operations{1, 1000, 0, 0}}) {
        const auto before = operations.record();
        auto after = operations.record();
        const auto count = [&](const std::set<Verdict>& verdicts) {
            const auto rows = lapwing::compare(before, after);
            return std::count_if(rows.begin(), rows.end(), [&](const Comparison& row) {
                return verdicts.count(row.verdict) != 0;
            });
        };
        SCOPED_TRACE(testing::Message() << operations.correlation << ' ' << operations.drift);
        EXPECT_LE(count({Verdict::Slower, Verdict::Faster}), 15);
        for (Recording& recording : after) {
            recording.profile = lapwing::scaled(recording.profile, 1.5);
        }
        EXPECT_GE(count({Verdict::Slower}), 980);
    }
}

}  // namespace
