#include <lapwing/kit/comparison.h>

#include "rank_distribution.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <stdexcept>
#include <string_view>
#include <tuple>

namespace lapwing {
namespace {

using Durations = std::vector<Milliseconds>;
using Numbers = std::vector<double>;

constexpr std::size_t mostRecordings = 64;
constexpr std::size_t enoughRecordings = 5;
constexpr double mostBlocks = 16;
constexpr std::size_t enoughBlocks = 6;
constexpr double strongestCorrelation = 0.99;
constexpr double provisionalMargins = 4;

// The samples of one name in the recordings that count, newest first.
using Side = std::vector<const Durations*>;

struct Sides {
    Side before;
    Side after;
};

struct Evidence {
    Numbers before;
    Numbers after;
};

using SidesByName = std::map<std::string_view, Sides>;

std::vector<const Recording*> newestFirst(const std::vector<Recording>& recordings) {
    std::vector<const Recording*> sorted;
    sorted.reserve(recordings.size());
    for (const Recording& recording : recordings) {
        sorted.push_back(&recording);
    }
    std::sort(sorted.begin(), sorted.end(), [](const Recording* left, const Recording* right) {
        return std::tie(left->recorded, left->id) > std::tie(right->recorded, right->id);
    });
    return sorted;
}

void addRecordings(SidesByName& names, Side Sides::*part,
                   const std::vector<Recording>& recordings) {
    for (const Recording* recording : newestFirst(recordings)) {
        for (const auto& [name, samples] : recording->profile.samples) {
            if (samples.empty()) {
                continue;
            }
            Side& side = names[name].*part;
            if (side.size() < mostRecordings) {
                side.push_back(&samples);
            }
        }
    }
}

Durations pooled(const Side& side) {
    Durations samples;
    for (auto recording = side.rbegin(); recording != side.rend(); ++recording) {
        samples.insert(samples.end(), (*recording)->begin(), (*recording)->end());
    }
    return samples;
}

Numbers asNumbers(const Durations& samples) {
    Numbers numbers;
    numbers.reserve(samples.size());
    for (const Milliseconds& sample : samples) {
        numbers.push_back(static_cast<double>(sample.count()));
    }
    return numbers;
}

double medianOf(Numbers values) {
    const auto upper = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), upper, values.end());
    if (values.size() % 2 == 1) {
        return *upper;
    }
    return (*std::max_element(values.begin(), upper) + *upper) / 2;
}

Numbers mediansOfRecordings(const Side& side) {
    Numbers medians;
    for (const Durations* samples : side) {
        medians.push_back(medianOf(asNumbers(*samples)));
    }
    return medians;
}

// Equal values get the middle of their ranks.
Numbers ranksAroundTheirMean(const Numbers& values) {
    std::vector<std::size_t> order(values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::size_t left, std::size_t right) { return values[left] < values[right]; });
    Numbers ranks(values.size());
    auto end = order.begin();
    for (auto begin = end; begin != order.end(); begin = end) {
        const double value = values[*begin];
        end = std::find_if(begin, order.end(),
                           [&](std::size_t place) { return values[place] != value; });
        const auto twice = (begin - order.begin()) - (order.end() - end);
        std::for_each(begin, end,
                      [&](std::size_t place) { ranks[place] = static_cast<double>(twice) / 2; });
    }
    return ranks;
}

// Multiplies before it divides, so that a whole result is exact.
double effectiveCount(const Numbers& values) {
    const auto count = static_cast<double>(values.size());
    const Numbers ranks = ranksAroundTheirMean(values);
    const double squares = std::inner_product(ranks.begin(), ranks.end(), ranks.begin(), 0.0);
    if (squares == 0) {
        return count;
    }
    const double products = std::inner_product(ranks.begin() + 1, ranks.end(), ranks.begin(), 0.0);
    const double whole = count * squares;
    const double correlated =
        std::clamp(count * products + squares, 0.0, strongestCorrelation * whole);
    return count * (whole - correlated) / (whole + correlated);
}

Numbers mediansOfBlocks(const Durations& samples) {
    const Numbers values = asNumbers(samples);
    const double most = std::clamp(effectiveCount(values), 1.0, mostBlocks);
    const auto blocks = static_cast<std::size_t>(most);
    const auto boundary = [&](std::size_t block) {
        return values.begin() + static_cast<std::ptrdiff_t>(block * values.size() / blocks);
    };
    Numbers medians;
    for (std::size_t block = 0; block < blocks; ++block) {
        medians.push_back(medianOf(Numbers(boundary(block), boundary(block + 1))));
    }
    return medians;
}

Numbers sortedDifferences(const Evidence& evidence) {
    Numbers differences;
    differences.reserve(evidence.before.size() * evidence.after.size());
    for (const double after : evidence.after) {
        for (const double before : evidence.before) {
            differences.push_back(after - before);
        }
    }
    std::sort(differences.begin(), differences.end());
    return differences;
}

double marginOf(const Tolerance& tolerance, double medianBefore, bool provisional) {
    const double percent = (provisional ? provisionalMargins : 1) * tolerance.percent;
    return std::max(static_cast<double>(tolerance.atLeast.count()), percent * medianBefore / 100);
}

Verdict verdictOf(const Interval& interval, double margin) {
    if (interval.low > margin) {
        return Verdict::Slower;
    }
    if (interval.high < -margin) {
        return Verdict::Faster;
    }
    return interval.low >= -margin && interval.high <= margin ? Verdict::Same : Verdict::Undecided;
}

void decide(Comparison& row, const Evidence& evidence, IntervalRanks& ranks) {
    const Numbers differences = sortedDifferences(evidence);
    const std::size_t rank = ranks.rank(evidence.before.size(), evidence.after.size());
    row.shift = medianOf(differences);
    row.interval = {differences[rank - 1], differences[differences.size() - rank]};
    row.verdict = verdictOf(*row.interval, *row.margin);
}

// Returns nothing if no number of recordings decides.
std::optional<std::size_t> recordingsNeeded(std::size_t recordings, const Interval& interval,
                                            double margin) {
    if (margin == 0) {
        return std::nullopt;
    }
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    const double ratio = (interval.high - interval.low) / 2 / margin;
    const double needed = std::ceil(static_cast<double>(recordings) * ratio * ratio);
    return needed < static_cast<double>(most) ? static_cast<std::size_t>(needed) : most;
}

void compareBoth(Comparison& row, const Sides& sides, const Evidence& evidence,
                 const Tolerance& tolerance, IntervalRanks& ranks) {
    row.margin = marginOf(tolerance, medianOf(evidence.before), row.provisional);
    if (!row.provisional ||
        std::min(evidence.before.size(), evidence.after.size()) >= enoughBlocks) {
        decide(row, evidence, ranks);
    }
    if (row.provisional) {
        row.needed = enoughRecordings;
    } else if (row.verdict == Verdict::Undecided) {
        row.needed = recordingsNeeded(std::min(sides.before.size(), sides.after.size()),
                                      *row.interval, *row.margin);
    }
}

Comparison compareSides(std::string_view name, const Sides& sides, const Tolerance& tolerance,
                        IntervalRanks& ranks) {
    Comparison row;
    row.name = name;
    row.recordingsBefore = sides.before.size();
    row.recordingsAfter = sides.after.size();
    const Durations before = pooled(sides.before);
    const Durations after = pooled(sides.after);
    row.before = summarize(before);
    row.after = summarize(after);
    if (!row.before || !row.after) {
        row.verdict = row.before ? Verdict::OnlyBefore : Verdict::OnlyAfter;
        return row;
    }
    row.provisional = std::min(sides.before.size(), sides.after.size()) < enoughRecordings;
    const Evidence evidence =
        row.provisional
            ? Evidence{mediansOfBlocks(before), mediansOfBlocks(after)}
            : Evidence{mediansOfRecordings(sides.before), mediansOfRecordings(sides.after)};
    compareBoth(row, sides, evidence, tolerance, ranks);
    return row;
}

}  // namespace

std::vector<Comparison> compare(const std::vector<Recording>& before,
                                const std::vector<Recording>& after, const Tolerance& tolerance) {
    if (tolerance.atLeast.count() < 0 || !std::isfinite(tolerance.percent) ||
        tolerance.percent < 0) {
        throw std::invalid_argument("a margin must be finite and not negative");
    }
    SidesByName names;
    addRecordings(names, &Sides::before, before);
    addRecordings(names, &Sides::after, after);
    IntervalRanks ranks;
    std::vector<Comparison> rows;
    for (const auto& [name, sides] : names) {
        rows.push_back(compareSides(name, sides, tolerance, ranks));
    }
    return rows;
}

}  // namespace lapwing
