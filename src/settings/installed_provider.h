#ifndef LAPWING_SRC_SETTINGS_INSTALLED_PROVIDER_H
#define LAPWING_SRC_SETTINGS_INSTALLED_PROVIDER_H

#include <lapwing/setting_types.h>

#include <atomic>

namespace lapwing {

// Null until a host installs one.
extern std::atomic<DeveloperSettings::Provider*> installedProvider;

}  // namespace lapwing

#endif  // LAPWING_SRC_SETTINGS_INSTALLED_PROVIDER_H
