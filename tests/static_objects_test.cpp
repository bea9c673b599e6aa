// The library's static objects from its loading to its unloading. This program is not linked with
// the library: a host module brings it.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

#ifdef _WIN32
using Module = HMODULE;
const auto load = LoadLibraryA;
const auto findAddress = GetProcAddress;
bool unload(Module module) {
    return FreeLibrary(module) != 0;
}
#else
using Module = void*;
const auto findAddress = dlsym;
Module load(const char* path) {
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}
bool unload(Module module) {
    return dlclose(module) == 0;
}
#endif

template <class Function>
Function* find(Module module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(findAddress(module, name)));
}

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
