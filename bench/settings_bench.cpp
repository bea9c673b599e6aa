#include <lapwing/setting_types.h>

#include "comparisons.h"
#include "floors.h"

#if defined(LAPWING_BENCH_ABSL_FLAGS)
#include <absl/flags/flag.h>
#endif

namespace {

using comparisons::Peer;

const char* const key = "bench.value";
const std::string longText = "a text that is longer than the buffer inside a string";

}  // namespace

#if defined(LAPWING_BENCH_ABSL_FLAGS)
ABSL_FLAG(std::string, bench_value, longText, "A text to read");
#endif

namespace {

// A host's provider, the same for the library and for the floor. It holds a value of each type.
template <class Interface>
class Host : public Interface {
public:
    Host() { Interface::setInstance(this); }
    ~Host() { Interface::setInstance(nullptr); }

    using Interface::getValue;
    bool getValue(const char* /*key*/, bool /*fallback*/) const override { return flag; }
    std::int32_t getValue(const char* /*key*/, std::int32_t /*fallback*/) const override {
        return number;
    }
    double getValue(const char* /*key*/, double /*fallback*/) const override { return ratio; }
    std::string getValue(const char* /*key*/, const std::string& /*fallback*/) const override {
        return text;
    }

private:
    bool flag = true;
    std::int32_t number = 5;
    double ratio = 0.5;
    std::string text = longText;
};

struct Nobody {};

template <class Setting, class Installed, class V>
void read(benchmark::State& state, const V& fallback) {
    [[maybe_unused]] const Installed installed;
    const Setting setting{key, fallback};
    comparisons::repeat(state, [&] { return setting(); });
}

template <class V>
void compareReads(const std::string& type, const V& fallback, const std::vector<Peer>& peers,
                  const std::vector<Peer>& peersOfProvider) {
    comparisons::add({"reading a setting: " + type + ", no provider", 1.10,
                      [=](auto& state) { read<DeveloperConfig::Item<V>, Nobody>(state, fallback); },
                      [=](auto& state) { read<floors::Setting<V>, Nobody>(state, fallback); },
                      peers});
    using HostOfLapwing = Host<DeveloperSettings::Provider>;
    using HostOfFloor = Host<floors::Source>;
    comparisons::add(
        {"reading a setting: " + type + ", a provider", 1.10,
         [=](auto& state) { read<DeveloperConfig::Item<V>, HostOfLapwing>(state, fallback); },
         [=](auto& state) { read<floors::Setting<V>, HostOfFloor>(state, fallback); },
         peersOfProvider});
}

comparisons::Body readAbslFlag() {
#if defined(LAPWING_BENCH_ABSL_FLAGS)
    return [](benchmark::State& state) {
        comparisons::repeat(state, [] { return absl::GetFlag(FLAGS_bench_value); });
    };
#else
    return {};
#endif
}

}  // namespace

void compareSettings() {
    compareReads<bool>("bool", true, {}, {});
    compareReads<std::int32_t>("int", 3, {}, {});
    compareReads<double>("double", 1.5, {}, {});
    compareReads<std::string>("long string", longText, {{"absl::GetFlag", 2, readAbslFlag()}},
                              {{"absl::GetFlag", 1.5, readAbslFlag()}});
}
