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

// Windows ends a program's own objects before those of its modules, whenever they were made.
#ifdef _WIN32
constexpr bool isProgramLeftFirst = true;

class Host {
public:
    bool load() { return (module = LoadLibraryA(LAPWING_TESTS_HOST)) != nullptr; }
    bool unload() { return FreeLibrary(module) != 0; }
    void* find(const char* name) { return reinterpret_cast<void*>(GetProcAddress(module, name)); }
    static bool isLibraryLoaded() { return GetModuleHandleA(LAPWING_TESTS_LIBRARY) != nullptr; }

private:
    HMODULE module = nullptr;
};
#else
constexpr bool isProgramLeftFirst = false;

class Host {
public:
    bool load() { return (module = dlopen(LAPWING_TESTS_HOST, RTLD_NOW | RTLD_LOCAL)) != nullptr; }
    bool unload() { return dlclose(module) == 0; }
    void* find(const char* name) { return dlsym(module, name); }
    static bool isLibraryLoaded() {
        void* const library = dlopen(LAPWING_TESTS_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
        return library != nullptr && dlclose(library) == 0;
    }

private:
    void* module = nullptr;
};
#endif

void start(Host& host, void (*tell)(const char*)) {
    reinterpret_cast<void (*)(void (*)(const char*))>(host.find("start"))(tell);
}

void send(Host& host, const char* name) {
    reinterpret_cast<void (*)(const char*)>(host.find("send"))(name);
}

Lines told;

TEST(Module, EmptiesTheGlobalHandlerForGoodWhenItIsUnloaded) {
    for (int round = 0; round < 2; ++round) {
        told.clear();
        Host host;
        ASSERT_TRUE(host.load());
        EXPECT_TRUE(Host::isLibraryLoaded());
        send(host, "Unheard");
        start(host, [](const char* text) { told.emplace_back(text); });
        send(host, "Heard");
        ASSERT_TRUE(host.unload());
        EXPECT_FALSE(Host::isLibraryLoaded());
        ASSERT_GE(told.size(), 3U);
        EXPECT_EQ(told[0], "Heard: Begin");
        EXPECT_EQ(told[1], "  Heard: still here");
        EXPECT_EQ(Lines(told.begin() + 3, told.end()),
                  Lines({"host is gone", "handler is gone", "collected"}));
    }
}

TEST(ModuleDeathTest, LetsAHostExitWithItsHandlerInstalled) {
    static Host host;
    const auto leave = [] {
        std::atexit([] { send(host, "Late"); });
        host.load();
        start(host, [](const char* text) { std::fprintf(stderr, "%s; ", text); });
        std::exit(0);
    };
    const std::string heard = isProgramLeftFirst ? "Late: Begin; .* ms; " : "";
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0),
                "^" + heard + "host is gone; handler is gone; collected; $");
}

}  // namespace
