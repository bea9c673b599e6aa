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

void expectNoEarlyEnd() {
    for (const Waiting waiting : {Waiting::Exact, Waiting::Economical}) {
        const auto deadline = Clock::now() + 5'300us;
        waitUntil(deadline, waiting);
        EXPECT_GE(Clock::now(), deadline) << static_cast<int>(waiting);
    }
}

TEST(SystemTimer, DoesNotEndWaitsEarly) {
    expectNoEarlyEnd();
}

#ifdef __linux__
TEST(SystemTimer, IsInterruptedBySignalsOnlyAndWaitsAreNot) {
    const auto previous = std::signal(SIGALRM, [](int) {});
    const itimerval everyTwoMilliseconds{{0, 2000}, {0, 2000}};
    for (const auto farAway : {Clock::now() + 100 * 8760h, Clock::time_point::max()}) {
        const auto firstSignal = Clock::now() + 2ms;
        ASSERT_EQ(setitimer(ITIMER_REAL, &everyTwoMilliseconds, nullptr), 0);
        sleepUntilAbout(farAway);
        EXPECT_GE(Clock::now(), firstSignal) << farAway.time_since_epoch().count();
    }
    expectNoEarlyEnd();
    const itimerval never{};
    ASSERT_EQ(setitimer(ITIMER_REAL, &never, nullptr), 0);
    (void)std::signal(SIGALRM, previous);
}
#endif

}  // namespace
