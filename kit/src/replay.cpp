#include <lapwing/kit/replay.h>

#include <lapwing/kit/statistics.h>

#include "numbers.h"
#include "recording_format.h"
#include "system_timer.h"

#include <algorithm>
#include <mutex>
#include <random>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

namespace lapwing {
namespace {

using Durations = std::vector<Milliseconds>;

constexpr Milliseconds sevenDays = std::chrono::hours(7 * 24);

// The algorithm of Fowler, Noll and Vo, in its variant 1a for 64 bits.
std::uint64_t hashOf(std::string_view name) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : name) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }
    return hash;
}

// Draws for one name. It gives the same numbers with every standard library.
class Draws {
public:
    enum class Purpose : std::uint32_t { Choice, Jitter };

    Draws(Purpose purpose, std::uint64_t seed, std::string_view name) {
        const std::uint64_t hash = hashOf(name);
        std::seed_seq words{static_cast<std::uint32_t>(purpose), static_cast<std::uint32_t>(seed),
                            static_cast<std::uint32_t>(seed >> 32U),
                            static_cast<std::uint32_t>(hash),
                            static_cast<std::uint32_t>(hash >> 32U)};
        engine.seed(words);
    }

    // Draws a number below `count`. The lowest numbers are left out so that all are equally likely.
    std::uint64_t below(std::uint64_t count) {
        const std::uint64_t leftOut = (0 - count) % count;
        std::uint64_t number = engine();
        while (number < leftOut) {
            number = engine();
        }
        return number % count;
    }

private:
    std::mt19937_64 engine;
};

struct Operation {
    std::optional<Milliseconds> recorded;
    Durations targets;  // before jitter
    std::size_t nextTarget = 0;
    std::unique_ptr<Draws> choice;  // without it, targets are taken in their order
    std::unique_ptr<Draws> jitter;
    std::vector<ReplayStep> steps;
    std::size_t waiting = 0;
};

// Makes room for the steps that are waiting and one more, so that none of them can fail.
void reserveStep(Operation& operation) {
    const std::size_t needed = operation.steps.size() + operation.waiting + 1;
    if (needed > operation.steps.capacity()) {
        operation.steps.reserve(2 * needed);
    }
}

Milliseconds chooseTarget(Operation& operation) {
    const std::size_t count = operation.targets.size();
    if (operation.choice) {
        return operation.targets[static_cast<std::size_t>(operation.choice->below(count))];
    }
    const Milliseconds target = operation.targets[operation.nextTarget];
    operation.nextTarget = (operation.nextTarget + 1) % count;
    return target;
}

Milliseconds drawJitter(Draws& draws, Milliseconds most) {
    const auto half = static_cast<std::uint64_t>(most.count());
    return Milliseconds(static_cast<Milliseconds::rep>(draws.below(2 * half + 1) - half));
}

[[noreturn]] void refuse(const std::string& name, const std::string& reason) {
    throw std::invalid_argument("cannot replay " + inQuotes(name) + ": " + reason);
}

void requireReplayable(const std::string& name, const Durations& samples) {
    if (samples.empty()) {
        refuse(name, "it has no samples");
    }
    const Milliseconds least = *std::min_element(samples.begin(), samples.end());
    if (least < Milliseconds::zero()) {
        refuse(name, "a sample is negative: " + std::to_string(least.count()) + " ms");
    }
}

void requireNotNegative(Milliseconds time, const char* what) {
    if (time < Milliseconds::zero()) {
        throw std::invalid_argument(std::string(what) + " must not be negative");
    }
}

}  // namespace

ReplayPolicy ReplayPolicy::average() {
    return ReplayPolicy(Choice::Average);
}

ReplayPolicy ReplayPolicy::percentile(double percent) {
    requirePercent(percent);
    ReplayPolicy policy(Choice::Percentile);
    policy.percent = percent;
    return policy;
}

ReplayPolicy ReplayPolicy::recordedOrder() {
    return ReplayPolicy(Choice::RecordedOrder);
}

ReplayPolicy ReplayPolicy::random(std::uint64_t seed) {
    ReplayPolicy policy(Choice::Random);
    policy.randomSeed = seed;
    return policy;
}

ReplayPolicy ReplayPolicy::scaled(double factor) const {
    ReplayPolicy policy = *this;
    requireFactor(factor);
    policy.scale *= factor;
    requireFactor(policy.scale);
    return policy;
}

ReplayPolicy ReplayPolicy::jittered(Milliseconds most, std::uint64_t seed) const {
    requireNotNegative(most, "a jitter");
    ReplayPolicy policy = *this;
    policy.jitter = most;
    policy.jitterSeed = seed;
    return policy;
}

ReplayPolicy ReplayPolicy::capped(Milliseconds longest) const {
    requireNotNegative(longest, "a cap");
    ReplayPolicy policy = *this;
    policy.cap = std::min(cap, longest);
    return policy;
}

struct Replayer::State {
    ReplayPolicy policy;
    Waiting waiting;
    std::unordered_map<std::string, std::string> notes;
    std::mutex mutex;
    std::unordered_map<std::string, Operation> operations;

    [[nodiscard]] Durations targetsOf(const Durations& samples) const;
    void requireShort(const std::string& name, const Durations& targets) const;
    void load(const std::string& name, const Durations& samples);
    Milliseconds nextTarget(Operation& operation, const std::string& name) const;
};

Durations Replayer::State::targetsOf(const Durations& samples) const {
    using Choice = ReplayPolicy::Choice;
    Durations targets;
    if (policy.choice == Choice::Average) {
        targets = {averageOf(samples)};
    } else if (policy.choice == Choice::Percentile) {
        targets = {lapwing::percentile(samples, policy.percent)};
    } else {
        targets = samples;
    }
    if (policy.scale != 1) {
        for (Milliseconds& target : targets) {
            target = scaledSample(target, policy.scale);
        }
    }
    return targets;
}

void Replayer::State::requireShort(const std::string& name, const Durations& targets) const {
    const Milliseconds longest = *std::max_element(targets.begin(), targets.end());
    if (policy.cap > sevenDays && longest > sevenDays - policy.jitter) {
        refuse(name, "it could be made to last longer than seven days");
    }
}

void Replayer::State::load(const std::string& name, const Durations& samples) {
    requireReplayable(name, samples);
    Operation& operation = operations[name];
    operation.recorded = averageOf(samples);
    operation.targets = targetsOf(samples);
    requireShort(name, operation.targets);
}

Milliseconds Replayer::State::nextTarget(Operation& operation, const std::string& name) const {
    using Purpose = Draws::Purpose;
    if (policy.choice == ReplayPolicy::Choice::Random && !operation.choice) {
        operation.choice = std::make_unique<Draws>(Purpose::Choice, policy.randomSeed, name);
    }
    if (policy.jitter != Milliseconds::zero() && !operation.jitter) {
        operation.jitter = std::make_unique<Draws>(Purpose::Jitter, policy.jitterSeed, name);
    }
    const Milliseconds target = chooseTarget(operation);
    if (!operation.jitter) {
        return std::min(target, policy.cap);
    }
    const Milliseconds jitter = drawJitter(*operation.jitter, policy.jitter);
    return jitter > policy.cap - target ? policy.cap
                                        : std::max(Milliseconds::zero(), target + jitter);
}

Replayer::Replayer(const TimingProfile& profile, ReplayPolicy policy, Waiting waiting)
    : state(new State{policy, waiting, profile.notes, {}, {}}) {
    for (const auto& [name, samples] : profile.samples) {
        state->load(name, samples);
    }
}

Replayer::~Replayer() = default;

void Replayer::operator()(const std::string& name, Milliseconds took) {
    const Time worked = now();
    pad(name, worked - std::clamp(took, Milliseconds::zero(), sevenDays), worked);
}

Replayer::Time Replayer::currentTime() noexcept {
    return now();
}

void Replayer::pad(const std::string& name, Time started, Time worked) {
    std::unique_lock lock(state->mutex);
    Operation& operation = state->operations[name];
    reserveStep(operation);
    ReplayStep step;
    step.work = worked - started;
    if (operation.recorded) {
        step.target = state->nextTarget(operation, name);
    }
    ++operation.waiting;
    lock.unlock();

    if (step.work < step.target) {
        waitUntil(started + step.target, state->waiting);
    }
    step.ended = now() - started;

    lock.lock();
    --operation.waiting;
    operation.steps.push_back(step);
}

ReplayReport Replayer::report() const {
    const std::lock_guard lock(state->mutex);
    ReplayReport report;
    for (const auto& [name, operation] : state->operations) {
        const auto note = state->notes.find(name);
        report.operations[name] = {operation.recorded,
                                   note == state->notes.end() ? std::string() : note->second,
                                   operation.steps};
    }
    return report;
}

}  // namespace lapwing
