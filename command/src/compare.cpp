#include "commands.h"
#include "operations.h"
#include "places.h"
#include "values.h"

#include <lapwing/kit/comparison.h>
#include <lapwing/kit/file_text.h>
#include <lapwing/kit/shaping.h>

#include "text_table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>

namespace command {
namespace {

using lapwing::Comparison;
using lapwing::Recording;
using lapwing::Verdict;
using Comparisons = std::vector<Comparison>;

constexpr std::array<const char*, 7> verdictNames{
    "slower", "faster", "same", "undecided", "too-few", "only-before", "only-after"};

std::string textOf(Verdict verdict) {
    return verdictNames[static_cast<std::size_t>(verdict)];
}

bool hasVerdict(const Comparisons& rows, Verdict verdict) {
    return std::any_of(rows.begin(), rows.end(),
                       [=](const Comparison& row) { return row.verdict == verdict; });
}

struct Sides {
    Recordings before;
    Recordings after;
};

// Two operations of one place become one with a name of its own.
Recordings onlyNamed(const Recordings& recordings, const Renames& names,
                     std::string Renames::value_type::*side) {
    Recordings chosen;
    for (const Recording& recording : recordings) {
        Recording copy{recording.id, recording.recorded, recording.labels, {}};
        for (const auto& pair : names) {
            const auto samples = recording.profile.samples.find(pair.*side);
            if (samples != recording.profile.samples.end()) {
                copy.profile.samples[pair.first + '=' + pair.second] = samples->second;
            }
        }
        chosen.push_back(std::move(copy));
    }
    return chosen;
}

void requireSamples(Recordings recordings, const Renames& names) {
    for (Recording& recording : recordings) {
        recording.profile.notes.clear();
    }
    const TimingProfile known = namesOf(recordings);
    for (const auto& pair : names) {
        inOption("--names", [&] {
            static_cast<void>(lapwing::only(known, {pair.first, pair.second}));
        });
    }
}

Sides loadSides(const CompareOptions& options) {
    const Recordings before = load(Places{options.before});
    if (options.names.empty()) {
        return {before, load(Places{options.after})};
    }
    requireSamples(before, options.names);
    return {onlyNamed(before, options.names, &Renames::value_type::first),
            onlyNamed(before, options.names, &Renames::value_type::second)};
}

lapwing::Tolerance toleranceOf(const CompareOptions& options) {
    lapwing::Tolerance tolerance;
    tolerance.percent = options.tolerance.value_or(tolerance.percent);
    tolerance.atLeast = Milliseconds(options.atLeast.value_or(tolerance.atLeast.count()));
    inOption("--tolerance", [&] { static_cast<void>(lapwing::compare({}, {}, tolerance)); });
    return tolerance;
}

std::string formatNumber(double number) {
    const bool isWhole = number == std::round(number);
    return lapwing::formatTime(std::chrono::duration<double, std::milli>(number), isWhole ? 0 : 1);
}

std::string formatShift(double shift) {
    return (shift > 0 ? "+" : "") + formatNumber(shift);
}

std::string formatInterval(const std::optional<lapwing::Interval>& interval) {
    return interval ? formatShift(interval->low) + " to " + formatShift(interval->high) : "";
}

std::string formatMedian(const std::optional<lapwing::Summary>& summary) {
    return summary ? lapwing::formatTime(summary->median, 0) : "";
}

std::string howToDecide(const Comparison& row) {
    constexpr std::size_t mostThatCount = 64;
    if (!row.needed || *row.needed > mostThatCount) {
        return "more recordings would not decide it";
    }
    if (*row.needed <= std::min(row.recordingsBefore, row.recordingsAfter)) {
        return "more recordings may decide it";
    }
    return counted(*row.needed, "recording") + " on each side would decide it";
}

std::string explain(const Comparison& row) {
    if (row.verdict == Verdict::TooFew) {
        return "too few samples; " + howToDecide(row);
    }
    if (row.verdict == Verdict::Undecided) {
        const double missed = std::max(std::abs(row.interval->low), std::abs(row.interval->high));
        return "no change found; one of up to " + formatNumber(std::ceil(missed)) +
               " could be there; " + howToDecide(row);
    }
    return row.provisional ? "provisional; " + howToDecide(row) : "";
}

// What the reader came for stands first.
void sortByVerdict(Comparisons& rows) {
    constexpr std::array<int, 7> ranks{0, 3, 4, 1, 2, 5, 6};
    const auto rankOf = [&](const Comparison& row) {
        return ranks[static_cast<std::size_t>(row.verdict)];
    };
    std::stable_sort(rows.begin(), rows.end(),
                     [&](const Comparison& left, const Comparison& right) {
                         return rankOf(left) < rankOf(right);
                     });
}

void printTable(Comparisons rows) {
    using lapwing::Align;
    sortByVerdict(rows);
    std::vector<lapwing::Row> cells;
    for (const Comparison& row : rows) {
        cells.push_back({lapwing::onOneLine(row.name), textOf(row.verdict),
                         formatMedian(row.before), formatMedian(row.after),
                         row.shift ? formatShift(*row.shift) : "", formatInterval(row.interval),
                         row.margin ? formatNumber(*row.margin) : "", explain(row)});
    }
    print(lapwing::formatTable({{"operation", Align::Left},
                                {"verdict", Align::Left},
                                {"median before"},
                                {"after"},
                                {"shift"},
                                {"interval at 99%"},
                                {"margin"},
                                {"", Align::Left}},
                               cells));
}

template <class V>
Json orNull(const std::optional<V>& value) {
    return value ? Json(*value) : Json();
}

Json rowOf(const Comparison& row) {
    const auto figures = [&](std::size_t recordings, const std::optional<lapwing::Summary>& side) {
        return side ? toJson(row.name, recordings, *side) : Json();
    };
    const Json interval =
        row.interval ? Json::array({row.interval->low, row.interval->high}) : Json();
    return {{"name", lapwing::toFileText(row.name)},
            {"verdict", textOf(row.verdict)},
            {"provisional", row.provisional},
            {"shift_ms", orNull(row.shift)},
            {"interval_ms", interval},
            {"margin_ms", orNull(row.margin)},
            {"needed", orNull(row.needed)},
            {"before", figures(row.recordingsBefore, row.before)},
            {"after", figures(row.recordingsAfter, row.after)}};
}

Verdict overallVerdict(const Comparisons& rows) {
    for (const Verdict verdict :
         {Verdict::Slower, Verdict::Undecided, Verdict::TooFew, Verdict::Faster, Verdict::Same}) {
        if (hasVerdict(rows, verdict)) {
            return verdict;
        }
    }
    return Verdict::Undecided;
}

void printJson(const Comparisons& rows) {
    Json operations = Json::array();
    for (const Comparison& row : rows) {
        operations.push_back(rowOf(row));
    }
    print(toText({{"verdict", textOf(overallVerdict(rows))}, {"operations", operations}}));
}

int exitCodeOf(const Comparisons& rows, bool isStrict) {
    if (hasVerdict(rows, Verdict::Slower)) {
        return 1;
    }
    const bool isUnsure = hasVerdict(rows, Verdict::TooFew) ||
                          std::any_of(rows.begin(), rows.end(),
                                      [](const Comparison& row) { return row.provisional; });
    return isStrict && isUnsure ? 3 : 0;
}

bool isCompared(const Comparison& row) {
    return row.verdict != Verdict::OnlyBefore && row.verdict != Verdict::OnlyAfter;
}

}  // namespace

int compare(const CompareOptions& options) {
    const lapwing::Tolerance tolerance = toleranceOf(options);
    const Sides sides = loadSides(options);
    const Comparisons rows = lapwing::compare(sides.before, sides.after, tolerance);
    if (options.format == Format::Json) {
        printJson(rows);
    } else {
        printTable(rows);
    }
    if (std::none_of(rows.begin(), rows.end(), isCompared)) {
        std::cerr << "lapwing: nothing was compared: no operation is on both sides\n";
    }
    return exitCodeOf(rows, options.strict);
}

}  // namespace command
