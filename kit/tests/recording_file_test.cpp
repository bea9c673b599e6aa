#include <lapwing/kit/recording_file.h>

#include "file_support.h"
#include "support.h"

#include <sstream>
#include <system_error>

#ifndef _WIN32
#include <sys/stat.h>
#endif

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

using RecordingFile = InNewFolder;

std::string errorOfLoading(const fs::path& file) {
    return messageOf<std::runtime_error>([&] { return loadRecordings(file); });
}

TEST_F(RecordingFile, LosesNothingOfEightProcessesThatAppend) {
    for (std::future<int>& process : startEight("append")) {
        EXPECT_EQ(process.get(), 0);
    }
    EXPECT_EQ(loadRecordings("runs.json").size(), 800U);
    EXPECT_EQ(entries(), Names{"runs.json"});
}

// Each process dies somewhere within 10 ms, while others wait for it.
TEST_F(RecordingFile, IsCompleteForReadersAndAfterSavingProcessesDie) {
    saveRecordings("runs.json", {recording("1")});
    for (int round = 0; round < 40; ++round) {
        for (std::future<int>& process : startEight("save")) {
            do {
                const auto samples = loadRecordings("runs.json").at(0).profile.samples.at("Scan");
                EXPECT_TRUE(samples.size() == 1 || samples.size() == 50'000) << samples.size();
            } while (process.wait_for(0s) != std::future_status::ready);
            EXPECT_EQ(process.get(), 0);
        }
        EXPECT_EQ(loadRecordings("runs.json").size(), 1U);
    }
    saveRecordings("runs.json", {recording("1")});
    EXPECT_EQ(entries(), Names{"runs.json"});
}

#ifndef _WIN32
TEST_F(RecordingFile, RemovesWhatADeadProcessLeftAndTakesOverItsLock) {
    for (std::future<int>& process : startEight("die")) {
        EXPECT_EQ(process.get(), 0);
    }
    EXPECT_EQ(entries(), Names{".runs.json.lapwing-new"});
    saveRecordings("runs.json", {recording("1")});
    EXPECT_EQ(entries(), Names{"runs.json"});
}
#endif

TEST_F(RecordingFile, CombinesTheFilesOfAFolder) {
    saveRecordings("a.json", {recording("late", 9), recording("both", 5)});
    saveRecordings("b.json", {recording("both", 5), recording("early", -1)});
    fs::create_directory("below.json");
    fill("below.json/c.json", "not looked at");
    fill("notes.txt", "not looked at");
    EXPECT_EQ(idsOf(loadRecordings(".")), "early both late ");

    const std::string file = (fs::path(".") / "b.json").string();
    saveRecordings("b.json", {recording("both", 6)});
    EXPECT_EQ(errorOfLoading("."),
              file + R"(:1:1: two recordings with the id "both" have different contents; )" +
                  "the other is in " + (fs::path(".") / "a.json").string());
    fill("b.json", "[]");
    EXPECT_EQ(errorOfLoading("."), file + ":1:1: the file must be an object, not an array");
}

TEST_F(RecordingFile, CountsTheLimitsOverAWholeFolder) {
    saveRecordings("a.json", {recording("1", 1, Durations(3)), recording("2", 2, Durations(3))});
    saveRecordings("b.json", {recording("3", 3, Durations(4)), recording("2", 2, Durations(3))});
    RecordingLimits limits;
    limits.recordings = 3;
    limits.samples = 10;
    EXPECT_EQ(idsOf(loadRecordings(".", limits)), "1 2 3 ");
    limits.recordings = 2;
    EXPECT_THROW((void)loadRecordings(".", limits), RecordingFileError);
    EXPECT_THROW(appendRecording("a.json", recording("4"), limits), std::invalid_argument);
    EXPECT_EQ(idsOf(loadRecordings("a.json")), "1 2 ");
    limits = {limits.bytes, 3, 1, 1, 9};
    EXPECT_THROW((void)loadRecordings(".", limits), RecordingFileError);
}

TEST_F(RecordingFile, AppendsToAFolderOneFileEach) {
    const std::string longId(70, 'x');
    for (const std::string& id : {std::string("a/b"), std::string("a.b"), longId}) {
        appendRecording(".", recording(id, 1'795'272'000));
        EXPECT_THROW(appendRecording(".", recording(id, 1'795'272'000)), std::invalid_argument);
    }
    EXPECT_EQ(entries(), (Names{"20261121T144000Z-a_b.json", "20261121T144000Z-a_b-2.json",
                                "20261121T144000Z-" + std::string(64, 'x') + ".json"}));
    EXPECT_EQ(idsOf(loadRecordings(".")), "a.b a/b " + longId + ' ');
}

TEST_F(RecordingFile, ChangesNothingWhenItRefuses) {
    const Recording known = recording("known");
    appendRecording("runs.json", known);
    const std::pair<std::string, std::string> badIds[] = {
        {"known", R"(recording "known": the id is there twice)"},
        {"", R"(recording "": the id is empty)"},
        {"a\nb", R"(recording "a\nb": the id has control characters)"},
        {"\xFF", "recording \"\xEF\xBF\xBD\": the id is not UTF-8"}};
    for (const auto& [id, error] : badIds) {
        const auto save = [&, bad = recording(id)] { saveRecordings("runs.json", {known, bad}); };
        EXPECT_EQ(messageOf<std::invalid_argument>(save), error);
    }
    for (const char* target : {"runs.json", "new.json", "."}) {
        EXPECT_THROW(appendRecording(target, recording("")), std::invalid_argument) << target;
    }
    EXPECT_EQ(messageOf<std::invalid_argument>([&] { appendRecording("runs.json", known); }),
              R"(runs.json: already has a recording "known")");
    EXPECT_EQ(contentsOf("runs.json"), format({known}));
    fill("runs.json", "[");
    EXPECT_THROW(appendRecording("runs.json", known), RecordingFileError);
    EXPECT_EQ(contentsOf("runs.json"), "[");
    EXPECT_EQ(entries(), Names{"runs.json"});
    EXPECT_EQ(errorOfLoading("missing.json").substr(0, 14), "missing.json: ");
}

TEST_F(RecordingFile, RefusesWhatIsNotARegularFile) {
    fs::create_directory("folder");
    Names targets = {"folder", "folder/", "folder/."};
#ifndef _WIN32
    mkfifo("pipe.json", 0666);
    targets.insert({"pipe.json", "/dev/null"});
    EXPECT_EQ(errorOfLoading("."), "./pipe.json:1:1: not a regular file");
#endif
    const Names before = entries();
    for (const std::string& target : targets) {
        const auto save = [&] { saveRecordings(target, {}); };
        EXPECT_EQ(messageOf<std::invalid_argument>(save), target + ": not a regular file");
    }
    EXPECT_EQ(entries(), before);
    EXPECT_TRUE(fs::is_empty("folder"));
}

TEST(RecordingStream, ThrowsIfReadingFails) {
    std::istringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_THROW((void)readRecordings(stream, "input"), std::system_error);
}

}  // namespace
