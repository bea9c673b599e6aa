#include <lapwing/kit/replay.h>

#include "comparisons.h"
#include "floors.h"

namespace {

const std::string name = "SceneLoader::load";
constexpr Milliseconds target{5};

TimingProfile profileOfAMillionSamples() {
    TimingProfile profile;
    profile.samples[name].assign(1'000'000, target);
    return profile;
}

struct Emulator : TimingProfileEmulator {
    explicit Emulator(const TimingProfile& recorded) { setProfile(recorded); }
};

// Work that took exactly the target: no wait. All runs share one replayer, since making it leaves
// the allocator in a state that the steps would pay for.
template <class Replayer>
void replay(benchmark::State& state) {
    static Replayer replayer(profileOfAMillionSamples());
    comparisons::repeat(state, [&] { replayer(name, target); });
}

}  // namespace

void compareReplayer() {
    comparisons::Comparison comparison{"replay step without a wait: a million samples",
                                       1.10,
                                       replay<lapwing::Replayer>,
                                       replay<floors::Replayer>,
                                       {{"TimingProfileEmulator", 1000, replay<Emulator>}}};
    comparison.iterations = 20'000;
    comparisons::add(comparison);
}
