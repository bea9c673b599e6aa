#include <lapwing/kit/settings_layers.h>

#include <gtest/gtest.h>

#include "support.h"

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>

using namespace lapwing;

namespace {

using Lines = std::vector<std::string>;
using Layers = std::vector<std::shared_ptr<SettingsLayer>>;

std::shared_ptr<ArgumentsLayer> arguments(const Lines& texts) {
    return std::make_shared<ArgumentsLayer>(texts);
}

// A provider whose problems are kept.
struct Host {
    explicit Host(Layers layers)
        : settings(std::move(layers),
                   [this](const std::string& line) { problems.push_back(line); }) {}

    Lines problems;
    LayeredSettings settings;
};

const std::wstring bird = sizeof(wchar_t) == 2 ? L"\xD83D\xDC26" : L"\U0001F426";
const std::wstring wide = L"\u00E9 \u65E5 " + bird;
const std::string utf8 = "\xC3\xA9 \xE6\x97\xA5 \xF0\x9F\x90\xA6";

// What is read of one text. What cannot be converted gives the default.
struct Conversion {
    const char* text;
    bool boolean;
    std::int32_t integer;
    double number;
};

TEST(settings, are_converted_strictly_or_count_as_absent) {
    const Conversion conversions[]{
        {"true", true, -7, -7},
        {"TRUE", true, -7, -7},
        {"false", false, -7, -7},
        {"1", true, 1, 1},
        {"0", false, 0, 0},
        {"-12", true, -12, -12},
        {"+1", true, -7, -7},
        {" 1", true, -7, -7},
        {"0x10", true, -7, -7},
        {"2.5e3", true, -7, 2500},
        {"1,5", true, -7, -7},
        {"1e999", true, -7, -7},
        {"nan", true, -7, -7},
        {"1e-", true, -7, -7},
        {"-.5", true, -7, -0.5},
        {"5.", true, -7, 5},
        {".e1", true, -7, -7},
        {"", true, -7, -7},
        {"2147483648", true, -7, 2147483648.0},
    };
    for (const Conversion& expected : conversions) {
        SCOPED_TRACE(testing::Message() << '"' << expected.text << '"');
        Host host({arguments({std::string("a.key=") + expected.text})});
        EXPECT_EQ(host.settings.getValue("a.key", true), expected.boolean);
        EXPECT_EQ(host.settings.getValue("a.key", std::int32_t{-7}), expected.integer);
        EXPECT_EQ(host.settings.getValue("a.key", -7.0), expected.number);
        EXPECT_EQ(host.settings.getValue("a.key", std::string("default")), expected.text);
    }
    const Host host({arguments({"good=" + utf8, "bad=\xED\xA0\x80"})});
    EXPECT_EQ(host.settings.getValue("good", std::wstring()), wide);
    EXPECT_EQ(host.settings.getValue("bad", std::wstring(L"default")), L"default");
}

TEST(settings, are_read_as_they_were_written) {
    Host host({std::make_shared<MemoryLayer>()});
    LayeredSettings& settings = host.settings;
    for (const double number : {0.1, -1e300, std::numeric_limits<double>::denorm_min(), 1.0 / 3}) {
        settings.setValue("key", number);
        EXPECT_EQ(settings.getValue("key", 0.0), number);
    }
    settings.setValue("key", INT32_MIN);
    EXPECT_EQ(settings.getValue("key", 0), INT32_MIN);
    settings.setValue("key", wide);
    EXPECT_EQ(settings.getValue("key", std::string()), utf8);
    EXPECT_EQ(settings.getValue("key", std::wstring()), wide);
    EXPECT_EQ(host.problems, Lines());

    settings.setValue("key", std::numeric_limits<double>::infinity());
    settings.setValue("key", std::wstring(1, static_cast<wchar_t>(0xD83D)));
    settings.setValue("key", std::wstring(1, static_cast<wchar_t>(0xDC26)) + L"x");
    EXPECT_EQ(settings.getValue("key", std::wstring()), wide);
    EXPECT_EQ(host.problems, (Lines{"setting key: the new value is not a finite decimal number",
                                    "setting key: the new value is not Unicode text",
                                    "setting key: the new value is not Unicode text"}));
}

TEST(layered_settings, ask_the_next_layer_when_a_text_is_refused_and_report_it_once) {
    Host host({arguments({"count=many"}), arguments({"count=3"}), arguments({"count=4"})});
    for (int times = 0; times < 3; ++times) {
        EXPECT_EQ(host.settings.getValue("count", 1), 3);
    }
    EXPECT_EQ(host.settings.getValue("count", 0.5), 3);
    EXPECT_EQ(host.problems,
              Lines{"the command line: setting count: \"many\" is not a whole number of 32 bits"});
    EXPECT_TRUE(host.settings.exists("count") && !host.settings.exists("counts"));
    EXPECT_EQ(formatExplanation(host.settings.explain("count")),
              "count\n"
              "  the command line: \"many\", refused: not a whole number of 32 bits\n"
              "  the command line: \"3\", answers\n"
              "  the command line: \"4\"\n");
    EXPECT_NE(formatExplanation(host.settings.explain(DeveloperSettings::Boolean{"count"}))
                  .find("\"4\", refused: not true, false, 1 or 0\n  no layer answers: the default"),
              std::string::npos);
}

TEST(layered_settings, write_to_the_first_writable_layer_and_clear_all) {
    const auto first = std::make_shared<MemoryLayer>();
    const auto second = std::make_shared<MemoryLayer>();
    second->set("a", {"old", false});
    {
        Host host({arguments({"b=above"}), first, second, arguments({"a=below"})});
        host.settings.setValue("a", std::string("new"));
        EXPECT_EQ(first->find("a"), "new");
        EXPECT_EQ(second->find("a"), "old");
        host.settings.clear("a");
        EXPECT_EQ(host.settings.getValue("a", std::string()), "below");
        EXPECT_EQ(host.problems, Lines());

        host.settings.setValue("b", 2);  // whose text above is no number
        host.settings.setValue("b", std::string("2"));
        host.settings.clear("b");
        const std::string still = ", but the command line still answers with \"above\"";
        EXPECT_EQ(host.problems, (Lines{"setting b was stored in memory" + still,
                                        "setting b was cleared" + still}));
    }
    Host readOnly({arguments({"a=1"})});
    readOnly.settings.setValue("a", true);
    readOnly.settings.clear("a");
    EXPECT_EQ(readOnly.problems, (Lines{"setting a was not stored: no layer is writable",
                                        "setting a was not cleared: no layer is writable"}));
}

TEST(layered_settings, are_installed_once_and_only_while_they_live) {
    const DeveloperConfig::Integer setting{"key", 1};
    {
        const LayeredSettings settings({arguments({"key=2"})});
        EXPECT_EQ(setting(), 2);
        EXPECT_THROW(LayeredSettings({arguments({"key=3"})}), std::logic_error);
        EXPECT_EQ(setting(), 2);
    }
    EXPECT_EQ(setting(), 1);
    EXPECT_THROW(LayeredSettings(Layers{nullptr}), std::invalid_argument);
    const LayeredSettings again({arguments({"key=4"})});
    EXPECT_EQ(setting(), 4);
}

TEST(scoped_settings, nest_and_end_in_any_order) {
    Host host({arguments({"key=1"}), std::make_shared<MemoryLayer>()});
    const DeveloperSettings::Integer setting{"key"};
    auto outer = std::make_unique<ScopedSetting<std::int32_t>>(host.settings, "key", 2);
    auto inner = std::make_unique<ScopedSetting<std::int32_t>>(host.settings, "key", 3);
    const ScopedSetting<std::wstring> other(host.settings, "other", wide);
    EXPECT_EQ(setting(), 3);
    host.settings.clear("key");
    EXPECT_EQ(setting(), 3);
    EXPECT_EQ(formatExplanation(host.settings.explain("key")),
              "key\n  a scoped override: \"3\", answers\n  a scoped override: \"2\"\n"
              "  the command line: \"1\"\n  memory: nothing\n");
    outer.reset();
    EXPECT_EQ(setting(), 3);
    inner.reset();
    EXPECT_EQ(setting(), 1);
    EXPECT_EQ(host.settings.getValue("other", std::string()), utf8);
    EXPECT_THROW(ScopedSetting<double>(host.settings, "key", std::nan("")), std::invalid_argument);
}

void setVariable(const char* name, const char* value) {
#ifdef _WIN32
    _putenv_s(name, value);
#else
    setenv(name, value, 1);
#endif
}

TEST(environment_layer, maps_keys_to_variables_read_once) {
    setVariable("LAPWING_T_LOGGING_IMAGEDIRECTORY", "/images=1");
    setVariable("LAPWING_T__", "two");
    setVariable("LAPWING_T_NO-KEY", "unreachable");
    EnvironmentLayer layer("LAPWING_T_");
    setVariable("LAPWING_T_LATE", "1");
    EXPECT_EQ(layer.find("logging.ImageDirectory"), "/images=1");
    EXPECT_EQ(layer.origin("LOGGING-image"), "environment variable LAPWING_T_LOGGING_IMAGE");
    EXPECT_EQ(layer.find("\xC3"), "two");
    EXPECT_FALSE(layer.find("no-key") || layer.find("late") || layer.find(""));
#ifndef _WIN32
    setVariable("LAPWING_T_lower", "1");
    EXPECT_EQ(EnvironmentLayer("LAPWING_T_").find("lower"), std::nullopt);
#endif
}

TEST(arguments_layer, takes_the_last_text_of_a_key_and_refuses_others) {
    const ArgumentsLayer layer({"a=1", "b==x=", "a=2"});
    EXPECT_EQ(layer.find("a"), "2");
    EXPECT_EQ(layer.find("b"), "=x=");
    for (const std::string text : {"key", "=value"}) {
        const auto message = messageOf<std::invalid_argument>([&] { ArgumentsLayer({text}); });
        EXPECT_EQ(message, "a setting must be key=value, not \"" + text + '"');
    }
}

TEST(layered_settings, are_used_by_many_threads_at_once) {
    std::atomic<int> problems{0};
    LayeredSettings settings({std::make_shared<MemoryLayer>(), arguments({"bad=x", "good=5"})},
                             [&](const std::string&) { ++problems; });
    onEightThreads([&settings](int) {
        for (std::int32_t i = 0; i < 200; ++i) {
            settings.setValue("written", i);
            EXPECT_EQ(settings.getValue("bad", 1), 1);
            const ScopedSetting<std::int32_t> scoped(settings, "scoped", i);
            EXPECT_GE(settings.getValue("scoped", -1), 0);
            EXPECT_EQ(settings.getValue("good", 0), 5);
            EXPECT_GE(settings.getValue("written", -1), 0);
        }
    });
    EXPECT_EQ(problems, 1);
    EXPECT_FALSE(settings.exists("scoped"));
}

}  // namespace
