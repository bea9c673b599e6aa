#include <lapwing/kit/report.h>

#include "figures.h"
#include "page_samples.h"

#include <gtest/gtest.h>

#include <locale>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

// Returns what is wrong with the nesting of a page's elements, or nothing.
std::string faultOf(const std::string& page) {
    std::vector<std::string> open;
    for (std::size_t at = page.find('<'); at != std::string::npos; at = page.find('<', at + 1)) {
        const std::string tag = page.substr(at + 1, page.find('>', at) - at - 1);
        const std::string name = tag.substr(0, tag.find(' '));
        if (tag.find('<') != std::string::npos) {
            return "a tag within " + tag;
        }
        if (name[0] == '/') {
            if (open.empty() || open.back() != name.substr(1)) {
                return "unexpected " + tag;
            }
            open.pop_back();
        } else if (name != "!DOCTYPE" && name != "meta" && tag.back() != '/') {
            open.push_back(name);
        }
    }
    return open.empty() ? "" : "no end of " + open.back();
}

// The names in the order of the summary, with a space behind each.
std::string orderOf(const std::string& page) {
    const std::string table = page.substr(0, page.find("</table>"));
    std::string names;
    for (std::size_t at = table.find("<bdi>"); at != std::string::npos;
         at = table.find("<bdi>", at + 1)) {
        names += table.substr(at + 5, table.find('<', at + 1) - at - 5) + ' ';
    }
    return names;
}

// The text with characters that are easy to type.
std::string plain(std::string text) {
    for (const auto& [from, to] : {std::pair{"\xC2\xA0", " "},
                                   {"\xE2\x80\xAF", " "},
                                   {"\xC2\xB5", "u"},
                                   {"\xC2\xB1", "+-"},
                                   {"\xE2\x88\x92", "-"},
                                   {"\xE2\x80\xA6", "..."}}) {
        for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
            text.replace(at, std::string(from).size(), to);
        }
    }
    return text;
}

void expectParts(const std::string& page, const std::vector<std::string>& parts) {
    for (const std::string& part : parts) {
        EXPECT_NE(plain(page).find(part), std::string::npos) << part;
    }
}

using Samples = decltype(TimingProfile::samples);

Recordings five(const Samples& samples) {
    Recordings recordings = recordingsOf({}, 5, 0);
    for (Recording& recording : recordings) {
        recording.profile.samples = samples;
        recording.labels.clear();
    }
    return recordings;
}

std::vector<std::string> allPages(const Recordings& recordings, const ReplayReport& report,
                                  const std::string& title) {
    return {recordingsPage(recordings, title), comparisonPage(recordings, recordings, title),
            replayPage(report, title)};
}

TEST(Pages, ShowAnyBytesAsTextAndLoadNothing) {
    Samples samples;
    ReplayReport report;
    for (const std::string& name : strangeNames) {
        samples[name] = {1ms};
        report.operations[name] = {1ms, name, {step(1, 1, 1)}};
    }
    for (const std::string& page : allPages(five(samples), report, strangeNames[0])) {
        EXPECT_EQ(faultOf(page), "");
        expectParts(
            page, {"<title>&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;</title>",
                   R"(<bdi>a\n\tb\x1b[31m\x85</bdi>)", "<bdi>hex:fffe686578</bdi>",
                   "<bdi>(empty name)</bdi>",
                   "<bdi title=\"" + strangeNames[4] + "\">" + std::string(100, 'W') + "...</bdi>",
                   "a &quot;quoted&quot; &amp; &#39;named&#39; thing --&gt;",
                   "content=\"default-src 'none'; "});
        for (const char* const forbidden : {"<script", "http:", "https:", "src=", "@import",
                                            "<link", "url(\"", "url(&", "url(h", "\x1b"}) {
            EXPECT_EQ(page.find(forbidden), std::string::npos) << forbidden;
        }
    }
}

TEST(Pages, ShowWhatMattersFirst) {
    EXPECT_EQ(orderOf(recordingsPage(five({{"a", {5ms}}, {"b", {2ms, 4ms}}, {"c", {9ms}}}), "")),
              "c b a ");
    const Recordings before = five({{"faster", {90ms}},
                                    {"gone", {1ms}},
                                    {"same", {3ms}},
                                    {"slower", {20ms}},
                                    {"slowest", {20ms}}});
    const Recordings after = five({{"faster", {70ms}},
                                   {"new", {1ms}},
                                   {"same", {3ms}},
                                   {"slower", {25ms}},
                                   {"slowest", {35ms}}});
    const std::string page = comparisonPage(before, after, "");
    EXPECT_EQ(orderOf(page), "slowest slower gone new faster same ");
    expectParts(page, {"slowest</bdi> <span class=\"badge bad\">slower<",
                       "gone</bdi> <span class=\"badge unsure\">only before<",
                       "new</bdi> <span class=\"badge plain\">only after<",
                       "faster</bdi> <span class=\"badge good\">faster<",
                       "same</bdi> <span class=\"badge plain\">same<",
                       "Slower by 15 ms, at 99% within +15 ms to +15 ms. ",
                       "Changes within +-1 ms count as none.</p>", "Faster by 20 ms",
                       "Only the recordings after have it."});
    const ReplayReport report{{{"late", {5ms, "", {step(5, 1, 900)}}},
                               {"never", {5ms, "", {}}},
                               {"over", {5ms, "", {step(5, 6000, 1), step(5, 7000, 1)}}},
                               {"punctual", {5ms, "", {step(5, 1, 9)}}},
                               {"unknown", {{}, "", {step(0, 7, 0)}}}}};
    const std::string replay = replayPage(report, "");
    EXPECT_EQ(orderOf(replay), "over unknown late punctual never ");
    expectParts(replay,
                {"over</bdi> <span class=\"badge bad\">2 overruns<", "Triangles are overruns",
                 "no recorded samples", "never called", "padding 5 ms", "worst 900 us"});
}

TEST(Pages, DrawExtremesAndSayWhatIsLeftOut) {
    constexpr Milliseconds most = Milliseconds::max();
    std::vector<Milliseconds> outlier(300, 12ms);
    outlier[7] = 3h;
    const Recordings recordings = five({{"none", {}},
                                        {"outlier", outlier},
                                        {"all", {-most, 0ms, most}},
                                        {"equal", {most, most}},
                                        {"negative", {-7ms}}});
    const ReplayReport replay{{{"early", {5ms, "", {step(5, 1, -9000)}}},
                               {"late", {0ms, "", {step(0, 604'800'000'000, 1)}}}}};
    std::vector<std::string> pages = allPages(recordings, replay, "");
    expectParts(pages[0], {"5 beyond the axis: the samples reach from 12 ms to 10800 s",
                           "Distribution of outlier, median 12 ms"});
    for (const std::string& page : allPages({}, {}, "")) {
        pages.push_back(page);
    }
    for (const std::string& page : pages) {
        EXPECT_EQ(faultOf(page), "");
        EXPECT_EQ(page.find("nan"), std::string::npos);
        EXPECT_EQ(page.find("inf"), std::string::npos);
    }
}

TEST(Pages, TellSeriesApartByMachineAndFewOtherLabels) {
    Recordings recordings = recordingsOf({{"Scan", 20}}, 30, 4);
    expectParts(recordingsPage(recordings, ""),
                {"system=linux", "<bdi>machine=bench-3, build=41</bdi></th><td>5</td><td>20</td>"});
    int number = 0;
    for (Recording& recording : recordings) {
        recording.labels = {{"commit", std::to_string(number)},
                            {"machine", std::to_string(number % 8)}};
        ++number;
    }
    const std::string page = recordingsPage(recordings, "");
    expectParts(page, {"<bdi>machine=4</bdi></th><td>4</td>", "<bdi>others</bdi></th><td>10</td>"});
    EXPECT_EQ(page.find("commit"), std::string::npos);
}

class Grouped : public std::numpunct<char> {
    [[nodiscard]] char do_thousands_sep() const override { return '.'; }
    [[nodiscard]] char do_decimal_point() const override { return ','; }
    [[nodiscard]] std::string do_grouping() const override { return "\1"; }
};

TEST(Pages, AreTheSameInAnyOrderAndLocale) {
    const Recordings recordings = recordingsOf({{"a", 20}, {"b", 9000}}, 9, 30);
    const Recordings backwards(recordings.rbegin(), recordings.rend());
    const ReplayReport report{{{"a", replayed(20, 15000, 40, 1)}}};
    const auto expected = allPages(recordings, report, "t");
    const std::locale previous = std::locale::global(std::locale(std::locale(), new Grouped));
    const auto actual = allPages(backwards, report, "t");
    std::locale::global(previous);
    EXPECT_EQ(actual, expected);
}

TEST(Figures, HaveTheirUnits) {
    const std::pair<double, std::string> cases[] = {
        {0, "0 ms"},          {0.0714, "71.4 us"}, {0.9996, "1 ms"},   {12.345, "12.3 ms"},
        {9999.4, "9999 ms"},  {9999.6, "10 s"},    {12345, "12.35 s"}, {604800000, "604800 s"},
        {9.2e18, "9.2e15 s"}, {-3.5, "-3.5 ms"},   {-0.002, "-2 us"}};
    for (const auto& [time, expected] : cases) {
        EXPECT_EQ(plain(timeText(time)), expected);
    }
    EXPECT_EQ(plain(shiftText(0.25) + ", " + countText(9999) + ", " + countText(1234567)),
              "+0.25 ms, 9999, 1 234 567");
}

}  // namespace
