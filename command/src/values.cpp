#include "values.h"

#include "store_url.h"

#include "setting_text.h"
#include "text_table.h"

#include <charconv>
#include <system_error>

namespace command {
namespace {

constexpr char tokenStart = '\x01';
constexpr char tokenEnd = '\x02';

[[noreturn]] void refuse(std::string_view option, const std::string& text,
                         const std::string& wanted) {
    throw Failure(std::string(option) + ": \"" + lapwing::onOneLine(shownArgument(text)) +
                  "\" is not " + wanted);
}

template <class Number>
bool parseWhole(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

}  // namespace

std::int64_t wholeNumber(std::string_view option, const std::string& text, std::int64_t least,
                         std::int64_t most) {
    std::int64_t number = 0;
    if (!parseWhole(text, number) || number < least || number > most) {
        refuse(option, text,
               "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return number;
}

std::uint64_t seedNumber(std::string_view option, const std::string& text) {
    std::uint64_t number = 0;
    if (!parseWhole(text, number)) {
        refuse(option, text, "a whole number of 64 bits");
    }
    return number;
}

double decimalNumber(std::string_view option, const std::string& text) {
    double number = 0;
    if (!lapwing::parseSetting(text, number)) {
        refuse(option, text, "a decimal number");
    }
    return number;
}

double factorNumber(std::string_view option, const std::string& text) {
    const double factor = decimalNumber(option, text);
    if (factor < 0) {
        refuse(option, text, "a factor: it is negative");
    }
    return factor;
}

std::optional<double> percentileOf(const std::string& text) {
    double percent = 50;
    const bool hasNumber = !text.empty() && text.front() == 'p';
    const bool isKnown =
        hasNumber ? lapwing::parseSetting(text.substr(1), percent) : text == "median";
    return isKnown && percent >= 0 && percent <= 100 ? std::optional(percent) : std::nullopt;
}

std::pair<std::string, std::string> pairOf(std::string_view option, const std::string& text) {
    const std::size_t separator = text.find('=');
    if (separator == std::string::npos || separator == 0) {
        refuse(option, text, "of the form A=B");
    }
    return {text.substr(0, separator), text.substr(separator + 1)};
}

std::pair<double, double> rangeOf(std::string_view option, const std::string& text) {
    const std::size_t separator = text.find("..");
    std::pair<double, double> range;
    if (separator == std::string::npos ||
        !lapwing::parseSetting(text.substr(0, separator), range.first) ||
        !lapwing::parseSetting(text.substr(separator + 2), range.second)) {
        refuse(option, text, "of the form LOW..HIGH");
    }
    return range;
}

std::string Tokens::hide(std::string value) {
    values.push_back(std::move(value));
    return tokenStart + std::to_string(values.size() - 1) + tokenEnd;
}

// What only looks like a token stays as it is.
std::string Tokens::reveal(std::string_view text, const Show& show) const {
    std::string revealed;
    while (!text.empty()) {
        const std::size_t end =
            text.front() == tokenStart ? text.find(tokenEnd) : std::string_view::npos;
        std::size_t index = 0;
        if (end != std::string_view::npos &&
            parseWhole(std::string(text.substr(1, end - 1)), index) && index < values.size()) {
            revealed += show ? show(values[index]) : values[index];
            text.remove_prefix(end + 1);
        } else {
            revealed += text.front();
            text.remove_prefix(1);
        }
    }
    return revealed;
}

}  // namespace command
