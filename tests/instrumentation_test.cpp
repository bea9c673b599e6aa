#include "support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <locale>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

using namespace std::chrono_literals;

namespace {

const std::string longText(100, 'x');

auto throwAt(const std::string& text) {
    return [text](const std::string& line) {
        if (line.find(": " + text) != std::string::npos) {
            throw std::runtime_error("no such log");
        }
    };
}

struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\3"; }
};

// In a locale that writes a thousand as 1,000.
struct InstrumentationLog : testing::Test {
    ~InstrumentationLog() override { std::locale::global(before); }
    const std::locale before = std::locale::global({std::locale::classic(), new Grouping});
    GlobalLog log;
};

TEST_F(InstrumentationLog, TellsNestedScopesAsATree) {
    {
        Instrumentation load("Load");
        advanceClock(4ms);
        {
            Instrumentation parse("Parse");
            advanceClock(3ms);
            EXPECT_EQ(parse.lap("step"), 3ms);
            advanceClock(1ms);
            EXPECT_EQ(parse.elapsed(), 4ms);
        }
        advanceClock(1990ms);
        EXPECT_EQ(load.lap("parsed"), 1998ms);
        advanceClock(2ms);
    }
    Instrumentation("Next", log.handler);
    EXPECT_EQ(log.lines, Lines({"Load: Begin", "  Parse: Begin", "    Parse: step - 3 ms",
                                "    Parse: Final Lap - 1 ms", "  Parse: End - 4 ms",
                                "  Load: parsed - 1998 ms", "  Load: Final Lap - 2 ms",
                                "Load: End - 2000 ms", "Next: Begin", "Next: End - 0 ms"}));
}

TEST_F(InstrumentationLog, ShowsNotesInTheirForms) {
    Instrumentation object("N");
    object.note("text");
    object.notes({"one", "two"});
    object.notes({"three"}, "");
    object.notes({}, "Empty");
    object.notes({"four", longText}, "Header");
    EXPECT_EQ(log.lines,
              Lines({"N: Begin", "  N: text", "  N: one", "  N: two", "  N: three", "  N: Empty",
                     "  N: Header", "    Header: four", "    Header: " + longText}));
}

TEST_F(InstrumentationLog, TruncatesTimesTowardZero) {
    Instrumentation object("N");
    EXPECT_EQ((advanceClock(999'999ns), object.lap("lap")), 0ms);
    EXPECT_EQ((advanceClock(1'999'999ns), object.lap("lap")), 1ms);
    EXPECT_EQ((advanceClock(-1'999'999ns), object.lap("lap")), -1ms);
    EXPECT_EQ(object.elapsed(), 0ms);
}

TEST_F(InstrumentationLog, CountsDisabledObjectsWhichMeasureInSilence) {
    Instrumentation silent("Silent", false, log.handler);
    advanceClock(5ms);
    EXPECT_EQ(silent.lap("lap"), 5ms);
    advanceClock(2ms);
    EXPECT_EQ(silent.elapsed(), 7ms);
    std::thread([] { Instrumentation("Other", true, {}); }).join();
    EXPECT_EQ(log.lines, Lines({"  Other: Begin", "  Other: End - 0 ms"}));
}

TEST_F(InstrumentationLog, CostsNoTimeOfTheLapThatALineEnds) {
    log.onLine = [](const std::string& /*line*/) { advanceClock(100ms); };
    {
        Instrumentation object("N");
        EXPECT_EQ(object.lap("first"), 0ms);
        EXPECT_EQ(object.lap("second"), 100ms);
    }
    EXPECT_EQ(log.lines, Lines({"N: Begin", "  N: first - 0 ms", "  N: second - 100 ms",
                                "  N: Final Lap - 100 ms", "N: End - 300 ms"}));
}

TEST_F(InstrumentationLog, LetsExceptionsPropagateExceptFromTheEnd) {
    log.onLine = throwAt("bad");
    {
        Instrumentation object("N");
        EXPECT_THROW(object.lap("bad"), std::runtime_error);
        EXPECT_THROW(object.note("bad"), std::runtime_error);
        EXPECT_THROW(object.notes({"one", "bad", "two"}), std::runtime_error);
        EXPECT_THROW(object.notes({"three"}, "bad"), std::runtime_error);
        EXPECT_THROW(object.notes({"four", "bad", "five"}, "good"), std::runtime_error);
        log.onLine = throwAt("End");
    }
    Instrumentation("M", true, {});
    EXPECT_EQ(log.lines,
              Lines({"N: Begin", "  N: one", "  N: good", "    good: four", "M: Begin"}));
}

TEST_F(InstrumentationLog, StartsTheNextLapEvenIfItFails) {
    log.onLine = throwAt("bad");
    Instrumentation object("N");
    advanceClock(3ms);
    EXPECT_THROW(object.lap("bad"), std::runtime_error);
    EXPECT_EQ(object.lap("good"), 0ms);
}

TEST_F(InstrumentationLog, IsChosenAnewForEachLineButOnceForABlock) {
    log.onLine = [](const std::string& line) {
        if (line == "  N: one" || line == "    Header: three") {
            Instrumentation::setGlobalLogMessageHandler({});
        }
    };
    Instrumentation object("N");
    object.notes({"one", "dropped"});
    object.notes({"dropped"}, "Dropped");
    Instrumentation::setGlobalLogMessageHandler(log.handler);
    object.notes({"three", "four"}, "Header");
    object.note("dropped");
    EXPECT_EQ(log.lines, Lines({"N: Begin", "  N: one", "  N: Header", "    Header: three",
                                "    Header: four"}));
}

TEST_F(InstrumentationLog, ShowsAnObjectCountedUntilItsFinalLap) {
    Lines depths;
    log.onLine = [&depths](const std::string& /*line*/) {
        Instrumentation("", [&depths](const std::string& line) { depths.push_back(line); });
        depths.pop_back();
    };
    { Instrumentation("N").lap("lap"); }
    EXPECT_EQ(depths, Lines({"  : Begin", "  : Begin", "  : Begin", ": Begin"}));
}

TEST(Instrumentation, AllocatesNothingForLinesThatItDoesNotSend) {
    const Lines items = {longText};
    Lines names = {longText, longText};
    LogMessageHandler unused = [padding = longText](const std::string& /*line*/) {};
    const auto sendNothing = [&] {
        Instrumentation disabled(std::move(names[0]), false, std::move(unused));
        Instrumentation unheard(std::move(names[1]));
        for (Instrumentation* const object : {&disabled, &unheard}) {
            object->lap(longText);
            object->note(longText);
            object->notes(items, longText);
        }
    };
    EXPECT_EQ(failEachAllocation(sendNothing), 0U);
}

TEST(Instrumentation, DestroysAHandlerThatReplacesItselfAfterItsCall) {
    auto state = std::make_shared<int>();
    const std::weak_ptr<int> watch = state;
    Instrumentation::setGlobalLogMessageHandler(
        [held = std::move(state), &watch](const std::string& /*line*/) {
            Instrumentation::setGlobalLogMessageHandler({});
            EXPECT_FALSE(watch.expired());
        });
    Instrumentation("N", true, {});
    EXPECT_TRUE(watch.expired());
}

// Both leave a process that cannot go on with other tests.
TEST(InstrumentationDeathTest, EndsTheProcessWhenTheFinalLapCannotBeSent) {
    const auto fail = [] {
        GlobalLog log;
        log.onLine = throwAt("Final Lap");
        Instrumentation("N").lap("lap");
    };
    EXPECT_DEATH(fail(), "terminat");
}

TEST(InstrumentationDeathTest, CountsAnObjectWhoseBeginFailed) {
    const auto fail = [] {
        GlobalLog log;
        log.onLine = throwAt("Begin");
        EXPECT_THROW(Instrumentation("N", true, {}), std::runtime_error);
        log.onLine = [](const std::string& line) { std::fputs(line.c_str(), stderr); };
        Instrumentation("N", true, {});
        std::_Exit(0);
    };
    EXPECT_EXIT(fail(), testing::ExitedWithCode(0), "^  N: Begin  N: End - 0 ms$");
}

}  // namespace
