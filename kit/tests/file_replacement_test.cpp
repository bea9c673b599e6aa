#include "file_replacement.h"

#include "file_support.h"
#include "system_file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#ifndef _WIN32
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>
#endif

namespace fs = std::filesystem;

namespace {

void replace(const fs::path& file, const std::string& contents) {
    lapwing::FileReplacement replacement(file);
    replacement.write(contents);
    replacement.commit();
}

std::string readAll(const fs::path& file) {
    lapwing::InputFile input(file);
    std::string contents(1'000'000, '\0');
    std::size_t size = 0;
    while (const std::size_t count = input.read(&contents[size], contents.size() - size)) {
        size += count;
    }
    contents.resize(size);
    return contents;
}

TEST(FileReplacement, ReplacesOnCommitAndLeavesNothingElse) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    fill(temporaryOf(file), "left by a process that was killed, and longer");
    replace(file, "first");
    EXPECT_EQ(contentsOf(file), "first");
    {
        lapwing::FileReplacement dropped(file);
        EXPECT_TRUE(dropped.targetExists());
        dropped.write("dropped");
        EXPECT_EQ(contentsOf(file), "first");
    }
    EXPECT_EQ(contentsOf(file), "first");
    replace(file, "second");
    EXPECT_EQ(contentsOf(file), "second");
    EXPECT_FALSE(lapwing::FileReplacement(folder / "other.json").targetExists());
    EXPECT_EQ(folder.entries(), Lines{"runs.json"});
}

TEST(FileReplacement, RefusesAFolder) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "runs");
    for (const fs::path& target : {folder / "runs", folder / "runs/", folder / "runs/."}) {
        EXPECT_THROW(replace(target, "new"), std::invalid_argument) << target;
    }
    EXPECT_EQ(folder.entries(), Lines{"runs"});
    EXPECT_TRUE(fs::is_empty(folder / "runs"));
}

TEST(FileReplacement, ShowsReadersOneWholeFileOrTheOther) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    const std::string contents[] = {std::string(100'000, 'a'), std::string(200'000, 'b')};
    replace(file, contents[0]);
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int round = 0; round < 20; ++round) {
            replace(file, contents[round % 2]);
        }
        done = true;
    });
    while (!done) {
        const std::string seen = readAll(file);
        EXPECT_TRUE(seen == contents[0] || seen == contents[1]) << seen.size();
    }
    writer.join();
}

TEST(FileReplacement, WaitsForAnotherProcessUntilItDies) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    fill(file, "old");
    OtherProcess holder({"hold", file.string()});
    waitFor([&] { return !contentsOf(temporaryOf(file)).empty(); });
    std::atomic<bool> dead{false};
    std::thread waiter([&] {
        lapwing::FileReplacement replacement(file);
        EXPECT_TRUE(dead);
        replacement.write("new");
        replacement.commit();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    dead = true;
    holder.kill();
    waiter.join();
    EXPECT_EQ(contentsOf(file), "new");
    EXPECT_EQ(folder.entries(), Lines{"runs.json"});
}

#ifndef _WIN32

// What the system was asked for, and which of it fails.
Lines calls;
std::string failing;

bool isCalled(const std::string& call) {
    calls.push_back(call);
    errno = EIO;
    return call != failing;
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int fsync(int file) {
    struct stat status {};
    fstat(file, &status);
    return isCalled(S_ISDIR(status.st_mode) ? "flush folder" : "flush file")
               ? next<int(int)>("fsync")(file)
               : -1;
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int renameat(int from, const char* name, int to, const char* newName) noexcept {
    return isCalled("rename")
               ? next<int(int, const char*, int, const char*)>("renameat")(from, name, to, newName)
               : -1;
}

namespace {

class WithoutPrivileges {
public:
    WithoutPrivileges() {
        if (user == 0) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
    ~WithoutPrivileges() { EXPECT_EQ(seteuid(user), 0); }

private:
    uid_t user = geteuid();
};

// Files of more than 4096 bytes fail, as all do on a full disk.
class FullDisk {
public:
    FullDisk() {
        getrlimit(RLIMIT_FSIZE, &old);
        const rlimit small = {4096, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, handler);
    }

private:
    rlimit old{};
    void (*handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

std::string errorOfReplacing(const fs::path& file) {
    try {
        replace(file, std::string(100'000, 'x'));
        return "none";
    } catch (const std::system_error& error) {
        return error.what();
    }
}

std::string errorOnFullDisk(const fs::path& file) {
    const FullDisk full;
    return errorOfReplacing(file);
}

std::string errorInReadOnlyFolder(const fs::path& file) {
    fs::permissions(file.parent_path(), fs::perms(0555));
    auto error = [&file] {
        const WithoutPrivileges scope;
        return errorOfReplacing(file);
    }();
    fs::permissions(file.parent_path(), fs::perms(0777));
    return error;
}

std::string errorWith(const char* call, const fs::path& file) {
    failing = call;
    std::string error = errorOfReplacing(file);
    failing.clear();
    return error;
}

TEST(FileReplacement, LeavesTheOldFileWhenTheSystemRefuses) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    fill(file, "old");
    const struct {
        int reason;
        std::string error;
    } cases[] = {
        {EFBIG, errorOnFullDisk(file)},
        {EACCES, errorInReadOnlyFolder(file)},
        {EIO, errorWith("flush file", file)},
        {EIO, errorWith("rename", file)},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(each.error, file.string() + ": " + std::strerror(each.reason));
    }
    EXPECT_EQ(contentsOf(file), "old");
    EXPECT_EQ(folder.entries(), Lines{"runs.json"});
    EXPECT_EQ(errorWith("flush folder", file), file.string() + ": " + std::strerror(EIO));
    EXPECT_EQ(errorOfReplacing(folder / "none/runs.json"),
              (folder / "none/runs.json: ").string() + std::strerror(ENOENT));
}

TEST(FileReplacement, FlushesTheFileBeforeAndTheFolderAfterTheRename) {
    const TemporaryFolder folder;
    calls.clear();
    replace(folder / "runs.json", "new");
    EXPECT_EQ(calls, (Lines{"flush file", "rename", "flush folder"}));
}

TEST(FileReplacement, FollowsLinksAndKeepsTheMode) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "below");
    fs::create_symlink("below/second", folder / "first");
    fs::create_symlink("../target", folder / "below/second");
    replace(folder / "first", "made");
    EXPECT_EQ(contentsOf(folder / "target"), "made");
    for (const auto mode : {fs::perms(0640), fs::perms(0444), fs::perms(0777)}) {
        fs::permissions(folder / "target", mode);
        replace(folder / "first", "replaced");
        EXPECT_EQ(fs::status(folder / "target").permissions(), mode);
    }
    EXPECT_EQ(contentsOf(folder / "target"), "replaced");
    EXPECT_EQ(fs::read_symlink(folder / "first"), "below/second");
    EXPECT_EQ(fs::read_symlink(folder / "below/second"), "../target");
    EXPECT_EQ(folder.entries(), (Lines{"below", "first", "target"}));
}

TEST(FileReplacement, RefusesPipesDevicesAndLoops) {
    const TemporaryFolder folder;
    mkfifo((folder / "pipe").c_str(), 0666);
    fs::create_symlink("loop", folder / "loop");
    EXPECT_THROW(replace(folder / "pipe", "new"), std::invalid_argument);
    EXPECT_THROW(replace("/dev/null", "new"), std::invalid_argument);
    EXPECT_EQ(errorOfReplacing(folder / "loop"),
              (folder / "loop: ").string() + std::strerror(ELOOP));
    EXPECT_EQ(folder.entries(), (Lines{"loop", "pipe"}));
}

// The leftover may be a link that somebody made to another file, or belong to another user.
TEST(FileReplacement, DoesNotWriteToWhatItFindsInPlaceOfItsTemporaryFile) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    fill(folder / "precious", "precious");
    fs::create_hard_link(folder / "precious", temporaryOf(file));
    const WithoutPrivileges scope;
    replace(file, "new");
    EXPECT_EQ(contentsOf(file), "new");
    EXPECT_EQ(contentsOf(folder / "precious"), "precious");
    mkfifo(temporaryOf(file).c_str(), 0666);
    replace(file, "newer");
    EXPECT_EQ(contentsOf(file), "newer");
    fs::create_symlink("precious", temporaryOf(file));
    EXPECT_EQ(errorOfReplacing(file), file.string() + ": " + std::strerror(ELOOP));
    EXPECT_EQ(contentsOf(folder / "precious"), "precious");
}

#endif

}  // namespace
