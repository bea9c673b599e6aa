#include "recording_format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>

using lapwing::Recording;
using lapwing::RecordingFileError;
using lapwing::RecordingLimits;

namespace {

using Samples = std::vector<Milliseconds>;

const std::string head =
    R"({"format": "lapwing-recordings", "version": 1, "unit": "ms", "recordings": [)";

const std::string example = head + R"(
  {"id": "9f1c", "recorded": "2026-11-21T14:40:00Z",
   "labels": {"machine": "bench-3"},
   "notes": {"Scan": "cold start"},
   "samples": {
    "Load": [-7],
    "Scan": [120, 118, 121]}},
  {"id": "a0", "recorded": "1969-12-31T23:59:59Z",
   "labels": {},
   "notes": {},
   "samples": {}}]}
)";

std::vector<Recording> parse(const std::string& text, const RecordingLimits& limits = {},
                             std::size_t atOnce = 100'000) {
    std::size_t position = 0;
    const auto read = [&](char* buffer, std::size_t size) {
        const std::size_t count = text.copy(buffer, std::min(size, atOnce), position);
        position += count;
        return count;
    };
    return lapwing::parseRecordings(read, "runs.json", limits);
}

std::string format(const std::vector<Recording>& recordings) {
    std::string text;
    lapwing::formatRecordings(recordings, [&](std::string_view bytes) { text += bytes; });
    return text;
}

std::string errorOf(const std::string& text, const RecordingLimits& limits = {},
                    std::size_t atOnce = 100'000) {
    try {
        parse(text, limits, atOnce);
    } catch (const RecordingFileError& error) {
        return error.what();
    }
    return "accepted";
}

// The example with one text in the place of another.
std::string with(const std::string& from, const std::string& to) {
    std::string text = example;
    return text.replace(text.find(from), from.size(), to);
}

Recording recordingOf(const std::string& name, const Samples& samples) {
    Recording recording;
    recording.id = "1";
    recording.profile.samples[name] = samples;
    return recording;
}

// Of the second of two recordings, with this id.
std::string errorOfWriting(const std::string& id) {
    std::vector<Recording> recordings(2, recordingOf("a", {Milliseconds(1)}));
    recordings[1].id = id;
    bool wrote = false;
    try {
        lapwing::formatRecordings(recordings, [&](std::string_view) { wrote = true; });
    } catch (const std::invalid_argument& error) {
        return wrote ? "wrote before it threw" : error.what();
    }
    return "accepted";
}

struct Refusal {
    std::string text;
    std::string error;
};

}  // namespace

TEST(RecordingFormat, RoundTripsByteForByte) {
    EXPECT_EQ(parse(example).at(0).profile.samples.at("Scan"),
              (Samples{Milliseconds(120), Milliseconds(118), Milliseconds(121)}));
    EXPECT_EQ(format(parse(example, {}, 1)), example);
    EXPECT_EQ(format({}), head + "]}\n");
    EXPECT_TRUE(parse(format({})).empty());
}

TEST(RecordingFormat, TakesMembersInAnyOrder) {
    const std::string text = R"({"recordings": [{"samples": {"a": [1]}, "notes": {}, "id": "1",
        "labels": {}, "recorded": "2000-02-29T00:00:00Z"}], "unit": "ms", "version": 1,
        "format": "lapwing-recordings"})";
    EXPECT_EQ(parse(text).at(0).profile.samples.at("a"), Samples{Milliseconds(1)});
}

TEST(RecordingFormat, RefusesWhatItDoesNotAllow) {
    const std::vector<Refusal> refusals = {
        {"", "1:1: the file is empty"},
        {"[]", "1:1: the file must be an object, not an array"},
        {"7", "1:2: the file must be an object, not a whole number"},
        {"{,", "1:2: not JSON: unexpected ','; expected string literal"},
        {example.substr(0, 145), "3:16: the file is cut short"},
        {example + "{}", "12:1: text after the end"},
        {example + std::string(1, '\0') + "{}", "12:1: text after the end"},
        {with("bench", std::string(1, '\0')), "3:27: not JSON: a byte of zero"},
        {with("bench", "\xED\xA0\x80"), "3:28: not JSON: invalid string: ill-formed UTF-8 byte"},
        {with("[-7]", "[-7,]"), "6:17: not JSON: unexpected ']'"},
        {with("lapwing-recordings", "other"),
         R"(1:18: format must be "lapwing-recordings", not "other")"},
        {with("1", "2"), "1:46: version must be 1, not 2, which is newer"},
        {with("1", "\"1\""), "1:47: version must be a whole number of at most 64 bits, not text"},
        {with("\"ms\"", "\"s\""), R"(1:58: unit must be "ms", not "s")"},
        {with(R"("unit": "ms", )", ""), "11:19: \"unit\" is missing"},
        {with(",\n   \"labels\": {}", ""), "10:17: \"labels\" is missing"},
        {with("\"labels\"", R"("lab\u000als")"),
         R"(3:16: unknown member "lab\nls"; known are id, recorded)"},
        {with("\"notes\"", "\"labels\""), "4:11: \"labels\" is there twice"},
        {with("\"bench-3\"", R"("", "m\u0061chine": "")"), "3:43: \"machine\" is there twice"},
        {with("\"cold start\"", R"("", "Scan": "")"), "4:31: \"Scan\" is there twice"},
        {with("Load", "Scan"), "7:10: \"Scan\" is there twice"},
        {with("a0", "9f1c"), "8:15: the id \"9f1c\" is there twice"},
        {with("a0", ""), "8:11: the id is empty"},
        {with("a0", R"(a\u007f)"), "8:18: the id has control characters"},
        {with("\"a0\"", "null"), "8:13: id must be text, not null"},
        {with("[-7]", "[]"), "6:14: a name must have samples, or be left out"},
        {with("[-7]", "7"), "6:14: the samples of a name must be an array, not a whole number"},
        {with("-7", "-7.0"), "6:18: a sample must be a whole number of at most 64 bits, not -7.0"},
        {with("-7", "\"7\""), "6:16: a sample must be a whole number of at most 64 bits, not text"},
        {with("-7", "9223372036854775808"),
         "6:33: a sample must be a whole number of at most 64 bits, not 9223372036854775808"},
        {with("-7", "-9223372036854775809"),
         "6:34: a sample must be a whole number of at most 64 bits, not -9223372036854775809"},
        {with("-7", "1" + std::string(400, '0')),
         "6:415: a sample must be a whole number of at most 64 bits, not 1000"},
        {with("[-7]", "[[7]]"),
         "6:14: a sample must be a whole number of at most 64 bits, not an array"},
        {with("\"bench-3\"", "{}"), "3:26: a label must be text, not an object"},
        {with("\"cold start\"", "[]"), "4:22: a note must be text, not an array"},
        {with("Load", "hex:4c"), "6:12: hex: stands where plain text would do"},
        {with("bench-3", "hex:FF"), "3:33: hex: must be followed by lowercase hexadecimal digits"},
        {with("2026-11-21T", "2026-11-21 "), "2:51: recorded must be a time such as"},
        {with("2026-11-21", "2025-02-29"), "2:51: recorded must be a time such as"},
        {with("14:40:00", "14:40:60"), "2:51: recorded must be a time such as"},
    };
    for (const Refusal& refusal : refusals) {
        const std::string expected = "runs.json:" + refusal.error;
        EXPECT_EQ(errorOf(refusal.text).substr(0, expected.size()), expected) << refusal.text;
        EXPECT_EQ(errorOf(refusal.text, {}, 1), errorOf(refusal.text)) << refusal.text;
    }
}

TEST(RecordingFormat, RefusesMoreThanTheLimits) {
    RecordingLimits limits{example.size(), 2, 2, 18, 4};
    EXPECT_EQ(errorOf(example, limits), "accepted");
    limits.bytes = 100;
    EXPECT_EQ(errorOf(example, limits), "runs.json:2:24: the file is larger than 100 bytes");
    limits = {example.size(), 1, 2, 18, 4};
    EXPECT_EQ(errorOf(example, limits), "runs.json:8:3: more than 1 recordings");
    limits = {example.size(), 2, 1, 18, 4};
    EXPECT_EQ(errorOf(example, limits), "runs.json:7:10: more than 1 names in a recording");
    limits = {1000, 2, 2, 9, 4};
    EXPECT_EQ(errorOf(example, limits), "runs.json:4:33: more than 9 bytes in a text");
    EXPECT_EQ(errorOf(with("9f1c", "0123456789"), limits),
              "runs.json:2:21: more than 9 bytes in a text");
    limits = {example.size(), 2, 2, 18, 3};
    EXPECT_EQ(errorOf(example, limits), "runs.json:7:27: more than 3 samples");
    const std::string gap(3U << 20U, '\n');
    EXPECT_NE(errorOf("{" + gap).find("bytes without a value"), std::string::npos);
}

TEST(RecordingFormat, KeepsAnyBytesInSortedOrder) {
    Recording recording;
    recording.id = "\"\\ \xC3\xA4 hex:";
    const std::vector<std::string> names = {"",
                                            std::string("a\0b", 3),
                                            "\"\\/\n\x1F\x7F",
                                            "hex:",
                                            "\xFF",
                                            "\xF4\x8F\xBF\xBF",
                                            std::string(64U << 10U, '\xE4')};
    for (const std::string& name : names) {
        recording.labels[name] = name;
        recording.profile.notes[name] = name;
        recording.profile.samples[name] = {Milliseconds::min(), Milliseconds::max()};
    }
    recording.profile.samples["without samples"] = {};
    const std::string text = format({recording});
    EXPECT_EQ(lapwing::merged(parse(text), {recording}).size(), 1U);
    EXPECT_EQ(format(parse(text)), text);
    EXPECT_LT(text.find("\n    \"\": ["), text.find("\n    \"\\\""));
    EXPECT_LT(text.find("\n    \"a\\u0000b\": ["), text.find("\n    \"hex:6865783a\": ["));
    EXPECT_LT(text.find("\n    \"hex:68"), text.find("\n    \"\xF4"));
}

TEST(RecordingFormat, WrapsAtAHundredColumns) {
    Recording recording = recordingOf("Scan", Samples(33, Milliseconds(1234)));
    recording.labels["a"] = std::string(34, 'a');
    recording.labels["b"] = std::string(35, 'b');
    recording.labels["c"] = "";
    const std::string a = "\n   \"labels\": {\"a\": \"" + std::string(34, 'a') + "\",";
    const std::string b = R"("b": ")" + std::string(35, 'b');
    const std::string line = "1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, ";
    EXPECT_EQ(format({recording}), head + R"(
  {"id": "1", "recorded": "1970-01-01T00:00:00Z",)" +
                                       a + " " + b + R"(",
     "c": ""},
   "notes": {},
   "samples": {
    "Scan": [)" + line + R"(1234, 1234, 1234,
      )" + line + R"(1234, 1234, 1234, 1234,
      1234, 1234, 1234, 1234]}}]}
)");
    recording.labels["b"] += "b";
    EXPECT_NE(format({recording}).find(a + "\n     " + b + "b\", \"c\": \"\"},\n"),
              std::string::npos);
}

TEST(RecordingFormat, DoesNotDependOnTheSizeOfItsBlocks) {
    const std::string text = format({recordingOf("Scan", Samples(400'000, Milliseconds(1234)))});
    EXPECT_EQ(format(parse(text)), text);
    std::size_t longest = 0;
    std::size_t lineStart = 0;
    for (std::size_t end = 0; (end = text.find('\n', lineStart)) != std::string::npos;
         lineStart = end + 1) {
        longest = std::max(longest, end - lineStart);
    }
    EXPECT_LE(longest, 100U);
}

TEST(RecordingFormat, RefusesToWriteWhatItCannotRead) {
    EXPECT_EQ(errorOfWriting("1"), R"(recording "1": the id is there twice)");
    EXPECT_EQ(errorOfWriting(""), R"(recording "": the id is empty)");
    EXPECT_EQ(errorOfWriting("a\nb"), R"(recording "a\nb": the id has control characters)");
    EXPECT_EQ(errorOfWriting("\xFF"), "recording \"\xEF\xBF\xBD\": the id is not UTF-8");
}

TEST(RecordingFormat, StoresTimesAsWholeSecondsOfTheCalendar) {
    const std::vector<std::pair<std::int64_t, std::string>> times = {
        {-1, "1969-12-31T23:59:59Z"},
        {1999, "1970-01-01T00:00:01Z"},
        {951782400000, "2000-02-29T00:00:00Z"},
        {951868799999, "2000-02-29T23:59:59Z"},
        {4107542400000, "2100-03-01T00:00:00Z"},
        {-8520336000000, "1700-01-01T00:00:00Z"}};
    for (const auto& [milliseconds, text] : times) {
        Recording recording = recordingOf("a", {Milliseconds(1)});
        recording.recorded += Milliseconds(milliseconds);
        const std::string file = format({recording});
        EXPECT_NE(file.find("\"recorded\": \"" + text + '"'), std::string::npos) << file;
        EXPECT_EQ(lapwing::merged(parse(file), {recording}).size(), 1U) << file;
    }
}
