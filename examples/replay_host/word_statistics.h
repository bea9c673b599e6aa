/// @file
/// The real operations that the host times. They do not know that they are timed.

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

/// Limits, so that even a huge tree takes little memory and time.
inline constexpr std::uintmax_t maxBytes = 32 * bytesPerMebibyte;
inline constexpr std::size_t maxEntries = 100'000;

/// The regular files below a folder.
struct FileTree {
    struct File {
        std::filesystem::path path;
        std::uintmax_t size;
    };

    std::vector<File> files;

    /// All files, folders and skipped entries. The walk stops at maxEntries.
    std::size_t entries = 0;

    /// Links, which are not followed, special files and unreadable folders.
    std::size_t skipped = 0;
};

struct FileContents {
    /// The bytes of each file that could be read.
    std::vector<std::string> texts;

    /// The number of bytes in all texts. Reading stops at maxBytes, even in the middle of a file.
    std::uintmax_t bytes = 0;

    /// Files that could not be opened or read.
    std::size_t skipped = 0;
};

/// How often each word occurs. A word is a sequence of ASCII letters; case matters.
using WordCounts = std::unordered_map<std::string, std::size_t>;
using WordRanking = std::vector<std::pair<std::string, std::size_t>>;

[[nodiscard]] FileTree walkTree(const std::filesystem::path& folder);
[[nodiscard]] FileContents readBytes(const FileTree& tree);
[[nodiscard]] WordCounts countWords(const FileContents& contents);

/// Returns the words, most frequent first. Words of equal frequency are in alphabetical order.
[[nodiscard]] WordRanking sortByFrequency(const WordCounts& counts);

#endif  // REPLAY_HOST_WORD_STATISTICS_H
