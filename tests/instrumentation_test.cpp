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
struct ClockedInstrumentation : testing::Test {
    void TearDown() override { std::locale::global(std::locale::classic()); }
    const std::locale before = std::locale::global({std::locale::classic(), new Grouping});
    FakeClock clock;
    GlobalLog log;
};

TEST_F(ClockedInstrumentation, TellsNestedScopesAsATree) {
    {
        Instrumentation load("Load");
        clock.advance(4ms);
        {
            Instrumentation parse("Parse");
            clock.advance(3ms);
            EXPECT_EQ(parse.lap("step"), 3ms);
            clock.advance(1ms);
            EXPECT_EQ(parse.elapsed(), 4ms);
        }
        clock.advance(1990ms);
        EXPECT_EQ(load.lap("parsed"), 1998ms);
        clock.advance(2ms);
    }
    Instrumentation("Next", log.handler());
    EXPECT_EQ(log.lines, Lines({"Load: Begin", "  Parse: Begin", "    Parse: step - 3 ms",
                                "    Parse: Final Lap - 1 ms", "  Parse: End - 4 ms",
                                "  Load: parsed - 1998 ms", "  Load: Final Lap - 2 ms",
                                "Load: End - 2000 ms", "Next: Begin", "Next: End - 0 ms"}));
}

TEST_F(ClockedInstrumentation, SendsNotesInTheirForms) {
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

TEST_F(ClockedInstrumentation, TruncatesTimesTowardZero) {
    Instrumentation object("N");
    EXPECT_EQ((clock.advance(999'999ns), object.lap("lap")), 0ms);
    EXPECT_EQ((clock.advance(1'999'999ns), object.lap("lap")), 1ms);
    EXPECT_EQ((clock.advance(-1'999'999ns), object.lap("lap")), -1ms);
    EXPECT_EQ(object.elapsed(), 0ms);
    EXPECT_EQ(log.lines,
              Lines({"N: Begin", "  N: lap - 0 ms", "  N: lap - 1 ms", "  N: lap - -1 ms"}));
}

TEST_F(ClockedInstrumentation, MeasuresAndCountsWithoutSendingAnything) {
    Instrumentation silent("Silent", false, log.handler());
    clock.advance(5ms);
    EXPECT_EQ(silent.lap("lap"), 5ms);
    clock.advance(2ms);
    EXPECT_EQ(silent.elapsed(), 7ms);
    EXPECT_EQ(silent.lap("lap"), 2ms);
    std::thread([] { Instrumentation("Other", true, {}); }).join();
    EXPECT_EQ(log.lines, Lines({"  Other: Begin", "  Other: End - 0 ms"}));
}

TEST_F(ClockedInstrumentation, KeepsTheLogsOwnTimeOutOfWhatItMeasures) {
    log.onLine = [this](const std::string& /*line*/) { clock.advance(100ms); };
    {
        Instrumentation object("N");
        EXPECT_EQ(object.elapsed(), 0ms);
        EXPECT_EQ(object.lap("first"), 0ms);
        EXPECT_EQ(object.lap("second"), 100ms);
    }
    EXPECT_EQ(log.lines, Lines({"N: Begin", "  N: first - 0 ms", "  N: second - 100 ms",
                                "  N: Final Lap - 100 ms", "N: End - 300 ms"}));
    EXPECT_EQ(clock.readings, 6);
}

TEST_F(ClockedInstrumentation, StartsTheNextLapEvenWhereSendingFails) {
    log.onLine = throwAt("bad");
    {
        Instrumentation object("N");
        clock.advance(3ms);
        EXPECT_THROW(object.lap("bad"), std::runtime_error);
    }
    EXPECT_EQ(log.lines, Lines({"N: Begin", "N: End - 3 ms"}));
    Instrumentation object("N");
    clock.advance(3ms);
    EXPECT_THROW(object.lap("bad"), std::runtime_error);
    EXPECT_EQ(object.lap("good"), 0ms);
}

TEST_F(ClockedInstrumentation, AllocatesNothingForLinesThatItDoesNotSend) {
    Instrumentation::setGlobalLogMessageHandler({});
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
    EXPECT_EQ(countAllocations(sendNothing), 0U);
}

TEST(Instrumentation, ChoosesTheHandlerAnewForEachLineButOnceForABlock) {
    GlobalLog log;
    log.onLine = [](const std::string& line) {
        if (line == "  N: one" || line == "    Header: three") {
            Instrumentation::setGlobalLogMessageHandler({});
        }
    };
    Instrumentation object("N");
    object.notes({"one", "dropped"});
    object.notes({"dropped"}, "Dropped");
    Instrumentation::setGlobalLogMessageHandler(log.handler());
    object.notes({"three", "four"}, "Header");
    object.note("dropped");
    EXPECT_EQ(log.lines, Lines({"N: Begin", "  N: one", "  N: Header", "    Header: three",
                                "    Header: four"}));
}

TEST(Instrumentation, KeepsAHandlerAliveThatReplacesItself) {
    auto state = std::make_shared<std::string>("alive");
    std::string seen;
    Instrumentation::setGlobalLogMessageHandler(
        [held = std::move(state), &seen](const std::string& /*line*/) {
            Instrumentation::setGlobalLogMessageHandler({});
            seen = *held;
        });
    Instrumentation("N", true, {});
    EXPECT_EQ(seen, "alive");
}

TEST(Instrumentation, LetsTheHandlersExceptionsPropagateExceptAtTheEnd) {
    GlobalLog log;
    log.onLine = throwAt("bad");
    {
        Instrumentation object("N");
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

TEST(Instrumentation, IsCountedFromBeforeItsBeginUntilAfterItsFinalLap) {
    GlobalLog log;
    Lines depths;
    log.onLine = [&depths](const std::string& /*line*/) {
        Instrumentation("", [&depths](const std::string& line) { depths.push_back(line); });
        depths.pop_back();
    };
    { Instrumentation("N").lap("lap"); }
    EXPECT_EQ(depths, Lines({"  : Begin", "  : Begin", "  : Begin", ": Begin"}));
}

// Both leave a process that cannot go on with other tests.
TEST(InstrumentationDeathTest, EndsTheProcessWhenTheFinalLapCannotBeSent) {
    const auto fail = [] {
        exitOnTerminate();
        GlobalLog log;
        log.onLine = throwAt("Final Lap");
        Instrumentation("N").lap("lap");
    };
    EXPECT_EXIT(fail(), testing::ExitedWithCode(3), "terminated");
}

TEST(InstrumentationDeathTest, CountsAnObjectWhoseBeginFailed) {
    const auto fail = [] {
        GlobalLog log;
        log.onLine = throwAt("Begin");
        EXPECT_THROW(Instrumentation("N", true, {}), std::runtime_error);
        log.onLine = [](const std::string& line) { std::fprintf(stderr, "<%s>", line.c_str()); };
        Instrumentation("N", true, {});
        std::_Exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(fail(), testing::ExitedWithCode(0), "<  N: Begin><  N: End - 0 ms>");
}

}  // namespace
