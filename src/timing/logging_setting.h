#ifndef LAPWING_SRC_TIMING_LOGGING_SETTING_H
#define LAPWING_SRC_TIMING_LOGGING_SETTING_H

namespace lapwing {

// Reads enableTimingProfileLogging; false once the library's static objects are destroyed.
bool enableTimingProfileLogging();

}  // namespace lapwing

#endif  // LAPWING_SRC_TIMING_LOGGING_SETTING_H
