/// @file
/// Developer settings: named switches and values of five types, read live through one provider
/// that the host installs. Each setting has a default.
///
///     class Options final : public DeveloperSettings::Provider {
///     public:
///         Options() { setInstance(this); }
///         ~Options() override { setInstance(nullptr); }
///         using Provider::getValue;  // types that it does not override keep their defaults
///         using Provider::setValue;  // and store nothing
///         std::int32_t getValue(const char* key, std::int32_t fallback) const override;
///         void setValue(const char* key, std::int32_t value) override;
///         ...
///     };
///
///     const DeveloperSettings::Boolean showGrid{"view.showGrid"};  // false by default
///     DeveloperConfig::Integer retries{"net.retries", 3};          // 3 by default
///
///     Options options;
///     retries.set(5);                // calls Options::setValue()
///     while (attempt < retries())    // calls Options::getValue() each time
///
/// Nothing is cached. Every read and every write goes to the provider that is installed at that
/// moment, so all objects with the same key agree. Without a provider, reads return the default and
/// writes are dropped.

#ifndef LAPWING_SETTING_TYPES_H
#define LAPWING_SETTING_TYPES_H

#include <lapwing/detail/setting_traits.h>
#include <lapwing/export.h>

#include <cstdint>
#include <functional>
#include <string>

/// Settings that a program reads.
namespace DeveloperSettings {

/// Where setting values come from. A host derives a class, overrides what it supports and installs
/// one object of it for the whole process. A member that is not overridden stores nothing and
/// returns the default that it is given.
///
/// A key is a NUL-terminated string, passed on exactly as the setting's author wrote it. Only the
/// provider gives meaning to its dots and its case, and only the provider converts stored values
/// to the requested type. Key pointers and string references are valid only during the call.
///
/// Exceptions propagate unchanged to the caller of the read or write.
///
/// A class that installs itself in its constructor should be final: a derived object would be
/// visible to other threads before it is complete. A provider whose destructor calls
/// setInstance(nullptr) also uninstalls a provider that has replaced it. So use one provider at a
/// time: destroy the first one before you construct the next.
///
/// Thread safety: members are called on any thread that reads or writes a setting, and on several
/// at once. A provider that threads share guards its own store. No lock is held during a call.
class LAPWING_EXPORT Provider {
public:
    /// Copy nothing and install nothing.
    /// @{
    Provider(const Provider& other) noexcept;
    Provider& operator=(const Provider& other) noexcept;
    /// @}

    // The order of these members fixes their slots in the table of virtual functions, which hosts
    // are compiled against: wide string, narrow string, double, integer, bool. The Itanium ABI
    // fills slots in order of declaration. Microsoft's ABI reverses the overloads of one name, so
    // the two lists below are mirror images that give the same table.
#if defined(_MSC_VER)
    virtual bool getValue(const char* key, bool fallback) const;
    virtual std::int32_t getValue(const char* key, std::int32_t fallback) const;
    virtual double getValue(const char* key, double fallback) const;
    virtual std::string getValue(const char* key, const std::string& fallback) const;
    virtual std::wstring getValue(const char* key, const std::wstring& fallback) const;

    virtual bool exists(const char* key) const;

    virtual void setValue(const char* key, bool value);
    virtual void setValue(const char* key, std::int32_t value);
    virtual void setValue(const char* key, double value);
    virtual void setValue(const char* key, const std::string& value);
    virtual void setValue(const char* key, const std::wstring& value);
#else
    /// Returns the value stored under `key`, or `fallback` if there is none. The fallback is the
    /// setting's default, made for this read.
    /// @{
    virtual std::wstring getValue(const char* key, const std::wstring& fallback) const;
    virtual std::string getValue(const char* key, const std::string& fallback) const;
    virtual double getValue(const char* key, double fallback) const;
    virtual std::int32_t getValue(const char* key, std::int32_t fallback) const;
    virtual bool getValue(const char* key, bool fallback) const;
    /// @}

    /// Returns whether a value is stored under `key`. The base class returns false.
    virtual bool exists(const char* key) const;

    /// Stores `value` under `key`. The base class drops it.
    /// @{
    virtual void setValue(const char* key, const std::wstring& value);
    virtual void setValue(const char* key, const std::string& value);
    virtual void setValue(const char* key, double value);
    virtual void setValue(const char* key, std::int32_t value);
    virtual void setValue(const char* key, bool value);
    /// @}
#endif

    /// Removes the value stored under `key`. The base class does nothing.
    virtual void clear(const char* key);

protected:
    Provider() noexcept;

    /// Does not uninstall the provider: call setInstance(nullptr) before.
    virtual ~Provider();

    /// Installs `provider` for the whole process; null uninstalls. The previous provider is not
    /// notified and not destroyed. The library owns no provider: the host keeps it alive until it
    /// is uninstalled and no thread is still reading or writing a setting.
    ///
    /// Install before other threads use settings, and uninstall after they are done. The pointer is
    /// read and written atomically, but nothing guards the lifetime of the provider.
    static void setInstance(Provider* provider) noexcept;
};

/// Makes a setting's default. Called on each read.
template <class V>
using DefaultValueFunction = std::function<V()>;

/// A setting that is read: a key and the source of its default. It holds no value.
///
/// Thread safety: any number of threads may read one object at once, if its default and the
/// provider allow it. Assigning to it at the same time is a data race.
template <class V>
struct Setting {
    static_assert(lapwing::detail::isSettingType<V>,
                  "a setting is a bool, std::int32_t, double, std::string or std::wstring");

    /// The key: borrowed and never checked. It must outlive every object that holds it, as a string
    /// literal does.
    const char* name;

    /// Called on each read, even if the provider has a value. Empty only after a move.
    DefaultValueFunction<V> defaultValue;

    /// A setting that defaults to false, 0, 0.0 or an empty string.
    LAPWING_EXPORT explicit Setting(const char* key);

    /// Copies share the key's text. A moved-from setting has no default.
    /// @{
    Setting(const Setting&) = default;
    LAPWING_EXPORT Setting(Setting&& other) noexcept;
    Setting& operator=(const Setting&) = default;
    LAPWING_EXPORT Setting& operator=(Setting&& other) noexcept;
    /// @}
    ~Setting() = default;

    /// Returns what the installed provider returns for the key and the default. Without a provider,
    /// returns the default. Throws std::bad_function_call if the setting was moved from, before
    /// the provider is asked. Exceptions of the default and of the provider propagate.
    [[nodiscard]] LAPWING_EXPORT V value() const;

    /// Same as value().
    [[nodiscard]] LAPWING_EXPORT V operator()() const;

    /// Returns whether the installed provider has a value under the key; false without a provider.
    /// Works on a moved-from setting too. Exceptions of the provider propagate.
    [[nodiscard]] LAPWING_EXPORT bool hasValue() const;

protected:
    /// A setting that takes its default from `makeDefault` on each read.
    LAPWING_EXPORT Setting(const char* key, DefaultValueFunction<V> makeDefault);
};

/// A setting of one of the five types.
/// @{
using Boolean = Setting<bool>;
using Integer = Setting<std::int32_t>;
using Double = Setting<double>;
using String = Setting<std::string>;
using WString = Setting<std::wstring>;
/// @}

}  // namespace DeveloperSettings

/// Settings that a program also writes.
namespace DeveloperConfig {

/// A setting that the program can also write, with a default of its own. It holds that default
/// but no value: the provider stores what is written, for every object with the same key.
///
/// Thread safety: as for DeveloperSettings::Setting. Any number of threads may call set() and
/// clear() at once, if the provider allows it.
template <class V>
struct Item : DeveloperSettings::Setting<V> {
    /// A setting that defaults to a copy of `fallback`, made now.
    LAPWING_EXPORT Item(const char* key, lapwing::detail::Parameter<V> fallback);

    /// Stores `value` under the key in the installed provider. Without a provider, drops it. The
    /// default does not change. Exceptions of the provider propagate.
    LAPWING_EXPORT void set(lapwing::detail::Parameter<V> value);

    /// Removes the key from the installed provider. Without a provider, does nothing. Exceptions of
    /// the provider propagate.
    LAPWING_EXPORT void clear();
};

/// A writable setting of one of the five types.
/// @{
using Boolean = Item<bool>;
using Integer = Item<std::int32_t>;
using Double = Item<double>;
using String = Item<std::string>;
using WString = Item<std::wstring>;
/// @}

}  // namespace DeveloperConfig

#endif  // LAPWING_SETTING_TYPES_H
