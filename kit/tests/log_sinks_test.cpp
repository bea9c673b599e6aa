#include <lapwing/kit/log_sinks.h>
#include <lapwing/kit/problems.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace lapwing;

namespace {

constexpr int linesOfEach = 500;

std::string lineOf(std::size_t thread) {
    return std::string(100 * thread + 50, static_cast<char>('a' + thread));
}

// Sends from eight threads, which have copies of the handler.
void sendLines(const LogMessageHandler& handler) {
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < 8; ++thread) {
        threads.emplace_back([handler, line = lineOf(thread)] {
            for (int number = 0; number < linesOfEach; ++number) {
                handler(line);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void expectWholeLines(const std::string& text) {
    std::map<std::string, int> counts;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        ++counts[line.substr(0, line.find('\r'))];
    }
    EXPECT_EQ(counts.size(), 8U);
    for (std::size_t thread = 0; thread < 8; ++thread) {
        EXPECT_EQ(counts[lineOf(thread)], linesOfEach) << thread;
    }
}

TEST(LogSinks, WriteWholeLinesOfEightThreads) {
    std::ostringstream stream;
    sendLines(logToStream(stream));
    expectWholeLines(stream.str());
    for (const LogMessageHandler& handler :
         {logToStandardError(), LogMessageHandler(reportToStandardError)}) {
        testing::internal::CaptureStderr();
        sendLines(handler);
        expectWholeLines(testing::internal::GetCapturedStderr());
    }
}

#ifdef _WIN32

std::string debugged;

// The system falls back to this exception, in its code page, if none takes the wide text.
LONG CALLBACK receive(EXCEPTION_POINTERS* pointers) {
    constexpr DWORD printException = 0x40010006;
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == printException) {
        debugged += reinterpret_cast<const char*>(record.ExceptionInformation[1]);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

TEST(LogSinks, SendAnyBytesToTheDebugger) {
    if (GetACP() != 1252) {
        GTEST_SKIP() << "the system's code page has other characters";
    }
    void* const receiver = AddVectoredExceptionHandler(1, receive);
    logToDebugger()(std::string("  \xC3\xA9\xFF\0|", 7));
    RemoveVectoredExceptionHandler(receiver);
    EXPECT_EQ(debugged, "  \xE9??|\n");
}

#else

// Its reader is slow, and takes a part at a time.
TEST(LogSinks, WriteALineToAPipeThatIsFull) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    const int standardError = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    std::thread writer([&ends] {
        logToDebugger()(std::string(1'000'000, 'x'));
        close(ends[1]);
        close(STDERR_FILENO);
    });
    std::string text;
    std::vector<char> buffer(5000);
    for (ssize_t count = 1; count > 0;) {
        count = read(ends[0], buffer.data(), buffer.size());
        text.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    writer.join();
    close(ends[0]);
    dup2(standardError, STDERR_FILENO);
    close(standardError);
    EXPECT_EQ(text, std::string(1'000'000, 'x') + '\n');
}

#endif

TEST(LogSinks, PassOnLinesInOrder) {
    std::string got;
    const LogMessageHandler one = [&got](const std::string& line) { got += "1" + line; };
    const LogMessageHandler two = [&got](const std::string& line) { got += "2" + line; };
    const LogMessageHandler full = [](const std::string&) { throw std::runtime_error("full"); };
    const LogMessagePredicate isShort = [](const std::string& line) { return line.size() < 2; };

    const LogMessageHandler both = tee(filtered(one, isShort), tee({}, filtered(two, {})));
    both("a");
    both("bc");
    EXPECT_THROW(tee(full, one)("x"), std::runtime_error);
    EXPECT_THROW(tee(one, full)("y"), std::runtime_error);
    EXPECT_EQ(got, "1a2a2bc1y");
    EXPECT_FALSE(tee({}, {}) || filtered({}, isShort));
}

}  // namespace
