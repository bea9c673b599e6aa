#include "commands.h"
#include "operations.h"
#include "places.h"
#include "terminal.h"

#include <lapwing/kit/file_text.h>

#include "text_table.h"
#include "utc_text.h"

#include <algorithm>

namespace command {
namespace {

using lapwing::Recording;
using lapwing::Summary;

std::string utc(std::chrono::system_clock::time_point time) {
    return lapwing::toUtcText(std::chrono::floor<std::chrono::seconds>(time)).value_or("");
}

std::string indented(const std::string& text) {
    std::string lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start) + 1;
        lines += "  " + text.substr(start, end - start);
        start = end;
    }
    return lines;
}

std::string formatFigures(const Summary& summary) {
    const auto whole = [](Milliseconds time) { return lapwing::formatTime(time, 0); };
    const std::chrono::duration<double, std::milli> deviation(summary.standardDeviation);
    return lapwing::formatTable(
        {{"average"}, {"min"}, {"median"}, {"p90"}, {"p99"}, {"max"}, {"standard deviation"}},
        {{whole(summary.average), whole(summary.minimum), whole(summary.median), whole(summary.p90),
          whole(summary.p99), whole(summary.maximum), lapwing::formatTime(deviation, 1)}});
}

std::string formatCounts(const Operation& operation) {
    return lapwing::formatTable(
        {{"recordings"}, {"samples"}, {"first"}, {"last"}},
        {{std::to_string(operation.recordings), std::to_string(operation.samples.size()),
          utc(operation.first), utc(operation.last)}});
}

void printTables(const Recordings& recordings) {
    constexpr std::size_t indentation = 2;
    const std::size_t width = terminalWidth() - indentation;
    const bool inUnicode = takesUnicode();
    std::string separator;
    for (const auto& [name, operation] : operationsOf(recordings)) {
        const std::string bar = drawDistribution(operation.samples, width, inUnicode);
        print(separator + lapwing::onOneLine(name) + '\n' +
              indented(formatCounts(operation) +
                       formatFigures(*lapwing::summarize(operation.samples)) + bar + '\n'));
        separator = '\n';
    }
}

void printJson(const Recordings& recordings) {
    Json rows = Json::array();
    for (const auto& [name, operation] : operationsOf(recordings)) {
        rows.push_back(toJson(name, operation.recordings, *lapwing::summarize(operation.samples)));
    }
    print(toText({{"operations", rows}}));
}

// A field as RFC 4180 has it. Lines end in LF, as those of other programs do, not in its CRLF.
std::string quoted(const std::string& text) {
    if (text.find_first_of("\",\r\n") == std::string::npos) {
        return text;
    }
    std::string field = "\"";
    for (const char character : text) {
        field += character == '"' ? "\"\"" : std::string(1, character);
    }
    return field + '"';
}

std::vector<std::string> sortedNames(const TimingProfile& profile) {
    std::vector<std::string> names;
    for (const auto& [name, samples] : profile.samples) {
        names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void printCsv(const Recordings& recordings) {
    print("name,recording,recorded,sample\n");
    for (const Recording& recording : recordings) {
        const std::string origin = quoted(recording.id) + ',' + utc(recording.recorded) + ',';
        std::string lines;
        for (const std::string& name : sortedNames(recording.profile)) {
            const std::string start = quoted(lapwing::toFileText(name)) + ',' + origin;
            for (const Milliseconds sample : recording.profile.samples.at(name)) {
                lines += start + std::to_string(sample.count()) + '\n';
            }
        }
        print(lines);
    }
}

}  // namespace

int show(const ShowOptions& options) {
    const Recordings recordings = load(options.places);
    switch (options.format) {
        case Format::Table:
            printTables(recordings);
            break;
        case Format::Json:
            printJson(recordings);
            break;
        case Format::Csv:
            printCsv(recordings);
            break;
    }
    return 0;
}

}  // namespace command
