#include <lapwing/kit/import.h>

#include "support.h"

#include <gtest/gtest.h>

#include <sstream>
#include <tuple>
#include <utility>

using namespace lapwing;
using namespace std::string_literals;

namespace {

// As NAME=MS, sorted, with a space behind each.
std::string samplesOf(const TimingProfile& profile) {
    std::vector<std::string> names;
    std::string samples;
    for (const auto& [name, times] : profile.samples) {
        names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        for (const Milliseconds time : profile.samples.at(name)) {
            samples += name + '=' + std::to_string(time.count()) + ' ';
        }
    }
    return samples;
}

std::string fromLog(const std::string& log, const std::string& prefix = {}) {
    std::istringstream stream(log);
    return samplesOf(importLog(stream, prefix));
}

// What was found, or the error.
template <class Import>
std::string from(Import import, const std::string& text) {
    std::istringstream stream(text);
    try {
        return samplesOf(import(stream, "a file"));
    } catch (const ImportError& error) {
        return error.what();
    }
}

TEST(Import, FindsNamesInLogs) {
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"Scan: Begin\n  Read: End - 3 ms\nScan: Lap - 5 ms\nScan: End - 12 ms\r\n", "",
         "Read=3 Scan=12 "},
        {"[12:00:01] [info]   Scan all: End - 12 ms", "", "Scan all=12 "},
        {"app[7]: Scan: End - 1 ms\nI | a | Scan: End - 2 ms\n1\tx] y\tScan: End - 3 ms \n", "",
         "Scan=1 Scan=2 Scan=3 "},
        {"[a] b: End - 1 ms: End - -2 ms\n: End - 0 ms\n\0x\xFF: End - 1 ms\n"s, "",
         "=0 \0x\xFF=1 b: End - 1 ms=-2 "s},
        {"Scan: End - 12 s\nScan: End - 1.5 ms\nScan: End -  1 ms\nScan: End - 12\nEnd - 1 ms\n"
         "Scan: End - 99999999999999999999 ms\nScan: End - 12 ms.\n",
         "", ""},
        {"12:00 info  a] b: End - 1 ms\nfoo: End - 1 ms\n", R"(\d+:\d+ \w+)", "a] b=1 "},
        {std::string(5'000'000, 'x') + "] Scan: End - 1 ms\nx: End - 1 ms\n", "", "Scan=1 x=1 "},
    };
    for (const auto& [log, prefix, samples] : cases) {
        EXPECT_EQ(fromLog(log, prefix), samples) << log.substr(0, 99);
    }
}

TEST(Import, RefusesPrefixesThatAreNoRegularExpressions) {
    for (const std::string& prefix : {"("s, std::string(100'000, '(')}) {
        EXPECT_THROW((void)fromLog("", prefix), std::invalid_argument);
    }
    // Standard libraries match this, or give up.
    try {
        const std::string log = std::string(5'000'000, 'a') + ": End - 1 ms\nab: End - 1 ms\n";
        EXPECT_EQ(fromLog(log, "(a*)*b"), "=1 ");
    } catch (const std::invalid_argument& error) {
        EXPECT_NE(std::string(error.what()).find("(a*)*b"), std::string::npos) << error.what();
    }
}

TEST(Import, ReadsWhatHyperfineExports) {
    const std::string deep = std::string(1'000'000, '[');
    const std::pair<std::string, std::string> cases[] = {
        {R"({"results": [{"command": "b", "mean": 1, "times": [1.001, 0.0029], "exit_codes": [0]},
             {"command": "a \"<b>", "parameters": {"n": "1"}, "times": [2]},
             {"command": "b", "times": [0.5]}, {"command": "c", "times": []}], "more": [{}]})",
         "a \"<b>=2000 b=1001 b=2 b=500 "},
        {R"({"results": []})", ""},
        {"{}", "a file:1: there is no list of results"},
        {"{\n\"results\": {}}", "a file:2: there is no list of results"},
        {"{\"results\": [\n{\"times\": [1]}]}", "a file:2: a result has no command"},
        {R"({"results": [{"command": "a"}]})", "a file:1: a result has no list of times"},
        {R"({"results": [{"command": "a", "times": ["1"]}]})",
         "a file:1: a time must be a number of seconds from 0 to 1000000000"},
        {R"({"results": [{"command": "a", "times": [1e300]}]})",
         "a file:1: a time must be a number of seconds from 0 to 1000000000"},
        {R"({"results": [1e999]})", "a file:1: not JSON: number overflow parsing '1e999'"},
        {"{\n]", "a file:2: not JSON: unexpected ']'; expected string literal"},
        {"{}\0"s, "a file:1: not JSON: a byte of zero"},
        {"\"\xFF", "a file:1: not JSON: invalid string: ill-formed UTF-8 byte"},
        {deep, "a file:1: nested too deeply"},
    };
    for (const auto& [text, samples] : cases) {
        EXPECT_EQ(from(importHyperfine, text), samples) << text.substr(0, 99);
    }
}

TEST(Import, ReadsCsv) {
    const std::pair<std::string, std::string> cases[] = {
        {"\xEF\xBB\xBFname,milliseconds\r\nScan,12\r\n\r\nScan,-3", "Scan=12 Scan=-3 "},
        {"\"a,\"\"b\"\"\r\nc\",\"1.9\"\n,9223372036854775807\nhex:ff,-1.9\n\0,1e3\n"s,
         "=9223372036854775807 \0=1000 a,\"b\"\r\nc=1 \xFF=-1 "s},
        {"name,milliseconds\nname,milliseconds\n",
         "a file:2: milliseconds must be a number of at most 64 bits, not \"milliseconds\""},
        {"a,1e19", "a file:1: milliseconds must be a number of at most 64 bits, not \"1e19\""},
        {"\"a\nb\",1\nScan\n", "a file:3: there is no comma: a line is name,milliseconds"},
        {"a,1,2", "a file:1: more than two fields: a line is name,milliseconds"},
        {"\"a\nb", "a file:1: a quotation mark is not closed"},
        {"\"a\"b,1",
         "a file:1: a comma or the line's end must follow a quotation mark that closes"},
        {"a\"b,1", "a file:1: a quotation mark within a field that does not begin with one"},
        {"\xFF,1", "a file:1: the name: the text is not UTF-8"},
        {std::string(70'000, 'a') + ",1", "a file:1: the name is longer than 65536 bytes"},
        {std::string(200'000, 'a') + ",1", "a file:1: a field is too long"},
    };
    for (const auto& [text, samples] : cases) {
        EXPECT_EQ(from(importCsv, text), samples) << text.substr(0, 99);
    }
}

}  // namespace
