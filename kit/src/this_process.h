// What the system knows of the calling process and thread.

#ifndef LAPWING_KIT_SRC_THIS_PROCESS_H
#define LAPWING_KIT_SRC_THIS_PROCESS_H

#include <cstdint>
#include <string>

namespace lapwing {

std::uint32_t processId();
std::uint32_t threadId();

// Empty if there is none.
std::string processName();
std::string threadName();

// Whether the process is ending and no other thread is left of it.
bool otherThreadsWereEnded();

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_THIS_PROCESS_H
