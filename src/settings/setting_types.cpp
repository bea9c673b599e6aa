#include <lapwing/setting_types.h>

#include "settings/installed_provider.h"

#include <utility>

using lapwing::installedProvider;

namespace {

// Not written as lambdas in the exported members: the standard library's instantiations for such
// lambdas would be exported too.

template <class V>
V zero() {
    return V();
}

template <class V>
DeveloperSettings::DefaultValueFunction<V> always(V value) {
    return [value = std::move(value)] { return value; };
}

}  // namespace

namespace DeveloperSettings {

template <class V>
Setting<V>::Setting(const char* key) : Setting(key, zero<V>) {}

template <class V>
Setting<V>::Setting(const char* key, DefaultValueFunction<V> makeDefault)
    : name(key), defaultValue(std::move(makeDefault)) {}

template <class V>
Setting<V>::Setting(Setting&& other) noexcept
    : name(other.name), defaultValue(std::exchange(other.defaultValue, nullptr)) {}

template <class V>
Setting<V>& Setting<V>::operator=(Setting&& other) noexcept {
    name = other.name;
    defaultValue = std::exchange(other.defaultValue, nullptr);
    return *this;
}

template <class V>
V Setting<V>::value() const {
    const Provider* const provider = installedProvider.load(std::memory_order_acquire);
    return provider != nullptr ? provider->getValue(name, defaultValue()) : defaultValue();
}

template <class V>
V Setting<V>::operator()() const {
    return value();
}

template <class V>
bool Setting<V>::hasValue() const {
    const Provider* const provider = installedProvider.load(std::memory_order_acquire);
    return provider != nullptr && provider->exists(name);
}

template struct Setting<bool>;
template struct Setting<std::int32_t>;
template struct Setting<double>;
template struct Setting<std::string>;
template struct Setting<std::wstring>;

}  // namespace DeveloperSettings

namespace DeveloperConfig {

template <class V>
Item<V>::Item(const char* key, lapwing::detail::Parameter<V> fallback)
    : DeveloperSettings::Setting<V>(key, always<V>(fallback)) {}

template <class V>
void Item<V>::set(lapwing::detail::Parameter<V> value) {
    if (auto* const provider = installedProvider.load(std::memory_order_acquire)) {
        provider->setValue(this->name, value);
    }
}

template <class V>
void Item<V>::clear() {
    if (auto* const provider = installedProvider.load(std::memory_order_acquire)) {
        provider->clear(this->name);
    }
}

template struct Item<bool>;
template struct Item<std::int32_t>;
template struct Item<double>;
template struct Item<std::string>;
template struct Item<std::wstring>;

}  // namespace DeveloperConfig
