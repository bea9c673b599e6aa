#include "settings_format.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "json_input.h"
#include "recording_format.h"
#include "utf8.h"

namespace lapwing {

namespace {

using Json = nlohmann::json;

constexpr std::size_t deepestNesting = 100;

class SettingsInput {
public:
    SettingsInput(std::string_view fileText, const std::string& fileName)
        : all(fileText), file(fileName) {
        if (all.size() > largestSettingsFile) {
            refuseAt(largestSettingsFile,
                     "the file is larger than " + std::to_string(largestSettingsFile) + " bytes");
        }
        if (const std::size_t valid = utf8Prefix(all); valid != all.size()) {
            refuseAt(valid, "not UTF-8");
        }
        // The parser takes a zero for the end.
        if (const std::size_t zero = all.find('\0'); zero != std::string_view::npos) {
            refuseAt(zero, "not JSON: a byte of zero");
        }
    }

    bool atEnd() {
        exhausted = next == all.size();
        return exhausted;
    }
    [[nodiscard]] char current() const { return all[next]; }
    void advance() { ++next; }

    // Whether the parser has asked for more than there is.
    [[nodiscard]] bool isExhausted() const { return exhausted; }
    [[nodiscard]] std::string_view text() const { return all; }

    // The byte that was read last, or the end of the file.
    [[nodiscard]] std::size_t offset() const { return exhausted ? next : next - 1; }

    [[nodiscard]] std::size_t line() {
        counted.moveOver(all.substr(countedBytes, offset() - countedBytes));
        countedBytes = offset();
        return counted.line;
    }

    [[noreturn]] void refuse(const std::string& reason) const { refuseAt(offset(), reason); }

private:
    [[noreturn]] void refuseAt(std::size_t where, const std::string& reason) const {
        TextPosition position;
        position.moveOver(all.substr(0, where));
        throw std::runtime_error(position.in(file) + ": " + reason);
    }

    std::string_view all;
    const std::string& file;
    std::size_t next = 0;
    bool exhausted = false;
    TextPosition counted;
    std::size_t countedBytes = 0;
};

// Tells texts, with their quotation marks, from the rest of a document.
class TextTracker {
public:
    bool isInText(char c) {
        const bool wasInside = inside;
        if (!inside) {
            inside = c == '"';
        } else if (escaped || c == '\\') {
            escaped = !escaped;
        } else {
            inside = c != '"';
        }
        return wasInside || inside;
    }

private:
    bool inside = false;
    bool escaped = false;
};

// For text that the parser has accepted.
bool containsComments(std::string_view text) {
    TextTracker tracker;
    return std::any_of(text.begin(), text.end(),
                       [&](char c) { return !tracker.isInText(c) && c == '/'; });
}

std::string withoutBlanks(std::string_view json) {
    constexpr std::string_view blanks = " \t\r\n";
    TextTracker tracker;
    std::string result;
    for (const char c : json) {
        if (tracker.isInText(c) || blanks.find(c) == std::string_view::npos) {
            result += c;
        }
    }
    return result;
}

// Takes the events of the parser, which sees to the grammar.
class SettingsHandler {
public:
    explicit SettingsHandler(SettingsInput& fileInput) : input(fileInput) {}

    StoredValues takeValues() { return std::move(values); }

    bool null() { return take(ValueForm::Other, "null"); }
    bool boolean(bool value) { return take(ValueForm::Literal, value ? "true" : "false"); }
    bool number_integer(std::int64_t /*value*/) { return takeNumber(); }
    bool number_unsigned(std::uint64_t /*value*/) { return takeNumber(); }
    bool number_float(double /*value*/, const std::string& /*digits*/) { return takeNumber(); }
    bool string(const std::string& value) { return take(ValueForm::Text, value); }
    static bool binary(const Json::binary_t& /*value*/) { return true; }
    bool start_object(std::size_t size);
    bool start_array(std::size_t size);
    bool key(const std::string& name);
    bool end_object();
    bool end_array();
    bool parse_error(std::size_t position, const std::string& token, const Json::exception& error);

private:
    [[nodiscard]] bool isInArray() const { return arrayDepth != 0; }
    void open();
    void requireObject() const;
    bool take(ValueForm form, std::string text);
    bool takeNumber();

    SettingsInput& input;
    StoredValues values;
    std::string path;
    std::vector<std::size_t> objects;  // how much of the path leads to each open one
    std::size_t pathBytes = 0;
    std::size_t line = 1;
    std::size_t depth = 0;
    std::size_t arrayDepth = 0;
    std::size_t arrayStart = 0;
};

void SettingsHandler::open() {
    if (++depth > deepestNesting) {
        input.refuse("nested more than " + std::to_string(deepestNesting) + " deep");
    }
}

void SettingsHandler::requireObject() const {
    if (objects.empty()) {
        input.refuse("the file must be an object");
    }
}

bool SettingsHandler::start_object(std::size_t /*size*/) {
    open();
    if (!isInArray()) {
        objects.push_back(path.size());
    }
    return true;
}

bool SettingsHandler::end_object() {
    --depth;
    if (!isInArray()) {
        objects.pop_back();
    }
    return true;
}

bool SettingsHandler::start_array(std::size_t /*size*/) {
    open();
    if (!isInArray()) {
        requireObject();
        arrayDepth = depth;
        arrayStart = input.offset();
    }
    return true;
}

bool SettingsHandler::end_array() {
    if (depth-- == arrayDepth) {
        arrayDepth = 0;
        const std::size_t size = input.offset() + 1 - arrayStart;
        take(ValueForm::Other, withoutBlanks(input.text().substr(arrayStart, size)));
    }
    return true;
}

bool SettingsHandler::key(const std::string& name) {
    if (isInArray()) {
        return true;
    }
    path.resize(objects.back());
    path += (objects.size() > 1 ? "." : "") + name;
    line = input.line();
    pathBytes += path.size();
    if (pathBytes > largestSettingsFile) {
        input.refuse("the joined keys are larger than " + std::to_string(largestSettingsFile) +
                     " bytes");
    }
    return true;
}

bool SettingsHandler::take(ValueForm form, std::string text) {
    if (isInArray()) {
        return true;
    }
    requireObject();
    if (!values.try_emplace(path, StoredValue{form, std::move(text), line}).second) {
        input.refuse(inQuotes(path) + " is there twice");
    }
    return true;
}

// As it is written. The parser has read on to the next character.
bool SettingsHandler::takeNumber() {
    const std::string_view read = input.text().substr(0, input.offset());
    const std::size_t before = read.find_last_not_of("+-.0123456789Ee");
    return take(ValueForm::Literal, std::string(read.substr(before + 1)));
}

bool SettingsHandler::parse_error(std::size_t /*position*/, const std::string& token,
                                  const Json::exception& error) {
    constexpr int numberOverflow = 406;
    if (error.id == numberOverflow) {
        input.refuse("the number " + inQuotes(token) + " is too large");
    }
    if (input.isExhausted()) {
        input.refuse(input.text().empty() ? "the file is empty" : "the file is cut short");
    }
    input.refuse(reasonOf(error.what()));
}

std::string jsonOf(const StoredValue& value) {
    return value.form == ValueForm::Text ? Json(value.text).dump() : value.text;
}

using Entry = StoredValues::value_type;

template <class IsBefore>
std::vector<const Entry*> sorted(const StoredValues& values, const IsBefore& isBefore) {
    std::vector<const Entry*> entries;
    entries.reserve(values.size());
    for (const Entry& entry : values) {
        entries.push_back(&entry);
    }
    std::sort(entries.begin(), entries.end(), isBefore);
    return entries;
}

}  // namespace

SettingsDocument parseSettings(std::string_view text, const std::string& file) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark) {
        text.remove_prefix(byteOrderMark.size());
    }
    SettingsInput input(text, file);
    SettingsHandler handler(input);
    constexpr bool strict = true;
    constexpr bool ignoreComments = true;
    Json::sax_parse(InputIterator(input), InputIterator<SettingsInput>(), &handler,
                    Json::input_format_t::json, strict, ignoreComments);
    return {handler.takeValues(), containsComments(text)};
}

std::string formatSettings(const StoredValues& values) {
    std::string text = "{\n";
    const char* separator = "";
    for (const Entry* entry : sorted(values, [](const Entry*left, const Entry*right) {
             return left->first < right->first;
         })) {
        text += separator;
        text += "    " + Json(entry->first).dump() + ": " + jsonOf(entry->second);
        separator = ",\n";
    }
    return text + (values.empty() ? "}\n" : "\n}\n");
}

std::vector<std::string> problemsOf(const StoredValues& values, const std::string& file) {
    std::vector<std::string> problems;
    for (const Entry* entry : sorted(values, [](const Entry*left, const Entry*right) {
             return std::tie(left->second.line, left->first) <
                    std::tie(right->second.line, right->first);
         })) {
        const auto& [key, value] = *entry;
        if (value.form == ValueForm::Other) {
            problems.push_back(file + ':' + std::to_string(value.line) + ": " + inQuotes(key) +
                               (value.text == "null" ? " is null" : " is an array") +
                               ", which is no setting's value");
        }
    }
    return problems;
}

}  // namespace lapwing
