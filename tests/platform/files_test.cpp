#include "platform/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fstream>

#include "platform/scratch_folder.h"
#include "tests/base/failing_allocation.h"

namespace {

// What the disk was asked for, in turn: "sync NAME" and "rename NAME NAME".
struct Disk {
    std::vector<std::string> asked;
    bool isFailing = false;  // no sync succeeds
} disk;

std::string lastName(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

}  // namespace

// This program's own in place of the system's, so that the order is seen and a disk can fail.
extern "C" int fsync(int file) {
    char path[4096] = {};
    const ssize_t length = readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path - 1);
    disk.asked.push_back("sync " + (length < 0 ? std::string("?") : lastName(path)));
    if (disk.isFailing) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, file));
}

extern "C" int rename(const char* from, const char* to) noexcept {
    disk.asked.push_back("rename " + lastName(from) + " " + lastName(to));
    return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace vantoric::platform {
namespace {

using platform::ScratchFolder;
using Bytes = std::vector<std::uint8_t>;

Bytes contents(const std::string& path) {
    Bytes bytes;
    EXPECT_TRUE(readFile(path, bytes));
    return bytes;
}

std::vector<std::string> names(const std::string& folder) {
    std::vector<FolderEntry> entries;
    EXPECT_TRUE(listFolder(folder, entries));
    std::vector<std::string> all;
    for (const FolderEntry& entry : entries) all.push_back(entry.name + (entry.isFolder ? "/" : ""));
    std::sort(all.begin(), all.end());
    return all;
}

TEST(Files, AWrittenFileReadsBackWhole) {
    const ScratchFolder folder;
    Bytes bytes(200000);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
    ASSERT_TRUE(writeFile(folder / "a", bytes.data(), bytes.size()));
    EXPECT_EQ(contents(folder / "a"), bytes);
}

TEST(Files, AnEmptyFileIsAFile) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "empty", nullptr, 0));
    EXPECT_TRUE(exists(folder / "empty"));
    EXPECT_TRUE(contents(folder / "empty").empty());
}

TEST(Files, WritingReplacesAndLeavesNothingBeside) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a", "long text", 9));
    ASSERT_TRUE(writeFile(folder / "a", "x", 1));
    EXPECT_EQ(contents(folder / "a"), Bytes{'x'});
    EXPECT_EQ(names(folder.path()), std::vector<std::string>{"a"});
}

TEST(Files, ReplacingKeepsTheAccessRights) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a", "1", 1));
    ASSERT_EQ(chmod((folder / "a").c_str(), 0640), 0);
    ASSERT_TRUE(writeFile(folder / "a", "2", 1));
    struct stat status{};
    ASSERT_EQ(stat((folder / "a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST(Files, ASymbolicLinkStaysAndItsTargetIsWritten) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "real", "1", 1));
    ASSERT_EQ(symlink("real", (folder / "link").c_str()), 0);
    ASSERT_TRUE(writeFile(folder / "link", "2", 1));
    EXPECT_EQ(contents(folder / "real"), Bytes{'2'});
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
}

TEST(Files, WhatIsWrittenIsOnDiskBeforeItReplacesAnything) {
    const ScratchFolder folder;
    ASSERT_TRUE(makeFolder(folder / "patches"));
    disk = {};
    ASSERT_TRUE(writeFile(folder / "patches/a", "1", 1));
    ASSERT_EQ(disk.asked.size(), 3u);
    const std::string beside = disk.asked[0].substr(sizeof "sync");
    EXPECT_EQ(disk.asked[0], "sync " + beside);
    EXPECT_EQ(disk.asked[1], "rename " + beside + " a");
    EXPECT_EQ(disk.asked[2], "sync patches") << "and so is its name";
}

TEST(Files, ADiskThatFailsLeavesTheOldFile) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a", "old", 3));
    disk = {{}, true};
    EXPECT_FALSE(writeFile(folder / "a", "new one", 7));
    EXPECT_FALSE(writeFile(folder / "b", "new one", 7));
    disk = {};
    EXPECT_EQ(contents(folder / "a"), (Bytes{'o', 'l', 'd'}));
    EXPECT_EQ(names(folder.path()), std::vector<std::string>{"a"});
}

// Ends the process with 0 if a write fails for want of room: no file of it may pass 100 bytes.
[[noreturn]] void writeWithoutRoom(const std::string& path) {
    const rlimit limit{100, 100};
    std::signal(SIGXFSZ, SIG_IGN);
    const std::string text(1000, 'x');
    _exit(setrlimit(RLIMIT_FSIZE, &limit) == 0 && !writeFile(path, text.data(), text.size()) ? 0 : 1);
}

TEST(Files, WithoutRoomTheOldFileStays) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a", "old", 3));
    EXPECT_EXIT(writeWithoutRoom(folder / "a"), testing::ExitedWithCode(0), "");
    EXPECT_EQ(contents(folder / "a"), (Bytes{'o', 'l', 'd'}));
    EXPECT_EQ(names(folder.path()), std::vector<std::string>{"a"});
}

TEST(Files, ANameMayBeAsLongAsTheSystemAllows) {
    const ScratchFolder folder;
    const std::string longest(255, 'n');
    ASSERT_TRUE(writeFile(folder / longest, "1", 1));
    ASSERT_TRUE(writeFile(folder / longest, "2", 1));
    EXPECT_EQ(contents(folder / longest), Bytes{'2'});
    EXPECT_EQ(names(folder.path()), std::vector<std::string>{longest});
    EXPECT_FALSE(writeFile(folder / (longest + "n"), "1", 1));
    EXPECT_EQ(names(folder.path()), std::vector<std::string>{longest});
}

TEST(Files, APathMayBeLongerThanAName) {
    const ScratchFolder folder;
    std::string deep = folder.path();
    for (int i = 0; i < 12; ++i) deep += std::string(200, static_cast<char>('a' + i)) + "/";
    ASSERT_TRUE(makeFolder(deep));
    ASSERT_TRUE(writeFile(deep + "a", "1", 1));
    EXPECT_EQ(contents(deep + "a"), Bytes{'1'});
    EXPECT_EQ(names(deep), std::vector<std::string>{"a"});
    EXPECT_TRUE(removeFile(deep + "a"));
}

TEST(Files, WhatACrashLeftIsNotInTheWay) {
    const ScratchFolder folder;
    disk = {};
    ASSERT_TRUE(writeFile(folder / "a", "1", 1));
    // The number in the name counts up: the next ten are taken.
    const std::string used = disk.asked[0].substr(sizeof "sync");
    const std::size_t number = used.find_last_of('-') + 1;
    const int count = std::stoi(used.substr(number));
    for (int i = 1; i <= 10; ++i) {
        std::ofstream(folder / (used.substr(0, number) + std::to_string(count + i) + ".tmp")) << "left";
    }
    ASSERT_TRUE(writeFile(folder / "a", "2", 1));
    EXPECT_EQ(contents(folder / "a"), Bytes{'2'});
    EXPECT_EQ(names(folder.path()).size(), 11u) << "what was there stays";
}

// Ends the process with the result of a write by an ordinary user, whoever runs the test.
[[noreturn]] void writeAsOrdinaryUser(const std::string& path) {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
    _exit(writeFile(path, "2", 1) ? 1 : 0);
}

TEST(Files, AWriteProtectedFileOrFolderIsRefusedAndKept) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a", "1", 1));
    ASSERT_EQ(chmod((folder / "a").c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    EXPECT_EXIT(writeAsOrdinaryUser(folder / "a"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(writeAsOrdinaryUser(folder / "new"), testing::ExitedWithCode(1), "");
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    EXPECT_EXIT(writeAsOrdinaryUser(folder / "newer"), testing::ExitedWithCode(0), "");
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(contents(folder / "a"), Bytes{'1'});
}

TEST(Files, WritingFailsWithoutAFolderOrOntoOne) {
    const ScratchFolder folder;
    EXPECT_FALSE(writeFile(folder / "missing/a", "1", 1));
    ASSERT_TRUE(makeFolder(folder / "sub"));
    EXPECT_FALSE(writeFile(folder / "sub", "1", 1));
    EXPECT_FALSE(writeFile("", "1", 1));
    EXPECT_EQ(names(folder.path()), std::vector<std::string>{"sub/"});
}

TEST(Files, ReadingFailsForWhatIsNoReadableFile) {
    const ScratchFolder folder;
    ASSERT_TRUE(makeFolder(folder / "sub"));
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    Bytes bytes{1, 2, 3};
    for (const std::string& path : {folder / "missing", folder / "sub", folder / "pipe", std::string(), std::string(5000, 'x')}) {
        EXPECT_FALSE(readFile(path, bytes)) << path;
        EXPECT_TRUE(bytes.empty());
    }
}

TEST(Files, AReaderTellsWhatIsMissingFromWhatCannotBeRead) {
    const ScratchFolder folder;
    ASSERT_TRUE(makeFolder(folder / "sub"));
    ASSERT_TRUE(writeFile(folder / "a", "12345", 5));
    Bytes bytes;
    EXPECT_EQ(tryReadFile(folder / "missing", bytes), FileRead::missing);
    EXPECT_EQ(tryReadFile(folder / "missing/a", bytes), FileRead::missing);
    EXPECT_EQ(tryReadFile(folder / "sub", bytes), FileRead::unreadable);
    EXPECT_EQ(tryReadFile(folder / "a", bytes, 4), FileRead::tooLarge);
    EXPECT_EQ(tryReadFile("/proc/self/status", bytes, 100), FileRead::tooLarge);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(tryReadFile(folder / "a", bytes, 5), FileRead::done);
}

TEST(Files, AFileAboveTheLimitIsRefused) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a", "12345", 5));
    Bytes bytes;
    EXPECT_TRUE(readFile(folder / "a", bytes, 5));
    EXPECT_FALSE(readFile(folder / "a", bytes, 4));
    EXPECT_TRUE(bytes.empty());
}

TEST(Files, AFileWhoseSizeIsNotToldIsStillBounded) {
    Bytes bytes;
    // The system gives this file a size of 0 and any amount of text.
    EXPECT_TRUE(readFile("/proc/self/status", bytes));
    EXPECT_GT(bytes.size(), 100u);
    EXPECT_FALSE(readFile("/proc/self/status", bytes, 100));
}

TEST(Files, AListingTellsFilesFromFoldersAndOmitsDots) {
    const ScratchFolder folder;
    ASSERT_TRUE(makeFolder(folder / "deep/er"));
    ASSERT_TRUE(writeFile(folder / "a.fxp", "1", 1));
    EXPECT_EQ(names(folder.path()), (std::vector<std::string>{"a.fxp", "deep/"}));
    std::vector<FolderEntry> entries{{"old", false}};
    EXPECT_FALSE(listFolder(folder / "missing", entries));
    EXPECT_TRUE(entries.empty());
    EXPECT_FALSE(listFolder(folder / "a.fxp", entries));
}

TEST(Files, AListingThatThereIsNoMemoryForThrowsAndEndsNothing) {
    const ScratchFolder folder;
    std::vector<std::string> all;
    for (int i = 0; i < 40; ++i) all.push_back("a name that fits into no string without memory " + std::to_string(10 + i));
    for (const std::string& name : all) ASSERT_TRUE(writeFile(folder / name, "1", 1));
    std::vector<FolderEntry> entries;
    const std::string path = folder.path();
    const int failures = test::failuresUntilMade([&] { EXPECT_TRUE(listFolder(path, entries)); }, [] {});
    EXPECT_GT(failures, 10);
    EXPECT_EQ(entries.size(), all.size());
    EXPECT_EQ(names(path), all);
}

TEST(Files, AFileThatIsBeingMadeIsNotMadeOnceMore) {
    const ScratchFolder folder;
    const std::string path = folder / "take";
    std::FILE* const first = makeFile(path);
    ASSERT_NE(first, nullptr);
    std::fputs("an evening", first);
    std::fflush(first);
    errno = 0;
    EXPECT_EQ(makeFile(path), nullptr);
    EXPECT_NE(errno, 0);
    EXPECT_EQ(std::filesystem::file_size(path), 10u);
    std::fclose(first);
    std::FILE* const second = makeFile(path);
    ASSERT_NE(second, nullptr);
    std::fclose(second);
    EXPECT_EQ(std::filesystem::file_size(path), 0u) << "over the one that was there";
    errno = 0;
    EXPECT_EQ(makeFile(folder / "no folder/take"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Files, AFileGetsAnotherName) {
    const ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "old", "abc", 3));
    EXPECT_TRUE(renameFile(folder / "old", folder / "new"));
    EXPECT_FALSE(exists(folder / "old"));
    EXPECT_EQ(std::filesystem::file_size(folder / "new"), 3u);
    EXPECT_FALSE(renameFile(folder / "old", folder / "new")) << "there is none";
    EXPECT_EQ(std::filesystem::file_size(folder / "new"), 3u);
}

TEST(Files, OnlyFilesAreRemoved) {
    const ScratchFolder folder;
    ASSERT_TRUE(makeFolder(folder / "sub"));
    ASSERT_TRUE(writeFile(folder / "a", "1", 1));
    EXPECT_TRUE(removeFile(folder / "a"));
    EXPECT_FALSE(removeFile(folder / "a"));
    EXPECT_FALSE(removeFile(folder / "sub"));
    EXPECT_TRUE(isFolder(folder / "sub"));
    EXPECT_TRUE(makeFolder(folder / "sub")) << "a folder that is there is fine";
}

}  // namespace
}  // namespace vantoric::platform
