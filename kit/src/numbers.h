// Helpers for arithmetic that the units share.

#ifndef LAPWING_KIT_NUMBERS_H
#define LAPWING_KIT_NUMBERS_H

#include <lapwing/instrumentation.h>

#include <cstddef>
#include <vector>

namespace lapwing {

// Throws std::invalid_argument unless `percent` is within 0 to 100.
void requirePercent(double percent);

// Returns the truncated average of samples, of which there are some.
Milliseconds averageOf(const std::vector<Milliseconds>& samples);

// Returns the nearest rank of a percentile among `count` values, from 1.
std::size_t rankOf(double percent, std::size_t count);

// Throws std::invalid_argument unless `factor` is finite and not negative.
void requireFactor(double factor);

// Returns the product, rounded half away from zero and kept within 64 bits.
Milliseconds scaledSample(Milliseconds sample, double factor);

// Returns `value` with the digits of a double, even where the processor computes with more. Without
// it, 5 times 0.7 rounds to 3 there.
inline double stored(double value) {
    const volatile double copy = value;
    return copy;
}

}  // namespace lapwing

#endif  // LAPWING_KIT_NUMBERS_H
