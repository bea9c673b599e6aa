#include "text_settings.h"

#include "usage_error.h"

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

// Returns nothing for text that is not ASCII.
template <class To, class From>
std::optional<To> convertAscii(const From& text) {
    To converted;
    for (const auto character : text) {
        if (static_cast<std::uint32_t>(character) > 0x7F) {
            return std::nullopt;
        }
        converted += static_cast<typename To::value_type>(character);
    }
    return converted;
}

UsageError unsuitable(const std::string& key, const std::string& value, const char* wanted) {
    return UsageError("setting " + key + ": " + value + " is not " + wanted);
}

template <class V>
std::optional<V> parse(const std::string& text) {
    if constexpr (std::is_same_v<V, bool>) {
        return parseBoolean(text);
    } else if constexpr (std::is_same_v<V, std::wstring>) {
        return convertAscii<std::wstring>(text);
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
    const auto text = convertAscii<std::string>(value);
    if (!text) {
        throw unsuitable(key, "the new value", expected<std::wstring>);
    }
    write(key, *text);
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
