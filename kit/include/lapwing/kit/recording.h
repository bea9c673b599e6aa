/// @file
/// Recordings: a timing profile with an id, a time and labels, so that it can be kept and merged.
///
///     const auto before = lapwing::makeRecording(collector.extractProfile(), {{"build", "41"}});
///     ...
///     emulator.setProfile(lapwing::flattened(lapwing::merged({before}, {after})));

#ifndef LAPWING_KIT_RECORDING_H
#define LAPWING_KIT_RECORDING_H

#include <lapwing/timing_profiles.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace lapwing {

/// A profile that was recorded at one time under one set of conditions: a plain value.
///
/// Thread safety: any number of threads may read one recording at once.
struct Recording {
    /// Identifies the recording: merging goes by it. UTF-8 text, not empty, without control
    /// characters.
    std::string id;

    /// When it was made. Stored as whole seconds, UTC.
    std::chrono::system_clock::time_point recorded;

    /// What the host likes to say about it, such as machine=bench-3.
    std::map<std::string, std::string> labels;

    /// What was recorded.
    TimingProfile profile;
};

/// Returns a recording of `profile` with a fresh random id (32 lowercase hexadecimal digits) and
/// the time of the call, truncated to whole seconds. Throws std::system_error if the system has no
/// random numbers. Any number of threads may call it at once.
[[nodiscard]] Recording makeRecording(TimingProfile profile,
                                      std::map<std::string, std::string> labels = {});

/// Returns the recordings of both, each id once, ordered by time and then by id. So merging twice
/// changes nothing. Throws std::invalid_argument, which names the id, if two recordings have the
/// same id but different contents. Times are compared by whole seconds, and names without samples
/// do not count.
[[nodiscard]] std::vector<Recording> merged(std::vector<Recording> first,
                                            const std::vector<Recording>& second);

/// Returns one profile of all recordings, for an emulator to load. Samples of the same name are
/// appended in the order given; the first note of each name is kept.
[[nodiscard]] TimingProfile flattened(const std::vector<Recording>& recordings);

}  // namespace lapwing

#endif  // LAPWING_KIT_RECORDING_H
