/// @file
/// Timing profiles: record how long named operations really took, and later pad a faster stand-in
/// to the recorded averages.
///
///     TimingProfileCollector collector;
///     collectTimingProfileSample(std::ref(collector), "Scan",
///                                [&](Instrumentation&) { scanner.scan(); });  // takes 120 ms
///     const TimingProfile recorded = collector.extractProfile();  // the host's, to keep
///
///     TimingProfileEmulator emulator;
///     emulator.setProfile(recorded);
///     emulateTimingProfile(std::ref(emulator), "Scan",
///                          [&](Instrumentation&) { fakeScanner.scan(); });  // lasts 120 ms too
///     const TimingProfile missed = emulator.extractErrorProfile();  // where it was not so
///
/// With logging on (see below) and a global log message handler, the second call prints
///
///     Scan: Begin
///       Scan: note: executing timing profile sample fn took - 3ms
///       Scan: about to emulate timing profile average sample time - 3 ms
///       Scan: Final Lap - 117 ms
///     Scan: End - 120 ms

#ifndef LAPWING_TIMING_PROFILES_H
#define LAPWING_TIMING_PROFILES_H

#include <lapwing/export.h>
#include <lapwing/instrumentation.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

/// Receives the name of an operation and how long it took. A collector and an emulator are each
/// callable so; neither can be copied, so wrap it with std::ref and keep it alive. Called on the
/// thread that runs the operation, with no lock held, and by several threads at once if they time
/// operations at once. May be empty: then it is skipped.
using TimingSampleHandler = std::function<void(const std::string&, Milliseconds)>;

/// The work to be timed. It runs on the caller's thread and may take laps and send notes through
/// the object that it is given, which lives until the call returns.
using InstrumentedFunction = std::function<void(Instrumentation&)>;

/// What was recorded about named operations: a plain value that its holder may read, edit and
/// store at will. Names are compared byte for byte; the empty name is a name. A name may be in
/// either map alone.
///
/// Thread safety: that of its members; one record may be read by any number of threads at once.
struct TimingProfile {
    /// At most one text about each operation.
    std::unordered_map<std::string, std::string> notes;

    /// Every duration recorded for an operation, oldest first; zero and negative ones are legal.
    ///
    /// The average of a name is the sum of its durations divided by their number, as unsigned
    /// 64-bit integers that wrap, and cut to whole milliseconds: of 5 and 6 it is 5, of -4 alone
    /// it is -4, but of -3 and 1 it is 9223372036854775807. There is none for an empty vector,
    /// which a collector leaves only when memory runs out at a name's first sample.
    std::unordered_map<std::string, std::vector<Milliseconds>> samples;
};

/// Gathers samples and notes into a TimingProfile. It grows by one element with every sample.
///
/// Failures: std::bad_alloc leaves done what was done until then, as each member tells;
/// std::system_error if the lock cannot be taken changes nothing.
///
/// Thread safety: any number of threads may call any member at once. One lock is held for the
/// whole of each member, and nothing is called while it is held.
class TimingProfileCollector {
public:
    LAPWING_EXPORT TimingProfileCollector();
    TimingProfileCollector(const TimingProfileCollector&) = delete;
    TimingProfileCollector& operator=(const TimingProfileCollector&) = delete;
    LAPWING_EXPORT ~TimingProfileCollector();

    /// Same as collectSample(): makes the collector a TimingSampleHandler.
    LAPWING_EXPORT void operator()(const std::string& name, Milliseconds duration);

    /// Appends `duration` to the samples of `name`, whatever its value. When memory runs out, a
    /// name that was new may stay behind without samples.
    LAPWING_EXPORT void collectSample(const std::string& name, Milliseconds duration);

    /// Keeps `text` as the note of `key`, unless it has one: the first note of a key stays. When
    /// memory runs out, nothing changes.
    LAPWING_EXPORT void collectNote(const std::string& key, const std::string& text);

    /// Does for each entry what collectNote() does, as one step that no other thread sees half
    /// done. The map must not change meanwhile. When memory runs out, what was added stays.
    LAPWING_EXPORT void collectNotes(const std::unordered_map<std::string, std::string>& entries);

    /// Returns a copy of everything collected so far, and keeps it. Other threads wait while it
    /// copies, which takes longer the more there is.
    [[nodiscard]] LAPWING_EXPORT TimingProfile extractProfile() const;

private:
    mutable std::mutex mutex;
    TimingProfile profile;
};

/// Makes an operation last as long as it did on average when its profile was recorded: told how
/// long it took this time, it sleeps for the rest. Where it could not, its error profile says so:
/// in `samples` the average minus the duration (negative) for each time that the operation took
/// longer; in `notes`, "no sample data found in loaded timing profile" for each operation that the
/// loaded profile has no samples of, or samples whose average is zero.
///
/// Failures: as for TimingProfileCollector, which gathers the error profile.
///
/// Thread safety: any number of threads may call any member at once, but for setProfile(), during
/// which nothing else may be called. Threads sleep in parallel: no lock is held meanwhile.
class TimingProfileEmulator {
public:
    LAPWING_EXPORT TimingProfileEmulator();
    TimingProfileEmulator(const TimingProfileEmulator&) = delete;
    TimingProfileEmulator& operator=(const TimingProfileEmulator&) = delete;
    LAPWING_EXPORT ~TimingProfileEmulator();

    /// Loads a copy of `recorded` in place of what was loaded before; the error profile stays.
    /// Every vector in `recorded.samples` must hold a sample at least. When memory runs out, what
    /// is loaded then is unspecified: load again.
    LAPWING_EXPORT void setProfile(const TimingProfile& recorded);

    /// Same as emulateProfile(): makes the emulator a TimingSampleHandler.
    LAPWING_EXPORT void operator()(const std::string& name, Milliseconds duration);

    /// Sleeps on the calling thread for the average of `name` minus `duration`, and never wakes
    /// early; or, if the difference is negative or there is no average, records that in the error
    /// profile. The difference and the end of the sleep wrap as 64-bit counts of milliseconds and
    /// of nanoseconds: a sleep that would last for centuries may be none.
    LAPWING_EXPORT void emulateProfile(const std::string& name, Milliseconds duration);

    /// Returns a copy of the error profile, and keeps it.
    [[nodiscard]] LAPWING_EXPORT TimingProfile extractErrorProfile() const;

private:
    TimingProfile profile;
    TimingProfileCollector errorCollector;
};

/// @defgroup timing Timing one run of work
///
/// Each of these runs `work` once on the calling thread, with an Instrumentation called `name`,
/// and hands the name and the time that the work took to its handlers, `collect` first. The time
/// spent in a handler, an emulator's sleep above all, is not part of what the next one is told.
/// For an operation N, the Instrumentation sends
///
///     N: Begin
///       what the work sends
///       N: note: executing timing profile sample fn took - 15ms
///       N: about to augment timing profile sample - 15 ms              before `collect`
///       N: about to emulate timing profile average sample time - 0 ms  before `emulate`
///       N: Final Lap - 85 ms
///     N: End - 100 ms
///
/// to the global log message handler, if `logging` is true or the setting
/// DeveloperConfig::enableTimingProfileLogging is. The setting is read on each call, and twice by
/// the functions without `logging`. Timing and the handlers do not depend on it. A handler that is
/// empty, or that the function does not take, is skipped together with its line.
///
/// Failures: what the setting's provider, the work, a handler or the log message handler throws
/// leaves the call, and what would have come after it is not done, with one exception: if the work
/// or the note after it fails, `collect` is called all the same, its line before it, with 0 ms. If
/// either of those throws as well, the process ends through std::terminate. Empty work counts as
/// work that throws std::bad_function_call.
///
/// Thread safety: any number of threads may call these at once, with the same handlers if those
/// may be called so.
/// @{

/// Collects a sample of the work.
LAPWING_EXPORT void collectTimingProfileSample(TimingSampleHandler collect, const std::string& name,
                                               bool logging, InstrumentedFunction work);

/// Same, logging only if the setting says so.
LAPWING_EXPORT void collectTimingProfileSample(TimingSampleHandler collect, const std::string& name,
                                               InstrumentedFunction work);

/// Collects a sample of the work, then emulates its recorded time.
LAPWING_EXPORT void collectTimingProfileSampleAndEmulate(TimingSampleHandler collect,
                                                         TimingSampleHandler emulate,
                                                         const std::string& name, bool logging,
                                                         InstrumentedFunction work);

/// Same, logging only if the setting says so.
LAPWING_EXPORT void collectTimingProfileSampleAndEmulate(TimingSampleHandler collect,
                                                         TimingSampleHandler emulate,
                                                         const std::string& name,
                                                         InstrumentedFunction work);

/// Emulates the recorded time of the work. If the work fails, `emulate` is not called.
LAPWING_EXPORT void emulateTimingProfile(TimingSampleHandler emulate, const std::string& name,
                                         InstrumentedFunction work);
/// @}

#endif  // LAPWING_TIMING_PROFILES_H
