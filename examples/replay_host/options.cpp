#include "options.h"

#include "usage_error.h"
#include "word_statistics.h"

#include <lapwing/settings.h>

#include <algorithm>
#include <cstddef>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// What each setting means, by key.
std::map<std::string, std::string> knownSettings() {
    return {{runsKey, "runs of each operation in each pass, 1 to " + std::to_string(maxRuns) +
                          ", default " + std::to_string(defaultRuns)},
            {DeveloperConfig::enableTimingProfileLogging.name,
             "true or false (1 or 0): log each run on standard error, default false"}};
}

void parseSetting(const std::string& argument, Options& options) {
    const std::size_t separator = argument.find('=');
    if (separator == std::string::npos) {
        throw UsageError("--set needs key=value, not \"" + argument + "\"");
    }
    const std::string key = argument.substr(0, separator);
    if (knownSettings().count(key) == 0) {
        throw UsageError("unknown setting \"" + key + "\"");
    }
    options.settings[key] = argument.substr(separator + 1);
}

}  // namespace

Options parseOptions(const std::vector<fs::path>& arguments) {
    Options options;
    if (std::find(arguments.begin(), arguments.end(), fs::path("--help")) != arguments.end()) {
        options.help = true;
        return options;
    }
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const std::string text = toText(*argument);
        if (text == "--set") {
            if (++argument == arguments.end()) {
                throw UsageError("--set needs key=value after it");
            }
            parseSetting(toText(*argument), options);
        } else if (text.empty()) {
            throw UsageError("the folder's name is empty");
        } else if (text.front() == '-') {
            throw UsageError("unknown option \"" + text + "\"");
        } else if (!options.folder.empty()) {
            throw UsageError("one folder only, but there is also \"" + text + "\"");
        } else {
            options.folder = *argument;
        }
    }
    if (options.folder.empty()) {
        throw UsageError("no folder given");
    }
    return options;
}

std::string toText(const fs::path& argument) {
    const auto text = argument.u8string();  // of char, since C++20 of char8_t
    return {text.begin(), text.end()};
}

std::string usage(const std::string& program) {
    std::ostringstream text;
    text
        << "Usage: " << program
        << " [--set key=value]... folder\n"
           "\n"
           "Times real operations on the files below the folder, replays them with stand-ins that\n"
           "are padded to the recorded averages, and compares the two. Links are not followed.\n"
           "At most "
        << maxBytes / bytesPerMebibyte << " MiB are read, and at most " << maxEntries
        << " files and folders are looked at.\n"
           "\n"
           "Settings (any other key is refused):\n";
    for (const auto& [key, meaning] : knownSettings()) {
        text << "  " << key << "\n      " << meaning << '\n';
    }
    text << "\n"
            "Exit code: 0 done, 1 failed, 2 wrong arguments or nothing to read\n";
    return text.str();
}
