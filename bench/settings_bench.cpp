#include <lapwing/setting_types.h>

#include "comparisons.h"
#include "floors.h"

#if defined(LAPWING_BENCH_ABSL_FLAGS)
#include <absl/flags/flag.h>
#endif
#if defined(LAPWING_BENCH_QSETTINGS)
#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#endif

namespace {

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

template <class Installed, class V>
void readSetting(benchmark::State& state, const V& fallback) {
    [[maybe_unused]] const Installed installed;
    const DeveloperConfig::Item<V> setting{key, fallback};
    comparisons::repeat(state, [&] { return setting(); });
}

template <class Installed, class V>
void readFloor(benchmark::State& state, const V& fallback) {
    [[maybe_unused]] const Installed installed;
    const floors::Setting<V> setting{key, [fallback] { return fallback; }};
    comparisons::repeat(state, [&] { return setting.value(); });
}

template <class V>
void addReads(const std::string& type, const V& fallback,
              const std::vector<comparisons::Peer>& peers) {
    using comparisons::add;
    add({"reading a setting: " + type + ", no provider",
         "the pointer to the provider loaded, the default made by its callable", 1.10,
         [=](auto& state) { readSetting<Nobody>(state, fallback); },
         [=](auto& state) { readFloor<Nobody>(state, fallback); }, peers});
    add({"reading a setting: " + type + ", a provider",
         "the pointer to the provider loaded, the default made by its callable, a virtual call",
         1.10,
         [=](auto& state) { readSetting<Host<DeveloperSettings::Provider>>(state, fallback); },
         [=](auto& state) { readFloor<Host<floors::Source>>(state, fallback); }, peers});
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

comparisons::Body readQSettings([[maybe_unused]] bool isKept) {
#if defined(LAPWING_BENCH_QSETTINGS)
    return [=](benchmark::State& state) {
        const QTemporaryDir folder;
        const QString file = folder.filePath("settings.ini");
        const QString name = "bench/value";
        QSettings kept(file, QSettings::IniFormat);
        kept.setValue(name, QString::fromStdString(longText));
        kept.sync();
        comparisons::repeat(state, [&] {
            return isKept ? kept.value(name).toString()
                          : QSettings(file, QSettings::IniFormat).value(name).toString();
        });
    };
#else
    return {};
#endif
}

}  // namespace

void compareSettings() {
    addReads<bool>("bool", true, {});
    addReads<std::int32_t>("int", 3, {});
    addReads<double>("double", 1.5, {});
    addReads<std::string>("long string", longText,
                          {{"absl::GetFlag", 2, readAbslFlag()},
                           {"QSettings, made for the read", 50, readQSettings(false)},
                           {"QSettings, kept", 0, readQSettings(true)}});
}
