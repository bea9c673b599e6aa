/// @file
/// Developer settings: named switches and values of five types, read live through one provider
/// that the host installs, each with a default.
///
///     class Options : public DeveloperSettings::Provider {
///     public:
///         Options() { setInstance(this); }
///         ~Options() override { setInstance(nullptr); }
///         std::int32_t getValue(const char* key, std::int32_t fallback) const override;
///         void setValue(const char* key, std::int32_t value) override;
///         using Provider::getValue;  // what it does not override keeps its defaults
///         using Provider::setValue;  // and stores nothing
///         ...
///     };
///
///     const DeveloperSettings::Boolean showGrid{"view.showGrid"};  // false by default
///     DeveloperConfig::Integer retries{"net.retries", 3};          // 3 by default
///
///     Options options;
///     retries.set(5);                // Options::setValue(); without a provider it is dropped
///     while (attempt < retries())    // Options::getValue(), each time
///
/// Nothing is cached: each read and each write goes to the provider installed at that moment, so
/// all objects of one key agree. Without a provider each read yields the default.
///
/// At its end the header defines the built-in settings, the switches that hosts have in common.
/// Each source that includes it holds a set of its own; one that needs none of them defines
/// LAPWING_NO_BUILT_IN_SETTINGS before.

#ifndef LAPWING_SETTINGS_H
#define LAPWING_SETTINGS_H

#include <lapwing/export.h>

#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>

/// Settings that a program reads.
namespace DeveloperSettings {

/// Where setting values come from. A host derives a class, overrides what it supports and installs
/// one object of it for the whole process; each member left alone stores nothing and answers with
/// the default it is given.
///
/// A key is a NUL-terminated string, passed on exactly as the setting's author wrote it. What it
/// means (its dots, its case), and how a stored value is turned into the type asked for, is the
/// provider's business alone. Key pointers and string references are valid during the call only.
///
/// Whatever a member throws reaches the caller of the read or write unchanged.
///
/// Thread safety: called on whatever thread reads or writes a setting, on several at once; a
/// provider that threads share guards its own store. No lock is held during a call.
class LAPWING_EXPORT Provider {
public:
    /// Copying a provider copies nothing and installs nothing.
    /// @{
    Provider(const Provider& other) noexcept;
    Provider& operator=(const Provider& other) noexcept;
    /// @}

    // The order of these members fixes their slots in the table of virtual functions, which hosts
    // are compiled against: wide string, narrow string, double, integer, bool. The Itanium ABI
    // fills slots in order of declaration. Microsoft's puts the overloads of one name together in
    // the reverse of it, so the lists below are mirror images that yield the same table.
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
    /// Returns the value stored under `key`, or `fallback` when there is none. The fallback is the
    /// setting's default, made for this read.
    /// @{
    virtual std::wstring getValue(const char* key, const std::wstring& fallback) const;
    virtual std::string getValue(const char* key, const std::string& fallback) const;
    virtual double getValue(const char* key, double fallback) const;
    virtual std::int32_t getValue(const char* key, std::int32_t fallback) const;
    virtual bool getValue(const char* key, bool fallback) const;
    /// @}

    /// Returns whether a value is stored under `key`. The base class says false.
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

    /// Removes what is stored under `key`. The base class does nothing.
    virtual void clear(const char* key);

protected:
    Provider() noexcept;

    /// Does not uninstall: a provider calls setInstance(nullptr) before it dies.
    virtual ~Provider();

    /// Installs `provider` for the whole process in place of the one before, which is neither told
    /// nor destroyed; null uninstalls. The library does not own it: the host keeps it alive until
    /// it is uninstalled and no thread is still reading or writing a setting.
    ///
    /// Install before other threads use settings and uninstall after they are done: the pointer
    /// itself is read and written atomically, the life of what it points to is not guarded.
    static void setInstance(Provider* provider) noexcept;
};

/// Makes a setting's default, anew for each read.
template <class V>
using DefaultValueFunction = std::function<V()>;

/// The types a setting can have.
template <class V>
inline constexpr bool isSettingType =
    std::is_same_v<V, bool> || std::is_same_v<V, std::int32_t> || std::is_same_v<V, double> ||
    std::is_same_v<V, std::string> || std::is_same_v<V, std::wstring>;

/// A setting that is read: a key and where its default comes from. It holds no value.
///
/// Thread safety: one object may be read by any number of threads at once, if its default and the
/// provider may; assigning to it meanwhile is a data race.
template <class V>
struct Setting {
    static_assert(isSettingType<V>,
                  "a setting is a bool, std::int32_t, double, std::string or std::wstring");

    /// The key: borrowed, never checked, and must outlive every object that holds it. A string
    /// literal does.
    const char* name;

    /// Called on each read, even when the provider has a value. Empty only after a move.
    DefaultValueFunction<V> defaultValue;

    /// A setting that defaults to false, 0, 0.0 or an empty string.
    LAPWING_EXPORT explicit Setting(const char* key);

    /// Copies share the key's text. Moving leaves the source without a default, whatever the
    /// standard library does with its callables.
    /// @{
    Setting(const Setting&) = default;
    LAPWING_EXPORT Setting(Setting&& other) noexcept;
    Setting& operator=(const Setting&) = default;
    LAPWING_EXPORT Setting& operator=(Setting&& other) noexcept;
    /// @}
    ~Setting() = default;

    /// Returns what the installed provider answers for the key and the default, or the default
    /// when no provider is installed. Throws std::bad_function_call, before the provider is asked,
    /// if the setting was moved from; else whatever the default or the provider throws.
    [[nodiscard]] LAPWING_EXPORT V value() const;

    /// Same as value().
    [[nodiscard]] LAPWING_EXPORT V operator()() const;

    /// Returns whether the installed provider holds a value under the key; false without one.
    /// Works on a moved-from setting too. Throws what the provider throws.
    [[nodiscard]] LAPWING_EXPORT bool hasValue() const;

protected:
    /// A setting that defaults to what `makeDefault` returns on each read.
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

/// How a setting's value is handed over: strings by reference, the rest by value.
template <class V>
using Parameter = std::conditional_t<std::is_scalar_v<V>, V, const V&>;

/// A setting that the program can also write, with a default of its own. It holds that default
/// and no value: what is written is stored by the provider, for every object of the key.
///
/// Thread safety: as for DeveloperSettings::Setting, and set() and clear() may be called by any
/// number of threads at once if the provider's operations may.
template <class V>
struct Item : DeveloperSettings::Setting<V> {
    /// A setting that defaults to a copy of `fallback`, taken now.
    LAPWING_EXPORT Item(const char* key, Parameter<V> fallback);

    /// Stores `value` under the key in the installed provider; without one it is dropped. The
    /// default stays. Throws what the provider throws.
    LAPWING_EXPORT void set(Parameter<V> value);

    /// Removes the key from the installed provider; without one nothing happens. Throws what the
    /// provider throws.
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

// The built-in settings, in the order of their construction.
#ifndef LAPWING_NO_BUILT_IN_SETTINGS

namespace DeveloperSettings {

/// Whether the host runs for its developers. Key "developerMode", default false.
static const Boolean developerMode{"developerMode"};

/// Whether the host runs on a show floor. Key "tradeshow", default false.
static const Boolean tradeshow{"tradeshow"};

}  // namespace DeveloperSettings

namespace DeveloperConfig {

/// Whether the functions of timing_profiles.h log the work they time. Read anew on each call of
/// one. Key "enableTimingProfileLogging", default false.
static Boolean enableTimingProfileLogging{"enableTimingProfileLogging", false};

}  // namespace DeveloperConfig

namespace DeveloperSettings {

/// Where the host keeps the images it logs. Key "logging.ImageDirectory", default empty.
static const String imageDirectory{"logging.ImageDirectory"};

/// The same key as imageDirectory, read as a wide string.
static const WString imageDirectoryW{imageDirectory.name};

}  // namespace DeveloperSettings

#endif  // LAPWING_NO_BUILT_IN_SETTINGS

#endif  // LAPWING_SETTINGS_H
