#include <lapwing/kit/import.h>

#include "import_input.h"
#include "recording_format.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <regex>
#include <string_view>
#include <system_error>

namespace lapwing {
namespace {

constexpr std::size_t longestLine = 16U << 20U;
constexpr std::size_t longestPrefix = 4096;
constexpr std::size_t longestPattern = 1000;

// Nothing at the end. What is beyond the longest line is dropped, with the line's end.
std::optional<std::string> takeLine(Input& input) {
    if (input.atEnd()) {
        return std::nullopt;
    }
    std::string line;
    for (; !input.atEnd() && input.current() != '\n'; input.advance()) {
        if (line.size() < longestLine) {
            line += input.current();
        }
    }
    if (!input.atEnd()) {
        input.advance();
    }
    return line;
}

struct EndLine {
    std::string_view head;  // what stands before ": End"
    Milliseconds time{};
};

std::optional<EndLine> parseEndLine(std::string_view line) {
    constexpr std::string_view middle = ": End - ";
    constexpr std::string_view ending = " ms";
    line = line.substr(0, line.find_last_not_of(" \t\r") + 1);
    const std::size_t headEnd = line.rfind(middle);
    if (headEnd == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view time = line.substr(headEnd + middle.size());
    Milliseconds::rep count = 0;
    const char* const timeEnd = time.data() + time.size();
    const auto result = std::from_chars(time.data(), timeEnd, count);
    const auto rest = static_cast<std::size_t>(timeEnd - result.ptr);
    if (result.ec != std::errc() || time.substr(time.size() - rest) != ending) {
        return std::nullopt;
    }
    return EndLine{line.substr(0, headEnd), Milliseconds(count)};
}

std::string_view nameBehindSeparators(std::string_view head) {
    std::size_t start = 0;
    for (const std::string_view separator : {"] ", "]: ", "| ", "\t"}) {
        const std::size_t found = head.rfind(separator);
        if (found != std::string_view::npos) {
            start = std::max(start, found + separator.size());
        }
    }
    return head.substr(start);
}

[[noreturn]] void refuse(const std::string& prefix, const std::string& reason) {
    throw std::invalid_argument("the prefix " + inQuotes(prefix) +
                                " is not a regular expression to use: " + reason);
}

std::regex compiled(const std::string& prefix) {
    // Without this, some standard libraries need time or stack without limit.
#ifdef __GLIBCXX__
    constexpr auto flags = std::regex::ECMAScript | std::regex_constants::__polynomial;
#else
    constexpr auto flags = std::regex::ECMAScript;
#endif
    std::string reason = "it is longer than " + std::to_string(longestPattern) + " bytes";
    try {
        if (prefix.size() <= longestPattern) {
            return std::regex(prefix, flags);
        }
    } catch (const std::regex_error& error) {
        reason = error.what();
    }
    refuse(prefix, reason);
}

// Finds the name in what stands before ": End".
class NameFinder {
public:
    explicit NameFinder(const std::string& prefix)
        : patternText(prefix),
          pattern(prefix.empty() ? std::nullopt : std::optional(compiled(prefix))) {}

    [[nodiscard]] std::optional<std::string_view> find(std::string_view head) const {
        const auto name = pattern ? behindPattern(head) : std::optional(nameBehindSeparators(head));
        return name ? std::optional(
                          name->substr(std::min(name->find_first_not_of(' '), name->size())))
                    : std::nullopt;
    }

private:
    [[nodiscard]] std::optional<std::string_view> behindPattern(std::string_view head) const {
        const std::string_view searched = head.substr(0, longestPrefix);
        std::match_results<std::string_view::const_iterator> match;
        try {
            if (!std::regex_search(searched.begin(), searched.end(), match, *pattern,
                                   std::regex_constants::match_continuous)) {
                return std::nullopt;
            }
        } catch (const std::regex_error& error) {
            refuse(patternText, error.what());
        }
        return head.substr(static_cast<std::size_t>(match.length(0)));
    }

    const std::string& patternText;
    std::optional<std::regex> pattern;
};

}  // namespace

TimingProfile importLog(std::istream& stream, const std::string& prefix) {
    const NameFinder finder(prefix);
    Input input(stream);
    TimingProfile profile;
    while (const auto line = takeLine(input)) {
        const auto end = parseEndLine(*line);
        const auto name = end ? finder.find(end->head) : std::nullopt;
        if (name && name->size() <= longestName) {
            profile.samples[std::string(*name)].push_back(end->time);
        }
    }
    return profile;
}

}  // namespace lapwing
