/// @file
/// The real operations that the host times. They do not know that they are timed.

#ifndef REPLAY_HOST_WORD_STATISTICS_H
#define REPLAY_HOST_WORD_STATISTICS_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// What is below a folder. Each step fills its part.
struct Statistics {
    std::vector<std::filesystem::path> files;  ///< The regular ones, at most 100,000.
    std::vector<std::string> texts;            ///< The bytes of each file that could be read.
    std::uintmax_t bytes = 0;                  ///< Of all texts, at most 32 MiB.
    std::map<std::string, int> words;          ///< How often each sequence of letters occurs.
};

void walkTree(const std::filesystem::path& folder, Statistics& found);  ///< Follows no links.
void readBytes(Statistics& found);
void countWords(Statistics& found);

#endif  // REPLAY_HOST_WORD_STATISTICS_H
