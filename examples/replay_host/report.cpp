#include "report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iomanip>
#include <ios>
#include <sstream>

namespace {

constexpr std::size_t columnCount = 7;
using Row = std::array<std::string, columnCount>;
using Widths = std::array<std::size_t, columnCount>;

const Row headings{"operation", "runs", "recorded average", "replayed average", "difference",
                   "overruns",  "notes"};

constexpr std::size_t firstNumber = 1;
constexpr std::size_t lastNumber = 4;

std::string formatTime(Milliseconds time) {
    return std::to_string(time.count()) + " ms";
}

std::string formatAverage(std::optional<Milliseconds> average) {
    return average ? formatTime(*average) : "-";
}

std::string formatDifference(std::optional<Milliseconds> recorded,
                             std::optional<Milliseconds> replayed) {
    if (!recorded || !replayed) {
        return "-";
    }
    const Milliseconds difference = *replayed - *recorded;
    const std::string sign = difference > Milliseconds::zero() ? "+" : "";
    return sign + formatTime(difference);
}

std::string formatOverruns(const TimingProfile& errors, const std::string& name) {
    const auto found = errors.samples.find(name);
    if (found == errors.samples.end()) {
        return "0";
    }
    std::string amounts;
    for (const Milliseconds amount : found->second) {
        amounts.append(amounts.empty() ? "" : ", ").append(formatTime(amount));
    }
    return std::to_string(found->second.size()) + " (" + amounts + ")";
}

std::string formatNote(const TimingProfile& errors, const std::string& name) {
    const auto found = errors.notes.find(name);
    return found == errors.notes.end() ? "-" : found->second;
}

Row makeRow(const std::string& name, const TimingProfile& recorded, const Replay& replay) {
    const auto recordedAverage = averageOf(recorded, name);
    const auto replayedAverage = averageOf(replay.durations, name);
    return {name,
            std::to_string(replay.durations.samples.at(name).size()),
            formatAverage(recordedAverage),
            formatAverage(replayedAverage),
            formatDifference(recordedAverage, replayedAverage),
            formatOverruns(replay.errors, name),
            formatNote(replay.errors, name)};
}

Widths widestCells(const std::vector<Row>& rows) {
    Widths widths{};
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < columnCount; ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    return widths;
}

void writeRow(std::ostream& out, const Row& row, const Widths& widths) {
    for (std::size_t column = 0; column + 1 < columnCount; ++column) {
        const bool isNumber = column >= firstNumber && column <= lastNumber;
        out << (isNumber ? std::right : std::left) << std::setw(static_cast<int>(widths[column]))
            << row[column] << "  ";
    }
    out << row.back() << '\n';
}

void writeFrequentWords(std::ostream& out, const WordRanking& ranking) {
    constexpr std::size_t shown = 5;
    const char* separator = ", most frequent: ";
    for (std::size_t rank = 0; rank < std::min(shown, ranking.size()); ++rank) {
        out << separator << ranking[rank].first << " (" << ranking[rank].second << ")";
        separator = ", ";
    }
}

}  // namespace

std::string formatStatistics(const FileTree& tree, const FileContents& contents,
                             const WordRanking& ranking) {
    std::size_t words = 0;
    for (const auto& [word, count] : ranking) {
        words += count;
    }
    std::ostringstream out;
    out << tree.files.size() << " files found, " << contents.texts.size() << " read ("
        << contents.bytes << " bytes), " << tree.skipped + contents.skipped
        << " skipped (links, special or unreadable)\n";
    if (tree.entries == maxEntries) {
        out << "Walk stopped at the limit of " << maxEntries << " entries\n";
    }
    if (contents.bytes == maxBytes) {
        out << "Reading stopped at the limit of " << maxBytes / bytesPerMebibyte << " MiB\n";
    }
    out << words << " words, " << ranking.size() << " different";
    writeFrequentWords(out, ranking);
    out << '\n';
    return out.str();
}

std::string formatTable(const std::vector<std::string>& names, const TimingProfile& recorded,
                        const Replay& replay) {
    std::vector<Row> rows{headings};
    for (const std::string& name : names) {
        rows.push_back(makeRow(name, recorded, replay));
    }
    const Widths widths = widestCells(rows);
    std::ostringstream out;
    for (const Row& row : rows) {
        writeRow(out, row, widths);
    }
    return out.str();
}

std::string formatExplanation(const std::string& slowName, const std::string& unrecordedName) {
    std::ostringstream out;
    out << "Recorded: the real operation. Replayed: a stand-in that does nothing and is padded\n"
           "to the recorded average, so that it takes as long.\n"
           "Averages are whole milliseconds. An average of 0 ms counts as no sample data, because\n"
           "there is nothing to pad to. A larger folder takes longer.\n"
           "\""
        << unrecordedName
        << "\" is never recorded, on purpose, to show an operation without data.\n"
        << "The last replay of \"" << slowName << "\" is " << formatTime(plannedOverrun)
        << " too slow, on purpose, to show an overrun.\n"
           "Without data there is no overrun, only the delay.\n";
    return out.str();
}
