#include <lapwing/timing_profiles.h>

#include <cstdint>
#include <ratio>
#include <thread>
#include <type_traits>

namespace {

using Clock = std::chrono::steady_clock;
static_assert(std::is_same_v<Clock::period, std::nano>);

// Durations wrap: they are added and subtracted as unsigned numbers and read as signed ones.

std::uint64_t bits(std::int64_t count) {
    return static_cast<std::uint64_t>(count);
}

Milliseconds averageSampleTime(const std::vector<Milliseconds>& samples) {
    if (samples.empty()) {
        return Milliseconds::zero();
    }
    std::uint64_t sum = 0;
    for (const Milliseconds& sample : samples) {
        sum += bits(sample.count());
    }
    return Milliseconds(static_cast<Milliseconds::rep>(sum / samples.size()));
}

Milliseconds difference(Milliseconds average, Milliseconds duration) {
    return Milliseconds(
        static_cast<Milliseconds::rep>(bits(average.count()) - bits(duration.count())));
}

Clock::time_point after(Milliseconds pause) {
    constexpr std::uint64_t nanosecondsPerMillisecond = 1'000'000;
    const std::uint64_t target = bits(Clock::now().time_since_epoch().count()) +
                                 bits(pause.count()) * nanosecondsPerMillisecond;
    return Clock::time_point(Clock::duration(static_cast<Clock::rep>(target)));
}

void sleepFor(Milliseconds pause) {
    const Clock::time_point target = after(pause);
    for (auto now = Clock::now(); now < target; now = Clock::now()) {
        std::this_thread::sleep_for(target - now);
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
