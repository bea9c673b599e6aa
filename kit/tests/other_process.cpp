// What the tests have done by other processes, in the working folder. To runs.json:
//   append  appends a hundred recordings, half of them by a second thread
//   save    saves it again and again, in turn with 50,000 samples and with one, and dies meanwhile
//   die     dies in the middle of saving it (not on Windows)
// To trace.json:
//   kill    writes 20,000 scopes and is killed
//   leave   writes some, and leaves the trace to the end of the process
// To settings.json:
//   set     sets twenty keys, half of them by a second thread

#include <lapwing/kit/recording_file.h>
#include <lapwing/kit/settings_files.h>
#include <lapwing/kit/trace.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

bool diesWhenItFlushes = false;

}  // namespace

#ifndef _WIN32
// What a process wrote outlives it without this, which is slow.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int fsync(int /*file*/) {
    if (diesWhenItFlushes) {
        std::_Exit(0);
    }
    return 0;
}
#endif

namespace {

void append() {
    for (int number = 0; number < 50; ++number) {
        lapwing::appendRecording("runs.json", lapwing::makeRecording({{}, {{"Scan", {{}}}}}));
    }
}

void set(lapwing::JsonFileLayer& settings) {
    for (int number = 0; number < 10; ++number) {
        const std::string key = lapwing::makeRecording({}).id;
        settings.set(key, {"1", true});
        if (settings.find(key) != "1") {
            std::_Exit(1);
        }
    }
}

void save(std::size_t samples) {
    const std::vector<Milliseconds> durations(samples);
    lapwing::saveRecordings("runs.json", {{"1", {}, {}, {{}, {{"Scan", durations}}}}});
}

// As a kill does, this ends the other thread wherever it is.
void dieSoon() {
    std::this_thread::sleep_for(std::chrono::microseconds(std::random_device()() % 10'000));
    std::_Exit(0);
}

// Destroyed after the trace.
struct Late {
    ~Late() { Instrumentation("Late").note("sent"); }
} late;

std::optional<lapwing::TraceFile> trace;

void writeScopes(int count) {
    Instrumentation::setGlobalLogMessageHandler(trace.emplace("trace.json").handler());
    for (int number = 0; number < count; ++number) {
        Instrumentation("Scope").note("inside");
    }
}

void killThisProcess() {
#ifdef _WIN32
    TerminateProcess(GetCurrentProcess(), 1);
#else
    std::raise(SIGKILL);
#endif
}

// Calls it twice at once.
template <class Call>
int callInTwoThreads(const Call& call) {
    std::thread other(call);
    call();
    other.join();
    return 0;
}

}  // namespace

int main(int /*argc*/, char** argv) {
    const std::string command = argv[1];
    if (command == "leave") {
        writeScopes(3);
        return 0;
    }
    if (command == "kill") {
        writeScopes(20'000);
        killThisProcess();
    }
    if (command == "append") {
        return callInTwoThreads(append);
    }
    if (command == "set") {
        lapwing::JsonFileLayer settings("settings.json");
        return callInTwoThreads([&settings] { set(settings); });
    }
    diesWhenItFlushes = command == "die";
    save(1);
    std::thread(dieSoon).detach();
    for (;;) {
        save(50'000);
        save(1);
    }
}
