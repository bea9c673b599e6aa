#include "report.h"

#include <algorithm>
#include <cstddef>
#include <sstream>

namespace {

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

std::string formatExplanation(const std::string& slowName, const std::string& unrecordedName) {
    std::ostringstream out;
    out << "Recorded: the real operation. Replayed: a stand-in that does nothing and is padded\n"
           "to the recorded average, so that it takes as long.\n"
           "Samples are whole milliseconds, truncated. A larger folder takes longer.\n"
           "\""
        << unrecordedName
        << "\" is never recorded, on purpose, to show an operation without data.\n"
        << "The last replay of \"" << slowName << "\" is " << plannedOverrun.count()
        << " ms too slow, on purpose, to show an overrun.\n";
    return out.str();
}
