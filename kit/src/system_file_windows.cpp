#include "system_file.h"

#include "retry_windows.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace lapwing {
namespace {

constexpr std::size_t largestBlock = std::size_t{1} << 30U;

DWORD blockSize(std::size_t size) {
    return static_cast<DWORD>(std::min(size, largestBlock));
}

SystemFile openToRead(const std::filesystem::path& file) {
    return SystemFile(CreateFileW(file.c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

}  // namespace

void throwSystemError(const std::filesystem::path& file) {
    throwSystemError(file, static_cast<int>(GetLastError()));
}

SystemFile::SystemFile() noexcept : owned(INVALID_HANDLE_VALUE) {}

SystemFile::~SystemFile() {
    if (isOpen()) {
        CloseHandle(owned);
    }
}

bool SystemFile::isOpen() const noexcept {
    return owned != INVALID_HANDLE_VALUE;
}

SystemFile createFile(const std::filesystem::path& file) {
    SystemFile created(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                   nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!created.isOpen()) {
        throwSystemError(file);
    }
    return created;
}

void writeAll(const SystemFile& file, std::string_view bytes, const std::filesystem::path& name) {
    while (!bytes.empty()) {
        DWORD written = 0;
        if (WriteFile(file.handle(), bytes.data(), blockSize(bytes.size()), &written, nullptr) ==
            0) {
            throwSystemError(name);
        }
        bytes.remove_prefix(written);
    }
}

void truncate(const SystemFile& file, std::uint64_t size) noexcept {
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(size);
    if (SetFilePointerEx(file.handle(), end, nullptr, FILE_BEGIN) != 0) {
        SetEndOfFile(file.handle());
    }
}

InputFile::InputFile(std::filesystem::path file) : name(std::move(file)) {
    retryWhile({ERROR_SHARING_VIOLATION}, [this] {
        input = openToRead(name);
        return input.isOpen();
    });
    if (!input.isOpen()) {
        throwSystemError(name);
    }
}

std::size_t InputFile::read(char* buffer, std::size_t size) {
    DWORD count = 0;
    if (ReadFile(input.handle(), buffer, blockSize(size), &count, nullptr) == 0 &&
        GetLastError() != ERROR_BROKEN_PIPE) {
        throwSystemError(name);
    }
    return count;
}

}  // namespace lapwing
