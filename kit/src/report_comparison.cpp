#include <lapwing/kit/comparison.h>
#include <lapwing/kit/report.h>

#include "distribution.h"
#include "figures.h"
#include "html.h"
#include "operation_samples.h"
#include "plot.h"
#include "recordings_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

namespace lapwing {
namespace {

constexpr std::size_t mostRecordings = 64;  // that compare() takes into account
constexpr const char* none = "\xE2\x80\x93";
constexpr const char* plusMinus = "\xC2\xB1";

struct Style {
    Verdict verdict;
    const char* word;
    const char* tone;
};

// In the order in which they are shown.
constexpr std::array<Style, 7> styles{{{Verdict::Slower, "slower", "bad"},
                                       {Verdict::Undecided, "undecided", "unsure"},
                                       {Verdict::TooFew, "too few", "unsure"},
                                       {Verdict::OnlyBefore, "only before", "unsure"},
                                       {Verdict::OnlyAfter, "only after", "plain"},
                                       {Verdict::Faster, "faster", "good"},
                                       {Verdict::Same, "same", "plain"}}};

const Style* styleOf(Verdict verdict) {
    return std::find_if(styles.begin(), styles.end(),
                        [&](const Style& style) { return style.verdict == verdict; });
}

std::string badge(const Style& style, const std::string& text) {
    return element("span", {{"class", std::string("badge ") + style.tone}}, text);
}

std::string badge(const Comparison& row) {
    const Style& style = *styleOf(row.verdict);
    return badge(style, std::string(style.word) + (row.provisional ? ", provisional" : ""));
}

void sortWorstFirst(std::vector<Comparison>& rows) {
    const auto size = [](const Comparison& row) { return std::abs(row.shift.value_or(0)); };
    std::stable_sort(rows.begin(), rows.end(),
                     [&](const Comparison& left, const Comparison& right) {
                         return std::make_tuple(styleOf(left.verdict), -size(left)) <
                                std::make_tuple(styleOf(right.verdict), -size(right));
                     });
}

std::string counts(const std::vector<Comparison>& rows) {
    std::string markup;
    for (const Style& style : styles) {
        const auto count = std::count_if(rows.begin(), rows.end(), [&](const Comparison& row) {
            return row.verdict == style.verdict;
        });
        if (count > 0) {
            markup += badge(style, std::to_string(count) + ' ' + style.word) + ' ';
        }
    }
    return element("p", markup);
}

std::string intervalText(const Interval& interval) {
    return shiftText(interval.low) + " to " + shiftText(interval.high);
}

std::string medianText(const std::optional<Summary>& summary) {
    return summary ? timeText(static_cast<double>(summary->median.count())) : none;
}

Row rowOf(const Comparison& row, std::size_t number) {
    const std::string link = "#o" + std::to_string(number);
    return {element("a", {{"href", link}}, nameToHtml(row.name)),
            badge(row),
            row.shift ? shiftText(*row.shift) : none,
            row.interval ? intervalText(*row.interval) : none,
            row.margin ? plusMinus + timeText(*row.margin) : none,
            medianText(row.before),
            medianText(row.after)};
}

std::string summaryTable(const std::vector<Comparison>& rows) {
    const std::vector<Column> columns{{"operation", Align::Left},
                                      {"verdict", Align::Left},
                                      {"shift"},
                                      {"99% interval"},
                                      {"margin"},
                                      {"median before"},
                                      {"median after"}};
    std::vector<Row> cells;
    cells.reserve(rows.size());
    for (const Comparison& row : rows) {
        cells.push_back(rowOf(row, cells.size() + 1));
    }
    return element("section", {{"class", "panel"}}, tableToHtml("All operations", columns, cells)) +
           '\n';
}

std::string shiftSentence(const Comparison& row) {
    const std::string margin = plusMinus + timeText(*row.margin);
    const std::string range = ", at 99% within " + intervalText(*row.interval);
    const std::string change = row.verdict == Verdict::Slower ? "Slower by " + timeText(*row.shift)
                               : row.verdict == Verdict::Faster
                                   ? "Faster by " + timeText(-*row.shift)
                                   : "Shifted by " + shiftText(*row.shift);
    return change + range + ". Changes within " + margin + " count as none.";
}

std::string verdictSentence(const Comparison& row) {
    switch (row.verdict) {
        case Verdict::OnlyBefore:
            return "Only the recordings before have it.";
        case Verdict::OnlyAfter:
            return "Only the recordings after have it.";
        case Verdict::TooFew:
            return "There are too few recordings and samples to compare.";
        default:
            return shiftSentence(row);
    }
}

std::string neededSentence(const Comparison& row) {
    if (!row.needed) {
        return {};
    }
    if (*row.needed > mostRecordings) {
        return " The samples scatter so much that more recordings will not decide it.";
    }
    const std::string decides =
        "about " + countText(*row.needed, "recording") + " on each side would decide.";
    return row.provisional ? " Fewer than five recordings on a side: " + decides
                           : " To be sure, " + decides;
}

using Figure = Milliseconds Summary::*;

Row sideRow(const char* name, const Summary& summary) {
    Row row{name, countText(summary.count)};
    for (const Figure figure :
         {&Summary::minimum, &Summary::median, &Summary::p90, &Summary::p99, &Summary::maximum}) {
        row.push_back(timeText(static_cast<double>((summary.*figure).count())));
    }
    return row;
}

std::string sidesTable(const Comparison& row) {
    const std::vector<Column> columns{{"", Align::Left}, {"samples"}, {"shortest"}, {"median"},
                                      {"p90"},           {"p99"},     {"longest"}};
    std::vector<Row> rows;
    if (row.before) {
        rows.push_back(sideRow("before", *row.before));
    }
    if (row.after) {
        rows.push_back(sideRow("after", *row.after));
    }
    return tableToHtml("Samples of both sides", columns, rows);
}

Extent valuesToShow(const Comparison& row) {
    const Interval& interval = *row.interval;
    const Extent shown =
        joined(joined({interval.low, interval.high}, {-*row.margin, *row.margin}), {0, 0});
    return withRoom(shown, leastDifference(shown));
}

std::string drawMargin(const Plot& plot, double margin) {
    const double left = plot.across(-margin);
    const std::string band = 'M' + point(left, plot.y.low) + 'V' + plainNumber(plot.y.high, 1) +
                             'H' + plainNumber(plot.across(margin), 1) + 'V' +
                             plainNumber(plot.y.low, 1) + 'z';
    const std::string zero =
        'M' + point(plot.across(0), plot.y.low) + 'V' + plainNumber(plot.y.high, 1);
    return emptyElement("path", {{"class", "margin"}, {"d", band}}) +
           emptyElement("path", {{"class", "axis"}, {"d", zero}}) +
           label(plot.across(0), plot.y.high - 5, "margin " + (plusMinus + timeText(margin)),
                 Anchor::Middle);
}

std::string drawShift(const Comparison& row) {
    const Plot plot = makePlot({valuesToShow(row), shiftTicks}, {{0, 1}, noTicks}, 18, 104);
    const double y = plot.up(0.42);
    const double low = plot.across(row.interval->low);
    const double high = plot.across(row.interval->high);
    const double x = plot.across(*row.shift);
    const std::string bar = 'M' + point(low, y - 6) + "v12m0-6H" + plainNumber(high, 1) + "m0-6v12";
    const std::string dot = 'M' + point(x - 5, y) + "a5 5 0 1 0 10 0a5 5 0 1 0-10 0z";
    const std::string content = drawMargin(plot, *row.margin) +
                                emptyElement("path", {{"class", "interval"}, {"d", bar}}) +
                                emptyElement("path", {{"class", "shift"}, {"d", dot}}) +
                                label(x, y - 12, shiftText(*row.shift), Anchor::Middle, "mark");
    const std::string title = "Shift of " + shortened(row.name) + ": " + shiftText(*row.shift) +
                              ", at 99% within " + intervalText(*row.interval);
    return figure(drawing(plot, title, content),
                  "Shift with its 99% interval; above zero is slower.");
}

Numbers comparedSamples(const OperationsByName& operations, const std::string& name) {
    const auto found = operations.find(name);
    if (found == operations.end()) {
        return {};
    }
    const RecordedParts& parts = found->second.parts;
    const auto count = static_cast<std::ptrdiff_t>(std::min(parts.size(), mostRecordings));
    return sortedSamples(RecordedParts(parts.end() - count, parts.end()));
}

struct Both {
    OperationsByName before;
    OperationsByName after;
};

std::string sectionOf(const Comparison& row, std::size_t number, const Both& both) {
    const std::string distributions = drawDistributions(
        row.name, comparedSamples(both.before, row.name), comparedSamples(both.after, row.name));
    const std::string numbers = element("div", (row.shift ? drawShift(row) : "") + sidesTable(row));
    const std::string heading = element("h2", nameToHtml(row.name) + ' ' + badge(row));
    const std::string sentence = element("p", verdictSentence(row) + neededSentence(row));
    return element("section",
                   {{"class", std::string("panel ") + styleOf(row.verdict)->tone},
                    {"id", "o" + std::to_string(number)}},
                   heading + sentence +
                       element("div", {{"class", "charts"}}, distributions + numbers)) +
           '\n';
}

}  // namespace

std::string comparisonPage(const std::vector<Recording>& before,
                           const std::vector<Recording>& after, const std::string& title) {
    std::vector<Comparison> rows = compare(before, after);
    sortWorstFirst(rows);
    std::string body =
        element("p", "Before: " + describe(before)) + element("p", "After: " + describe(after));
    if (rows.empty()) {
        return pageToHtml(title, body + element("p", "No operation has samples."));
    }
    body += counts(rows) + element("p", {{"class", "quiet"}},
                                   "Slower operations first, the same ones last; among equals, the "
                                   "largest shift first.");
    body += summaryTable(rows);
    const Both both{operationsOf(before), operationsOf(after)};
    std::size_t number = 0;
    for (const Comparison& row : rows) {
        body += sectionOf(row, ++number, both);
    }
    return pageToHtml(title, body);
}

}  // namespace lapwing
