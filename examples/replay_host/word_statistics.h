/// @file
/// The real operations: what the host times. They know nothing of timing.

#ifndef REPLAY_HOST_WORD_STATISTICS_H
#define REPLAY_HOST_WORD_STATISTICS_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

inline constexpr std::uintmax_t bytesPerMebibyte = std::uintmax_t{1} << 20U;

/// How much is read and looked at, so that any tree at all takes little memory and time.
inline constexpr std::uintmax_t maxBytes = 32 * bytesPerMebibyte;
inline constexpr std::size_t maxEntries = 100'000;

/// The regular files below a folder.
struct FileTree {
    struct File {
        std::filesystem::path path;
        std::uintmax_t size;
    };

    std::vector<File> files;

    /// Everything looked at: files, folders and what was skipped. The walk ends at maxEntries.
    std::size_t entries = 0;

    /// Links, which are not followed, special files, and folders that cannot be listed.
    std::size_t skipped = 0;
};

/// The bytes of the files that could be read, one element for each.
struct FileContents {
    std::vector<std::string> texts;

    /// All bytes together. Reading ends at maxBytes, in the middle of a file if need be.
    std::uintmax_t bytes = 0;

    /// Files that could not be opened or read.
    std::size_t skipped = 0;
};

/// How often each word occurs. A word is a run of ASCII letters, taken as it is written.
using WordCounts = std::unordered_map<std::string, std::size_t>;
using WordRanking = std::vector<std::pair<std::string, std::size_t>>;

[[nodiscard]] FileTree walkTree(const std::filesystem::path& folder);
[[nodiscard]] FileContents readBytes(const FileTree& tree);
[[nodiscard]] WordCounts countWords(const FileContents& contents);

/// Returns the words, most frequent first, those of equal frequency by their bytes.
[[nodiscard]] WordRanking sortByFrequency(const WordCounts& counts);

#endif  // REPLAY_HOST_WORD_STATISTICS_H
