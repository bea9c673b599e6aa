#include "word_statistics.h"

#include <algorithm>
#include <fstream>

#ifdef _WIN32
#include <windows.h>
#endif

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t maxBytes = std::uintmax_t{32} << 20U;
constexpr std::size_t maxFiles = 100'000;

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

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

}  // namespace

void walkTree(const fs::path& folder, Statistics& found) {
    found = {};
    std::vector<fs::path> folders{folder};
    while (!folders.empty()) {
        std::error_code error;
        fs::directory_iterator entry(folders.back(), error);
        folders.pop_back();
        for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
            const fs::file_type type = typeOf(*entry);
            if (type == fs::file_type::directory) {
                folders.push_back(entry->path());
            } else if (type == fs::file_type::regular && found.files.size() < maxFiles) {
                found.files.push_back(entry->path());
            }
        }
    }
}

void readBytes(Statistics& found) {
    found.texts.clear();
    found.bytes = 0;
    for (const fs::path& path : found.files) {
        std::error_code error;
        const std::uintmax_t size = std::min(fs::file_size(path, error), maxBytes - found.bytes);
        std::ifstream file(path, std::ios::binary);
        std::string text(error ? 0 : static_cast<std::size_t>(size), '\0');
        if (!error && file.read(text.data(), static_cast<std::streamsize>(text.size()))) {
            found.bytes += size;
            found.texts.push_back(std::move(text));
        }
    }
}

void countWords(Statistics& found) {
    found.words.clear();
    for (const std::string& text : found.texts) {
        auto begin = std::find_if(text.begin(), text.end(), isLetter);
        while (begin != text.end()) {
            const auto end = std::find_if_not(begin, text.end(), isLetter);
            ++found.words[std::string(begin, end)];
            begin = std::find_if(end, text.end(), isLetter);
        }
    }
}
