// Records how long a scanner takes, then makes its stand-in take as long.

#include <lapwing/timing_profiles.h>

#include <functional>
#include <iostream>
#include <string>
#include <thread>

namespace {

void scan(Instrumentation& stopwatch) {
    std::this_thread::sleep_for(Milliseconds(30));
    stopwatch.lap("all lines read");
}

void pretendToScan(Instrumentation& stopwatch) {
    stopwatch.note("nothing on the glass");
}

TimingProfile record() {
    TimingProfileCollector collector;
    for (int run = 0; run < 3; ++run) {
        collectTimingProfileSample(std::ref(collector), "Scan", scan);
    }
    return collector.extractProfile();
}

}  // namespace

int main() {
    Instrumentation::setGlobalLogMessageHandler(
        [](const std::string& line) { std::cout << line << '\n'; });

    const TimingProfile recorded = record();
    std::cout << recorded.samples.at("Scan").size() << " samples\n";

    TimingProfileEmulator emulator;
    emulator.setProfile(recorded);
    TimingProfileCollector collector;
    collectTimingProfileSampleAndEmulate(std::ref(collector), std::ref(emulator), "Scan", true,
                                         pretendToScan);
    emulateTimingProfile(std::ref(emulator), "Print", [](Instrumentation&) {});

    for (const auto& [name, note] : emulator.extractErrorProfile().notes) {
        std::cout << name << ": " << note << '\n';
    }
}
