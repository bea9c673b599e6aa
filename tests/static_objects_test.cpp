// The library's static objects from its loading to its unloading. This program is not linked with
// the library: a host module brings it.

#include <gtest/gtest.h>

#include "module.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using Start = void(void (*tell)(const char*));
using Lines = std::vector<std::string>;
Lines told;

TEST(StaticObjects, EmptyTheGlobalHandlerForGoodWhenTheLibraryIsUnloaded) {
    for (int round = 0; round < 2; ++round) {
        told.clear();
        Module host = load(LAPWING_TESTS_HOST);
        ASSERT_NE(host, nullptr);
        const auto send = find<void(const char*)>(host, "send");
        send("Unheard");
        find<Start>(host, "start")([](const char* text) { told.emplace_back(text); });
        send("Heard");
        EXPECT_GE(find<long long(int)>(host, "pad")(20), 20);
        ASSERT_TRUE(unload(host));
        told.at(2).clear();
        EXPECT_EQ(told, Lines({"Heard: Begin", "  Heard: still here", "", "host is gone",
                               "handler is gone"}));
    }
}

TEST(StaticObjectsDeathTest, LetAHostExitWithItsHandlerInstalledAndTimeRunsAfterwards) {
    const auto leave = [] {
        Module lateCaller = load(LAPWING_TESTS_LATE_CALLER);
        Module host = load(LAPWING_TESTS_HOST);
        find<Start>(host, "start")([](const char* text) { std::fprintf(stderr, "%s; ", text); });
        find<void(void (*)())>(lateCaller, "callLate")(find<void()>(host, "timeRuns"));
        std::exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0),
                "^host is gone; handler is gone; 1; 2; 3; 3; 4; 4; 5; $");
}

}  // namespace
