#include "terminal.h"

#include "environment.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace command {
namespace {

constexpr std::size_t usualWidth = 80;
constexpr std::size_t leastWidth = 20;
constexpr std::size_t mostWidth = 1000;

// Empty if it is not set.
std::string environmentVariable(std::string_view name) {
    for (const std::string& variable : lapwing::environmentVariables()) {
        if (variable.size() > name.size() && variable[name.size()] == '=' &&
            variable.compare(0, name.size(), name) == 0) {
            return variable.substr(name.size() + 1);
        }
    }
    return {};
}

// Returns 0 if standard output is no terminal.
std::size_t widthOfOutput() {
#ifdef _WIN32
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    const bool isConsole =
        GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &screen) != 0;
    const int columns = isConsole ? screen.srWindow.Right - screen.srWindow.Left + 1 : 0;
    return columns > 0 ? static_cast<std::size_t>(columns) : 0;
#else
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
#endif
}

#ifndef _WIN32
bool isUtf8Locale() {
    std::string locale;
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        locale = locale.empty() ? environmentVariable(name) : locale;
    }
    constexpr std::array<std::string_view, 4> encodings{"UTF-8", "utf-8", "UTF8", "utf8"};
    return std::any_of(encodings.begin(), encodings.end(), [&](std::string_view encoding) {
        return locale.find(encoding) != std::string::npos;
    });
}
#endif

using Levels = std::array<const char*, 9>;
constexpr Levels plainLevels{" ", ".", ":", "-", "=", "+", "*", "#", "@"};
// Blocks of one eighth to eight, from U+2581.
constexpr Levels unicodeLevels{" ",
                               "\xE2\x96\x81",
                               "\xE2\x96\x82",
                               "\xE2\x96\x83",
                               "\xE2\x96\x84",
                               "\xE2\x96\x85",
                               "\xE2\x96\x86",
                               "\xE2\x96\x87",
                               "\xE2\x96\x88"};

// Each bin holds as many milliseconds as the others, and there are at most `most` bins.
std::vector<std::size_t> histogram(const std::vector<Milliseconds>& samples, std::size_t most) {
    const auto [shortest, longest] = std::minmax_element(samples.begin(), samples.end());
    const auto distance = [low = *shortest](Milliseconds sample) {
        return static_cast<std::uint64_t>(sample.count()) - static_cast<std::uint64_t>(low.count());
    };
    const std::uint64_t width = distance(*longest) / most + 1;
    std::vector<std::size_t> counts(static_cast<std::size_t>(distance(*longest) / width) + 1);
    for (const Milliseconds sample : samples) {
        ++counts[static_cast<std::size_t>(distance(sample) / width)];
    }
    return counts;
}

}  // namespace

std::size_t terminalWidth() {
    const std::string columns = environmentVariable("COLUMNS");
    const char* const end = columns.data() + columns.size();
    std::size_t width = 0;
    const auto result = std::from_chars(columns.data(), end, width);
    if (result.ec != std::errc() || result.ptr != end || width == 0) {
        width = widthOfOutput();
    }
    return width == 0 ? usualWidth : std::clamp(width, leastWidth, mostWidth);
}

bool takesUnicode() {
#ifdef _WIN32
    return true;
#else
    return isUtf8Locale();
#endif
}

std::string drawDistribution(const std::vector<Milliseconds>& samples, std::size_t width,
                             bool inUnicode) {
    const std::vector<std::size_t> counts = histogram(samples, width);
    const auto most = static_cast<double>(*std::max_element(counts.begin(), counts.end()));
    const Levels& levels = inUnicode ? unicodeLevels : plainLevels;
    const auto highest = levels.size() - 1;
    std::string line;
    for (std::size_t column = 0; column < width; ++column) {
        const std::size_t count = counts[column * counts.size() / width];
        const double height = static_cast<double>(count) / most * static_cast<double>(highest);
        const auto level = static_cast<std::size_t>(height);
        line += levels[count == 0 ? 0 : std::clamp<std::size_t>(level, 1, highest)];
    }
    return line;
}

}  // namespace command
