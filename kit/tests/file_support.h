// Folders, files and other processes for the tests.

#ifndef LAPWING_KIT_TESTS_FILE_SUPPORT_H
#define LAPWING_KIT_TESTS_FILE_SUPPORT_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

std::string contentsOf(const std::filesystem::path& file);
void fill(const std::filesystem::path& file, const std::string& contents);

// What a replacement writes to until it is committed.
std::filesystem::path temporaryOf(const std::filesystem::path& file);

void waitFor(const std::function<bool()>& condition);

// A folder that everybody may use, until the end of the test.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return folder; }
    [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
        return folder / name;
    }

    // The names of what is in it, sorted.
    [[nodiscard]] Lines entries() const;

private:
    std::filesystem::path folder;
};

// A run of the program of other_process.cpp, killed at the end of its scope.
class OtherProcess {
public:
    explicit OtherProcess(const Lines& arguments);
    OtherProcess(OtherProcess&& other) noexcept;
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess() { kill(); }

    void kill();
    int exitCode();

private:
    std::intptr_t process = -1;
};

#endif  // LAPWING_KIT_TESTS_FILE_SUPPORT_H
