#include "commands.h"
#include "places.h"
#include "processes.h"
#include "recording_format.h"
#include "text_table.h"
#include "values.h"

#include <lapwing/kit/replay.h>
#include <lapwing/kit/report.h>

#include <algorithm>
#include <iostream>
#include <random>

namespace command {
namespace {

using lapwing::ReplayPolicy;

struct StandInFailed {
    int exitCode;
};

std::uint64_t seedOf(const ReplayOptions& options) {
    if (options.seed) {
        return *options.seed;
    }
    std::random_device device;
    return std::uniform_int_distribution<std::uint64_t>()(device);
}

ReplayPolicy choiceOf(const std::string& policy, std::uint64_t seed) {
    if (policy == "average") {
        return ReplayPolicy::average();
    }
    if (policy == "order") {
        return ReplayPolicy::recordedOrder();
    }
    if (policy == "random") {
        return ReplayPolicy::random(seed);
    }
    const std::optional<double> percent = percentileOf(policy);
    if (!percent) {
        throw Failure("--policy: " + lapwing::inQuotes(policy) +
                      " is not average, median, pNN, order or random");
    }
    return ReplayPolicy::percentile(*percent);
}

ReplayPolicy policyOf(const ReplayOptions& options) {
    const std::uint64_t seed = seedOf(options);
    const ReplayPolicy policy = choiceOf(options.policy, seed)
                                    .scaled(options.scale)
                                    .jittered(Milliseconds(options.jitter), seed);
    return options.cap ? policy.capped(Milliseconds(*options.cap)) : policy;
}

std::string namesOf(const TimingProfile& profile) {
    std::vector<std::string> names;
    for (const auto& [name, samples] : profile.samples) {
        names.push_back(lapwing::inQuotes(name));
    }
    std::sort(names.begin(), names.end());
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? "" : ", ") + name;
    }
    return list;
}

// Returns the operation to replay.
std::string chooseName(const TimingProfile& profile, const ReplayOptions& options) {
    if (profile.samples.empty()) {
        throw Failure(nameOf(options.place) + ": there is nothing recorded to replay");
    }
    if (!options.name && profile.samples.size() > 1) {
        throw Failure("--name is needed: there are " + namesOf(profile));
    }
    if (options.name && profile.samples.count(*options.name) == 0) {
        throw Failure("--name: no operation " + lapwing::inQuotes(*options.name) + "; there is " +
                      namesOf(profile));
    }
    return options.name ? *options.name : profile.samples.begin()->first;
}

// Returns that operation alone.
TimingProfile profileOf(const ReplayOptions& options) {
    TimingProfile whole = lapwing::flattened(load(options.place));
    const std::string name = chooseName(whole, options);
    TimingProfile profile;
    profile.samples.insert(whole.samples.extract(name));
    profile.notes.insert(whole.notes.extract(name));
    return profile;
}

// Padding is outside: a signal that comes then ends lapwing as it would end any program.
void runStandIn(const std::vector<std::string>& program) {
    const Interruption interruption;
    const Ending ending = runProgram(program);
    if (ending.isFailure()) {
        throw StandInFailed{ending.exitCode()};
    }
    if (Interruption::signal() != 0) {
        throw StandInFailed{128 + Interruption::signal()};
    }
}

// Returns the exit code.
int runAll(lapwing::Replayer& replayer, const std::string& name, const ReplayOptions& options) {
    try {
        for (std::int64_t run = 0; run < options.runs; ++run) {
            replayer.run(name, [&] { runStandIn(options.program); });
        }
        return 0;
    } catch (const StandInFailed& failure) {
        return failure.exitCode;
    }
}

void warnOfOverruns(const std::string& name, const lapwing::ReplayedOperation& operation) {
    const std::size_t overruns = operation.overruns();
    if (overruns == 0) {
        return;
    }
    Milliseconds most{};
    for (const lapwing::ReplayStep& step : operation.steps) {
        most = std::max(most, std::chrono::duration_cast<Milliseconds>(step.work) - step.target);
    }
    std::cerr << "lapwing: warning: " + lapwing::onOneLine(name) +
                     " took longer than recorded in " + std::to_string(overruns) + " of " +
                     std::to_string(operation.steps.size()) + " runs, by up to " +
                     std::to_string(most.count()) + " ms\n";
}

void describe(const lapwing::ReplayReport& report, const std::string& name,
              const ReplayOptions& options) {
    warnOfOverruns(name, report.operations.at(name));
    if (options.report) {
        std::cerr << lapwing::formatReport(report);
    }
    if (!options.page.empty()) {
        save(options.page, lapwing::replayPage(report, lapwing::onOneLine(name)));
    }
}

}  // namespace

int replay(const ReplayOptions& options) {
    const ReplayPolicy policy = policyOf(options);
    const TimingProfile profile = profileOf(options);
    const std::string name = profile.samples.begin()->first;
    lapwing::Replayer replayer(profile, policy);
    const int exitCode = runAll(replayer, name, options);
    describe(replayer.report(), name, options);
    return exitCode;
}

}  // namespace command
