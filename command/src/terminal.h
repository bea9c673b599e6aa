// What can be drawn on the terminal.

#ifndef LAPWING_COMMAND_TERMINAL_H
#define LAPWING_COMMAND_TERMINAL_H

#include <cstddef>
#include <string>
#include <vector>

#include <lapwing/instrumentation.h>

namespace command {

// Returns how many characters a line has: COLUMNS, else what the terminal says, else 80.
std::size_t terminalWidth();

// Whether characters beyond ASCII can be drawn: as the locale says; on Windows always.
bool takesUnicode();

// Returns a line of `width` characters that shows how the samples are distributed from the shortest
// to the longest. There is at least one sample.
std::string drawDistribution(const std::vector<Milliseconds>& samples, std::size_t width,
                             bool inUnicode);

}  // namespace command

#endif  // LAPWING_COMMAND_TERMINAL_H
