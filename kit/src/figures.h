// Numbers as people read them, the same under every locale. Spaces do not break, and minus is the
// character of that name.

#ifndef LAPWING_KIT_SRC_FIGURES_H
#define LAPWING_KIT_SRC_FIGURES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace lapwing {

// Returns a number with a point, at most so many digits behind it, and no zeros at its end. Its
// minus is a hyphen: it is meant for SVG.
std::string plainNumber(double value, int decimals);

// Returns a number with exactly so many decimals; large ones with an exponent.
std::string decimalText(double value, int decimals);

// Returns a time in microseconds, milliseconds or seconds.
std::string timeText(double milliseconds);

// Returns a difference of times with its sign, in milliseconds or seconds.
std::string shiftText(double milliseconds);

// Returns a time in UTC, such as 2026-11-21T14:40:00Z; for years that do not have four digits, a
// text of the same length.
std::string utcTextOf(double secondsSinceEpoch);

// Returns a count with its digits in groups.
std::string countText(std::size_t count);

// Returns a count and what is counted, which gets an "s" unless there is one.
std::string countText(std::size_t count, std::string_view what);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_FIGURES_H
