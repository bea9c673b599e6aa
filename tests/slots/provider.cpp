#define LAPWING_NO_BUILT_IN_SETTINGS
#include <lapwing/settings.h>

struct HostProvider : DeveloperSettings::Provider {
    HostProvider();
};
HostProvider::HostProvider() = default;
