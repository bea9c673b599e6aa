// Drawings of how an operation went over many recordings.

#ifndef LAPWING_KIT_SRC_COURSE_H
#define LAPWING_KIT_SRC_COURSE_H

#include "operation_samples.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace lapwing {

// Which recordings are drawn together: those with the same machine, and the same other labels as
// long as that makes few series. There is at least one.
class SeriesOfRecordings {
public:
    explicit SeriesOfRecordings(const std::vector<Recording>& recordings);

    // The parts of each series, in their order. A series may have none.
    [[nodiscard]] std::vector<RecordedParts> split(const RecordedParts& parts) const;

    [[nodiscard]] const std::vector<std::string>& names() const { return seriesNames; }

private:
    std::vector<std::string> seriesNames;  // bytes
    std::map<const Recording*, std::size_t> series;
};

// The shapes that tell series apart. Each page with courses holds them once.
std::string courseMarkers();

// A figure with the median of each recording and the band from p10 to p90.
std::string drawCourse(const std::string& name, const RecordedParts& parts,
                       const SeriesOfRecordings& series);

// A table that says which shape stands for which series. It is empty if there is one series.
std::string courseLegend(const RecordedParts& parts, const SeriesOfRecordings& series);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_COURSE_H
