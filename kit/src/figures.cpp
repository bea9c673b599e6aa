#include "figures.h"

#include "utc_text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <locale>
#include <sstream>

namespace lapwing {
namespace {

constexpr const char* space = "\xC2\xA0";
constexpr const char* thinSpace = "\xE2\x80\xAF";
constexpr const char* minus = "\xE2\x88\x92";
constexpr double large = 1e6;

std::string digits(double value, int decimals) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(decimals) << value;
    return text.str();
}

std::string withoutZeros(std::string number) {
    if (number.find('.') != std::string::npos) {
        number.erase(number.find_last_not_of('0') + 1);
        number.erase(number.find_last_not_of('.') + 1);
    }
    return number == "-0" ? "0" : number;
}

std::string withMinus(const std::string& number) {
    return number.front() == '-' ? minus + number.substr(1) : number;
}

int exponentOf(double value) {
    return value == 0 ? 0 : static_cast<int>(std::floor(std::log10(std::abs(value))));
}

std::string withExponent(const std::string& mantissa, int exponent) {
    return withMinus(mantissa) + 'e' + std::to_string(exponent);
}

std::string significant(double value, int count) {
    const int exponent = exponentOf(value);
    const int decimals = count - 1;
    return std::abs(value) < large
               ? withMinus(plainNumber(value, std::max(0, decimals - exponent)))
               : withExponent(plainNumber(value / std::pow(10, exponent), decimals), exponent);
}

std::string longTimeText(double milliseconds) {
    const double size = std::abs(milliseconds);
    if (size < 9999.5) {
        return significant(milliseconds, size < 1000 ? 3 : 4) + space + "ms";
    }
    return significant(milliseconds / 1000, 4) + space + "s";
}

}  // namespace

std::string plainNumber(double value, int decimals) {
    return withoutZeros(digits(value, decimals));
}

std::string decimalText(double value, int decimals) {
    if (std::abs(value) < large) {
        return withMinus(digits(value, std::max(0, decimals)));
    }
    const int exponent = exponentOf(value);
    return withExponent(digits(value / std::pow(10, exponent), std::max(0, decimals + exponent)),
                        exponent);
}

std::string timeText(double milliseconds) {
    const double size = std::abs(milliseconds);
    return size > 0 && size < 0.9995 ? significant(milliseconds * 1000, 3) + space + "\xC2\xB5s"
                                     : longTimeText(milliseconds);
}

std::string shiftText(double milliseconds) {
    return (milliseconds > 0 ? "+" : "") + longTimeText(milliseconds);
}

std::string utcTextOf(double secondsSinceEpoch) {
    const std::chrono::seconds seconds(static_cast<std::int64_t>(secondsSinceEpoch));
    return toUtcText(UtcSeconds(seconds)).value_or("yyyy-mm-ddThh:mm:ssZ");
}

std::string countText(std::size_t count) {
    std::string text = std::to_string(count);
    if (text.size() > 4) {
        for (std::size_t place = text.size(); place > 3;) {
            place -= 3;
            text.insert(place, thinSpace);
        }
    }
    return text;
}

std::string countText(std::size_t count, std::string_view what) {
    return countText(count) + space + std::string(what) + (count == 1 ? "" : "s");
}

}  // namespace lapwing
