/// @file
/// Profiles from what other programs have written.
///
/// Each function reads `stream` to its end; `file` stands for it in errors. Times are truncated to
/// whole milliseconds. That nothing was found is no error: the profile is then empty.
///
/// Any number of threads may call these functions at once, with different streams.

#ifndef LAPWING_KIT_IMPORT_H
#define LAPWING_KIT_IMPORT_H

#include <lapwing/timing_profiles.h>

#include <iosfwd>
#include <stdexcept>
#include <string>

namespace lapwing {

/// A file is not what it should be. what() is "FILE:LINE: REASON".
class ImportError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Finds the lines "NAME: End - 12 ms" of Instrumentation in any log, one sample each. Other lines
/// are skipped. The name begins behind the last "] ", "]: ", "| " or tab before the line's ": End",
/// else where the line begins; leading blanks are dropped. If `prefix` is not empty, it is a
/// regular expression (ECMAScript) of what stands before the name: lines that do not begin with it,
/// within 4096 bytes, are skipped. So are names longer than 64 KiB, which files cannot hold, and
/// what is beyond 16 MiB in a line. Throws std::invalid_argument if the prefix is no regular
/// expression, is longer than 1000 bytes, refers back to its groups, or needs more steps than the
/// standard library allows.
[[nodiscard]] TimingProfile importLog(std::istream& stream, const std::string& prefix = {});

/// Reads the JSON that hyperfine exports: every run's time, in seconds there, by command. It may
/// have 32 MiB. Throws ImportError.
[[nodiscard]] TimingProfile importHyperfine(std::istream& stream, const std::string& file);

/// Reads lines of name,milliseconds: RFC 4180, names in quotation marks if need be and otherwise as
/// in a file of recordings. A first line "name,milliseconds" is skipped. Throws ImportError.
[[nodiscard]] TimingProfile importCsv(std::istream& stream, const std::string& file);

}  // namespace lapwing

#endif  // LAPWING_KIT_IMPORT_H
