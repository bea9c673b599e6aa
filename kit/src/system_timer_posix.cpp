#include "system_timer.h"

#include <algorithm>
#include <limits>
#include <thread>

#ifdef __linux__
#include <ctime>

#include <sys/prctl.h>
#endif

namespace lapwing {
namespace {

#ifdef __linux__
// By default, the system wakes a thread up to 0.05 ms late, to wake several at once.
class NoTimerSlack {
public:
    NoTimerSlack() noexcept { prctl(PR_SET_TIMERSLACK, 1UL); }
    NoTimerSlack(const NoTimerSlack&) = delete;
    NoTimerSlack& operator=(const NoTimerSlack&) = delete;
    ~NoTimerSlack() {
        if (before > 0) {
            prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(before));
        }
    }

private:
    int before = prctl(PR_GET_TIMERSLACK);
};
#endif

}  // namespace

Clock::time_point now() noexcept {
    return Clock::now();
}

Clock::time_point coarseNow() noexcept {
#ifdef __linux__
    timespec tick{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &tick);
    return Clock::time_point(std::chrono::seconds(tick.tv_sec) +
                             std::chrono::nanoseconds(tick.tv_nsec));
#else
    return Clock::now();
#endif
}

void sleepUntilAbout(Clock::time_point time) noexcept {
#ifdef __linux__
    // Here the steady clock is the monotonic one.
    const auto whole = std::chrono::floor<std::chrono::seconds>(time);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(time - whole);
    timespec wakeUp{};
    wakeUp.tv_sec = static_cast<std::time_t>(std::min<std::chrono::seconds::rep>(
        whole.time_since_epoch().count(), std::numeric_limits<std::time_t>::max()));
    wakeUp.tv_nsec = static_cast<long>(rest.count());
    const NoTimerSlack precise;
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wakeUp, nullptr);
#else
    std::this_thread::sleep_until(time);
#endif
}

}  // namespace lapwing
