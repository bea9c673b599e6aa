/// @file
/// Choosing some of many recordings.

#ifndef LAPWING_KIT_SELECTION_H
#define LAPWING_KIT_SELECTION_H

#include <lapwing/kit/recording.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lapwing {

/// What is asked for; by default everything.
///
/// Thread safety: any number of threads may read one selection at once.
struct Selection {
    std::map<std::string, std::string> labels;  ///< Recordings that have all of these labels.
    std::set<std::string> names;                ///< Only these operations; empty: all of them.
    std::optional<std::chrono::system_clock::time_point> since;  ///< Recorded then or later.
    std::optional<std::chrono::system_clock::time_point> until;  ///< Recorded before that.
    std::optional<std::size_t> last;  ///< Only so many, the latest, after all the rest.
};

/// Returns the selection that `query` asks for: pairs of key=value, separated by "&", such as
///
///     label=build%3D42&name=Scan&since=2026-11-01&until=2026-12-01T12:00:00Z&last=10
///
/// Keys and values are percent-encoded bytes. `label` (its value is KEY=VALUE) and `name` may be
/// there several times; a name that begins with "hex:" is read as in a file. Times are UTC, a day
/// or a second. An empty query asks for everything. Throws std::invalid_argument, which names the
/// pair, for anything else. Any number of threads may call it at once.
[[nodiscard]] Selection parseSelection(std::string_view query);

/// Returns those of `recordings` that are selected, in their order. If names are asked for, others
/// are taken out, and recordings without any of them are left out; ids stay as they are. Of
/// recordings with the same time, those that come later in the order of merged() are the latest.
/// Any number of threads may call it at once.
[[nodiscard]] std::vector<Recording> selected(std::vector<Recording> recordings,
                                              const Selection& selection);

}  // namespace lapwing

#endif  // LAPWING_KIT_SELECTION_H
