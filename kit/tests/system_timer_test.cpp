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
volatile std::sig_atomic_t signals = 0;

TEST(SystemTimer, IsInterruptedBySignalsOnlyAndWaitsAreNot) {
    const auto previous = std::signal(SIGALRM, [](int) { signals = signals + 1; });
    const itimerval everyMillisecond{{0, 1000}, {0, 1000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &everyMillisecond, nullptr), 0);
    expectNoEarlyEnd();
    for (const auto farAway : {Clock::now() + 100 * 8760h, Clock::time_point::max()}) {
        signals = 0;
        sleepUntilAbout(farAway);
        EXPECT_GT(signals, 0) << farAway.time_since_epoch().count();
    }
    const itimerval never{};
    ASSERT_EQ(setitimer(ITIMER_REAL, &never, nullptr), 0);
    (void)std::signal(SIGALRM, previous);
}
#endif

}  // namespace
