#include "rank_distribution.h"

#include <vector>

namespace lapwing {
namespace {

// Returns in how many orders of m and n values U is 0, 1, ... up to half of m * n. If an order ends
// in one of the m values, that value adds n to U; if it ends in one of the n values, nothing.
std::vector<double> lowerCounts(std::size_t m, std::size_t n) {
    const std::size_t size = m * n / 2 + 1;
    std::vector<std::vector<double>> counts(m + 1, std::vector<double>(size));
    for (std::vector<double>& row : counts) {
        row[0] = 1;
    }
    for (std::size_t second = 1; second <= n; ++second) {
        for (std::size_t first = 1; first <= m; ++first) {
            for (std::size_t u = second; u < size; ++u) {
                counts[first][u] += counts[first - 1][u - second];
            }
        }
    }
    return counts[m];
}

double countOfOrders(std::size_t m, std::size_t n) {
    double count = 1;
    for (std::size_t first = 1; first <= m; ++first) {
        count = count * static_cast<double>(n + first) / static_cast<double>(first);
    }
    return count;
}

std::size_t countRank(std::size_t m, std::size_t n) {
    constexpr double partsPerTail = 200;
    const double orders = countOfOrders(m, n);
    std::size_t rank = 0;
    double below = 0;
    for (const double count : lowerCounts(m, n)) {
        below += count;
        if (below * partsPerTail > orders) {
            break;
        }
        ++rank;
    }
    return rank;
}

}  // namespace

std::size_t IntervalRanks::rank(std::size_t m, std::size_t n) {
    const auto [entry, isNew] = known.try_emplace({m, n});
    if (isNew) {
        entry->second = countRank(m, n);
    }
    return entry->second;
}

}  // namespace lapwing
