// Uses every part of Lapwing as a host would, and exits with 0 only if all of it works.

#include <lapwing/settings.h>
#include <lapwing/timing_profiles.h>

#include <chrono>
#include <functional>
#include <iostream>
#include <string>

class EverythingOn : public DeveloperSettings::Provider {
public:
    EverythingOn() { setInstance(this); }
    EverythingOn(const EverythingOn&) = delete;
    EverythingOn& operator=(const EverythingOn&) = delete;
    ~EverythingOn() override { setInstance(nullptr); }

    bool getValue(const char* /*key*/, bool /*fallback*/) const override { return true; }
    using Provider::getValue;
};

int main() {
    EverythingOn provider;
    int lineCount = 0;
    Instrumentation::setGlobalLogMessageHandler([&lineCount](const std::string& line) {
        std::cout << line << '\n';
        ++lineCount;
    });

    TimingProfileCollector collector;
    collector.collectSample("Load", Milliseconds(20));
    TimingProfileEmulator emulator;
    emulator.setProfile(collector.extractProfile());

    const auto start = std::chrono::steady_clock::now();
    collectTimingProfileSampleAndEmulate(std::ref(collector), std::ref(emulator), "Load",
                                         [](Instrumentation& load) { load.note("nothing to do"); });
    const bool isPadded = std::chrono::steady_clock::now() - start >= Milliseconds(20);
    Instrumentation::setGlobalLogMessageHandler({});

    const bool isCollected = collector.extractProfile().samples.at("Load").size() == 2;
    return DeveloperSettings::developerMode() && lineCount == 7 && isPadded && isCollected ? 0 : 1;
}
