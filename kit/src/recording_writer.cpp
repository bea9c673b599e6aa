#include <lapwing/kit/file_text.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "recording_format.h"
#include "utc_text.h"
#include "utf8.h"

namespace lapwing {

namespace {

constexpr std::size_t lineLength = 100;

// Gathers text in blocks and knows the column.
class LineWriter {
public:
    explicit LineWriter(const WriteBytes& writeBytes) : write(writeBytes) {}

    void append(std::string_view text) {
        while (!text.empty()) {
            const std::string_view part = text.substr(0, makeRoom(1));
            end = std::copy(part.begin(), part.end(), end);
            text.remove_prefix(part.size());
        }
    }

    void startLine(std::size_t indent) {
        append("\n");
        lineStart = end;
        columnOfBlock = 0;
        append(std::string_view("        ", indent));
    }

    // As WrappedList adds an entry behind another one, but faster.
    void appendNextNumber(std::int64_t number, std::size_t indent) {
        makeRoom(longestNumber + 2 + indent);
        char* const digits = end + 2;
        end[0] = ',';
        end[1] = ' ';
        char* numberEnd = std::to_chars(digits, digits + longestNumber, number).ptr;
        if (columnOfBlock + static_cast<std::size_t>(numberEnd - lineStart) >= lineLength) {
            end[1] = '\n';
            std::memmove(digits + indent, digits, longestNumber);
            std::memset(digits, ' ', indent);
            numberEnd += indent;
            lineStart = digits;
            columnOfBlock = 0;
        }
        end = numberEnd;
    }

    [[nodiscard]] std::size_t column() const {
        return columnOfBlock + static_cast<std::size_t>(end - lineStart);
    }

    void flush() {
        columnOfBlock = column();
        write({block.data(), static_cast<std::size_t>(end - block.data())});
        end = lineStart = block.data();
    }

private:
    static constexpr std::size_t longestNumber = 24;

    // Returns how much there is.
    std::size_t makeRoom(std::size_t size) {
        if (size > room()) {
            flush();
        }
        return room();
    }

    [[nodiscard]] std::size_t room() const {
        return block.size() - static_cast<std::size_t>(end - block.data());
    }

    const WriteBytes& write;
    std::vector<char> block = std::vector<char>(64U << 10U);
    char* end = block.data();
    char* lineStart = block.data();
    std::size_t columnOfBlock = 0;
};

// Entries that fill their lines.
class WrappedList {
public:
    WrappedList(LineWriter& lines, std::size_t indentOfKey)
        : output(lines), indent(indentOfKey + 2) {}

    void add(std::string_view entry) {
        constexpr std::string_view separator = ", ";
        if (isEmpty) {
            isEmpty = false;
        } else if (output.column() + separator.size() + entry.size() < lineLength) {
            output.append(separator);
        } else {
            output.append(",");
            output.startLine(indent);
        }
        output.append(entry);
    }

    void add(std::int64_t number) {
        if (isEmpty) {
            add(std::to_string(number));
        } else {
            output.appendNextNumber(number, indent);
        }
    }

private:
    LineWriter& output;
    std::size_t indent;
    bool isEmpty = true;
};

std::string jsonText(std::string_view text) {
    return nlohmann::json(text).dump();
}

template <class Map>
void writeTexts(LineWriter& output, std::string_view key, const Map& texts) {
    const std::map<std::string, std::string> sorted = [&] {
        std::map<std::string, std::string> result;
        for (const auto& [name, text] : texts) {
            result.emplace(toFileText(name), toFileText(text));
        }
        return result;
    }();
    output.startLine(3);
    output.append(key);
    output.append("{");
    WrappedList list(output, 3);
    for (const auto& [name, text] : sorted) {
        list.add(jsonText(name) + ": " + jsonText(text));
    }
    output.append("},");
}

void writeDurations(LineWriter& output, const std::vector<Milliseconds>& durations) {
    WrappedList list(output, 4);
    for (const Milliseconds duration : durations) {
        list.add(duration.count());
    }
}

void writeSamples(LineWriter& output, const TimingProfile& profile) {
    std::map<std::string, const std::vector<Milliseconds>*> sorted;
    for (const auto& [name, durations] : profile.samples) {
        if (!durations.empty()) {
            sorted.emplace(toFileText(name), &durations);
        }
    }
    output.startLine(3);
    output.append("\"samples\": {");
    const char* separator = "";
    for (const auto& [name, durations] : sorted) {
        output.append(separator);
        output.startLine(4);
        output.append(jsonText(name));
        output.append(": [");
        writeDurations(output, *durations);
        output.append("]");
        separator = ",";
    }
    output.append("}");
}

std::optional<std::string> timeText(const Recording& recording) {
    return toUtcText(std::chrono::floor<std::chrono::seconds>(recording.recorded));
}

void writeRecording(LineWriter& output, const Recording& recording) {
    output.startLine(2);
    output.append("{\"id\": ");
    output.append(jsonText(recording.id));
    output.append(R"(, "recorded": ")");
    output.append(timeText(recording).value());
    output.append("\",");
    writeTexts(output, "\"labels\": ", recording.labels);
    writeTexts(output, "\"notes\": ", recording.profile.notes);
    writeSamples(output, recording.profile);
    output.append("}");
}

[[noreturn]] void refuseToWrite(const Recording& recording, const std::string& reason) {
    throw std::invalid_argument("recording " + inQuotes(recording.id) + ": " + reason);
}

void checkAll(const std::vector<Recording>& recordings) {
    std::set<std::string_view> ids;
    for (const Recording& recording : recordings) {
        if (const std::string problem = problemOfId(recording.id); !problem.empty()) {
            refuseToWrite(recording, problem);
        }
        if (!ids.insert(recording.id).second) {
            refuseToWrite(recording, "the id is there twice");
        }
        if (!timeText(recording)) {
            refuseToWrite(recording, "the year must be 0 to 9999");
        }
    }
}

bool isControlCharacter(char character) {
    return static_cast<unsigned char>(character) < ' ' || character == '\x7F';
}

}  // namespace

void formatRecordings(const std::vector<Recording>& recordings, const WriteBytes& write) {
    checkAll(recordings);
    LineWriter output(write);
    output.append(
        R"({"format": "lapwing-recordings", "version": 1, "unit": "ms", "recordings": [)");
    const char* separator = "";
    for (const Recording& recording : recordings) {
        output.append(separator);
        writeRecording(output, recording);
        separator = ",";
    }
    output.append("]}\n");
    output.flush();
}

std::string problemOfId(std::string_view id) {
    if (id.empty()) {
        return "the id is empty";
    }
    if (!isUtf8(id)) {
        return "the id is not UTF-8";
    }
    if (std::any_of(id.begin(), id.end(), isControlCharacter)) {
        return "the id has control characters";
    }
    return {};
}

std::string inQuotes(std::string_view text) {
    constexpr std::size_t maximum = 60;
    const std::string start(text.substr(0, maximum));
    const auto replace = nlohmann::json::error_handler_t::replace;
    return nlohmann::json(start).dump(-1, ' ', false, replace) +
           (text.size() > maximum ? "..." : "");
}

}  // namespace lapwing
