// The distribution of the Mann-Whitney statistic U, counted exactly.

#ifndef LAPWING_KIT_RANK_DISTRIBUTION_H
#define LAPWING_KIT_RANK_DISTRIBUTION_H

#include <cstddef>
#include <map>
#include <utility>

namespace lapwing {

// Gives the ends of 99% intervals for shifts. Keeps what it has counted.
class IntervalRanks {
public:
    // Returns the largest k with P(U < k) <= 0.005 for sides of m and n values. The interval goes
    // from the k-th smallest to the k-th largest of their m * n differences. With five values or
    // more on each side, k is at least 1.
    std::size_t rank(std::size_t m, std::size_t n);

private:
    std::map<std::pair<std::size_t, std::size_t>, std::size_t> known;
};

}  // namespace lapwing

#endif  // LAPWING_KIT_RANK_DISTRIBUTION_H
