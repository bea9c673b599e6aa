#include "support.h"

#include "clock.h"

#include <lapwing/timing_profiles.h>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

using Durations = std::vector<Milliseconds>;
using Samples = std::unordered_map<std::string, Durations>;
using Notes = std::unordered_map<std::string, std::string>;

const Notes noData = {{"a", "no sample data found in loaded timing profile"}};

// One step of "a" with these samples loaded: how long it sleeps, and what it records if it cannot.
struct Step {
    const char* name;
    Durations samples;
    Milliseconds duration;
    Milliseconds slept;
    Notes notes;
    Samples overruns;
};

TEST(TimingProfileEmulator, PadsToTheAverageOrRecordsWhyNot) {
    const auto longest = Milliseconds::max();
    for (const Step& step : {
             Step{"faster", {100ms}, 30ms, 70ms, {}, {}},
             Step{"average truncated", {5ms, 6ms}, 2ms, 3ms, {}, {}},
             Step{"as slow", {100ms}, 100ms, 0ms, {}, {}},
             Step{"slower", {100ms}, 101ms, 0ms, {}, {{"a", {-1ms}}}},
             Step{"no samples", {}, 5ms, 0ms, noData, {}},
             Step{"average of 0", {0ms, 0ms, 1ms}, 9ms, 0ms, noData, {}},
             Step{"average negative", {-4ms}, 10ms, 0ms, {}, {{"a", {-14ms}}}},
             Step{"average wraps", {-3ms, 1ms}, longest - 2ms, 2ms, {}, {}},
             Step{"wraps below 0", {longest}, -1ms, 0ms, {}, {{"a", {Milliseconds::min()}}}},
             Step{"wraps above 0", {Milliseconds::min()}, 1ms, 0ms, {}, {}},
         }) {
        SCOPED_TRACE(step.name);
        TimingProfileEmulator emulator;
        emulator.setProfile({{{"a", "a note that is carried along"}}, {{"a", step.samples}}});
        const auto start = lapwing::now();
        emulator.emulateProfile("a", step.duration);
        EXPECT_EQ(lapwing::now() - start, step.slept);
        EXPECT_EQ(emulator.extractErrorProfile().notes, step.notes);
        EXPECT_EQ(emulator.extractErrorProfile().samples, step.overruns);
    }
}

TEST(TimingProfileEmulator, GathersErrorsThroughChangesOfProfile) {
    TimingProfileEmulator emulator;
    emulator.emulateProfile("a", 1ms);
    emulator.setProfile({{}, {{"a", {10ms}}}});
    emulator.emulateProfile("a", 12ms);
    emulator.setProfile({{}, {{"b", {10ms}}}});
    emulator.emulateProfile("a", 12ms);
    TimingSampleHandler(std::ref(emulator))("b", 11ms);
    EXPECT_EQ(emulator.extractErrorProfile().notes, noData);
    EXPECT_EQ(emulator.extractErrorProfile().samples, Samples({{"a", {-2ms}}, {"b", {-1ms}}}));
}

}  // namespace
