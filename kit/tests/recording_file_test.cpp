#include <lapwing/kit/recording_file.h>

#include "file_support.h"
#include "other_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace fs = std::filesystem;
using lapwing::Recording;

namespace {

std::chrono::system_clock::time_point at(int seconds) {
    return std::chrono::system_clock::time_point(std::chrono::seconds(1'795'272'000 + seconds));
}

Recording recording(const std::string& id, int seconds = 0, std::size_t samples = 1) {
    return {id, at(seconds), {}, {{}, {{"Scan", std::vector<Milliseconds>(samples)}}}};
}

std::string formatted(const std::vector<Recording>& recordings) {
    std::ostringstream stream;
    lapwing::writeRecordings(stream, recordings);
    return stream.str();
}

Lines idsOf(const std::vector<Recording>& recordings) {
    Lines ids;
    for (const Recording& each : recordings) {
        ids.push_back(each.id);
    }
    return ids;
}

template <class Error>
std::string messageOf(const std::function<void()>& call) {
    try {
        call();
        return "none";
    } catch (const Error& error) {
        return error.what();
    }
}

using lapwing::RecordingFileError;

TEST(RecordingFile, LosesNothingOfEightProcessesThatAppend) {
    constexpr std::size_t count = 12;
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    fs::create_directory(folder / "runs");
    std::vector<OtherProcess> processes;
    for (const fs::path& target : {file, folder / "runs"}) {
        for (int number = 0; number < 8; ++number) {
            processes.push_back(OtherProcess({"append", target.string(), std::to_string(count)}));
        }
    }
    for (OtherProcess& process : processes) {
        EXPECT_EQ(process.exitCode(), 0);
    }
    for (const fs::path& target : {file, folder / "runs"}) {
        const Lines ids = idsOf(lapwing::loadRecordings(target));
        EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), 8 * count) << target;
    }
    EXPECT_EQ(folder.entries(), (Lines{"runs", "runs.json"}));
}

TEST(RecordingFile, IsWholeAfterSavingProcessesAreKilled) {
#ifdef _WIN32
    constexpr int rounds = 6;
#else
    constexpr int rounds = 25;
#endif
    const Lines names = {"0", "1", "2", "3", "4", "5", "6", "7"};
    const std::string whole[] = {formatted(smallRecordings()), formatted(largeRecordings())};
    const TemporaryFolder folder;
    std::mt19937 random(1);
    std::uniform_int_distribution<int> microseconds(0, 10'000);
    std::ptrdiff_t leftBehind = 0;
    for (int round = 0; round < rounds; ++round) {
        std::vector<OtherProcess> processes;
        for (const std::string& name : names) {
            fs::remove(folder / name);
            processes.push_back(OtherProcess({"save", (folder / name).string()}));
        }
        for (std::size_t index = 0; index < names.size(); ++index) {
            waitFor([&] { return fs::exists(folder / names[index]); });
            std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
            processes[index].kill();
        }
        for (const std::string& name : names) {
            const std::string found = contentsOf(folder / name);
            EXPECT_TRUE(found == whole[0] || found == whole[1]) << found.size();
            leftBehind += fs::exists(temporaryOf(folder / name)) ? 1 : 0;
        }
    }
    EXPECT_GT(leftBehind, 0U) << "no process was killed while it saved";
    for (const std::string& name : names) {
        lapwing::saveRecordings(folder / name, smallRecordings());
    }
    EXPECT_EQ(folder.entries(), names);
}

TEST(RecordingFile, CombinesTheFilesOfAFolder) {
    const TemporaryFolder folder;
    lapwing::saveRecordings(folder / "a.json", {recording("late", 9), recording("both", 5)});
    lapwing::saveRecordings(folder / "b.json", {recording("both", 5), recording("early", 1)});
    fs::create_directory(folder / "below.json");
    fill(folder / "below.json" / "c.json", "not looked at");
    fill(folder / "notes.txt", "not looked at");
    EXPECT_EQ(idsOf(lapwing::loadRecordings(folder.path())), (Lines{"early", "both", "late"}));

    lapwing::saveRecordings(folder / "b.json", {recording("both", 6)});
    const std::string clash = messageOf<RecordingFileError>(
        [&] { static_cast<void>(lapwing::loadRecordings(folder.path())); });
    EXPECT_EQ(clash.find((folder / "b.json:1:1: ").string()), 0U) << clash;
    EXPECT_NE(clash.find("\"both\""), std::string::npos) << clash;

    fill(folder / "b.json", "[");
    const std::string bad = messageOf<RecordingFileError>(
        [&] { static_cast<void>(lapwing::loadRecordings(folder.path())); });
    EXPECT_EQ(bad.find((folder / "b.json:1:").string()), 0U) << bad;
#ifndef _WIN32
    fs::remove(folder / "b.json");
    mkfifo((folder / "b.json").c_str(), 0666);
    EXPECT_THROW(static_cast<void>(lapwing::loadRecordings(folder.path())), RecordingFileError);
#endif
}

TEST(RecordingFile, CountsTheLimitsOverAWholeFolder) {
    const TemporaryFolder folder;
    lapwing::saveRecordings(folder / "a.json", {recording("1", 1, 3), recording("2", 2, 3)});
    lapwing::saveRecordings(folder / "b.json", {recording("3", 3, 4)});
    const auto load = [&](std::size_t recordings, std::size_t samples) {
        lapwing::RecordingLimits limits;
        limits.recordings = recordings;
        limits.samples = samples;
        return lapwing::loadRecordings(folder.path(), limits).size();
    };
    EXPECT_EQ(load(3, 10), 3U);
    EXPECT_THROW(load(2, 10), RecordingFileError);
    EXPECT_THROW(load(3, 9), RecordingFileError);
}

TEST(RecordingFile, AppendsToAFolderOneFileEach) {
    const TemporaryFolder folder;
    const std::string longId(70, 'x');
    const std::string longName = "20261121T144000Z-" + std::string(64, 'x');
    for (const std::string& id : {std::string("a/b"), std::string("a.b"), longId, longId + "y"}) {
        lapwing::appendRecording(folder.path(), recording(id));
        EXPECT_THROW(lapwing::appendRecording(folder.path(), recording(id)), std::invalid_argument);
    }
    EXPECT_EQ(folder.entries(), (Lines{"20261121T144000Z-a_b-2.json", "20261121T144000Z-a_b.json",
                                       longName + "-2.json", longName + ".json"}));
    EXPECT_EQ(idsOf(lapwing::loadRecordings(folder.path())),
              (Lines{"a.b", "a/b", longId, longId + "y"}));
}

TEST(RecordingFile, ChangesNothingWhenItRefuses) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    const Recording known = recording("known");
    lapwing::appendRecording(file, known);
    const Recording noId = recording("");
    const std::vector<std::function<void()>> refused = {
        [&] {
            lapwing::saveRecordings(file, {known, known});
        },
        [&] { lapwing::saveRecordings(file, {noId}); },
        [&] { lapwing::appendRecording(file, noId); },
        [&] { lapwing::appendRecording(folder / "new.json", noId); },
        [&] { lapwing::appendRecording(folder.path(), noId); },
        [&] { lapwing::saveRecordings(folder.path(), {known}); },
    };
    for (const auto& call : refused) {
        EXPECT_THROW(call(), std::invalid_argument);
    }
    EXPECT_EQ(messageOf<std::invalid_argument>([&] { lapwing::appendRecording(file, known); }),
              file.string() + ": already has a recording \"known\"");
    EXPECT_EQ(contentsOf(file), formatted({known}));
    fill(file, "[");
    EXPECT_THROW(lapwing::appendRecording(file, recording("new")), RecordingFileError);
    EXPECT_EQ(contentsOf(file), "[");
    EXPECT_EQ(folder.entries(), Lines{"runs.json"});
}

TEST(RecordingFile, NamesTheFileThatCannotBeRead) {
    const TemporaryFolder folder;
    const fs::path file = folder / "missing.json";
    const std::string message =
        messageOf<std::system_error>([&] { static_cast<void>(lapwing::loadRecordings(file)); });
    EXPECT_EQ(message.find(file.string() + ": "), 0U) << message;
}

TEST(RecordingFile, ReadsAndWritesStreams) {
    const std::vector<Recording> recordings = {recording("1"), recording("2", 1, 100'000)};
    std::stringstream stream;
    stream.exceptions(std::ios::badbit);
    lapwing::writeRecordings(stream, recordings);
    const std::vector<Recording> loaded = lapwing::readRecordings(stream, "input");
    EXPECT_EQ(formatted(loaded), formatted(recordings));

    std::istringstream cut("{");
    const std::string message = messageOf<RecordingFileError>(
        [&] { static_cast<void>(lapwing::readRecordings(cut, "input")); });
    EXPECT_EQ(message.find("input:1:"), 0U) << message;
    std::istringstream broken(formatted(recordings));
    broken.setstate(std::ios::badbit);
    EXPECT_THROW(static_cast<void>(lapwing::readRecordings(broken, "input")), std::system_error);
}

}  // namespace
