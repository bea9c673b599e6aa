#include "file_replacement.h"

#include "file_support.h"
#include "support.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

// What the system was asked for, and which of it fails in the next replacement.
std::string calls;
std::string failing;

bool succeeds(const std::string& call) {
    calls += call + ", ";
    errno = ENOSPC;
    return call != failing;
}

}  // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

// Writes the larger half, as the system may.
extern "C" ssize_t write(int file, const void* bytes, size_t size) {
    return succeeds("write") ? syscall(SYS_write, file, bytes, size - size / 2) : -1;
}

extern "C" int fsync(int file) {
    struct stat status {};
    fstat(file, &status);
    return succeeds(S_ISDIR(status.st_mode) ? "flush folder" : "flush file") ? 0 : -1;
}

extern "C" int renameat(int from, const char* name, int to, const char* newName) noexcept {
    const auto rename = [=] { return syscall(SYS_renameat2, from, name, to, newName, 0); };
    return succeeds("rename") ? static_cast<int>(rename()) : -1;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace {

using FileReplacement = InNewFolder;

// Without the privileges of a user to whom the system refuses nothing.
std::string errorOfReplacing(const fs::path& file) {
    const uid_t user = geteuid();
    EXPECT_EQ(seteuid(user == 0 ? 65534 : user), 0);
    std::string error = messageOf<std::exception>([&] {
        lapwing::FileReplacement replacement(file);
        replacement.write("new");
        replacement.commit();
    });
    EXPECT_EQ(seteuid(user), 0);
    failing.clear();
    return error;
}

std::string errorWith(const fs::path& file, int reason) {
    return file.string() + ": " + std::strerror(reason);
}

TEST_F(FileReplacement, LeavesTheOldFileWhenTheSystemRefuses) {
    fill("runs.json", "old");
    for (const char* call : {"write", "flush file", "rename"}) {
        failing = call;
        EXPECT_EQ(errorOfReplacing("runs.json"), errorWith("runs.json", ENOSPC)) << call;
    }
    fs::permissions(".", fs::perms(0555));
    EXPECT_EQ(errorOfReplacing("runs.json"), errorWith("runs.json", EACCES));
    fs::permissions(".", fs::perms(0777));
    EXPECT_EQ(errorOfReplacing("none/runs.json"), errorWith("none/runs.json", ENOENT));
    EXPECT_EQ(contentsOf("runs.json"), "old");
    EXPECT_EQ(entries(), Names{"runs.json"});
}

TEST_F(FileReplacement, FlushesTheFileBeforeAndTheFolderAfterTheRename) {
    calls.clear();
    failing = "flush folder";
    EXPECT_EQ(errorOfReplacing("runs.json"), errorWith("runs.json", ENOSPC));
    EXPECT_EQ(calls, "write, write, flush file, rename, flush folder, ");
}

TEST_F(FileReplacement, FollowsLinksAndKeepsTheMode) {
    fs::create_directory("below");
    fs::create_symlink("below/second", "first");
    fs::create_symlink("../target", "below/second");
    fs::create_symlink("loop", "loop");
    EXPECT_EQ(errorOfReplacing("first"), "nothing was thrown");
    for (const auto mode : {fs::perms(0640), fs::perms(0444), fs::perms(0777)}) {
        fs::permissions("target", mode);
        EXPECT_EQ(errorOfReplacing("first"), "nothing was thrown");
        EXPECT_EQ(fs::status("target").permissions(), mode);
    }
    EXPECT_EQ(contentsOf("target"), "new");
    EXPECT_EQ(fs::read_symlink("first"), "below/second");
    EXPECT_EQ(fs::read_symlink("below/second"), "../target");
    EXPECT_EQ(errorOfReplacing("loop"), errorWith("loop", ELOOP));
    EXPECT_EQ(entries(), (Names{"below", "first", "loop", "target"}));
}

// The leftover may be a link that somebody made to another file, or belong to another user.
TEST_F(FileReplacement, DoesNotWriteToWhatItFindsInPlaceOfItsTemporaryFile) {
    const char* const temporary = ".runs.json.lapwing-new";
    fill("precious", "precious");
    fs::create_hard_link("precious", temporary);
    EXPECT_EQ(errorOfReplacing("runs.json"), "nothing was thrown");
    mkfifo(temporary, 0666);
    EXPECT_EQ(errorOfReplacing("runs.json"), "nothing was thrown");
    EXPECT_EQ(contentsOf("runs.json"), "new");
    fs::create_symlink("precious", temporary);
    EXPECT_EQ(errorOfReplacing("runs.json"), errorWith(temporary, ELOOP));
    EXPECT_EQ(contentsOf("precious"), "precious");
}

}  // namespace
