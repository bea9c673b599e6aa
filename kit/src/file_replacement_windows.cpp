#include "file_replacement.h"

#include "retry_windows.h"
#include "system_file.h"

#include <windows.h>

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace lapwing {

namespace fs = std::filesystem;

struct FileReplacement::State {
    fs::path name;
    fs::path targetPath;
    fs::path temporaryPath;
    SystemFile temporary;
    bool exists = false;
    bool committed = false;

    State(fs::path named, fs::path target);
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State();
};

namespace {

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Older headers do not have these.
constexpr auto renameInformationEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD replaceWithPosixSemantics = 0x1 | 0x2;

struct RenameInformation {
    DWORD flags;
    HANDLE rootDirectory;
    DWORD nameBytes;
    WCHAR name[1];
};

SystemFile open(const fs::path& file, DWORD access) {
    return SystemFile(CreateFileW(file.c_str(), access, shareAll, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

DWORD attributesOf(const fs::path& file, const fs::path& name) {
    const DWORD attributes = GetFileAttributesW(file.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES &&
        !lastErrorIsOneOf({ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND})) {
        throwSystemError(name);
    }
    return attributes;
}

fs::path finalPath(const SystemFile& file, const fs::path& name) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const auto capacity = static_cast<DWORD>(path.size());
        const DWORD length = GetFinalPathNameByHandleW(file.handle(), path.data(), capacity, 0);
        if (length == 0) {
            throwSystemError(name);
        }
        path.resize(length);
        if (length < capacity) {
            return path;
        }
    }
}

// A link that leads nowhere is an error: what it leads to cannot be asked for.
fs::path resolveLinks(const fs::path& file) {
    const DWORD attributes = attributesOf(file, file);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return fs::absolute(file);
    }
    const SystemFile opened = open(file, FILE_READ_ATTRIBUTES);
    if (!opened.isOpen()) {
        throwSystemError(file);
    }
    return finalPath(opened, file);
}

void requireRegularFile(const fs::path& target, const fs::path& name) {
    const SystemFile opened = open(target, FILE_READ_ATTRIBUTES);
    const DWORD attributes = attributesOf(target, name);
    if (!target.has_filename() ||
        (opened.isOpen() && GetFileType(opened.handle()) != FILE_TYPE_DISK) ||
        (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)) {
        throw std::invalid_argument(displayName(name) + ": not a regular file");
    }
}

SystemFile openTemporary(const fs::path& temporary) {
    return SystemFile(CreateFileW(temporary.c_str(), GENERIC_READ | GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                  FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

// Nobody else can open the file to write while it is open here. It is denied while the system
// removes it.
SystemFile lockTemporary(const fs::path& temporary, const fs::path& name) {
    SystemFile opened;
    const auto attempt = [&opened, &temporary] {
        opened = openTemporary(temporary);
        return opened.isOpen();
    };
    while (!retryWhile({ERROR_SHARING_VIOLATION, ERROR_ACCESS_DENIED}, attempt)) {
        if (GetLastError() != ERROR_SHARING_VIOLATION) {
            throwSystemError(name);
        }
    }
    return opened;
}

// The file is open with the right to rename it only as long as that takes: other programs' readers
// may not share it.
bool renameWithPosixSemantics(const fs::path& temporary, const fs::path& target) {
    const std::wstring& path = target.native();
    const std::size_t pathBytes = path.size() * sizeof(WCHAR);
    std::vector<std::byte> buffer(sizeof(RenameInformation) + pathBytes);
    RenameInformation information{};
    information.flags = replaceWithPosixSemantics;
    information.nameBytes = static_cast<DWORD>(pathBytes);
    std::memcpy(buffer.data(), &information, sizeof information);
    std::memcpy(buffer.data() + offsetof(RenameInformation, name), path.data(), pathBytes);
    const SystemFile file = open(temporary, DELETE);
    return file.isOpen() &&
           SetFileInformationByHandle(file.handle(), renameInformationEx, buffer.data(),
                                      static_cast<DWORD>(buffer.size())) != 0;
}

bool moveOver(const fs::path& temporary, const fs::path& target) {
    return MoveFileExW(temporary.c_str(), target.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

void flush(const SystemFile& file, const fs::path& name) {
    if (FlushFileBuffers(file.handle()) == 0) {
        throwSystemError(name);
    }
}

}  // namespace

FileReplacement::State::State(fs::path named, fs::path target)
    : name(std::move(named)),
      targetPath(std::move(target)),
      temporaryPath(targetPath.parent_path() /
                    (L"." + targetPath.filename().native() + L".lapwing-new")) {}

FileReplacement::State::~State() {
    if (temporary.isOpen() && !committed) {
        DeleteFileW(temporaryPath.c_str());
    }
}

FileReplacement::FileReplacement(const fs::path& file)
    : state(std::make_unique<State>(file, resolveLinks(file))) {
    requireRegularFile(state->targetPath, file);
    state->temporary = lockTemporary(state->temporaryPath, file);
    if (SetEndOfFile(state->temporary.handle()) == 0) {
        throwSystemError(file);
    }
    const DWORD attributes = attributesOf(state->targetPath, file);
    state->exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (state->exists && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        throwSystemError(file, ERROR_ACCESS_DENIED);
    }
}

FileReplacement::~FileReplacement() = default;

bool FileReplacement::targetExists() const {
    return state->exists;
}

void FileReplacement::write(std::string_view bytes) {
    writeAll(state->temporary, bytes, state->name);
}

void FileReplacement::commit() {
    flush(state->temporary, state->name);
    const bool renamed = retryWhile({ERROR_SHARING_VIOLATION, ERROR_ACCESS_DENIED}, [this] {
        return renameWithPosixSemantics(state->temporaryPath, state->targetPath) ||
               moveOver(state->temporaryPath, state->targetPath);
    });
    if (!renamed) {
        throwSystemError(state->name);
    }
    state->committed = true;
    flush(state->temporary, state->name);
}

}  // namespace lapwing
