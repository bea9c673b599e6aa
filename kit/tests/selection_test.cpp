#include <lapwing/kit/selection.h>

#include "support.h"

#include <gtest/gtest.h>

#include <utility>

using namespace lapwing;

namespace {

constexpr std::int64_t day = 86400;

Recording labelled(Recording made, const std::map<std::string, std::string>& labels) {
    made.labels = labels;
    return made;
}

std::vector<Recording> recordings() {
    Recording other{"d", {}, {{"build", "41"}}, {{{"noted", ""}}, {{"a&b", {Milliseconds(1)}}}}};
    return {labelled(recording("b", day), {{"build", "42"}, {"os", ""}}),
            labelled(recording("a", day), {{"build", "42"}}), recording("c", 2 * day - 1), other};
}

TEST(Selection, ChoosesByEachKey) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "b a c d "},
        {"label=build%3D42", "b a "},
        {"label=build=42&label=os%3d", "b "},
        {"l%61bel=build=4", ""},
        {"name=Scan", "b a c "},
        {"name=Scan&name=a%26b", "b a c d "},
        {"name=noted", "d "},
        {"since=1970-01-02", "b a c "},
        {"since=1970-01-02T23:59:59Z", "c "},
        {"until=1970-01-02T23:59:59Z", "b a d "},
        {"since=0000-01-01&until=9999-12-31", "b a c d "},
        {"last=2", "b c "},
        {"last=1&until=1970-01-02T12:00:00Z", "b "},
        {"last=99", "b a c d "},
        {"last=0", ""},
    };
    for (const auto& [query, ids] : cases) {
        EXPECT_EQ(idsOf(selected(recordings(), parseSelection(query))), ids) << query;
    }
}

TEST(Selection, TakesOtherNamesOut) {
    Recording both = recording("both");
    both.profile.samples["\xFF"] = {Milliseconds(2)};
    both.profile.notes["Scan"] = "";
    for (const char* const query : {"name=hex:ff", "name=%ff"}) {
        const TimingProfile left = selected({both}, parseSelection(query)).at(0).profile;
        EXPECT_EQ(left.samples, (decltype(left.samples){{"\xFF", {Milliseconds(2)}}}));
        EXPECT_TRUE(left.notes.empty());
    }
}

TEST(Selection, NamesThePairThatIsWrong) {
    for (const std::string pair :
         {"name", "Name=a", "=a", "label=build", "name=%f", "name=%", "name=%+1", "name=hex:41",
          "since=2026-02-30", "since=2026-02-20T", "until=now", "last=-1", "last=", "last=1x",
          "last=99999999999999999999", "last=2&last=2", "since=2026-01-01&since=2026-01-02",
          "label=a=1&label=a=2"}) {
        const std::string last = pair.substr(pair.find('&') + 1);
        const std::string message =
            messageOf<std::invalid_argument>([&] { (void)parseSelection("name=b&" + pair); });
        EXPECT_EQ(message.find("the filter \"" + last + "\": "), 0U) << message;
    }
}

}  // namespace
