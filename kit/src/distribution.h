// Drawings of how samples are distributed.

#ifndef LAPWING_KIT_SRC_DISTRIBUTION_H
#define LAPWING_KIT_SRC_DISTRIBUTION_H

#include "operation_samples.h"

#include <string>

namespace lapwing {

// A histogram with median, p90 and p99, as a figure. A few samples far from the others are counted
// in the caption, and not drawn.
std::string drawDistribution(const std::string& name, const Numbers& sorted);

// Two histograms on one axis, each with its median. One of them may be empty.
std::string drawDistributions(const std::string& name, const Numbers& before, const Numbers& after);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_DISTRIBUTION_H
