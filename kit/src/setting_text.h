// How settings are written as texts, and read from them.

#ifndef LAPWING_KIT_SRC_SETTING_TEXT_H
#define LAPWING_KIT_SRC_SETTING_TEXT_H

#include <lapwing/kit/settings_layers.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lapwing {

// Sets `value` to what `text` stands for. Returns false if it stands for nothing of that type.
bool parseSetting(std::string_view text, bool& value);
bool parseSetting(std::string_view text, std::int32_t& value);
bool parseSetting(std::string_view text, double& value);
bool parseSetting(std::string_view text, std::string& value);
bool parseSetting(std::string_view text, std::wstring& value);

// Returns the text from which parseSetting() makes the same value. Returns nothing for a double
// that is not finite and for wide text that is not Unicode.
std::optional<SettingText> formatSetting(bool value);
std::optional<SettingText> formatSetting(std::int32_t value);
std::optional<SettingText> formatSetting(double value);
std::optional<SettingText> formatSetting(const std::string& value);
std::optional<SettingText> formatSetting(const std::wstring& value);

// What a text must be, for messages.
template <class V>
inline constexpr const char* expectedSetting = "a text";
template <>
inline constexpr const char* expectedSetting<bool> = "true, false, 1 or 0";
template <>
inline constexpr const char* expectedSetting<std::int32_t> = "a whole number of 32 bits";
template <>
inline constexpr const char* expectedSetting<double> = "a finite decimal number";
template <>
inline constexpr const char* expectedSetting<std::wstring> = "Unicode text";

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_SETTING_TEXT_H
