/// @file
/// The two passes: operations are recorded, then replayed by stand-ins.

#ifndef REPLAY_HOST_REPLAY_H
#define REPLAY_HOST_REPLAY_H

#include <lapwing/kit/replay.h>
#include <lapwing/timing_profiles.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct Operation {
    std::string name;
    InstrumentedFunction work;
};

/// How much too slow the last replay of one operation is made, so that an overrun can be seen.
inline constexpr Milliseconds plannedOverrun{20};

/// Runs each operation `runs` times, one operation after the other, and returns how long it took.
[[nodiscard]] TimingProfile recordPass(const std::vector<Operation>& operations, std::int32_t runs);

/// Replays each name `runs` times: a stand-in does nothing and is padded to the recorded average.
/// The last replay of `slowName` takes `plannedOverrun` longer than that average.
[[nodiscard]] lapwing::ReplayReport replayPass(const TimingProfile& recorded,
                                               const std::vector<std::string>& names,
                                               const std::string& slowName, std::int32_t runs);

/// Returns the average of the samples of `name`, truncated to whole milliseconds, if there are any.
[[nodiscard]] std::optional<Milliseconds> averageOf(const TimingProfile& profile,
                                                    const std::string& name);

#endif  // REPLAY_HOST_REPLAY_H
