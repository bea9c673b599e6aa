#include "support.h"

#include <lapwing/timing_profiles.h>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

using Notes = std::unordered_map<std::string, std::string>;
using Samples = std::unordered_map<std::string, std::vector<Milliseconds>>;

const std::string longName(100, 'n');

void expectHolds(const TimingProfileCollector& collector, const Notes& notes,
                 const Samples& samples) {
    const TimingProfile profile = collector.extractProfile();
    EXPECT_EQ(profile.notes, notes);
    EXPECT_EQ(profile.samples, samples);
}

TEST(TimingProfileCollector, KeepsEverySampleInOrder) {
    TimingProfileCollector collector;
    expectHolds(collector, {}, {});
    collector.collectSample("a", 5ms);
    collector("a", 5ms);
    collector.collectSample("A", 0ms);
    TimingSampleHandler(std::ref(collector))("", -3ms);
    collector.collectSample("a", 4ms);
    expectHolds(collector, {}, {{"a", {5ms, 5ms, 4ms}}, {"A", {0ms}}, {"", {-3ms}}});
}

TEST(TimingProfileCollector, KeepsTheFirstNoteOfEachKey) {
    TimingProfileCollector collector;
    collector.collectNote("a", "x");
    collector.collectNote("a", "y");
    collector.collectNotes({{"a", "z"}, {"b", "w"}});
    collector.collectNotes({});
    collector.collectSample("c", 1ms);
    expectHolds(collector, {{"a", "x"}, {"b", "w"}}, {{"c", {1ms}}});
}

TEST(TimingProfileCollector, HandsOutCopies) {
    TimingProfileCollector collector;
    collector.collectSample("a", 1ms);
    collector.collectNote("a", "x");
    TimingProfile copy = collector.extractProfile();
    copy.samples["a"].clear();
    copy.notes.clear();
    expectHolds(collector, {{"a", "x"}}, {{"a", {1ms}}});
}

TEST(TimingProfileCollector, LosesNothingAndUnlocksWhenMemoryRunsOut) {
    LAPWING_SKIP_UNLESS_SUBSTITUTES_REACH_LIBRARY();
    TimingProfileCollector collector;
    collector.collectSample("kept", 1ms);
    std::size_t failures = failEachAllocation([&] { collector.collectSample(longName, 2ms); },
                                              [&] {
                                                  TimingProfile profile =
                                                      collector.extractProfile();
                                                  EXPECT_TRUE(profile.samples[longName].empty());
                                                  EXPECT_EQ(profile.samples["kept"].size(), 1U);
                                              });
    EXPECT_GE(failures, 3U);
    failures = failEachAllocation([&] { collector.collectNote(longName, longName); },
                                  [&] { EXPECT_TRUE(collector.extractProfile().notes.empty()); });
    EXPECT_GE(failures, 4U);
    TimingProfile copy;
    failures = failEachAllocation([&] { copy = collector.extractProfile(); }, [] {});
    EXPECT_GE(failures, 4U);
    EXPECT_EQ(copy.notes, Notes({{longName, longName}}));
    expectHolds(collector, copy.notes, {{"kept", {1ms}}, {longName, {2ms}}});
}

TEST(TimingProfileCollector, KeepsTheNotesAddedBeforeMemoryRanOut) {
    LAPWING_SKIP_UNLESS_SUBSTITUTES_REACH_LIBRARY();
    const Notes entries = {{longName, longName}, {"other " + longName, longName}};
    TimingProfileCollector collector;
    std::size_t kept = 0;
    failEachAllocation([&] { collector.collectNotes(entries); },
                       [&] {
                           const std::size_t size = collector.extractProfile().notes.size();
                           EXPECT_GE(size, kept);
                           kept = size;
                       });
    EXPECT_EQ(kept, 1U);
    expectHolds(collector, entries, {});
}

TEST(TimingProfileCollector, TakesAllThreadsAtOnce) {
    constexpr std::size_t runs = 500;
    const Notes batch = {{"first", "x"}, {"second", "x"}, {"third", "x"}};
    TimingProfileCollector collector;
    {
        const Threads threads([&] {
            for (std::size_t run = 0; run < runs; ++run) {
                collector.collectSample("shared", 1ms);
                collector.collectNote("note " + std::to_string(run), "text");
            }
            collector.collectNotes(batch);
        });
        for (std::size_t run = 0; run < runs; ++run) {
            const Notes notes = collector.extractProfile().notes;
            const std::size_t noted =
                notes.count("first") + notes.count("second") + notes.count("third");
            EXPECT_TRUE(noted == 0 || noted == batch.size()) << noted;
        }
    }
    const TimingProfile profile = collector.extractProfile();
    EXPECT_EQ(profile.samples.at("shared").size(), Threads::count * runs);
    EXPECT_EQ(profile.notes.size(), runs + batch.size());
}

}  // namespace
