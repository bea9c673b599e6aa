/// @file
/// The command line.

#ifndef REPLAY_HOST_OPTIONS_H
#define REPLAY_HOST_OPTIONS_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// The host's own setting: how often each operation runs in each pass.
inline constexpr const char* runsKey = "replay.runs";
inline constexpr std::int32_t defaultRuns = 3;
inline constexpr std::int32_t maxRuns = 100;

struct Options {
    /// The folder as it was typed, which is how messages name it. Empty only with `help`.
    std::string folder;

    /// What `--set` asked for, by key. The last value of a key counts.
    std::map<std::string, std::string, std::less<>> settings;

    /// Whether `--help` was among the arguments, which are then not checked any further.
    bool help = false;
};

/// Understands the arguments, without the program's name. Throws UsageError, also for a key that
/// the host does not know: nothing would ever read it, so it can only be a slip.
[[nodiscard]] Options parseOptions(const std::vector<std::string>& arguments);

/// Returns the text that `--help` prints.
[[nodiscard]] std::string usage();

#endif  // REPLAY_HOST_OPTIONS_H
