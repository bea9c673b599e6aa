#include "support.h"

#include <lapwing/timing_profiles.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>

using namespace std::chrono_literals;

namespace {

const std::string noteText = "note: executing timing profile sample fn took - ";
const std::string collectLap = "about to augment timing profile sample";
const std::string emulateLap = "about to emulate timing profile average sample time";

// The five entry points by one signature.
enum class Entry { collect, collectFlagged, both, bothFlagged, emulate };
constexpr Entry allEntries[] = {Entry::collect, Entry::collectFlagged, Entry::both,
                                Entry::bothFlagged, Entry::emulate};

bool hasFlag(Entry entry) {
    return entry == Entry::collectFlagged || entry == Entry::bothFlagged;
}

void call(Entry entry, const TimingSampleHandler& collect, const TimingSampleHandler& emulate,
          bool logging, const InstrumentedFunction& work) {
    switch (entry) {
        case Entry::collect:
            return collectTimingProfileSample(collect, "Load", work);
        case Entry::collectFlagged:
            return collectTimingProfileSample(collect, "Load", logging, work);
        case Entry::both:
            return collectTimingProfileSampleAndEmulate(collect, emulate, "Load", work);
        case Entry::bothFlagged:
            return collectTimingProfileSampleAndEmulate(collect, emulate, "Load", logging, work);
        case Entry::emulate:
            return emulateTimingProfile(emulate, "Load", work);
    }
}

// Handlers, work and log that tell in which order they were called, and throw where told to.
struct Sampling : testing::Test {
    void reach(const std::string& event) {
        events.push_back(event);
        if (event == failing) {
            throw std::runtime_error(event);
        }
    }
    TimingSampleHandler handler(const std::string& event) {
        return [=](const std::string& name, Milliseconds duration) {
            reach(event + " " + name + " " + std::to_string(duration.count()));
            clock.advance(85ms);
        };
    }
    void run(Entry entry) {
        events.clear();
        log.lines.clear();
        call(entry, handler("collect"), handler("emulate"), true, [this](Instrumentation&) {
            reach("work");
            clock.advance(15ms);
        });
    }
    Lines runFailing(Entry entry, const std::string& event) {
        failing = event;
        EXPECT_THROW(run(entry), std::runtime_error) << event;
        return events;
    }

    FakeClock clock;
    GlobalLog log;
    Lines events;
    std::string failing;
};

using SamplingInTime = Sampling;

#define SKIP_WITHOUT_SUBSTITUTES LAPWING_SKIP_UNLESS_SUBSTITUTES_REACH_LIBRARY()

TEST_F(SamplingInTime, SendsItsLinesAndCallsItsHandlersInOrder) {
    SKIP_WITHOUT_SUBSTITUTES;
    run(Entry::bothFlagged);
    EXPECT_EQ(events, Lines({"work", "collect Load 15", "emulate Load 15"}));
    EXPECT_EQ(log.lines,
              Lines({"Load: Begin", "  Load: " + noteText + "15ms",
                     "  Load: " + collectLap + " - 15 ms", "  Load: " + emulateLap + " - 85 ms",
                     "  Load: Final Lap - 85 ms", "Load: End - 185 ms"}));
    run(Entry::collectFlagged);
    EXPECT_EQ(events, Lines({"work", "collect Load 15"}));
    EXPECT_EQ(log.lines, Lines({"Load: Begin", "  Load: " + noteText + "15ms",
                                "  Load: " + collectLap + " - 15 ms", "  Load: Final Lap - 85 ms",
                                "Load: End - 100 ms"}));
    StoringProvider provider;
    provider.store["enableTimingProfileLogging"] = true;
    run(Entry::emulate);
    EXPECT_EQ(events, Lines({"work", "emulate Load 15"}));
    EXPECT_EQ(log.lines, Lines({"Load: Begin", "  Load: " + noteText + "15ms",
                                "  Load: " + emulateLap + " - 15 ms", "  Load: Final Lap - 85 ms",
                                "Load: End - 100 ms"}));
}

TEST_F(Sampling, LogsIfTheSettingOrTheFlagSaysSoAndAlwaysReadsTheSetting) {
    StoringProvider provider;
    for (const Entry entry : allEntries) {
        for (const bool flag : {false, true}) {
            const std::size_t readings = hasFlag(entry) ? 1 : 2;
            for (std::size_t truth = 0; truth <= readings; ++truth) {
                provider.calls.clear();
                provider.onCall = [&] {
                    provider.store["enableTimingProfileLogging"] = provider.calls.size() == truth;
                };
                log.lines.clear();
                call(entry, {}, {}, flag, [](Instrumentation&) {});
                SCOPED_TRACE(testing::Message() << int(entry) << flag << truth);
                EXPECT_EQ(provider.calls, Lines(readings, "getValue"));
                EXPECT_EQ(log.lines.size(), truth != 0 || (flag && hasFlag(entry)) ? 3U : 0U);
            }
        }
    }
}

TEST_F(Sampling, SkipsEmptyHandlersAndTheirLaps) {
    DeveloperConfig::Boolean logging("enableTimingProfileLogging", false);
    StoringProvider provider;
    logging.set(true);
    for (const Entry entry : allEntries) {
        log.lines.clear();
        call(entry, {}, {}, false, [this](Instrumentation& object) {
            object.note("inside");
            reach("work");
        });
        ASSERT_EQ(log.lines.size(), 4U);
        EXPECT_EQ(log.lines[1], "  Load: inside");
        EXPECT_EQ(log.lines[2].find("  Load: " + noteText), 0U);
        EXPECT_EQ(log.lines[3].find("Load: End"), 0U);
    }
    EXPECT_EQ(events.size(), std::size(allEntries));
}

TEST_F(SamplingInTime, HandsOverWhatWasMeasuredBeforeAFailureAndNothingAfter) {
    SKIP_WITHOUT_SUBSTITUTES;
    StoringProvider provider;
    provider.store["enableTimingProfileLogging"] = true;
    log.onLine = [this](const std::string& line) { reach(line); };
    const std::string begin = "Load: Begin";
    const std::string note = "  Load: " + noteText + "15ms";
    const std::string collecting = "  Load: " + collectLap + " - 15 ms";
    const std::string emulating = "  Load: " + emulateLap;
    const std::string collectFailed = "  Load: " + collectLap + " - 0 ms";
    const std::string lapEnd = "  Load: Final Lap - 0 ms";
    const std::string end0 = "Load: End - 0 ms";
    const std::string end15 = "Load: End - 15 ms";
    for (const Entry entry :
         {Entry::collect, Entry::collectFlagged, Entry::both, Entry::bothFlagged}) {
        EXPECT_EQ(runFailing(entry, "work"),
                  Lines({begin, "work", collectFailed, "collect Load 0",
                         "  Load: Final Lap - 85 ms", "Load: End - 85 ms"}));
        EXPECT_EQ(runFailing(entry, note),
                  Lines({begin, "work", note, collecting, "collect Load 0",
                         "  Load: Final Lap - 85 ms", "Load: End - 100 ms"}));
        EXPECT_EQ(runFailing(entry, collecting), Lines({begin, "work", note, collecting, end15}));
        EXPECT_EQ(runFailing(entry, "collect Load 15"),
                  Lines({begin, "work", note, collecting, "collect Load 15", lapEnd, end15}));
    }
    for (const Entry entry : {Entry::both, Entry::bothFlagged}) {
        EXPECT_EQ(runFailing(entry, emulating + " - 85 ms").back(), "Load: End - 100 ms");
        EXPECT_EQ(runFailing(entry, "emulate Load 15").size(), 9U);
    }
    EXPECT_EQ(runFailing(Entry::emulate, "work"), Lines({begin, "work", end0}));
    EXPECT_EQ(runFailing(Entry::emulate, note), Lines({begin, "work", note, end15}));
    EXPECT_EQ(
        runFailing(Entry::emulate, "emulate Load 15"),
        Lines({begin, "work", note, emulating + " - 15 ms", "emulate Load 15", lapEnd, end15}));
}

TEST_F(Sampling, CollectsEmptyWorkAsAFailedRun) {
    for (const Entry entry : allEntries) {
        events.clear();
        EXPECT_THROW(call(entry, handler("collect"), handler("emulate"), true, {}),
                     std::bad_function_call);
        EXPECT_EQ(events, entry == Entry::emulate ? Lines() : Lines({"collect Load 0"}));
    }
}

TEST_F(Sampling, DoesNothingWhenTheSettingCannotBeRead) {
    StoringProvider provider;
    provider.onCall = [] { throw std::runtime_error("store is gone"); };
    for (const Entry entry : allEntries) {
        EXPECT_THROW(run(entry), std::runtime_error);
        EXPECT_EQ(events, Lines());
        EXPECT_EQ(log.lines, Lines());
    }
}

TEST_F(Sampling, LeavesWorkThatRanOutOfMemoryCollectable) {
    LAPWING_SKIP_UNLESS_SUBSTITUTES_REACH_LIBRARY();
    std::vector<Milliseconds> collected;
    collected.reserve(100);
    const TimingSampleHandler collect = [&collected](const std::string&, Milliseconds duration) {
        collected.push_back(duration);
    };
    std::size_t works = 0;
    const std::size_t failures = failEachAllocation(
        [&] {
            collectTimingProfileSample(collect, std::string(100, 'n'), [&](Instrumentation&) {
                ++works;
                clock.advance(15ms);
            });
        },
        [&] {
            EXPECT_EQ(collected.size(), works);
            EXPECT_EQ(collected, std::vector<Milliseconds>(works));
        });
    EXPECT_GE(failures, 3U);
    EXPECT_GE(works, 2U);
    EXPECT_EQ(collected.back(), 15ms);
}

TEST(SamplingDeathTest, EndsTheProcessWhenAFailedRunCannotBeCollected) {
    const auto fail = [] {
        std::set_terminate([] {
            std::fputs("terminated", stderr);
            std::_Exit(3);
        });
        const auto failing = [](auto&&...) { throw std::runtime_error("again"); };
        collectTimingProfileSample(failing, "Load", failing);
    };
    EXPECT_EXIT(fail(), testing::ExitedWithCode(3), "terminated");
}

}  // namespace
