// A host that is loaded at run time, and the library with it. It leaves its handler installed.

#include <lapwing/timing_profiles.h>

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
        collectTimingProfileSample(
            [this](const std::string& name, Milliseconds) { tell(name.c_str()); }, "collected",
            true, [](Instrumentation&) {});
    }
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
