#include "replay.h"

#include <lapwing/settings.h>

#include <functional>
#include <numeric>
#include <thread>

TimingProfile recordPass(const std::vector<Operation>& operations, std::int32_t runs) {
    const Instrumentation pass("First pass", DeveloperConfig::enableTimingProfileLogging(), {});
    TimingProfileCollector collector;
    for (const Operation& operation : operations) {
        for (std::int32_t run = 0; run < runs; ++run) {
            collectTimingProfileSample(std::ref(collector), operation.name, operation.work);
        }
    }
    return collector.extractProfile();
}

lapwing::ReplayReport replayPass(const TimingProfile& recorded,
                                 const std::vector<std::string>& names, const std::string& slowName,
                                 std::int32_t runs) {
    const Instrumentation pass("Second pass", DeveloperConfig::enableTimingProfileLogging(), {});
    const Milliseconds slowAverage = averageOf(recorded, slowName).value_or(Milliseconds::zero());
    const InstrumentedFunction standIn = [](Instrumentation& /*instrumentation*/) {};
    const InstrumentedFunction slowStandIn = [&](Instrumentation& /*instrumentation*/) {
        std::this_thread::sleep_for(slowAverage + plannedOverrun);
    };
    lapwing::Replayer replayer(recorded);
    for (const std::string& name : names) {
        for (std::int32_t run = 1; run <= runs; ++run) {
            const bool isSlow = name == slowName && run == runs;
            emulateTimingProfile(std::ref(replayer), name, isSlow ? slowStandIn : standIn);
        }
    }
    return replayer.report();
}

std::optional<Milliseconds> averageOf(const TimingProfile& profile, const std::string& name) {
    const auto found = profile.samples.find(name);
    if (found == profile.samples.end() || found->second.empty()) {
        return std::nullopt;
    }
    const std::vector<Milliseconds>& samples = found->second;
    const auto sum = std::accumulate(samples.begin(), samples.end(), Milliseconds::zero());
    return sum / static_cast<Milliseconds::rep>(samples.size());
}
