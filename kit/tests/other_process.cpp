// What the tests have done by other processes:
//   append FILE COUNT        appends that many recordings on each of two threads
//   save FILE MICROSECONDS   replaces the file in turn, and dies that long after the first time
//   hold FILE MICROSECONDS   writes a part of a new file, tells in FILE.dying, and dies

#include "other_process.h"

#include "file_replacement.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

namespace {

void append(const std::string& file, int count) {
    for (int number = 0; number < count; ++number) {
        lapwing::appendRecording(file, lapwing::makeRecording({{}, {{"Scan", {{}}}}}));
    }
}

// As a kill does: nothing is cleaned up, whatever the other threads are doing.
[[noreturn]] void dieAfter(int microseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    std::_Exit(0);
}

void save(const std::string& file, int microseconds) {
    lapwing::saveRecordings(file, recordingsOf(few));
    std::thread([microseconds] { dieAfter(microseconds); }).detach();
    for (;;) {
        lapwing::saveRecordings(file, recordingsOf(many));
        lapwing::saveRecordings(file, recordingsOf(few));
    }
}

void hold(const std::string& file, int microseconds) {
    lapwing::FileReplacement replacement(file);
    replacement.write("part");
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    std::ofstream(file + ".dying").flush();
    dieAfter(0);
}

}  // namespace

int main(int /*count*/, char** arguments) {
    const std::string command = arguments[1];
    const std::string file = arguments[2];
    const int number = std::stoi(arguments[3]);
    if (command == "append") {
        std::thread other([&] { append(file, number); });
        append(file, number);
        other.join();
    } else {
        (command == "save" ? save : hold)(file, number);
    }
}
