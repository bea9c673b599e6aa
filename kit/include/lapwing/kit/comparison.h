/// @file
/// Did an operation become slower or faster? A comparison of two sets of recordings that does not
/// report noise as a change.
///
///     for (const lapwing::Comparison& row : lapwing::compare(before, after)) {
///         if (row.verdict == lapwing::Verdict::Slower) { ... row.shift ... }
///     }
///
/// The samples of one recording resemble each other more than those of the next one, since machine
/// and caches are in the same state. So the unit of evidence is the median of one recording. The
/// shift is the Hodges-Lehmann estimate: the median of all differences between a recording after
/// and one before (J. L. Hodges and E. L. Lehmann, "Estimates of Location Based on Rank Tests",
/// Annals of Mathematical Statistics 34, 1963). Its interval is the exact interval of the
/// Mann-Whitney test at 99% (H. B. Mann and D. R. Whitney, "On a Test of Whether one of Two Random
/// Variables is Stochastically Larger than the Other", Annals of Mathematical Statistics 18, 1947).
/// Its ends are two of these differences. There is no correction for ties.
///
/// Every median here is the middle value, or the midpoint of the two middle values. The median of a
/// Summary is nearest-rank: the lower of the two.
///
/// With fewer than five recordings on a side, the verdict is provisional. The samples of each side
/// are then joined in the order of their recordings (by time, then id) and cut into contiguous
/// blocks of nearly equal size. The medians of the blocks take the place of the recordings. There
/// are at most 16 blocks, and no more than the effective number of samples, n (1 - r) / (1 + r),
/// which shrinks as neighbouring samples resemble each other more (G. V. Bayley and J. M.
/// Hammersley, "The 'Effective' Number of Independent Observations in an Autocorrelated Time
/// Series", Supplement to the Journal of the Royal Statistical Society 8, 1946). Here r is the
/// lag-1 autocorrelation of the samples' ranks, plus 1 / n, which makes up for its bias; it is kept
/// within 0 and 0.99, and is 0 if all samples are equal.

#ifndef LAPWING_KIT_COMPARISON_H
#define LAPWING_KIT_COMPARISON_H

#include <lapwing/kit/recording.h>
#include <lapwing/kit/statistics.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace lapwing {

/// What became of an operation.
enum class Verdict {
    Slower,      ///< The whole interval lies above the margin.
    Faster,      ///< The whole interval lies below minus the margin.
    Same,        ///< The whole interval lies within the margin.
    Undecided,   ///< None of these: more recordings may tell.
    TooFew,      ///< Fewer than five recordings on a side, and too few samples to stand in.
    OnlyBefore,  ///< Only the recordings before have the name.
    OnlyAfter    ///< Only the recordings after have the name.
};

/// How large a change must be to matter: the larger of both margins counts.
struct Tolerance {
    /// Covers what truncation to whole milliseconds does.
    Milliseconds atLeast{1};

    /// Percent of the median before: the median of the medians of the recordings or blocks. Four
    /// times as much for a provisional verdict.
    double percent = 5;
};

/// A range of shifts in milliseconds, both ends included.
struct Interval {
    double low = 0;   ///< The smallest shift.
    double high = 0;  ///< The largest shift.
};

/// The comparison of one operation.
///
/// Thread safety: any number of threads may read one comparison at once.
struct Comparison {
    std::string name;                   ///< Of the operation.
    Verdict verdict = Verdict::TooFew;  ///< What became of it.

    /// Whether one side has fewer than five recordings, so that samples had to stand in for them.
    /// False for one-sided names.
    bool provisional = false;

    /// @{
    /// How many recordings were compared on each side.
    std::size_t recordingsBefore = 0;
    std::size_t recordingsAfter = 0;
    /// @}

    /// @{
    /// The figures of all samples that were compared; absent for a side that does not have the
    /// name.
    std::optional<Summary> before;
    std::optional<Summary> after;
    /// @}

    /// After minus before, in milliseconds; positive is slower. Absent for TooFew and one-sided
    /// names.
    std::optional<double> shift;

    /// Where the shift lies, at 99%. Absent with the shift.
    std::optional<Interval> interval;

    /// The change in milliseconds that counts as none. Absent for one-sided names.
    std::optional<double> margin;

    /// The estimated number of recordings on each side that would decide: five for a provisional
    /// verdict and TooFew, else ceil(n (half-width / margin)^2). There, n is the smaller number of
    /// recordings, and the half-width is that of the interval. Since only 64 recordings count, more
    /// than 64 means that more recordings will not help. It goes by the width of the interval
    /// alone: a shift close to the margin needs more than this, and more than there are now.
    ///
    /// Absent if the verdict is decided and not provisional, for one-sided names, and if the margin
    /// is zero.
    std::optional<std::size_t> needed;
};

/// Compares each name that has samples on either side, in the order of the names. Only recordings
/// that have the name count, and only the newest 64 on each side.
///
/// Throws std::invalid_argument if a margin is negative or not finite. Any number of threads may
/// call it at once.
[[nodiscard]] std::vector<Comparison> compare(const std::vector<Recording>& before,
                                              const std::vector<Recording>& after,
                                              const Tolerance& tolerance = {});

}  // namespace lapwing

#endif  // LAPWING_KIT_COMPARISON_H
