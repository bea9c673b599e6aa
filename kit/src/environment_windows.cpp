#include "environment.h"

#include <cstddef>
#include <cwchar>
#include <memory>

#include <windows.h>

namespace lapwing {
namespace {

struct FreeEnvironment {
    void operator()(wchar_t* strings) const noexcept { FreeEnvironmentStringsW(strings); }
};

std::string toUtf8(const wchar_t* text) {
    const int units = static_cast<int>(std::wcslen(text));
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, units, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, units, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

}  // namespace

std::vector<std::string> environmentVariables() {
    const std::unique_ptr<wchar_t, FreeEnvironment> strings(GetEnvironmentStringsW());
    std::vector<std::string> variables;
    const wchar_t* variable = strings.get();
    while (variable != nullptr && *variable != L'\0') {
        variables.push_back(toUtf8(variable));
        variable += std::wcslen(variable) + 1;
    }
    return variables;
}

}  // namespace lapwing
