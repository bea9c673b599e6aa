// Writes pages of all kinds into the current folder, for check-pages to look at.

#include <lapwing/kit/report.h>

#include "page_samples.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <limits>

namespace {

using Samples = std::vector<Milliseconds>;

void write(const std::string& name, const std::string& page) {
    std::ofstream file(name + ".html", std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file << page << std::flush;
}

void writeUsualPages() {
    const Recordings before = recordingsOf(
        {{"Decode image", 48}, {"Open archive", 120}, {"Scan", 210}, {"Thumbnail", 9}}, 24, 40, 1);
    const Recordings after = recordingsOf(
        {{"Decode image", 39}, {"Open archive", 121}, {"Scan", 262}, {"Preview", 30}}, 20, 40, 2);
    write("recordings", lapwing::recordingsPage(before, "Nightly measurements"));
    write("comparison", lapwing::comparisonPage(before, after, "Build 41 against build 42"));
    const lapwing::ReplayReport report{{{"Scan", replayed(210, 190'000, 300, 1)},
                                        {"Decode image", replayed(48, 9'000, 500, 2)},
                                        {"Open archive", replayed(120, 60'000, 80, 3)},
                                        {"Thumbnail", {Milliseconds(9), "rarely used", {}}},
                                        {"Warm up", {{}, {}, {step(0, 3'200, 0)}}}}};
    write("replay", lapwing::replayPage(report, "Replay on the build machine"));
}

void writeLargePages() {
    std::vector<std::pair<std::string, std::int64_t>> operations;
    std::map<std::string, lapwing::ReplayedOperation> replays;
    for (int i = 0; i < 20; ++i) {
        const std::string name = "Operation " + std::to_string(i);
        operations.emplace_back(name, 20 + 37 * i);
        replays[name] = replayed(20 + 37 * i, 15'000 + 30'000 * i, 10'000, 7);
    }
    Recordings recordings = recordingsOf(operations, 200, 50);
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        recordings[i].labels["machine"] = "bench-" + std::to_string(i % 3);
    }
    write("large-recordings", lapwing::recordingsPage(recordings, "Large"));
    write("large-comparison", lapwing::comparisonPage(recordings, recordings, "Large"));
    write("large-replay", lapwing::replayPage({replays}, "Large"));
}

void writeStrangeNames() {
    std::vector<std::pair<std::string, std::int64_t>> operations;
    std::map<std::string, lapwing::ReplayedOperation> replays;
    for (const std::string& name : strangeNames) {
        operations.emplace_back(name, 20);
        replays[name] = replayed(20, 25'000, 9, 1);
        replays[name].note = name;
    }
    Recordings recordings = recordingsOf(operations, 9, 5);
    std::size_t next = 0;
    for (lapwing::Recording& recording : recordings) {
        const std::string& name = strangeNames[next++ % std::size(strangeNames)];
        recording.labels["machine"] = name;
        recording.profile.notes[name] = name;
    }
    write("names-recordings", lapwing::recordingsPage(recordings, strangeNames[0]));
    write("names-comparison", lapwing::comparisonPage(recordings, recordings, strangeNames[4]));
    write("names-replay", lapwing::replayPage({replays}, strangeNames[2]));
}

void writeExtremes() {
    constexpr Milliseconds most = Milliseconds::max();
    Recordings recordings = recordingsOf({}, 1, 0);
    recordings[0].profile.samples = {{"none", {}},
                                     {"one", {Milliseconds(7)}},
                                     {"equal", Samples(1000, Milliseconds(5))},
                                     {"zero", Samples(5, Milliseconds(0))},
                                     {"negative", {Milliseconds(-40), Milliseconds(-3)}},
                                     {"huge", {most, most - Milliseconds(1)}},
                                     {"all", {Milliseconds::min(), Milliseconds(0), most}},
                                     {"week", Samples(9, std::chrono::hours(168))}};
    Samples outliers(3000, Milliseconds(12));
    outliers[7] = std::chrono::hours(3);
    recordings[0].profile.samples["outlier"] = outliers;
    write("extreme-recordings", lapwing::recordingsPage(recordings, ""));
    write("extreme-comparison", lapwing::comparisonPage(recordings, recordings, "Extremes"));
    write("empty-recordings", lapwing::recordingsPage({}, "Nothing"));
    write("empty-comparison", lapwing::comparisonPage({}, {}, "Nothing"));
    write("empty-replay", lapwing::replayPage({}, "Nothing"));
    write("many-recordings",
          lapwing::recordingsPage(recordingsOf({{"Scan", 90}}, 4000, 3), "Thousands"));
    write("extreme-replay",
          lapwing::replayPage({{{"one", {Milliseconds(5), {}, {step(5, 1, 0)}}},
                                {"early", {Milliseconds(5), {}, {step(5, 1, -9'000)}}},
                                {"late", {Milliseconds(0), {}, {step(0, 604'800'000'000, 9)}}}}},
                              "Extremes"));
}

}  // namespace

int main() {
    try {
        writeUsualPages();
        writeLargePages();
        writeStrangeNames();
        writeExtremes();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
