/// @file
/// Instrumentation: a named stopwatch that logs its laps and its lifetime. Its lines are indented,
/// so that nested scopes read as a tree.
///
///     Instrumentation::setGlobalLogMessageHandler(
///         [](const std::string& line) { std::clog << line << '\n'; });
///
///     Instrumentation load("Load");
///     {
///         Instrumentation parse("Parse");
///         readTokens();
///         parse.lap("tokens");
///         buildTree();
///     }
///     load.note("tree is ready");
///
/// prints
///
///     Load: Begin
///       Parse: Begin
///         Parse: tokens - 3 ms
///         Parse: Final Lap - 1 ms
///       Parse: End - 4 ms
///       Load: tree is ready
///     Load: End - 5 ms

#ifndef LAPWING_INSTRUMENTATION_H
#define LAPWING_INSTRUMENTATION_H

#include <lapwing/export.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// A whole number of milliseconds. Finer measurements are truncated toward zero: 1.9 ms is 1 ms.
using Milliseconds = std::chrono::milliseconds;

/// Receives one finished log line, without a line terminator. If it is empty, lines are dropped.
///
/// It is called on the thread that sends the line, with no lock held, and on several threads at
/// once if they send at once. It may use the library, and it may replace itself. A handler that
/// logs to itself recurses forever. Its exceptions propagate to the caller, except from the
/// destructor of Instrumentation. A thread that is cancelled (pthread_cancel) while a handler
/// receives "Final Lap" or "End" ends the process.
using LogMessageHandler = std::function<void(const std::string&)>;

/// Measures time from its construction to its destruction and sends log lines as it goes: to its
/// own handler if it has one, else to the global handler. An object named N, constructed while d
/// others were alive in the process (on any thread, enabled or not), sends:
///
///     when                                    spaces   line
///     construction                            2d       N: Begin
///     lap(L)                                  2d + 2   N: L - 12 ms
///     note(T), each item T of notes(items)    2d + 2   N: T
///     notes(items, H): first                  2d + 2   N: H
///                      then each item T       2d + 4   H: T
///     destruction, if there was a lap         2d + 2   N: Final Lap - 12 ms
///     destruction                             2d       N: End - 12 ms
///
/// The handler is chosen again for each line (once for all items under a header), and a copy of it
/// is called. So a handler may be replaced while it runs. A line without a handler, and any line of
/// a disabled object, is neither composed nor sent and allocates nothing. Time is measured in any
/// case, on the steady clock.
///
/// Failures: exceptions from calling or copying the handler, and std::bad_alloc while a line is
/// composed, propagate from the member that sends the line. The destructor discards them for "End";
/// for "Final Lap" they end the process through std::terminate. If "Begin" fails, the constructor
/// throws, but the object stays counted: all later objects are indented one level deeper.
///
/// Thread safety: one object is used by one thread at a time; different objects are independent.
class Instrumentation {
public:
    /// Sends "Begin", then starts the clock. `enabled` says whether the object sends lines. If
    /// `handler` is not empty, it receives them instead of the global handler.
    LAPWING_EXPORT Instrumentation(std::string name, bool enabled, LogMessageHandler handler);

    /// Constructs an enabled object.
    LAPWING_EXPORT explicit Instrumentation(std::string name, LogMessageHandler handler = {});

    Instrumentation(const Instrumentation&) = delete;
    Instrumentation& operator=(const Instrumentation&) = delete;

    /// Sends "Final Lap" with the time since the last lap, if there was a lap. Then sends "End"
    /// with the time since construction.
    LAPWING_EXPORT ~Instrumentation();

    /// Ends a lap: sends its time with `label`, and returns it. A lap starts where the previous one
    /// ended; the first starts at construction. If sending fails, the next lap still starts here,
    /// but this one does not count as a lap for "Final Lap".
    LAPWING_EXPORT Milliseconds lap(const std::string& label);

    /// Returns the time since construction. Sends nothing and ends no lap.
    [[nodiscard]] LAPWING_EXPORT Milliseconds elapsed() const;

    /// Sends `text` as one line.
    LAPWING_EXPORT void note(const std::string& text);

    /// Sends each item as a line, in order. If one fails, the rest are not sent.
    LAPWING_EXPORT void notes(const std::vector<std::string>& items);

    /// Sends `header` as a line, then the items one level deeper, with the header in place of the
    /// object's name. With an empty header, same as notes(items).
    LAPWING_EXPORT void notes(const std::vector<std::string>& items, const std::string& header);

    /// Installs the handler of all objects that have none of their own, from their next line on; an
    /// empty one uninstalls. The previous handler is destroyed before the call returns. If copying
    /// the argument throws, the previous handler stays.
    ///
    /// Not synchronised: install it before other threads send lines, and do not replace it while
    /// they may.
    ///
    /// The library destroys the handler when it is unloaded or when the process ends, before its
    /// other static objects. From then on, lines are dropped and so are new handlers. Other threads
    /// that still send lines at that moment race with the destruction, so stop them first. On
    /// Windows the handler is then destroyed with the loader's lock held and, when the process
    /// ends, after all other threads are gone: a destructor that joins or waits for a thread hangs.
    /// Such a host uninstalls its handler before it leaves main().
    LAPWING_EXPORT static void setGlobalLogMessageHandler(LogMessageHandler handler);

private:
    using Clock = std::chrono::steady_clock;

    void sendMessage(const std::string& text);
    void sendTimeMessage(Milliseconds duration, const std::string& text);
    void unchecked_sendMessage(LogMessageHandler& handler, const std::string& text,
                               std::string_view ending = {});
    [[nodiscard]] LogMessageHandler logFunction() const;

    Clock::time_point startTime;
    Clock::time_point lastLapTime;
    std::string objectName;
    LogMessageHandler ownHandler;
    std::uint32_t lapCount = 0;
    std::int32_t nestingDepth;
    bool isEnabled;
};

#endif  // LAPWING_INSTRUMENTATION_H
