// Stand-ins for what the library meets in a process: a provider, a log, a clock, the heap.

#ifndef LAPWING_TESTS_SUPPORT_H
#define LAPWING_TESTS_SUPPORT_H

#include <lapwing/instrumentation.h>
#include <lapwing/settings.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <new>
#include <string>
#include <thread>
#include <variant>
#include <vector>

using Lines = std::vector<std::string>;

// Stores what is written, and tells which operations it was called with. Installed while it lives.
class StoringProvider : public DeveloperSettings::Provider {
public:
    using Value = std::variant<std::wstring, std::string, double, std::int32_t, bool>;

    StoringProvider() { install(this); }
    StoringProvider(const StoringProvider&) = default;
    StoringProvider& operator=(const StoringProvider&) = default;
    ~StoringProvider() override { install(nullptr); }

    static void install(Provider* provider) { setInstance(provider); }

    std::wstring getValue(const char* key, const std::wstring& fallback) const override {
        return read(key, fallback);
    }
    std::string getValue(const char* key, const std::string& fallback) const override {
        return read(key, fallback);
    }
    double getValue(const char* key, double fallback) const override { return read(key, fallback); }
    std::int32_t getValue(const char* key, std::int32_t fallback) const override {
        return read(key, fallback);
    }
    bool getValue(const char* key, bool fallback) const override { return read(key, fallback); }
    bool exists(const char* key) const override {
        called("exists");
        return store.count(key) != 0;
    }
    void setValue(const char* key, const std::wstring& value) override { write(key, value); }
    void setValue(const char* key, const std::string& value) override { write(key, value); }
    void setValue(const char* key, double value) override { write(key, value); }
    void setValue(const char* key, std::int32_t value) override { write(key, value); }
    void setValue(const char* key, bool value) override { write(key, value); }
    void clear(const char* key) override {
        called("clear");
        store.erase(key);
    }

    std::map<std::string, Value> store;
    mutable Lines calls;
    mutable Value offered;
    std::function<void()> onCall = [] {};

private:
    void called(const char* operation) const {
        calls.emplace_back(operation);
        onCall();
    }
    template <class V>
    V read(const char* key, const V& fallback) const {
        called("getValue");
        offered = fallback;
        const auto found = store.find(key);
        return found == store.end() ? fallback : std::get<V>(found->second);
    }
    template <class V>
    void write(const char* key, const V& value) {
        called("setValue");
        store[key] = value;
    }
};

// Keeps the lines that reach the global handler while it lives.
class GlobalLog {
public:
    GlobalLog() { Instrumentation::setGlobalLogMessageHandler(handler()); }
    GlobalLog(const GlobalLog&) = delete;
    GlobalLog& operator=(const GlobalLog&) = delete;
    ~GlobalLog() { Instrumentation::setGlobalLogMessageHandler({}); }

    LogMessageHandler handler() {
        return [this](const std::string& line) {
            onLine(line);
            lines.push_back(line);
        };
    }

    Lines lines;
    std::function<void(const std::string&)> onLine = [](const std::string&) {};
};

// A program's own steady clock and its operator new stand in for the library's only where the
// library resolves them to the program's: not inside a DLL.
#ifdef LAPWING_TESTS_USE_A_DLL
inline constexpr bool substitutesReachLibrary = false;
#else
inline constexpr bool substitutesReachLibrary = true;
#endif

#define LAPWING_SKIP_UNLESS_SUBSTITUTES_REACH_LIBRARY()                         \
    if (!substitutesReachLibrary) {                                             \
        GTEST_SKIP() << "covered by the program that has the library built in"; \
    }                                                                           \
    static_assert(true)

// While it lives, the steady clock stands still but for what moves it here.
class FakeClock {
public:
    explicit FakeClock(std::chrono::nanoseconds perReading = {});
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;
    ~FakeClock();

    static void advance(std::chrono::nanoseconds time);
    static int readings();
};

// While it lives, this thread's allocations are counted, and the one of the given number fails.
class Allocations {
public:
    explicit Allocations(std::size_t failing = 0);
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;
    ~Allocations();

    static std::size_t count();
};

// Runs `action` again and again, its first allocation failing, then its second and so on until
// none does; `verify` sees what each failure left. Returns how many failed.
inline std::size_t failEachAllocation(const std::function<void()>& action,
                                      const std::function<void()>& verify) {
    for (std::size_t failing = 1;; ++failing) {
        try {
            const Allocations allocations(failing);
            action();
            return failing - 1;
        } catch (const std::bad_alloc&) {
        }
        verify();
    }
}

// Runs `work` on several threads at once; its destructor waits for them.
class Threads {
public:
    static constexpr std::size_t count = 4;

    explicit Threads(const std::function<void()>& work) {
        for (std::thread& thread : threads) {
            thread = std::thread(work);
        }
    }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;
    ~Threads() {
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

private:
    std::array<std::thread, count> threads;
};

#endif  // LAPWING_TESTS_SUPPORT_H
