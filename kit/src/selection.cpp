#include <lapwing/kit/selection.h>

#include <lapwing/kit/file_text.h>

#include "recording_format.h"
#include "utc_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <system_error>
#include <tuple>
#include <utility>

namespace lapwing {
namespace {

using Clock = std::chrono::system_clock;
using Time = Clock::time_point;

[[noreturn]] void refuse(const std::string& reason) {
    throw std::invalid_argument(reason);
}

char decodedByte(std::string_view digits) {
    unsigned value = 0;
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value, 16);
    if (digits.size() != 2 || result.ec != std::errc() || result.ptr != end) {
        refuse("% is not followed by two hexadecimal digits");
    }
    return static_cast<char>(value);
}

std::string decoded(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            bytes += decodedByte(text.substr(i + 1, 2));
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

template <class V>
void setOnce(std::optional<V>& target, const V& value) {
    if (target) {
        refuse("it is there twice");
    }
    target = value;
}

Time parseTime(const std::string& text) {
    const auto seconds =
        fromUtcText(text.find('T') == std::string::npos ? text + "T00:00:00Z" : text);
    if (!seconds) {
        refuse("a time is such as 2026-11-01 or 2026-11-01T12:00:00Z");
    }
    const auto first = std::chrono::ceil<std::chrono::seconds>(Time::min());
    const auto last = std::chrono::floor<std::chrono::seconds>(Time::max());
    return std::clamp(*seconds, first, last);
}

void takeLabel(Selection& selection, const std::string& value) {
    const std::size_t separator = value.find('=');
    if (separator == std::string::npos) {
        refuse("a label is such as build%3D42");
    }
    const auto [label, isNew] =
        selection.labels.emplace(value.substr(0, separator), value.substr(separator + 1));
    if (!isNew && label->second != value.substr(separator + 1)) {
        refuse("no recording has two texts for one label");
    }
}

void takeName(Selection& selection, const std::string& value) {
    selection.names.insert(value.compare(0, 4, "hex:") == 0 ? fromFileText(value) : value);
}

void takeSince(Selection& selection, const std::string& value) {
    setOnce(selection.since, parseTime(value));
}

void takeUntil(Selection& selection, const std::string& value) {
    setOnce(selection.until, parseTime(value));
}

void takeLast(Selection& selection, const std::string& value) {
    std::size_t count = 0;
    const char* const end = value.data() + value.size();
    const auto result = std::from_chars(value.data(), end, count);
    if (result.ec != std::errc() || result.ptr != end) {
        refuse("it is no whole number");
    }
    setOnce(selection.last, count);
}

struct Key {
    const char* name;
    void (*take)(Selection& selection, const std::string& value);
};

constexpr std::array<Key, 5> keys{{{"label", takeLabel},
                                   {"name", takeName},
                                   {"since", takeSince},
                                   {"until", takeUntil},
                                   {"last", takeLast}}};

void takePair(Selection& selection, std::string_view pair) {
    const std::size_t separator = pair.find('=');
    if (separator == std::string_view::npos) {
        refuse("a filter is KEY=VALUE");
    }
    const std::string name = decoded(pair.substr(0, separator));
    const auto* const key = std::find_if(
        keys.begin(), keys.end(), [&](const Key& candidate) { return name == candidate.name; });
    if (key == keys.end()) {
        refuse("the key is none of label, name, since, until and last");
    }
    key->take(selection, decoded(pair.substr(separator + 1)));
}

bool hasLabels(const Recording& recording, const std::map<std::string, std::string>& labels) {
    return std::includes(recording.labels.begin(), recording.labels.end(), labels.begin(),
                         labels.end());
}

template <class Map>
void keepNames(Map& entries, const std::set<std::string>& names) {
    for (auto entry = entries.begin(); entry != entries.end();) {
        entry = names.count(entry->first) == 0 ? entries.erase(entry) : std::next(entry);
    }
}

// Returns whether the recording is selected.
bool select(Recording& recording, const Selection& selection) {
    if ((selection.since && recording.recorded < *selection.since) ||
        (selection.until && recording.recorded >= *selection.until) ||
        !hasLabels(recording, selection.labels)) {
        return false;
    }
    if (selection.names.empty()) {
        return true;
    }
    keepNames(recording.profile.samples, selection.names);
    keepNames(recording.profile.notes, selection.names);
    return !recording.profile.samples.empty() || !recording.profile.notes.empty();
}

// The later in the order of merged(), the greater.
auto orderOf(const Recording& recording) {
    return std::make_tuple(std::chrono::floor<std::chrono::seconds>(recording.recorded),
                           std::string_view(recording.id));
}

std::vector<Recording> latest(std::vector<Recording> recordings, std::size_t count) {
    std::vector<std::size_t> indices(recordings.size());
    std::iota(indices.begin(), indices.end(), std::size_t{0});
    std::stable_sort(indices.begin(), indices.end(), [&](std::size_t left, std::size_t right) {
        return orderOf(recordings[left]) > orderOf(recordings[right]);
    });
    indices.resize(std::min(count, indices.size()));
    std::sort(indices.begin(), indices.end());
    std::vector<Recording> kept;
    kept.reserve(indices.size());
    for (const std::size_t index : indices) {
        kept.push_back(std::move(recordings[index]));
    }
    return kept;
}

}  // namespace

Selection parseSelection(std::string_view query) {
    Selection selection;
    while (!query.empty()) {
        const std::string_view pair = query.substr(0, query.find('&'));
        try {
            takePair(selection, pair);
        } catch (const std::invalid_argument& error) {
            refuse("the filter " + inQuotes(pair) + ": " + error.what());
        }
        query.remove_prefix(std::min(pair.size() + 1, query.size()));
    }
    return selection;
}

std::vector<Recording> selected(std::vector<Recording> recordings, const Selection& selection) {
    std::vector<Recording> kept;
    for (Recording& recording : recordings) {
        if (select(recording, selection)) {
            kept.push_back(std::move(recording));
        }
    }
    return selection.last ? latest(std::move(kept), *selection.last) : kept;
}

}  // namespace lapwing
