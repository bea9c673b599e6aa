// The library's only way to the steady clock and to sleep. The tests compile the library's sources
// with stand-ins for both; otherwise these are the standard functions, inlined.

#ifndef LAPWING_SRC_CLOCK_H
#define LAPWING_SRC_CLOCK_H

#include <chrono>
#include <ratio>
#include <thread>
#include <type_traits>

namespace lapwing {

using Clock = std::chrono::steady_clock;
static_assert(Clock::is_steady);
static_assert(std::is_same_v<Clock::period, std::nano>);

#ifdef LAPWING_TESTS_CLOCK
Clock::time_point now() noexcept;
void sleepFor(Clock::duration pause);
#else
inline Clock::time_point now() noexcept {
    return Clock::now();
}
inline void sleepFor(Clock::duration pause) {
    std::this_thread::sleep_for(pause);
}
#endif

}  // namespace lapwing

#endif  // LAPWING_SRC_CLOCK_H
