// Lines to where a program's diagnostics go. Failures are ignored.

#ifndef LAPWING_KIT_SRC_LINE_OUTPUT_H
#define LAPWING_KIT_SRC_LINE_OUTPUT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace lapwing {

// Adds the terminator. The lines of this process do not mix, and each is written at once unless the
// system takes only a part.
void writeToStandardError(const std::string& line);

// Adds the terminator. Systems without a debugger's window have standard error instead.
void writeToDebugger(const std::string& line);

// Returns how many bytes the system took, 0 if it failed.
std::size_t writePartToStandardError(std::string_view text);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_LINE_OUTPUT_H
