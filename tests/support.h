// Stand-ins for what the library meets in a process: a provider, a log, a clock, the heap.

#ifndef LAPWING_TESTS_SUPPORT_H
#define LAPWING_TESTS_SUPPORT_H

#include <lapwing/instrumentation.h>
#include <lapwing/setting_types.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

using Lines = std::vector<std::string>;

// Stores what is written, and tells which operations it was called with. Installed while it lives.
class StoringProvider final : public DeveloperSettings::Provider {
public:
    using Value = std::variant<std::wstring, std::string, double, std::int32_t, bool>;

    StoringProvider() { install(this); }
    StoringProvider(const StoringProvider&) = default;
    StoringProvider& operator=(const StoringProvider&) = default;
    ~StoringProvider() override { install(nullptr); }

    static void install(Provider* provider) { setInstance(provider); }

    std::wstring getValue(const char* k, const std::wstring& v) const override {
        return read(k, v);
    }
    std::string getValue(const char* k, const std::string& v) const override { return read(k, v); }
    double getValue(const char* k, double v) const override { return read(k, v); }
    std::int32_t getValue(const char* k, std::int32_t v) const override { return read(k, v); }
    bool getValue(const char* k, bool v) const override { return read(k, v); }
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

// Makes std::terminate exit with code 3 and the word "terminated", on every system.
void exitOnTerminate();

// While it lives, the library reads this clock and sleeps by it. It moves only where it is told to.
class FakeClock {
public:
    using Duration = std::chrono::nanoseconds;
    using Time = std::chrono::steady_clock::time_point;

    FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;
    ~FakeClock();

    void advance(Duration length) { time += length; }
    Time read() {
        ++readings;
        return time;
    }
    // Wakes up after longestSleep, however long the sleep was to be.
    void sleep(Duration pause) {
        slept += std::min(pause, longestSleep);
        time += std::min(pause, longestSleep);
    }

    int readings = 0;
    Duration slept{};
    Duration longestSleep = Duration::max();

private:
    Time time{std::chrono::hours(1)};
};

// Returns how many allocations `action` makes on this thread; the one numbered `failing` fails.
std::size_t countAllocations(const std::function<void()>& action, std::size_t failing = 0);

// Runs `action` again and again, its first allocation failing, then its second and so on until
// none does; `verify` sees what each failure left. Returns how many failed.
std::size_t failEachAllocation(const std::function<void()>& action,
                               const std::function<void()>& verify);

#endif  // LAPWING_TESTS_SUPPORT_H
