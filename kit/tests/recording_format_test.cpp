#include "support.h"

#include <gtest/gtest.h>

#include <utility>

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

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

const std::string wrapped = head + R"(
  {"id": "1", "recorded": "2000-02-29T23:59:59Z",
   "labels": {"a": "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", "b": "bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb",
     "c": ""},
   "notes": {"a": "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
     "b": "bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb", "c": ""},
   "samples": {
    "Scan": [1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234,
      1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 123456789,
      1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234, 1234,
      1234567890]}}]}
)";

const std::string hostile = head + R"(
  {"id": "\"\\ ä hex:", "recorded": "1700-03-01T00:00:00Z",
   "labels": {"": "", "\"\\/\n\u001f": "\"\\/\n\u001f", "a\u0000b": "a\u0000b"},
   "notes": {"hex:6865783a": "hex:c080", "é": ""},
   "samples": {
    "": [-9223372036854775808, 9223372036854775807],
    "\\": [0],
    "hex:ff": [0],
    "é": [0]}}]}
)";

// The example with one text in the place of another.
std::string with(const std::string& from, const std::string& to) {
    std::string text = example;
    return text.replace(text.find(from), from.size(), to);
}

std::string errorOf(const std::string& text, const RecordingLimits& limits = {}) {
    return messageOf<RecordingFileError>([&] { return parse(text, limits); });
}

TEST(RecordingFormat, RoundTripsByteForByte) {
    std::string large = wrapped;
    const std::size_t line = wrapped.find("      1234");
    for (int copy = 0; copy < 3000; ++copy) {
        large.insert(line, wrapped, line, 101);
    }
    for (const std::string& text : {head + "]}\n", example, wrapped, hostile, large}) {
        EXPECT_EQ(format(parse(text)), text);
        EXPECT_EQ(format(parseInParts(text, 1)), text);
    }
}

TEST(RecordingFormat, HoldsRecordings) {
    const std::vector<Recording> recordings = parse(example);
    EXPECT_EQ(idsOf(recordings), "9f1c a0 ");
    EXPECT_EQ(recordings[0].labels.at("machine"), "bench-3");
    EXPECT_EQ(recordings[0].profile.notes.at("Scan"), "cold start");
    EXPECT_EQ(recordings[0].profile.samples.at("Scan"), (Durations{120ms, 118ms, 121ms}));
    EXPECT_EQ(recordings[0].recorded.time_since_epoch(), 1'795'272'000s);
    EXPECT_EQ(recordings[1].recorded.time_since_epoch(), -1s);
    EXPECT_EQ(parse(hostile).at(0).profile.notes.at("hex:"), "\xC0\x80");

    std::vector<Recording> equivalent = recordings;
    equivalent[1].recorded += 999ms;
    equivalent[1].profile.samples["without samples"] = {};
    EXPECT_EQ(format(equivalent), example);
    const std::string otherOrder = R"("notes": {}, "labels": {})";
    EXPECT_EQ(format(parse(with("\"labels\": {},\n   \"notes\": {}", otherOrder))), example);
}

TEST(RecordingFormat, RefusesWhatItDoesNotAllow) {
    const std::string badSample = "a sample must be a whole number of at most 64 bits, not ";
    const std::string badTime = "2:51: recorded must be a time such as \"2026-11-21T14:40:00Z\"";
    const std::pair<std::string, std::string> refusals[] = {
        {"", "1:1: the file is empty"},
        {example.substr(0, 145), "3:16: the file is cut short"},
        {example + "x", "12:1: text after the end"},
        {example + "tru", "12:4: text after the end"},
        {example + std::string(1, '\0') + "{}", "12:1: text after the end"},
        {with("bench", std::string(1, '\0')), "3:27: not JSON: a byte of zero"},
        {with("bench", "\xED\xA0\x80"), "3:28: not JSON: invalid string: ill-formed UTF-8 byte"},
        {with("[-7]", "[-7,]"), "6:17: not JSON: unexpected ']'"},
        {with("lapwing-recordings", "other"),
         R"(1:18: format must be "lapwing-recordings", not "other")"},
        {with("1", "2"), "1:46: version must be 1, not 2, which is newer"},
        {with("\"ms\"", "\"s\""), R"(1:58: unit must be "ms", not "s")"},
        {with(R"("unit": "ms", )", ""), "11:19: \"unit\" is missing"},
        {with(",\n   \"labels\": {}", ""), "10:17: \"labels\" is missing"},
        {with("\"labels\"", R"("lab\u000als")"),
         R"(3:16: unknown member "lab\nls"; known are id, recorded, labels, notes, samples)"},
        {with("\"unit\"", R"("\u0066ormat")"), "1:60: \"format\" is there twice"},
        {with("\"bench-3\"", R"("", "m\u0061chine": "")"), "3:43: \"machine\" is there twice"},
        {with("Load", "Scan"), "7:10: \"Scan\" is there twice"},
        {with("a0", "9f1c"), "8:15: the id \"9f1c\" is there twice"},
        {with("a0", ""), "8:11: the id is empty"},
        {with("a0", R"(a\u007f)"), "8:18: the id has control characters"},
        {with("\"a0\"", "null"), "8:13: id must be text, not null"},
        {with("[-7]", "[]"), "6:14: a name must have samples, or be left out"},
        {with("[-7]", "7"), "6:14: the samples of a name must be an array, not a whole number"},
        {with("-7", "-7.0"), "6:18: " + badSample + "-7.0"},
        {with("-7", "\"7\""), "6:16: " + badSample + "text"},
        {with("-7", "9223372036854775808"), "6:33: " + badSample + "9223372036854775808"},
        {with("-7", "1" + std::string(400, '0')), "6:415: " + badSample + "1000"},
        {with("\"bench-3\"", "{}"), "3:26: a label must be text, not an object"},
        {with("\"cold start\"", "[]"), "4:22: a note must be text, not an array"},
        {with("Load", "hex:4c"), "6:12: hex: stands where plain text would do: L"},
        {with("2026-11-21T", "2026-11-21 "), badTime},
        {with("2026-11-21", "2025-02-29"), badTime},
    };
    for (const auto& [text, error] : refusals) {
        const std::string found = errorOf(text);
        EXPECT_EQ(found.substr(0, 10 + error.size()), "runs.json:" + error) << text;
        const auto parseByByte = [&bytes = text] { return parseInParts(bytes, 1); };
        EXPECT_EQ(messageOf<RecordingFileError>(parseByByte), found);
    }
}

TEST(RecordingFormat, RefusesMoreThanTheLimits) {
    const std::uint64_t size = example.size();
    EXPECT_EQ(errorOf(example, {size, 2, 2, 10, 4}), "nothing was thrown");
    EXPECT_EQ(errorOf(example, {100, 2, 2, 10, 4}),
              "runs.json:2:24: the file is larger than 100 bytes");
    EXPECT_EQ(errorOf(example, {size, 1, 2, 10, 4}), "runs.json:8:3: more than 1 recordings");
    EXPECT_EQ(errorOf(example, {size, 2, 1, 10, 4}),
              "runs.json:7:10: more than 1 names in a recording");
    EXPECT_EQ(errorOf(example, {size, 2, 2, 9, 4}), "runs.json:4:33: more than 9 bytes in a text");
    EXPECT_EQ(errorOf(example, {size, 2, 2, 3, 4}), "runs.json:2:15: more than 3 bytes in a text");
    EXPECT_EQ(errorOf(example, {size, 2, 2, 10, 3}), "runs.json:7:27: more than 3 samples");
    std::string longest = "hex:";
    longest.append(131'072, 'f');  // 64 KiB
    EXPECT_EQ(errorOf(with("cold start", longest)), "nothing was thrown");
    EXPECT_NE(errorOf("{" + std::string(3U << 20U, '\n')).find("bytes without a value"),
              std::string::npos);
}

}  // namespace
