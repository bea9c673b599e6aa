#include "options.h"
#include "replay.h"
#include "report.h"
#include "standard_error_log.h"
#include "text_settings.h"
#include "usage_error.h"
#include "word_statistics.h"

#include <lapwing/settings.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

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

// Also finds out at once whether the other setting can be read.
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

void requireFolder(const std::string& folder) {
    std::error_code error;
    const fs::file_status status = fs::status(folder, error);
    if (status.type() == fs::file_type::not_found) {
        throw UsageError("no such folder: \"" + folder + "\"");
    }
    if (status.type() == fs::file_type::none) {
        throw UsageError("cannot look at \"" + folder + "\": " + error.message());
    }
    if (status.type() != fs::file_type::directory) {
        throw UsageError("not a folder: \"" + folder + "\"");
    }
}

std::vector<std::string> namesOf(const std::vector<Operation>& operations) {
    std::vector<std::string> names(operations.size());
    std::transform(operations.begin(), operations.end(), names.begin(),
                   [](const Operation& operation) { return operation.name; });
    return names;
}

std::string slowestOf(const std::vector<std::string>& names, const TimingProfile& recorded) {
    return *std::max_element(names.begin(), names.end(), [&](const auto& left, const auto& right) {
        return averageOf(recorded, left) < averageOf(recorded, right);
    });
}

// The stand-ins include an operation that was not recorded.
void recordAndReplay(const std::string& folder, std::int32_t runs) {
    Statistics found;
    const std::vector<Operation> operations = realOperations(folder, found);
    const TimingProfile recorded = recordPass(operations, runs);
    if (found.contents.texts.empty()) {
        throw UsageError("no readable file below \"" + folder + "\"");
    }

    std::vector<std::string> names = namesOf(operations);
    const std::string slowName = slowestOf(names, recorded);
    names.emplace_back("publish the report");
    const Replay replay = replayPass(recorded, names, slowName, runs);

    std::cout << folder << ": " << formatStatistics(found.tree, found.contents, found.ranking)
              << '\n'
              << formatTable(names, recorded, replay);
    if (replay.errors.samples.count(slowName) != 0) {
        std::cout << "\nThe last replay of \"" << slowName << "\" was made too slow on purpose.\n";
    }
}

void run(const std::vector<std::string>& arguments) {
    const Options options = parseOptions(arguments);
    if (options.help) {
        std::cout << usage();
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

}  // namespace

int main(int argc, char* argv[]) {
    const StandardErrorLog log;
    try {
        run({argv + 1, argv + argc});
    } catch (const UsageError& error) {
        std::cerr << "replay_host: " << error.what() << "\nTry: replay_host --help\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "replay_host: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
