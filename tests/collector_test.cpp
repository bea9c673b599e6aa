#include "support.h"

#include <lapwing/timing_profiles.h>

#include <gtest/gtest.h>

#include <future>

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
    TimingSampleHandler(std::ref(collector))("", -3ms);
    collector.collectSample("A", 0ms);
    collector.collectSample("a", 4ms);
    expectHolds(collector, {}, {{"a", {5ms, 5ms, 4ms}}, {"A", {0ms}}, {"", {-3ms}}});
}

TEST(TimingProfileCollector, KeepsTheFirstNoteOfEachKeyAndHandsOutCopies) {
    TimingProfileCollector collector;
    collector.collectNote("a", "x");
    collector.collectNote("a", "y");
    collector.collectNotes({{"a", "z"}, {"b", "w"}});
    collector.collectNotes({});
    collector.collectSample("c", 1ms);
    TimingProfile copy = collector.extractProfile();
    copy.samples["c"].clear();
    copy.notes.clear();
    expectHolds(collector, {{"a", "x"}, {"b", "w"}}, {{"c", {1ms}}});
}

TEST(TimingProfileCollector, KeepsWhatItHadAndUnlocksWhenMemoryRunsOut) {
    TimingProfileCollector collector;
    const auto collectSample = [&] { collector.collectSample(longName, 2ms); };
    EXPECT_GE(failEachAllocation(
                  collectSample,
                  [&] { EXPECT_TRUE(collector.extractProfile().samples[longName].empty()); }),
              3U);
    const auto collectNote = [&] { collector.collectNote(longName, longName); };
    EXPECT_GE(failEachAllocation(collectNote,
                                 [&] { EXPECT_TRUE(collector.extractProfile().notes.empty()); }),
              4U);
    expectHolds(collector, {{longName, longName}}, {{longName, {2ms}}});
}

TEST(TimingProfileCollector, TakesAllThreadsAtOnce) {
    constexpr std::size_t runs = 500;
    const Notes batch = {{"first", "x"}, {"second", "x"}, {"third", "x"}};
    TimingProfileCollector collector;
    const auto collect = [&] {
        for (std::size_t run = 0; run < runs; ++run) {
            collector.collectSample("shared", 1ms);
        }
        collector.collectNotes(batch);
    };
    std::vector<std::future<void>> threads(4);
    for (std::future<void>& thread : threads) {
        thread = std::async(std::launch::async, collect);
    }
    for (std::size_t run = 0; run < runs; ++run) {
        const std::size_t noted = collector.extractProfile().notes.size();
        EXPECT_TRUE(noted == 0 || noted == batch.size()) << noted;
    }
    for (std::future<void>& thread : threads) {
        thread.get();
    }
    EXPECT_EQ(collector.extractProfile().samples["shared"].size(), threads.size() * runs);
}

}  // namespace
