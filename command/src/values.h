// Texts of the command line, and what they stand for. Functions that take an `option` throw
// Failure, which names it, for a text that stands for nothing.

#ifndef LAPWING_COMMAND_VALUES_H
#define LAPWING_COMMAND_VALUES_H

#include "places.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace command {

std::int64_t wholeNumber(std::string_view option, const std::string& text, std::int64_t least,
                         std::int64_t most);
std::uint64_t seedNumber(std::string_view option, const std::string& text);
double decimalNumber(std::string_view option, const std::string& text);
double factorNumber(std::string_view option, const std::string& text);

// Returns the percentage of "median" or "pNN", such as p99; nothing for any other text.
std::optional<double> percentileOf(const std::string& text);

// Splits at the first "=", behind something.
std::pair<std::string, std::string> pairOf(std::string_view option, const std::string& text);

// LOW..HIGH, two percentages.
std::pair<double, double> rangeOf(std::string_view option, const std::string& text);

// Calls `call`. A text or number that it refuses is one of the option's.
template <class Call>
void inOption(const std::string& option, const Call& call) {
    try {
        call();
    } catch (const std::invalid_argument& error) {
        throw Failure(option + ": " + error.what());
    }
}

// Texts in the place of which a parser sees tokens, so that it takes nothing apart.
class Tokens {
public:
    std::string hide(std::string value);
    // Puts the values back into a text with tokens, as `show` has them.
    using Show = std::function<std::string(const std::string& value)>;
    [[nodiscard]] std::string reveal(std::string_view text, const Show& show = {}) const;

private:
    std::vector<std::string> values;
};

}  // namespace command

#endif  // LAPWING_COMMAND_VALUES_H
