#include "floors.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <numeric>
#include <utility>

namespace floors {

namespace {

std::atomic<const Source*> installed{nullptr};
std::atomic<std::int32_t> liveScopes{0};
LogMessageHandler globalHandler;
const Setting<bool> logging{"enableTimingProfileLogging", false};

char* copyTo(char* place, std::string_view text) {
    return std::copy(text.begin(), text.end(), place);
}

// A number between two fixed texts.
class Count {
public:
    Count(std::string_view before, std::int64_t number, std::string_view after)
        : end(copyTo(buffer.data(), before)) {
        end = copyTo(std::to_chars(end, buffer.data() + buffer.size(), number).ptr, after);
    }
    [[nodiscard]] std::string_view view() const {
        return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
    }

private:
    std::array<char, 80> buffer;
    char* end;
};

}  // namespace

void Source::setInstance(const Source* source) noexcept {
    installed.store(source, std::memory_order_release);
}

template <class V>
Setting<V>::Setting(const char* key, const V& fallback)
    : name(key), defaultValue([fallback] { return fallback; }) {}

template <class V>
V Setting<V>::value() const {
    const Source* const source = installed.load(std::memory_order_acquire);
    return source != nullptr ? source->getValue(name, defaultValue()) : defaultValue();
}

template <class V>
V Setting<V>::operator()() const {
    return value();
}

template struct Setting<bool>;
template struct Setting<std::int32_t>;
template struct Setting<double>;
template struct Setting<std::string>;

Scope::Scope(std::string name, bool enabled, LogMessageHandler handler)
    : objectName(std::move(name)),
      ownHandler(std::move(handler)),
      depth(liveScopes.fetch_add(1)),
      isEnabled(enabled) {
    if (const LogMessageHandler* const chosen = this->handler()) {
        send(*chosen, "Begin", {});
    }
    ++depth;
    lastLap = start = Clock::now();
}

Scope::~Scope() {
    if (lapCount != 0) {
        lap("Final Lap");
    }
    liveScopes.fetch_sub(1);
    --depth;
    sendTime(Clock::now() - start, "End");
}

void Scope::lap(std::string_view label) {
    const Clock::time_point now = Clock::now();
    sendTime(now - std::exchange(lastLap, now), label);
    ++lapCount;
}

void Scope::setGlobalHandler(LogMessageHandler handler) {
    globalHandler = std::move(handler);
}

Milliseconds Scope::elapsed() const {
    return std::chrono::duration_cast<Milliseconds>(Clock::now() - start);
}

void Scope::note(const std::string& text) const {
    if (const LogMessageHandler* const chosen = handler()) {
        send(*chosen, text, {});
    }
}

const LogMessageHandler* Scope::handler() const {
    const LogMessageHandler& chosen = ownHandler ? ownHandler : globalHandler;
    return isEnabled && chosen ? &chosen : nullptr;
}

void Scope::sendTime(Clock::duration duration, std::string_view label) const {
    if (const LogMessageHandler* const chosen = handler()) {
        const auto milliseconds = std::chrono::duration_cast<Milliseconds>(duration);
        send(*chosen, label, Count(" - ", milliseconds.count(), " ms").view());
    }
}

void Scope::send(const LogMessageHandler& chosen, std::string_view text,
                 std::string_view ending) const {
    const LogMessageHandler copy = chosen;
    const std::size_t spaces = 2 * static_cast<std::size_t>(depth);
    std::string line(spaces + objectName.size() + 2 + text.size() + ending.size(), ' ');
    copyTo(copyTo(copyTo(copyTo(line.data() + spaces, objectName), ": "), text), ending);
    copy(line);
}

void Collector::collect(const std::string& name, Milliseconds duration) {
    const std::lock_guard lock(mutex);
    profile.samples[name].push_back(duration);
}

TimingProfile Collector::extract() const {
    const std::lock_guard lock(mutex);
    return profile;
}

void Emulator::setProfile(const TimingProfile& recorded) {
    profile = recorded;
}

void Emulator::emulate(const std::string& name, Milliseconds duration) {
    const auto found = profile.samples.find(name);
    if (found == profile.samples.end() || found->second.empty()) {
        ++callsWithMoreToDo;
        return;
    }
    std::uint64_t sum = 0;
    for (const Milliseconds& sample : found->second) {
        sum += static_cast<std::uint64_t>(sample.count());
    }
    const std::uint64_t average = sum / found->second.size();
    if (average == 0 || average != static_cast<std::uint64_t>(duration.count())) {
        ++callsWithMoreToDo;
    }
}

Replayer::Replayer(const TimingProfile& recorded) {
    for (const auto& [name, samples] : recorded.samples) {
        const auto sum = std::accumulate(samples.begin(), samples.end(), Milliseconds::zero());
        operations[name].target = sum / static_cast<std::int64_t>(samples.size());
    }
}

void Replayer::operator()(const std::string& name, Milliseconds took) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point started = Clock::now() - took;
    std::unique_lock lock(mutex);
    Operation& operation = operations[name];
    const Milliseconds target = operation.target;
    lock.unlock();
    const Clock::duration ended = Clock::now() - started;
    lock.lock();
    callsWithMoreToDo += took < target ? 1 : 0;
    operation.steps.push_back({target, took, ended});
}

void collectTimed(TimingSampleHandler collect, const std::string& name, ScopedWork work) {
    Scope scope(name, logging.value(), {});
    const std::string label = "about to augment timing profile sample";
    work(scope);
    const Milliseconds duration = scope.elapsed();
    const Count text("note: executing timing profile sample fn took - ", duration.count(), "ms");
    scope.note(std::string(text.view()));
    scope.lap(label);
    collect(name, duration);
}

}  // namespace floors
