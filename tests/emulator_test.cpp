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

// What one step for "a" with these samples loaded records, and how long it sleeps.
struct Step {
    Durations samples;
    Milliseconds duration;
    Milliseconds slept;
    Durations overruns;
    bool isNoted;
};

void expectStep(const Step& step) {
    TimingProfileEmulator emulator;
    emulator.setProfile(profileOf(step.samples));
    FakeClock clock;
    clock.longestSleep = 7ms;
    TimingSampleHandler(std::ref(emulator))("a", step.duration);
    const TimingProfile errors = emulator.extractErrorProfile();
    SCOPED_TRACE(testing::Message() << testing::PrintToString(step.samples.size()) << " samples, "
                                    << step.duration.count() << " ms");
    EXPECT_EQ(clock.slept, step.slept);
    EXPECT_EQ(errors.samples, step.overruns.empty() ? Samples() : Samples({{"a", step.overruns}}));
    EXPECT_EQ(errors.notes, step.isNoted ? Notes({{"a", noData}}) : Notes());
}

TEST(TimingProfileEmulator, PadsToTheAverageOrRecordsWhyNot) {
    for (const Step& step :
         {Step{{100ms}, 30ms, 70ms, {}, false}, Step{{100ms}, 100ms, 0ms, {}, false},
          Step{{100ms}, 101ms, 0ms, {-1ms}, false}, Step{{5ms, 6ms}, 2ms, 3ms, {}, false},
          Step{{5ms, 6ms}, 6ms, 0ms, {-1ms}, false}, Step{{2ms}, -2ms, 4ms, {}, false},
          Step{{}, 5ms, 0ms, {}, true}, Step{{0ms, 0ms, 1ms}, 9ms, 0ms, {}, true},
          Step{{-4ms}, 10ms, 0ms, {-14ms}, false},
          Step{{longest, 3ms}, longest / 2, 2ms, {}, false},
          Step{{-2ms, -2ms}, longest, 0ms, {-1ms}, false}, Step{{-3ms, 1ms}, 0ms, 0ms, {}, false},
          Step{{shortest}, 1ms, 0ms, {}, false}, Step{{longest}, -1ms, 0ms, {shortest}, false}}) {
        expectStep(step);
    }
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
