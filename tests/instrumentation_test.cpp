#include "support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <locale>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

using namespace std::chrono_literals;

namespace {

const std::string longText(100, 'x');

struct ClockedInstrumentation : testing::Test {
    void SetUp() override { LAPWING_SKIP_UNLESS_SUBSTITUTES_REACH_LIBRARY(); }
    FakeClock clock;
    GlobalLog log;
};

// Throws when a line ends with `text`.
auto throwAt(const std::string& text) {
    return [text](const std::string& line) {
        if (line.size() >= text.size() &&
            line.compare(line.size() - text.size(), text.size(), text) == 0) {
            throw std::runtime_error("no such log");
        }
    };
}

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
        clock.advance(2ms);
        EXPECT_EQ(load.lap("parsed"), 10ms);
        clock.advance(2ms);
    }
    Instrumentation("Next", log.handler());
    EXPECT_EQ(log.lines, Lines({"Load: Begin", "  Parse: Begin", "    Parse: step - 3 ms",
                                "    Parse: Final Lap - 1 ms", "  Parse: End - 4 ms",
                                "  Load: parsed - 10 ms", "  Load: Final Lap - 2 ms",
                                "Load: End - 12 ms", "Next: Begin", "Next: End - 0 ms"}));
}

TEST_F(ClockedInstrumentation, SendsNotesInTheirForms) {
    {
        Instrumentation object("N");
        object.note("text");
        object.notes({"one", "two"});
        object.notes({"three"}, "");
        object.notes({}, "Empty");
        object.notes({"four", longText}, "Header");
    }
    EXPECT_EQ(log.lines, Lines({"N: Begin", "  N: text", "  N: one", "  N: two", "  N: three",
                                "  N: Empty", "  N: Header", "    Header: four",
                                "    Header: " + longText, "N: End - 0 ms"}));
}

TEST_F(ClockedInstrumentation, CutsTimesTowardZero) {
    const std::vector<std::pair<std::chrono::nanoseconds, Milliseconds>> cases = {
        {999'999ns, 0ms}, {1'000'000ns, 1ms}, {1'999'999ns, 1ms}, {-1'999'999ns, -1ms}};
    for (const auto& [length, milliseconds] : cases) {
        std::optional<Instrumentation> object(std::in_place, "N", log.handler());
        clock.advance(length);
        EXPECT_EQ(object->elapsed(), milliseconds) << length.count();
        EXPECT_EQ(object->lap("lap"), milliseconds) << length.count();
        clock.advance(length);
        object.reset();
        const std::string count = std::to_string(milliseconds.count());
        EXPECT_EQ(*(log.lines.end() - 3), "  N: lap - " + count + " ms");
        EXPECT_EQ(*(log.lines.end() - 2), "  N: Final Lap - " + count + " ms");
    }
}

TEST_F(ClockedInstrumentation, MeasuresLapsWithoutSendingThem) {
    {
        Instrumentation silent("Silent", false, log.handler());
        clock.advance(5ms);
        EXPECT_EQ(silent.lap("lap"), 5ms);
        clock.advance(2ms);
        EXPECT_EQ(silent.elapsed(), 7ms);
        EXPECT_EQ(silent.lap("lap"), 2ms);
        std::thread([] { Instrumentation("Other", true, {}); }).join();
    }
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
    EXPECT_EQ(clock.readings(), 6);
}

TEST_F(ClockedInstrumentation, WritesCountsTheSameInEveryLocale) {
    struct Grouping : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new Grouping));
    {
        Instrumentation object("N");
        clock.advance(1234567890123ms);
    }
    std::locale::global(before);
    EXPECT_EQ(log.lines.back(), "N: End - 1234567890123 ms");
}

TEST_F(ClockedInstrumentation, LetsAFailedLapStartTheNextOne) {
    {
        Instrumentation object("N");
        clock.advance(3ms);
        log.onLine = throwAt("lap - 3 ms");
        EXPECT_THROW(object.lap("lap"), std::runtime_error);
        clock.advance(2ms);
    }
    EXPECT_EQ(log.lines, Lines({"N: Begin", "N: End - 5 ms"}));
    {
        Instrumentation object("N");
        clock.advance(3ms);
        EXPECT_THROW(object.lap("lap"), std::runtime_error);
        clock.advance(2ms);
        EXPECT_EQ(object.lap("next"), 2ms);
    }
    EXPECT_EQ(log.lines.back(), "N: End - 5 ms");
}

TEST_F(ClockedInstrumentation, NeedsNoMemoryWhenItSendsNothing) {
    Instrumentation::setGlobalLogMessageHandler({});
    const std::vector<std::string> items = {longText};
    std::string names[] = {longText, longText};
    LogMessageHandler kept = [padding = longText](const std::string& /*line*/) {};
    const Allocations allocations;
    Instrumentation disabled(std::move(names[0]), false, std::move(kept));
    Instrumentation unheard(std::move(names[1]));
    for (Instrumentation* const object : {&disabled, &unheard}) {
        object->lap(longText);
        object->note(longText);
        object->notes(items);
        object->notes(items, longText);
    }
    EXPECT_EQ(allocations.count(), 0U);
}

TEST_F(ClockedInstrumentation, LetsOutExhaustedMemoryOfEachLine) {
    std::size_t lines = 0;
    Instrumentation object("N", [&lines](const std::string& /*line*/) { ++lines; });
    const std::vector<std::string> items = {"one", longText};
    const auto send = [&] {
        object.lap(longText);
        object.note(longText);
        object.notes(items, longText);
    };
    lines = 0;
    const std::size_t failures = failEachAllocation(send, [&lines] {
        EXPECT_LT(lines, 5U);
        lines = 0;
    });
    EXPECT_GE(failures, 5U);
    EXPECT_EQ(lines, 5U);
}

TEST(Instrumentation, SendsToItsOwnHandlerElseToTheGlobalOneIfEnabled) {
    struct Case {
        bool enabled, own, global;
        std::size_t toOwn, toGlobal;
    };
    for (const Case& c : {Case{true, true, true, 2, 0}, Case{true, true, false, 2, 0},
                          Case{true, false, true, 0, 2}, Case{true, false, false, 0, 0},
                          Case{false, true, true, 0, 0}, Case{false, false, true, 0, 0}}) {
        Lines own;
        const LogMessageHandler keep = [&own](const std::string& line) { own.push_back(line); };
        GlobalLog log;
        Instrumentation::setGlobalLogMessageHandler(c.global ? log.handler() : nullptr);
        Instrumentation("N", c.enabled, c.own ? keep : nullptr);
        EXPECT_EQ(own.size(), c.toOwn) << c.enabled << c.own << c.global;
        EXPECT_EQ(log.lines.size(), c.toGlobal) << c.enabled << c.own << c.global;
    }
}

TEST(Instrumentation, ChoosesTheGlobalHandlerAnewForEachLine) {
    Lines later;
    GlobalLog log;
    {
        Instrumentation object("N");
        Instrumentation::setGlobalLogMessageHandler({});
        object.note("dropped");
        Instrumentation::setGlobalLogMessageHandler(
            [&later](const std::string& line) { later.push_back(line); });
        object.note("kept");
        object.notes({"item", "item"}, "switch");
        Instrumentation::setGlobalLogMessageHandler(log.handler());
        log.onLine = [](const std::string& /*line*/) {
            Instrumentation::setGlobalLogMessageHandler({});
        };
        object.notes({"one", "two"});
    }
    EXPECT_EQ(log.lines, Lines({"N: Begin", "  N: one"}));
    EXPECT_EQ(later, Lines({"  N: kept", "  N: switch", "    switch: item", "    switch: item"}));
}

TEST(Instrumentation, SelectsTheHandlerOfAHeadedListOnce) {
    GlobalLog log;
    Instrumentation object("N");
    log.onLine = [](const std::string& /*line*/) {
        Instrumentation::setGlobalLogMessageHandler({});
    };
    object.notes({"one"}, "Header");
    EXPECT_EQ(log.lines, Lines({"N: Begin", "  N: Header"}));
    log.onLine = [](const std::string& line) {
        if (line == "    Header: one") {
            Instrumentation::setGlobalLogMessageHandler({});
        }
    };
    Instrumentation::setGlobalLogMessageHandler(log.handler());
    object.notes({"one", "two"}, "Header");
    EXPECT_EQ(log.lines.back(), "    Header: two");
}

TEST(Instrumentation, KeepsAHandlerAliveThatReplacesItself) {
    auto state = std::make_shared<std::string>("alive");
    const std::weak_ptr<std::string> watch = state;
    std::string seen;
    Instrumentation::setGlobalLogMessageHandler(
        [state = std::move(state), &seen](const std::string& /*line*/) {
            Instrumentation::setGlobalLogMessageHandler({});
            seen = *state;
        });
    Instrumentation("N", true, {});
    EXPECT_EQ(seen, "alive");
    EXPECT_TRUE(watch.expired());
}

TEST(Instrumentation, DestroysTheHandlerThatItReplacesAndKeepsItIfCopyingFails) {
    struct Uncopyable {
        Uncopyable() = default;
        Uncopyable(const Uncopyable& /*other*/) { throw std::runtime_error("no copy"); }
        Uncopyable(Uncopyable&&) = default;
        void operator()(const std::string& /*line*/) const {}
        std::shared_ptr<int> state;
    };
    const auto state = std::make_shared<int>();
    GlobalLog log;
    Instrumentation::setGlobalLogMessageHandler([state](const std::string& /*line*/) {});
    EXPECT_GT(state.use_count(), 1);
    Instrumentation::setGlobalLogMessageHandler(log.handler());
    EXPECT_EQ(state.use_count(), 1);
    const LogMessageHandler uncopyable = Uncopyable();
    EXPECT_THROW(Instrumentation::setGlobalLogMessageHandler(uncopyable), std::runtime_error);
    Instrumentation("N", true, {});
    EXPECT_EQ(log.lines.size(), 2U);
}

TEST(Instrumentation, LetsOutWhatTheHandlerThrowsFromNotes) {
    GlobalLog log;
    log.onLine = throwAt("bad");
    Instrumentation object("N");
    EXPECT_THROW(object.note("bad"), std::runtime_error);
    EXPECT_THROW(object.notes({"one", "bad", "two"}), std::runtime_error);
    EXPECT_THROW(object.notes({"three"}, "bad"), std::runtime_error);
    EXPECT_THROW(object.notes({"four", "bad", "five"}, "good"), std::runtime_error);
    EXPECT_EQ(log.lines, Lines({"N: Begin", "  N: one", "  N: good", "    good: four"}));
}

TEST(Instrumentation, IsCountedFromBeforeItsBeginUntilAfterItsFinalLap) {
    GlobalLog log;
    Lines inner;
    log.onLine = [&inner](const std::string& line) {
        Instrumentation("I", [&](const std::string& text) {
            if (text.find("Begin") != std::string::npos) {
                inner.push_back(text + " in " + line.substr(0, line.find(" -")));
            }
        });
    };
    { Instrumentation("N").lap("lap"); }
    EXPECT_EQ(inner, Lines({"  I: Begin in N: Begin", "  I: Begin in   N: lap",
                            "  I: Begin in   N: Final Lap", "I: Begin in N: End"}));
}

TEST(Instrumentation, DiscardsWhatTheHandlerThrowsAtTheEnd) {
    GlobalLog log;
    log.onLine = [](const std::string& line) {
        if (line.find("End") != std::string::npos) {
            throw std::runtime_error("no such log");
        }
    };
    EXPECT_NO_THROW(Instrumentation("N", true, {}));
    EXPECT_NO_THROW(Instrumentation("M", true, {}));
    EXPECT_EQ(log.lines, Lines({"N: Begin", "M: Begin"}));
}

TEST(InstrumentationDeathTest, EndsTheProcessWhenTheFinalLapCannotBeSent) {
    const auto fail = [] {
        std::set_terminate([] {
            std::fputs("terminated", stderr);
            std::_Exit(3);
        });
        GlobalLog log;
        log.onLine = [](const std::string& line) {
            if (line.find("Final Lap") != std::string::npos) {
                throw std::runtime_error("no such log");
            }
        };
        Instrumentation("N").lap("lap");
    };
    EXPECT_EXIT(fail(), testing::ExitedWithCode(3), "terminated");
}

TEST(InstrumentationDeathTest, CountsAnObjectWhoseBeginFailed) {
    const auto fail = [] {
        GlobalLog log;
        log.onLine = throwAt("Begin");
        bool isThrown = false;
        try {
            Instrumentation("N", true, {});
        } catch (const std::runtime_error&) {
            isThrown = true;
        }
        log.onLine = [](const std::string& line) { std::fprintf(stderr, "<%s>", line.c_str()); };
        Instrumentation("N", true, {});
        std::_Exit(isThrown && log.lines.size() == 2 ? 0 : 1);
    };
    EXPECT_EXIT(fail(), testing::ExitedWithCode(0), "<  N: Begin><  N: End - 0 ms>");
}

TEST(InstrumentationDeathTest, LetsAHostExitWithEverythingInstalled) {
    const auto leave = [] {
        std::shared_ptr<void> state(nullptr,
                                    [](void*) { std::fputs("handler is gone; ", stderr); });
        Instrumentation::setGlobalLogMessageHandler(
            [state = std::move(state)](const std::string& line) {
                std::fprintf(stderr, "%s; ", line.c_str());
            });
        new StoringProvider;
        std::atexit([] { Instrumentation("Late", true, {}); });
        std::exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0),
                "^Late: Begin; Late: End - .* ms; handler is gone; $");
}

}  // namespace
