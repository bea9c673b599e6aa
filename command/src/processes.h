// Starting programs and measuring them, and what the system calls them with.

#ifndef LAPWING_COMMAND_PROCESSES_H
#define LAPWING_COMMAND_PROCESSES_H

#include "places.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace command {

// How a program ended, and after what time.
struct Ending {
    std::chrono::nanoseconds took{};
    int code = 0;    // what it returned
    int signal = 0;  // what ended it, if it did not end by itself

    [[nodiscard]] bool isFailure() const { return exitCode() != 0; }
    // As a shell gives it.
    [[nodiscard]] int exitCode() const { return signal != 0 ? 128 + signal : code; }
};

// Where the output of a shell's line goes. Its input is empty.
enum class Output {
    None,    // Nowhere.
    Errors,  // Errors go where lapwing's go.
};

// Both start a program, wait for it, and measure from just before its start to its end. They throw
// Stop with 127 if it is not found, and with 126 if it cannot be run.

// Runs a program without a shell, with the caller's input and output. Signals, environment and open
// files are as lapwing found them.
Ending runProgram(const std::vector<std::string>& program);

// Has the system's shell run a line.
Ending runLine(const std::string& line, Output output);

// While it exists, a signal that asks lapwing to end does not end it at once. It is passed on to
// the program that runs, unless the terminal has sent it there, too. There is one at a time.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    // Returns the last such signal, or 0.
    [[nodiscard]] static int signal();
};

[[nodiscard]] bool isTerminal(int stream);  // 0, 1 or 2

std::string hostName();

#ifdef _WIN32
// What the system gives as UTF-16, as UTF-8.
std::string fromSystem(std::wstring_view text);

// While it exists, consoles take what is written as UTF-8. Programs that runProgram() starts find
// the console as lapwing did.
class Utf8Console {
public:
    Utf8Console();
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;
    ~Utf8Console();
};
#endif

}  // namespace command

#endif  // LAPWING_COMMAND_PROCESSES_H
