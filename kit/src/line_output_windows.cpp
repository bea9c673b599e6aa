#include "line_output.h"

#include <windows.h>

#include <algorithm>
#include <limits>

namespace lapwing {
namespace {

int toInt(std::size_t size) {
    constexpr std::size_t largest = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(size, largest));
}

// What is not UTF-8 becomes U+FFFD, and so does the zero that would end the text too early.
std::wstring toWide(const std::string& text) {
    const int size = toInt(text.size());
    std::wstring wide(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    std::replace(wide.begin(), wide.end(), L'\0', L'\xFFFD');
    return wide;
}

}  // namespace

std::size_t writePartToStandardError(std::string_view text) {
    const HANDLE output = GetStdHandle(STD_ERROR_HANDLE);
    const auto size = static_cast<DWORD>(toInt(text.size()));
    DWORD written = 0;
    return WriteFile(output, text.data(), size, &written, nullptr) == 0 ? 0 : written;
}

void writeToDebugger(const std::string& line) {
    OutputDebugStringW((toWide(line) + L'\n').c_str());
}

}  // namespace lapwing
