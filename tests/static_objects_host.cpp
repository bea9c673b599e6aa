// A host that is loaded at run time, and the library with it. It leaves its handler installed.

#include <lapwing/setting_types.h>
#include <lapwing/timing_profiles.h>

#include <chrono>
#include <functional>
#include <memory>

#ifdef _WIN32
#define HOST_EXPORT extern "C" __declspec(dllexport)
#else
#define HOST_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

using Tell = void (*)(const char*);

struct Host {
    ~Host() { tell("host is gone"); }
    Tell tell = [](const char*) {};
} host;

struct HandlerState {
    explicit HandlerState(Tell teller) : tell(teller) {}
    HandlerState(const HandlerState&) = delete;
    HandlerState& operator=(const HandlerState&) = delete;
    ~HandlerState() {
        tell("handler is gone");
        Instrumentation("Late", true, {});
        Instrumentation::setGlobalLogMessageHandler(
            [teller = tell](const std::string& line) { teller(line.c_str()); });
        Instrumentation("Later", true, {});
    }
    Tell tell;
};

class TellingProvider final : public DeveloperSettings::Provider {
public:
    explicit TellingProvider(Tell teller) : tell(teller) { setInstance(this); }
    using Provider::getValue;
    bool getValue(const char* key, bool /*fallback*/) const override {
        tell(key);
        return true;
    }

private:
    Tell tell;
};

}  // namespace

HOST_EXPORT void start(Tell tell) {
    host.tell = tell;
    // Not by make_shared: its unique symbol would keep the module from being unloaded.
    const std::shared_ptr<HandlerState> state(new HandlerState(tell));
    Instrumentation::setGlobalLogMessageHandler(
        [state](const std::string& line) { state->tell(line.c_str()); });
}

HOST_EXPORT void send(const char* name) {
    Instrumentation(name).note("still here");
}

HOST_EXPORT void timeRuns(Tell tell) {
    new TellingProvider(tell);  // never destroyed
    const auto handler = [tell](const std::string& name, Milliseconds) { tell(name.c_str()); };
    const auto work = [](Instrumentation& run) { run.note("late"); };
    collectTimingProfileSample(handler, "1", true, work);
    collectTimingProfileSample(handler, "2", work);
    collectTimingProfileSampleAndEmulate(handler, handler, "3", true, work);
    collectTimingProfileSampleAndEmulate(handler, handler, "4", work);
    emulateTimingProfile(handler, "5", work);
}

HOST_EXPORT long long pad(int milliseconds) {
    TimingProfileEmulator emulator;
    emulator.setProfile({{}, {{"Pad", {Milliseconds(milliseconds)}}}});
    const auto start = std::chrono::steady_clock::now();
    emulator.emulateProfile("Pad", Milliseconds::zero());
    return (std::chrono::steady_clock::now() - start) / Milliseconds(1);
}
