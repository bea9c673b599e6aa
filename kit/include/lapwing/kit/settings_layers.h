/// @file
/// Settings from several layers, such as a command line, the environment and a file. The first
/// layer that has a key answers.
///
///     const auto arguments = std::make_shared<lapwing::ArgumentsLayer>(settingArguments);
///     const auto environment = std::make_shared<lapwing::EnvironmentLayer>("APP_");
///     const auto file = std::make_shared<lapwing::JsonFileLayer>("settings.json");
///     lapwing::LayeredSettings settings({arguments, environment, file});
///
///     const DeveloperSettings::Boolean showGrid{"view.showGrid"};
///     if (showGrid()) ...  // view.showGrid=1, else APP_VIEW_SHOWGRID, else the file's, else false
///     std::cout << lapwing::formatExplanation(settings.explain("view.showGrid"));
///
/// Layers hold texts, which are converted strictly when they are read:
///
///     bool           true, false, 1 or 0
///     std::int32_t   decimal digits, perhaps behind a minus sign, within range
///     double         a decimal number, perhaps with an exponent, as JSON and C++ write it; finite
///     std::string    any bytes
///     std::wstring   UTF-8; 16-bit units on Windows, 32-bit units elsewhere
///
/// Numbers have no plus sign in front and no blanks around them. A text that cannot be converted
/// counts as absent for that read: the next layer is asked, and a problem is reported. So no read
/// fails because of a slip in a file.

#ifndef LAPWING_KIT_SETTINGS_LAYERS_H
#define LAPWING_KIT_SETTINGS_LAYERS_H

#include <lapwing/kit/problems.h>
#include <lapwing/setting_types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lapwing {

/// A value to be stored.
struct SettingText {
    std::string text;        ///< The value; UTF-8 if it was a wide string.
    bool isLiteral = false;  ///< Whether it is a bool or a number rather than a text.
};

/// One source of settings.
///
/// Thread safety: members are called on any thread that uses a setting, and on several at once. No
/// lock is held during a call.
class SettingsLayer {
public:
    SettingsLayer() = default;
    SettingsLayer(const SettingsLayer&) = delete;
    SettingsLayer& operator=(const SettingsLayer&) = delete;
    virtual ~SettingsLayer();

    /// Returns what the layer is, for people: "the environment" for instance.
    [[nodiscard]] virtual std::string name() const = 0;

    /// Returns the text under `key`, if there is one.
    [[nodiscard]] virtual std::optional<std::string> find(const std::string& key) const = 0;

    /// Returns where the text under `key` is, for people, as exactly as can be: a file and a line,
    /// or a variable. It is asked for keys that the layer has. By default, the layer's name.
    [[nodiscard]] virtual std::string origin(const std::string& key) const;

    /// Returns whether set() and clear() do something. By default, they do not.
    [[nodiscard]] virtual bool isWritable() const noexcept;

    /// Stores `value` under `key`. What keeps it from that is reported as a problem.
    virtual void set(const std::string& key, const SettingText& value);

    /// Removes `key`. What keeps it from that is reported as a problem.
    virtual void clear(const std::string& key);

    /// Called by LayeredSettings before any other member: where problems go from now on.
    virtual void setProblemHandler(const ProblemHandler& handler);
};

/// Values that the program sets while it runs. Writable, and empty at first.
///
/// Thread safety: as for SettingsLayer. The host may call its members at any time.
class MemoryLayer final : public SettingsLayer {
public:
    MemoryLayer();
    ~MemoryLayer() override;
    [[nodiscard]] std::string name() const override;
    [[nodiscard]] std::optional<std::string> find(const std::string& key) const override;
    [[nodiscard]] bool isWritable() const noexcept override;
    void set(const std::string& key, const SettingText& value) override;
    void clear(const std::string& key) override;

private:
    struct State;
    std::unique_ptr<State> state;
};

/// The process's environment as it was at construction. With the prefix "APP_", the key
/// logging.ImageDirectory is the variable APP_LOGGING_IMAGEDIRECTORY: behind the prefix, every byte
/// that is not an ASCII letter or digit is "_", and letters are upper case. So keys that differ
/// only in that share a variable. Windows does not tell upper from lower case in variables.
///
/// Construct it before another thread may change the environment.
///
/// Thread safety: as for SettingsLayer.
class EnvironmentLayer final : public SettingsLayer {
public:
    /// Reads the variables whose names begin with `prefix`, which may be empty.
    explicit EnvironmentLayer(std::string prefix);
    ~EnvironmentLayer() override;
    [[nodiscard]] std::string name() const override;
    [[nodiscard]] std::optional<std::string> find(const std::string& key) const override;
    [[nodiscard]] std::string origin(const std::string& key) const override;

private:
    struct State;
    std::unique_ptr<State> state;
};

/// Texts of the form key=value, as a command line gives them. The last one of a key counts.
///
/// Thread safety: as for SettingsLayer.
class ArgumentsLayer final : public SettingsLayer {
public:
    /// Throws std::invalid_argument, which names the text, if one has no "=" or no key before it.
    explicit ArgumentsLayer(const std::vector<std::string>& arguments);
    ~ArgumentsLayer() override;
    [[nodiscard]] std::string name() const override;
    [[nodiscard]] std::optional<std::string> find(const std::string& key) const override;

private:
    struct State;
    std::unique_ptr<State> state;
};

/// Why a setting has its value.
struct SettingExplanation {
    /// What one layer has under the key.
    struct Layer {
        std::string name;                 ///< The layer.
        std::optional<std::string> text;  ///< What it has, if anything.
        std::string origin;               ///< Where that is: a file and a line, or a variable.
        std::string refusal;              ///< Why the text does not count; empty if it does.
        bool answers = false;             ///< Whether reads get this text.
    };

    std::string key;            ///< The setting.
    std::vector<Layer> layers;  ///< In the order in which they are asked, overrides first.
};

/// Returns lines for people, each with a terminator, in UTF-8.
[[nodiscard]] std::string formatExplanation(const SettingExplanation& explanation);

/// The provider for hosts: settings from an ordered list of layers.
///
/// A write goes to the first layer that is writable, and clearing a key clears it in all that are.
/// It is a problem if no layer is writable, or if a layer that is not writable comes before one
/// that is, and still answers. Writing what no text can hold (a double that is not finite, wide
/// text that is not Unicode) is a problem as well, and changes nothing. Each problem of a text is
/// reported once per layer, key and text.
///
/// Failures: reads throw std::bad_alloc if memory runs out, and what a layer or the problem handler
/// throws propagates.
///
/// Thread safety: any number of threads may read and write settings and call explain() at once.
/// Construct it before they start, and destroy it after they have ended.
class LayeredSettings final : public DeveloperSettings::Provider {
public:
    /// Installs itself. Layers may be shared with the host; they keep copies of `problems`, also
    /// after the destruction. Throws std::invalid_argument if one of the pointers is null, and
    /// std::logic_error if there is another LayeredSettings.
    explicit LayeredSettings(std::vector<std::shared_ptr<SettingsLayer>> layers,
                             ProblemHandler problems = reportToStandardError);

    LayeredSettings(const LayeredSettings&) = delete;
    LayeredSettings& operator=(const LayeredSettings&) = delete;

    /// Uninstalls itself.
    ~LayeredSettings() override;

    /// Returns what each layer has under `key`. A text counts as refused if a read has refused it.
    [[nodiscard]] SettingExplanation explain(const std::string& key) const;

    /// Same, for a setting of a known type: a text counts as refused if it cannot be converted.
    template <class V>
    [[nodiscard]] SettingExplanation explain(const DeveloperSettings::Setting<V>& setting) const;

    /// The provider's members. A key exists if a layer has it, whether or not its text can be
    /// converted.
    /// @{
    std::wstring getValue(const char* key, const std::wstring& fallback) const override;
    std::string getValue(const char* key, const std::string& fallback) const override;
    double getValue(const char* key, double fallback) const override;
    std::int32_t getValue(const char* key, std::int32_t fallback) const override;
    bool getValue(const char* key, bool fallback) const override;
    bool exists(const char* key) const override;
    void setValue(const char* key, const std::wstring& value) override;
    void setValue(const char* key, const std::string& value) override;
    void setValue(const char* key, double value) override;
    void setValue(const char* key, std::int32_t value) override;
    void setValue(const char* key, bool value) override;
    void clear(const char* key) override;
    /// @}

private:
    template <class V>
    friend class ScopedSetting;
    struct State;

    std::uint64_t addOverride(const std::string& key, std::string text);
    void removeOverride(const std::string& key, std::uint64_t id) noexcept;

    std::unique_ptr<State> state;
};

/// Overrides a setting while it lives: all layers are asked after it, and writes do not change it.
/// Of several for one key the one that was constructed last answers; they may be destroyed in any
/// order.
///
/// Thread safety: one object is constructed and destroyed by one thread each; different objects are
/// independent, also for one key.
template <class V>
class ScopedSetting final {
public:
    /// `settings` must outlive the object. Throws std::invalid_argument if no text can hold the
    /// value: a double that is not finite, or wide text that is not Unicode.
    ScopedSetting(LayeredSettings& settings, const std::string& key, detail::Parameter<V> value);

    ScopedSetting(const ScopedSetting&) = delete;
    ScopedSetting& operator=(const ScopedSetting&) = delete;

    /// Ends the override.
    ~ScopedSetting();

private:
    LayeredSettings& owner;
    std::string overriddenKey;
    std::uint64_t id;
};

}  // namespace lapwing

#endif  // LAPWING_KIT_SETTINGS_LAYERS_H
