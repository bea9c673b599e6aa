#include <lapwing/kit/report.h>

#include "course.h"
#include "distribution.h"
#include "figures.h"
#include "html.h"
#include "operation_samples.h"
#include "recordings_text.h"

#include <algorithm>
#include <numeric>

namespace lapwing {
namespace {

struct Shown {
    std::string name;
    OperationSamples operation;
    Numbers sorted;
    double total;
};

std::vector<Shown> largestFirst(const std::vector<Recording>& recordings) {
    std::vector<Shown> all;
    for (auto& [name, operation] : operationsOf(recordings)) {
        Numbers sorted = sortedSamples(operation.parts);
        const double total = std::accumulate(sorted.begin(), sorted.end(), 0.0);
        all.push_back({name, operation, std::move(sorted), total});
    }
    std::stable_sort(all.begin(), all.end(), [](const Shown& left, const Shown& right) {
        return left.total > right.total;
    });
    return all;
}

Row rowOf(const Shown& shown, std::size_t number) {
    const Numbers& sorted = shown.sorted;
    const auto at = [&](double percent) { return timeText(percentileOf(sorted, percent)); };
    const std::string link = "#o" + std::to_string(number);
    return {element("a", {{"href", link}}, nameToHtml(shown.name)),
            timeText(shown.total),
            countText(shown.operation.parts.size()),
            countText(sorted.size()),
            at(0),
            at(50),
            at(90),
            at(99),
            at(100),
            timeText(shown.total / static_cast<double>(sorted.size()))};
}

std::string summaryTable(const std::vector<Shown>& all) {
    const std::vector<Column> columns{{"operation", Align::Left},
                                      {"total"},
                                      {"recordings"},
                                      {"samples"},
                                      {"shortest"},
                                      {"median"},
                                      {"p90"},
                                      {"p99"},
                                      {"longest"},
                                      {"mean"}};
    std::vector<Row> rows;
    rows.reserve(all.size());
    for (const Shown& shown : all) {
        rows.push_back(rowOf(shown, rows.size() + 1));
    }
    return element("section", {{"class", "panel"}}, tableToHtml("All operations", columns, rows));
}

std::string sectionOf(const Shown& shown, std::size_t number, const SeriesOfRecordings& series) {
    const std::string& note = shown.operation.note;
    const std::string charts = element("div", {{"class", "charts"}},
                                       drawDistribution(shown.name, shown.sorted) +
                                           drawCourse(shown.name, shown.operation.parts, series));
    return element("section", {{"class", "panel"}, {"id", "o" + std::to_string(number)}},
                   element("h2", nameToHtml(shown.name)) +
                       (note.empty() ? "" : element("p", nameToHtml(note))) + charts +
                       courseLegend(shown.operation.parts, series)) +
           '\n';
}

}  // namespace

std::string recordingsPage(const std::vector<Recording>& recordings, const std::string& title) {
    const std::vector<Shown> all = largestFirst(recordings);
    const SeriesOfRecordings series(recordings);
    std::string body = element("p", describe(recordings));
    if (all.empty()) {
        return pageToHtml(title, body + element("p", "No operation has samples."));
    }
    body += element("p", {{"class", "quiet"}},
                    countText(all.size(), "operation") + ", the largest total time first.");
    body += summaryTable(all) + '\n' + courseMarkers();
    std::size_t number = 0;
    for (const Shown& shown : all) {
        body += sectionOf(shown, ++number, series);
    }
    return pageToHtml(title, body);
}

}  // namespace lapwing
