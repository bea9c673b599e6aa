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

void step(TimingProfileEmulator& emulator) {
    emulator.emulateProfile(name, average);
}
void step(floors::Emulator& emulator) {
    emulator.emulate(name, average);
}

// Work that took exactly the average: no sleep, and nothing to record.
template <class Emulator>
void emulate(benchmark::State& state, std::size_t samples) {
    Emulator emulator;
    emulator.setProfile(profileOf(samples));
    comparisons::repeat(state, [&] { step(emulator); });
}

}  // namespace

void compareEmulator() {
    for (const std::size_t samples : {10U, 1'000U, 100'000U, 10'000'000U}) {
        comparisons::add({"emulation step without a sleep: " + std::to_string(samples) + " samples",
                          1.05,
                          [=](auto& state) { emulate<TimingProfileEmulator>(state, samples); },
                          [=](auto& state) { emulate<floors::Emulator>(state, samples); }});
    }
}
