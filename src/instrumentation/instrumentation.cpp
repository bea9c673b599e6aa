#include <lapwing/instrumentation.h>

#include "module.h"

#include <cstddef>
#include <ratio>
#include <type_traits>
#include <utility>

static_assert(std::chrono::steady_clock::is_steady);
static_assert(std::is_same_v<std::chrono::steady_clock::period, std::nano>);

using lapwing::liveInstrumentationCount;

namespace {

Milliseconds toMilliseconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration_cast<Milliseconds>(duration);
}

std::size_t indentation(std::int32_t depth) {
    return 2 * static_cast<std::size_t>(depth);
}

}  // namespace

Instrumentation::Instrumentation(std::string name, bool enabled, LogMessageHandler handler)
    : objectName(std::move(name)),
      ownHandler(std::move(handler)),
      nestingDepth(liveInstrumentationCount.fetch_add(1)),
      isEnabled(enabled) {
    sendMessage("Begin");
    ++nestingDepth;
    startTime = Clock::now();
    lastLapTime = startTime;
}

Instrumentation::Instrumentation(std::string name, LogMessageHandler handler)
    : Instrumentation(std::move(name), true, std::move(handler)) {}

Instrumentation::~Instrumentation() {
    if (lapCount != 0) {
        lap("Final Lap");
    }
    liveInstrumentationCount.fetch_sub(1);
    --nestingDepth;
    try {
        sendTimeMessage(elapsed(), "End");
    } catch (...) {
    }
}

Milliseconds Instrumentation::lap(const std::string& label) {
    const Clock::time_point now = Clock::now();
    const Milliseconds length = toMilliseconds(now - std::exchange(lastLapTime, now));
    sendTimeMessage(length, label);
    ++lapCount;
    return length;
}

Milliseconds Instrumentation::elapsed() const {
    return toMilliseconds(Clock::now() - startTime);
}

void Instrumentation::note(const std::string& text) {
    sendMessage(text);
}

void Instrumentation::notes(const std::vector<std::string>& items) {
    for (const std::string& item : items) {
        sendMessage(item);
    }
}

void Instrumentation::notes(const std::vector<std::string>& items, const std::string& header) {
    if (header.empty()) {
        notes(items);
        return;
    }
    sendMessage(header);
    const LogMessageHandler handler = logFunction();
    if (!handler) {
        return;
    }
    const std::string prefix = std::string(indentation(nestingDepth + 1), ' ') + header + ": ";
    for (const std::string& item : items) {
        handler(prefix + item);
    }
}

void Instrumentation::setGlobalLogMessageHandler(LogMessageHandler handler) {
    lapwing::setGlobalLogMessageHandler(std::move(handler));
}

void Instrumentation::sendMessage(const std::string& text) {
    if (LogMessageHandler handler = logFunction()) {
        unchecked_sendMessage(handler, text);
    }
}

void Instrumentation::sendTimeMessage(Milliseconds duration, const std::string& text) {
    if (LogMessageHandler handler = logFunction()) {
        unchecked_sendMessage(handler, text, " - " + std::to_string(duration.count()) + " ms");
    }
}

void Instrumentation::unchecked_sendMessage(LogMessageHandler& handler, const std::string& text,
                                            std::string_view ending) {
    const std::size_t spaces = indentation(nestingDepth);
    std::string line;
    line.reserve(spaces + objectName.size() + 2 + text.size() + ending.size());
    line.append(spaces, ' ').append(objectName).append(": ").append(text).append(ending);
    handler(line);
}

LogMessageHandler Instrumentation::logFunction() const {
    if (!isEnabled) {
        return {};
    }
    return ownHandler ? ownHandler : lapwing::globalLogMessageHandler();
}
