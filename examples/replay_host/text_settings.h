/// @file
/// A complete settings provider: values are kept as text and converted when they are read.

#ifndef REPLAY_HOST_TEXT_SETTINGS_H
#define REPLAY_HOST_TEXT_SETTINGS_H

#include <lapwing/settings.h>

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

/// The process-wide settings provider from its construction to its destruction. It must outlive
/// all threads that use settings, so it is made first and on the stack of main.
///
/// A Boolean is written true, false, 1 or 0; an integer or a floating-point number in decimal, with
/// nothing around it, whatever the locale. A wide string is ASCII, which reads the same in every
/// encoding; a host with other text in it converts by the means of its platform.
///
/// A read throws UsageError, naming key and value, when the text is not of the type asked for: a
/// host reads its settings once at its start to have that settled. So does writing a wide string
/// that is not ASCII, or a number that is not finite.
///
/// Thread safety: any number of threads may call any member at once.
class TextSettings : public DeveloperSettings::Provider {
public:
    using Texts = std::map<std::string, std::string, std::less<>>;

    explicit TextSettings(Texts initial);
    TextSettings(const TextSettings&) = delete;
    TextSettings& operator=(const TextSettings&) = delete;
    ~TextSettings() override;

    bool getValue(const char* key, bool fallback) const override;
    std::int32_t getValue(const char* key, std::int32_t fallback) const override;
    double getValue(const char* key, double fallback) const override;
    std::string getValue(const char* key, const std::string& fallback) const override;
    std::wstring getValue(const char* key, const std::wstring& fallback) const override;

    bool exists(const char* key) const override;

    void setValue(const char* key, bool value) override;
    void setValue(const char* key, std::int32_t value) override;
    void setValue(const char* key, double value) override;
    void setValue(const char* key, const std::string& value) override;
    void setValue(const char* key, const std::wstring& value) override;

    void clear(const char* key) override;

private:
    template <class V>
    V read(const char* key, const V& fallback) const;
    template <class V>
    void write(const char* key, const V& value);

    [[nodiscard]] std::optional<std::string> find(const char* key) const;

    mutable std::mutex mutex;
    Texts texts;
};

#endif  // REPLAY_HOST_TEXT_SETTINGS_H
