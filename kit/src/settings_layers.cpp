#include <lapwing/kit/settings_layers.h>

#include "environment.h"
#include "readers_lock.h"
#include "recording_format.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
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

std::uint64_t lengthBit(const std::string& key) {
    return std::uint64_t{1} << (key.size() % 64);
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

// Keys that share a variable are the same to this order.
struct LessAsVariable {
    bool operator()(const std::string& left, const std::string& right) const {
        return std::lexicographical_compare(
            left.begin(), left.end(), right.begin(), right.end(),
            [](char one, char other) { return inVariable(one) < inVariable(other); });
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
    return std::all_of(rest.begin(), rest.end(), [](char character) {
        return asCompared(character) == inVariable(character);
    });
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
    ReadersLock mutex;
    Texts texts;

    // One bit for each length of a key that was ever set: most reads are of keys that were not, and
    // need no lock.
    std::atomic<std::uint64_t> lengths{0};
};

MemoryLayer::MemoryLayer() : state(new State) {}
MemoryLayer::~MemoryLayer() = default;

std::string MemoryLayer::name() const {
    return "memory";
}

std::optional<std::string> MemoryLayer::find(const std::string& key) const {
    if ((state->lengths & lengthBit(key)) == 0) {
        return std::nullopt;
    }
    const ReadersLock::Reading reading(state->mutex);
    return findIn(state->texts, key);
}

bool MemoryLayer::isWritable() const noexcept {
    return true;
}

void MemoryLayer::set(const std::string& key, const SettingText& value) {
    const std::lock_guard lock(state->mutex);
    state->texts[key] = value.text;
    state->lengths |= lengthBit(key);
}

void MemoryLayer::clear(const std::string& key) {
    const std::lock_guard lock(state->mutex);
    state->texts.erase(key);
}

struct EnvironmentLayer::State {
    std::string prefix;
    std::map<std::string, std::string, LessAsVariable> texts;
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
    return "the command line";
}

std::optional<std::string> ArgumentsLayer::find(const std::string& key) const {
    return findIn(state->texts, key);
}

}  // namespace lapwing
