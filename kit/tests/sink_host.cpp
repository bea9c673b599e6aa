// A host that is loaded at run time, and the library with it. It leaves its handler installed.

#include <lapwing/kit/log_sinks.h>
#include <lapwing/kit/trace.h>

#include <iostream>
#include <optional>
#include <string>

namespace {

// Destroyed after the trace file, but before the global handler.
struct Late {
    ~Late() { Instrumentation("Late").note("sent"); }
} late;

std::optional<lapwing::TraceFile> trace;

LogMessageHandler makeSink(const std::string& name, const char* file) {
    if (name == "stream") {
        return lapwing::logToStream(std::cerr);
    }
    if (name == "error") {
        return lapwing::logToStandardError();
    }
    if (name == "debugger") {
        return lapwing::tee(lapwing::logToDebugger(), lapwing::logToStandardError());
    }
    if (name == "filtered") {
        return lapwing::filtered(lapwing::logToStandardError(),
                                 [](const std::string& line) { return line != "nothing"; });
    }
    return trace.emplace(file).handler(lapwing::logToStandardError());
}

}  // namespace

extern "C" {

void install(const char* sink, const char* file) {
    Instrumentation::setGlobalLogMessageHandler(makeSink(sink, file));
    Instrumentation("Early").note("sent");
}

void sendForever() {
    for (;;) {
        Instrumentation("Busy").note("sent");
    }
}
}  // extern "C"
