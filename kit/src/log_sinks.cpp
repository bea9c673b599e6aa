#include <lapwing/kit/log_sinks.h>

#include "handler_lock.h"
#include "line_output.h"
#include "shared_handler.h"

#include <mutex>
#include <ostream>
#include <utility>

namespace lapwing {
namespace {

struct StreamSink {
    std::ostream& stream;
    std::mutex mutex{};

    void operator()(const std::string& line) {
        const std::string text = line + '\n';
        if (const auto lock = lockForHandler(mutex)) {
            stream.write(text.data(), static_cast<std::streamsize>(text.size()));
        }
    }
};

struct Filter {
    LogMessageHandler handler;
    LogMessagePredicate predicate;

    void operator()(const std::string& line) const {
        if (predicate(line)) {
            handler(line);
        }
    }
};

struct Tee {
    LogMessageHandler first;
    LogMessageHandler second;

    void operator()(const std::string& line) const {
        first(line);
        second(line);
    }
};

}  // namespace

LogMessageHandler logToStream(std::ostream& stream) {
    return sharedHandler<StreamSink>(stream);
}

LogMessageHandler logToStandardError() {
    return writeToStandardError;
}

LogMessageHandler logToDebugger() {
    return writeToDebugger;
}

LogMessageHandler filtered(LogMessageHandler handler, LogMessagePredicate predicate) {
    if (!handler || !predicate) {
        return handler;
    }
    return sharedHandler<Filter>(std::move(handler), std::move(predicate));
}

LogMessageHandler tee(LogMessageHandler first, LogMessageHandler second) {
    if (!first || !second) {
        return first ? first : second;
    }
    return sharedHandler<Tee>(std::move(first), std::move(second));
}

}  // namespace lapwing
