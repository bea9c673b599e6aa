#include "options.h"
#include "replay.h"
#include "report.h"
#include "text_settings.h"
#include "usage_error.h"
#include "word_statistics.h"

#include <lapwing/instrumentation.h>
#include <lapwing/settings.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#endif

namespace fs = std::filesystem;

namespace {

// Sends the log lines of all threads to standard error while it exists, each line as a whole. It
// is made before anything else that uses the library.
class StandardErrorLog final {
public:
    StandardErrorLog() {
        Instrumentation::setGlobalLogMessageHandler([](const std::string& line) {
            const std::string text = line + '\n';
            std::fwrite(text.data(), 1, text.size(), stderr);
        });
    }
    StandardErrorLog(const StandardErrorLog&) = delete;
    StandardErrorLog& operator=(const StandardErrorLog&) = delete;
    ~StandardErrorLog() { Instrumentation::setGlobalLogMessageHandler({}); }
};

struct Statistics {
    FileTree tree;
    FileContents contents;
    WordCounts counts;
    WordRanking ranking;
};

std::vector<Operation> realOperations(const fs::path& folder, Statistics& found) {
    return {
        {"walk the tree", [&, folder](Instrumentation&) { found.tree = walkTree(folder); }},
        {"read the bytes", [&](Instrumentation&) { found.contents = readBytes(found.tree); }},
        {"count the words", [&](Instrumentation&) { found.counts = countWords(found.contents); }},
        {"sort by frequency",
         [&](Instrumentation&) { found.ranking = sortByFrequency(found.counts); }},
    };
}

// Reads the other setting too, so that a wrong text is refused at the start.
std::int32_t checkedRuns() {
    static_cast<void>(DeveloperConfig::enableTimingProfileLogging());
    const DeveloperConfig::Integer setting{runsKey, defaultRuns};
    const std::int32_t runs = setting();
    if (runs < 1 || runs > maxRuns) {
        throw UsageError("setting " + std::string(setting.name) + ": " + std::to_string(runs) +
                         " is not within 1 to " + std::to_string(maxRuns));
    }
    return runs;
}

void requireFolder(const fs::path& folder) {
    const std::string quoted = '"' + toText(folder) + '"';
    std::error_code error;
    const fs::file_status status = fs::status(folder, error);
    if (status.type() == fs::file_type::not_found) {
        throw UsageError("no such folder: " + quoted);
    }
    if (status.type() == fs::file_type::none) {
        throw UsageError("cannot look at " + quoted + ": " + error.message());
    }
    if (status.type() != fs::file_type::directory) {
        throw UsageError("not a folder: " + quoted);
    }
}

std::string slowestOf(const std::vector<std::string>& names, const TimingProfile& recorded) {
    return *std::max_element(names.begin(), names.end(), [&](const auto& left, const auto& right) {
        return averageOf(recorded, left) < averageOf(recorded, right);
    });
}

void recordAndReplay(const fs::path& folder, std::int32_t runs) {
    Statistics found;
    const std::vector<Operation> operations = realOperations(folder, found);
    const TimingProfile recorded = recordPass(operations, runs);
    if (found.contents.texts.empty()) {
        throw UsageError("no readable file below \"" + toText(folder) + "\"");
    }

    std::vector<std::string> names;
    names.reserve(operations.size() + 1);
    for (const Operation& operation : operations) {
        names.push_back(operation.name);
    }
    const std::string slowName = slowestOf(names, recorded);
    const std::string unrecordedName = "publish the report";
    names.push_back(unrecordedName);
    const lapwing::ReplayReport replayed = replayPass(recorded, names, slowName, runs);

    std::cout << toText(folder) << ": "
              << formatStatistics(found.tree, found.contents, found.ranking) << '\n'
              << lapwing::formatReport(replayed) << '\n'
              << formatExplanation(slowName, unrecordedName);
}

void run(const std::string& program, const std::vector<fs::path>& arguments) {
    const Options options = parseOptions(arguments);
    if (options.help) {
        std::cout << usage(program);
    } else {
        TextSettings settings(options.settings);
        const std::int32_t runs = checkedRuns();
        requireFolder(options.folder);
        recordAndReplay(options.folder, runs);
    }
    if (!std::cout.flush()) {
        throw std::runtime_error("cannot write to standard output");
    }
}

int runAndReport(const std::vector<fs::path>& commandLine) {
    const StandardErrorLog log;
    std::string program;
    try {
        program = toText(commandLine.at(0).filename());
        run(program, {commandLine.begin() + 1, commandLine.end()});
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
    const UINT previous = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    const int exitCode = runAndReport(std::vector<fs::path>(argv, argv + argc));
    SetConsoleOutputCP(previous);
    return exitCode;
}
#else
int main(int argc, char* argv[]) {
    return runAndReport(std::vector<fs::path>(argv, argv + argc));
}
#endif
