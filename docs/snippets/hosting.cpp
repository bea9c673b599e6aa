// What a host installs before its threads start, and uninstalls after they have ended.

#include <lapwing/settings.h>
#include <lapwing/timing_profiles.h>

#include <array>
#include <cstring>
#include <functional>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

namespace {

// Turns on the logging of timing profiles. It never changes, so it needs no lock.
class Options final : public DeveloperSettings::Provider {
public:
    Options() { setInstance(this); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    ~Options() override { setInstance(nullptr); }

    using Provider::getValue;
    bool getValue(const char* key, bool fallback) const override {
        return fallback || std::strcmp(key, "enableTimingProfileLogging") == 0;
    }
};

// Counts the lines of all threads.
class Log final {
public:
    Log() {
        Instrumentation::setGlobalLogMessageHandler(
            [this](const std::string& line) { receive(line); });
    }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
    ~Log() { Instrumentation::setGlobalLogMessageHandler({}); }

    [[nodiscard]] int lineCount() const { return count; }

private:
    void receive(const std::string& /*line*/) {
        const std::lock_guard lock(mutex);
        ++count;
    }

    std::mutex mutex;
    int count = 0;
};

}  // namespace

int main() {
    Options options;
    Log log;
    TimingProfileCollector collector;

    const auto work = [&collector] {
        collectTimingProfileSample(std::ref(collector), "Work", [](Instrumentation&) {});
    };
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads) {
        thread = std::thread(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    std::cout << collector.extractProfile().samples.at("Work").size() << " samples\n"
              << log.lineCount() << " lines\n";
}
