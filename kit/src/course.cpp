#include "course.h"

#include "figures.h"
#include "html.h"
#include "plot.h"
#include "recordings_text.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <set>

namespace lapwing {
namespace {

constexpr std::size_t mostSeries = 6;
constexpr std::size_t mostPoints = 40;
constexpr double drawingHeight = 200;

using Keys = std::vector<std::string>;
using Values = std::vector<std::optional<std::string>>;

Values valuesOf(const Recording& recording, const Keys& keys) {
    Values values;
    values.reserve(keys.size());
    for (const std::string& key : keys) {
        const auto found = recording.labels.find(key);
        values.push_back(found == recording.labels.end() ? std::nullopt
                                                         : std::optional(found->second));
    }
    return values;
}

// How many recordings have each of the combinations.
std::map<Values, std::size_t> combinations(const std::vector<Recording>& recordings,
                                           const Keys& keys) {
    std::map<Values, std::size_t> counts;
    for (const Recording& recording : recordings) {
        ++counts[valuesOf(recording, keys)];
    }
    return counts;
}

// The labels that are not always the same: the machine, then the others with the fewest values.
Keys differingKeys(const std::vector<Recording>& recordings) {
    std::set<std::string> all;
    for (const Recording& recording : recordings) {
        for (const auto& [key, value] : recording.labels) {
            all.insert(key);
        }
    }
    std::vector<std::pair<std::size_t, std::string>> differing;
    for (const std::string& key : all) {
        const std::size_t count = combinations(recordings, {key}).size();
        if (count > 1) {
            differing.emplace_back(key == "machine" ? 0 : count, key);
        }
    }
    std::sort(differing.begin(), differing.end());
    Keys keys;
    for (auto& [count, key] : differing) {
        keys.push_back(std::move(key));
    }
    return keys;
}

// The first label may make more series than are drawn, unless hardly a recording shares one.
Keys keysOfSeries(const std::vector<Recording>& recordings) {
    Keys keys;
    for (const std::string& key : differingKeys(recordings)) {
        Keys more = keys;
        more.push_back(key);
        const std::size_t count = combinations(recordings, more).size();
        const bool isFirst = keys.empty() && (key == "machine" || 2 * count <= recordings.size());
        if (count <= mostSeries || isFirst) {
            keys = more;
        }
    }
    return keys;
}

std::string nameOf(const Keys& keys, const Values& values) {
    std::string name;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        name += name.empty() ? "" : ", ";
        name += values[i] ? keys[i] + '=' + *values[i] : "no " + keys[i];
    }
    return name;
}

// The combinations that get a series of their own: the most frequent ones, in their order.
std::vector<Values> frequentOnes(const std::map<Values, std::size_t>& counts) {
    std::vector<Values> all;
    all.reserve(counts.size());
    for (const auto& [values, count] : counts) {
        all.push_back(values);
    }
    if (all.size() > mostSeries) {
        std::stable_sort(all.begin(), all.end(), [&](const Values& left, const Values& right) {
            return counts.at(left) > counts.at(right);
        });
        all.resize(mostSeries - 1);
        std::sort(all.begin(), all.end());
    }
    return all;
}

struct CoursePoint {
    double time;
    double low;
    double median;
    double high;
};

using Course = std::vector<CoursePoint>;

CoursePoint pointOf(const RecordedParts& parts) {
    const Numbers sorted = sortedSamples(parts);
    return {(secondsOf(*parts.front().recording) + secondsOf(*parts.back().recording)) / 2,
            percentileOf(sorted, 10), percentileOf(sorted, 50), percentileOf(sorted, 90)};
}

// Joins successive recordings if there are too many.
Course courseOf(const RecordedParts& parts, std::size_t perPoint) {
    Course course;
    for (auto begin = parts.begin(); begin != parts.end();) {
        const auto left = static_cast<std::size_t>(parts.end() - begin);
        const auto end = begin + static_cast<std::ptrdiff_t>(std::min(perPoint, left));
        course.push_back(pointOf(RecordedParts(begin, end)));
        begin = end;
    }
    return course;
}

std::size_t recordingsPerPoint(std::size_t recordings) {
    return (recordings + mostPoints - 1) / mostPoints;
}

struct Ranges {
    Extent times;
    Extent durations;
};

Ranges rangesOf(const std::vector<Course>& courses) {
    std::optional<Ranges> ranges;
    for (const Course& course : courses) {
        for (const CoursePoint& at : course) {
            const Ranges own{{at.time, at.time}, {at.low, at.high}};
            ranges = ranges ? Ranges{joined(ranges->times, own.times),
                                     joined(ranges->durations, own.durations)}
                            : own;
        }
    }
    return *ranges;
}

// Shows zero if that does not cost much.
Extent durationsToShow(const Extent& values) {
    const Extent shown = withRoom(values, leastDifference(values));
    if (values.low < 0) {
        return shown;
    }
    return {values.low < values.high / 2 ? 0 : std::max(0.0, shown.low), shown.high};
}

std::string pathOf(const Plot& plot, const Course& course, double CoursePoint::*figure) {
    std::string path;
    for (const CoursePoint& at : course) {
        path += (path.empty() ? 'M' : 'L') + point(plot.across(at.time), plot.up(at.*figure));
    }
    return path;
}

std::string drawSeries(const Plot& plot, const Course& course, std::size_t index) {
    if (course.empty()) {
        return {};
    }
    const Course backwards(course.rbegin(), course.rend());
    std::string band = pathOf(plot, course, &CoursePoint::low);
    band += 'L' + pathOf(plot, backwards, &CoursePoint::high).substr(1) + 'z';
    const std::string number = std::to_string(index);
    return emptyElement("path", {{"class", "band b" + number}, {"d", band}}) +
           emptyElement("path", {{"class", "line s" + number},
                                 {"d", pathOf(plot, course, &CoursePoint::median)}});
}

std::string keyOf(std::size_t index) {
    return element(
        "svg", {{"class", "key"}, {"viewBox", "0 0 24 12"}, {"aria-hidden", "true"}},
        emptyElement("path", {{"class", "line s" + std::to_string(index)}, {"d", "M1 6H12H23"}}));
}

Row rowOf(const std::string& name, std::size_t index, const RecordedParts& parts) {
    const Numbers sorted = sortedSamples(parts);
    const auto at = [&](double percent) { return timeText(percentileOf(sorted, percent)); };
    return {keyOf(index) + ' ' + nameToHtml(name),
            countText(parts.size()),
            countText(sorted.size()),
            at(10),
            at(50),
            at(90)};
}

std::string titleOf(const std::string& name, const RecordedParts& parts) {
    const auto medianOf = [](const RecordedSamples& part) {
        return timeText(percentileOf(sortedSamples({part}), 50));
    };
    return "Course of " + shortened(name) + " over " + countText(parts.size(), "recording") +
           ": median " + medianOf(parts.front()) + " in the first, " + medianOf(parts.back()) +
           " in the last";
}

std::string captionOf(const RecordedParts& parts, std::size_t perPoint) {
    std::vector<const Recording*> recordings;
    for (const RecordedSamples& part : parts) {
        recordings.push_back(part.recording);
    }
    const std::string joint =
        perPoint > 1 ? " Each point joins up to " + countText(perPoint) + " recordings." : "";
    return "Median over time with the band from p10 to p90: " +
           countText(parts.size(), "recording") + ", " + datesOf(recordings) + '.' + joint;
}

}  // namespace

SeriesOfRecordings::SeriesOfRecordings(const std::vector<Recording>& recordings) {
    const Keys keys = keysOfSeries(recordings);
    const auto counts = combinations(recordings, keys);
    const std::vector<Values> own = frequentOnes(counts);
    for (const Values& values : own) {
        seriesNames.push_back(nameOf(keys, values));
    }
    if (own.size() < counts.size()) {
        seriesNames.emplace_back("others");
    }
    for (const Recording& recording : recordings) {
        const auto found = std::find(own.begin(), own.end(), valuesOf(recording, keys));
        series[&recording] = static_cast<std::size_t>(found - own.begin());
    }
}

std::vector<RecordedParts> SeriesOfRecordings::split(const RecordedParts& parts) const {
    std::vector<RecordedParts> all(seriesNames.size());
    for (const RecordedSamples& part : parts) {
        all[series.at(part.recording)].push_back(part);
    }
    return all;
}

std::string courseMarkers() {
    constexpr std::array<const char*, mostSeries> shapes{"M-3 0a3 3 0 1 0 6 0a3 3 0 1 0-6 0z",
                                                         "M-3-3h6v6h-6z",
                                                         "M0-4L4 0 0 4-4 0z",
                                                         "M0-4L4 3h-8z",
                                                         "M0 4L4-3h-8z",
                                                         "M-4-1h3v-3h2v3h3v2h-3v3h-2v-3h-3z"};
    std::string markers;
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        const std::string number = std::to_string(i);
        markers += element("marker",
                           {{"id", "k" + number},
                            {"viewBox", "-5 -5 10 10"},
                            {"markerWidth", "7"},
                            {"markerHeight", "7"},
                            {"markerUnits", "userSpaceOnUse"}},
                           emptyElement("path", {{"class", "f" + number}, {"d", shapes.at(i)}}));
    }
    return element("svg", {{"class", "hidden"}, {"aria-hidden", "true"}}, markers) + '\n';
}

std::string drawCourse(const std::string& name, const RecordedParts& parts,
                       const SeriesOfRecordings& series) {
    const std::vector<RecordedParts> all = series.split(parts);
    const std::size_t perPoint = recordingsPerPoint(parts.size());
    std::vector<Course> courses;
    courses.reserve(all.size());
    for (const RecordedParts& own : all) {
        courses.push_back(courseOf(own, perPoint));
    }
    const Ranges ranges = rangesOf(courses);
    const Plot plot =
        makePlot({withRoom(ranges.times, 0.5), dateTicks},
                 {durationsToShow(ranges.durations), durationTicks}, 10, drawingHeight);
    std::string content;
    for (std::size_t i = 0; i < courses.size(); ++i) {
        content += drawSeries(plot, courses[i], i);
    }
    return figure(drawing(plot, titleOf(name, parts), content), captionOf(parts, perPoint));
}

std::string courseLegend(const RecordedParts& parts, const SeriesOfRecordings& series) {
    const std::vector<RecordedParts> all = series.split(parts);
    std::vector<Row> rows;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!all[i].empty()) {
            rows.push_back(rowOf(series.names()[i], i, all[i]));
        }
    }
    const std::vector<Column> columns{
        {"series", Align::Left}, {"recordings"}, {"samples"}, {"p10"}, {"median"}, {"p90"}};
    return all.size() < 2 ? "" : tableToHtml("Series of the course", columns, rows);
}

}  // namespace lapwing
