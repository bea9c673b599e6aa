// The library's process-wide state from its loading to its unloading. This program is not linked
// with the library: a host module brings it.

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

// Windows ends a program's own objects before those of its modules, whenever they were made.
#ifdef _WIN32
const std::string heard = "Late: Begin; .* ms; ";
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
const std::string heard;
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

Module host;
Lines told;

void start(Tell tell) {
    reinterpret_cast<void (*)(Tell)>(find(host, "start"))(tell);
}

void send(const char* name) {
    reinterpret_cast<void (*)(const char*)>(find(host, "send"))(name);
}

TEST(Module, EmptiesTheGlobalHandlerForGoodWhenItIsUnloaded) {
    for (int round = 0; round < 2; ++round) {
        told.clear();
        host = load(LAPWING_TESTS_HOST);
        ASSERT_NE(host, nullptr);
        send("Unheard");
        start([](const char* text) { told.emplace_back(text); });
        send("Heard");
        ASSERT_TRUE(unload(host));
        told.at(2).clear();
        EXPECT_EQ(told, Lines({"Heard: Begin", "  Heard: still here", "", "host is gone",
                               "handler is gone", "collected"}));
    }
}

TEST(ModuleDeathTest, LetsAHostExitWithItsHandlerInstalled) {
    const auto leave = [] {
        std::atexit([] { send("Late"); });
        host = load(LAPWING_TESTS_HOST);
        start([](const char* text) { std::fprintf(stderr, "%s; ", text); });
        std::exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0),
                "^" + heard + "host is gone; handler is gone; collected; $");
}

}  // namespace
