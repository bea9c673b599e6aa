#include "file_support.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

namespace fs = std::filesystem;

std::string contentsOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void fill(const fs::path& file, const std::string& contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

fs::path temporaryOf(const fs::path& file) {
    return file.parent_path() / ("." + file.filename().string() + ".lapwing-new");
}

TemporaryFolder::TemporaryFolder()
    : path(fs::temp_directory_path() / ("lapwing-" + std::to_string(std::random_device()()))) {
    fs::create_directory(path);
    fs::permissions(path, fs::perms::all);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

Lines TemporaryFolder::entries() const {
    Lines names;
    std::transform(fs::directory_iterator(path), {}, std::back_inserter(names),
                   [](const auto& entry) { return entry.path().filename().string(); });
    std::sort(names.begin(), names.end());
    return names;
}

std::future<int> startProcess(const char* command, const fs::path& file, int number) {
    const fs::path program = fs::path(LAPWING_KIT_TESTS_OTHER_PROCESS).make_preferred();
    std::string line =
        program.string() + ' ' + command + " \"" + file.string() + "\" " + std::to_string(number);
    return std::async(std::launch::async, [line] { return std::system(line.c_str()); });
}
