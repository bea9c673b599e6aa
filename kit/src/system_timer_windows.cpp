#include "system_timer.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <ratio>
#include <type_traits>

#include <windows.h>

#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace lapwing {
namespace {

struct CloseTimer {
    void operator()(HANDLE timer) const noexcept { CloseHandle(timer); }
};
using Timer = std::unique_ptr<std::remove_pointer_t<HANDLE>, CloseTimer>;

Timer createTimer() noexcept {
    constexpr DWORD access = SYNCHRONIZE | TIMER_MODIFY_STATE;
    for (const DWORD flags : {DWORD{CREATE_WAITABLE_TIMER_HIGH_RESOLUTION}, DWORD{0}}) {
        if (const HANDLE timer = CreateWaitableTimerExW(nullptr, nullptr, flags, access)) {
            return Timer(timer);
        }
    }
    return nullptr;
}

// Due times that are negative are relative; absolute ones follow the wall clock.
bool sleepWithTimer(Clock::duration pause) noexcept {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    const Timer timer = createTimer();
    LARGE_INTEGER due{};
    due.QuadPart = -std::chrono::ceil<Ticks>(pause).count();
    return timer && SetWaitableTimerEx(timer.get(), &due, 0, nullptr, nullptr, nullptr, 0) != 0 &&
           WaitForSingleObject(timer.get(), INFINITE) == WAIT_OBJECT_0;
}

}  // namespace

Clock::time_point now() noexcept {
    return Clock::now();
}

Clock::time_point coarseNow() noexcept {
    return Clock::time_point(std::chrono::milliseconds(GetTickCount64()));
}

void sleepUntilAbout(Clock::time_point time) noexcept {
    const Clock::duration pause = time - now();
    if (pause > Clock::duration::zero() && !sleepWithTimer(pause)) {
        constexpr std::chrono::hours longest{1};
        const auto most = std::min<Clock::duration>(pause, longest);
        Sleep(static_cast<DWORD>(std::chrono::ceil<std::chrono::milliseconds>(most).count()));
    }
}

}  // namespace lapwing
