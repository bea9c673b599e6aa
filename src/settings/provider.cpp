#include <lapwing/setting_types.h>

#include "settings/installed_provider.h"

std::atomic<DeveloperSettings::Provider*> lapwing::installedProvider{nullptr};

namespace DeveloperSettings {

Provider::Provider() noexcept = default;
Provider::Provider(const Provider&) noexcept = default;
Provider& Provider::operator=(const Provider&) noexcept = default;
Provider::~Provider() = default;

std::wstring Provider::getValue(const char* /*key*/, const std::wstring& fallback) const {
    return fallback;
}

std::string Provider::getValue(const char* /*key*/, const std::string& fallback) const {
    return fallback;
}

double Provider::getValue(const char* /*key*/, double fallback) const {
    return fallback;
}

std::int32_t Provider::getValue(const char* /*key*/, std::int32_t fallback) const {
    return fallback;
}

bool Provider::getValue(const char* /*key*/, bool fallback) const {
    return fallback;
}

bool Provider::exists(const char* /*key*/) const {
    return false;
}

void Provider::setValue(const char* /*key*/, const std::wstring& /*value*/) {}
void Provider::setValue(const char* /*key*/, const std::string& /*value*/) {}
void Provider::setValue(const char* /*key*/, double /*value*/) {}
void Provider::setValue(const char* /*key*/, std::int32_t /*value*/) {}
void Provider::setValue(const char* /*key*/, bool /*value*/) {}

void Provider::clear(const char* /*key*/) {}

void Provider::setInstance(Provider* provider) noexcept {
    lapwing::installedProvider.store(provider, std::memory_order_release);
}

}  // namespace DeveloperSettings
