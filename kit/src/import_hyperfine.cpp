#include <lapwing/kit/import.h>

#include "import_input.h"

#include <chrono>
#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace lapwing {
namespace {

constexpr std::uint64_t longestJson = 32ULL << 20U;

// What the parser says of an error, without what concerns only the parser.
std::string reasonOf(const std::string& message) {
    constexpr std::string_view separator = " - ";
    const std::size_t found = message.find(separator);
    const std::size_t start =
        found == std::string::npos ? message.find(' ') + 1 : found + separator.size();
    return message.substr(start, message.find("; last read: ") - start);
}

class JsonReader {
public:
    JsonReader(std::istream& stream, const std::string& name) : input(stream), file(name) {}

    TimingProfile read();

private:
    using Json = nlohmann::json;
    using Event = Json::parse_event_t;

    // Without a reader, it stands for the end of any.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = char;
        using difference_type = std::ptrdiff_t;
        using pointer = const char*;
        using reference = char;

        Iterator() = default;
        explicit Iterator(JsonReader& jsonReader) : reader(&jsonReader) {}

        char operator*() const { return reader->input.current(); }
        Iterator& operator++() {
            reader->advance();
            return *this;
        }
        friend bool operator==(const Iterator& iterator, const Iterator& /*end*/) {
            return iterator.atEnd();
        }
        friend bool operator!=(const Iterator& iterator, const Iterator& end) {
            return !(iterator == end);
        }

    private:
        [[nodiscard]] bool atEnd() const { return reader->input.atEnd(); }

        JsonReader* reader = nullptr;
    };

    void advance();
    void take(int depth, Event event, const Json& value);
    void takeResult(const Json& result);
    [[nodiscard]] Milliseconds timeOf(const Json& seconds) const;
    [[noreturn]] void fail(const std::string& reason) const { refuse(file, input.line(), reason); }

    Input input;
    const std::string& file;
    TimingProfile profile;
    std::string member;  // of the outermost object
};

void JsonReader::advance() {
    if (input.current() == '\0') {
        fail("not JSON: a byte of zero");
    }
    input.advance();
    if (input.position() > longestJson) {
        fail("the file is larger than " + std::to_string(longestJson) + " bytes");
    }
}

TimingProfile JsonReader::read() {
    const auto onEvent = [this](int depth, Event event, const Json& value) {
        take(depth, event, value);
        return true;
    };
    Json whole;
    try {
        whole = Json::parse(Iterator(*this), Iterator(), onEvent);
    } catch (const Json::exception& error) {
        fail("not JSON: " + reasonOf(error.what()));
    }
    if (!whole.is_object() || !whole.contains("results") || !whole["results"].is_array()) {
        fail("there is no list of results");
    }
    return std::move(profile);
}

void JsonReader::take(int depth, Event event, const Json& value) {
    constexpr int deepest = 16;
    if (depth > deepest) {
        fail("nested too deeply");
    }
    if (depth == 1 && event == Event::key) {
        member = value.get<std::string>();
    } else if (depth == 2 && event == Event::object_end && member == "results") {
        takeResult(value);
    }
}

void JsonReader::takeResult(const Json& result) {
    const auto command = result.find("command");
    if (command == result.end() || !command->is_string()) {
        fail("a result has no command");
    }
    const auto times = result.find("times");
    if (times == result.end() || !times->is_array()) {
        fail("a result has no list of times");
    }
    std::vector<Milliseconds> samples;
    for (const Json& time : *times) {
        samples.push_back(timeOf(time));
    }
    if (!samples.empty()) {
        auto& all = profile.samples[command->get<std::string>()];
        all.insert(all.end(), samples.begin(), samples.end());
    }
}

Milliseconds JsonReader::timeOf(const Json& seconds) const {
    constexpr double most = 1e9;
    const double count = seconds.is_number() ? seconds.get<double>() : -1;
    if (count < 0 || count > most) {
        fail("a time must be a number of seconds from 0 to 1000000000");
    }
    // 1.001 is a little less than that as a double.
    const std::chrono::nanoseconds time(std::llround(count * 1e9));
    return std::chrono::duration_cast<Milliseconds>(time);
}

}  // namespace

TimingProfile importHyperfine(std::istream& stream, const std::string& file) {
    return JsonReader(stream, file).read();
}

}  // namespace lapwing
