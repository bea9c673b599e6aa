#include "commands.h"
#include "places.h"
#include "processes.h"
#include "progress.h"
#include "text_table.h"

#include <algorithm>
#include <functional>
#include <random>
#include <set>

namespace command {
namespace {

// What is run under one name.
struct Task {
    std::string name;
    std::function<Ending()> run;
};

struct Interrupted {};

class Recorder {
public:
    explicit Recorder(const RecordOptions& wanted);

    void warmUp();
    void recordOne();

private:
    void runAll(const std::string& kind, std::int64_t rounds, TimingProfile& profile);
    Ending runOnce(const Task& task, const std::string& run);
    void prepare() const;
    void keep(TimingProfile profile);
    [[noreturn]] void stop() const;
    [[nodiscard]] std::int64_t times(std::int64_t rounds) const;

    const RecordOptions& options;
    std::vector<Task> tasks;
    Labels labels;
    std::mt19937_64 random{std::random_device{}()};
    std::int64_t recordedRuns = 0;
    Progress progress;
};

// On Windows, people leave ".exe" out when they type the name.
std::string operationOf(const std::string& program) {
    const std::filesystem::path file = pathOf(program).filename();
#ifdef _WIN32
    const std::string extension = fromSystem(file.extension().native());
    const bool isLeftOut = extension == ".exe" || extension == ".EXE";
    return fromSystem((isLeftOut ? file.stem() : file).native());
#else
    return file;
#endif
}

std::vector<Task> tasksOf(const RecordOptions& options) {
    if (options.lines.empty()) {
        const std::string name =
            options.name ? *options.name : operationOf(options.program.front());
        return {{name, [&options] { return runProgram(options.program); }}};
    }
    std::vector<Task> tasks;
    std::set<std::string> names;
    for (const auto& [name, text] : options.lines) {
        if (!names.insert(name).second) {
            throw Failure("--run: the name " + lapwing::onOneLine(name) + " is given twice");
        }
        const std::string& line = text;
        tasks.push_back({name, [&line] { return runLine(line, Output::None); }});
    }
    return tasks;
}

// Exit codes of Windows have 32 bits.
std::string textOf(const Ending& ending) {
    return ending.signal != 0
               ? "was ended by signal " + std::to_string(ending.signal)
               : "failed with exit code " + std::to_string(static_cast<std::uint32_t>(ending.code));
}

void requireNotInterrupted() {
    if (Interruption::signal() != 0) {
        throw Interrupted();
    }
}

Recorder::Recorder(const RecordOptions& wanted)
    : options(wanted),
      tasks(tasksOf(wanted)),
      labels(wanted.labels),
      progress(times(wanted.warmup + wanted.runs * wanted.recordings)) {
    if (labels.count("machine") == 0) {
        labels["machine"] = hostName();
    }
}

std::int64_t Recorder::times(std::int64_t rounds) const {
    return rounds * static_cast<std::int64_t>(tasks.size());
}

void Recorder::prepare() const {
    if (options.prepare.empty()) {
        return;
    }
    const Ending ending = runLine(options.prepare, Output::Errors);
    requireNotInterrupted();
    if (ending.isFailure()) {
        throw Failure("--prepare " + textOf(ending));
    }
}

Ending Recorder::runOnce(const Task& task, const std::string& run) {
    progress.begin();
    requireNotInterrupted();
    prepare();
    const Ending ending = task.run();
    requireNotInterrupted();
    if (ending.isFailure() && !options.ignoreFailure) {
        throw Stop(run + " of " + lapwing::onOneLine(task.name) + " " + textOf(ending),
                   ending.exitCode());
    }
    progress.end(ending.took);
    return ending;
}

void Recorder::runAll(const std::string& kind, std::int64_t rounds, TimingProfile& profile) {
    for (std::int64_t round = 1; round <= rounds; ++round) {
        std::shuffle(tasks.begin(), tasks.end(), random);
        for (const Task& task : tasks) {
            const std::string run =
                kind + " " + std::to_string(round) + " of " + std::to_string(rounds);
            const auto took = std::chrono::duration_cast<Milliseconds>(runOnce(task, run).took);
            profile.samples[task.name].push_back(took);
        }
    }
}

void Recorder::keep(TimingProfile profile) {
    std::size_t runs = 0;
    for (const auto& [name, samples] : profile.samples) {
        runs += samples.size();
    }
    if (runs != 0) {
        append(options.into, lapwing::makeRecording(std::move(profile), labels));
        recordedRuns += static_cast<std::int64_t>(runs);
    }
}

void Recorder::stop() const {
    const std::string wanted = std::to_string(times(options.runs * options.recordings));
    throw Stop(recordedRuns == 0 ? "interrupted before a run was completed; nothing is recorded"
                                 : "interrupted; " + std::to_string(recordedRuns) + " of " +
                                       wanted + " runs were completed and are recorded",
               128 + Interruption::signal());
}

void Recorder::warmUp() {
    TimingProfile dropped;
    try {
        runAll("warm-up run", options.warmup, dropped);
    } catch (const Interrupted&) {
        stop();
    }
}

void Recorder::recordOne() {
    TimingProfile profile;
    try {
        runAll("run", options.runs, profile);
    } catch (const Interrupted&) {
        keep(std::move(profile));
        stop();
    }
    keep(std::move(profile));
}

}  // namespace

int record(const RecordOptions& options) {
    requireAppendable(options.into, static_cast<std::size_t>(options.recordings));
    const Interruption interruption;
    Recorder recorder(options);
    recorder.warmUp();
    for (std::int64_t recording = 0; recording < options.recordings; ++recording) {
        recorder.recordOne();
    }
    return 0;
}

}  // namespace command
