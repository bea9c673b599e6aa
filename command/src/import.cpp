#include "commands.h"
#include "operations.h"
#include "places.h"
#include "values.h"

#include <lapwing/kit/import.h>

#include "text_table.h"

namespace command {
namespace {

std::string fileOf(const ImportOptions& options) {
    return options.log + options.hyperfine + options.csv;  // one of them
}

TimingProfile readProfile(const ImportOptions& options) {
    const std::string name = nameOf(fileOf(options));
    TimingProfile profile;
    readFile(fileOf(options), [&](std::istream& stream) {
        if (!options.log.empty()) {
            inOption("--prefix", [&] { profile = lapwing::importLog(stream, options.prefix); });
        } else if (!options.hyperfine.empty()) {
            profile = lapwing::importHyperfine(stream, name);
        } else {
            profile = lapwing::importCsv(stream, name);
        }
    });
    return profile;
}

std::size_t countSamples(const TimingProfile& profile) {
    std::size_t count = 0;
    for (const auto& [name, samples] : profile.samples) {
        count += samples.size();
    }
    return count;
}

}  // namespace

int importSamples(const ImportOptions& options) {
    const TimingProfile profile = readProfile(options);
    const std::string name = nameOf(fileOf(options));
    const std::size_t samples = countSamples(profile);
    if (samples == 0) {
        throw Failure(name + ": there are no samples");
    }
    append(options.into, lapwing::makeRecording(profile, options.labels));
    print(counted(samples, "sample") + " of " + counted(profile.samples.size(), "operation") +
          " from " + lapwing::onOneLine(name) + '\n');
    return 0;
}

}  // namespace command
