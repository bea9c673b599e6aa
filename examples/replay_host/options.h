/// @file
/// The command line.

#ifndef REPLAY_HOST_OPTIONS_H
#define REPLAY_HOST_OPTIONS_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// The host's own setting: how often each operation runs in each pass.
inline constexpr const char* runsKey = "replay.runs";
inline constexpr std::int32_t defaultRuns = 3;
inline constexpr std::int32_t maxRuns = 100;

struct Options {
    /// The folder as it was typed. Empty only with `help`.
    std::filesystem::path folder;

    /// The values given with `--set`, by key. The last value of a key counts.
    std::map<std::string, std::string, std::less<>> settings;

    /// Whether `--help` is among the arguments. If so, the others are ignored.
    bool help = false;
};

/// Parses the arguments that follow the program's name. They are paths because a path holds any
/// argument unchanged on every system. Throws UsageError, also for a setting's key that the host
/// does not know: nothing would ever read it.
[[nodiscard]] Options parseOptions(const std::vector<std::filesystem::path>& arguments);

/// Returns an argument or a path as it is printed: UTF-8 on Windows, the bytes as typed elsewhere.
[[nodiscard]] std::string toText(const std::filesystem::path& argument);

/// Returns the text that `--help` prints.
[[nodiscard]] std::string usage(const std::string& program);

#endif  // REPLAY_HOST_OPTIONS_H
