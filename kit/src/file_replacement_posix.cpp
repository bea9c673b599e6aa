#include "file_replacement.h"

#include "system_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace lapwing {

namespace fs = std::filesystem;

struct FileReplacement::State {
    State(fs::path named, const fs::path& target);
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State();

    [[nodiscard]] std::optional<struct stat> statusOf(const fs::path& entry) const;
    [[nodiscard]] std::optional<struct stat> statusOfTarget() const;
    [[nodiscard]] SystemFile openTemporary() const;
    [[nodiscard]] bool isTemporary(const SystemFile& opened) const;
    void lock();
    void takeOver(const struct stat& old) const;

    fs::path name;
    fs::path targetEntry;
    fs::path temporaryEntry;
    SystemFile folder;
    SystemFile temporary;
    mode_t creationMode = 0666;
    bool exists = false;
    bool committed = false;
};

namespace {

fs::path resolveLinks(const fs::path& file) {
    constexpr int mostLinks = 40;
    std::error_code error;
    fs::path target = file;
    for (int links = 0; fs::is_symlink(fs::symlink_status(target, error)); ++links) {
        const fs::path destination = fs::read_symlink(target, error);
        if (error || links == mostLinks) {
            throwSystemError(file, error ? error.value() : ELOOP);
        }
        target = target.parent_path() / destination;
    }
    return target;
}

fs::path folderOf(const fs::path& target) {
    return target.has_parent_path() ? target.parent_path() : fs::path(".");
}

void lockFile(const SystemFile& file, const fs::path& name) {
    while (::flock(file.handle(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            throwSystemError(name);
        }
    }
}

struct stat statusOfOpen(const SystemFile& file, const fs::path& name) {
    struct stat status {};
    if (::fstat(file.handle(), &status) != 0) {
        throwSystemError(name);
    }
    return status;
}

// What is not empty was left by a process that died. It may be a link that somebody made to another
// file, or be open elsewhere.
bool isFresh(const SystemFile& file, const fs::path& name) {
    const struct stat status = statusOfOpen(file, name);
    const bool isWritable = (::fcntl(file.handle(), F_GETFL) & O_ACCMODE) == O_RDWR;
    return isWritable && S_ISREG(status.st_mode) && status.st_size == 0;
}

}  // namespace

FileReplacement::State::State(fs::path named, const fs::path& target)
    : name(std::move(named)),
      targetEntry(target.filename()),
      temporaryEntry("." + targetEntry.string() + ".lapwing-new"),
      folder(::open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (!folder.isOpen()) {
        throwSystemError(name);
    }
}

FileReplacement::State::~State() {
    if (!temporary.isOpen()) {
        return;
    }
    if (!committed) {
        ::unlinkat(folder.handle(), temporaryEntry.c_str(), 0);
    }
    // A child that was forked meanwhile has the file open, too.
    ::flock(temporary.handle(), LOCK_UN);
}

std::optional<struct stat> FileReplacement::State::statusOf(const fs::path& entry) const {
    struct stat status {};
    if (::fstatat(folder.handle(), entry.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return status;
    }
    if (errno != ENOENT) {
        throwSystemError(name);
    }
    return std::nullopt;
}

// A path that ends in a slash has an empty last name.
std::optional<struct stat> FileReplacement::State::statusOfTarget() const {
    std::optional<struct stat> status = statusOf(targetEntry);
    if (targetEntry.empty() || (status && !S_ISREG(status->st_mode))) {
        throw std::invalid_argument(displayName(name) + ": not a regular file");
    }
    return status;
}

// The temporary file of another user can be waited for and removed, though not written.
SystemFile FileReplacement::State::openTemporary() const {
    constexpr int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const auto open = [this](int access) {
        return SystemFile(
            ::openat(folder.handle(), temporaryEntry.c_str(), access | flags, creationMode));
    };
    SystemFile opened = open(O_RDWR | O_CREAT);
    if (!opened.isOpen() && errno == EACCES) {
        opened = open(O_RDONLY);
    }
    if (!opened.isOpen() && errno == ENOENT) {
        opened = open(O_RDWR | O_CREAT);
    }
    if (!opened.isOpen()) {
        const int problem = errno;
        const bool isInTheWay = problem == ELOOP || problem == EISDIR;
        throwSystemError(isInTheWay ? name.parent_path() / temporaryEntry : name, problem);
    }
    return opened;
}

bool FileReplacement::State::isTemporary(const SystemFile& opened) const {
    const std::optional<struct stat> found = statusOf(temporaryEntry);
    const struct stat status = statusOfOpen(opened, name);
    return found && found->st_dev == status.st_dev && found->st_ino == status.st_ino;
}

void FileReplacement::State::lock() {
    for (;;) {
        SystemFile opened = openTemporary();
        lockFile(opened, name);
        if (!isTemporary(opened)) {
            continue;
        }
        if (isFresh(opened, name)) {
            temporary = std::move(opened);
            return;
        }
        if (::unlinkat(folder.handle(), temporaryEntry.c_str(), 0) != 0 && errno != ENOENT) {
            throwSystemError(name);
        }
    }
}

// Only a privileged process can give a file away. A new owner clears bits of the mode. If the group
// stays another one, it gets no access.
void FileReplacement::State::takeOver(const struct stat& old) const {
    const auto give = [this, &old](uid_t owner) {
        return ::fchown(temporary.handle(), owner, old.st_gid) == 0;
    };
    static_cast<void>(give(old.st_uid) || give(static_cast<uid_t>(-1)));
    const struct stat now = statusOfOpen(temporary, name);
    constexpr mode_t permissions = 07777;
    const mode_t withheld = now.st_gid == old.st_gid ? 0 : S_IRWXG;
    const mode_t mode = old.st_mode & permissions & ~withheld;
    if ((now.st_mode & permissions) != mode && ::fchmod(temporary.handle(), mode) != 0) {
        throwSystemError(name);
    }
}

FileReplacement::FileReplacement(const fs::path& file)
    : state(std::make_unique<State>(file, resolveLinks(file))) {
    if (const std::optional<struct stat> old = state->statusOfTarget()) {
        state->creationMode =
            (old->st_mode & 0666U) | 0600U;  // never more readable than the target
    }
    state->lock();
    if (const std::optional<struct stat> old = state->statusOfTarget()) {
        state->exists = true;
        state->takeOver(*old);
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
    if (::fsync(state->temporary.handle()) != 0) {
        throwSystemError(state->name);
    }
    const int folder = state->folder.handle();
    if (::renameat(folder, state->temporaryEntry.c_str(), folder, state->targetEntry.c_str()) !=
        0) {
        throwSystemError(state->name);
    }
    state->committed = true;
    // Some file systems have no flushing of folders.
    if (::fsync(folder) != 0 && errno != EINVAL) {
        throwSystemError(state->name);
    }
}

}  // namespace lapwing
