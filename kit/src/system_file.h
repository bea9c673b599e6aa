// Open files, and errors of the system that name the file.

#ifndef LAPWING_KIT_SRC_SYSTEM_FILE_H
#define LAPWING_KIT_SRC_SYSTEM_FILE_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace lapwing {

#ifdef _WIN32
using SystemHandle = void*;
#else
using SystemHandle = int;
#endif

// The file's name in messages: UTF-8, on one line.
std::string displayName(const std::filesystem::path& file);

// Throws std::system_error: the file's name and the reason, by default that of the last failure.
[[noreturn]] void throwSystemError(const std::filesystem::path& file);
[[noreturn]] void throwSystemError(const std::filesystem::path& file, int reason);

// Owns what the system calls an open file, or nothing.
class SystemFile {
public:
    SystemFile() noexcept;
    explicit SystemFile(SystemHandle opened) noexcept : owned(opened) {}
    SystemFile(SystemFile&& other) noexcept;
    SystemFile& operator=(SystemFile&& other) noexcept;
    SystemFile(const SystemFile&) = delete;
    SystemFile& operator=(const SystemFile&) = delete;
    ~SystemFile();

    [[nodiscard]] bool isOpen() const noexcept;
    [[nodiscard]] SystemHandle handle() const noexcept { return owned; }

private:
    SystemHandle owned;
};

// Replaces the file by an empty one. Others can read it meanwhile.
SystemFile createFile(const std::filesystem::path& file);

// Writes all of `bytes`. `name` stands for the file in errors.
void writeAll(const SystemFile& file, std::string_view bytes, const std::filesystem::path& name);

// Cuts off what is behind the first `size` bytes, if the system can do that.
void truncate(const SystemFile& file, std::uint64_t size) noexcept;

// A file to read. It does not keep others from replacing the file meanwhile: it still reads the
// file that it opened.
class InputFile {
public:
    explicit InputFile(std::filesystem::path file);

    // Returns how many bytes were read: at most `size`, 0 at the end.
    std::size_t read(char* buffer, std::size_t size);

private:
    std::filesystem::path name;
    SystemFile input;
};

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_SYSTEM_FILE_H
