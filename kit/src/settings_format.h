// The format of a file of settings: a JSON object, perhaps with comments.

#ifndef LAPWING_KIT_SRC_SETTINGS_FORMAT_H
#define LAPWING_KIT_SRC_SETTINGS_FORMAT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lapwing {

constexpr std::size_t largestSettingsFile = std::size_t{16} << 20U;

// Text stands in quotation marks, Literal is true, false or a number. Other, null or an array, is
// no setting's value; it is kept for the file.
enum class ValueForm { Text, Literal, Other };

struct StoredValue {
    ValueForm form = ValueForm::Other;
    std::string text;
    std::size_t line = 0;

    [[nodiscard]] bool isSameAs(const StoredValue& other) const {
        return form == other.form && text == other.text;
    }
};

using StoredValues = std::unordered_map<std::string, StoredValue>;

struct SettingsDocument {
    StoredValues values;
    bool hasComments = false;
};

// Throws std::runtime_error, FILE:LINE:COLUMN: reason, for what the format does not allow.
SettingsDocument parseSettings(std::string_view text, const std::string& file);

// Returns the text of a file, sorted by key. Keys and texts must be UTF-8.
std::string formatSettings(const StoredValues& values);

// Returns FILE:LINE: reason for each value that is no setting's, by line.
std::vector<std::string> problemsOf(const StoredValues& values, const std::string& file);

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_SETTINGS_FORMAT_H
