/// @file
/// Log message handlers that hosts can install as they are.
///
///     Instrumentation::setGlobalLogMessageHandler(
///         lapwing::tee(lapwing::logToDebugger(), lapwing::logToStream(logFile)));
///
/// Each handler that is returned can be copied, and copies share what they write to. Any number of
/// threads may call a handler and its copies at once, and these functions as well.
///
/// They may stay installed when the process ends, or when the host's module is unloaded together
/// with the library. A module that is unloaded before the library uninstalls its handler first.

#ifndef LAPWING_KIT_LOG_SINKS_H
#define LAPWING_KIT_LOG_SINKS_H

#include <lapwing/instrumentation.h>

#include <functional>
#include <iosfwd>
#include <string>

namespace lapwing {

/// Writes whole lines to `stream`, which must outlive the handler and its copies: std::clog does,
/// a static stream of the host may not. They share one lock, which is held while the stream is
/// written to. Lines are not flushed. If the stream throws, that propagates.
[[nodiscard]] LogMessageHandler logToStream(std::ostream& stream);

/// Writes each line to standard error in one piece. All such handlers and reportToStandardError()
/// share one lock, which is held meanwhile. Failures are ignored.
[[nodiscard]] LogMessageHandler logToStandardError();

/// Sends lines to the debugger's window on Windows, where bytes that are not UTF-8 become U+FFFD.
/// Elsewhere, as logToStandardError().
[[nodiscard]] LogMessageHandler logToDebugger();

/// Decides about a line. It is called on the thread that sends the line, on several at once if they
/// send at once.
using LogMessagePredicate = std::function<bool(const std::string& line)>;

/// Passes on the lines for which `predicate` returns true. An empty predicate lets all pass. An
/// empty handler gives an empty handler. Exceptions of both propagate.
[[nodiscard]] LogMessageHandler filtered(LogMessageHandler handler, LogMessagePredicate predicate);

/// Passes each line to `first` and then to `second`. If `first` throws, `second` does not get the
/// line. If one is empty, returns the other.
[[nodiscard]] LogMessageHandler tee(LogMessageHandler first, LogMessageHandler second);

}  // namespace lapwing

#endif  // LAPWING_KIT_LOG_SINKS_H
