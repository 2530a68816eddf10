#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "platform/scratch_folder.h"

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
