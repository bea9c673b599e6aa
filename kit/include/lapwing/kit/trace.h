/// @file
/// A file of trace events, which https://ui.perfetto.dev and chrome://tracing show as rows of
/// nested intervals.
///
///     lapwing::TraceFile trace("run.trace.json");
///     Instrumentation::setGlobalLogMessageHandler(trace.handler(lapwing::logToStandardError()));

#ifndef LAPWING_KIT_TRACE_H
#define LAPWING_KIT_TRACE_H

#include <lapwing/instrumentation.h>
#include <lapwing/kit/problems.h>

#include <cstdint>
#include <filesystem>
#include <memory>

namespace lapwing {

/// How a TraceFile writes.
struct TraceOptions {
    std::uint64_t limit = 100'000'000;                ///< At most so many bytes.
    ProblemHandler problems = reportToStandardError;  ///< Is told when the file cannot go on.
};

/// Writes the lines of Instrumentation to a file as trace events:
/// - "Begin" and "End" of a scope begin and end an interval on their thread's row;
/// - all other lines are instants, and so is an "End" that does not match the innermost interval of
///   its thread. The interval that it belongs to ends later: when it is the innermost and the
///   thread that began it sends a line.
///
/// A note that reads like a "Begin" begins an interval. The process and each thread have their
/// names. Times are read when a line arrives, on the steady clock, in microseconds since the
/// construction. In names, control characters are escaped, and bytes that are not UTF-8 become
/// "hex:" and the hexadecimal digits of the whole name.
///
/// Events are kept until there is a block of 64 KiB, which is written at once. The file is the form
/// of the format that needs no end: it can be opened at any time, also after the process was
/// killed, and then has all but the last block. At the size limit, or if writing fails, one problem
/// is reported and nothing more is written; the file still has whole events only.
///
/// It may be a static object, and its handlers may stay installed when the process ends or when the
/// module that has both is unloaded together with the library. Windows ends all other threads
/// before a DLL's static objects are destroyed: if one of them was writing, the last block is lost.
///
/// Thread safety: handlers and their copies may be called on any number of threads at once, and
/// flush() as well. One lock is held while an event is kept, and while a block is written.
class TraceFile {
public:
    /// Replaces `file`. Throws std::system_error, with the file's name, if it cannot be opened.
    explicit TraceFile(const std::filesystem::path& file, TraceOptions options = {});

    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    /// Writes what was kept and closes the file. From then on, handlers that are still installed
    /// only pass lines on. Exceptions of the problem handler are discarded.
    ~TraceFile();

    /// Returns a handler that writes each line, and then passes it to `next`, if that is not empty.
    /// `next` is called with no lock held, and gets all lines: also after the limit or a failure.
    /// Copies of the handler share it. Its exceptions propagate.
    [[nodiscard]] LogMessageHandler handler(LogMessageHandler next = {});

    /// Writes what was kept so far.
    void flush();

private:
    class Writer;
    std::shared_ptr<Writer> writer;
};

}  // namespace lapwing

#endif  // LAPWING_KIT_TRACE_H
