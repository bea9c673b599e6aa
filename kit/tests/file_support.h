// Folders, files and other processes for the tests.

#ifndef LAPWING_KIT_TESTS_FILE_SUPPORT_H
#define LAPWING_KIT_TESTS_FILE_SUPPORT_H

#include <filesystem>
#include <future>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

std::string contentsOf(const std::filesystem::path& file);
void fill(const std::filesystem::path& file, const std::string& contents);

// What a replacement writes to until it is committed.
std::filesystem::path temporaryOf(const std::filesystem::path& file);

// A folder that everybody may use, until the end of the test.
struct TemporaryFolder {
    TemporaryFolder();
    ~TemporaryFolder();

    [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
        return path / name;
    }

    // The names of what is in it, sorted.
    [[nodiscard]] Lines entries() const;

    const std::filesystem::path path;
};

// Runs the program of other_process.cpp; gives its exit code.
std::future<int> startProcess(const char* command, const std::filesystem::path& file, int number);

#endif  // LAPWING_KIT_TESTS_FILE_SUPPORT_H
