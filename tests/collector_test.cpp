#include "support.h"

#include <lapwing/timing_profiles.h>

#include <gtest/gtest.h>

#include <future>

using namespace std::chrono_literals;

namespace {

using Notes = std::unordered_map<std::string, std::string>;
using Samples = std::unordered_map<std::string, std::vector<Milliseconds>>;

const std::string longName(100, 'n');

TEST(TimingProfileCollector, KeepsEverySampleInOrderAndTheFirstNoteOfEachKey) {
    TimingProfileCollector collector;
    collector.collectSample("a", 5ms);
    collector.collectSample("a", 5ms);
    TimingSampleHandler(std::ref(collector))("", -3ms);
    collector.collectSample("a", 4ms);
    collector.collectNote("a", "x");
    collector.collectNote("a", "y");
    collector.collectNotes({{"a", "z"}, {"b", "w"}});
    const TimingProfile profile = collector.extractProfile();
    EXPECT_EQ(profile.samples, Samples({{"a", {5ms, 5ms, 4ms}}, {"", {-3ms}}}));
    EXPECT_EQ(profile.notes, Notes({{"a", "x"}, {"b", "w"}}));
}

TEST(TimingProfileCollector, KeepsWhatItHadAndUnlocksWhenMemoryRunsOut) {
    TimingProfileCollector collector;
    const auto collectSample = [&] { collector.collectSample(longName, 2ms); };
    const auto expectNoSample = [&] {
        EXPECT_TRUE(collector.extractProfile().samples[longName].empty());
    };
    EXPECT_GE(failEachAllocation(collectSample, expectNoSample), 3U);
    const auto collectNote = [&] { collector.collectNote(longName, longName); };
    const auto expectNoNote = [&] { EXPECT_TRUE(collector.extractProfile().notes.empty()); };
    EXPECT_GE(failEachAllocation(collectNote, expectNoNote), 4U);
    EXPECT_EQ(collector.extractProfile().samples, Samples({{longName, {2ms}}}));
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
