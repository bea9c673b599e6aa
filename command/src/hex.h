// Bytes in lowercase hexadecimal.

#ifndef LAPWING_COMMAND_HEX_H
#define LAPWING_COMMAND_HEX_H

#include <stdexcept>
#include <string>
#include <string_view>

namespace command {

inline constexpr std::string_view hexDigits = "0123456789abcdef";

inline std::string toHex(std::string_view bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        digits += hexDigits[value / 16U];
        digits += hexDigits[value % 16U];
    }
    return digits;
}

// Throws std::invalid_argument for anything but pairs of digits.
inline std::string fromHex(std::string_view digits) {
    std::string bytes;
    for (; !digits.empty(); digits.remove_prefix(2)) {
        const std::size_t high = hexDigits.find(digits[0]);
        const std::size_t low =
            digits.size() < 2 ? std::string_view::npos : hexDigits.find(digits[1]);
        if (high == std::string_view::npos || low == std::string_view::npos) {
            throw std::invalid_argument("hex: is followed by pairs of lowercase digits");
        }
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

}  // namespace command

#endif  // LAPWING_COMMAND_HEX_H
