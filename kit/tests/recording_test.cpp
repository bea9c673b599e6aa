#include <lapwing/kit/recording.h>

#include <gtest/gtest.h>

#include <stdexcept>

using lapwing::flattened;
using lapwing::makeRecording;
using lapwing::merged;
using lapwing::Recording;

namespace {

using Samples = std::vector<Milliseconds>;

Recording at(int seconds, const std::string& id, const Samples& samples = {Milliseconds(1)}) {
    Recording recording;
    recording.id = id;
    recording.recorded += std::chrono::seconds(seconds);
    recording.profile.samples["Scan"] = samples;
    return recording;
}

std::string idsOf(const std::vector<Recording>& recordings) {
    std::string ids;
    for (const Recording& recording : recordings) {
        ids += recording.id;
    }
    return ids;
}

std::string errorOfMerging(const Recording& first, const Recording& second) {
    try {
        static_cast<void>(merged({first}, {second}));
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "merged";
}

}  // namespace

TEST(Recording, IsMadeWithAFreshIdAndTheTime) {
    const auto before = std::chrono::system_clock::now();
    const Recording recording = makeRecording({});
    const auto second = std::chrono::floor<std::chrono::seconds>(recording.recorded);
    EXPECT_EQ(recording.recorded, second);
    EXPECT_LE(std::chrono::floor<std::chrono::seconds>(before), recording.recorded);
    EXPECT_LE(recording.recorded, std::chrono::system_clock::now());
    EXPECT_EQ(recording.id.size(), 32U);
    EXPECT_EQ(recording.id.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(recording.id, makeRecording({}).id);
}

TEST(Recording, MergesByIdInTheOrderOfTimeAndId) {
    const std::vector<Recording> some = {at(3, "a"), at(1, "d"), at(2, "b")};
    const std::vector<Recording> others = {at(1, "d"), at(1, "c"), at(-1, "e"), at(3, "a")};
    const std::vector<Recording> both = merged(some, others);
    EXPECT_EQ(idsOf(both), "ecdba");
    EXPECT_EQ(idsOf(merged(both, others)), "ecdba");
    EXPECT_EQ(idsOf(merged(others, some)), "ecdba");
    EXPECT_EQ(idsOf(merged({at(2, "b"), at(1, "a"), at(2, "b")}, {})), "ab");
    Recording late = at(2, "a");
    late.recorded += std::chrono::milliseconds(999);
    EXPECT_EQ(idsOf(merged({at(2, "b")}, {late})), "ab");
}

TEST(Recording, MergesTheSameIdOnlyWithTheSameContents) {
    const Recording original = at(1, "a\n");
    Recording same = original;
    same.recorded += std::chrono::milliseconds(999);
    same.profile.samples["without samples"] = {};
    EXPECT_EQ(idsOf(merged({original}, {same})), "a\n");
    EXPECT_EQ(idsOf(merged({same}, {original})), "a\n");

    std::vector<Recording> others(6, original);
    others[0].recorded += std::chrono::seconds(1);
    others[1].labels["build"] = "";
    others[2].profile.notes["Scan"] = "";
    others[3].profile.samples["Scan"].emplace_back(1);
    others[4].profile.samples["Load"] = {Milliseconds(1)};
    others[5].profile.samples = {{"Load", {Milliseconds(1)}}};
    for (const Recording& other : others) {
        EXPECT_EQ(errorOfMerging(original, other),
                  R"(two recordings with the id "a\n" have different contents)");
    }
}

TEST(Recording, FlattensInTheOrderGiven) {
    std::vector<Recording> recordings = {at(2, "b", {Milliseconds(5), Milliseconds(4)}),
                                         at(1, "a", {Milliseconds(3)})};
    recordings[0].profile.notes["Scan"] = "first";
    recordings[1].profile.notes["Scan"] = "second";
    recordings[1].profile.notes["Load"] = "other";
    const TimingProfile profile = flattened(recordings);
    EXPECT_EQ(profile.samples.at("Scan"),
              (Samples{Milliseconds(5), Milliseconds(4), Milliseconds(3)}));
    EXPECT_EQ(profile.notes.at("Scan"), "first");
    EXPECT_EQ(profile.notes.at("Load"), "other");
}
