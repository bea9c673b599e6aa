#include <lapwing/kit/recording.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "recording_format.h"

namespace lapwing {

namespace {

std::string randomId() {
    constexpr std::size_t length = 32;
    std::random_device device;
    std::string id;
    while (id.size() < length) {
        std::uint32_t bits = device();
        for (int digit = 0; digit < 8; ++digit, bits /= 16) {
            id += "0123456789abcdef"[bits % 16];
        }
    }
    return id;
}

auto wholeSeconds(const Recording& recording) {
    return std::chrono::floor<std::chrono::seconds>(recording.recorded);
}

using Samples = decltype(TimingProfile::samples);

auto namesWithSamples(const Samples& samples) {
    return std::count_if(samples.begin(), samples.end(),
                         [](const auto& entry) { return !entry.second.empty(); });
}

bool haveSameSamples(const Samples& first, const Samples& second) {
    return namesWithSamples(first) == namesWithSamples(second) &&
           std::all_of(first.begin(), first.end(), [&](const auto& entry) {
               const auto other = second.find(entry.first);
               return entry.second.empty() ||
                      (other != second.end() && other->second == entry.second);
           });
}

bool haveSameContents(const Recording& first, const Recording& second) {
    return wholeSeconds(first) == wholeSeconds(second) && first.labels == second.labels &&
           first.profile.notes == second.profile.notes &&
           haveSameSamples(first.profile.samples, second.profile.samples);
}

bool isSameRecording(const Recording& first, const Recording& second) {
    if (first.id != second.id) {
        return false;
    }
    if (!haveSameContents(first, second)) {
        throw std::invalid_argument("two recordings with the id " + inQuotes(first.id) +
                                    " have different contents");
    }
    return true;
}

}  // namespace

Recording makeRecording(TimingProfile profile, std::map<std::string, std::string> labels) {
    const auto now = std::chrono::system_clock::now();
    return {randomId(), std::chrono::floor<std::chrono::seconds>(now), std::move(labels),
            std::move(profile)};
}

std::vector<Recording> merged(std::vector<Recording> first, const std::vector<Recording>& second) {
    std::vector<Recording> all = std::move(first);
    all.insert(all.end(), second.begin(), second.end());
    std::stable_sort(all.begin(), all.end(), [](const Recording& left, const Recording& right) {
        return left.id < right.id;
    });
    all.erase(std::unique(all.begin(), all.end(), isSameRecording), all.end());
    std::stable_sort(all.begin(), all.end(), [](const Recording& left, const Recording& right) {
        return wholeSeconds(left) < wholeSeconds(right);
    });
    return all;
}

TimingProfile flattened(const std::vector<Recording>& recordings) {
    TimingProfile result;
    for (const Recording& recording : recordings) {
        const TimingProfile& profile = recording.profile;
        result.notes.insert(profile.notes.begin(), profile.notes.end());
        for (const auto& [name, samples] : profile.samples) {
            auto& all = result.samples[name];
            all.insert(all.end(), samples.begin(), samples.end());
        }
    }
    return result;
}

}  // namespace lapwing
