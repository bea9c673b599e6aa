/// @file
/// Waiting for a point in time, as precisely as the system can.

#ifndef LAPWING_KIT_WAIT_H
#define LAPWING_KIT_WAIT_H

#include <chrono>

namespace lapwing {

/// How a wait ends.
enum class Waiting {
    /// As close to the deadline as can be: the thread sleeps until 0.2 ms before it (on Windows,
    /// 1.2 ms), then keeps its processor busy and reads the clock until the deadline has come.
    Exact,

    /// As soon after the deadline as the system's best timer wakes the thread. This spends no
    /// processor time.
    Economical,
};

/// Blocks the calling thread until `deadline`, and never returns early. If the deadline is past, it
/// returns at once. Signals do not end it early, and on Linux they do not make it later.
///
/// Linux sleeps to an absolute time, without the thread's timer slack: it is late by what the
/// scheduler takes. Windows uses a timer of high resolution (some 0.5 ms). Before Windows 10,
/// version 1803, there is only the plain timer: it may wake the thread one tick late, which is up
/// to 15.6 ms, and then an exact wait is late as well.
///
/// Any number of threads may wait at once.
void waitUntil(std::chrono::steady_clock::time_point deadline,
               Waiting waiting = Waiting::Exact) noexcept;

}  // namespace lapwing

#endif  // LAPWING_KIT_WAIT_H
