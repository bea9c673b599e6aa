/// @file
/// Instrumentation: a named stopwatch that tells its laps and its lifetime as log lines, indented
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

/// A whole number of milliseconds. What was measured finer is cut toward zero: 1.9 ms is 1 ms.
using Milliseconds = std::chrono::milliseconds;

/// Receives one finished log line, without a line terminator. Called on the thread that sends the
/// line, with no lock held, and by several threads at once if they send at once. It may use the
/// library and may replace itself, but a line that it sends to itself comes back to it without end.
/// What it throws leaves the call that sent the line, save in the destructor of Instrumentation.
/// May be empty: then lines are dropped.
using LogMessageHandler = std::function<void(const std::string&)>;

/// Measures from its construction to its destruction and says so as it goes, to its own handler if
/// it has one, else to the global one. For an object named N, constructed while d others lived in
/// the process (on any thread, enabled or not):
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
/// The handler is chosen anew for each line (for each block of items under a header) and copied,
/// so it may be replaced while it runs. A line for which there is no handler, and every line of a
/// disabled object, costs neither a copy nor formatting nor memory; time is measured all the same,
/// on the steady clock.
///
/// Failures: what calling or copying the handler throws, and std::bad_alloc while a line is
/// composed, leaves the member that sent the line. In the destructor it is discarded for "End" and
/// ends the process through std::terminate for "Final Lap". When "Begin" fails, the object never
/// existed but stays counted: all later objects are indented one level more.
///
/// Thread safety: one object is used by one thread at a time; different objects are independent.
class Instrumentation {
public:
    /// Sends "Begin" and then starts the clock. `enabled` says whether the object sends lines;
    /// `handler`, if it is not empty, receives them in place of the global one.
    LAPWING_EXPORT Instrumentation(std::string name, bool enabled, LogMessageHandler handler);

    /// An enabled object.
    LAPWING_EXPORT explicit Instrumentation(std::string name, LogMessageHandler handler = {});

    Instrumentation(const Instrumentation&) = delete;
    Instrumentation& operator=(const Instrumentation&) = delete;

    /// Sends "Final Lap", the time since the last lap, if there was a lap; then "End", the time
    /// since construction.
    LAPWING_EXPORT ~Instrumentation();

    /// Ends a lap: sends the time since the last one (at first, since construction) under `label`
    /// and returns it. If sending fails, the next lap still starts here, but this one does not
    /// count toward "Final Lap".
    LAPWING_EXPORT Milliseconds lap(const std::string& label);

    /// Returns the time since construction. Sends nothing and ends no lap.
    [[nodiscard]] LAPWING_EXPORT Milliseconds elapsed() const;

    /// Sends `text` as one line.
    LAPWING_EXPORT void note(const std::string& text);

    /// Sends each item as a line, in order. If one fails the rest are not sent.
    LAPWING_EXPORT void notes(const std::vector<std::string>& items);

    /// Sends `header` as a line and the items as a block under it, one level deeper and with the
    /// header in place of the object's name. With an empty header, same as notes(items).
    LAPWING_EXPORT void notes(const std::vector<std::string>& items, const std::string& header);

    /// Installs the handler of all objects that have none of their own, from their next line on;
    /// empty uninstalls. The one before is destroyed before the call returns; if copying the
    /// argument throws, it stays.
    ///
    /// Not synchronised: install before other threads send lines, and do not replace the handler
    /// while they may. When the library is unloaded, the handler is destroyed, before anything
    /// else of the library; lines sent and handlers installed from then on are dropped.
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
