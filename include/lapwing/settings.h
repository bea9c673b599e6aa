/// @file
/// Developer settings: their types (setting_types.h) and the built-in ones (built_in_settings.h).

#ifndef LAPWING_SETTINGS_H
#define LAPWING_SETTINGS_H

#include <lapwing/built_in_settings.h>
#include <lapwing/setting_types.h>

#endif  // LAPWING_SETTINGS_H
