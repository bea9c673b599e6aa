#include <lapwing/kit/settings_layers.h>

#include "readers_lock.h"
#include "recording_format.h"
#include "setting_text.h"
#include "text_table.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <map>
#include <mutex>
#include <stdexcept>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace lapwing {
namespace {

using Layers = std::vector<std::shared_ptr<SettingsLayer>>;

std::atomic<bool> isInstalled{false};

// The one place in the process, while it exists.
struct Installation {
    Installation() {
        if (isInstalled.exchange(true)) {
            throw std::logic_error("layered settings are installed already");
        }
    }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;
    ~Installation() { isInstalled = false; }
};

struct Override {
    std::uint64_t id;
    std::string text;
};

// The values that are set for a time, by key: the last one of each answers.
class Overrides {
public:
    std::uint64_t add(const std::string& key, std::string text) {
        const std::lock_guard lock(mutex);
        const std::uint64_t id = ++lastId;
        byKey[key].push_back({id, std::move(text)});
        ++count;
        return id;
    }

    void remove(const std::string& key, std::uint64_t id) {
        const std::lock_guard lock(mutex);
        const auto entry = byKey.find(key);
        std::vector<Override>& stack = entry->second;
        stack.erase(std::find_if(stack.begin(), stack.end(),
                                 [id](const Override& it) { return it.id == id; }));
        if (stack.empty()) {
            byKey.erase(entry);
        }
        --count;
    }

    // The last one first. Most reads find that there are none at all, and take no lock.
    [[nodiscard]] std::vector<std::string> find(const std::string& key) const {
        std::vector<std::string> texts;
        if (count != 0) {
            const ReadersLock::Reading reading(mutex);
            const auto entry = byKey.find(key);
            if (entry != byKey.end()) {
                std::for_each(entry->second.rbegin(), entry->second.rend(),
                              [&](const Override& it) { texts.push_back(it.text); });
            }
        }
        return texts;
    }

private:
    mutable ReadersLock mutex;
    std::unordered_map<std::string, std::vector<Override>> byKey;
    std::uint64_t lastId = 0;
    std::atomic<std::size_t> count{0};
};

// The texts that reads have refused, with the reasons.
class Refusals {
public:
    // Returns whether the text is new.
    bool add(const std::string& layer, const std::string& key, const std::string& text,
             const std::string& reason) {
        const std::lock_guard lock(mutex);
        return reasons.emplace(std::tuple(layer, key, text), reason).second;
    }

    [[nodiscard]] std::string find(const std::string& layer, const std::string& key,
                                   const std::string& text) const {
        const std::lock_guard lock(mutex);
        const auto found = reasons.find(std::tuple(layer, key, text));
        return found == reasons.end() ? "" : found->second;
    }

private:
    mutable std::mutex mutex;
    std::map<std::tuple<std::string, std::string, std::string>, std::string> reasons;
};

constexpr const char* overrideName = "a scoped override";

template <class V>
std::string refusalOf(const std::string& text) {
    V value{};
    return parseSetting(text, value) ? "" : std::string("not ") + expectedSetting<V>;
}

std::string quoted(const std::string& text) {
    return '"' + onOneLine(text) + '"';
}

bool isWritable(const std::shared_ptr<SettingsLayer>& layer) {
    return layer->isWritable();
}

}  // namespace

struct LayeredSettings::State {
    State(Layers&& askedInOrder, ProblemHandler&& handler)
        : layers(std::move(askedInOrder)), problems(std::move(handler)) {}

    Installation installation;
    Layers layers;
    ProblemHandler problems;
    Overrides overrides;
    mutable Refusals refusals;

    void report(const std::string& problem) const {
        if (problems) {
            problems(problem);
        }
    }

    template <class V>
    V read(const char* key, const V& fallback) const;
    template <class V>
    bool convert(const SettingsLayer& layer, const std::string& key, const std::string& text,
                 V& value) const;
    template <class V>
    void write(const char* key, const V& value);
    void clear(const std::string& key) const;
    template <class CanAnswer>
    void warnOfLayersBefore(Layers::const_iterator end, const std::string& key,
                            const std::string& change, CanAnswer canAnswer) const;
    template <class Refusal>
    SettingExplanation explain(const std::string& key, Refusal reasonFor) const;
};

template <class V>
V LayeredSettings::State::read(const char* key, const V& fallback) const {
    const std::string name = key;
    V value{};
    for (const std::string& text : overrides.find(name)) {
        if (parseSetting(text, value)) {
            return value;
        }
    }
    for (const std::shared_ptr<SettingsLayer>& layer : layers) {
        const std::optional<std::string> text = layer->find(name);
        if (text && convert(*layer, name, *text, value)) {
            return value;
        }
    }
    return fallback;
}

template <class V>
bool LayeredSettings::State::convert(const SettingsLayer& layer, const std::string& key,
                                     const std::string& text, V& value) const {
    if (parseSetting(text, value)) {
        return true;
    }
    const std::string reason = std::string("not ") + expectedSetting<V>;
    if (refusals.add(layer.name(), key, text, reason)) {
        report(layer.origin(key) + ": setting " + onOneLine(key) + ": " + inQuotes(text) + " is " +
               reason);
    }
    return false;
}

template <class V>
void LayeredSettings::State::write(const char* key, const V& value) {
    const std::string name = key;
    const std::optional<SettingText> text = formatSetting(value);
    if (!text) {
        report("setting " + onOneLine(name) + ": the new value is not " + expectedSetting<V>);
        return;
    }
    const auto layer = std::find_if(layers.begin(), layers.end(), isWritable);
    if (layer == layers.end()) {
        report("setting " + onOneLine(name) + " was not stored: no layer is writable");
        return;
    }
    (*layer)->set(name, *text);
    warnOfLayersBefore(layer, name, "stored in " + (*layer)->name(), [](const std::string& stored) {
        V converted{};
        return parseSetting(stored, converted);
    });
}

void LayeredSettings::State::clear(const std::string& key) const {
    auto end = layers.cbegin();
    for (auto layer = layers.cbegin(); layer != layers.cend(); ++layer) {
        if (isWritable(*layer)) {
            (*layer)->clear(key);
            end = layer;
        }
    }
    if (end == layers.cbegin() && (layers.empty() || !isWritable(*end))) {
        report("setting " + onOneLine(key) + " was not cleared: no layer is writable");
    }
    warnOfLayersBefore(end, key, "cleared", [](const std::string& /*text*/) { return true; });
}

template <class CanAnswer>
void LayeredSettings::State::warnOfLayersBefore(Layers::const_iterator end, const std::string& key,
                                                const std::string& change,
                                                CanAnswer canAnswer) const {
    for (auto layer = layers.cbegin(); layer != end; ++layer) {
        const auto text = isWritable(*layer) ? std::nullopt : (*layer)->find(key);
        if (text && canAnswer(*text)) {
            report("setting " + onOneLine(key) + " was " + change + ", but " +
                   (*layer)->origin(key) + " still answers with " + inQuotes(*text));
            return;
        }
    }
}

template <class Refusal>
SettingExplanation LayeredSettings::State::explain(const std::string& key,
                                                   Refusal reasonFor) const {
    SettingExplanation explanation{key, {}};
    for (std::string& text : overrides.find(key)) {
        explanation.layers.push_back({overrideName, std::move(text), overrideName, {}, false});
    }
    for (const std::shared_ptr<SettingsLayer>& layer : layers) {
        std::optional<std::string> text = layer->find(key);
        std::string origin = text ? layer->origin(key) : "";
        explanation.layers.push_back(
            {layer->name(), std::move(text), std::move(origin), {}, false});
    }
    bool isAnswered = false;
    for (SettingExplanation::Layer& layer : explanation.layers) {
        if (layer.text) {
            layer.refusal = reasonFor(layer.name, *layer.text);
            layer.answers = !isAnswered && layer.refusal.empty();
            isAnswered = isAnswered || layer.answers;
        }
    }
    return explanation;
}

LayeredSettings::LayeredSettings(std::vector<std::shared_ptr<SettingsLayer>> layers,
                                 ProblemHandler problems)
    : state(new State(std::move(layers), std::move(problems))) {
    if (std::find(state->layers.begin(), state->layers.end(), nullptr) != state->layers.end()) {
        throw std::invalid_argument("a layer of settings is null");
    }
    for (const std::shared_ptr<SettingsLayer>& layer : state->layers) {
        layer->setProblemHandler(state->problems);
    }
    setInstance(this);
}

LayeredSettings::~LayeredSettings() {
    setInstance(nullptr);
}

SettingExplanation LayeredSettings::explain(const std::string& key) const {
    return state->explain(key, [&](const std::string& layer, const std::string& text) {
        return state->refusals.find(layer, key, text);
    });
}

template <class V>
SettingExplanation LayeredSettings::explain(const DeveloperSettings::Setting<V>& setting) const {
    return state->explain(setting.name, [](const std::string& /*layer*/, const std::string& text) {
        return refusalOf<V>(text);
    });
}

template SettingExplanation LayeredSettings::explain(const DeveloperSettings::Boolean&) const;
template SettingExplanation LayeredSettings::explain(const DeveloperSettings::Integer&) const;
template SettingExplanation LayeredSettings::explain(const DeveloperSettings::Double&) const;
template SettingExplanation LayeredSettings::explain(const DeveloperSettings::String&) const;
template SettingExplanation LayeredSettings::explain(const DeveloperSettings::WString&) const;

std::wstring LayeredSettings::getValue(const char* key, const std::wstring& fallback) const {
    return state->read(key, fallback);
}

std::string LayeredSettings::getValue(const char* key, const std::string& fallback) const {
    return state->read(key, fallback);
}

double LayeredSettings::getValue(const char* key, double fallback) const {
    return state->read(key, fallback);
}

std::int32_t LayeredSettings::getValue(const char* key, std::int32_t fallback) const {
    return state->read(key, fallback);
}

bool LayeredSettings::getValue(const char* key, bool fallback) const {
    return state->read(key, fallback);
}

bool LayeredSettings::exists(const char* key) const {
    const std::string name = key;
    return !state->overrides.find(name).empty() ||
           std::any_of(state->layers.begin(), state->layers.end(),
                       [&](const auto& layer) { return layer->find(name).has_value(); });
}

void LayeredSettings::setValue(const char* key, const std::wstring& value) {
    state->write(key, value);
}

void LayeredSettings::setValue(const char* key, const std::string& value) {
    state->write(key, value);
}

void LayeredSettings::setValue(const char* key, double value) {
    state->write(key, value);
}

void LayeredSettings::setValue(const char* key, std::int32_t value) {
    state->write(key, value);
}

void LayeredSettings::setValue(const char* key, bool value) {
    state->write(key, value);
}

void LayeredSettings::clear(const char* key) {
    state->clear(key);
}

std::uint64_t LayeredSettings::addOverride(const std::string& key, std::string text) {
    return state->overrides.add(key, std::move(text));
}

void LayeredSettings::removeOverride(const std::string& key, std::uint64_t id) noexcept {
    state->overrides.remove(key, id);
}

namespace {

template <class V>
std::string requireText(const std::string& key, const V& value) {
    std::optional<SettingText> text = formatSetting(value);
    if (!text) {
        throw std::invalid_argument("setting " + onOneLine(key) + ": the value is not " +
                                    expectedSetting<V>);
    }
    return std::move(text->text);
}

}  // namespace

template <class V>
ScopedSetting<V>::ScopedSetting(LayeredSettings& settings, const std::string& key,
                                detail::Parameter<V> value)
    : owner(settings),
      overriddenKey(key),
      id(settings.addOverride(key, requireText<V>(key, value))) {}

template <class V>
ScopedSetting<V>::~ScopedSetting() {
    owner.removeOverride(overriddenKey, id);
}

template class ScopedSetting<bool>;
template class ScopedSetting<std::int32_t>;
template class ScopedSetting<double>;
template class ScopedSetting<std::string>;
template class ScopedSetting<std::wstring>;

std::string formatExplanation(const SettingExplanation& explanation) {
    std::string lines = onOneLine(explanation.key) + '\n';
    bool isAnswered = false;
    for (const SettingExplanation::Layer& layer : explanation.layers) {
        lines += "  " + onOneLine(layer.name) + ": ";
        if (!layer.text) {
            lines += "nothing\n";
            continue;
        }
        isAnswered = isAnswered || layer.answers;
        lines += quoted(*layer.text);
        lines += layer.origin == layer.name ? "" : " (" + onOneLine(layer.origin) + ')';
        lines += layer.answers ? ", answers" : "";
        lines += layer.refusal.empty() ? "" : ", refused: " + layer.refusal;
        lines += '\n';
    }
    return lines + (isAnswered ? "" : "  no layer answers: the default counts\n");
}

}  // namespace lapwing
