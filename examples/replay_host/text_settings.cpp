#include "text_settings.h"

#include "usage_error.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <type_traits>
#include <utility>

namespace {

template <class V>
inline constexpr const char* expected = "a number";
template <>
inline constexpr const char* expected<bool> = "true or false";
template <>
inline constexpr const char* expected<std::int32_t> = "a whole number of 32 bits";
template <>
inline constexpr const char* expected<std::wstring> = "ASCII, as wide text must be";

std::optional<bool> parseBoolean(const std::string& text) {
    const bool isTrue = text == "true" || text == "1";
    const bool isFalse = text == "false" || text == "0";
    return isTrue || isFalse ? std::optional(isTrue) : std::nullopt;
}

template <class Number>
std::optional<Number> parseNumber(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    Number number{};
    stream >> std::noskipws >> number;
    return !stream.fail() && stream.eof() ? std::optional(number) : std::nullopt;
}

bool isAscii(const std::wstring& text) {
    constexpr std::uint32_t asciiEnd = 0x80;
    return std::all_of(text.begin(), text.end(), [](wchar_t character) {
        return static_cast<std::uint32_t>(character) < asciiEnd;
    });
}

std::optional<std::wstring> widen(const std::string& text) {
    std::wstring wide(text.size(), L'\0');
    std::transform(text.begin(), text.end(), wide.begin(),
                   [](char character) { return static_cast<unsigned char>(character); });
    return isAscii(wide) ? std::optional(std::move(wide)) : std::nullopt;
}

std::string narrow(const std::wstring& ascii) {
    std::string text(ascii.size(), '\0');
    std::transform(ascii.begin(), ascii.end(), text.begin(),
                   [](wchar_t character) { return static_cast<char>(character); });
    return text;
}

UsageError unsuitable(const std::string& key, const std::string& value, const char* wanted) {
    return UsageError("setting " + key + ": " + value + " is not " + wanted);
}

template <class V>
std::optional<V> parse(const std::string& text) {
    if constexpr (std::is_same_v<V, bool>) {
        return parseBoolean(text);
    } else if constexpr (std::is_same_v<V, std::wstring>) {
        return widen(text);
    } else if constexpr (std::is_same_v<V, std::string>) {
        return text;
    } else {
        return parseNumber<V>(text);
    }
}

template <class V>
std::string format(const V& value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(std::numeric_limits<double>::max_digits10);
    stream << std::boolalpha << value;
    return stream.str();
}

}  // namespace

TextSettings::TextSettings(Texts initial) : texts(std::move(initial)) {
    setInstance(this);
}

TextSettings::~TextSettings() {
    setInstance(nullptr);
}

bool TextSettings::getValue(const char* key, bool fallback) const {
    return read(key, fallback);
}

std::int32_t TextSettings::getValue(const char* key, std::int32_t fallback) const {
    return read(key, fallback);
}

double TextSettings::getValue(const char* key, double fallback) const {
    return read(key, fallback);
}

std::string TextSettings::getValue(const char* key, const std::string& fallback) const {
    return read(key, fallback);
}

std::wstring TextSettings::getValue(const char* key, const std::wstring& fallback) const {
    return read(key, fallback);
}

bool TextSettings::exists(const char* key) const {
    return find(key).has_value();
}

void TextSettings::setValue(const char* key, bool value) {
    write(key, value);
}

void TextSettings::setValue(const char* key, std::int32_t value) {
    write(key, value);
}

void TextSettings::setValue(const char* key, double value) {
    if (!std::isfinite(value)) {
        throw unsuitable(key, "the new value", "a finite number");
    }
    write(key, value);
}

void TextSettings::setValue(const char* key, const std::string& value) {
    write(key, value);
}

void TextSettings::setValue(const char* key, const std::wstring& value) {
    if (!isAscii(value)) {
        throw unsuitable(key, "the new value", expected<std::wstring>);
    }
    write(key, narrow(value));
}

void TextSettings::clear(const char* key) {
    const std::lock_guard lock(mutex);
    texts.erase(key);
}

template <class V>
V TextSettings::read(const char* key, const V& fallback) const {
    const std::optional<std::string> text = find(key);
    if (!text) {
        return fallback;
    }
    const std::optional<V> value = parse<V>(*text);
    if (!value) {
        throw unsuitable(key, '"' + *text + '"', expected<V>);
    }
    return *value;
}

template <class V>
void TextSettings::write(const char* key, const V& value) {
    std::string text = format(value);
    const std::lock_guard lock(mutex);
    texts.insert_or_assign(key, std::move(text));
}

std::optional<std::string> TextSettings::find(const char* key) const {
    const std::lock_guard lock(mutex);
    const auto found = texts.find(key);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
}
