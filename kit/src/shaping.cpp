#include <lapwing/kit/shaping.h>

#include <lapwing/kit/statistics.h>

#include "numbers.h"
#include "recording_format.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <stdexcept>
#include <utility>

namespace lapwing {
namespace {

using Durations = std::vector<Milliseconds>;

template <class Change>
TimingProfile changed(TimingProfile profile, Change change) {
    for (auto& [name, samples] : profile.samples) {
        if (!samples.empty()) {
            change(samples);
        }
    }
    return profile;
}

std::string knownNames(const TimingProfile& profile) {
    std::set<std::string> names;
    for (const auto& [name, samples] : profile.samples) {
        names.insert(name);
    }
    for (const auto& [name, note] : profile.notes) {
        names.insert(name);
    }
    constexpr std::size_t mostListed = 20;
    std::string list;
    std::size_t listed = 0;
    for (auto name = names.begin(); name != names.end() && listed < mostListed; ++name, ++listed) {
        list += (listed == 0 ? "" : ", ") + inQuotes(*name);
    }
    return listed < names.size() ? list + " and " + std::to_string(names.size() - listed) + " more"
                                 : list;
}

void requireKnown(const TimingProfile& profile, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (profile.samples.count(name) == 0 && profile.notes.count(name) == 0) {
            const std::string known = knownNames(profile);
            throw std::invalid_argument(
                "no name " + inQuotes(name) +
                (known.empty() ? "; the profile has no names" : "; there is " + known));
        }
    }
}

template <class Map>
void copyEntry(const Map& from, Map& to, const std::string& name) {
    const auto found = from.find(name);
    if (found != from.end()) {
        to.insert(*found);
    }
}

}  // namespace

void requireFactor(double factor) {
    if (!std::isfinite(factor) || factor < 0) {
        throw std::invalid_argument("a factor must be finite and not negative");
    }
}

Milliseconds scaledSample(Milliseconds sample, double factor) {
    constexpr double beyond = 9223372036854775808.0;
    const double product = std::round(stored(static_cast<double>(sample.count()) * factor));
    if (product >= beyond) {
        return Milliseconds::max();
    }
    if (product < -beyond) {
        return Milliseconds::min();
    }
    return Milliseconds(static_cast<Milliseconds::rep>(product));
}

TimingProfile scaled(TimingProfile profile, double factor) {
    requireFactor(factor);
    if (factor == 1) {
        return profile;
    }
    return changed(std::move(profile), [factor](Durations& samples) {
        for (Milliseconds& sample : samples) {
            sample = scaledSample(sample, factor);
        }
    });
}

TimingProfile trimmed(TimingProfile profile, double lowPercent, double highPercent) {
    requirePercent(lowPercent);
    requirePercent(highPercent);
    if (lowPercent > highPercent) {
        throw std::invalid_argument("the low percentage must not be above the high one");
    }
    return changed(std::move(profile), [=](Durations& samples) {
        const Milliseconds low = percentile(samples, lowPercent);
        const Milliseconds high = percentile(samples, highPercent);
        const auto isOutside = [=](Milliseconds sample) { return sample < low || sample > high; };
        samples.erase(std::remove_if(samples.begin(), samples.end(), isOutside), samples.end());
    });
}

TimingProfile reducedToPercentile(TimingProfile profile, double percent) {
    requirePercent(percent);
    return changed(std::move(profile),
                   [percent](Durations& samples) { samples = {percentile(samples, percent)}; });
}

TimingProfile reducedToAverage(TimingProfile profile) {
    return changed(std::move(profile), [](Durations& samples) { samples = {averageOf(samples)}; });
}

TimingProfile renamed(TimingProfile profile, const std::string& from, const std::string& to) {
    requireKnown(profile, {from});
    if (from == to) {
        return profile;
    }
    if (auto note = profile.notes.extract(from)) {
        profile.notes.emplace(to, std::move(note.mapped()));
    }
    if (const auto samples = profile.samples.extract(from)) {
        Durations& joined = profile.samples[to];
        joined.insert(joined.end(), samples.mapped().begin(), samples.mapped().end());
    }
    return profile;
}

TimingProfile only(const TimingProfile& profile, const std::vector<std::string>& names) {
    requireKnown(profile, names);
    TimingProfile kept;
    for (const std::string& name : names) {
        copyEntry(profile.samples, kept.samples, name);
        copyEntry(profile.notes, kept.notes, name);
    }
    return kept;
}

TimingProfile without(TimingProfile profile, const std::vector<std::string>& names) {
    requireKnown(profile, names);
    for (const std::string& name : names) {
        profile.samples.erase(name);
        profile.notes.erase(name);
    }
    return profile;
}

}  // namespace lapwing
