/// @file
/// A complete settings provider that stores text and converts it when it is read.

#ifndef REPLAY_HOST_TEXT_SETTINGS_H
#define REPLAY_HOST_TEXT_SETTINGS_H

#include <lapwing/settings.h>

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

/// The settings provider of the whole process, from its construction to its destruction. Make one
/// only, first in main(), so that it outlives all threads that use settings.
///
/// A Boolean is written true, false, 1 or 0. Integers and floating-point numbers are decimal, in
/// every locale, without spaces. A wide string must be ASCII, which is the same in every encoding.
///
/// Reading a text that is not of the wanted type throws UsageError, which names key and value. A
/// host reads its settings once when it starts, so that this happens early. Writing a wide string
/// that is not ASCII, or a number that is not finite, throws UsageError too.
///
/// The class is final because it installs itself in its constructor: other threads could call a
/// derived object that is not complete yet.
///
/// Thread safety: any number of threads may call any member at once.
class TextSettings final : public DeveloperSettings::Provider {
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
