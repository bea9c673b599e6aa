#include "system_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace lapwing {

void throwSystemError(const std::filesystem::path& file) {
    throwSystemError(file, errno);
}

SystemFile::SystemFile() noexcept : owned(-1) {}

SystemFile::~SystemFile() {
    if (isOpen()) {
        ::close(owned);
    }
}

bool SystemFile::isOpen() const noexcept {
    return owned >= 0;
}

SystemFile createFile(const std::filesystem::path& file) {
    SystemFile created(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!created.isOpen()) {
        throwSystemError(file);
    }
    return created;
}

void writeAll(const SystemFile& file, std::string_view bytes, const std::filesystem::path& name) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.handle(), bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            throwSystemError(name);
        }
    }
}

void truncate(const SystemFile& file, std::uint64_t size) noexcept {
    [[maybe_unused]] const int result = ::ftruncate(file.handle(), static_cast<off_t>(size));
}

InputFile::InputFile(std::filesystem::path file)
    : name(std::move(file)), input(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (!input.isOpen()) {
        throwSystemError(name);
    }
}

std::size_t InputFile::read(char* buffer, std::size_t size) {
    ssize_t count = -1;
    do {
        count = ::read(input.handle(), buffer, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        throwSystemError(name);
    }
    return static_cast<std::size_t>(count);
}

}  // namespace lapwing
