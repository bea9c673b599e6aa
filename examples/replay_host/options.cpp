#include "options.h"

#include <lapwing/built_in_settings.h>

#include <algorithm>
#include <map>

namespace fs = std::filesystem;

namespace {

// Nothing would ever read another key.
void requireKnown(const std::string& setting) {
    const std::string key = setting.substr(0, setting.find('='));
    if (key != runs.name && key != DeveloperConfig::enableTimingProfileLogging.name) {
        throw UsageError("unknown setting \"" + key + '"');
    }
}

void requireFolder(const std::string& text, const Options& options) {
    if (text.empty() || text.front() == '-') {
        throw UsageError(text.empty() ? "the folder's name is empty"
                                      : "unknown option \"" + text + '"');
    }
    if (!options.folder.empty()) {
        throw UsageError("one folder only, but there is also \"" + text + '"');
    }
}

}  // namespace

Options parseOptions(const std::vector<fs::path>& arguments) {
    Options options;
    if (std::find(arguments.begin(), arguments.end(), "--help") != arguments.end()) {
        options.help = true;
        return options;
    }
    fs::path setting;
    const std::map<fs::path, fs::path*> targets{{"--set", &setting},
                                                {"--record", &options.record},
                                                {"--replay", &options.replay},
                                                {"--trace", &options.trace}};
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const auto target = targets.find(*argument);
        if (target == targets.end()) {
            requireFolder(toText(*argument), options);
            options.folder = *argument;
            continue;
        }
        if (++argument == arguments.end() || argument->empty()) {
            throw UsageError(toText(target->first) + " needs a value after it");
        }
        *target->second = *argument;
        if (target->second == &setting) {
            requireKnown(toText(setting));
            options.settings.push_back(toText(setting));
        }
    }
    if (options.folder.empty() && options.replay.empty()) {
        throw UsageError("no folder given");
    }
    return options;
}

std::string toText(const fs::path& argument) {
    const auto text = argument.u8string();  // of char, since C++20 of char8_t
    return {text.begin(), text.end()};
}

std::string usage(const std::string& program) {
    return "Usage: " + program + R"( [OPTION...] FOLDER

Times real operations on the files below the folder, replays them with stand-ins that are padded to
the recorded averages, and tells how true the replay was.

  --record FILE    add what was recorded to FILE, and replay nothing
  --replay FILE    replay the recordings in FILE, and record nothing; needs no FOLDER
  --trace FILE     write each run to FILE, for ui.perfetto.dev or chrome://tracing
  --set KEY=VALUE  settings, also read from the environment as REPLAY_HOST_KEY:
                   replay.runs (1 to 100, default 3), enableTimingProfileLogging (default false)

Exit code: 0 done, 1 failed, 2 wrong arguments or nothing to read
)";
}
