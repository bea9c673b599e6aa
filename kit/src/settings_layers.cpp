#include <lapwing/kit/settings_layers.h>

#include "environment.h"
#include "recording_format.h"

#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace lapwing {
namespace {

using Texts = std::unordered_map<std::string, std::string>;

template <class Map>
std::optional<std::string> findIn(const Map& texts, const std::string& key) {
    const auto found = texts.find(key);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
}

bool isBetween(char character, char first, char last) {
    return first <= character && character <= last;
}

char upper(char character) {
    return isBetween(character, 'a', 'z') ? static_cast<char>(character - 'a' + 'A') : character;
}

char inVariable(char character) {
    const char letter = upper(character);
    return isBetween(letter, 'A', 'Z') || isBetween(letter, '0', '9') ? letter : '_';
}

// Keys that share a variable are the same to these two.
struct HashAsVariable {
    std::size_t operator()(const std::string& key) const {
        std::size_t hash = 0;
        for (const char character : key) {
            hash = hash * 31 + static_cast<unsigned char>(inVariable(character));
        }
        return hash;
    }
};

struct EqualAsVariables {
    bool operator()(const std::string& left, const std::string& right) const {
        if (left.size() != right.size()) {
            return false;
        }
        for (std::size_t i = 0; i < left.size(); ++i) {
            if (inVariable(left[i]) != inVariable(right[i])) {
                return false;
            }
        }
        return true;
    }
};

// How a variable's name is compared with the prefix and with the names that keys can have.
char asCompared(char character) {
#ifdef _WIN32
    return upper(character);
#else
    return character;
#endif
}

bool hasPrefix(std::string_view name, std::string_view prefix) {
    if (name.size() < prefix.size()) {
        return false;
    }
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if (asCompared(name[i]) != asCompared(prefix[i])) {
            return false;
        }
    }
    return true;
}

bool canBeOfKey(std::string_view rest) {
    for (const char character : rest) {
        if (asCompared(character) != inVariable(character)) {
            return false;
        }
    }
    return true;
}

}  // namespace

SettingsLayer::~SettingsLayer() = default;

std::string SettingsLayer::origin(const std::string& /*key*/) const {
    return name();
}

bool SettingsLayer::isWritable() const noexcept {
    return false;
}

void SettingsLayer::set(const std::string& /*key*/, const SettingText& /*value*/) {}
void SettingsLayer::clear(const std::string& /*key*/) {}
void SettingsLayer::setProblemHandler(const ProblemHandler& /*handler*/) {}

struct MemoryLayer::State {
    std::shared_mutex mutex;
    Texts texts;
};

MemoryLayer::MemoryLayer() : state(new State) {}
MemoryLayer::~MemoryLayer() = default;

std::string MemoryLayer::name() const {
    return "memory";
}

std::optional<std::string> MemoryLayer::find(const std::string& key) const {
    const std::shared_lock lock(state->mutex);
    return findIn(state->texts, key);
}

bool MemoryLayer::isWritable() const noexcept {
    return true;
}

void MemoryLayer::set(const std::string& key, const SettingText& value) {
    const std::lock_guard lock(state->mutex);
    state->texts[key] = value.text;
}

void MemoryLayer::clear(const std::string& key) {
    const std::lock_guard lock(state->mutex);
    state->texts.erase(key);
}

struct EnvironmentLayer::State {
    std::string prefix;
    std::unordered_map<std::string, std::string, HashAsVariable, EqualAsVariables> texts;
};

EnvironmentLayer::EnvironmentLayer(std::string prefix) : state(new State{std::move(prefix), {}}) {
    for (const std::string& variable : environmentVariables()) {
        const std::size_t end = variable.find('=');
        const std::string name = variable.substr(0, end);
        if (end == std::string::npos || !hasPrefix(name, state->prefix)) {
            continue;
        }
        std::string rest = name.substr(state->prefix.size());
        if (canBeOfKey(rest)) {
            state->texts.emplace(std::move(rest), variable.substr(end + 1));
        }
    }
}

EnvironmentLayer::~EnvironmentLayer() = default;

std::string EnvironmentLayer::name() const {
    return "the environment";
}

std::optional<std::string> EnvironmentLayer::find(const std::string& key) const {
    return findIn(state->texts, key);
}

std::string EnvironmentLayer::origin(const std::string& key) const {
    std::string variable = state->prefix;
    for (const char character : key) {
        variable += inVariable(character);
    }
    return "environment variable " + variable;
}

struct ArgumentsLayer::State {
    Texts texts;
};

ArgumentsLayer::ArgumentsLayer(const std::vector<std::string>& arguments) : state(new State) {
    for (const std::string& argument : arguments) {
        const std::size_t separator = argument.find('=');
        if (separator == std::string::npos || separator == 0) {
            throw std::invalid_argument("a setting must be key=value, not " + inQuotes(argument));
        }
        state->texts[argument.substr(0, separator)] = argument.substr(separator + 1);
    }
}

ArgumentsLayer::~ArgumentsLayer() = default;

std::string ArgumentsLayer::name() const {
    return "the arguments";
}

std::optional<std::string> ArgumentsLayer::find(const std::string& key) const {
    return findIn(state->texts, key);
}

}  // namespace lapwing
