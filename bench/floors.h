// The least code that must run to do what the library does, as a shared library of its own, so that
// a host pays for the call into it as it does for the call into Lapwing. Interfaces are the
// library's where they are part of the cost: what is taken by value there is taken by value here.

#ifndef LAPWING_BENCH_FLOORS_H
#define LAPWING_BENCH_FLOORS_H

#include <lapwing/timing_profiles.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "floors_export.h"

namespace floors {

// A provider is found through an atomic pointer and asked through a virtual call.
class Source {
public:
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    virtual std::string getValue(const char* key, const std::string& fallback) const = 0;
    virtual double getValue(const char* key, double fallback) const = 0;
    virtual std::int32_t getValue(const char* key, std::int32_t fallback) const = 0;
    virtual bool getValue(const char* key, bool fallback) const = 0;

protected:
    Source() = default;
    ~Source() = default;

    FLOORS_EXPORT static void setInstance(const Source* source) noexcept;
};

// The default is made anew for each read, by a callable.
template <class V>
struct Setting {
    const char* name;
    std::function<V()> defaultValue;

    FLOORS_EXPORT Setting(const char* key, const V& fallback);
    [[nodiscard]] FLOORS_EXPORT V value() const;
    [[nodiscard]] FLOORS_EXPORT V operator()() const;
};

// Counts itself, reads the clock at its start, at each lap and at its end, and makes no text unless
// there is a handler.
class Scope {
public:
    FLOORS_EXPORT Scope(std::string name, bool enabled, LogMessageHandler handler);
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    FLOORS_EXPORT ~Scope();

    FLOORS_EXPORT void lap(std::string_view label);
    FLOORS_EXPORT static void setGlobalHandler(LogMessageHandler handler);

    [[nodiscard]] Milliseconds elapsed() const;
    void note(const std::string& text) const;

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] const LogMessageHandler* handler() const;
    void sendTime(Clock::duration duration, std::string_view label) const;
    void send(const LogMessageHandler& chosen, std::string_view text,
              std::string_view ending) const;

    Clock::time_point start;
    Clock::time_point lastLap;
    std::string objectName;
    LogMessageHandler ownHandler;
    std::uint32_t lapCount = 0;
    std::int32_t depth;
    bool isEnabled;
};

class Collector {
public:
    FLOORS_EXPORT void collect(const std::string& name, Milliseconds duration);
    FLOORS_EXPORT TimingProfile extract() const;

private:
    mutable std::mutex mutex;
    TimingProfile profile;
};

// Calls that must sleep or record something are only counted.
class Emulator {
public:
    FLOORS_EXPORT void setProfile(const TimingProfile& recorded);
    FLOORS_EXPORT void emulate(const std::string& name, Milliseconds duration);

private:
    TimingProfile profile;
    std::size_t callsWithMoreToDo = 0;
};

// Makes the targets beforehand, reads the clock at the start and at the end of a call, and holds no
// lock where it would wait. Calls that must wait are only counted.
class Replayer {
public:
    FLOORS_EXPORT explicit Replayer(const TimingProfile& recorded);
    FLOORS_EXPORT void operator()(const std::string& name, Milliseconds took);

private:
    struct Step {
        Milliseconds target;
        std::chrono::nanoseconds work;
        std::chrono::nanoseconds ended;
    };
    struct Operation {
        Milliseconds target;
        std::vector<Step> steps;
    };

    std::mutex mutex;
    std::unordered_map<std::string, Operation> operations;
    std::size_t callsWithMoreToDo = 0;
};

using ScopedWork = std::function<void(Scope&)>;

FLOORS_EXPORT void collectTimed(TimingSampleHandler collect, const std::string& name,
                                ScopedWork work);

}  // namespace floors

#endif  // LAPWING_BENCH_FLOORS_H
