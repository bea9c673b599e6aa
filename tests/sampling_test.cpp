#include "support.h"

#include <lapwing/timing_profiles.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

using namespace std::chrono_literals;

namespace {

const std::string setting = "enableTimingProfileLogging";

const std::string begin = "Load: Begin";
const std::string note = "  Load: note: executing timing profile sample fn took - 15ms";
const std::string collecting = "  Load: about to augment timing profile sample - ";
const std::string emulating = "  Load: about to emulate timing profile average sample time - ";
const std::string finalLap0 = "  Load: Final Lap - 0 ms";
const std::string finalLap85 = "  Load: Final Lap - 85 ms";
const std::string end = "Load: End - ";

// The five entry points by one signature.
enum class Entry { collect, collectFlagged, both, bothFlagged, emulate };
constexpr Entry allEntries[] = {Entry::collect, Entry::collectFlagged, Entry::both,
                                Entry::bothFlagged, Entry::emulate};

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

// Handlers, work and log that tell in which order they were reached, and throw where told to. The
// work takes 15 ms, each handler 85 ms.
struct Sampling : testing::Test {
    Sampling() {
        log.onLine = [this](const std::string& line) { reach(line); };
        provider.store[setting] = true;
    }
    void reach(const std::string& event) {
        events.push_back(event);
        if (event == failing) {
            throw std::runtime_error(event);
        }
    }
    TimingSampleHandler handler(const std::string& event) {
        return [this, event](const std::string& name, Milliseconds duration) {
            reach(event + " " + name + " " + std::to_string(duration.count()));
            advanceClock(85ms);
        };
    }
    const Lines& run(Entry entry) {
        events.clear();
        call(entry, handler("collect"), handler("emulate"), true, [this](Instrumentation&) {
            reach("work");
            advanceClock(15ms);
        });
        return events;
    }
    const Lines& runFailing(Entry entry, const std::string& event) {
        failing = event;
        EXPECT_THROW(run(entry), std::runtime_error) << event;
        return events;
    }

    GlobalLog log;
    StoringProvider<bool> provider;
    Lines events;
    std::string failing;
};

TEST_F(Sampling, SendsItsLinesAndCallsItsHandlersInOrder) {
    for (const Entry entry : {Entry::both, Entry::bothFlagged}) {
        EXPECT_EQ(run(entry),
                  Lines({begin, "work", note, collecting + "15 ms", "collect Load 15",
                         emulating + "85 ms", "emulate Load 15", finalLap85, end + "185 ms"}));
    }
    for (const Entry entry : {Entry::collect, Entry::collectFlagged}) {
        EXPECT_EQ(run(entry), Lines({begin, "work", note, collecting + "15 ms", "collect Load 15",
                                     finalLap85, end + "100 ms"}));
    }
    EXPECT_EQ(run(Entry::emulate), Lines({begin, "work", note, emulating + "15 ms",
                                          "emulate Load 15", finalLap85, end + "100 ms"}));
}

TEST_F(Sampling, HandsOverWhatWasMeasuredBeforeAFailureAndNothingAfter) {
    for (const Entry entry :
         {Entry::collect, Entry::collectFlagged, Entry::both, Entry::bothFlagged}) {
        EXPECT_EQ(runFailing(entry, "work"), Lines({begin, "work", collecting + "0 ms",
                                                    "collect Load 0", finalLap85, end + "85 ms"}));
        EXPECT_EQ(runFailing(entry, note), Lines({begin, "work", note, collecting + "15 ms",
                                                  "collect Load 0", finalLap85, end + "100 ms"}));
        EXPECT_EQ(runFailing(entry, collecting + "15 ms"),
                  Lines({begin, "work", note, collecting + "15 ms", end + "15 ms"}));
        EXPECT_EQ(runFailing(entry, "collect Load 15"),
                  Lines({begin, "work", note, collecting + "15 ms", "collect Load 15", finalLap0,
                         end + "15 ms"}));
    }
    EXPECT_EQ(runFailing(Entry::both, "emulate Load 15").back(), end + "100 ms");
    EXPECT_EQ(runFailing(Entry::emulate, "work"), Lines({begin, "work", end + "0 ms"}));
    EXPECT_EQ(runFailing(Entry::emulate, note), Lines({begin, "work", note, end + "15 ms"}));
}

TEST_F(Sampling, LogsIfTheSettingOrTheFlagSaysSoAndAlwaysReadsTheSetting) {
    for (const Entry entry : allEntries) {
        const bool hasFlag = entry == Entry::collectFlagged || entry == Entry::bothFlagged;
        for (const bool flag : {false, true}) {
            const int readings = hasFlag ? 1 : 2;
            for (int truth = 0; truth <= readings; ++truth) {
                int reading = 0;
                provider.onRead = [&] { provider.store[setting] = ++reading == truth; };
                events.clear();
                call(entry, {}, {}, flag, [](Instrumentation&) {});
                EXPECT_EQ(reading, readings);
                const bool isLogged = truth != 0 || (hasFlag && flag);
                EXPECT_EQ(events.size(), isLogged ? 3U : 0U) << int(entry) << flag << truth;
            }
        }
    }
}

TEST_F(Sampling, FailsWithEmptyWorkAndWithASettingThatCannotBeRead) {
    provider.store[setting] = false;
    for (const Entry entry : allEntries) {
        events.clear();
        EXPECT_THROW(call(entry, handler("collect"), handler("emulate"), false, {}),
                     std::bad_function_call);
        EXPECT_EQ(events, entry == Entry::emulate ? Lines() : Lines({"collect Load 0"}));
    }
    provider.onRead = [] { throw std::runtime_error("store is gone"); };
    for (const Entry entry : allEntries) {
        EXPECT_THROW(run(entry), std::runtime_error);
        EXPECT_EQ(events, Lines());
    }
}

TEST_F(Sampling, CollectsEachRunOnceThoughMemoryRunsOut) {
    Instrumentation::setGlobalLogMessageHandler({});
    provider.setInstance(nullptr);
    std::vector<Milliseconds> collected;
    collected.reserve(100);
    std::size_t runs = 0;
    const auto collect = [&](const std::string&, Milliseconds time) { collected.push_back(time); };
    const auto work = [&](Instrumentation&) { advanceClock(Milliseconds(++runs)); };
    failEachAllocation([&] { collectTimingProfileSample(collect, std::string(100, 'n'), work); },
                       [&] { EXPECT_EQ(collected, std::vector<Milliseconds>(runs)); });
    EXPECT_GE(runs, 2U);
    EXPECT_EQ(collected.back(), Milliseconds(runs));
}

TEST(SamplingDeathTest, EndsTheProcessWhenAFailedRunCannotBeCollected) {
    const auto fail = [] {
        const auto failing = [](auto&&...) { throw std::runtime_error("again"); };
        collectTimingProfileSample(failing, "Load", failing);
    };
    EXPECT_DEATH(fail(), "terminat");
}

}  // namespace
