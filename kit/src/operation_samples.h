// The samples of recordings by operation.

#ifndef LAPWING_KIT_SRC_OPERATION_SAMPLES_H
#define LAPWING_KIT_SRC_OPERATION_SAMPLES_H

#include <lapwing/kit/recording.h>

#include <map>
#include <string>
#include <vector>

namespace lapwing {

using Numbers = std::vector<double>;

// What one recording holds of an operation: at least one sample.
struct RecordedSamples {
    const Recording* recording;
    const std::vector<Milliseconds>* samples;
};

using RecordedParts = std::vector<RecordedSamples>;

struct OperationSamples {
    std::string note;     // the first one
    RecordedParts parts;  // by time, then id
};

using OperationsByName = std::map<std::string, OperationSamples>;

// The recordings must outlive the result. Names without samples are left out.
OperationsByName operationsOf(const std::vector<Recording>& recordings);

// Returns the samples of all parts in milliseconds, the shortest first.
Numbers sortedSamples(const RecordedParts& parts);

// Returns the sample of nearest rank.
double percentileOf(const Numbers& sorted, double percent);

// Returns a time in seconds since the epoch of its clock.
double secondsOf(const Recording& recording);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_OPERATION_SAMPLES_H
