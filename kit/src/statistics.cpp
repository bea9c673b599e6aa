#include <lapwing/kit/statistics.h>

#include "numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace lapwing {
namespace {

using Durations = std::vector<Milliseconds>;

// Gives percentiles of samples that are not sorted, the lowest first.
class Percentiles {
public:
    explicit Percentiles(Durations all) : samples(std::move(all)) {}

    Milliseconds next(double percent) {
        const auto rank = static_cast<std::ptrdiff_t>(rankOf(percent, samples.size()));
        const auto selected = samples.begin() + rank - 1;
        std::nth_element(samples.begin() + selectedBefore, selected, samples.end());
        selectedBefore = rank - 1;
        return *selected;
    }

private:
    Durations samples;
    std::ptrdiff_t selectedBefore = 0;
};

// The mean without rounding, as long as there are fewer than three thousand million samples.
struct Mean {
    std::int64_t whole;
    double fraction;
};

Mean meanOf(const Durations& samples) {
    const auto count = static_cast<std::int64_t>(samples.size());
    std::int64_t quotients = 0;
    std::int64_t remainders = 0;
    for (const Milliseconds& sample : samples) {
        quotients += sample.count() / count;
        remainders += sample.count() % count;
    }
    return {quotients + remainders / count,
            static_cast<double>(remainders % count) / static_cast<double>(count)};
}

double difference(std::int64_t left, std::int64_t right) {
    const auto [low, high] = std::minmax(left, right);
    const auto distance = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
    return left < right ? -static_cast<double>(distance) : static_cast<double>(distance);
}

double deviationOf(const Durations& samples, const Mean& mean) {
    if (samples.size() == 1) {
        return 0;
    }
    double squares = 0;
    for (const Milliseconds& sample : samples) {
        const double distance = difference(sample.count(), mean.whole) - mean.fraction;
        squares += distance * distance;
    }
    return std::sqrt(squares / static_cast<double>(samples.size() - 1));
}

}  // namespace

void requirePercent(double percent) {
    if (!(percent >= 0 && percent <= 100)) {
        throw std::invalid_argument("a percentage must be within 0 to 100");
    }
}

std::size_t rankOf(double percent, std::size_t count) {
    const double product = stored(percent * static_cast<double>(count));
    return std::max<std::size_t>(1, static_cast<std::size_t>(std::ceil(product / 100)));
}

Milliseconds averageOf(const std::vector<Milliseconds>& samples) {
    std::uint64_t sum = 0;
    for (const Milliseconds& sample : samples) {
        sum += static_cast<std::uint64_t>(sample.count());
    }
    return Milliseconds(static_cast<Milliseconds::rep>(sum / samples.size()));
}

Milliseconds percentile(const std::vector<Milliseconds>& samples, double percent) {
    requirePercent(percent);
    if (samples.empty()) {
        throw std::invalid_argument("a percentile needs samples");
    }
    return Percentiles(samples).next(percent);
}

std::optional<Summary> summarize(const std::vector<Milliseconds>& samples) {
    if (samples.empty()) {
        return std::nullopt;
    }
    Summary summary;
    summary.count = samples.size();
    summary.average = averageOf(samples);
    const Mean mean = meanOf(samples);
    summary.mean = static_cast<double>(mean.whole) + mean.fraction;
    summary.standardDeviation = deviationOf(samples, mean);
    Percentiles percentiles(samples);
    summary.minimum = percentiles.next(0);
    summary.median = percentiles.next(50);
    summary.p90 = percentiles.next(90);
    summary.p99 = percentiles.next(99);
    summary.maximum = percentiles.next(100);
    return summary;
}

}  // namespace lapwing
