#include "plot.h"

#include "figures.h"
#include "html.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace lapwing {
namespace {

constexpr double drawingWidth = 360;
constexpr double edge = 2;
constexpr double characterWidth = 7.2;
constexpr double wideCharacterMore = 3.6;
constexpr double rightMargin = 12;
constexpr double bottomMargin = 22;
constexpr double lineHeight = 14;
constexpr double almost = 1e-9;
constexpr double secondsPerDay = 86400;

// What the characters take in the widest of the usual fonts.
double widthOf(const std::string& text) {
    const auto wide = std::count_if(text.begin(), text.end(), [](char character) {
        return character == '%' || character == 'm';
    });
    return characterWidth * static_cast<double>(lengthOf(text)) +
           wideCharacterMore * static_cast<double>(wide);
}

double startOf(double x, double width, Anchor anchor) {
    const double before = anchor == Anchor::Start    ? 0
                          : anchor == Anchor::Middle ? width / 2
                                                     : width;
    return std::max(edge, std::min(x - before, drawingWidth - edge - width));
}

struct Unit {
    double milliseconds;
    const char* name;
};

double largest(const Extent& values) {
    return std::max(std::abs(values.low), std::abs(values.high));
}

Unit unitOf(const Extent& values) {
    const double size = largest(values);
    if (size < 1) {
        return {0.001, "\xC2\xA0\xC2\xB5s"};
    }
    return size < 10000 ? Unit{1, "\xC2\xA0ms"} : Unit{1000, "\xC2\xA0s"};
}

int decimalsOf(double step) {
    return -static_cast<int>(std::floor(std::log10(step) + almost));
}

template <class Label>
Ticks ticksOf(const Extent& values, double step, const Label& labelOf) {
    Ticks ticks;
    const double first = std::ceil(values.low / step - almost) + 0.0;  // no negative zero
    const auto count = static_cast<int>(std::floor(values.high / step + almost) - first) + 1;
    for (int i = 0; i < count; ++i) {
        const double value = (first + i) * step;
        ticks.push_back({value, labelOf(value)});
    }
    return ticks;
}

double roundStep(const Extent& values, int steps) {
    return roundedUp((values.high - values.low) / steps);
}

std::string dateText(double seconds, double step, bool withinDay) {
    const std::string text = utcTextOf(seconds);
    if (step >= secondsPerDay) {
        return text.substr(0, 10);
    }
    const std::string clock = text.substr(11, step < 60 ? 8 : 5);
    return withinDay ? clock : text.substr(5, 5) + "\xC2\xA0" + clock;
}

double dateStep(double least) {
    constexpr std::array<double, 17> ofClocks{1,   2,   5,    10,   15,   30,    60,    120,  300,
                                              600, 900, 1800, 3600, 7200, 10800, 21600, 43200};
    const auto* const found = std::lower_bound(ofClocks.begin(), ofClocks.end(), least);
    return found != ofClocks.end()
               ? *found
               : secondsPerDay * roundedUp(std::max(1.0, least / secondsPerDay));
}

// Leaves out ticks whose labels would meet the one before.
Ticks withoutOverlaps(const Ticks& ticks, const Scale& scale) {
    Ticks apart;
    double end = 0;
    for (const Tick& tick : ticks) {
        const double width = widthOf(tick.label);
        const double start = startOf(scale(tick.value), width, Anchor::Middle);
        if (apart.empty() || start >= end + characterWidth) {
            end = start + width;
            apart.push_back(tick);
        }
    }
    return apart;
}

Ticks ticksThatFit(const Axis& axis, const Scale& scale) {
    for (const int steps : {6, 4}) {
        Ticks ticks = axis.ticks(axis.values, steps);
        if (withoutOverlaps(ticks, scale).size() == ticks.size()) {
            return ticks;
        }
    }
    return withoutOverlaps(axis.ticks(axis.values, 3), scale);
}

std::string drawAxes(const Plot& plot, const Ticks& across, const Ticks& up) {
    std::string grid;
    std::string labels;
    for (const Tick& tick : up) {
        const double y = plot.up(tick.value);
        grid += 'M' + point(plot.x.low, y) + 'H' + plainNumber(plot.x.high, 1);
        labels += label(plot.x.low - 6, y + 4, tick.label, Anchor::End);
    }
    std::string strokes = 'M' + point(plot.x.low, plot.y.low) + 'H' + plainNumber(plot.x.high, 1);
    for (const Tick& tick : across) {
        const double x = plot.across(tick.value);
        strokes += 'M' + point(x, plot.y.low) + "v4";
        labels += label(x, plot.y.low + 17, tick.label, Anchor::Middle);
    }
    return emptyElement("path", {{"class", "grid"}, {"d", grid}}) +
           emptyElement("path", {{"class", "axis"}, {"d", strokes}}) + labels;
}

}  // namespace

Extent joined(const Extent& first, const Extent& second) {
    return {std::min(first.low, second.low), std::max(first.high, second.high)};
}

Extent withRoom(const Extent& values, double least) {
    const double room = std::max((values.high - values.low) * 0.08, least);
    return {values.low - room, values.high + room};
}

double leastDifference(const Extent& milliseconds) {
    return std::max(1.0, largest(milliseconds) * 1e-5);
}

double roundedUp(double least) {
    const double power = std::pow(10, std::floor(std::log10(least) + almost));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least * (1 - almost)) {
            return factor * power;
        }
    }
    return 10 * power;
}

Scale::Scale(const Extent& fromValues, const Extent& toPlaces)
    : values(fromValues), places(toPlaces) {}

double Scale::operator()(double value) const {
    return places.low +
           (value - values.low) / (values.high - values.low) * (places.high - places.low);
}

Ticks durationTicks(const Extent& milliseconds, int steps) {
    const Unit unit = unitOf(milliseconds);
    const double step = roundStep(milliseconds, steps);
    const int decimals = decimalsOf(step / unit.milliseconds);
    return ticksOf(milliseconds, step, [&](double value) {
        return decimalText(value / unit.milliseconds, value == 0 ? 0 : decimals) + unit.name;
    });
}

Ticks shiftTicks(const Extent& milliseconds, int steps) {
    Ticks ticks = durationTicks(milliseconds, steps);
    for (Tick& tick : ticks) {
        tick.label.insert(0, tick.value > 0 ? "+" : "");
    }
    return ticks;
}

Ticks percentTicks(const Extent& percent, int steps) {
    const double step = roundStep(percent, steps);
    return ticksOf(percent, step,
                   [&](double value) { return decimalText(value, decimalsOf(step)) + '%'; });
}

Ticks dateTicks(const Extent& seconds, int steps) {
    const double step = dateStep((seconds.high - seconds.low) / steps);
    const bool withinDay =
        std::floor(seconds.low / secondsPerDay) == std::floor(seconds.high / secondsPerDay);
    return ticksOf(seconds, step, [&](double value) { return dateText(value, step, withinDay); });
}

Ticks decadeTicks(const Extent& logarithms, int /*steps*/) {
    return ticksOf(logarithms, 1, [](double value) { return timeText(std::pow(10, value)); });
}

Ticks noTicks(const Extent& /*values*/, int /*steps*/) {
    return {};
}

std::string point(double x, double y) {
    return plainNumber(x, 1) + ' ' + plainNumber(y, 1);
}

std::string label(double x, double y, const std::string& text, Anchor anchor,
                  const std::string& styleClass) {
    const double width = widthOf(text);
    const double start = startOf(x, width, anchor);
    const char* const name = anchor == Anchor::Start    ? ""
                             : anchor == Anchor::Middle ? "middle"
                                                        : "end";
    const double place = anchor == Anchor::Start    ? start
                         : anchor == Anchor::Middle ? start + width / 2
                                                    : start + width;
    return element("text",
                   {{"x", plainNumber(place, 1)},
                    {"y", plainNumber(y, 1)},
                    {"text-anchor", name},
                    {"class", styleClass}},
                   toHtml(text));
}

Plot makePlot(const Axis& across, const Axis& up, double top, double height) {
    const Ticks upTicks = up.ticks(up.values, 4);
    double left = rightMargin;
    for (const Tick& tick : upTicks) {
        left = std::max(left, widthOf(tick.label) + 6 + edge);
    }
    const Extent x{left, drawingWidth - rightMargin};
    const Extent y{height - bottomMargin, top};
    Plot plot{height, x, y, Scale(across.values, x), Scale(up.values, y), {}};
    plot.axes = drawAxes(plot, ticksThatFit(across, plot.across), upTicks);
    return plot;
}

std::string drawing(const Plot& plot, const std::string& title, const std::string& content) {
    const std::string box =
        "0 0 " + plainNumber(drawingWidth, 0) + ' ' + plainNumber(plot.height, 0);
    return element("svg", {{"viewBox", box}, {"role", "img"}},
                   element("title", toHtml(title)) + plot.axes + content);
}

std::string figure(const std::string& drawing, const std::string& caption) {
    return element("figure", drawing + element("figcaption", caption)) + '\n';
}

double roomForMarks(std::size_t count) {
    return lineHeight * static_cast<double>(count) + 6;
}

std::string drawMarks(const Plot& plot, const std::vector<Mark>& marks) {
    std::string lines;
    std::string labels;
    double y = lineHeight - 3;
    for (const Mark& mark : marks) {
        const double x = plot.across(mark.value);
        const std::string text = mark.name + "\xC2\xA0" + mark.text;
        const bool fits = x + 4 + widthOf(text) <= drawingWidth - edge;
        lines += 'M' + point(x, plot.y.low) + 'V' + plainNumber(y - 8, 1);
        labels += label(fits ? x + 4 : x - 4, y, text, fits ? Anchor::Start : Anchor::End, "mark");
        y += lineHeight;
    }
    return emptyElement("path", {{"class", "marks"}, {"d", lines}}) + labels;
}

}  // namespace lapwing
