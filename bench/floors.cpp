#include "floors.h"

#include <array>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <utility>

namespace floors {

namespace {

std::atomic<const Source*> installed{nullptr};
std::atomic<std::int32_t> liveScopes{0};
LogMessageHandler globalHandler;
const Setting<bool> logging{"enableTimingProfileLogging", [] { return false; }};

struct Digits {
    explicit Digits(std::int64_t count)
        : end(std::to_chars(buffer.data(), buffer.data() + buffer.size(), count).ptr) {}
    [[nodiscard]] std::string_view view() const {
        return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
    }

    std::array<char, 20> buffer;
    const char* end;
};

}  // namespace

void Source::setInstance(const Source* source) noexcept {
    installed.store(source, std::memory_order_release);
}

template <class V>
V Setting<V>::value() const {
    const Source* const source = installed.load(std::memory_order_acquire);
    return source ? source->getValue(name, defaultValue()) : defaultValue();
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
        send(*chosen, "Begin", {}, {});
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
        send(*chosen, text, {}, {});
    }
}

const LogMessageHandler* Scope::handler() const {
    const LogMessageHandler& chosen = ownHandler ? ownHandler : globalHandler;
    return isEnabled && chosen ? &chosen : nullptr;
}

void Scope::sendTime(Clock::duration duration, std::string_view label) const {
    if (const LogMessageHandler* const chosen = handler()) {
        const Digits digits(std::chrono::duration_cast<Milliseconds>(duration).count());
        send(*chosen, label, digits.view(), " ms");
    }
}

void Scope::send(const LogMessageHandler& chosen, std::string_view text, std::string_view count,
                 std::string_view unit) const {
    const LogMessageHandler copy = chosen;
    const std::string_view dash = count.empty() ? "" : " - ";
    const std::size_t spaces = 2 * static_cast<std::size_t>(depth);
    std::string line;
    line.reserve(spaces + objectName.size() + 2 + text.size() + dash.size() + count.size() +
                 unit.size());
    line.append(spaces, ' ').append(objectName).append(": ").append(text);
    line.append(dash).append(count).append(unit);
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

Step emulationStep(const TimingProfile& profile, const std::string& name, Milliseconds duration) {
    const auto found = profile.samples.find(name);
    if (found == profile.samples.end()) {
        return Step::recordNoData;
    }
    std::uint64_t sum = 0;
    for (const Milliseconds& sample : found->second) {
        sum += static_cast<std::uint64_t>(sample.count());
    }
    const std::uint64_t average = sum / found->second.size();
    if (average == 0) {
        return Step::recordNoData;
    }
    const auto left =
        static_cast<std::int64_t>(average - static_cast<std::uint64_t>(duration.count()));
    return left == 0 ? Step::nothing : left > 0 ? Step::sleep : Step::recordOverrun;
}

void collectTimed(TimingSampleHandler collect, const std::string& name, ScopedWork work) {
    Scope scope(name, logging.value(), {});
    const std::string label = "about to augment timing profile sample";
    work(scope);
    const Milliseconds duration = scope.elapsed();
    constexpr std::string_view noteStart = "note: executing timing profile sample fn took - ";
    const Digits digits(duration.count());
    std::string text;
    text.reserve(noteStart.size() + digits.view().size() + 2);
    scope.note(text.append(noteStart).append(digits.view()).append("ms"));
    scope.lap(label);
    collect(name, duration);
}

}  // namespace floors
