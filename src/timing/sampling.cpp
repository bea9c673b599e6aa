#include <lapwing/timing_profiles.h>

#include "short_text.h"
#include "timing/logging_setting.h"

#include <string>
#include <utility>

namespace {

// Runs an action when its scope is left, normally or by an exception. An exception from the action
// propagates, unless another one is already on its way: then it ends the process.
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

Milliseconds timeSampleFunction(const InstrumentedFunction& work,
                                Instrumentation& instrumentation) {
    work(instrumentation);
    const Milliseconds duration = instrumentation.elapsed();
    lapwing::ShortText text;
    text.append("note: executing timing profile sample fn took - ");
    text.append(duration.count()).append("ms");
    instrumentation.note(std::string(text.view()));
    return duration;
}

Milliseconds collectTimedSample(const TimingSampleHandler& collect, const std::string& name,
                                const InstrumentedFunction& work,
                                Instrumentation& instrumentation) {
    // Made here, so that it cannot fail while an exception from the work is on its way.
    const std::string label = "about to augment timing profile sample";
    Milliseconds collected = Milliseconds::zero();
    const ScopeExit handOver([&] {
        if (collect) {
            instrumentation.lap(label);
            collect(name, collected);
        }
    });
    // A variable of its own: some ABIs let the call write into the one that it initialises, and
    // throw afterwards.
    const Milliseconds measured = timeSampleFunction(work, instrumentation);
    collected = measured;
    return measured;
}

void emulateTimedSample(const TimingSampleHandler& emulate, const std::string& name,
                        Milliseconds duration, Instrumentation& instrumentation) {
    if (emulate) {
        instrumentation.lap("about to emulate timing profile average sample time");
        emulate(name, duration);
    }
}

}  // namespace

void collectTimingProfileSample(TimingSampleHandler collect, const std::string& name, bool logging,
                                InstrumentedFunction work) {
    Instrumentation instrumentation(name, decideLogging(logging), {});
    collectTimedSample(collect, name, work, instrumentation);
}

void collectTimingProfileSample(TimingSampleHandler collect, const std::string& name,
                                InstrumentedFunction work) {
    collectTimingProfileSample(std::move(collect), name, lapwing::enableTimingProfileLogging(),
                               std::move(work));
}

void collectTimingProfileSampleAndEmulate(TimingSampleHandler collect, TimingSampleHandler emulate,
                                          const std::string& name, bool logging,
                                          InstrumentedFunction work) {
    Instrumentation instrumentation(name, decideLogging(logging), {});
    const Milliseconds duration = collectTimedSample(collect, name, work, instrumentation);
    emulateTimedSample(emulate, name, duration, instrumentation);
}

void collectTimingProfileSampleAndEmulate(TimingSampleHandler collect, TimingSampleHandler emulate,
                                          const std::string& name, InstrumentedFunction work) {
    collectTimingProfileSampleAndEmulate(std::move(collect), std::move(emulate), name,
                                         lapwing::enableTimingProfileLogging(), std::move(work));
}

void emulateTimingProfile(TimingSampleHandler emulate, const std::string& name,
                          InstrumentedFunction work) {
    const bool setting = lapwing::enableTimingProfileLogging();
    Instrumentation instrumentation(name, decideLogging(setting), {});
    const Milliseconds duration = timeSampleFunction(work, instrumentation);
    emulateTimedSample(emulate, name, duration, instrumentation);
}
