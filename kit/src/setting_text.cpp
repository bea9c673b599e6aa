#include "setting_text.h"

#include "utf8.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <system_error>

namespace lapwing {
namespace {

// Not by std::to_chars: not every standard library has it for doubles.
std::string formatDouble(double value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(std::numeric_limits<double>::max_digits10);
    stream << value;
    return stream.str();
}

bool takeOneOf(std::string_view characters, std::string_view& text) {
    const bool found = !text.empty() && characters.find(text.front()) != std::string_view::npos;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

bool takeDigits(std::string_view& text) {
    bool found = false;
    while (takeOneOf("0123456789", text)) {
        found = true;
    }
    return found;
}

bool isDecimal(std::string_view text) {
    takeOneOf("-", text);
    const bool hasWhole = takeDigits(text);
    const bool hasFraction = takeOneOf(".", text) && takeDigits(text);
    if (takeOneOf("eE", text)) {
        takeOneOf("+-", text);
        if (!takeDigits(text)) {
            return false;
        }
    }
    return (hasWhole || hasFraction) && text.empty();
}

using CodePoint = std::uint32_t;
constexpr bool wideIsUtf16 = sizeof(wchar_t) == 2;
constexpr CodePoint firstSupplementary = 0x10000;

// The text is UTF-8. Moves it behind its first character.
CodePoint takeFromUtf8(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    CodePoint point = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        point = point << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    text.remove_prefix(length);
    return point;
}

void appendWide(std::wstring& wide, CodePoint point) {
    if (wideIsUtf16 && point >= firstSupplementary) {
        point -= firstSupplementary;
        wide += static_cast<wchar_t>(0xD800U + (point >> 10U));
        point = 0xDC00U + (point & 0x3FFU);
    }
    wide += static_cast<wchar_t>(point);
}

bool isSurrogate(CodePoint point, CodePoint first) {
    return point - first < 0x400U;
}

// Moves the text behind its first character. A surrogate without its other half is returned as it
// is.
CodePoint takeFromWide(std::wstring_view& text) {
    constexpr CodePoint allBits = wideIsUtf16 ? 0xFFFFU : 0xFFFFFFFFU;
    CodePoint point = static_cast<CodePoint>(text.front()) & allBits;
    text.remove_prefix(1);
    if (wideIsUtf16 && isSurrogate(point, 0xD800) && !text.empty()) {
        const CodePoint low = static_cast<CodePoint>(text.front()) & allBits;
        if (isSurrogate(low, 0xDC00)) {
            point = firstSupplementary + ((point - 0xD800U) << 10U) + (low - 0xDC00U);
            text.remove_prefix(1);
        }
    }
    return point;
}

void appendUtf8(std::string& text, CodePoint point) {
    const auto append = [&](CodePoint lead, unsigned shift) {
        text += static_cast<char>(lead | (point >> shift));
        while (shift > 0) {
            shift -= 6;
            text += static_cast<char>(0x80U | ((point >> shift) & 0x3FU));
        }
    };
    if (point < 0x80) {
        append(0, 0);
    } else if (point < 0x800) {
        append(0xC0, 6);
    } else if (point < firstSupplementary) {
        append(0xE0, 12);
    } else {
        append(0xF0, 18);
    }
}

}  // namespace

bool parseSetting(std::string_view text, bool& value) {
    value = text == "true" || text == "1";
    return value || text == "false" || text == "0";
}

bool parseSetting(std::string_view text, std::int32_t& value) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end;
}

// A stream takes more than decimal numbers. Some fail not only at what is too large but also at
// what is so small that it loses digits.
bool parseSetting(std::string_view text, double& value) {
    if (!isDecimal(text)) {
        return false;
    }
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    stream >> value;
    return !stream.fail() || std::abs(value) < 1;
}

bool parseSetting(std::string_view text, std::string& value) {
    value = text;
    return true;
}

bool parseSetting(std::string_view text, std::wstring& value) {
    if (!isUtf8(text)) {
        return false;
    }
    value.clear();
    while (!text.empty()) {
        appendWide(value, takeFromUtf8(text));
    }
    return true;
}

std::optional<SettingText> formatSetting(bool value) {
    return SettingText{value ? "true" : "false", true};
}

std::optional<SettingText> formatSetting(std::int32_t value) {
    return SettingText{std::to_string(value), true};
}

std::optional<SettingText> formatSetting(double value) {
    if (!std::isfinite(value)) {
        return std::nullopt;
    }
    return SettingText{formatDouble(value), true};
}

std::optional<SettingText> formatSetting(const std::string& value) {
    return SettingText{value, false};
}

std::optional<SettingText> formatSetting(const std::wstring& value) {
    SettingText result;
    std::wstring_view rest = value;
    while (!rest.empty()) {
        const CodePoint point = takeFromWide(rest);
        if (point > 0x10FFFF || isSurrogate(point, 0xD800) || isSurrogate(point, 0xDC00)) {
            return std::nullopt;
        }
        appendUtf8(result.text, point);
    }
    return result;
}

}  // namespace lapwing
