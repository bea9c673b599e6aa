// A host that is loaded at run time, and the library with it. It leaves its handler installed.

#include <lapwing/setting_types.h>
#include <lapwing/timing_profiles.h>

#include <chrono>
#include <functional>
#include <memory>

namespace {

void (*tell)(const char*) = nullptr;

struct Host {
    ~Host() { tell("host is gone"); }
} host;

void tellLine(const std::string& line) {
    tell(line.c_str());
}

struct TellingProvider final : DeveloperSettings::Provider {
    TellingProvider() { setInstance(this); }
    using Provider::getValue;
    bool getValue(const char* key, bool /*fallback*/) const override {
        tell(key);
        return true;
    }
};

}  // namespace

extern "C" {

void start(void (*teller)(const char*)) {
    tell = teller;
    // Not by make_shared: its unique symbol would keep the module from being unloaded.
    const std::shared_ptr<void> state(nullptr, [](void*) {
        tell("handler is gone");
        Instrumentation("Late", true, {});
        Instrumentation::setGlobalLogMessageHandler(tellLine);
        Instrumentation("Later", true, {});
    });
    Instrumentation::setGlobalLogMessageHandler(
        [state](const std::string& line) { tellLine(line); });
}

void send(const char* name) {
    Instrumentation(name).note("still here");
}

void timeRuns() {
    new TellingProvider;  // never destroyed
    const auto handler = [](const std::string& name, Milliseconds) { tellLine(name); };
    const auto work = [](Instrumentation& run) { run.note("late"); };
    collectTimingProfileSample(handler, "1", true, work);
    collectTimingProfileSample(handler, "2", work);
    collectTimingProfileSampleAndEmulate(handler, handler, "3", true, work);
    collectTimingProfileSampleAndEmulate(handler, handler, "4", work);
    emulateTimingProfile(handler, "5", work);
}

long long pad(int milliseconds) {
    TimingProfileEmulator emulator;
    emulator.setProfile({{}, {{"Pad", {Milliseconds(milliseconds)}}}});
    const auto start = std::chrono::steady_clock::now();
    emulator.emulateProfile("Pad", Milliseconds::zero());
    return (std::chrono::steady_clock::now() - start) / Milliseconds(1);
}
}  // extern "C"
