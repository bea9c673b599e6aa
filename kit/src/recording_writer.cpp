#include <lapwing/kit/file_text.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "recording_format.h"
#include "utc_text.h"
#include "utf8.h"

namespace lapwing {

namespace {

constexpr std::size_t lineLength = 100;
constexpr std::size_t blockSize = 64U << 10U;

class LineWriter {
public:
    explicit LineWriter(const WriteBytes& writeBytes) : write(writeBytes) {
        buffer.reserve(blockSize);
    }

    void append(std::string_view text) {
        if (buffer.size() + text.size() > blockSize) {
            flush();
        }
        buffer.append(text);
        column += text.size();
    }

    void startLine(std::size_t indent) {
        append("\n");
        column = 0;
        append(std::string_view("        ", indent));
    }

    // Leaves room for the comma behind it.
    [[nodiscard]] bool hasRoomFor(std::size_t size) const { return column + size < lineLength; }

    void flush() {
        write(buffer);
        buffer.clear();
    }

private:
    const WriteBytes& write;
    std::string buffer;
    std::size_t column = 0;
};

// Entries that fill their lines.
class WrappedList {
public:
    WrappedList(LineWriter& lines, std::size_t indentOfKey)
        : output(lines), indent(indentOfKey + 2) {}

    void add(std::string_view entry) {
        if (isEmpty) {
            isEmpty = false;
        } else if (output.hasRoomFor(entry.size() + 2)) {
            output.append(", ");
        } else {
            output.append(",");
            output.startLine(indent);
        }
        output.append(entry);
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
    std::array<char, 24> digits{};
    WrappedList list(output, 4);
    for (const Milliseconds duration : durations) {
        const auto result =
            std::to_chars(digits.data(), digits.data() + digits.size(), duration.count());
        list.add({digits.data(), static_cast<std::size_t>(result.ptr - digits.data())});
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
    output.append(", \"recorded\": \"");
    output.append(timeText(recording).value());
    output.append("\",");
    writeTexts(output, "\"labels\": ", recording.labels);
    writeTexts(output, "\"notes\": ", recording.profile.notes);
    writeSamples(output, recording.profile);
    output.append("}");
}

[[noreturn]] void refuse(const Recording& recording, const std::string& reason) {
    throw std::invalid_argument("recording " + inQuotes(recording.id) + ": " + reason);
}

void checkAll(const std::vector<Recording>& recordings) {
    std::set<std::string_view> ids;
    for (const Recording& recording : recordings) {
        if (const std::string problem = problemOfId(recording.id); !problem.empty()) {
            refuse(recording, problem);
        }
        if (!ids.insert(recording.id).second) {
            refuse(recording, "the id is there twice");
        }
        if (!timeText(recording)) {
            refuse(recording, "the year must be 0 to 9999");
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
