/// @file
/// The two passes: operations recorded, then replayed by stand-ins.

#ifndef REPLAY_HOST_REPLAY_H
#define REPLAY_HOST_REPLAY_H

#include <lapwing/timing_profiles.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Something that the host does and times.
struct Operation {
    std::string name;
    InstrumentedFunction work;
};

/// What became of a replay.
struct Replay {
    /// How long each padded run lasted as a whole.
    TimingProfile durations;

    /// Where a run could not be made to last as long as recorded.
    TimingProfile errors;
};

/// Runs each operation `runs` times, one operation after the other, and returns how long it took.
[[nodiscard]] TimingProfile recordPass(const std::vector<Operation>& operations, std::int32_t runs);

/// Runs a stand-in for each name `runs` times. It does nothing and is padded to its recorded
/// average, save for the last run of `slowName`, which takes longer than that.
[[nodiscard]] Replay replayPass(const TimingProfile& recorded,
                                const std::vector<std::string>& names, const std::string& slowName,
                                std::int32_t runs);

/// Returns the average of the samples of `name` in whole milliseconds, if it has any.
[[nodiscard]] std::optional<Milliseconds> averageOf(const TimingProfile& profile,
                                                    const std::string& name);

#endif  // REPLAY_HOST_REPLAY_H
