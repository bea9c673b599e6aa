#include <lapwing/kit/settings_files.h>

#include "comparisons.h"
#include "floors.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <shared_mutex>
#include <utility>

namespace {

const char* const key = "view.showGrid";

// Three layers that do not have the key, and a file that has it.
class Layered {
public:
    Layered() {
        std::ofstream(file) << R"({"view": {"showGrid": true, "scale": 2}})";
        memory->set("view.scale", {"3", true});
        settings = std::make_unique<lapwing::LayeredSettings>(
            std::vector<std::shared_ptr<lapwing::SettingsLayer>>{
                std::make_shared<lapwing::ArgumentsLayer>(
                    std::vector<std::string>{"net.retries=5"}),
                std::make_shared<lapwing::EnvironmentLayer>("PA"), memory,
                std::make_shared<lapwing::JsonFileLayer>(file)});
    }
    Layered(const Layered&) = delete;
    Layered& operator=(const Layered&) = delete;
    ~Layered() { std::filesystem::remove(file); }

private:
    std::filesystem::path file =
        std::filesystem::temp_directory_path() / "lapwing-bench-settings.json";
    std::shared_ptr<lapwing::MemoryLayer> memory = std::make_shared<lapwing::MemoryLayer>();
    std::unique_ptr<lapwing::LayeredSettings> settings;
};

class Layer {
public:
    explicit Layer(const std::string& known) { texts[known] = "true"; }
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;
    virtual ~Layer() = default;
    [[nodiscard]] virtual const std::string* find(const std::string& name) const {
        const auto found = texts.find(name);
        return found == texts.end() ? nullptr : &found->second;
    }

private:
    std::unordered_map<std::string, std::string> texts;
};

// The same virtual calls and look-ups, under one shared lock if there is more than one thread.
template <bool isShared>
class Maps final : public floors::Source {
public:
    Maps() { setInstance(this); }
    Maps(const Maps&) = delete;
    Maps& operator=(const Maps&) = delete;
    ~Maps() { setInstance(nullptr); }

    std::string getValue(const char* /*name*/, const std::string& fallback) const override {
        return fallback;
    }
    double getValue(const char* /*name*/, double fallback) const override { return fallback; }
    std::int32_t getValue(const char* /*name*/, std::int32_t fallback) const override {
        return fallback;
    }
    bool getValue(const char* name, bool fallback) const override {
        const std::shared_lock lock =
            isShared ? std::shared_lock(mutex) : std::shared_lock(mutex, std::defer_lock);
        const std::string asked = name;
        for (const std::unique_ptr<const Layer>& layer : layers) {
            if (const std::string* const text = layer->find(asked)) {
                return *text == "true";
            }
        }
        return fallback;
    }

private:
    mutable std::shared_mutex mutex;
    std::array<std::unique_ptr<const Layer>, 4> layers{
        std::make_unique<Layer>("net.retries"), std::make_unique<Layer>("TH"),
        std::make_unique<Layer>("view.scale"), std::make_unique<Layer>(key)};
};

template <class Setting, class Provider>
void read(benchmark::State& state) {
    static const Provider installed;
    const Setting setting{key, false};
    comparisons::repeat(state, [&] { return setting(); });
}

using LapwingSetting = DeveloperConfig::Item<bool>;
using FloorSetting = floors::Setting<bool>;

}  // namespace

void compareLayeredSettings() {
    const std::string name = "reading a bool through four layers: ";
    comparisons::add(
        {name + "1 thread", 2.0, read<LapwingSetting, Layered>, read<FloorSetting, Maps<false>>});
    comparisons::Comparison threads{name + "8 threads", 2.0, read<LapwingSetting, Layered>,
                                    read<FloorSetting, Maps<true>>};
    threads.threads = 8;
    comparisons::add(threads);
}
