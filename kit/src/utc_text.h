// Times as text, such as 2026-11-21T14:40:00Z, in the Gregorian calendar of all years.

#ifndef LAPWING_KIT_SRC_UTC_TEXT_H
#define LAPWING_KIT_SRC_UTC_TEXT_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lapwing {

using UtcSeconds = std::chrono::time_point<std::chrono::system_clock, std::chrono::seconds>;

// Nothing for years that do not have four digits.
std::optional<std::string> toUtcText(UtcSeconds time);

// Nothing for text of another form, and for dates and times of day that do not exist.
std::optional<UtcSeconds> fromUtcText(std::string_view text);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_UTC_TEXT_H
