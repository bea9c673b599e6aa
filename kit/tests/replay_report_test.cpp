#include <lapwing/kit/replay.h>

#include <gtest/gtest.h>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

const ReplayStep inTime{10ms, 4ms, 10ms};
const ReplayStep late{10ms, 10'999'999ns, 10'999'999ns};
const ReplayStep overrun{10ms, 11ms, 11ms};

TEST(ReplayReport, CountsOverrunsAndLateness) {
    ReplayedOperation known{10ms, "", {overrun, late}};
    const ReplayedOperation unknown{std::nullopt, "", known.steps};
    EXPECT_FALSE((ReplayedOperation{10ms, "", {}}).lateness());
    EXPECT_FALSE(unknown.lateness());
    EXPECT_EQ(unknown.overruns(), 0U);
    EXPECT_EQ(unknown.callsWithoutData(), 2U);
    EXPECT_EQ(known.overruns(), 1U);
    EXPECT_EQ(known.callsWithoutData(), 0U);

    known.steps.insert(known.steps.end(), 98, inTime);
    const Lateness lateness = known.lateness().value();
    EXPECT_EQ(lateness.p50, 0ns);
    EXPECT_EQ(lateness.p99, 999'999ns);
    EXPECT_EQ(lateness.worst, 1ms);
}

TEST(ReplayReport, IsATableOfPlainText) {
    const ReplayReport report{{{"Scan", {12ms, "a\xFF", {inTime, overrun, overrun}}},
                               {"\xC3\xA4\n\x1B\xC2\x85\x7F", {std::nullopt, "", {{{}, 2ms, 2ms}}}},
                               {"idle", {5ms, "", {}}},
                               {"new", {std::nullopt, "never\nrecorded", {}}}}};
    EXPECT_EQ("\n" + formatReport(report), R"(
operation        runs  recorded    work  padded    final  late p50  late p99  late worst  overruns  note
Scan                3     12 ms  8.7 ms  2.0 ms  10.7 ms  1.000 ms  1.000 ms    1.000 ms         2  hex:61ff
idle                0      5 ms       -       -        -         -         -           -         0  never called
new                 0         -       -       -        -         -         -           -         0  no recorded samples; never\nrecorded
ä\n\x1b\x85\x7f     1         -  2.0 ms  0.0 ms   2.0 ms         -         -           -         0  no recorded samples
)");
}

}  // namespace
