#include <lapwing/kit/wait.h>

#include "system_timer.h"

namespace lapwing {
namespace {

void sleepUntil(Clock::time_point time) {
    while (now() < time) {
        sleepUntilAbout(time);
    }
}

void spinUntil(Clock::time_point time) {
    while (now() < time) {
    }
}

}  // namespace

void waitUntil(Clock::time_point deadline, Waiting waiting) noexcept {
    if (waiting == Waiting::Economical) {
        sleepUntil(deadline);
        return;
    }
    if (deadline > Clock::time_point::min() + timerTolerance) {
        sleepUntil(deadline - timerTolerance);
    }
    spinUntil(deadline);
}

}  // namespace lapwing
