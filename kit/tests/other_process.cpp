// What the tests have done by other processes, to runs.json in the working folder:
//   append  appends a hundred recordings, half of them by a second thread
//   save    saves it again and again, in turn with 50,000 samples and with one, and dies meanwhile
//   die     dies in the middle of saving it (not on Windows)

#include <lapwing/kit/recording_file.h>

#include <chrono>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

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

void save(std::size_t samples) {
    const std::vector<Milliseconds> durations(samples);
    lapwing::saveRecordings("runs.json", {{"1", {}, {}, {{}, {{"Scan", durations}}}}});
}

// As a kill does, this ends the other thread wherever it is.
void dieSoon() {
    std::this_thread::sleep_for(std::chrono::microseconds(std::random_device()() % 10'000));
    std::_Exit(0);
}

}  // namespace

int main(int /*argc*/, char** argv) {
    if (argv[1] == std::string("append")) {
        std::thread other(append);
        append();
        other.join();
        return 0;
    }
    diesWhenItFlushes = argv[1] == std::string("die");
    save(1);
    std::thread(dieSoon).detach();
    for (;;) {
        save(50'000);
        save(1);
    }
}
