#ifndef LAPWING_SRC_INSTRUMENTATION_GLOBAL_HANDLER_H
#define LAPWING_SRC_INSTRUMENTATION_GLOBAL_HANDLER_H

#include <lapwing/instrumentation.h>

namespace lapwing {

// Empty until one is set, and again once the library's static objects are destroyed.
const LogMessageHandler& globalLogMessageHandler() noexcept;
void setGlobalLogMessageHandler(LogMessageHandler replacement);

}  // namespace lapwing

#endif  // LAPWING_SRC_INSTRUMENTATION_GLOBAL_HANDLER_H
