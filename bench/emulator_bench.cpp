#include <lapwing/timing_profiles.h>

#include "comparisons.h"
#include "floors.h"

namespace {

const std::string name = "SceneLoader::load";
constexpr Milliseconds average{5};

TimingProfile profileOf(std::size_t samples) {
    TimingProfile profile;
    profile.samples[name].assign(samples, average);
    return profile;
}

// Work that took exactly the average: no sleep, and nothing to record.
void emulate(benchmark::State& state, std::size_t samples) {
    TimingProfileEmulator emulator;
    emulator.setProfile(profileOf(samples));
    comparisons::repeat(state, [&] { emulator.emulateProfile(name, average); });
}

void emulateFloor(benchmark::State& state, std::size_t samples) {
    const TimingProfile profile = profileOf(samples);
    comparisons::repeat(state, [&] { return floors::emulationStep(profile, name, average); });
}

}  // namespace

void compareEmulator() {
    for (const std::size_t samples : {10U, 1'000U, 100'000U, 10'000'000U}) {
        comparisons::add(
            {"emulation step without a sleep: " + std::to_string(samples) + " samples",
             "one hash look-up, the samples added up in vector registers, one division", 1.05,
             [=](auto& state) { emulate(state, samples); },
             [=](auto& state) { emulateFloor(state, samples); }});
    }
}
