// The kit's only way to the steady clock and to the system's timer. Tests put their own in place.

#ifndef LAPWING_KIT_SRC_SYSTEM_TIMER_H
#define LAPWING_KIT_SRC_SYSTEM_TIMER_H

#include <chrono>

namespace lapwing {

using Clock = std::chrono::steady_clock;
static_assert(Clock::is_steady);

// How long before a deadline the system's timer can be trusted to have woken the thread.
#ifdef _WIN32
inline constexpr std::chrono::microseconds timerTolerance{1200};
#else
inline constexpr std::chrono::microseconds timerTolerance{200};
#endif

Clock::time_point now() noexcept;

// The time of the system's last tick, some milliseconds ago at most, which is read faster. It is
// not to be compared with now().
Clock::time_point coarseNow() noexcept;

// Sleeps until about `time`. May return early, when a signal comes for instance.
void sleepUntilAbout(Clock::time_point time) noexcept;

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_SYSTEM_TIMER_H
