#include "distribution.h"

#include "figures.h"
#include "html.h"
#include "plot.h"

#include <algorithm>
#include <cmath>

namespace lapwing {
namespace {

constexpr double mostBins = 60;
constexpr double leastBins = 8;
constexpr double drawingHeight = 200;

struct Bins {
    double low;
    double width;
    std::size_t count;

    [[nodiscard]] Extent values() const { return {low, low + width * static_cast<double>(count)}; }
};

// Samples that are whole milliseconds need room for some bars of one millisecond.
Extent widened(const Extent& values, double lowest) {
    const double missing = leastBins * leastDifference(values) - (values.high - values.low);
    if (missing <= 0) {
        return values;
    }
    const double low = values.low - missing / 2;
    const double start = lowest >= 0 ? std::max(0.0, low) : low;
    return {start, start + (values.high - values.low) + missing};
}

// Leaves out what lies far from nearly all samples.
Extent mainPart(const Numbers& sorted) {
    const Extent most{percentileOf(sorted, 1), percentileOf(sorted, 99)};
    const double span = std::max(most.high - most.low, leastBins * leastDifference(most));
    const bool isLow = sorted.front() < most.low - span / 2;
    const bool isHigh = sorted.back() > most.high + span / 2;
    return widened({isLow ? most.low - span / 4 : sorted.front(),
                    isHigh ? most.high + span / 4 : sorted.back()},
                   sorted.front());
}

Bins binsOf(const Extent& values) {
    const double width = std::max(1.0, roundedUp((values.high - values.low) / mostBins));
    const double low = std::floor(values.low / width) * width;
    return {low, width, static_cast<std::size_t>(std::floor((values.high - low) / width)) + 1};
}

struct Outside {
    std::size_t count = 0;
    double lowest = 0;
    double highest = 0;
};

Outside outsideOf(const Numbers& sorted, const Extent& values) {
    const auto begin = std::lower_bound(sorted.begin(), sorted.end(), values.low);
    const auto end = std::lower_bound(begin, sorted.end(), values.high);
    return {sorted.size() - static_cast<std::size_t>(end - begin), sorted.front(), sorted.back()};
}

// Percent of all samples by bin.
Numbers sharesOf(const Numbers& sorted, const Bins& bins) {
    const Extent values = bins.values();
    Numbers shares(bins.count);
    const double share = 100 / static_cast<double>(sorted.size());
    for (const double sample : sorted) {
        if (sample >= values.low && sample < values.high) {
            const auto bin = static_cast<std::size_t>((sample - bins.low) / bins.width);
            shares[std::min(bin, bins.count - 1)] += share;
        }
    }
    return shares;
}

double peakOf(const Numbers& shares) {
    return shares.empty() ? 0 : *std::max_element(shares.begin(), shares.end());
}

std::string drawBars(const Plot& plot, const Bins& bins, const Numbers& shares, const Scale& up,
                     const std::string& styleClass) {
    std::string bars;
    for (std::size_t i = 0; i < shares.size(); ++i) {
        if (shares[i] > 0) {
            const double middle = bins.low + bins.width * (static_cast<double>(i) + 0.5);
            const double top = std::min(up(shares[i]), up(0) - 1);
            bars += 'M' + point(plot.across(middle), up(0)) + 'V' + plainNumber(top, 1);
        }
    }
    const double width = plot.across(bins.low + bins.width) - plot.across(bins.low);
    return emptyElement("path", {{"class", styleClass},
                                 {"stroke-width", plainNumber(width - std::min(1.0, width / 4), 2)},
                                 {"d", bars}});
}

std::string captionOf(const Bins& bins, const std::string& samples, const Outside& outside) {
    std::string text = "Share of " + samples + " by duration, " + timeText(bins.width) + " a bar.";
    if (outside.count > 0) {
        text += ' ' + countText(outside.count) + " beyond the axis: the samples reach from " +
                timeText(outside.lowest) + " to " + timeText(outside.highest) + '.';
    }
    return toHtml(text);
}

Mark medianMark(const Numbers& sorted) {
    const double median = percentileOf(sorted, 50);
    return {"median", timeText(median), median};
}

constexpr double rowHeight = 56;

// A row of the drawing of two: its baseline is `y`.
std::string drawRow(const Plot& plot, const Bins& bins, const Numbers& sorted, double y,
                    double peak, const std::string& name) {
    if (sorted.empty()) {
        return label(plot.x.low, y - 6, name + ": no samples", Anchor::Start, "quiet");
    }
    const Scale up({0, peak}, {y, y - rowHeight});
    const Mark median = medianMark(sorted);
    const double x = plot.across(median.value);
    const std::string line = 'M' + point(x, y) + 'v' + plainNumber(-rowHeight - 8, 1);
    const std::string base = 'M' + point(plot.x.low, y) + 'H' + plainNumber(plot.x.high, 1);
    return drawBars(plot, bins, sharesOf(sorted, bins), up, name) +
           emptyElement("path", {{"class", "axis"}, {"d", base}}) +
           emptyElement("path", {{"class", "marks"}, {"d", line}}) +
           label(x, y - rowHeight - 12, name + ": median\xC2\xA0" + median.text, Anchor::Middle,
                 "mark");
}

Outside sum(const Outside& first, const Outside& second) {
    return {first.count + second.count, std::min(first.lowest, second.lowest),
            std::max(first.highest, second.highest)};
}

}  // namespace

std::string drawDistribution(const std::string& name, const Numbers& sorted) {
    const Bins bins = binsOf(mainPart(sorted));
    const Numbers shares = sharesOf(sorted, bins);
    std::vector<Mark> marks{medianMark(sorted)};
    for (const auto& [percent, text] : {std::pair{90.0, "p90"}, {99.0, "p99"}}) {
        const double value = percentileOf(sorted, percent);
        marks.push_back({text, timeText(value), value});
    }
    const Plot plot =
        makePlot({bins.values(), durationTicks}, {{0, peakOf(shares) * 1.02}, percentTicks},
                 roomForMarks(marks.size()), drawingHeight);
    std::string title = "Distribution of " + shortened(name);
    for (const Mark& mark : marks) {
        title += ", " + mark.name + ' ' + mark.text;
    }
    return figure(
        drawing(plot, title,
                drawBars(plot, bins, shares, plot.up, "bars") + drawMarks(plot, marks)),
        captionOf(bins, countText(sorted.size(), "sample"), outsideOf(sorted, bins.values())));
}

std::string drawDistributions(const std::string& name, const Numbers& before,
                              const Numbers& after) {
    const Extent values = before.empty()  ? mainPart(after)
                          : after.empty() ? mainPart(before)
                                          : joined(mainPart(before), mainPart(after));
    const Bins bins = binsOf(values);
    const Plot plot = makePlot({bins.values(), durationTicks}, {{0, 1}, noTicks}, 0, drawingHeight);
    const double peak = std::max(before.empty() ? 0 : peakOf(sharesOf(before, bins)),
                                 after.empty() ? 0 : peakOf(sharesOf(after, bins)));
    std::string rows;
    Outside outside;
    double y = plot.y.low - rowHeight - 32;
    for (const auto& [text, sorted] : {std::pair{"before", &before}, {"after", &after}}) {
        rows += drawRow(plot, bins, *sorted, y, peak, text);
        y = plot.y.low;
        if (!sorted->empty()) {
            const Outside more = outsideOf(*sorted, bins.values());
            outside = outside.count == 0 ? more : more.count == 0 ? outside : sum(outside, more);
        }
    }
    return figure(drawing(plot, "Distribution of " + shortened(name) + " before and after", rows),
                  captionOf(bins, "the samples of each side", outside));
}

}  // namespace lapwing
