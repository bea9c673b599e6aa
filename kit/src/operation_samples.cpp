#include "operation_samples.h"

#include "numbers.h"

#include <algorithm>
#include <chrono>
#include <tuple>

namespace lapwing {
namespace {

std::vector<const Recording*> oldestFirst(const std::vector<Recording>& recordings) {
    std::vector<const Recording*> sorted;
    sorted.reserve(recordings.size());
    for (const Recording& recording : recordings) {
        sorted.push_back(&recording);
    }
    std::sort(sorted.begin(), sorted.end(), [](const Recording* left, const Recording* right) {
        return std::tie(left->recorded, left->id) < std::tie(right->recorded, right->id);
    });
    return sorted;
}

std::string noteOf(const Recording& recording, const std::string& name) {
    const auto found = recording.profile.notes.find(name);
    return found == recording.profile.notes.end() ? "" : found->second;
}

}  // namespace

OperationsByName operationsOf(const std::vector<Recording>& recordings) {
    OperationsByName operations;
    for (const Recording* recording : oldestFirst(recordings)) {
        for (const auto& [name, samples] : recording->profile.samples) {
            if (samples.empty()) {
                continue;
            }
            OperationSamples& operation = operations[name];
            operation.parts.push_back({recording, &samples});
            if (operation.note.empty()) {
                operation.note = noteOf(*recording, name);
            }
        }
    }
    return operations;
}

Numbers sortedSamples(const RecordedParts& parts) {
    Numbers sorted;
    for (const RecordedSamples& part : parts) {
        for (const Milliseconds sample : *part.samples) {
            sorted.push_back(static_cast<double>(sample.count()));
        }
    }
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

double percentileOf(const Numbers& sorted, double percent) {
    return sorted[rankOf(percent, sorted.size()) - 1];
}

double secondsOf(const Recording& recording) {
    return std::chrono::duration<double>(
               std::chrono::floor<std::chrono::seconds>(recording.recorded.time_since_epoch()))
        .count();
}

}  // namespace lapwing
