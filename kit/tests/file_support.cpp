#include "file_support.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>
#include <utility>

#ifdef _WIN32
#include <windows.h>

#include <process.h>
#else
#include <spawn.h>
#include <sys/wait.h>

#include <csignal>
#endif

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

void waitFor(const std::function<bool()>& condition) {
    while (!condition()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

TemporaryFolder::TemporaryFolder()
    : folder(fs::temp_directory_path() / ("lapwing-" + std::to_string(std::random_device()()))) {
    fs::create_directory(folder);
    fs::permissions(folder, fs::perms::all);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

Lines TemporaryFolder::entries() const {
    Lines names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

OtherProcess::OtherProcess(OtherProcess&& other) noexcept
    : process(std::exchange(other.process, -1)) {}

#ifdef _WIN32

OtherProcess::OtherProcess(const Lines& arguments) {
    Lines quoted = {LAPWING_KIT_TESTS_OTHER_PROCESS};
    for (const std::string& argument : arguments) {
        quoted.push_back('"' + argument + '"');
    }
    std::vector<const char*> pointers;
    for (const std::string& argument : quoted) {
        pointers.push_back(argument.c_str());
    }
    pointers.push_back(nullptr);
    process = _spawnv(_P_NOWAIT, LAPWING_KIT_TESTS_OTHER_PROCESS, pointers.data());
}

void OtherProcess::kill() {
    if (process != -1) {
        TerminateProcess(reinterpret_cast<HANDLE>(process), 1);
        exitCode();
    }
}

int OtherProcess::exitCode() {
    DWORD code = 1;
    WaitForSingleObject(reinterpret_cast<HANDLE>(process), INFINITE);
    GetExitCodeProcess(reinterpret_cast<HANDLE>(process), &code);
    CloseHandle(reinterpret_cast<HANDLE>(std::exchange(process, -1)));
    return static_cast<int>(code);
}

#else

OtherProcess::OtherProcess(const Lines& arguments) {
    Lines words = {LAPWING_KIT_TESTS_OTHER_PROCESS};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t started = -1;
    if (posix_spawn(&started, pointers[0], nullptr, nullptr, pointers.data(), environ) == 0) {
        process = started;
    }
}

void OtherProcess::kill() {
    if (process != -1) {
        ::kill(static_cast<pid_t>(process), SIGKILL);
        exitCode();
    }
}

int OtherProcess::exitCode() {
    int status = -1;
    ::waitpid(static_cast<pid_t>(std::exchange(process, -1)), &status, 0);
    return status;
}

#endif
