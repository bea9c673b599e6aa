#include <lapwing/kit/trace.h>

#include "file_support.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>

#ifdef __linux__
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
Lines linesOf(const Json& events) {
    Lines lines;
    for (const Json& event : events) {
        if (event["ph"] != "M") {
            lines.push_back(event["ph"].get<std::string>() + ' ' +
                            event["name"].get<std::string>());
        }
    }
    return lines;
}

// By thread: the intervals, all of which end in the reverse order of their beginnings.
std::map<int, int> countBalanced(const Json& events) {
    std::map<int, int> counts;
    std::map<int, Lines> open;
    std::map<int, double> times;
    for (const Json& event : events) {
        const int thread = event["tid"];
        if (event["ph"] == "M") {
            continue;
        }
        EXPECT_GE(event["ts"], times[thread]);
        times[thread] = event["ts"];
        if (event["ph"] == "B") {
            open[thread].push_back(event["name"]);
            ++counts[thread];
        } else if (event["ph"] == "E") {
            EXPECT_EQ(event["name"], open[thread].back());
            open[thread].pop_back();
        }
    }
    for (const auto& [thread, names] : open) {
        EXPECT_EQ(names, Lines()) << thread;
    }
    return counts;
}

// The names that the file gives to the process or to threads.
Names namesIn(const Json& events, const char* kind) {
    Names names;
    for (const Json& event : events) {
        if (event["name"] == kind) {
            names.insert(event["args"]["name"]);
        }
    }
    return names;
}

TEST_F(Trace, HasTheIntervalsOfEightThreadsOnTheirRows) {
    {
        TraceFile trace("t.json");
        std::vector<std::thread> threads(8);
        for (std::thread& thread : threads) {
            thread = std::thread([handler = trace.handler()] {
#ifdef __linux__
                pthread_setname_np(pthread_self(), "worker");
#endif
                for (int round = 0; round < 200; ++round) {
                    Instrumentation outer("Outer", handler);
                    Instrumentation inner("Inner", handler);
                    inner.lap("step");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    const Json events = eventsOf("t.json");
    const auto counts = countBalanced(events);
    EXPECT_EQ(counts.size(), 8U);
    for (const auto& [thread, count] : counts) {
        EXPECT_EQ(count, 400) << thread;
    }
    EXPECT_EQ(namesIn(events, "process_name").begin()->substr(0, 15), "lapwing_kit_tes");
#ifdef __linux__
    EXPECT_EQ(namesIn(events, "thread_name"), Names{"worker"});
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
    const Json events = eventsOf("t.json");
    EXPECT_EQ(linesOf(events),
              Lines({"B A", "B B", "B C", "i B: End - 1 ms", "i B: End - 1 ms", "E C", "E B", "B D",
                     "i D: End - 3 ms", "E D", "i A: End - 4 ms", "i A: End - x ms",
                     "i A: End -  ms", "E A"}));
    countBalanced(events);
}

TEST_F(Trace, IsJsonWhateverTheNamesAre) {
    TraceFile trace("t.json");
    std::string allBytes;
    for (int byte = 0; byte < 256; ++byte) {
        allBytes += static_cast<char>(byte);
    }
    const std::string names[] = {"",     " ",           "a: End - 1 ms", "\"\\", "\n\x1B[2J\x7F",
                                 "\xFF", "caf\xC3\xA9", allBytes};
    for (const std::string& name : names) {
        Instrumentation(name, trace.handler()).note(name);
    }
    trace.flush();
    const Json events = eventsOf("t.json");
    EXPECT_EQ(linesOf(events).size(), 3 * std::size(names));
    countBalanced(events);
    EXPECT_EQ(linesOf(events).at(18), "B caf\xC3\xA9");
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

TEST_F(Trace, StopsAtItsLimit) {
    TraceOptions options;
    EXPECT_EQ(problemsOfSending(options), "");
    EXPECT_EQ(linesOf(eventsOf("t.json")).size(), 10'000U);
    for (const unsigned limit : {0, 2, 300, 65'536, 200'000}) {
        options.limit = limit;
        EXPECT_EQ(problemsOfSending(options),
                  "t.json: stops at its limit of " + std::to_string(limit) + " bytes");
        EXPECT_LE(fs::file_size("t.json"), limit);
        EXPECT_GE(fs::file_size("t.json") + 200, limit);
        EXPECT_TRUE(limit == 0 || eventsOf("t.json").is_array());
    }
}

#ifdef __linux__
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
    EXPECT_GT(linesOf(eventsOf("t.json")).size(), 500U);
}
#endif

TEST_F(Trace, NamesAFileThatItCannotWrite) {
    try {
        TraceFile("no folder/t.json");
        FAIL() << "nothing was thrown";
    } catch (const std::system_error& error) {
        EXPECT_EQ(std::string(error.what()).rfind("no folder/t.json: ", 0), 0U) << error.what();
    }
}

// An event has more than 50 bytes.
TEST_F(Trace, HasAllButTheLastBlockOfAKilledProcess) {
    EXPECT_NE(run("kill"), 0);
    const std::size_t count = linesOf(eventsOf("trace.json")).size();
    EXPECT_LT(count, 60'000U);
    EXPECT_GE(count, 60'000U - 65'536U / 50);
}

TEST_F(Trace, IsWrittenWhenTheProcessEnds) {
    EXPECT_EQ(run("leave"), 0);
    EXPECT_EQ(linesOf(eventsOf("trace.json")).size(), 9U);
}

}  // namespace
