#include "processes.h"

#include "recording_format.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <type_traits>

#include <windows.h>

namespace command {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int notFound = 127;
constexpr int notExecutable = 126;
constexpr DWORD endedByControlC = 0xC000013A;

std::atomic<bool> interrupted{false};
UINT callersCodePage = 0;  // without a console, 0

struct Close {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<HANDLE>, Close>;

std::wstring toSystem(std::string_view text) {
    const int bytes = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    std::wstring units(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, units.data(), size);
    return units;
}

// Calls `get` with a buffer and its size until the text fits. `get` returns the length of the text,
// or the size that it needs, or 0 if there is none.
template <class Get>
std::wstring systemText(Get get) {
    std::wstring text(MAX_PATH, L'\0');
    DWORD length = get(text.data(), static_cast<DWORD>(text.size()));
    while (length > text.size()) {
        text.resize(length);
        length = get(text.data(), length);
    }
    text.resize(length);
    return text;
}

std::wstring variable(const wchar_t* name) {
    return systemText([name](wchar_t* buffer, DWORD size) {
        return GetEnvironmentVariableW(name, buffer, size);
    });
}

[[noreturn]] void refuse(const std::string& program, DWORD error) {
    const std::error_code reason(static_cast<int>(error), std::system_category());
    const std::string message = "cannot run " + lapwing::inQuotes(program);
    if (error == ERROR_NOT_ENOUGH_MEMORY || error == ERROR_OUTOFMEMORY) {
        throw std::system_error(reason, message);
    }
    const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    throw Stop(message + ": " + reason.message(), isMissing ? notFound : notExecutable);
}

// A name without a folder is looked up where the system's shell does. CreateProcessW() would begin
// with the folder of lapwing.exe.
std::wstring findProgram(const std::string& program) {
    const std::wstring name = toSystem(program);
    const bool hasFolder = name.find_first_of(L"/\\:") != std::wstring::npos;
    const bool isHereFirst = hasFolder || NeedCurrentDirectoryForExePathW(name.c_str()) != 0;
    const std::wstring folders = (isHereFirst ? L".;" : L"") + variable(L"PATH");
    const std::wstring searched = hasFolder ? L"." : folders;
    for (const std::wstring& file : {name, name + L".exe"}) {
        const std::wstring found = systemText([&](wchar_t* buffer, DWORD size) {
            return SearchPathW(searched.c_str(), file.c_str(), L".exe", size, buffer, nullptr);
        });
        if (!found.empty()) {
            return found;
        }
    }
    refuse(program, ERROR_FILE_NOT_FOUND);
}

bool endsWith(const std::wstring& text, const std::wstring& end) {
    return text.size() >= end.size() &&
           CompareStringOrdinal(text.c_str() + text.size() - end.size(), -1, end.c_str(), -1,
                                TRUE) == CSTR_EQUAL;
}

// The system has a shell run batch files, which takes arguments apart in ways of its own.
void requireNoBatch(const std::string& program, std::wstring file) {
    file.erase(file.find_last_not_of(L". ") + 1);
    if (endsWith(file, L".bat") || endsWith(file, L".cmd")) {
        throw Stop("cannot run " + lapwing::inQuotes(program) +
                       ": a batch file needs a shell; put cmd /c before it",
                   notExecutable);
    }
}

// As CommandLineToArgvW() takes it apart: backslashes are themselves unless a quotation mark
// follows them.
std::wstring quoted(const std::wstring& argument) {
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
        return argument;
    }
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : argument) {
        if (unit == L'"') {
            text.append(backslashes + 1, L'\\');
        }
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        text += unit;
    }
    text.append(backslashes, L'\\');
    return text + L'"';
}

std::wstring commandLineOf(const std::vector<std::string>& program) {
    std::wstring line;
    for (const std::string& argument : program) {
        line += (line.empty() ? L"" : L" ") + quoted(toSystem(argument));
    }
    return line;
}

Handle openNull(DWORD access) {
    SECURITY_ATTRIBUTES inherited{};
    inherited.nLength = sizeof inherited;
    inherited.bInheritHandle = TRUE;
    constexpr DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const HANDLE opened = CreateFileW(L"NUL", access, share, &inherited, OPEN_EXISTING, 0, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "NUL");
    }
    return Handle(opened);
}

// Lets programs inherit what lapwing was given, however it was given.
HANDLE callersStream(DWORD stream) {
    const HANDLE handle = GetStdHandle(stream);
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle;
}

STARTUPINFOW streams(HANDLE input, HANDLE output, HANDLE errors) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input;
    startup.hStdOutput = output;
    startup.hStdError = errors;
    return startup;
}

// The console as the caller had it, for a program that runs meanwhile.
class CallersConsole {
public:
    CallersConsole() { set(callersCodePage); }
    CallersConsole(const CallersConsole&) = delete;
    CallersConsole& operator=(const CallersConsole&) = delete;
    ~CallersConsole() { set(CP_UTF8); }

private:
    static void set(UINT codePage) {
        if (callersCodePage != 0) {
            SetConsoleOutputCP(codePage);
        }
    }
};

// `line` begins with the program's name.
Ending run(const std::string& program, const std::wstring& file, std::wstring line,
           STARTUPINFOW startup) {
    const CallersConsole console;
    PROCESS_INFORMATION started{};
    const Clock::time_point start = Clock::now();
    if (CreateProcessW(file.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &started) == 0) {
        refuse(program, GetLastError());
    }
    const Handle process(started.hProcess);
    const Handle thread(started.hThread);
    WaitForSingleObject(process.get(), INFINITE);
    Ending ending;
    ending.took = Clock::now() - start;
    DWORD code = 0;
    GetExitCodeProcess(process.get(), &code);
    if (code == endedByControlC) {
        interrupted = true;  // Our own handler may not have run yet.
        ending.signal = SIGINT;
    }
    ending.code = static_cast<int>(code);
    return ending;
}

// The system calls it on a thread of its own, and also calls that of the program that runs.
BOOL WINAPI takeControl(DWORD control) {
    const bool isTaken = control == CTRL_C_EVENT || control == CTRL_BREAK_EVENT;
    if (isTaken) {
        interrupted = true;
    }
    return isTaken ? TRUE : FALSE;
}

DWORD standardStream(int stream) {
    constexpr DWORD streams[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    return streams[stream];
}

}  // namespace

Ending runProgram(const std::vector<std::string>& program) {
    const std::wstring file = findProgram(program.front());
    requireNoBatch(program.front(), file);
    return run(program.front(), file, commandLineOf(program),
               streams(callersStream(STD_INPUT_HANDLE), callersStream(STD_OUTPUT_HANDLE),
                       callersStream(STD_ERROR_HANDLE)));
}

Ending runLine(const std::string& line, Output output) {
    const std::wstring shell = variable(L"ComSpec");
    const Handle input = openNull(GENERIC_READ);
    const Handle dropped = openNull(GENERIC_WRITE);
    const bool hasErrors = output == Output::Errors;
    return run(fromSystem(shell), shell, quoted(shell) + L" /d /s /c \"" + toSystem(line) + L'"',
               streams(input.get(), dropped.get(),
                       hasErrors ? callersStream(STD_ERROR_HANDLE) : dropped.get()));
}

Interruption::Interruption() {
    interrupted = false;
    SetConsoleCtrlHandler(takeControl, TRUE);
}

Interruption::~Interruption() {
    SetConsoleCtrlHandler(takeControl, FALSE);
}

int Interruption::signal() {
    return interrupted ? SIGINT : 0;
}

bool isTerminal(int stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(standardStream(stream)), &mode) != 0;
}

std::string hostName() {
    DWORD size = 0;
    GetComputerNameExW(ComputerNameDnsHostname, nullptr, &size);
    std::wstring name(size, L'\0');
    if (GetComputerNameExW(ComputerNameDnsHostname, name.data(), &size) == 0) {
        return {};
    }
    name.resize(size);
    return fromSystem(name);
}

std::string fromSystem(std::wstring_view text) {
    const int units = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

Utf8Console::Utf8Console() {
    callersCodePage = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
}

Utf8Console::~Utf8Console() {
    if (callersCodePage != 0) {
        SetConsoleOutputCP(callersCodePage);
    }
}

}  // namespace command
