#include "standard_error_log.h"

#include <lapwing/instrumentation.h>

#include <cstdio>
#include <string>

StandardErrorLog::StandardErrorLog() {
    Instrumentation::setGlobalLogMessageHandler([](const std::string& line) {
        const std::string text = line + '\n';
        std::fwrite(text.data(), 1, text.size(), stderr);
    });
}

StandardErrorLog::~StandardErrorLog() {
    Instrumentation::setGlobalLogMessageHandler({});
}
