// Writes nested scopes to a trace, which ui.perfetto.dev and chrome://tracing show as a picture.

#include <lapwing/instrumentation.h>
#include <lapwing/kit/log_sinks.h>
#include <lapwing/kit/trace.h>

#include <iostream>
#include <string>

int main() {
    lapwing::TraceFile trace("run.trace.json");
    const auto isNoLap = [](const std::string& line) {
        return line.find("tokens") == std::string::npos;
    };
    // Each line goes to the trace, and then on to standard output, unless it is of the lap.
    Instrumentation::setGlobalLogMessageHandler(
        trace.handler(lapwing::filtered(lapwing::logToStream(std::cout), isNoLap)));

    Instrumentation load("Load");
    Instrumentation parse("Parse");
    parse.lap("tokens");
    load.note("tree is ready");
}
