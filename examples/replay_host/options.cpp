#include "options.h"

#include "usage_error.h"
#include "word_statistics.h"

#include <lapwing/settings.h>

#include <algorithm>
#include <cstddef>
#include <sstream>

namespace {

struct KnownSetting {
    std::string key;
    std::string meaning;
};

std::vector<KnownSetting> knownSettings() {
    return {{runsKey, "runs of each operation in each pass, 1 to " + std::to_string(maxRuns) +
                          ", default " + std::to_string(defaultRuns)},
            {DeveloperConfig::enableTimingProfileLogging.name,
             "true or false (1 or 0): log each run on standard error, default false"}};
}

void requireKnownKey(const std::string& key) {
    const std::vector<KnownSetting> known = knownSettings();
    const auto hasKey = [&](const KnownSetting& setting) { return setting.key == key; };
    if (std::none_of(known.begin(), known.end(), hasKey)) {
        throw UsageError("unknown setting \"" + key + "\"");
    }
}

void parseSetting(const std::string& argument, Options& options) {
    const std::size_t separator = argument.find('=');
    if (separator == std::string::npos) {
        throw UsageError("--set needs key=value, not \"" + argument + "\"");
    }
    const std::string key = argument.substr(0, separator);
    requireKnownKey(key);
    options.settings[key] = argument.substr(separator + 1);
}

bool isOption(const std::string& argument) {
    return !argument.empty() && argument.front() == '-';
}

// Puts the settings into the options and returns the other arguments.
std::vector<std::string> takeSettings(const std::vector<std::string>& arguments, Options& options) {
    std::vector<std::string> others;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (*argument != "--set") {
            others.push_back(*argument);
        } else if (++argument != arguments.end()) {
            parseSetting(*argument, options);
        } else {
            throw UsageError("--set needs key=value after it");
        }
    }
    return others;
}

std::string onlyFolder(const std::vector<std::string>& arguments) {
    const auto option = std::find_if(arguments.begin(), arguments.end(), isOption);
    if (option != arguments.end()) {
        throw UsageError("unknown option \"" + *option + "\"");
    }
    if (arguments.empty()) {
        throw UsageError("no folder given");
    }
    if (arguments.size() > 1) {
        throw UsageError("one folder only, but there is also \"" + arguments[1] + "\"");
    }
    return arguments.front();
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
    Options options;
    options.help = std::find(arguments.begin(), arguments.end(), "--help") != arguments.end();
    if (!options.help) {
        options.folder = onlyFolder(takeSettings(arguments, options));
    }
    return options;
}

std::string usage() {
    std::ostringstream text;
    text << "Usage: replay_host [--set key=value]... folder\n"
            "\n"
            "Times real operations over the files below the folder, replays them with stand-ins\n"
            "that do nothing but are padded to the recorded averages, and compares the two.\n"
            "An average of 0 ms gives nothing to pad to and is noted as missing data.\n"
            "At most "
         << maxBytes / bytesPerMebibyte << " MiB are read, and at most " << maxEntries
         << " files and folders looked at.\n"
            "\n"
            "Settings (any other key is refused):\n";
    for (const KnownSetting& setting : knownSettings()) {
        text << "  " << setting.key << "\n      " << setting.meaning << '\n';
    }
    text << "\n"
            "Exit code: 0 done, 1 failed, 2 wrong arguments or nothing to read\n";
    return text.str();
}
