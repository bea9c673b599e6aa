// The lock of handlers that may be called until the process ends.

#ifndef LAPWING_KIT_SRC_HANDLER_LOCK_H
#define LAPWING_KIT_SRC_HANDLER_LOCK_H

#include <mutex>

#include "this_process.h"

namespace lapwing {

// Holds nothing if a thread was ended while it held the mutex: when a Windows process ends, its
// other threads are ended before the static objects of DLLs are destroyed.
inline std::unique_lock<std::mutex> lockForHandler(std::mutex& mutex) {
    return otherThreadsWereEnded() ? std::unique_lock(mutex, std::try_to_lock)
                                   : std::unique_lock(mutex);
}

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_HANDLER_LOCK_H
