// A host to copy from: it installs settings and a log, records real operations, and replays them
// with stand-ins.

#include "options.h"
#include "word_statistics.h"

#include <lapwing/built_in_settings.h>
#include <lapwing/kit/log_sinks.h>
#include <lapwing/kit/recording_file.h>
#include <lapwing/kit/replay.h>
#include <lapwing/kit/settings_layers.h>
#include <lapwing/kit/trace.h>

#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#endif

namespace fs = std::filesystem;

namespace {

using DeveloperConfig::enableTimingProfileLogging;

constexpr const char* unrecordedName = "publish the report";
constexpr Milliseconds plannedOverrun{20};

TimingProfile recordPass(const fs::path& folder, bool logging) {
    if (!fs::is_directory(folder)) {
        throw UsageError((fs::exists(folder) ? "not a folder: \"" : "no such folder: \"") +
                         toText(folder) + '"');
    }
    const Instrumentation pass("First pass", logging, {});
    TimingProfileCollector collector;
    const auto time = [&](const char* name, const std::function<void()>& work) {
        for (std::int32_t run = 0; run < runs(); ++run) {
            collectTimingProfileSample(std::ref(collector), name, logging,
                                       [&](Instrumentation& /*run*/) { work(); });
        }
    };
    Statistics found;
    time("walk the tree", [&] { walkTree(folder, found); });
    time("read the bytes", [&] { readBytes(found); });
    time("count the words", [&] { countWords(found); });
    if (found.texts.empty()) {
        throw UsageError("no readable file below \"" + toText(folder) + '"');
    }
    std::cout << toText(folder) << ": " << found.files.size() << " files found, "
              << found.texts.size() << " read (" << found.bytes << " bytes), " << found.words.size()
              << " different words\n\n";
    return collector.extractProfile();
}

// The stand-ins do nothing, except that the last run of the first name is too slow.
void replayPass(const TimingProfile& recorded, bool logging) {
    const Instrumentation pass("Second pass", logging, {});
    lapwing::Replayer replayer(recorded, lapwing::ReplayPolicy::average());
    std::map<std::string, lapwing::ReplayedOperation> operations = replayer.report().operations;
    operations.try_emplace(unrecordedName);
    const std::string slowName = operations.begin()->first;
    const Milliseconds slow = operations.begin()->second.recorded.value_or(Milliseconds(0));
    for (const auto& operation : operations) {
        for (std::int32_t run = 1; run <= runs(); ++run) {
            const bool isSlow = operation.first == slowName && run == runs();
            collectTimingProfileSampleAndEmulate(
                {}, std::ref(replayer), operation.first, logging, [&](Instrumentation& /*run*/) {
                    std::this_thread::sleep_for(isSlow ? slow + plannedOverrun : Milliseconds(0));
                });
        }
    }
    std::cout << lapwing::formatReport(replayer.report())
              << "\nThe stand-ins do nothing and are padded to the recorded average. On purpose, \""
              << unrecordedName << "\"\nis never recorded, and the last run of \"" << slowName
              << "\" is " << plannedOverrun.count() << " ms too slow.\n";
}

void run(const Options& options, const std::string& program) {
    if (options.help) {
        std::cout << usage(program);
        return;
    }
    const lapwing::LayeredSettings settings(
        {std::make_shared<lapwing::ArgumentsLayer>(options.settings),
         std::make_shared<lapwing::EnvironmentLayer>("REPLAY_HOST_")},
        [](const std::string& problem) { throw UsageError(problem); });
    if (runs() < 1 || runs() > 100) {
        throw UsageError(std::string("setting ") + runs.name + ": " + std::to_string(runs()) +
                         " is not within 1 to 100");
    }
    std::optional<lapwing::TraceFile> trace;
    LogMessageHandler log =
        enableTimingProfileLogging() ? lapwing::logToStandardError() : LogMessageHandler();
    if (!options.trace.empty()) {
        log = trace.emplace(options.trace).handler(std::move(log));
    }
    const bool logging = log != nullptr;
    Instrumentation::setGlobalLogMessageHandler(std::move(log));
    const TimingProfile recorded =
        options.replay.empty() ? recordPass(options.folder, logging)
                               : lapwing::flattened(lapwing::loadRecordings(options.replay));
    if (!options.record.empty()) {
        lapwing::appendRecording(options.record, lapwing::makeRecording(recorded));
    } else {
        replayPass(recorded, logging);
    }
    if (!std::cout.flush()) {
        throw std::runtime_error("cannot write to standard output");
    }
}

int runAndReport(const std::vector<fs::path>& commandLine) {
    const std::string program = toText(commandLine.at(0).filename());
    try {
        run(parseOptions({commandLine.begin() + 1, commandLine.end()}), program);
    } catch (const UsageError& error) {
        std::cerr << program << ": " << error.what() << "\nTry: " << program << " --help\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << program << ": " << error.what() << '\n';
        return 1;
    }
    return 0;
}

}  // namespace

#ifdef _WIN32
// The arguments come as UTF-16. What the host prints is UTF-8.
extern "C" int wmain(int argc, wchar_t* argv[]) {
    SetConsoleOutputCP(CP_UTF8);
    return runAndReport(std::vector<fs::path>(argv, argv + argc));
}
#else
int main(int argc, char* argv[]) {
    return runAndReport(std::vector<fs::path>(argv, argv + argc));
}
#endif
