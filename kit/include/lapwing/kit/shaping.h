/// @file
/// Changed copies of profiles. Each function takes a profile and returns a new one; notes are kept
/// with their names.
///
///     // Replays the worst case of what was recorded, half as long again.
///     emulator.setProfile(lapwing::scaled(lapwing::reducedToPercentile(recorded, 100), 1.5));
///
/// Arguments out of range throw std::invalid_argument. So do names with neither samples nor a note:
/// the message lists the first of those that the profile has, sorted.
/// A name whose samples are empty stays as it is.
///
/// Thread safety: any number of threads may call these functions at once.

#ifndef LAPWING_KIT_SHAPING_H
#define LAPWING_KIT_SHAPING_H

#include <lapwing/timing_profiles.h>

#include <string>
#include <vector>

namespace lapwing {

/// Multiplies every sample by `factor`, rounded half away from zero; what is beyond 64 bits becomes
/// the nearest value within. The factor is finite and not negative. The product is that of doubles,
/// so samples above 2^53 lose their last digits, unless the factor is 1.
[[nodiscard]] TimingProfile scaled(TimingProfile profile, double factor);

/// Keeps the samples of each name from its `lowPercent` to its `highPercent` percentile, both
/// included, in their order. `lowPercent` is not above `highPercent`.
[[nodiscard]] TimingProfile trimmed(TimingProfile profile, double lowPercent, double highPercent);

/// Leaves one sample per name, the percentile of its samples: the way to have an emulator replay a
/// median or a worst case.
[[nodiscard]] TimingProfile reducedToPercentile(TimingProfile profile, double percent);

/// Leaves one sample per name, the average that TimingProfileEmulator pads to.
[[nodiscard]] TimingProfile reducedToAverage(TimingProfile profile);

/// Gives `from` the name `to`. If `to` exists, its samples come first, those of `from` are
/// appended, and its note stays if it has one. If both are the same name, nothing changes.
[[nodiscard]] TimingProfile renamed(TimingProfile profile, const std::string& from,
                                    const std::string& to);

/// Keeps these names and drops the others.
[[nodiscard]] TimingProfile only(const TimingProfile& profile,
                                 const std::vector<std::string>& names);

/// Drops these names and keeps the others.
[[nodiscard]] TimingProfile without(TimingProfile profile, const std::vector<std::string>& names);

}  // namespace lapwing

#endif  // LAPWING_KIT_SHAPING_H
