#include <lapwing/kit/report.h>

#include "figures.h"
#include "html.h"
#include "plot.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

namespace lapwing {
namespace {

using Times = std::chrono::duration<double, std::milli>;
using Steps = std::vector<ReplayStep>;

constexpr const char* none = "\xE2\x80\x93";
constexpr std::size_t mostPoints = 100;
constexpr double betweenMarks = 7;
constexpr double shortest = 0.001;  // ms that the axis of lateness can show

double asMilliseconds(Times time) {
    return time.count();
}

// The means of an operation's calls, in milliseconds.
struct Means {
    double target = 0;
    double work = 0;
    double padded = 0;
    double ended = 0;
};

double paddedBy(const ReplayStep& step) {
    return std::max(0.0, asMilliseconds(step.target) - asMilliseconds(step.work));
}

double lateBy(const ReplayStep& step) {
    return asMilliseconds(step.ended) - asMilliseconds(step.target);
}

Means meansOf(const Steps& steps) {
    const auto mean = [&](const auto& figureOf) {
        double sum = 0;
        for (const ReplayStep& step : steps) {
            sum += figureOf(step);
        }
        return steps.empty() ? 0 : sum / static_cast<double>(steps.size());
    };
    return {mean([](const ReplayStep& step) { return asMilliseconds(step.target); }),
            mean([](const ReplayStep& step) { return asMilliseconds(step.work); }), mean(paddedBy),
            mean([](const ReplayStep& step) { return asMilliseconds(step.ended); })};
}

struct Shown {
    std::string name;
    const ReplayedOperation* operation;
    Means means;
    std::size_t overruns;
    std::optional<Lateness> lateness;
};

std::vector<Shown> worstFirst(const ReplayReport& report) {
    std::vector<Shown> all;
    for (const auto& [name, operation] : report.operations) {
        all.push_back({name, &operation, meansOf(operation.steps), operation.overruns(),
                       operation.lateness()});
    }
    const auto badness = [](const Shown& shown) {
        return std::make_tuple(
            shown.overruns, shown.operation->callsWithoutData(),
            shown.lateness ? shown.lateness->worst : std::chrono::nanoseconds::min());
    };
    std::stable_sort(all.begin(), all.end(), [&](const Shown& left, const Shown& right) {
        return badness(left) > badness(right);
    });
    return all;
}

struct State {
    std::string words;
    const char* tone;
};

State stateOf(const Shown& shown) {
    if (shown.overruns > 0) {
        return {countText(shown.overruns, "overrun"), "bad"};
    }
    if (!shown.operation->recorded) {
        return {"no recorded samples", "unsure"};
    }
    return shown.operation->steps.empty() ? State{"never called", "plain"}
                                          : State{"no overruns", "good"};
}

std::string badge(const State& state) {
    return element("span", {{"class", std::string("badge ") + state.tone}}, state.words);
}

std::string recordedText(const ReplayedOperation& operation) {
    return operation.recorded ? timeText(asMilliseconds(*operation.recorded)) : none;
}

Row rowOf(const Shown& shown, std::size_t number) {
    const bool wasCalled = !shown.operation->steps.empty();
    const bool wasPadded = wasCalled && shown.operation->recorded;
    const auto mean = [](bool isThere, double time) { return isThere ? timeText(time) : none; };
    const auto late = [&](std::chrono::nanoseconds Lateness::*figure) {
        return shown.lateness ? timeText(asMilliseconds((*shown.lateness).*figure)) : none;
    };
    const std::string link = "#o" + std::to_string(number);
    return {element("a", {{"href", link}}, nameToHtml(shown.name)),
            countText(shown.operation->steps.size()),
            shown.overruns > 0 ? badge({countText(shown.overruns), "bad"}) : "0",
            recordedText(*shown.operation),
            mean(wasPadded, shown.means.target),
            mean(wasCalled, shown.means.work),
            mean(wasPadded, shown.means.padded),
            mean(wasCalled, shown.means.ended),
            late(&Lateness::p50),
            late(&Lateness::p99),
            late(&Lateness::worst)};
}

std::string summaryTable(const std::vector<Shown>& all) {
    const std::vector<Column> columns{{"operation", Align::Left},
                                      {"calls"},
                                      {"overruns"},
                                      {"recorded"},
                                      {"target"},
                                      {"work"},
                                      {"padded"},
                                      {"lasted"},
                                      {"late p50"},
                                      {"late p99"},
                                      {"late worst"}};
    std::vector<Row> rows;
    rows.reserve(all.size());
    for (const Shown& shown : all) {
        rows.push_back(rowOf(shown, rows.size() + 1));
    }
    return element("section", {{"class", "panel"}},
                   tableToHtml("All operations, with averages of their calls", columns, rows)) +
           '\n';
}

struct Part {
    const char* name;
    double time;
};

// Parts of one bar, one after the other.
std::string drawBar(const Plot& plot, double y, const std::vector<Part>& parts) {
    std::string bar;
    double time = 0;
    for (const Part& part : parts) {
        const double left = plot.across(time);
        time += part.time;
        const std::string path = 'M' + point(left, y) + 'H' + plainNumber(plot.across(time), 1) +
                                 "v18H" + plainNumber(left, 1) + 'z';
        bar += part.time > 0 ? emptyElement("path", {{"class", part.name}, {"d", path}}) : "";
    }
    return bar;
}

std::string keyOf(const Part& part) {
    const std::string swatch =
        element("svg", {{"class", "swatch"}, {"viewBox", "0 0 1 1"}, {"aria-hidden", "true"}},
                emptyElement("path", {{"class", part.name}, {"d", "M0 0h1v1h-1z"}}));
    return element("span", {{"class", "nowrap"}},
                   swatch + ' ' + part.name + ' ' + timeText(part.time));
}

std::string keysOf(const std::vector<Part>& parts) {
    std::string markup;
    for (const Part& part : parts) {
        markup += (markup.empty() ? "" : ", ") + keyOf(part);
    }
    return markup;
}

std::string drawAverages(const Shown& shown) {
    const bool hasData = shown.operation->recorded.has_value();
    const Means& means = shown.means;
    std::vector<Part> recorded;
    std::vector<Part> lasted{{"work", means.work}};
    if (hasData) {
        recorded = {{"recorded", asMilliseconds(*shown.operation->recorded)}};
        lasted.push_back({"padding", means.padded});
        lasted.push_back({"late", std::max(0.0, means.ended - means.work - means.padded)});
    }
    const double longest =
        std::max({means.ended, hasData ? recorded.front().time : 0, means.target, shortest});
    const Plot plot =
        makePlot({{0, longest * 1.04}, durationTicks}, {{0, 1}, noTicks}, 0, hasData ? 130 : 78);
    std::string content;
    double y = 22;
    const auto addRow = [&](const std::string& text, const std::vector<Part>& parts) {
        content += label(plot.x.low, y - 6, text, Anchor::Start, "mark") + drawBar(plot, y, parts);
        y += 52;
    };
    if (hasData) {
        addRow("recorded " + recordedText(*shown.operation), recorded);
    }
    addRow("lasted " + timeText(means.ended), lasted);
    if (hasData) {
        const std::string target = 'M' + point(plot.across(means.target), y - 57) + "v28";
        content += emptyElement("path", {{"class", "marks"}, {"d", target}});
    }
    const std::string title = "Average call of " + shortened(shown.name);
    return figure(drawing(plot, title, content),
                  "The average call: " + keysOf(lasted) +
                      (hasData ? ". The line is the target, " + timeText(means.target) : "") + '.');
}

double onAxis(double milliseconds) {
    return std::log10(std::max(milliseconds, shortest));
}

std::vector<double> sortedLateness(const Steps& steps) {
    std::vector<double> late;
    late.reserve(steps.size());
    for (const ReplayStep& step : steps) {
        late.push_back(onAxis(lateBy(step)));
    }
    std::sort(late.begin(), late.end());
    return late;
}

double percentAt(const std::vector<double>& sorted, double value) {
    const auto end = std::upper_bound(sorted.begin(), sorted.end(), value);
    return 100 * static_cast<double>(end - sorted.begin()) / static_cast<double>(sorted.size());
}

std::string drawCurve(const Plot& plot, const std::vector<double>& sorted) {
    std::string path = 'M' + point(plot.across(sorted.front()), plot.up(0));
    const std::size_t points = std::min(mostPoints, sorted.size());
    for (std::size_t i = 1; i <= points; ++i) {
        const std::size_t rank = i * sorted.size() / points;
        const double share = 100 * static_cast<double>(rank) / static_cast<double>(sorted.size());
        path += 'H' + plainNumber(plot.across(sorted[rank - 1]), 1) + 'V' +
                plainNumber(plot.up(share), 1);
    }
    path += 'H' + plainNumber(plot.x.high, 1);
    return emptyElement("path", {{"class", "curve"}, {"d", path}});
}

Steps overrunsOf(const Steps& steps) {
    Steps overruns;
    std::copy_if(steps.begin(), steps.end(), std::back_inserter(overruns),
                 [](const ReplayStep& step) {
                     return std::chrono::floor<Milliseconds>(step.work) > step.target;
                 });
    return overruns;
}

// Marks that would hide each other are left out.
std::string drawOverruns(const Plot& plot, const Steps& steps, const std::vector<double>& sorted) {
    std::vector<double> late = sortedLateness(overrunsOf(steps));
    std::reverse(late.begin(), late.end());
    std::string path;
    double previous = plot.x.high + betweenMarks;
    for (const double value : late) {
        const double x = plot.across(value);
        if (x <= previous - betweenMarks) {
            path += 'M' + point(x - 4, plot.up(percentAt(sorted, value)) + 3) + "l4-7 4 7z";
            previous = x;
        }
    }
    return emptyElement("path", {{"class", "overruns"}, {"d", path}});
}

std::string drawLateness(const Shown& shown) {
    const std::vector<double> sorted = sortedLateness(shown.operation->steps);
    const double low = std::floor(sorted.front());
    const Extent values{low, std::max(low + 1, std::ceil(sorted.back()))};
    std::vector<Mark> marks;
    for (const auto& [name, figure] :
         {std::pair{"p50", &Lateness::p50}, {"p99", &Lateness::p99}, {"worst", &Lateness::worst}}) {
        const double time = asMilliseconds((*shown.lateness).*figure);
        marks.push_back({name, timeText(time), onAxis(time)});
    }
    const Plot plot =
        makePlot({values, decadeTicks}, {{0, 100}, percentTicks}, roomForMarks(marks.size()), 200);
    const std::string overruns =
        shown.overruns == 0
            ? ""
            : " Triangles are overruns: the work alone took longer than the target.";
    return figure(
        drawing(plot, "Share of the calls of " + shortened(shown.name) + " by how late they ended",
                drawCurve(plot, sorted) + drawMarks(plot, marks) +
                    drawOverruns(plot, shown.operation->steps, sorted)),
        "Share of calls that ended at most so late." + overruns);
}

std::string chartsOf(const Shown& shown) {
    if (shown.operation->steps.empty()) {
        return element("p", {{"class", "quiet"}},
                       "Recorded " + recordedText(*shown.operation) + ".");
    }
    return element("div", {{"class", "charts"}},
                   drawAverages(shown) + (shown.lateness ? drawLateness(shown) : ""));
}

std::string sectionOf(const Shown& shown, std::size_t number) {
    const State state = stateOf(shown);
    const std::string& note = shown.operation->note;
    return element("section",
                   {{"class", std::string("panel ") + state.tone},
                    {"id", "o" + std::to_string(number)}},
                   element("h2", nameToHtml(shown.name) + ' ' + badge(state)) +
                       (note.empty() ? "" : element("p", nameToHtml(note))) + chartsOf(shown)) +
           '\n';
}

std::string headline(const std::vector<Shown>& all) {
    std::size_t calls = 0;
    std::size_t overruns = 0;
    std::size_t withoutData = 0;
    for (const Shown& shown : all) {
        calls += shown.operation->steps.size();
        overruns += shown.overruns;
        withoutData += shown.operation->callsWithoutData();
    }
    const std::string missing =
        withoutData == 0
            ? ""
            : badge({countText(withoutData, "call") + " without recorded samples", "unsure"});
    return element("p", countText(calls, "call") + " of " + countText(all.size(), "operation")) +
           element("p", badge({countText(overruns, "overrun"), overruns > 0 ? "bad" : "good"}) +
                            ' ' + missing) +
           element("p", {{"class", "quiet"}},
                   "Most overruns first, then calls without recorded samples, then the latest.");
}

}  // namespace

std::string replayPage(const ReplayReport& report, const std::string& title) {
    const std::vector<Shown> all = worstFirst(report);
    if (all.empty()) {
        return pageToHtml(title, element("p", "Nothing was replayed."));
    }
    std::string body = headline(all) + summaryTable(all);
    std::size_t number = 0;
    for (const Shown& shown : all) {
        body += sectionOf(shown, ++number);
    }
    return pageToHtml(title, body);
}

}  // namespace lapwing
