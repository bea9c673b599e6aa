// A working folder and other processes for the tests.

#ifndef LAPWING_KIT_TESTS_FILE_SUPPORT_H
#define LAPWING_KIT_TESTS_FILE_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

using Names = std::set<std::string>;

inline std::string contentsOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void fill(const fs::path& file, const std::string& contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

// What is in the working folder.
inline Names entries() {
    Names names;
    for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

// Each test works in a new folder, which everybody may use.
class InNewFolder : public testing::Test {
protected:
    InNewFolder() {
        fs::create_directory(folder);
        fs::permissions(folder, fs::perms::all);
        fs::current_path(folder);
    }
    ~InNewFolder() override {
        fs::current_path(previous);
        fs::remove_all(folder);
    }

    // Runs the program of other_process.cpp. Returns 0 if it succeeds. Wine's shell now and then
    // does not find a program that is there, and says so by a code of its own.
    [[nodiscard]] int run(const std::string& command) const {
        constexpr int notFound = 9009;
        const std::string line = '"' + program + "\" " + command;
        int code = std::system(line.c_str());
        for (int again = 0; code == notFound && again < 3; ++again) {
            code = std::system(line.c_str());
        }
        return code;
    }

    // Runs it eight times at once.
    [[nodiscard]] std::vector<std::future<int>> startEight(const std::string& command) const {
        std::vector<std::future<int>> results(8);
        for (std::future<int>& result : results) {
            result = std::async(std::launch::async, [this, command] { return run(command); });
        }
        return results;
    }

private:
    const std::string program = fs::absolute(LAPWING_KIT_TESTS_OTHER_PROCESS).string();
    const fs::path previous = fs::current_path();
    const fs::path folder =
        fs::temp_directory_path() / ("lapwing-" + std::to_string(std::random_device()()));
};

#endif  // LAPWING_KIT_TESTS_FILE_SUPPORT_H
