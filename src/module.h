// What the library keeps for the whole process: all of it is defined in module.cpp, so that the
// order in which it is constructed and destroyed is the order in which it stands there.

#ifndef LAPWING_SRC_MODULE_H
#define LAPWING_SRC_MODULE_H

#include <lapwing/instrumentation.h>

#include <atomic>
#include <cstdint>

namespace DeveloperSettings {
class Provider;
}

namespace lapwing {

extern std::atomic<DeveloperSettings::Provider*> installedProvider;

extern std::atomic<std::int32_t> liveInstrumentationCount;

// Reads the library's own copy of the built-in setting.
bool enableTimingProfileLogging();

// Empty until one is set, and from the library's unloading on.
const LogMessageHandler& globalLogMessageHandler() noexcept;
void setGlobalLogMessageHandler(LogMessageHandler replacement);

}  // namespace lapwing

#endif  // LAPWING_SRC_MODULE_H
