// What the tests have done by other processes:
//   append FILE COUNT  appends that many recordings, half of them by a second thread
//   save FILE          replaces the file for ever by two recordings in turn: small and large
//   hold FILE          has written a part of a new file, and waits for ever

#include "other_process.h"

#include "file_replacement.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>

namespace {

void append(const std::string& file, int count) {
    for (int number = 0; number < count; ++number) {
        lapwing::appendRecording(file, lapwing::makeRecording({{}, {{"Scan", {{}}}}}));
    }
}

[[noreturn]] void save(const std::string& file) {
    for (;;) {
        lapwing::saveRecordings(file, smallRecordings());
        lapwing::saveRecordings(file, largeRecordings());
    }
}

[[noreturn]] void hold(const std::string& file) {
    lapwing::FileReplacement replacement(file);
    replacement.write("part");
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

void run(const std::string& command, const std::string& file, const std::string& count) {
    if (command == "hold") {
        hold(file);
    }
    if (command == "save") {
        save(file);
    }
    std::thread other([&] { append(file, std::stoi(count) / 2); });
    append(file, std::stoi(count) / 2);
    other.join();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        run(argv[1], argv[2], argc > 3 ? argv[3] : "0");
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
