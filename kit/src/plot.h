// Drawings as inline SVG: scales, axes with round numbers, labels and marks. All are 360 units
// wide, so that text is readable on a phone.

#ifndef LAPWING_KIT_SRC_PLOT_H
#define LAPWING_KIT_SRC_PLOT_H

#include <string>
#include <string_view>
#include <vector>

namespace lapwing {

struct Extent {
    double low;
    double high;
};

// Returns the smallest extent that holds both.
Extent joined(const Extent& first, const Extent& second);

// Returns an extent with some room at both ends: at least this much.
Extent withRoom(const Extent& values, double least);

// Returns the smallest difference of milliseconds that labels can show beside values like these.
double leastDifference(const Extent& milliseconds);

// Returns a round number, 1, 2 or 5 times a power of ten, that is at least `least`.
double roundedUp(double least);

// Maps values to places.
class Scale {
public:
    Scale(const Extent& fromValues, const Extent& toPlaces);
    [[nodiscard]] double operator()(double value) const;

private:
    Extent values;
    Extent places;
};

struct Tick {
    double value;
    std::string label;
};

using Ticks = std::vector<Tick>;

// Makes some ticks within the values, in about so many steps.
using TickMaker = Ticks (*)(const Extent& values, int steps);

Ticks durationTicks(const Extent& milliseconds, int steps);
Ticks shiftTicks(const Extent& milliseconds, int steps);
Ticks percentTicks(const Extent& percent, int steps);
Ticks dateTicks(const Extent& seconds, int steps);       // of the system's clock, in UTC
Ticks decadeTicks(const Extent& logarithms, int steps);  // of milliseconds, to base 10
Ticks noTicks(const Extent& values, int steps);

enum class Anchor { Start, Middle, End };

// Text that stays within the drawing; `x` is where its anchor would be.
std::string label(double x, double y, const std::string& text, Anchor anchor,
                  const std::string& styleClass = {});

struct Axis {
    Extent values;
    TickMaker ticks;
};

// A rectangle of values with its axes.
struct Plot {
    double height;  // of the drawing
    Extent x;
    Extent y;  // the bottom first
    Scale across;
    Scale up;
    std::string axes;
};

// `top` is left free above the rectangle.
Plot makePlot(const Axis& across, const Axis& up, double top, double height);

// Returns what the plot shows, above its axes, with a title, which is bytes.
std::string drawing(const Plot& plot, const std::string& title, const std::string& content);

// A figure with what it shows; both are markup.
std::string figure(const std::string& drawing, const std::string& caption);

struct Mark {
    std::string name;
    std::string text;
    double value;
};

// The room above a plot that the names of so many marks take.
double roomForMarks(std::size_t count);

// Lines from below, in ascending order, each with its name in a line of its own.
std::string drawMarks(const Plot& plot, const std::vector<Mark>& marks);

// Coordinates as a path writes them.
std::string point(double x, double y);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_PLOT_H
