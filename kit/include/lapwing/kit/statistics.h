/// @file
/// What the samples of one operation amount to.

#ifndef LAPWING_KIT_STATISTICS_H
#define LAPWING_KIT_STATISTICS_H

#include <lapwing/timing_profiles.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace lapwing {

/// The usual figures of a set of samples. The median and the percentiles are nearest-rank: values
/// that did occur.
///
/// Thread safety: any number of threads may read one summary at once.
struct Summary {
    std::size_t count = 0;         ///< How many samples there are.
    Milliseconds average{};        ///< Truncated: exactly what TimingProfileEmulator pads to.
    Milliseconds minimum{};        ///< The shortest sample.
    Milliseconds median{};         ///< The 50th percentile.
    Milliseconds p90{};            ///< The 90th percentile.
    Milliseconds p99{};            ///< The 99th percentile.
    Milliseconds maximum{};        ///< The longest sample.
    double mean = 0;               ///< In milliseconds.
    double standardDeviation = 0;  ///< Of the sample (n - 1), in milliseconds; 0 for one sample.
};

/// Returns the figures of `samples`, or nothing if there are none. Any number of threads may call
/// it at once.
[[nodiscard]] std::optional<Summary> summarize(const std::vector<Milliseconds>& samples);

/// Returns the sample of rank ceil(percent * n / 100), at least 1, in ascending order. Throws
/// std::invalid_argument if there are no samples or `percent` is not within 0 to 100. Any number of
/// threads may call it at once.
[[nodiscard]] Milliseconds percentile(const std::vector<Milliseconds>& samples, double percent);

}  // namespace lapwing

#endif  // LAPWING_KIT_STATISTICS_H
