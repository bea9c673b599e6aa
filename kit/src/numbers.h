// Helpers for arithmetic that the units share.

#ifndef LAPWING_KIT_NUMBERS_H
#define LAPWING_KIT_NUMBERS_H

namespace lapwing {

// Throws std::invalid_argument unless `percent` is within 0 to 100.
void requirePercent(double percent);

// Returns `value` with the digits of a double, even where the processor computes with more. Without
// it, 5 times 0.7 rounds to 3 there.
inline double stored(double value) {
    const volatile double copy = value;
    return copy;
}

}  // namespace lapwing

#endif  // LAPWING_KIT_NUMBERS_H
