#include "this_process.h"

#include <windows.h>

#include <memory>
#include <string_view>

namespace lapwing {
namespace {

// Finds what older systems do not have, or no header declares.
template <class Function>
Function* find(const wchar_t* module, const char* name) {
    const HMODULE handle = GetModuleHandleW(module);
    return handle == nullptr
               ? nullptr
               : reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(handle, name)));
}

struct FreeLocal {
    void operator()(wchar_t* text) const noexcept { LocalFree(text); }
};

// Halves of surrogate pairs become U+FFFD.
std::string toUtf8(std::wstring_view wide) {
    const auto length = static_cast<int>(wide.size());
    std::string text(3 * wide.size(), '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text.data(), 3 * length,
                                         nullptr, nullptr);
    text.resize(static_cast<std::size_t>(size));
    return text;
}

}  // namespace

std::uint32_t processId() {
    return GetCurrentProcessId();
}

std::uint32_t threadId() {
    return GetCurrentThreadId();
}

std::string processName() {
    std::wstring path(32'768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return toUtf8(std::wstring_view(path).substr(path.find_last_of(L'\\') + 1));
}

std::string threadName() {
    static auto* const describe =
        find<HRESULT WINAPI(HANDLE, PWSTR*)>(L"kernel32.dll", "GetThreadDescription");
    PWSTR description = nullptr;
    if (describe == nullptr || describe(GetCurrentThread(), &description) < 0) {
        return {};
    }
    const std::unique_ptr<wchar_t, FreeLocal> owner(description);
    return toUtf8(description);
}

bool otherThreadsWereEnded() {
    static auto* const isEnding = find<BOOLEAN WINAPI()>(L"ntdll.dll", "RtlDllShutdownInProgress");
    return isEnding != nullptr && isEnding() != 0;
}

}  // namespace lapwing
