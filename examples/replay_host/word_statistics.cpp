#include "word_statistics.h"

#include <algorithm>
#include <fstream>
#include <ios>
#include <optional>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#endif

namespace fs = std::filesystem;

namespace {

// Links are of type symlink, whatever they lead to.
fs::file_type typeOf(const fs::directory_entry& entry) {
#ifdef _WIN32
    // MinGW's <filesystem> knows neither junctions nor symbolic links. Both are reparse points.
    // Where there are no attributes to be had, all bits are set, and the entry is skipped too.
    if ((GetFileAttributesW(entry.path().c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return fs::file_type::symlink;
    }
#endif
    std::error_code error;
    return entry.symlink_status(error).type();
}

void addFile(const fs::directory_entry& entry, FileTree& tree) {
    std::error_code error;
    const std::uintmax_t size = entry.file_size(error);
    if (error) {
        ++tree.skipped;
    } else {
        tree.files.push_back({entry.path(), size});
    }
}

void addEntry(const fs::directory_entry& entry, FileTree& tree, std::vector<fs::path>& folders) {
    ++tree.entries;
    switch (typeOf(entry)) {
        case fs::file_type::regular:
            addFile(entry, tree);
            break;
        case fs::file_type::directory:
            folders.push_back(entry.path());
            break;
        default:
            ++tree.skipped;
    }
}

void listFolder(const fs::path& folder, FileTree& tree, std::vector<fs::path>& folders) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    while (!error && entry != fs::directory_iterator() && tree.entries < maxEntries) {
        addEntry(*entry, tree, folders);
        entry.increment(error);
    }
    if (error) {
        ++tree.skipped;
    }
}

std::optional<std::string> readFile(const fs::path& path, std::uintmax_t size) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    file.read(text.data(), static_cast<std::streamsize>(size));
    if (file.bad()) {
        return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

void addWords(const std::string& text, WordCounts& counts) {
    auto begin = std::find_if(text.begin(), text.end(), isLetter);
    while (begin != text.end()) {
        const auto end = std::find_if_not(begin, text.end(), isLetter);
        ++counts[std::string(begin, end)];
        begin = std::find_if(end, text.end(), isLetter);
    }
}

}  // namespace

FileTree walkTree(const fs::path& folder) {
    FileTree tree;
    std::vector<fs::path> folders{folder};
    while (!folders.empty() && tree.entries < maxEntries) {
        const fs::path next = std::move(folders.back());
        folders.pop_back();
        listFolder(next, tree, folders);
    }
    return tree;
}

FileContents readBytes(const FileTree& tree) {
    FileContents contents;
    for (const FileTree::File& file : tree.files) {
        if (contents.bytes == maxBytes) {
            break;
        }
        if (auto text = readFile(file.path, std::min(file.size, maxBytes - contents.bytes))) {
            contents.bytes += text->size();
            contents.texts.push_back(std::move(*text));
        } else {
            ++contents.skipped;
        }
    }
    return contents;
}

WordCounts countWords(const FileContents& contents) {
    WordCounts counts;
    for (const std::string& text : contents.texts) {
        addWords(text, counts);
    }
    return counts;
}

WordRanking sortByFrequency(const WordCounts& counts) {
    WordRanking ranking(counts.begin(), counts.end());
    std::sort(ranking.begin(), ranking.end(), [](const auto& left, const auto& right) {
        return left.second != right.second ? left.second > right.second : left.first < right.first;
    });
    return ranking;
}
