#include "file_replacement.h"

#include "file_support.h"
#include "system_file.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <system_error>
#include <thread>

#ifndef _WIN32
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
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
    std::string contents;
    std::string block(10'000, '\0');
    while (const std::size_t count = input.read(block.data(), block.size())) {
        contents.append(block, 0, count);
    }
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
    for (const char* target : {"runs", "runs/", "runs/."}) {
        EXPECT_THROW(replace(folder / target, "new"), std::invalid_argument) << target;
    }
    EXPECT_EQ(folder.entries(), Lines{"runs"});
    EXPECT_TRUE(fs::is_empty(folder / "runs"));
}

TEST(FileReplacement, ShowsReadersOneWholeFileOrTheOther) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    const std::string contents[] = {std::string(100'000, 'a'), std::string(200'000, 'b')};
    replace(file, contents[0]);
    const auto writer = std::async(std::launch::async, [&] {
        for (int round = 0; round < 20; ++round) {
            replace(file, contents[round % 2]);
        }
    });
    while (writer.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        const std::string seen = readAll(file);
        EXPECT_TRUE(seen == contents[0] || seen == contents[1]) << seen.size();
    }
}

TEST(FileReplacement, WaitsForAnotherProcessUntilItDies) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    std::future<int> holder = startProcess("hold", file, 50'000);
    while (!fs::exists(temporaryOf(file)) || fs::file_size(temporaryOf(file)) == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_FALSE(fs::exists(folder / "runs.json.dying"));
    replace(file, "new");
    EXPECT_EQ(contentsOf(file), "new");
    EXPECT_EQ(folder.entries(), (Lines{"runs.json", "runs.json.dying"}));
    EXPECT_EQ(holder.get(), 0);
}

#ifndef _WIN32

// What the system was asked for, and which of it fails.
Lines calls;
std::string failing;

template <class Result, class... Arguments>
Result call(const std::string& what, const char* name, Arguments... arguments) {
    calls.push_back(what);
    errno = ENOSPC;
    return what == failing
               ? -1
               : reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" int fsync(int file) {
    struct stat status {};
    fstat(file, &status);
    return call<int>(S_ISDIR(status.st_mode) ? "flush folder" : "flush file", "fsync", file);
}

extern "C" ssize_t write(int file, const void* bytes, size_t size) {
    return call<ssize_t>("write", "write", file, bytes, size);
}

extern "C" int renameat(int from, const char* name, int to, const char* newName) noexcept {
    return call<int>("rename", "renameat", from, name, to, newName);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace {

struct WithoutPrivileges {
    WithoutPrivileges() { EXPECT_EQ(seteuid(user == 0 ? 65534 : user), 0); }
    ~WithoutPrivileges() { EXPECT_EQ(seteuid(user), 0); }

    const uid_t user = geteuid();
};

std::string errorOfReplacing(const fs::path& file, const char* failingCall = "") {
    std::string message = "none";
    failing = failingCall;
    try {
        replace(file, "new");
    } catch (const std::system_error& error) {
        message = error.what();
    }
    failing.clear();
    return message;
}

TEST(FileReplacement, LeavesTheOldFileWhenTheSystemRefuses) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    const auto error = [](const fs::path& name, int reason) {
        return name.string() + ": " + std::strerror(reason);
    };
    fill(file, "old");
    for (const char* call : {"write", "flush file", "rename"}) {
        EXPECT_EQ(errorOfReplacing(file, call), error(file, ENOSPC)) << call;
    }
    fs::permissions(folder.path, fs::perms(0555));
    {
        const WithoutPrivileges scope;
        EXPECT_EQ(errorOfReplacing(file), error(file, EACCES));
    }
    fs::permissions(folder.path, fs::perms(0777));
    EXPECT_EQ(contentsOf(file), "old");
    EXPECT_EQ(folder.entries(), Lines{"runs.json"});
    EXPECT_EQ(errorOfReplacing(file, "flush folder"), error(file, ENOSPC));
    EXPECT_EQ(errorOfReplacing(folder / "no/file"), error(folder / "no/file", ENOENT));
}

TEST(FileReplacement, FlushesTheFileBeforeAndTheFolderAfterTheRename) {
    const TemporaryFolder folder;
    calls.clear();
    replace(folder / "runs.json", "new");
    EXPECT_EQ(calls, (Lines{"write", "flush file", "rename", "flush folder"}));
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
}

TEST(FileReplacement, RefusesPipesDevicesAndLoops) {
    const TemporaryFolder folder;
    mkfifo((folder / "pipe").c_str(), 0666);
    fs::create_symlink("loop", folder / "loop");
    EXPECT_THROW(replace(folder / "pipe", "new"), std::invalid_argument);
    EXPECT_THROW(replace("/dev/null", "new"), std::invalid_argument);
    EXPECT_THROW(replace(folder / "loop", "new"), std::system_error);
    EXPECT_EQ(folder.entries(), (Lines{"loop", "pipe"}));
}

// It may be a link that somebody made to another file, or belong to another user.
TEST(FileReplacement, DoesNotWriteToWhatItFindsInPlaceOfItsTemporaryFile) {
    const TemporaryFolder folder;
    const fs::path file = folder / "runs.json";
    fill(folder / "precious", "precious");
    fs::create_hard_link(folder / "precious", temporaryOf(file));
    const WithoutPrivileges scope;
    replace(file, "new");
    EXPECT_EQ(contentsOf(file), "new");
    mkfifo(temporaryOf(file).c_str(), 0666);
    replace(file, "newer");
    EXPECT_EQ(contentsOf(file), "newer");
    fs::create_symlink("precious", temporaryOf(file));
    EXPECT_THROW(replace(file, "newest"), std::system_error);
    EXPECT_EQ(contentsOf(folder / "precious"), "precious");
}

#endif

}  // namespace
