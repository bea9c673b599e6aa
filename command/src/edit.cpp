#include "commands.h"
#include "operations.h"
#include "places.h"
#include "values.h"

#include <lapwing/kit/shaping.h>

#include <algorithm>
#include <functional>
#include <iterator>

namespace command {
namespace {

using lapwing::Recording;
using Change = std::function<TimingProfile(TimingProfile)>;

bool hasName(const TimingProfile& profile, const std::string& name) {
    return profile.samples.count(name) != 0 || profile.notes.count(name) != 0;
}

// Of `names`, those that the profile has.
Names present(const TimingProfile& profile, const Names& names) {
    Names found;
    std::copy_if(names.begin(), names.end(), std::back_inserter(found),
                 [&](const std::string& name) { return hasName(profile, name); });
    return found;
}

// The names of all recordings, and those that they are given: others are unknown.
class KnownNames {
public:
    explicit KnownNames(const Recordings& recordings) : names(namesOf(recordings)) {}

    void require(const std::string& option, const Names& wanted) const {
        inOption(option, [&] { static_cast<void>(lapwing::only(names, wanted)); });
    }

    void add(const std::string& name) { names.notes.emplace(name, ""); }

private:
    TimingProfile names;
};

void requireKnown(const EditOptions& options, const Recordings& recordings) {
    KnownNames known(recordings);
    known.require("--only", options.only);
    known.require("--without", options.without);
    for (const auto& [from, to] : options.renames) {
        known.require("--rename", {from});
        known.add(to);
    }
}

TimingProfile choose(TimingProfile profile, const EditOptions& options) {
    if (!options.only.empty()) {
        profile = lapwing::only(profile, present(profile, options.only));
    }
    const Names dropped = present(profile, options.without);
    profile = lapwing::without(std::move(profile), dropped);
    for (const auto& [from, to] : options.renames) {
        if (hasName(profile, from)) {
            profile = lapwing::renamed(std::move(profile), from, to);
        }
    }
    return profile;
}

Change reduction(const std::string& how) {
    if (how == "average") {
        return lapwing::reducedToAverage;
    }
    const auto percent = percentileOf(how);
    if (!percent) {
        throw Failure("--reduce: \"" + how + "\" is none of average, median and pNN");
    }
    return [percent](TimingProfile profile) {
        return lapwing::reducedToPercentile(std::move(profile), *percent);
    };
}

// What is done to the samples, in this order.
std::vector<Change> changesOf(const EditOptions& options) {
    std::vector<Change> changes;
    const auto add = [&](const std::string& option, Change change) {
        inOption(option, [&] { static_cast<void>(change({})); });
        changes.push_back(std::move(change));
    };
    if (options.scale) {
        add("--scale", [factor = *options.scale](TimingProfile profile) {
            return lapwing::scaled(std::move(profile), factor);
        });
    }
    if (options.trim) {
        add("--trim", [range = *options.trim](TimingProfile profile) {
            return lapwing::trimmed(std::move(profile), range.first, range.second);
        });
    }
    if (options.reduce) {
        add("--reduce", reduction(*options.reduce));
    }
    return changes;
}

bool isSame(const Recording& left, const Recording& right) {
    return left.labels == right.labels && left.profile.notes == right.profile.notes &&
           left.profile.samples == right.profile.samples;
}

Recording edited(const Recording& recording, const EditOptions& options,
                 const std::vector<Change>& changes) {
    TimingProfile profile = choose(recording.profile, options);
    for (const Change& change : changes) {
        profile = change(std::move(profile));
    }
    Labels labels = options.labels;
    labels.insert(recording.labels.begin(), recording.labels.end());
    Recording result = lapwing::makeRecording(std::move(profile), std::move(labels));
    result.recorded = recording.recorded;
    return isSame(result, recording) ? recording : result;
}

}  // namespace

int edit(const EditOptions& options) {
    Recordings recordings = load(Places{options.place});
    requireKnown(options, recordings);
    const std::vector<Change> changes = changesOf(options);
    for (Recording& recording : recordings) {
        recording = edited(recording, options, changes);
    }
    save(options.output, recordings);
    return 0;
}

}  // namespace command
