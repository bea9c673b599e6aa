#include "system_timer.h"

#include <ctime>
#include <thread>

namespace lapwing {

Clock::time_point now() noexcept {
    return Clock::now();
}

void sleepUntilAbout(Clock::time_point time) noexcept {
#ifdef __linux__
    // Here the steady clock is the monotonic one.
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(time - whole);
    timespec wakeUp{};
    wakeUp.tv_sec = static_cast<std::time_t>(whole.time_since_epoch().count());
    wakeUp.tv_nsec = static_cast<long>(rest.count());
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wakeUp, nullptr);
#else
    std::this_thread::sleep_until(time);
#endif
}

}  // namespace lapwing
