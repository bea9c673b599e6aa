/// @file
/// The command line.

#ifndef REPLAY_HOST_OPTIONS_H
#define REPLAY_HOST_OPTIONS_H

#include <lapwing/setting_types.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

/// The user is to change the command line or the input.
using UsageError = std::invalid_argument;

/// The host's own setting: how often each operation runs in each pass.
inline const DeveloperConfig::Integer runs{"replay.runs", 3};

/// What was asked for. Paths are empty unless they were given.
struct Options {
    bool help = false;
    std::filesystem::path folder;
    std::filesystem::path record;
    std::filesystem::path replay;
    std::filesystem::path trace;
    std::vector<std::string> settings;  ///< Each key=value.
};

/// Parses the arguments that follow the program's name. They are paths because a path holds any
/// argument unchanged on every system. Throws UsageError.
[[nodiscard]] Options parseOptions(const std::vector<std::filesystem::path>& arguments);

/// Returns an argument or a path as it is printed: UTF-8 on Windows, the bytes as typed elsewhere.
[[nodiscard]] std::string toText(const std::filesystem::path& argument);

/// Returns the text that `--help` prints.
[[nodiscard]] std::string usage(const std::string& program);

#endif  // REPLAY_HOST_OPTIONS_H
