// Every static object of the library that has a destructor, in the order of construction: the
// built-in settings, which this header defines, come first and the handler's keeper comes last. No
// other source may have such objects: across sources, the linker would choose the order.
#include <lapwing/built_in_settings.h>

#include "instrumentation/global_handler.h"
#include "timing/logging_setting.h"

#include <array>
#include <cstddef>
#include <new>
#include <utility>

namespace lapwing {

namespace {

bool isDestroyed = false;

// The handler is never destroyed, so that it can be asked for until the process ends; its keeper
// empties it.
alignas(LogMessageHandler) std::array<std::byte, sizeof(LogMessageHandler)> handlerStorage;
LogMessageHandler& handler = *new (handlerStorage.data()) LogMessageHandler;

struct HandlerKeeper {
    HandlerKeeper() = default;
    HandlerKeeper(const HandlerKeeper&) = delete;
    HandlerKeeper& operator=(const HandlerKeeper&) = delete;
    ~HandlerKeeper() {
        isDestroyed = true;
        const LogMessageHandler last = std::exchange(handler, nullptr);
    }
};

const HandlerKeeper handlerKeeper;

}  // namespace

bool enableTimingProfileLogging() {
    return !isDestroyed && DeveloperConfig::enableTimingProfileLogging.value();
}

const LogMessageHandler& globalLogMessageHandler() noexcept {
    return handler;
}

void setGlobalLogMessageHandler(LogMessageHandler replacement) {
    if (!isDestroyed) {
        const LogMessageHandler previous = std::exchange(handler, std::move(replacement));
    }
}

}  // namespace lapwing
