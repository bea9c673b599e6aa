#include <lapwing/kit/settings_files.h>

#include "file_support.h"
#include "settings_format.h"
#include "system_timer.h"

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace lapwing {

static std::atomic<Clock::duration> sinceStart{Clock::duration(0)};

Clock::time_point now() noexcept {
    return Clock::time_point(sinceStart.load());
}

Clock::time_point coarseNow() noexcept {
    return now();
}

void sleepUntilAbout(Clock::time_point /*time*/) noexcept {}

}  // namespace lapwing

using namespace lapwing;
using namespace std::chrono_literals;

namespace {

using Problems = std::vector<std::string>;

constexpr const char* file = "settings.json";

void advance(Clock::duration time = 250ms) {
    sinceStart = sinceStart.load() + time;
}

// In the future, files of one size cannot be told apart by their time.
void fillAt(fs::file_time_type time, const std::string& contents) {
    fill(file, contents);
    fs::last_write_time(file, time);
}

class SettingsFile : public InNewFolder {
protected:
    SettingsFile() {
        layer.setProblemHandler([this](const std::string& text) {
            const std::lock_guard lock(mutex);
            problems.push_back(text);
        });
    }
    [[nodiscard]] std::string at(const std::string& key) const {
        return layer.find(key).value_or("nothing");
    }
    // Those since the last call.
    Problems newProblems() { return std::exchange(problems, {}); }

    JsonFileLayer layer{file};

private:
    std::mutex mutex;
    Problems problems;
};

TEST_F(SettingsFile, HasTextsAsTheyAreWrittenAndTheirLines) {
    fill(file, "\xEF\xBB\xBF{ // not \"a\":\r\n" + std::string(R"("b": true, "net": {"n": -0,
        "a": {}, "b": {"c": "\u00e9\"//"}, "": 1.50E+2/* */, "large": 12345678901234567890123},

        "net": {"list": [1, {"a": [null]}], "last": 7}, "none" /* 1 */: null})"));
    const std::map<std::string, std::string> cases{
        {"b", "true settings.json:2"},
        {"net.n", "-0 settings.json:2"},
        {"net.b.c", "\xC3\xA9\"// settings.json:3"},
        {"net.", "1.50E+2 settings.json:3"},
        {"net.large", "12345678901234567890123 settings.json:3"},
        {"net.last", "7 settings.json:5"},
        {"net.list", "nothing settings.json"},
        {"none", "nothing settings.json"}};
    for (const auto& [key, expected] : cases) {
        EXPECT_EQ(at(key) + ' ' + layer.origin(key), expected) << key;
    }
    EXPECT_EQ(newProblems(),
              (Problems{R"(settings.json:5: "net.list" is an array, which is no setting's value)",
                        R"(settings.json:5: "none" is null, which is no setting's value)"}));
    EXPECT_EQ(JsonFileLayer("a\nb").name(), "a\\nb");
}

TEST_F(SettingsFile, SaysWhereAFileIsWrong) {
    const std::string halfOfTheLimit(8U << 20U, 'k');
    const std::pair<std::string, std::string> cases[] = {
        {"", ":1:1: the file is empty"},
        {"{\n\"a\": 1", ":2:7: the file is cut short"},
        {"\"a\"", ":1:3: the file must be an object"},
        {"{} {}", ":1:4: not JSON: unexpected '{'; expected end of input"},
        {"{\"a\": 1,\n \"a\": 2}", R"(:2:8: "a" is there twice)"},
        {"{\"a.b\": 1,\n\"a\": {\"b\": []}}", R"(:2:13: "a.b" is there twice)"},
        {"{\"a\": 1e999}", R"(:1:12: the number "1e999" is too large)"},
        {"{} //\n\xFF", ":2:1: not UTF-8"},
        {std::string("{}\0", 3), ":1:3: not JSON: a byte of zero"},
        {"{}" + halfOfTheLimit + halfOfTheLimit,
         ":1:16777217: the file is larger than 16777216 bytes"},
        {"{\"" + halfOfTheLimit + "\":\n{\"a\": 1}}",
         ":2:4: the joined keys are larger than 16777216 bytes"},
        {"{\"a\": " + std::string(100, '['), ":1:106: nested more than 100 deep"}};
    for (const auto& [text, problem] : cases) {
        fill(file, text);
        advance();
        EXPECT_EQ(at("a"), "nothing");
        EXPECT_EQ(newProblems(), Problems{file + problem});
    }
}

TEST_F(SettingsFile, NoticesChangesAndKeepsTheLastGoodValues) {
    const auto future = fs::file_time_type::clock::now() + 1h;
    EXPECT_EQ(at("a"), "nothing");
    fillAt(future, "{\"a\": 1}");
    advance(249ms);
    EXPECT_EQ(at("a"), "nothing");
    advance(1ms);
    EXPECT_EQ(at("a"), "1");
    fillAt(future, "{\"a\": 2}");
    advance();
    EXPECT_EQ(at("a"), "2");
    EXPECT_EQ(newProblems(), Problems());
    const auto expectOneProblem = [this] {
        for (int look = 0; look < 3; ++look) {
            advance();
            EXPECT_EQ(at("a"), "2");
        }
        EXPECT_EQ(newProblems().size(), 1U);
    };
    for (const auto time : {1h, 2h}) {
        fillAt(future + time, "{\"a\": 3");
        expectOneProblem();
    }
    fs::remove(file);
    expectOneProblem();
    const auto past = fs::file_time_type::clock::now() - 1h;
    fillAt(past, "{\"a\": 4 ");
    expectOneProblem();
    fillAt(past, "{\"a\": 4}");
    advance();
    EXPECT_EQ(at("a"), "4");
}

TEST_F(SettingsFile, NeverLacksAValueWhileAnEditorSaves) {
    const std::string text = R"({"a": ")" + std::string(100'000, 'x') + R"("})";
    fill(file, text);
    std::atomic<int> reads{0};
    std::atomic<bool> ended{false};
    const auto read = [&] {
        for (; !ended; ++reads) {
            EXPECT_EQ(at("a").size(), 100'000U);
        }
    };
    std::thread first(read);
    std::thread second(read);
    while (reads < 2) {
        std::this_thread::yield();
    }
    for (int round = 0; round < 200; ++round) {
        for (const std::size_t size : {std::size_t{0}, text.size() / 2, text.size()}) {
            std::error_code inUse;
            fs::remove(file, inUse);
            advance();
            fill(file, text.substr(0, size));
            advance();
        }
    }
    ended = true;
    first.join();
    second.join();
}

TEST_F(SettingsFile, WritesASortedFileAndKeepsWhatElseIsInIt) {
    layer.set("c", {"5", true});
    EXPECT_EQ(contentsOf(file) + at("c"), "{\n    \"c\": 5\n}\n5");
    fill(file, R"({"n": {"z": [1.0, {"a b": "c\" d"} ], "a": 1e2}, "b": null, "c": 5})");
    layer.set("\xC3\xA9\n", {"2.50", true});
    layer.set("c", {"5", false});
    EXPECT_EQ(at("c") + at("\xC3\xA9\n") + layer.origin("n.a"), "52.50settings.json:4");
    const std::string expected =
        "{\n    \"b\": null,\n    \"c\": \"5\",\n    \"n.a\": 1e2,\n"
        "    \"n.z\": [1.0,{\"a b\":\"c\\\" d\"}],\n    \"\xC3\xA9\\n\": 2.50\n}\n";
    EXPECT_EQ(contentsOf(file), expected);
    fs::remove(file);
    layer.clear("x");
    EXPECT_EQ(entries(), Names{});
    layer.set("c", {"5", false});
    EXPECT_EQ(contentsOf(file), expected);
    for (const char* key : {"b", "c", "n.a", "n.z", "\xC3\xA9\n"}) {
        layer.clear(key);
    }
    EXPECT_EQ(contentsOf(file) + at("c"), "{\n}\nnothing");
}

TEST_F(SettingsFile, DropsWritesThatItCannotMake) {
    const std::string plain = "{\"a\": 1}";
    const std::string commented = "{\"a\": 1} // one";
    const std::string lost = "settings.json has comments, which would be lost";
    const std::string literal = "it is neither true nor false nor a number";
    const std::tuple<std::string, std::string, SettingText, std::string> cases[] = {
        {commented, "k", {"1", true}, lost},
        {commented, "a", {"1", true}, ""},
        {"{", "k", {"1", true}, "settings.json:1:2: the file is cut short"},
        {plain, "\xFF", {"1", true}, "it is not UTF-8"},
        {plain, "k", {"\xFF", false}, "it is not UTF-8"},
        {plain, "k", {"null", true}, literal},
        {plain, "k", {"1, \"x\": 2", true}, literal},
        {plain, "k", {std::string(16U << 20U, 'k'), false}, "settings.json would be too large"}};
    for (const auto& [contents, key, value, reason] : cases) {
        fill(file, contents);
        layer.set(key, value);
        const std::string start =
            key == "k" ? "\"k\" was not stored: " : "\"\xEF\xBF\xBD\" was not stored: ";
        EXPECT_EQ(newProblems(), reason.empty() ? Problems() : Problems{start + reason});
        EXPECT_EQ(contentsOf(file), contents);
    }
    fill(file, commented);
    layer.clear("k");
    layer.clear("a");
    EXPECT_EQ(newProblems(), Problems{"\"a\" was not cleared: " + lost});
    JsonFileLayer("missing/settings.json").set("a", {"1", true});
    EXPECT_EQ(contentsOf(file), commented);
    EXPECT_EQ(entries(), Names{file});
}

TEST_F(SettingsFile, LosesNothingOfEightProcessesThatSet) {
    for (std::future<int>& process : startEight("set")) {
        EXPECT_EQ(process.get(), 0);
    }
    EXPECT_EQ(parseSettings(contentsOf(file), file).values.size(), 160U);
    EXPECT_EQ(entries(), Names{file});
}

}  // namespace
