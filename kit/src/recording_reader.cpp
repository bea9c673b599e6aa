#include <lapwing/kit/file_text.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "json_input.h"
#include "recording_format.h"
#include "utc_text.h"

namespace lapwing {

RecordingFileError::RecordingFileError(const std::string& file, std::size_t line,
                                       std::size_t column, const std::string& reason)
    : std::runtime_error(TextPosition{line, column}.in(file) + ": " + reason),
      lineNumber(line),
      columnNumber(column) {}

namespace {

using Json = nlohmann::json;

// Holds one buffer of the file, and knows where in the file that is.
class FileInput {
public:
    FileInput(const ReadBytes& readBytes, const std::string& fileName,
              const RecordingLimits& limits)
        : read(readBytes),
          file(fileName),
          limit(limits.bytes),
          bytesLeft(limits.bytes),
          longestGap(gapFor(limits.bytesPerText)) {
        refill();
    }

    bool atEnd() { return next == end && !refill(); }
    [[nodiscard]] char current() const { return *next; }
    void advance() { ++next; }
    void endGap() { gap = 0; }

    // Whether the parser has asked for more than there is.
    [[nodiscard]] bool isExhausted() const { return exhausted; }
    [[nodiscard]] bool isEmpty() const { return exhausted && bytesLeft == limit; }
    [[nodiscard]] char lastRead() const { return next == buffer.data() ? '\0' : next[-1]; }

    // At the byte that was read last, or at the end of the file.
    [[noreturn]] void refuse(const std::string& reason) const {
        refuseAt(exhausted ? next : next - 1, reason);
    }

private:
    // The parser keeps what it has read since the last value. A text takes at most twelve bytes for
    // each of its own: two hexadecimal digits, each of them escaped.
    static std::uint64_t gapFor(std::uint64_t bytesPerText) {
        return (1ULL << 20U) + 12 * std::min<std::uint64_t>(bytesPerText, 1ULL << 40U);
    }

    bool refill() {
        gap += bufferedSize();
        if (gap > longestGap) {
            refuse("more than " + std::to_string(longestGap) + " bytes without a value");
        }
        start.moveOver({buffer.data(), bufferedSize()});
        next = end = buffer.data();
        const std::size_t wanted =
            bytesLeft < buffer.size() ? static_cast<std::size_t>(bytesLeft) + 1 : buffer.size();
        const std::size_t size = exhausted ? 0 : read(buffer.data(), wanted);
        end += size;
        exhausted = size == 0;
        if (size > bytesLeft) {
            refuseAt(end - 1, "the file is larger than " + std::to_string(limit) + " bytes");
        }
        bytesLeft -= size;
        return !exhausted;
    }

    [[nodiscard]] std::size_t bufferedSize() const {
        return static_cast<std::size_t>(end - buffer.data());
    }

    [[noreturn]] void refuseAt(const char* where, const std::string& reason) const {
        TextPosition position = start;
        position.moveOver({buffer.data(), static_cast<std::size_t>(where - buffer.data())});
        throw RecordingFileError(file, position.line, position.column, reason);
    }

    const ReadBytes& read;
    const std::string& file;
    std::uint64_t limit;
    std::uint64_t bytesLeft;
    std::uint64_t longestGap;
    std::uint64_t gap = 0;
    std::vector<char> buffer = std::vector<char>(64U << 10U);
    const char* next = buffer.data();
    const char* end = buffer.data();
    TextPosition start;
    bool exhausted = false;
};

enum class Form { Text, WholeNumber, Object, Array };

constexpr std::array<const char*, 4> formNames{"text", "a whole number", "an object", "an array"};

const char* nameOf(Form form) {
    return formNames[static_cast<std::size_t>(form)];
}

// Where the parser is: in one of the format's objects and arrays.
enum class Place { File, Recordings, Recording, Labels, Notes, Samples, Durations, End };

// Takes the events of the parser. The parser sees to the grammar: a value stands at the start,
// behind a key of an object, or in an array.
class RecordingHandler {
public:
    RecordingHandler(FileInput& fileInput, const RecordingLimits& recordingLimits,
                     const Counted& countedBefore)
        : input(fileInput), limits(recordingLimits), counted(countedBefore) {}

    std::vector<Recording> takeRecordings() { return std::move(recordings); }

    bool null() { refuseValue("null"); }
    bool boolean(bool value) { refuseValue(value ? "true" : "false"); }
    bool number_integer(std::int64_t value);
    bool number_unsigned(std::uint64_t value);
    bool number_float(double /*value*/, const std::string& digits) { refuseNumber(digits); }
    bool string(const std::string& value);
    bool binary(const Json::binary_t& /*value*/) { refuseValue("bytes"); }
    bool start_object(std::size_t /*size*/) { return open(Form::Object); }
    bool start_array(std::size_t /*size*/) { return open(Form::Array); }
    bool key(const std::string& name);
    bool end_object() { return close(); }
    bool end_array() { return close(); }
    bool parse_error(std::size_t position, const std::string& token, const Json::exception& error);

private:
    using TakeText = void (RecordingHandler::*)(const std::string& text);
    using Step = void (RecordingHandler::*)();

    struct Value {
        const char* name;
        Form form;
        Place opens;
        TakeText take;
        const char* onlyText;
    };

    // The entry is the value behind any key or in an array.
    struct Rules {
        Place parent;
        const Value* entry;
        TakeText onKey;
        Step onOpen;
        Step onClose;
    };

    struct Members {
        const Value* first;
        std::size_t count;
        std::bitset<8> seen;
    };

    static const std::array<Value, 4> fileMembers;
    static const std::array<Value, 5> recordingMembers;
    static const Value fileValue;
    static const Value recordingValue;
    static const Value labelValue;
    static const Value noteValue;
    static const Value samplesValue;
    static const Value durationValue;
    static const std::array<Rules, 8> rulesOfPlaces;

    [[noreturn]] void refuse(const std::string& reason) const { input.refuse(reason); }
    [[noreturn]] void refuseValue(const std::string& found) const;
    [[noreturn]] void refuseNumber(const std::string& digits) const;
    void expect(Form form);
    void limit(std::size_t count, std::size_t maximum, const char* what) const;

    [[nodiscard]] const Rules& rules() const {
        return rulesOfPlaces[static_cast<std::size_t>(place)];
    }
    bool open(Form form);
    bool close();
    void enter(Place newPlace);
    void run(Step step);

    void chooseMember(Members& members, const std::string& name);
    static std::string namesOf(const Members& members);
    void requireAll(const Members& members) const;
    void chooseFileMember(const std::string& name) { chooseMember(ofFile, name); }
    void chooseRecordingMember(const std::string& name) { chooseMember(ofRecording, name); }
    void requireFileMembers() { requireAll(ofFile); }
    void requireRecordingMembers() { requireAll(ofRecording); }

    template <class Map>
    typename Map::mapped_type& addEntry(Map& entries, const std::string& name);
    void addLabel(const std::string& name) { text = &addEntry(recording().labels, name); }
    void addNote(const std::string& name) { text = &addEntry(recording().profile.notes, name); }
    void addSamples(const std::string& name);
    void requireDurations();

    [[nodiscard]] Recording& recording() { return recordings.back(); }
    void startRecording();
    void takeId(const std::string& id);
    void takeTime(const std::string& time);
    void takeText(const std::string& fileText) { *text = decoded(fileText); }
    void takeDuration(std::int64_t duration);
    void takeVersion(std::int64_t version) const;
    [[nodiscard]] std::string decoded(const std::string& fileText) const;

    FileInput& input;
    const RecordingLimits& limits;
    Counted counted;
    std::vector<Recording> recordings;
    std::set<std::string> ids;
    Place place = Place::End;
    const Value* next = &fileValue;
    Members ofFile{fileMembers.data(), fileMembers.size(), {}};
    Members ofRecording{recordingMembers.data(), recordingMembers.size(), {}};
    std::string* text = nullptr;
    std::vector<Milliseconds>* durations = nullptr;
};

using Handler = RecordingHandler;

const std::array<Handler::Value, 4> Handler::fileMembers{
    {{"format", Form::Text, Place::End, nullptr, "lapwing-recordings"},
     {"version", Form::WholeNumber, Place::End, nullptr, nullptr},
     {"unit", Form::Text, Place::End, nullptr, "ms"},
     {"recordings", Form::Array, Place::Recordings, nullptr, nullptr}}};

const std::array<Handler::Value, 5> Handler::recordingMembers{
    {{"id", Form::Text, Place::End, &Handler::takeId, nullptr},
     {"recorded", Form::Text, Place::End, &Handler::takeTime, nullptr},
     {"labels", Form::Object, Place::Labels, nullptr, nullptr},
     {"notes", Form::Object, Place::Notes, nullptr, nullptr},
     {"samples", Form::Object, Place::Samples, nullptr, nullptr}}};

const Handler::Value Handler::fileValue{"the file", Form::Object, Place::File, nullptr, nullptr};
const Handler::Value Handler::recordingValue{"a recording", Form::Object, Place::Recording, nullptr,
                                             nullptr};
const Handler::Value Handler::labelValue{"a label", Form::Text, Place::End, &Handler::takeText,
                                         nullptr};
const Handler::Value Handler::noteValue{"a note", Form::Text, Place::End, &Handler::takeText,
                                        nullptr};
const Handler::Value Handler::samplesValue{"the samples of a name", Form::Array, Place::Durations,
                                           nullptr, nullptr};
const Handler::Value Handler::durationValue{"a sample", Form::WholeNumber, Place::End, nullptr,
                                            nullptr};

// In the order of Place.
const std::array<Handler::Rules, 8> Handler::rulesOfPlaces{
    {{Place::End, nullptr, &Handler::chooseFileMember, nullptr, &Handler::requireFileMembers},
     {Place::File, &recordingValue, nullptr, nullptr, nullptr},
     {Place::Recordings, nullptr, &Handler::chooseRecordingMember, &Handler::startRecording,
      &Handler::requireRecordingMembers},
     {Place::Recording, &labelValue, &Handler::addLabel, nullptr, nullptr},
     {Place::Recording, &noteValue, &Handler::addNote, nullptr, nullptr},
     {Place::Recording, &samplesValue, &Handler::addSamples, nullptr, nullptr},
     {Place::Samples, &durationValue, nullptr, nullptr, &Handler::requireDurations},
     {}}};

bool Handler::number_integer(std::int64_t value) {
    expect(Form::WholeNumber);
    if (place == Place::Durations) {
        takeDuration(value);
    } else {
        takeVersion(value);
    }
    return true;
}

bool Handler::number_unsigned(std::uint64_t value) {
    constexpr auto maximum = std::numeric_limits<std::int64_t>::max();
    if (value > static_cast<std::uint64_t>(maximum)) {
        refuseNumber(std::to_string(value));
    }
    return number_integer(static_cast<std::int64_t>(value));
}

bool Handler::string(const std::string& value) {
    expect(Form::Text);
    if (next->onlyText == nullptr) {
        (this->*next->take)(value);
    } else if (value != next->onlyText) {
        refuse(next->name + (" must be " + inQuotes(next->onlyText)) + ", not " + inQuotes(value));
    }
    return true;
}

bool Handler::key(const std::string& name) {
    input.endGap();
    (this->*rules().onKey)(name);
    return true;
}

bool Handler::parse_error(std::size_t /*position*/, const std::string& token,
                          const Json::exception& error) {
    constexpr int numberOverflow = 406;
    if (error.id == numberOverflow) {
        refuseNumber(token);
    }
    if (place == Place::End && next == nullptr) {
        refuse("text after the end");
    }
    if (input.isExhausted()) {
        refuse(input.isEmpty() ? "the file is empty" : "the file is cut short");
    }
    refuse(input.lastRead() == '\0' ? "not JSON: a byte of zero" : reasonOf(error.what()));
}

void Handler::refuseValue(const std::string& found) const {
    refuse(next->name + std::string(" must be ") + nameOf(next->form) +
           (next->form == Form::WholeNumber ? " of at most 64 bits" : "") + ", not " + found);
}

void Handler::refuseNumber(const std::string& digits) const {
    constexpr std::size_t maximum = 40;
    refuseValue(digits.size() > maximum ? digits.substr(0, maximum) + "..." : digits);
}

void Handler::expect(Form form) {
    input.endGap();
    if (next->form != form) {
        refuseValue(nameOf(form));
    }
}

void Handler::limit(std::size_t count, std::size_t maximum, const char* what) const {
    if (count > maximum) {
        refuse("more than " + std::to_string(maximum) + ' ' + what);
    }
}

bool Handler::open(Form form) {
    expect(form);
    enter(next->opens);
    run(rules().onOpen);
    return true;
}

bool Handler::close() {
    run(rules().onClose);
    enter(rules().parent);
    return true;
}

void Handler::enter(Place newPlace) {
    place = newPlace;
    next = rules().entry;
}

void Handler::run(Step step) {
    if (step != nullptr) {
        (this->*step)();
    }
}

void Handler::chooseMember(Members& members, const std::string& name) {
    const Value* const end = members.first + members.count;
    const Value* const member =
        std::find_if(members.first, end, [&](const Value& value) { return name == value.name; });
    if (member == end) {
        refuse("unknown member " + inQuotes(name) + "; known are " + namesOf(members));
    }
    const auto index = static_cast<std::size_t>(member - members.first);
    if (members.seen[index]) {
        refuse(inQuotes(name) + " is there twice");
    }
    members.seen[index] = true;
    next = member;
}

std::string Handler::namesOf(const Members& members) {
    std::string names = members.first->name;
    for (std::size_t i = 1; i < members.count; ++i) {
        names += std::string(", ") + members.first[i].name;
    }
    return names;
}

void Handler::requireAll(const Members& members) const {
    for (std::size_t i = 0; i < members.count; ++i) {
        if (!members.seen[i]) {
            refuse(inQuotes(members.first[i].name) + " is missing");
        }
    }
}

template <class Map>
typename Map::mapped_type& Handler::addEntry(Map& entries, const std::string& name) {
    const auto [entry, isNew] = entries.try_emplace(decoded(name));
    if (!isNew) {
        refuse(inQuotes(name) + " is there twice");
    }
    limit(entries.size(), limits.namesPerRecording, "names in a recording");
    return entry->second;
}

void Handler::addSamples(const std::string& name) {
    durations = &addEntry(recording().profile.samples, name);
}

void Handler::requireDurations() {
    if (durations->empty()) {
        refuse("a name must have samples, or be left out");
    }
    durations->shrink_to_fit();
}

void Handler::startRecording() {
    recordings.emplace_back();
    limit(counted.recordings + recordings.size(), limits.recordings, "recordings");
    ofRecording.seen.reset();
}

void Handler::takeId(const std::string& id) {
    limit(id.size(), limits.bytesPerText, "bytes in a text");
    if (const std::string problem = problemOfId(id); !problem.empty()) {
        refuse(problem);
    }
    if (!ids.insert(id).second) {
        refuse("the id " + inQuotes(id) + " is there twice");
    }
    recording().id = id;
}

void Handler::takeTime(const std::string& time) {
    using Clock = std::chrono::system_clock;
    const auto seconds = fromUtcText(time);
    if (!seconds) {
        refuse("recorded must be a time such as \"2026-11-21T14:40:00Z\", not " + inQuotes(time));
    }
    if (*seconds < std::chrono::ceil<std::chrono::seconds>(Clock::time_point::min()) ||
        *seconds > std::chrono::floor<std::chrono::seconds>(Clock::time_point::max())) {
        refuse("this system's clock cannot hold the time " + inQuotes(time));
    }
    recording().recorded = *seconds;
}

void Handler::takeDuration(std::int64_t duration) {
    limit(++counted.samples, limits.samples, "samples");
    durations->emplace_back(duration);
}

void Handler::takeVersion(std::int64_t version) const {
    if (version != 1) {
        refuse("version must be 1, not " + std::to_string(version) +
               (version > 1 ? ", which is newer" : ""));
    }
}

std::string Handler::decoded(const std::string& fileText) const {
    std::string bytes;
    try {
        bytes = fromFileText(fileText);
    } catch (const std::invalid_argument& error) {
        refuse(error.what());
    }
    limit(bytes.size(), limits.bytesPerText, "bytes in a text");
    return bytes;
}

}  // namespace

std::vector<Recording> parseRecordings(const ReadBytes& read, const std::string& file,
                                       const RecordingLimits& limits, const Counted& counted) {
    FileInput input(read, file, limits);
    RecordingHandler handler(input, limits, counted);
    Json::sax_parse(InputIterator(input), InputIterator<FileInput>(), &handler);
    // The parser takes a zero for the end.
    if (!input.isExhausted()) {
        input.refuse("text after the end");
    }
    return handler.takeRecordings();
}

}  // namespace lapwing
