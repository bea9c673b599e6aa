// Windows refuses an operation while another program has the file open.

#ifndef LAPWING_KIT_SRC_RETRY_WINDOWS_H
#define LAPWING_KIT_SRC_RETRY_WINDOWS_H

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <thread>

namespace lapwing {

inline bool lastErrorIsOneOf(std::initializer_list<DWORD> errors) {
    return std::find(errors.begin(), errors.end(), GetLastError()) != errors.end();
}

// Calls `attempt` until it returns true, or fails with another error, or two seconds have passed.
// The last error is then the attempt's.
template <typename Attempt>
bool retryWhile(std::initializer_list<DWORD> passingErrors, const Attempt& attempt) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!attempt()) {
        if (!lastErrorIsOneOf(passingErrors) || std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_RETRY_WINDOWS_H
