#include <lapwing/timing_profiles.h>

#include "clock.h"

#include <cstdint>

namespace {

using lapwing::Clock;

// Durations wrap: they are added and subtracted as unsigned numbers and read as signed ones.

std::uint64_t asUnsigned(std::int64_t count) {
    return static_cast<std::uint64_t>(count);
}

Milliseconds averageSampleTime(const std::vector<Milliseconds>& samples) {
    if (samples.empty()) {
        return Milliseconds::zero();
    }
    std::uint64_t sum = 0;
    for (const Milliseconds& sample : samples) {
        sum += asUnsigned(sample.count());
    }
    return Milliseconds(static_cast<Milliseconds::rep>(sum / samples.size()));
}

Milliseconds difference(Milliseconds average, Milliseconds duration) {
    return Milliseconds(
        static_cast<Milliseconds::rep>(asUnsigned(average.count()) - asUnsigned(duration.count())));
}

Clock::time_point deadlineAfter(Milliseconds pause) {
    constexpr std::uint64_t nanosecondsPerMillisecond = 1'000'000;
    const std::uint64_t deadline = asUnsigned(lapwing::now().time_since_epoch().count()) +
                                   asUnsigned(pause.count()) * nanosecondsPerMillisecond;
    return Clock::time_point(Clock::duration(static_cast<Clock::rep>(deadline)));
}

void sleepFor(Milliseconds pause) {
    const Clock::time_point deadline = deadlineAfter(pause);
    for (auto now = lapwing::now(); now < deadline; now = lapwing::now()) {
        lapwing::sleepFor(deadline - now);
    }
}

}  // namespace

TimingProfileEmulator::TimingProfileEmulator() = default;
TimingProfileEmulator::~TimingProfileEmulator() = default;

void TimingProfileEmulator::setProfile(const TimingProfile& recorded) {
    profile = recorded;
}

void TimingProfileEmulator::operator()(const std::string& name, Milliseconds duration) {
    emulateProfile(name, duration);
}

void TimingProfileEmulator::emulateProfile(const std::string& name, Milliseconds duration) {
    const auto found = profile.samples.find(name);
    const Milliseconds average =
        found == profile.samples.end() ? Milliseconds::zero() : averageSampleTime(found->second);
    if (average == Milliseconds::zero()) {
        errorCollector.collectNote(name, "no sample data found in loaded timing profile");
        return;
    }
    const Milliseconds remainder = difference(average, duration);
    if (remainder < Milliseconds::zero()) {
        errorCollector.collectSample(name, remainder);
    } else if (remainder > Milliseconds::zero()) {
        sleepFor(remainder);
    }
}

TimingProfile TimingProfileEmulator::extractErrorProfile() const {
    return errorCollector.extractProfile();
}
