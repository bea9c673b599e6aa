#include "recordings_text.h"

#include "figures.h"
#include "html.h"
#include "operation_samples.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace lapwing {
namespace {

std::string dateOf(const Recording& recording) {
    const std::string text = utcTextOf(secondsOf(recording));
    return text.substr(0, 10) + ' ' + text.substr(11, 5);
}

std::map<std::string, std::string> commonLabels(const std::vector<Recording>& recordings) {
    std::map<std::string, std::string> common = recordings.front().labels;
    for (const Recording& recording : recordings) {
        for (auto label = common.begin(); label != common.end();) {
            const auto found = recording.labels.find(label->first);
            const bool same = found != recording.labels.end() && found->second == label->second;
            label = same ? std::next(label) : common.erase(label);
        }
    }
    return common;
}

}  // namespace

std::string datesOf(const std::vector<const Recording*>& recordings) {
    const auto [first, last] = std::minmax_element(
        recordings.begin(), recordings.end(), [](const Recording* left, const Recording* right) {
            return left->recorded < right->recorded;
        });
    const std::string begin = dateOf(**first);
    const std::string end = dateOf(**last);
    const auto whole = [](const std::string& text) {
        return element("span", {{"class", "nowrap"}}, text);
    };
    return (begin == end ? "" : whole(begin) + " to ") + whole(end + " UTC");
}

std::string describe(const std::vector<Recording>& recordings) {
    std::string markup = countText(recordings.size(), "recording");
    if (recordings.empty()) {
        return markup;
    }
    std::vector<const Recording*> all;
    all.reserve(recordings.size());
    for (const Recording& recording : recordings) {
        all.push_back(&recording);
    }
    markup += ", " + datesOf(all);
    for (const auto& [key, value] : commonLabels(recordings)) {
        std::string label = key;
        label.append("=").append(value);
        markup.append(", ").append(nameToHtml(label));
    }
    return markup;
}

}  // namespace lapwing
