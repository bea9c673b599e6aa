// Replays a recording by its average, by its worst case and by random draw.

#include <lapwing/kit/recording_file.h>
#include <lapwing/kit/replay.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

using lapwing::Replayer;
using lapwing::ReplayPolicy;

namespace {

// Stands in for a scanner whose real times were recorded.
std::string fakeScan() {
    return "a page";
}

}  // namespace

int main() {
    const auto file = std::filesystem::temp_directory_path() / lapwing::makeRecording({}).id;
    const std::vector<Milliseconds> scans{Milliseconds(38), Milliseconds(35), Milliseconds(61)};
    lapwing::saveRecordings(file, {lapwing::makeRecording({{}, {{"Scan", scans}}})});

    const TimingProfile recorded = lapwing::flattened(lapwing::loadRecordings(file));
    const std::vector<std::pair<std::string, ReplayPolicy>> policies{
        {"average", ReplayPolicy::average()},
        {"worst case, half as long again", ReplayPolicy::percentile(100).scaled(1.5)},
        {"random draw", ReplayPolicy::random(2026).jittered(Milliseconds(3), 1)},
    };
    for (const auto& [title, policy] : policies) {
        Replayer replayer(recorded, policy);
        for (int page = 0; page < 4; ++page) {
            const std::string scanned = replayer.run("Scan", fakeScan);
        }
        const lapwing::ReplayReport report = replayer.report();
        std::cout << title << ':';
        for (const lapwing::ReplayStep& step : report.operations.at("Scan").steps) {
            std::cout << ' ' << step.target.count();
        }
        std::cout << '\n' << lapwing::formatReport(report) << '\n';
    }
    std::filesystem::remove(file);
}
