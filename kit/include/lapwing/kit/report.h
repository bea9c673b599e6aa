/// @file
/// Pages to look at: recordings, a comparison and a replay, each as one HTML page.
///
/// A page stands alone: it has no script and loads nothing, its drawings are inline SVG, it follows
/// the reader's preference for light or dark, and can be read on a phone and on paper. What matters
/// is on top. Names and labels may hold any bytes.
///
/// Any number of threads may call these functions at once.

#ifndef LAPWING_KIT_REPORT_H
#define LAPWING_KIT_REPORT_H

#include <lapwing/kit/recording.h>
#include <lapwing/kit/replay.h>

#include <string>
#include <vector>

namespace lapwing {

/// Returns a page about recordings: a summary table, and for each operation its distribution (a
/// histogram with median, p90 and p99 marked) and its course (the median of each recording with the
/// band from p10 to p90, over time), with machines and other labels told apart.
[[nodiscard]] std::string recordingsPage(const std::vector<Recording>& recordings,
                                         const std::string& title);

/// Returns a page that compares two sets of recordings: for each operation both distributions on
/// one axis, the shift with its interval and margin, and the verdict, in words and in colour.
[[nodiscard]] std::string comparisonPage(const std::vector<Recording>& before,
                                         const std::vector<Recording>& after,
                                         const std::string& title);

/// Returns a page about a replay: for each operation what was recorded, what the work took, what
/// was padded, and how late the calls ended (a cumulative curve), with overruns marked.
[[nodiscard]] std::string replayPage(const ReplayReport& report, const std::string& title);

}  // namespace lapwing

#endif  // LAPWING_KIT_REPORT_H
