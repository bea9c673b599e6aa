#include <lapwing/instrumentation.h>

#include "clock.h"
#include "instrumentation/global_handler.h"
#include "short_text.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <utility>

namespace {

std::atomic<std::int32_t> liveInstrumentationCount{0};

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
    startTime = lapwing::now();
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
    const Clock::time_point now = lapwing::now();
    const Milliseconds length = toMilliseconds(now - std::exchange(lastLapTime, now));
    sendTimeMessage(length, label);
    ++lapCount;
    return length;
}

Milliseconds Instrumentation::elapsed() const {
    return toMilliseconds(lapwing::now() - startTime);
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
        lapwing::ShortText ending;
        ending.append(" - ").append(duration.count()).append(" ms");
        unchecked_sendMessage(handler, text, ending.view());
    }
}

void Instrumentation::unchecked_sendMessage(LogMessageHandler& handler, const std::string& text,
                                            std::string_view ending) {
    const std::size_t spaces = indentation(nestingDepth);
    std::string line(spaces + objectName.size() + 2 + text.size() + ending.size(), ' ');
    char* place = std::copy(objectName.begin(), objectName.end(), line.data() + spaces);
    *place = ':';
    place = std::copy(text.begin(), text.end(), place + 2);
    std::copy(ending.begin(), ending.end(), place);
    handler(line);
}

LogMessageHandler Instrumentation::logFunction() const {
    if (!isEnabled) {
        return {};
    }
    return ownHandler ? ownHandler : lapwing::globalLogMessageHandler();
}
