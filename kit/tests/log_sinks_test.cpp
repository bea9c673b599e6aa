#include <lapwing/kit/log_sinks.h>
#include <lapwing/kit/problems.h>

#include "support.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace lapwing;

namespace {

// Sends 500 lines from each of eight threads, which have copies of the handler.
template <class Receive>
void expectWholeLines(const LogMessageHandler& handler, const Receive& receive) {
    onEightThreads([handler](int number) {
        const std::string line(100 * static_cast<std::size_t>(number), 'x');
        for (int count = 0; count < 500; ++count) {
            handler(line);
        }
    });
    std::map<std::size_t, int> counts;
    std::istringstream lines(receive());
    for (std::string line; std::getline(lines, line);) {
        ++counts[line.substr(0, line.find('\r')).size()];
    }
    EXPECT_EQ(counts.size(), 8U);
    for (const auto& [size, count] : counts) {
        EXPECT_EQ(count, 500) << size;
    }
}

TEST(LogSinks, WriteWholeLinesOfEightThreads) {
    std::ostringstream stream;
    expectWholeLines(logToStream(stream), [&stream] { return stream.str(); });
    for (const LogMessageHandler& handler :
         {logToStandardError(), LogMessageHandler(reportToStandardError)}) {
        testing::internal::CaptureStderr();
        expectWholeLines(handler, testing::internal::GetCapturedStderr);
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
    std::array<char, 5000> buffer{};
    for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
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
