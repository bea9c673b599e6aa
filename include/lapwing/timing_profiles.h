/// @file
/// Timing profiles: record how long named operations really took, then pad a faster stand-in to the
/// recorded averages.
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
///     const TimingProfile missed = emulator.extractErrorProfile();  // where it failed
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

/// Receives the name of an operation and how long it took. If it is empty, it is skipped.
///
/// A collector and an emulator can be called like this. Neither can be copied: pass it with
/// std::ref and keep it alive. The handler is called on the thread that runs the operation, with no
/// lock held, and on several threads at once if they time operations at once.
using TimingSampleHandler = std::function<void(const std::string&, Milliseconds)>;

/// The work to be timed. It runs on the caller's thread. It may take laps and send notes through
/// the object that it is given, which lives until the call returns.
using InstrumentedFunction = std::function<void(Instrumentation&)>;

/// What was recorded about named operations: a plain value that its owner may read, edit and store.
/// Names are compared byte for byte, and the empty name is a name. A name may be in one map only.
///
/// Thread safety: any number of threads may read one record at once.
struct TimingProfile {
    /// At most one text about each operation.
    std::unordered_map<std::string, std::string> notes;

    /// Every duration recorded for an operation, oldest first. Zero and negative ones are legal.
    ///
    /// The average of a name is the sum of its durations divided by their number, both as unsigned
    /// 64-bit integers that wrap, truncated to whole milliseconds. The average of 5 and 6 is 5, of
    /// -4 alone it is -4, but of -3 and 1 it is 9223372036854775807. An empty vector has no
    /// average. A collector leaves one only if memory runs out at a name's first sample.
    std::unordered_map<std::string, std::vector<Milliseconds>> samples;
};

/// Gathers samples and notes into a TimingProfile. The collector grows by one element per sample.
///
/// Failures: members throw std::bad_alloc if memory runs out, and each says what is kept then. They
/// throw std::system_error if the lock cannot be taken, and change nothing.
///
/// Thread safety: any number of threads may call any member at once. Each member holds one lock,
/// and calls nothing of the host's while it does. After fork(), the child must not use a collector
/// that another thread was using: its lock may stay locked.
class TimingProfileCollector {
public:
    LAPWING_EXPORT TimingProfileCollector();
    TimingProfileCollector(const TimingProfileCollector&) = delete;
    TimingProfileCollector& operator=(const TimingProfileCollector&) = delete;
    LAPWING_EXPORT ~TimingProfileCollector();

    /// Same as collectSample(): makes the collector a TimingSampleHandler.
    LAPWING_EXPORT void operator()(const std::string& name, Milliseconds duration);

    /// Appends `duration` to the samples of `name`, whatever its value. If memory runs out, a new
    /// name may be left without samples.
    LAPWING_EXPORT void collectSample(const std::string& name, Milliseconds duration);

    /// Keeps `text` as the note of `key`, unless `key` has one already: the first note stays. If
    /// memory runs out, nothing changes.
    LAPWING_EXPORT void collectNote(const std::string& key, const std::string& text);

    /// Does what collectNote() does for each entry, in one step: no other thread sees a part of it.
    /// The map must not change during the call. If memory runs out, notes already added are kept.
    LAPWING_EXPORT void collectNotes(const std::unordered_map<std::string, std::string>& entries);

    /// Returns a copy of everything collected so far; the collector keeps it all. Other threads
    /// wait during the copy, which takes longer the more there is.
    [[nodiscard]] LAPWING_EXPORT TimingProfile extractProfile() const;

private:
    mutable std::mutex mutex;
    TimingProfile profile;
};

/// Makes an operation last as long as it did on average when its profile was recorded. The emulator
/// is told how long the operation took this time, and sleeps for the rest. Its error profile
/// records where that failed:
/// - `samples` holds, for each time that an operation took longer than its average, the average
///   minus the duration, which is negative;
/// - `notes` holds "no sample data found in loaded timing profile" for each operation that has no
///   samples in the loaded profile, or whose average is zero.
///
/// Failures: as for TimingProfileCollector, which gathers the error profile.
///
/// Thread safety: any number of threads may call any member at once, except setProfile(), which
/// must not overlap any other call. Threads sleep in parallel, with no lock held. After fork(), the
/// child must not use an emulator that another thread was using.
class TimingProfileEmulator {
public:
    LAPWING_EXPORT TimingProfileEmulator();
    TimingProfileEmulator(const TimingProfileEmulator&) = delete;
    TimingProfileEmulator& operator=(const TimingProfileEmulator&) = delete;
    LAPWING_EXPORT ~TimingProfileEmulator();

    /// Replaces the loaded profile by a copy of `recorded`. The error profile stays. If memory runs
    /// out, it is unspecified what is loaded: load again.
    LAPWING_EXPORT void setProfile(const TimingProfile& recorded);

    /// Same as emulateProfile(): makes the emulator a TimingSampleHandler.
    LAPWING_EXPORT void operator()(const std::string& name, Milliseconds duration);

    /// Sleeps on the calling thread for the average of `name` minus `duration`. If that is
    /// negative, or if there is no average, records it in the error profile instead.
    ///
    /// The sleep never ends early, but the system may end it late. Each signal that interrupts it
    /// adds the timer's slack again: signals at 1 kHz made a pad 6% longer. The difference and the
    /// end of the sleep wrap as 64-bit counts of milliseconds and of nanoseconds, so a pad of more
    /// than about 292 years may not sleep.
    LAPWING_EXPORT void emulateProfile(const std::string& name, Milliseconds duration);

    /// Returns a copy of the error profile; the emulator keeps it.
    [[nodiscard]] LAPWING_EXPORT TimingProfile extractErrorProfile() const;

private:
    TimingProfile profile;
    TimingProfileCollector errorCollector;
};

/// @defgroup timing Timing one run of work
///
/// Each function runs `work` once on the calling thread, with an Instrumentation called `name`.
/// Then it passes the name and the time that the work took to its handlers, `collect` first. Both
/// get the same time: it does not include the handlers' own time, such as an emulator's sleep. For
/// an operation N, the Instrumentation sends
///
///     N: Begin
///       the lines that the work sends
///       N: note: executing timing profile sample fn took - 15ms
///       N: about to augment timing profile sample - 15 ms              before `collect`
///       N: about to emulate timing profile average sample time - 0 ms  before `emulate`
///       N: Final Lap - 85 ms
///     N: End - 100 ms
///
/// to the global log message handler, if `logging` or the setting
/// DeveloperConfig::enableTimingProfileLogging is true. Each call reads the setting; the functions
/// without `logging` read it twice. The work is timed and the handlers are called in any case. The
/// texts of the note and of the laps are built even if nothing is logged. A handler that is empty,
/// or that the function does not take, is skipped together with its line.
///
/// Failures: exceptions of the setting's provider, the work, a handler or the log message handler
/// propagate, and the remaining steps are skipped. One case differs: if the work or
/// the note after it fails, `collect` is still called, after its line, with 0 ms. If that line or
/// `collect` throws as well, the process ends through std::terminate. Empty work counts as work
/// that throws std::bad_function_call.
///
/// Late calls: while the process ends, after the library has destroyed its static objects, these
/// functions still time the work and call the handlers. They log nothing and ask no provider.
///
/// Thread safety: any number of threads may call these at once, and with the same handlers if the
/// handlers allow it.
/// @{

/// Collects a sample of the work.
LAPWING_EXPORT void collectTimingProfileSample(TimingSampleHandler collect, const std::string& name,
                                               bool logging, InstrumentedFunction work);

/// Same, but logs only if the setting is true.
LAPWING_EXPORT void collectTimingProfileSample(TimingSampleHandler collect, const std::string& name,
                                               InstrumentedFunction work);

/// Collects a sample of the work, then emulates its recorded time.
LAPWING_EXPORT void collectTimingProfileSampleAndEmulate(TimingSampleHandler collect,
                                                         TimingSampleHandler emulate,
                                                         const std::string& name, bool logging,
                                                         InstrumentedFunction work);

/// Same, but logs only if the setting is true.
LAPWING_EXPORT void collectTimingProfileSampleAndEmulate(TimingSampleHandler collect,
                                                         TimingSampleHandler emulate,
                                                         const std::string& name,
                                                         InstrumentedFunction work);

/// Emulates the recorded time of the work. If the work fails, `emulate` is not called.
LAPWING_EXPORT void emulateTimingProfile(TimingSampleHandler emulate, const std::string& name,
                                         InstrumentedFunction work);
/// @}

#endif  // LAPWING_TIMING_PROFILES_H
