// Sinks that a host leaves installed. This program is not linked with the library: a host module
// brings it.

#include <gtest/gtest.h>

#include "module.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace {

class InstalledSink : public testing::TestWithParam<const char*> {
protected:
    ~InstalledSink() override { std::filesystem::remove(trace); }

    [[nodiscard]] Module loadHost() const {
        Module host = load(LAPWING_KIT_TESTS_SINK_HOST);
        find<void(const char*, const char*)>(host, "install")(GetParam(), trace.c_str());
        return host;
    }

    // A trace file was closed before "Late".
    void checkTrace() const {
        std::ostringstream text;
        text << std::ifstream(trace).rdbuf();
        const bool isTrace = trace == "trace.trace.json";
        EXPECT_EQ(text.str().find("Early: sent") != std::string::npos, isTrace);
        EXPECT_EQ(text.str().find("Late"), std::string::npos);
    }

    const std::string trace = std::string(GetParam()) + ".trace.json";
};

TEST_P(InstalledSink, LetsItsModuleBeUnloadedAndTheProcessEnd) {
    for (int round = 0; round < 2; ++round) {
        testing::internal::CaptureStderr();
        EXPECT_TRUE(unload(loadHost()));
        const std::string lines = testing::internal::GetCapturedStderr();
        EXPECT_NE(lines.find("Late: sent"), std::string::npos) << lines;
        checkTrace();
    }
    EXPECT_EXIT(std::exit(loadHost() == nullptr ? 1 : 0), testing::ExitedWithCode(0), "Late: sent");
    checkTrace();
}

#ifdef _WIN32
// They are ended before the module's static objects are destroyed, wherever they are. Elsewhere a
// host stops its threads first.
TEST_P(InstalledSink, LetsTheProcessEndWhileThreadsSend) {
    const auto leave = [this] {
        Module host = loadHost();
        for (int number = 0; number < 3; ++number) {
            std::thread(find<void()>(host, "sendForever")).detach();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0), "Early: sent");
}
#endif

INSTANTIATE_TEST_SUITE_P(AsGlobalHandler, InstalledSink,
                         testing::Values("stream", "error", "debugger", "filtered", "trace"));

}  // namespace
