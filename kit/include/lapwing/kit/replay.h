/// @file
/// Replaying a profile: calls are made to last as long as it says, and a report tells how true that
/// was.
///
///     const auto worst = lapwing::ReplayPolicy::percentile(100).capped(Milliseconds(500));
///     lapwing::Replayer replayer(lapwing::flattened(recordings), worst);
///     const Image image = replayer.run("Scan", [&] { return fakeScanner.scan(); });
///     std::cout << lapwing::formatReport(replayer.report());
///
/// TimingProfileEmulator pads to the truncated average, and is as late as the system's sleep. A
/// Replayer has other targets too, and waits exactly.

#ifndef LAPWING_KIT_REPLAY_H
#define LAPWING_KIT_REPLAY_H

#include <lapwing/kit/wait.h>
#include <lapwing/timing_profiles.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace lapwing {

/// How long a call should last: a choice among the samples of its name, which is scaled, then
/// jittered, then capped, whatever the order in which that was asked for. Targets are whole
/// milliseconds and never negative. Arguments out of range throw std::invalid_argument.
///
/// Each seed gives one sequence of targets per name: the same on every system, whatever is done
/// under other names, and whichever threads make the calls. Every Replayer starts it anew. A call
/// takes its target when its work has ended: if calls of one name overlap, the order in which their
/// work ends decides which of them gets which target. Without a seed, nothing is random.
///
/// Thread safety: any number of threads may read one policy at once.
class ReplayPolicy {
public:
    /// The truncated average, which TimingProfileEmulator pads to.
    [[nodiscard]] static ReplayPolicy average();

    /// The sample of nearest rank, as percentile() gives it: 50 is the median, 100 the worst case.
    [[nodiscard]] static ReplayPolicy percentile(double percent);

    /// The first sample first, and after the last one the first again.
    [[nodiscard]] static ReplayPolicy recordedOrder();

    /// Each time one of the samples, all with the same probability.
    [[nodiscard]] static ReplayPolicy random(std::uint64_t seed);

    /// Multiplies targets by `factor`, which is finite and not negative, and rounds them as
    /// lapwing::scaled() does. Several factors are multiplied.
    [[nodiscard]] ReplayPolicy scaled(double factor) const;

    /// Adds whole milliseconds from -`most` to `most`, all with the same probability, and makes a
    /// negative sum zero. `most` is not negative. The last jitter counts.
    [[nodiscard]] ReplayPolicy jittered(Milliseconds most, std::uint64_t seed) const;

    /// Makes targets at most `longest`, which is not negative. The lowest cap counts.
    [[nodiscard]] ReplayPolicy capped(Milliseconds longest) const;

private:
    friend class Replayer;
    enum class Choice { Average, Percentile, RecordedOrder, Random };

    explicit ReplayPolicy(Choice initial) : choice(initial) {}

    Choice choice;
    double percent = 0;
    std::uint64_t randomSeed = 0;
    double scale = 1;
    Milliseconds jitter{0};
    std::uint64_t jitterSeed = 0;
    Milliseconds cap = Milliseconds::max();
};

/// One call. Its times count from its beginning.
struct ReplayStep {
    Milliseconds target{};             ///< What it was to last; zero without recorded samples.
    std::chrono::nanoseconds work{};   ///< What its work took.
    std::chrono::nanoseconds ended{};  ///< When it ended, padded or not.
};

/// How much later than their targets calls ended. Percentiles are of nearest rank.
struct Lateness {
    std::chrono::nanoseconds p50{};    ///< The median.
    std::chrono::nanoseconds p99{};    ///< The 99th percentile.
    std::chrono::nanoseconds worst{};  ///< The latest of all.
};

/// What happened under one name.
struct ReplayedOperation {
    /// The average of the recorded samples. Nothing if there are none: its calls are not padded.
    std::optional<Milliseconds> recorded;

    /// The profile's note about it. May be empty.
    std::string note;

    /// The calls that have ended, in that order. If they overlapped, this may differ from the order
    /// in which they took their targets.
    std::vector<ReplayStep> steps;

    /// Counts the calls whose work took more than the target, compared in whole milliseconds
    /// because samples are truncated to those. 0 without recorded samples.
    [[nodiscard]] std::size_t overruns() const;

    /// Counts the calls that there were no recorded samples for.
    [[nodiscard]] std::size_t callsWithoutData() const;

    /// Returns nothing without steps or without recorded samples.
    [[nodiscard]] std::optional<Lateness> lateness() const;
};

/// What a Replayer did, by name: each name of the profile that has samples, called or not, and each
/// other one that was called.
///
/// Thread safety: any number of threads may read one report at once.
struct ReplayReport {
    std::map<std::string, ReplayedOperation> operations;  ///< By name.
};

/// Makes named operations last as long as a policy says. For its report it keeps 24 bytes per call,
/// and room for as many again.
///
/// Failures: if memory runs out, members throw std::bad_alloc before they wait, and leave the call
/// out of the report. They throw std::system_error if the lock cannot be taken. What the work has
/// returned is lost then.
///
/// Thread safety: any number of threads may call any member at once. They wait in parallel, with no
/// lock held. After fork(), the child must not use a replayer that another thread was using.
class Replayer {
public:
    /// Copies what it needs of `profile`. Throws std::invalid_argument, which names the operation,
    /// if a name has no samples, a sample is negative, or a target could be longer than seven days.
    explicit Replayer(const TimingProfile& profile, ReplayPolicy policy = ReplayPolicy::average(),
                      Waiting waiting = Waiting::Exact);

    Replayer(const Replayer&) = delete;
    Replayer& operator=(const Replayer&) = delete;
    ~Replayer();

    /// Waits on the calling thread for the target of `name` minus `took`: makes the replayer a
    /// TimingSampleHandler, to be passed with std::ref. The core's functions pass whole
    /// milliseconds, truncated, so that a call can be up to 1 ms late; run() does not truncate.
    /// `took` counts as zero if it is negative, and as seven days if it is longer.
    void operator()(const std::string& name, Milliseconds took);

    /// Calls `work` once, without arguments, waits until the target of `name` has passed since, and
    /// returns what the work returned: a reference as it is, a value moved. If the work throws, the
    /// exception propagates at once, and the call takes no target and is not in the report. The
    /// work may use the replayer, but must not change `name`.
    template <class Work>
    decltype(auto) run(const std::string& name, Work&& work) {
        const Time started = currentTime();
        using Result = std::invoke_result_t<Work>;
        if constexpr (std::is_void_v<Result>) {
            std::invoke(std::forward<Work>(work));
            pad(name, started, currentTime());
        } else if constexpr (std::is_reference_v<Result>) {
            Result result = std::invoke(std::forward<Work>(work));
            pad(name, started, currentTime());
            return static_cast<Result>(result);
        } else {
            std::remove_cv_t<Result> result = std::invoke(std::forward<Work>(work));
            pad(name, started, currentTime());
            return result;
        }
    }

    /// Returns what has happened so far. Calls in other threads may wait during the copy; if they
    /// have just ended, that delay is not in their times.
    [[nodiscard]] ReplayReport report() const;

private:
    using Time = std::chrono::steady_clock::time_point;
    struct State;

    static Time currentTime() noexcept;
    void pad(const std::string& name, Time started, Time worked);

    std::unique_ptr<State> state;
};

/// Returns a table for people, with a line for each name and a heading, in UTF-8: the runs, the
/// recorded average, the averages of what the work took, of what it was padded by and of what the
/// call lasted, the lateness, the overruns, and the note. In names and notes, control characters
/// are escaped; those that are not UTF-8 stand as in files.
[[nodiscard]] std::string formatReport(const ReplayReport& report);

}  // namespace lapwing

#endif  // LAPWING_KIT_REPLAY_H
