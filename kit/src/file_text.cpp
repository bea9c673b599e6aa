#include <lapwing/kit/file_text.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>

#include "utf8.h"

namespace lapwing {

namespace {

constexpr std::string_view hexPrefix = "hex:";
constexpr std::string_view hexDigits = "0123456789abcdef";

struct ByteRange {
    unsigned char low;
    unsigned char high;
};

// The first two bytes tell overlong forms, surrogates and what is beyond U+10FFFF from the rest.
struct Utf8Form {
    std::size_t length;
    ByteRange first;
    ByteRange second;
};

constexpr ByteRange continuation{0x80, 0xBF};
constexpr std::array<Utf8Form, 9> utf8Forms{{{1, {0x00, 0x7F}, {}},
                                             {2, {0xC2, 0xDF}, continuation},
                                             {3, {0xE0, 0xE0}, {0xA0, 0xBF}},
                                             {3, {0xE1, 0xEC}, continuation},
                                             {3, {0xED, 0xED}, {0x80, 0x9F}},
                                             {3, {0xEE, 0xEF}, continuation},
                                             {4, {0xF0, 0xF0}, {0x90, 0xBF}},
                                             {4, {0xF1, 0xF3}, continuation},
                                             {4, {0xF4, 0xF4}, {0x80, 0x8F}}}};

bool isWithin(char byte, const ByteRange& range) {
    const auto value = static_cast<unsigned char>(byte);
    return range.low <= value && value <= range.high;
}

bool beginsWith(std::string_view text, const Utf8Form& form) {
    if (text.size() < form.length || !isWithin(text[0], form.first)) {
        return false;
    }
    const std::string_view rest = text.substr(1, form.length - 1);
    return rest.empty() ||
           (isWithin(rest[0], form.second) && std::all_of(rest.begin(), rest.end(), [](char byte) {
                return isWithin(byte, continuation);
            }));
}

bool needsHex(std::string_view bytes) {
    return bytes.substr(0, hexPrefix.size()) == hexPrefix || !isUtf8(bytes);
}

unsigned hexValue(char digit) {
    const std::size_t value = hexDigits.find(digit);
    if (value == std::string_view::npos) {
        throw std::invalid_argument("hex: must be followed by lowercase hexadecimal digits");
    }
    return static_cast<unsigned>(value);
}

std::string fromHex(std::string_view digits) {
    if (digits.size() % 2 != 0) {
        throw std::invalid_argument("hex: must be followed by pairs of digits");
    }
    std::string bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(hexValue(digits[i]) * 16 + hexValue(digits[i + 1]));
    }
    return bytes;
}

}  // namespace

bool isUtf8(std::string_view text) {
    return utf8Prefix(text) == text.size();
}

std::size_t utf8Prefix(std::string_view text) {
    std::string_view rest = text;
    while (!rest.empty()) {
        const auto* const form =
            std::find_if(utf8Forms.begin(), utf8Forms.end(),
                         [&](const Utf8Form& candidate) { return beginsWith(rest, candidate); });
        if (form == utf8Forms.end()) {
            break;
        }
        rest.remove_prefix(form->length);
    }
    return text.size() - rest.size();
}

std::string toFileText(std::string_view bytes) {
    if (!needsHex(bytes)) {
        return std::string(bytes);
    }
    std::string text(hexPrefix);
    text.reserve(text.size() + 2 * bytes.size());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += hexDigits[value / 16U];
        text += hexDigits[value % 16U];
    }
    return text;
}

std::string fromFileText(std::string_view text) {
    if (text.substr(0, hexPrefix.size()) != hexPrefix) {
        if (!isUtf8(text)) {
            throw std::invalid_argument("the text is not UTF-8");
        }
        return std::string(text);
    }
    std::string bytes = fromHex(text.substr(hexPrefix.size()));
    if (!needsHex(bytes)) {
        throw std::invalid_argument("hex: stands where plain text would do: " + bytes);
    }
    return bytes;
}

}  // namespace lapwing
