// Keeps what two benches record of two builds, merges it, and tells what became slower.

#include <lapwing/kit/comparison.h>
#include <lapwing/kit/recording_file.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

using lapwing::Recording;
using lapwing::Verdict;

namespace {

// Stands in for a run of a build and its collector.
Recording record(const std::string& build, int scan, int print) {
    TimingProfile profile;
    for (const int more : {2, 0, 1}) {
        profile.samples["Scan"].emplace_back(scan + more);
        profile.samples["Print"].emplace_back(print + more);
    }
    return lapwing::makeRecording(profile, {{"build", build}});
}

std::vector<Recording> ofBuild(const std::vector<Recording>& recordings, const std::string& build) {
    std::vector<Recording> found;
    std::copy_if(recordings.begin(), recordings.end(), std::back_inserter(found),
                 [&](const Recording& it) { return it.labels.at("build") == build; });
    return found;
}

}  // namespace

int main() {
    const auto folder = std::filesystem::temp_directory_path() / lapwing::makeRecording({}).id;
    std::filesystem::create_directory(folder);
    const auto first = folder / "bench-1.json";
    const auto second = folder / "bench-2.json";

    // Each bench appends to its file, run by run.
    for (int run = 0; run < 6; ++run) {
        const auto& file = run % 2 == 0 ? first : second;
        lapwing::appendRecording(file, record("41", 120 + run, 79));
        lapwing::appendRecording(file, record("42", 150 + run, 79 + run % 3));
    }

    // A folder is loaded like a file. What is in several of its files counts once.
    lapwing::saveRecordings(folder / "both.json", lapwing::merged(lapwing::loadRecordings(first),
                                                                  lapwing::loadRecordings(second)));
    const std::vector<Recording> all = lapwing::loadRecordings(folder);
    const std::vector<Recording> after = ofBuild(all, "42");
    std::cout << all.size() << " recordings, " << after.size() << " of build 42\n";

    const std::map<Verdict, std::string> verdicts = {
        {Verdict::Slower, "slower"},
        {Verdict::Faster, "faster"},
        {Verdict::Same, "same"},
        {Verdict::Undecided, "undecided"},
        {Verdict::TooFew, "too few"},
        {Verdict::OnlyBefore, "only before"},
        {Verdict::OnlyAfter, "only after"},
    };
    for (const lapwing::Comparison& row : lapwing::compare(ofBuild(all, "41"), after)) {
        std::cout << row.name << ": " << verdicts.at(row.verdict);
        if (row.shift && row.interval && row.margin) {
            std::cout << ", shift " << *row.shift << " ms (" << row.interval->low << " to "
                      << row.interval->high << "), margin " << *row.margin << " ms";
        }
        std::cout << '\n';
    }

    TimingProfileEmulator emulator;  // makes a stand-in as slow as build 42
    emulator.setProfile(lapwing::flattened(after));
    std::filesystem::remove_all(folder);
}
