// Stand-ins for what the library meets in a process: a provider, a log, a clock, the heap.

#ifndef LAPWING_TESTS_SUPPORT_H
#define LAPWING_TESTS_SUPPORT_H

#include <lapwing/instrumentation.h>
#include <lapwing/setting_types.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

// Stores values of one type. Installed while it lives.
template <class V>
class StoringProvider final : public DeveloperSettings::Provider {
public:
    using Parameter = lapwing::detail::Parameter<V>;
    using Provider::getValue;
    using Provider::setInstance;
    using Provider::setValue;

    StoringProvider() { setInstance(this); }
    ~StoringProvider() override { setInstance(nullptr); }

    V getValue(const char* key, Parameter fallback) const override {
        onRead();
        const auto found = store.find(key);
        return found == store.end() ? fallback : found->second;
    }
    bool exists(const char* key) const override { return store.count(key) != 0; }
    void setValue(const char* key, Parameter value) override { store[key] = value; }
    void clear(const char* key) override { store.erase(key); }

    std::map<std::string, V> store;
    std::function<void()> onRead = [] {};
};

// Keeps the lines that reach the global handler while it lives.
class GlobalLog {
public:
    GlobalLog() { Instrumentation::setGlobalLogMessageHandler(handler); }
    ~GlobalLog() { Instrumentation::setGlobalLogMessageHandler({}); }

    Lines lines;
    LogMessageHandler onLine = [](const std::string&) {};
    LogMessageHandler handler = [this](const std::string& line) {
        onLine(line);
        lines.push_back(line);
    };
};

// The library's clock moves only by this and by sleeps, each of which wakes up after 7 ms at the
// latest.
void advanceClock(std::chrono::nanoseconds length);

// Runs `action` again and again, its first allocation on this thread failing, then its second and
// so on until none does; `verify` sees what each failure left. Returns how many failed.
std::size_t failEachAllocation(
    const std::function<void()>& action, const std::function<void()>& verify = [] {});

#endif  // LAPWING_TESTS_SUPPORT_H
