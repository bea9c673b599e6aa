#include "system_timer.h"

#include <lapwing/kit/wait.h>

#include <gtest/gtest.h>

#ifdef __linux__
#include <csignal>

#include <sys/time.h>
#endif

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

TEST(SystemTimer, DoesNotEndWaitsEarly) {
#ifdef __linux__  // Signals interrupt the timer.
    const auto previous = std::signal(SIGALRM, [](int) {});
    const itimerval everyTwoMilliseconds{{0, 2000}, {0, 2000}};
    const auto firstSignal = Clock::now() + 2ms;
    ASSERT_EQ(setitimer(ITIMER_REAL, &everyTwoMilliseconds, nullptr), 0);
    sleepUntilAbout(Clock::time_point::max());
    EXPECT_GE(Clock::now(), firstSignal);
#endif
    for (const Waiting waiting : {Waiting::Exact, Waiting::Economical}) {
        const auto deadline = Clock::now() + 5'300us;
        waitUntil(deadline, waiting);
        EXPECT_GE(Clock::now(), deadline) << static_cast<int>(waiting);
    }
#ifdef __linux__
    const itimerval never{};
    ASSERT_EQ(setitimer(ITIMER_REAL, &never, nullptr), 0);
    (void)std::signal(SIGALRM, previous);
#endif
}

}  // namespace
