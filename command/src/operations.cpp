#include "operations.h"

#include <lapwing/kit/file_text.h>

namespace command {

using lapwing::Recording;

std::map<std::string, Operation> operationsOf(const Recordings& recordings) {
    std::map<std::string, Operation> operations;
    for (const Recording& recording : recordings) {
        for (const auto& [name, samples] : recording.profile.samples) {
            if (samples.empty()) {
                continue;
            }
            Operation& operation = operations[name];
            operation.first = operation.recordings == 0 ? recording.recorded : operation.first;
            operation.last = recording.recorded;
            ++operation.recordings;
            operation.samples.insert(operation.samples.end(), samples.begin(), samples.end());
        }
    }
    return operations;
}

TimingProfile namesOf(const Recordings& recordings) {
    TimingProfile names;
    for (const Recording& recording : recordings) {
        for (const auto& [name, samples] : recording.profile.samples) {
            names.notes.emplace(name, "");
        }
        for (const auto& [name, note] : recording.profile.notes) {
            names.notes.emplace(name, "");
        }
    }
    return names;
}

Json toJson(const std::string& name, std::size_t recordings, const lapwing::Summary& summary) {
    return {{"name", lapwing::toFileText(name)},  {"recordings", recordings},
            {"samples", summary.count},           {"average", summary.average.count()},
            {"min", summary.minimum.count()},     {"median", summary.median.count()},
            {"p90", summary.p90.count()},         {"p99", summary.p99.count()},
            {"max", summary.maximum.count()},     {"mean", summary.mean},
            {"stddev", summary.standardDeviation}};
}

std::string toText(const Json& json) {
    return json.dump(2) + '\n';
}

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

}  // namespace command
