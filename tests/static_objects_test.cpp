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

using Lines = std::vector<std::string>;
using Tell = void (*)(const char*);

#ifdef _WIN32
using Module = HMODULE;
Module load(const char* path) {
    return LoadLibraryA(path);
}
bool unload(Module module) {
    return FreeLibrary(module) != 0;
}
void* find(Module module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(module, name));
}
#else
using Module = void*;
Module load(const char* path) {
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}
bool unload(Module module) {
    return dlclose(module) == 0;
}
void* find(Module module, const char* name) {
    return dlsym(module, name);
}
#endif

template <class Function>
Function* find(Module module, const char* name) {
    return reinterpret_cast<Function*>(find(module, name));
}

Lines told;
void (*timeRuns)(Tell) = nullptr;

TEST(StaticObjects, EmptyTheGlobalHandlerForGoodWhenTheLibraryIsUnloaded) {
    for (int round = 0; round < 2; ++round) {
        told.clear();
        Module host = load(LAPWING_TESTS_HOST);
        ASSERT_NE(host, nullptr);
        const auto send = find<void(const char*)>(host, "send");
        send("Unheard");
        find<void(Tell)>(host, "start")([](const char* text) { told.emplace_back(text); });
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
        const auto tell = [](const char* text) { std::fprintf(stderr, "%s; ", text); };
        find<void(Tell)>(host, "start")(tell);
        timeRuns = find<void(Tell)>(host, "timeRuns");
        find<void(void (*)())>(lateCaller, "callLate")(
            [] { timeRuns([](const char* text) { std::fprintf(stderr, "%s; ", text); }); });
        std::exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0),
                "^host is gone; handler is gone; 1; 2; 3; 3; 4; 4; 5; $");
}

}  // namespace
