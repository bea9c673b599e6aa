#include <lapwing/kit/settings_files.h>

#include "file_replacement.h"
#include "readers_lock.h"
#include "recording_format.h"
#include "settings_format.h"
#include "system_file.h"
#include "system_timer.h"
#include "utf8.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <mutex>
#include <new>
#include <stdexcept>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace lapwing {

namespace fs = std::filesystem;

namespace {

using Problems = std::vector<std::string>;

constexpr std::chrono::milliseconds lookInterval{250};

// What shows that a file has changed: its time and size.
using Stamp = std::pair<fs::file_time_type, std::uintmax_t>;

// Nothing if the file is not there. What cannot be asked for gets the values that stand for errors.
std::optional<Stamp> stampOf(const fs::path& file) {
    std::error_code error;
    if (fs::status(file, error).type() == fs::file_type::not_found) {
        return std::nullopt;
    }
    return Stamp(fs::last_write_time(file, error), fs::file_size(file, error));
}

// Some file systems count in steps of two seconds. Within a step, files of one size look the same.
bool isSettled(const std::optional<Stamp>& stamp) {
    return !stamp || stamp->first < fs::file_time_type::clock::now() - std::chrono::seconds(2);
}

// Opening a pipe would wait for its other end.
void requireRegularFile(const fs::path& file) {
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw std::runtime_error(displayName(file) + ": not a regular file");
    }
}

// Of a file that is too large, a part that is too large as well.
std::string contentsOf(const fs::path& file) {
    requireRegularFile(file);
    InputFile input(file);
    std::vector<char> buffer(std::size_t{64} << 10U);
    std::string text;
    std::size_t count = 0;
    do {
        count = input.read(buffer.data(), buffer.size());
        text.append(buffer.data(), count);
    } while (count != 0 && text.size() <= largestSettingsFile + buffer.size());
    return text;
}

// What `call` throws is a problem, too.
template <class Call>
Problems problemsOfCall(const std::string& introduction, const Call& call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        return {introduction + error.what()};
    }
}

// One value to store, or to remove.
class Change {
public:
    Change(std::string changedKey, std::optional<StoredValue> newValue)
        : key(std::move(changedKey)), value(std::move(newValue)) {
        if (!isUtf8(key) || (value && !isUtf8(value->text))) {
            throw std::invalid_argument("it is not UTF-8");
        }
    }

    // Whether that changes something.
    [[nodiscard]] bool applyTo(StoredValues& values) const {
        if (!value) {
            return values.erase(key) != 0;
        }
        StoredValue& stored = values[key];
        const bool changes = !stored.isSameAs(*value);
        stored = changes ? *value : stored;
        return changes;
    }

    [[nodiscard]] bool stores() const { return value.has_value(); }

    // What is called a literal can be anything.
    void requireIn(const StoredValues& written) const {
        const auto found = written.find(key);
        if (value && (found == written.end() || !found->second.isSameAs(*value))) {
            throw std::invalid_argument("it is neither true nor false nor a number");
        }
    }

private:
    std::string key;
    std::optional<StoredValue> value;
};

}  // namespace

struct JsonFileLayer::State {
    explicit State(const fs::path& named) : file(fs::absolute(named)), name(displayName(named)) {}

    template <class Part>
    auto valueOf(const std::string& key, Part partOf)
        -> std::optional<std::invoke_result_t<Part, const StoredValue&>>;
    void lookIfDue();
    Problems look();
    Problems load(bool& isLoaded);
    void change(const std::string& key, std::optional<StoredValue> value);
    StoredValues write(const Change& change);
    [[nodiscard]] bool mustWrite(const Change& change, SettingsDocument& document) const;
    void store(StoredValues fresh);
    void report(const Problems& problems);

    ReadersLock valuesMutex;
    StoredValues values;

    const fs::path file;
    const std::string name;

    std::mutex handlerMutex;
    ProblemHandler handler;

    std::atomic<Clock::time_point> nextLook{Clock::time_point::min()};

    // For the thread that loads or writes.
    std::mutex fileMutex;
    Problems known;
    std::optional<Stamp> stamp;
    bool settled = false;
};

template <class Part>
auto JsonFileLayer::State::valueOf(const std::string& key, Part partOf)
    -> std::optional<std::invoke_result_t<Part, const StoredValue&>> {
    lookIfDue();
    const ReadersLock::Reading reading(valuesMutex);
    const auto found = values.find(key);
    if (found == values.end() || found->second.form == ValueForm::Other) {
        return std::nullopt;
    }
    return partOf(found->second);
}

void JsonFileLayer::State::lookIfDue() {
    const Clock::time_point time = coarseNow();
    const Clock::time_point due = nextLook;
    if (time < due) {
        return;
    }
    std::unique_lock lock(fileMutex, std::defer_lock);
    if (due == Clock::time_point::min()) {
        lock.lock();
    } else if (!lock.try_lock()) {
        return;
    }
    if (time < nextLook.load()) {
        return;
    }
    const Problems news = look();
    nextLook = time + lookInterval;
    lock.unlock();
    report(news);
}

// Returns the problems to report.
Problems JsonFileLayer::State::look() {
    const std::optional<Stamp> found = stampOf(file);
    const bool willBeSettled = isSettled(found);
    if (found == stamp && settled) {
        return {};
    }
    bool isLoaded = !found;
    const Problems problems = found || stamp ? load(isLoaded) : Problems();
    if (found != stamp) {
        known.clear();
    }
    stamp = found;
    settled = willBeSettled && isLoaded;
    return std::exchange(known, problems) == problems ? Problems() : problems;
}

Problems JsonFileLayer::State::load(bool& isLoaded) {
    return problemsOfCall("", [&] {
        StoredValues fresh = parseSettings(contentsOf(file), name).values;
        Problems problems = problemsOf(fresh, name);
        store(std::move(fresh));
        isLoaded = true;
        return problems;
    });
}

void JsonFileLayer::State::change(const std::string& key, std::optional<StoredValue> value) {
    const std::string what = inQuotes(key) + (value ? " was not stored: " : " was not cleared: ");
    std::unique_lock lock(fileMutex);
    const Problems problems = problemsOfCall(what, [&] {
        store(write(Change(key, std::move(value))));
        return Problems();
    });
    lock.unlock();
    report(problems);
}

// Returns the new values. The next look loads the file again, since another program may write as
// soon as this one has.
StoredValues JsonFileLayer::State::write(const Change& change) {
    SettingsDocument document;
    if (mustWrite(change, document)) {
        FileReplacement replacement(file);
        if (mustWrite(change, document)) {
            const std::string text = formatSettings(document.values);
            if (text.size() > largestSettingsFile) {
                throw std::length_error(name + " would be too large");
            }
            document = parseSettings(text, name);
            change.requireIn(document.values);
            replacement.write(text);
            replacement.commit();
            stamp = stampOf(file);
            settled = false;
        }
    }
    return std::move(document.values);
}

bool JsonFileLayer::State::mustWrite(const Change& change, SettingsDocument& document) const {
    const bool exists = stampOf(file).has_value();
    document = exists ? parseSettings(contentsOf(file), name) : SettingsDocument{values, false};
    const bool changes = change.applyTo(document.values) || (!exists && change.stores());
    if (changes && document.hasComments) {
        throw std::runtime_error(name + " has comments, which would be lost");
    }
    return changes;
}

void JsonFileLayer::State::store(StoredValues fresh) {
    const std::lock_guard lock(valuesMutex);
    values.swap(fresh);
}

void JsonFileLayer::State::report(const Problems& problems) {
    if (problems.empty()) {
        return;
    }
    std::unique_lock lock(handlerMutex);
    const ProblemHandler receiver = handler;
    lock.unlock();
    if (receiver) {
        std::for_each(problems.begin(), problems.end(), receiver);
    }
}

JsonFileLayer::JsonFileLayer(const fs::path& file) : state(std::make_unique<State>(file)) {}

JsonFileLayer::~JsonFileLayer() = default;

std::string JsonFileLayer::name() const {
    return state->name;
}

std::optional<std::string> JsonFileLayer::find(const std::string& key) const {
    return state->valueOf(key, [](const StoredValue& value) { return value.text; });
}

std::string JsonFileLayer::origin(const std::string& key) const {
    const auto line = state->valueOf(key, [](const StoredValue& value) { return value.line; });
    return line ? state->name + ':' + std::to_string(*line) : state->name;
}

bool JsonFileLayer::isWritable() const noexcept {
    return true;
}

void JsonFileLayer::set(const std::string& key, const SettingText& value) {
    const ValueForm form = value.isLiteral ? ValueForm::Literal : ValueForm::Text;
    state->change(key, StoredValue{form, value.text});
}

void JsonFileLayer::clear(const std::string& key) {
    state->change(key, std::nullopt);
}

void JsonFileLayer::setProblemHandler(const ProblemHandler& handler) {
    ProblemHandler previous = handler;
    const std::lock_guard lock(state->handlerMutex);
    state->handler.swap(previous);
}

}  // namespace lapwing
