// Starting programs, and what the system calls them with.

#ifndef LAPWING_COMMAND_PROCESS_H
#define LAPWING_COMMAND_PROCESS_H

#include <string>
#include <string_view>

namespace command {

#ifdef _WIN32
// What the system gives as UTF-16, as UTF-8.
std::string fromSystem(std::wstring_view text);
#endif

}  // namespace command

#endif  // LAPWING_COMMAND_PROCESS_H
