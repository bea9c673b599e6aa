#include "module.h"

// The first static objects of the library are the built-in settings in this header. No other
// source of the library may include them: the linker decides which source's objects come first.
#include <lapwing/settings.h>

#include <array>
#include <cstddef>
#include <new>
#include <utility>

namespace lapwing {

std::atomic<DeveloperSettings::Provider*> installedProvider{nullptr};

std::atomic<std::int32_t> liveInstrumentationCount{0};

bool enableTimingProfileLogging() {
    return DeveloperConfig::enableTimingProfileLogging.value();
}

namespace {

// The handler itself is never destroyed, so that it can be asked for at any time; its keeper, the
// last static object and so the first to go, empties it.
alignas(LogMessageHandler) std::array<std::byte, sizeof(LogMessageHandler)> handlerStorage;
LogMessageHandler& handler = *new (handlerStorage.data()) LogMessageHandler;
bool isUnloaded = false;

struct HandlerKeeper {
    HandlerKeeper() = default;
    HandlerKeeper(const HandlerKeeper&) = delete;
    HandlerKeeper& operator=(const HandlerKeeper&) = delete;
    ~HandlerKeeper() {
        isUnloaded = true;
        const LogMessageHandler last = std::exchange(handler, nullptr);
    }
};

const HandlerKeeper handlerKeeper;

}  // namespace

const LogMessageHandler& globalLogMessageHandler() noexcept {
    return handler;
}

void setGlobalLogMessageHandler(LogMessageHandler replacement) {
    if (!isUnloaded) {
        const LogMessageHandler previous = std::exchange(handler, std::move(replacement));
    }
}

}  // namespace lapwing
