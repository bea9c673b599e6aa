#include <lapwing/kit/trace.h>

#include "file_support.h"
#include "support.h"

#include <map>
#include <nlohmann/json.hpp>
#include <numeric>
#include <thread>

#ifndef _WIN32
#include <pthread.h>
#include <sys/resource.h>
#include <csignal>
#endif

using namespace lapwing;
using Json = nlohmann::json;

namespace {

using Lines = std::vector<std::string>;
using Trace = InNewFolder;

// The events of the file, which parses whenever it is closed like this.
Json eventsOf(const fs::path& file) {
    Json events = Json::parse(contentsOf(file) + "{}]");
    events.erase(events.size() - 1);
    return events;
}

// The phase and the text of each event that is not a name.
Lines linesOf(const fs::path& file) {
    Lines lines;
    for (const Json& event : eventsOf(file)) {
        if (event["ph"] != "M") {
            lines.push_back(std::string(event["ph"]) + ' ' + std::string(event["name"]));
        }
    }
    return lines;
}

// By thread, the phases of its events.
std::map<int, std::string> phasesOf(const fs::path& file) {
    std::map<int, std::string> phases;
    std::map<int, double> times;
    for (const Json& event : eventsOf(file)) {
        if (event["ph"] != "M") {
            phases[event["tid"]] += event["ph"];
            EXPECT_GE(event["ts"], times[event["tid"]]);
            times[event["tid"]] = event["ts"];
        }
    }
    return phases;
}

TEST_F(Trace, HasTheIntervalsOfEightThreadsOnTheirRows) {
    {
        TraceFile trace("t.json");
        onEightThreads([handler = trace.handler()](int) {
#ifndef _WIN32
            pthread_setname_np(pthread_self(), "worker");
#endif
            for (int round = 0; round < 200; ++round) {
                Instrumentation outer("Outer", handler);
                Instrumentation("Inner", handler).lap("step");
            }
        });
    }
    std::string rounds;
    for (int round = 0; round < 200; ++round) {
        rounds += "BBiiEE";
    }
    EXPECT_EQ(phasesOf("t.json").size(), 8U);
    for (const auto& [thread, phases] : phasesOf("t.json")) {
        EXPECT_EQ(phases, rounds) << thread;
    }
    Names names;
    for (const Json& event : eventsOf("t.json")) {
        names.insert(event["ph"] == "M" ? event["args"]["name"] : Json("event"));
    }
#ifdef _WIN32
    EXPECT_EQ(names.count("lapwing_kit_tests.exe"), 1U);
#else
    EXPECT_EQ(names, (Names{"event", "lapwing_kit_tes", "worker"}));  // the system cuts names
#endif
}

TEST_F(Trace, EndsIntervalsThatOverlapOrEndOnAnotherThread) {
    TraceFile trace("t.json");
    const LogMessageHandler handler = trace.handler();
    for (const char* line : {"A: Begin", "  B: Begin", "    C: Begin", "  B: End - 1 ms",
                             "  B: End - 1 ms", "    C: End - 22 ms", "    D: Begin"}) {
        handler(line);
    }
    std::thread([&handler] { handler("    D: End - 3 ms"); }).join();
    for (const char* line : {"  A: End - 4 ms", "A: End - x ms", "A: End -  ms", "A: End - 4 ms"}) {
        handler(line);
    }
    trace.flush();
    EXPECT_EQ(linesOf("t.json"),
              Lines({"B A", "B B", "B C", "i B: End - 1 ms", "i B: End - 1 ms", "E C", "E B", "B D",
                     "i D: End - 3 ms", "E D", "i A: End - 4 ms", "i A: End - x ms",
                     "i A: End -  ms", "E A"}));
}

TEST_F(Trace, IsJsonWhateverTheNamesAre) {
    TraceFile trace("t.json");
    std::string allBytes(256, ' ');
    std::iota(allBytes.begin(), allBytes.end(), '\0');
    for (const std::string& name :
         {std::string("caf\xC3\xA9"), std::string(), std::string("a: End - 1 ms"),
          std::string("\"\\\n\x7F"), allBytes}) {
        Instrumentation(name, trace.handler()).note(name);
    }
    trace.flush();
    EXPECT_EQ(phasesOf("t.json").begin()->second, "BiEBiEBiEBiEBiE");
    EXPECT_EQ(linesOf("t.json").at(0), "B caf\xC3\xA9");
}

// Sends 10,000 lines, and one after the destruction. The chained handler gets all of them.
std::string problemsOfSending(const TraceOptions& given) {
    std::string problems;
    int passedOn = 0;
    LogMessageHandler handler;
    {
        TraceOptions options = given;
        options.problems = [&problems](const std::string& problem) { problems += problem; };
        TraceFile trace("t.json", options);
        handler = trace.handler([&passedOn](const std::string&) { ++passedOn; });
        for (int line = 0; line < 10'000; ++line) {
            handler("line");
        }
    }
    handler("line");
    EXPECT_EQ(passedOn, 10'001);
    return problems;
}

TEST_F(Trace, StopsAtItsLimitAndNamesAFileThatItCannotOpen) {
    const std::string message = messageOf<std::system_error>([] { TraceFile("no folder/t.json"); });
    EXPECT_EQ(message.rfind("no folder/t.json: ", 0), 0U) << message;
    TraceOptions options;
    EXPECT_EQ(problemsOfSending(options), "");
    EXPECT_EQ(linesOf("t.json").size(), 10'000U);
    for (const unsigned limit : {0U, 2U, 300U, 65'536U, 200'000U}) {
        options.limit = limit;
        EXPECT_EQ(problemsOfSending(options),
                  "t.json: stops at its limit of " + std::to_string(limit) + " bytes");
        EXPECT_LE(fs::file_size("t.json"), limit);
        EXPECT_GE(fs::file_size("t.json") + 200, limit);
        EXPECT_TRUE(limit == 0 || eventsOf("t.json").is_array());
    }
}

#ifndef _WIN32
TEST_F(Trace, HasWholeEventsAfterAWriteFails) {
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit small{100'000, usual.rlim_max};
    const auto signalHandler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string problems = problemsOfSending({});
    setrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, signalHandler);
    EXPECT_EQ(problems, "t.json: File too large");
    EXPECT_GT(linesOf("t.json").size(), 500U);
}
#endif

TEST_F(Trace, IsWrittenWhenTheProcessEndsAndButForABlockWhenItIsKilled) {
    EXPECT_EQ(run("leave"), 0);
    EXPECT_EQ(linesOf("trace.json").size(), 9U);
    EXPECT_NE(run("kill"), 0);
    const std::size_t count = linesOf("trace.json").size();
    EXPECT_LT(count, 60'000U);
    EXPECT_GE(count, 60'000U - 65'536 / 50);  // an event has 50 bytes or more
}

}  // namespace
