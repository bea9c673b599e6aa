#include <lapwing/timing_profiles.h>

#include "module.h"

#include <utility>

namespace {

// Runs an action when its scope is left, also when an exception leaves it. What the action throws
// follows the rule for destructors that may throw: it leaves the scope, but ends the process when
// an exception is already on its way.
template <class Action>
class ScopeExit {
public:
    explicit ScopeExit(Action onExit) : action(std::move(onExit)) {}
    ScopeExit(const ScopeExit&) = delete;
    ScopeExit& operator=(const ScopeExit&) = delete;
    ~ScopeExit() noexcept(false) { action(); }

private:
    Action action;
};

// The setting is read whatever the flag says.
bool decideLogging(bool logging) {
    const bool setting = lapwing::enableTimingProfileLogging();
    return setting || logging;
}

Milliseconds timeSampleFunction(InstrumentedFunction work, Instrumentation& instrumentation) {
    work(instrumentation);
    const Milliseconds duration = instrumentation.elapsed();
    const std::string length = std::to_string(duration.count()) + "ms";
    instrumentation.note("note: executing timing profile sample fn took - " + length);
    return duration;
}

Milliseconds collectTimedSample(TimingSampleHandler collect, const std::string& name,
                                InstrumentedFunction&& work, Instrumentation& instrumentation) {
    const std::string label = "about to augment timing profile sample";
    Milliseconds duration = Milliseconds::zero();
    const ScopeExit handOver([&] {
        if (collect) {
            instrumentation.lap(label);
            collect(name, duration);
        }
    });
    duration = timeSampleFunction(std::move(work), instrumentation);
    return duration;
}

void emulateTimedSample(TimingSampleHandler emulate, const std::string& name, Milliseconds duration,
                        Instrumentation& instrumentation) {
    if (emulate) {
        instrumentation.lap("about to emulate timing profile average sample time");
        emulate(name, duration);
    }
}

void collectOnly(TimingSampleHandler&& collect, const std::string& name, bool logging,
                 InstrumentedFunction&& work) {
    const bool enabled = decideLogging(logging);
    Instrumentation instrumentation(name, enabled, {});
    collectTimedSample(std::move(collect), name, std::move(work), instrumentation);
}

void collectAndEmulate(TimingSampleHandler&& collect, TimingSampleHandler&& emulate,
                       const std::string& name, bool logging, InstrumentedFunction&& work) {
    const bool enabled = decideLogging(logging);
    Instrumentation instrumentation(name, enabled, {});
    const Milliseconds duration =
        collectTimedSample(std::move(collect), name, std::move(work), instrumentation);
    emulateTimedSample(std::move(emulate), name, duration, instrumentation);
}

}  // namespace

void collectTimingProfileSample(TimingSampleHandler collect, const std::string& name, bool logging,
                                InstrumentedFunction work) {
    collectOnly(std::move(collect), name, logging, std::move(work));
}

void collectTimingProfileSample(TimingSampleHandler collect, const std::string& name,
                                InstrumentedFunction work) {
    collectOnly(std::move(collect), name, lapwing::enableTimingProfileLogging(), std::move(work));
}

void collectTimingProfileSampleAndEmulate(TimingSampleHandler collect, TimingSampleHandler emulate,
                                          const std::string& name, bool logging,
                                          InstrumentedFunction work) {
    collectAndEmulate(std::move(collect), std::move(emulate), name, logging, std::move(work));
}

void collectTimingProfileSampleAndEmulate(TimingSampleHandler collect, TimingSampleHandler emulate,
                                          const std::string& name, InstrumentedFunction work) {
    collectAndEmulate(std::move(collect), std::move(emulate), name,
                      lapwing::enableTimingProfileLogging(), std::move(work));
}

void emulateTimingProfile(TimingSampleHandler emulate, const std::string& name,
                          InstrumentedFunction work) {
    const bool enabled = decideLogging(lapwing::enableTimingProfileLogging());
    Instrumentation instrumentation(name, enabled, {});
    const Milliseconds duration = timeSampleFunction(std::move(work), instrumentation);
    emulateTimedSample(std::move(emulate), name, duration, instrumentation);
}
