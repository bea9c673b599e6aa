#include <lapwing/kit/recording_file.h>

#include "file_support.h"
#include "other_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <random>
#include <set>
#include <sstream>
#include <system_error>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace fs = std::filesystem;
using lapwing::loadRecordings;
using lapwing::Recording;
using lapwing::RecordingFileError;
using lapwing::saveRecordings;

namespace {

Recording recording(const std::string& id, int seconds = 0, std::size_t samples = 1) {
    Recording made = recordingsOf(samples).front();
    made.id = id;
    made.recorded += std::chrono::seconds(1'795'272'000 + seconds);
    return made;
}

std::string formatted(const std::vector<Recording>& recordings) {
    std::ostringstream stream;
    lapwing::writeRecordings(stream, recordings);
    return stream.str();
}

Lines idsIn(const fs::path& file) {
    Lines ids;
    for (const Recording& each : loadRecordings(file)) {
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

TEST(RecordingFile, LosesNothingOfEightProcessesThatAppend) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "runs");
    std::vector<std::future<int>> processes;
    for (int process = 0; process < 8; ++process) {
        processes.push_back(startProcess("append", folder / "runs.json", 6));
        processes.push_back(startProcess("append", folder / "runs", 6));
    }
    for (auto& process : processes) {
        EXPECT_EQ(process.get(), 0);
    }
    for (const char* target : {"runs.json", "runs"}) {
        const Lines ids = idsIn(folder / target);
        EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), 8U * 2 * 6) << target;
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
    const std::string whole[] = {formatted(recordingsOf(few)), formatted(recordingsOf(many))};
    const TemporaryFolder folder;
    std::mt19937 random(1);
    std::uniform_int_distribution<int> microseconds(0, 40'000);
    int leftBehind = 0;
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::future<int>> processes;
        for (const std::string& name : names) {
            processes.push_back(startProcess("save", folder / name, microseconds(random)));
        }
        for (std::size_t index = 0; index < names.size(); ++index) {
            EXPECT_EQ(processes[index].get(), 0);
            const std::string found = contentsOf(folder / names[index]);
            EXPECT_TRUE(found == whole[0] || found == whole[1]) << found.size();
            leftBehind += fs::exists(temporaryOf(folder / names[index])) ? 1 : 0;
        }
    }
    EXPECT_GT(leftBehind, 0) << "no process was killed while it saved";
    for (const std::string& name : names) {
        saveRecordings(folder / name, recordingsOf(few));
    }
    EXPECT_EQ(folder.entries(), names);
}

TEST(RecordingFile, CombinesTheFilesOfAFolder) {
    const TemporaryFolder folder;
    const auto expectError = [&](const std::string& message) {
        const std::string found = messageOf<RecordingFileError>([&] { idsIn(folder.path); });
        EXPECT_EQ(found.find((folder / "b.json:1:").string() + message), 0U) << found;
    };
    saveRecordings(folder / "a.json", {recording("late", 9), recording("both", 5)});
    saveRecordings(folder / "b.json", {recording("both", 5), recording("early", 1)});
    fs::create_directory(folder / "below.json");
    fill(folder / "below.json" / "c.json", "not looked at");
    fill(folder / "notes.txt", "not looked at");
    EXPECT_EQ(idsIn(folder.path), (Lines{"early", "both", "late"}));
    saveRecordings(folder / "b.json", {recording("both", 6)});
    expectError("1: two recordings with the id \"both\"");
    fill(folder / "b.json", "[");
    expectError("");
#ifndef _WIN32
    fs::remove(folder / "b.json");
    mkfifo((folder / "b.json").c_str(), 0666);
    expectError("1: not a regular file");
#endif
}

TEST(RecordingFile, CountsTheLimitsOverAWholeFolder) {
    const TemporaryFolder folder;
    saveRecordings(folder / "a.json", {recording("1", 1, 3), recording("2", 2, 3)});
    saveRecordings(folder / "b.json", {recording("3", 3, 4)});
    lapwing::RecordingLimits limits;
    limits.samples = 10;
    limits.recordings = 3;
    EXPECT_EQ(loadRecordings(folder.path, limits).size(), 3U);
    limits.recordings = 2;
    EXPECT_THROW(static_cast<void>(loadRecordings(folder.path, limits)), RecordingFileError);
    limits.recordings = 3;
    limits.samples = 9;
    EXPECT_THROW(static_cast<void>(loadRecordings(folder.path, limits)), RecordingFileError);
}

TEST(RecordingFile, AppendsToAFolderOneFileEach) {
    const TemporaryFolder folder;
    const std::string longId(70, 'x');
    const std::string longName = "20261121T144000Z-" + std::string(64, 'x');
    for (const std::string& id : {std::string("a/b"), std::string("a.b"), longId, longId + "y"}) {
        appendRecording(folder.path, recording(id));
        EXPECT_THROW(appendRecording(folder.path, recording(id)), std::invalid_argument);
    }
    EXPECT_EQ(folder.entries(), (Lines{"20261121T144000Z-a_b-2.json", "20261121T144000Z-a_b.json",
                                       longName + "-2.json", longName + ".json"}));
    EXPECT_EQ(idsIn(folder.path), (Lines{"a.b", "a/b", longId, longId + "y"}));
}

TEST(RecordingFile, ChangesNothingWhenItRefuses) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    const Recording known = recording("known");
    appendRecording(file, known);
    EXPECT_THROW(saveRecordings(file, {known, known}), std::invalid_argument);
    EXPECT_THROW(saveRecordings(folder.path, {known}), std::invalid_argument);
    for (const fs::path& target : {file, folder / "new.json", folder.path}) {
        EXPECT_THROW(appendRecording(target, recording("")), std::invalid_argument) << target;
    }
    EXPECT_EQ(messageOf<std::invalid_argument>([&] { appendRecording(file, known); }),
              file.string() + ": already has a recording \"known\"");
    EXPECT_EQ(contentsOf(file), formatted({known}));
    fill(file, "[");
    EXPECT_THROW(appendRecording(file, recording("new")), RecordingFileError);
    EXPECT_EQ(contentsOf(file), "[");
    EXPECT_EQ(folder.entries(), Lines{"runs.json"});
    const std::string missing = messageOf<std::system_error>([&] { idsIn(folder / "missing"); });
    EXPECT_EQ(missing.find((folder / "missing: ").string()), 0U) << missing;
}

TEST(RecordingFile, ReadsStreams) {
    const std::string text = formatted({recording("1"), recording("2", 1, 100'000)});
    std::istringstream stream(text);
    EXPECT_EQ(formatted(lapwing::readRecordings(stream, "input")), text);
    stream.str("{");
    stream.clear();
    const auto read = [&] { static_cast<void>(lapwing::readRecordings(stream, "input")); };
    EXPECT_EQ(messageOf<RecordingFileError>(read).find("input:1:"), 0U);
    stream.setstate(std::ios::badbit);
    EXPECT_THROW(read(), std::system_error);
}

}  // namespace
