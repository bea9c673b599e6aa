/// @file
/// The built-in settings: switches that hosts have in common. Each source that includes this header
/// has its own set of objects. All sets agree, since the provider holds the values.

#ifndef LAPWING_BUILT_IN_SETTINGS_H
#define LAPWING_BUILT_IN_SETTINGS_H

#include <lapwing/setting_types.h>

namespace DeveloperSettings {

/// Whether the host runs for its developers. Key "developerMode", default false.
static const Boolean developerMode{"developerMode"};

/// Whether the host runs at a trade show. Key "tradeshow", default false.
static const Boolean tradeshow{"tradeshow"};

}  // namespace DeveloperSettings

namespace DeveloperConfig {

/// Whether the functions of timing_profiles.h log the work that they time. They read it on each
/// call. Key "enableTimingProfileLogging", default false.
static Boolean enableTimingProfileLogging{"enableTimingProfileLogging", false};

}  // namespace DeveloperConfig

namespace DeveloperSettings {

/// The folder where the host stores the images that it logs. Key "logging.ImageDirectory", default
/// empty.
static const String imageDirectory{"logging.ImageDirectory"};

/// The same key as imageDirectory, read as a wide string.
static const WString imageDirectoryW{imageDirectory.name};

}  // namespace DeveloperSettings

#endif  // LAPWING_BUILT_IN_SETTINGS_H
