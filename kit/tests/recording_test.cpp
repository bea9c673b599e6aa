#include <lapwing/kit/recording.h>

#include "support.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

TEST(Recording, IsMadeWithAFreshIdAndTheTime) {
    const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const Recording made = makeRecording({});
    EXPECT_EQ(made.recorded, std::chrono::floor<std::chrono::seconds>(made.recorded));
    EXPECT_LE(before, made.recorded);
    EXPECT_LE(made.recorded, std::chrono::system_clock::now());
    EXPECT_EQ(made.id.size(), 32U);
    EXPECT_EQ(made.id.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(made.id, makeRecording({}).id);
}

TEST(Recording, MergesByIdInTheOrderOfTimeAndId) {
    const std::vector<Recording> some = {recording("a", 3), recording("d", 1), recording("b", 2),
                                         recording("a", 3)};
    std::vector<Recording> others = {recording("c", 1), recording("d", 1), recording("e", -1)};
    others[0].recorded += 999ms;
    const std::vector<Recording> both = merged(some, others);
    EXPECT_EQ(idsOf(both), "e c d b a ");
    EXPECT_EQ(idsOf(merged(both, others)), "e c d b a ");
    EXPECT_EQ(idsOf(merged(others, some)), "e c d b a ");
}

TEST(Recording, MergesTheSameIdOnlyWithTheSameContents) {
    const Recording original = recording("a\n", 1);
    Recording same = original;
    same.recorded += 999ms;
    same.profile.samples["without samples"] = {};
    EXPECT_EQ(idsOf(merged({original}, {same})), "a\n ");
    EXPECT_EQ(idsOf(merged({same}, {original})), "a\n ");

    std::vector<Recording> others(6, original);
    others[0].recorded += 1s;
    others[1].labels["build"] = "";
    others[2].profile.notes["Scan"] = "";
    others[3].profile.samples["Scan"].emplace_back(1);
    others[4].profile.samples["Load"] = {1ms};
    others[5].profile.samples = {{"Load", {1ms}}};
    for (const Recording& other : others) {
        EXPECT_EQ(messageOf<std::invalid_argument>([&] { return merged({original}, {other}); }),
                  R"(two recordings with the id "a\n" have different contents)");
    }
}

TEST(Recording, FlattensInTheOrderGiven) {
    std::vector<Recording> recordings = {recording("b", 2, {5ms, 4ms}), recording("a", 1, {3ms})};
    recordings[0].profile.notes["Scan"] = "first";
    recordings[1].profile.notes = {{"Scan", "second"}, {"Load", "other"}};
    const TimingProfile profile = flattened(recordings);
    EXPECT_EQ(profile.samples.at("Scan"), (Durations{5ms, 4ms, 3ms}));
    EXPECT_EQ(profile.notes.at("Scan"), "first");
    EXPECT_EQ(profile.notes.at("Load"), "other");
}

}  // namespace
