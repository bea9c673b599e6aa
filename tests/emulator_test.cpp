#include "support.h"

#include <lapwing/timing_profiles.h>

#include <gtest/gtest.h>

#include <limits>

using namespace std::chrono_literals;

namespace {

using Durations = std::vector<Milliseconds>;
using Samples = std::unordered_map<std::string, Durations>;
using Notes = std::unordered_map<std::string, std::string>;

const std::string noData = "no sample data found in loaded timing profile";

constexpr Milliseconds longest = Milliseconds(std::numeric_limits<std::int64_t>::max());
constexpr Milliseconds shortest = Milliseconds(std::numeric_limits<std::int64_t>::min());

TimingProfile profileOf(const Durations& samples) {
    return {{{"a", "a note that is carried along"}}, {{"a", samples}}};
}

// One step for "a" with these samples loaded: what it recorded, and how it slept on a clock that
// moves on by 1 ms with each reading, where a sleep of N ms takes N + 1 readings.
struct Step {
    Durations samples;
    Milliseconds duration;
    Durations overruns;
    bool isNoted;
    int clockReadings;
};

TEST(TimingProfileEmulator, PadsToTheAverageOrRecordsWhyNot) {
    SKIP_WITHOUT_SUBSTITUTES();
    for (const Step& step : {Step{{100ms}, 97ms, {}, false, 4},
                             Step{{100ms}, 99ms, {}, false, 2},
                             Step{{100ms}, 100ms, {}, false, 0},
                             Step{{100ms}, 101ms, {-1ms}, false, 0},
                             Step{{100ms}, 130ms, {-30ms}, false, 0},
                             Step{{5ms, 6ms}, 2ms, {}, false, 4},
                             Step{{5ms, 6ms}, 5ms, {}, false, 0},
                             Step{{5ms, 6ms}, 6ms, {-1ms}, false, 0},
                             Step{{2ms}, -2ms, {}, false, 5},
                             Step{{0ms, 0ms, 1ms}, 0ms, {}, true, 0},
                             Step{{0ms, 0ms, 1ms}, 9ms, {}, true, 0},
                             Step{{-4ms}, 10ms, {-14ms}, false, 0},
                             Step{{-4ms}, -4ms, {}, false, 0},
                             Step{{longest, 3ms}, longest / 2 + 1ms, {}, false, 2},
                             Step{{-3ms, 1ms}, longest, {}, false, 0},
                             Step{{-2ms, -2ms}, longest, {-1ms}, false, 0},
                             Step{{-2ms, -2ms}, 0ms, {}, false, 2},
                             Step{{-3ms, 1ms}, 0ms, {}, false, 2},
                             Step{{shortest}, 1ms, {}, false, 2},
                             Step{{longest}, -1ms, {shortest}, false, 0}}) {
        for (const bool isCalled : {false, true}) {
            TimingProfileEmulator emulator;
            emulator.setProfile(profileOf(step.samples));
            const FakeClock clock(1ms);
            isCalled ? emulator("a", step.duration) : emulator.emulateProfile("a", step.duration);
            const TimingProfile errors = emulator.extractErrorProfile();
            SCOPED_TRACE(testing::PrintToString(step.samples.front().count()) + ", " +
                         testing::PrintToString(step.duration.count()));
            EXPECT_EQ(clock.readings(), step.clockReadings);
            EXPECT_EQ(errors.samples,
                      step.overruns.empty() ? Samples() : Samples({{"a", step.overruns}}));
            EXPECT_EQ(errors.notes, step.isNoted ? Notes({{"a", noData}}) : Notes());
        }
    }
}

TEST(TimingProfileEmulator, SleepsNoLessThanTheRestOfTheAverage) {
    TimingProfileEmulator emulator;
    emulator.setProfile(profileOf({20ms}));
    const auto start = std::chrono::steady_clock::now();
    const int readings = FakeClock::readings();
    emulator.emulateProfile("a", 5ms);
    EXPECT_LT(FakeClock::readings(), readings + 100'000) << "it never sleeps";
    EXPECT_GE(std::chrono::steady_clock::now() - start, 15ms);
}

TEST(TimingProfileEmulator, GathersErrorsThroughChangesOfProfile) {
    TimingProfileEmulator emulator;
    emulator.emulateProfile("a", 1ms);
    emulator.emulateProfile("a", 2ms);
    TimingProfile profile = profileOf({10ms});
    emulator.setProfile(profile);
    profile.samples.clear();
    emulator.emulateProfile("a", 12ms);
    emulator.setProfile({{}, {{"b", {10ms}}}});
    emulator.emulateProfile("a", 12ms);
    TimingSampleHandler(std::ref(emulator))("b", 11ms);
    emulator.emulateProfile("b", 13ms);
    emulator.extractErrorProfile().samples.clear();
    const TimingProfile errors = emulator.extractErrorProfile();
    EXPECT_EQ(errors.samples, Samples({{"a", {-2ms}}, {"b", {-1ms, -3ms}}}));
    EXPECT_EQ(errors.notes, Notes({{"a", noData}}));
}

}  // namespace
