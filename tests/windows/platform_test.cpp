// What `platform` gives on Windows, and what the rooms above need of the system beside it.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "base/doorbell.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "platform/mapped_file.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/settings.h"
#include "platform/user_folders.h"
#include "platform/user_state.h"
#include "platform/web_page.h"
#include "platform/wide_text.h"
#include "tests/base/failing_allocation.h"

namespace vantoric::platform {
namespace {

const std::string spoken =
    "\xc3\x9c"
    "bung \xe9\x9f\xb3 \xf0\x9f\x8e\xb9";  // u with dots, a sign of three bytes and one of four
const std::string broken = "bro\xff\xfeken\xc3";

// A variable of the environment that is another while this stands.
class Environment {
public:
    Environment(const wchar_t* name, const std::string& value) : name_(name) {
        wasSet_ = GetEnvironmentVariableW(name, before_.data(), static_cast<DWORD>(before_.size())) > 0;
        SetEnvironmentVariableW(name, value.empty() ? nullptr : wide(value).c_str());
    }
    ~Environment() { SetEnvironmentVariableW(name_, wasSet_ ? before_.data() : nullptr); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    const wchar_t* name_;
    std::array<wchar_t, 32768> before_{};
    bool wasSet_ = false;
};

// A folder of its own with a name that no code page of one byte holds, empty at the begin.
struct Windows : testing::Test {
    Windows() {
        std::array<wchar_t, MAX_PATH + 1> temporary{};
        GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
        folder = utf8(temporary.data()) + "vantoric " + spoken + " " + std::to_string(processNumber()) + "\\";
        EXPECT_TRUE(makeFolder(folder));
    }
    ~Windows() override {
        for (const std::string& name : names(folder)) removeFile(folder + name);
        RemoveDirectoryW(wide(folder).c_str());
    }
    static std::vector<std::string> names(const std::string& of) {
        std::vector<FolderEntry> entries;
        EXPECT_TRUE(listFolder(of, entries));
        std::vector<std::string> names;
        for (const FolderEntry& entry : entries) names.push_back(entry.name);
        return names;
    }
    static bool put(const std::string& path, const std::string& text) { return writeFile(path, text.data(), text.size()); }
    static std::string textOf(const std::string& path) {
        std::vector<std::uint8_t> bytes;
        return readFile(path, bytes) ? std::string(bytes.begin(), bytes.end()) : "unreadable";
    }
    std::string folder;
};

TEST_F(Windows, TextsAreUtf8OnOneSideOfTheBorderAndUtf16OnTheOther) {
    EXPECT_EQ(wide("\xc3\x9c\xf0\x9f\x8e\xb9"), L"\u00dc\xd83c\xdfb9");
    EXPECT_EQ(utf8(wide(spoken)), spoken);
    EXPECT_EQ(utf8(wide("")), "");
    EXPECT_EQ(utf8(wide(broken)).substr(0, 3), "bro");
    EXPECT_EQ(utf8(std::wstring(1, L'\xd83c')), "\xef\xbf\xbd") << "half a pair";
}

TEST_F(Windows, FilesHaveNamesOfAnySigns) {
    const std::string path = folder + spoken + ".fxp";
    ASSERT_TRUE(put(path, "patch"));
    EXPECT_TRUE(exists(path));
    EXPECT_EQ(textOf(path), "patch");
    EXPECT_EQ(names(folder), std::vector<std::string>{spoken + ".fxp"});
    EXPECT_TRUE(isFolder(folder)) << "with a separator at its end";
    EXPECT_TRUE(isFolder(folder.substr(0, folder.size() - 1)));
    EXPECT_TRUE(removeFile(path));
    EXPECT_FALSE(exists(path));
}

TEST_F(Windows, AListingTellsFilesFromFoldersAndOmitsDots) {
    ASSERT_TRUE(makeFolder(folder + "deep\\er " + spoken));
    ASSERT_TRUE(put(folder + "a.fxp", "1"));
    for (const std::string& named : {folder, folder.substr(0, folder.size() - 1)}) {
        std::vector<FolderEntry> entries;
        ASSERT_TRUE(listFolder(named, entries));
        ASSERT_EQ(entries.size(), 2u) << named;
        for (const FolderEntry& entry : entries) EXPECT_EQ(entry.isFolder, entry.name == "deep") << entry.name;
    }
    EXPECT_EQ(names(folder + "deep"), std::vector<std::string>{"er " + spoken});
    EXPECT_TRUE(names(folder + "deep\\er " + spoken).empty());
    std::vector<FolderEntry> entries{{"old", false}};
    for (const std::string& none : {folder + "missing", folder + "missing\\", folder + "a.fxp", std::string(), folder + broken}) {
        EXPECT_FALSE(listFolder(none, entries)) << none;
        EXPECT_TRUE(entries.empty());
    }
    EXPECT_FALSE(names("C:\\").empty());
    int visited = 0;
    EXPECT_FALSE(readFolder(folder, [&](FolderEntry&&) { return ++visited, false; })) << "ended by who visits";
    EXPECT_EQ(visited, 1);
    RemoveDirectoryW(wide(folder + "deep\\er " + spoken).c_str());
    RemoveDirectoryW(wide(folder + "deep").c_str());
}

TEST_F(Windows, AListingThatThereIsNoMemoryForThrowsAndEndsNothing) {
    std::vector<std::string> all;
    for (int i = 0; i < 40; ++i) all.push_back("a name that fits into no string without memory " + std::to_string(10 + i));
    for (const std::string& name : all) ASSERT_TRUE(put(folder + name, "1"));
    std::vector<FolderEntry> entries;
    const int failures = test::failuresUntilMade([&] { EXPECT_TRUE(listFolder(folder, entries)); }, [] {});
    EXPECT_GT(failures, 10);
    std::vector<std::string> listed = names(folder);
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, all);
}

TEST_F(Windows, ABrokenNameIsANameLikeOthers) {
    for (const std::string& path : {folder + broken, std::string("\xff"), std::string(), folder + std::string(300, 'x')}) {
        exists(path), isFolder(path), removeFile(path);
        std::vector<std::uint8_t> bytes;
        EXPECT_EQ(tryReadFile(path, bytes), FileRead::missing) << path;
        EXPECT_EQ(MappedFile::open(path), nullptr);
    }
    if (put(folder + broken, "x")) {
        EXPECT_EQ(textOf(folder + broken), "x");
    }
}

TEST_F(Windows, AFileIsReplacedAsAWhole) {
    const std::string path = folder + "patch.fxp";
    ASSERT_TRUE(put(path, "old"));
    ASSERT_TRUE(put(path, "new and longer"));
    EXPECT_EQ(textOf(path), "new and longer");
    EXPECT_EQ(names(folder).size(), 1u) << "nothing is left beside it";
    EXPECT_FALSE(put(folder + "none\\patch.fxp", "x"));
    EXPECT_FALSE(put(folder, "x")) << "a folder";
}

TEST_F(Windows, AProtectedFileStays) {
    const std::string path = folder + "mine.fxp";
    ASSERT_TRUE(put(path, "mine"));
    SetFileAttributesW(wide(path).c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(put(path, "yours"));
    EXPECT_EQ(textOf(path), "mine");
    EXPECT_EQ(names(folder).size(), 1u);
    SetFileAttributesW(wide(path).c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Windows, AMappedFileIsRead) {
    const std::string path = folder + spoken + ".wave";
    ASSERT_TRUE(put(path, "0123456789"));
    const auto file = MappedFile::open(path);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->size(), 10u);
    ASSERT_EQ(file->take(3, 4), MappedFile::Result::done);
    EXPECT_TRUE(file->touch(0, 4));
    EXPECT_EQ(std::string(file->data(), file->data() + 4), "3456");
}

TEST_F(Windows, TheUsersFoldersAreTheSystems) {
    const Environment local(L"LOCALAPPDATA", "C:\\Users\\" + spoken + "\\Local"), roaming(L"APPDATA", "D:\\Roaming\\");
    EXPECT_EQ(userDataFolder(), "C:\\Users\\" + spoken + "\\Local\\Vantoric\\");
    EXPECT_EQ(userStateFolder(), userDataFolder() + "State\\");
    EXPECT_EQ(stateFolder(), userStateFolder());
    EXPECT_EQ(userConfigFolder(), "D:\\Roaming\\");
    const Environment none(L"LOCALAPPDATA", "");
    EXPECT_TRUE(userDataFolder().ends_with("\\Vantoric\\")) << "as the system knows it: " << userDataFolder();
    EXPECT_TRUE(isFolder(homeFolder())) << homeFolder();
    EXPECT_TRUE(userMusicFolder().ends_with("\\")) << userMusicFolder();
}

TEST_F(Windows, WhatTheUserMakesGoesIntoAFolderThatCanBeWritten) {
    setDataFolder(folder);
    EXPECT_EQ(ownFolder(), folder);
    EXPECT_EQ(userFolder(), folder + "Vantoric_sounds\\User\\");
    setDataFolder("");
}

TEST_F(Windows, TheModuleKnowsItsFolder) {
    EXPECT_TRUE(exists(moduleFolder() + "test-windows.exe")) << moduleFolder();
    EXPECT_EQ(folderOfModulePath("C:\\a\\b.dll"), "C:\\a\\");
    EXPECT_EQ(installedFolder("C:\\none\\here\\"), "C:\\none\\here\\");
}

TEST_F(Windows, SettingsStandInTheRegistry) {
    for (const std::string& text : {std::string("C:\\new\\table"), std::string(), spoken, std::string("two\nlines")}) {
        ASSERT_TRUE(writeSetting("Test " + spoken, text));
        EXPECT_EQ(readSetting("Test " + spoken), text);
    }
    EXPECT_EQ(readSetting("None of this name"), "");
    EXPECT_FALSE(writeSetting("a=b", "c"));
    EXPECT_FALSE(writeSetting("Large", std::string(70000, 'x')));
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\Orvix\\Vantoric", 0, KEY_WRITE, &key), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(key, wide("Test " + spoken).c_str()), ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(readSetting("Test " + spoken), "");
}

TEST_F(Windows, AProcessIsKnownByItsStart) {
    EXPECT_FALSE(processStart(processNumber()).empty());
    EXPECT_EQ(processStart(processNumber()), processStart(processNumber()));
    EXPECT_EQ(processStart(0x7ffffff0), "");
}

TEST_F(Windows, AnAddressOfAFileHasItsDrive) { EXPECT_EQ(addressOfFile("C:\\a b\\manual.html"), "file:///C:/a%20b/manual.html"); }

// Rung at ever other moments after the other thread has gone to wait, also while it is about to fall asleep.
TEST_F(Windows, NoRingIsLost) {
    using namespace std::chrono;
    constexpr int rounds = 20000;
    Doorbell bell;
    std::atomic<int> heard{0};
    std::thread other([&] {
        for (int i = 1; i <= rounds; ++i) {
            bell.wait();
            heard = i;
        }
    });
    int lost = 0;
    for (int i = 1; i <= rounds; ++i) {
        const auto moment = steady_clock::now() + nanoseconds(i % 400 * 100);
        while (steady_clock::now() < moment) {
        }
        bell.ring();
        const auto patience = steady_clock::now() + seconds(10);
        while (heard != i && lost == 0) {
            std::this_thread::yield();
            if (steady_clock::now() > patience) lost = i;
        }
    }
    if (lost != 0) {  // the other thread would wait for ever
        std::fprintf(stderr, "ring %d was lost\n", lost);
        std::_Exit(1);
    }
    other.join();
}

// Answers the box of a title as a user would, by the number of a button.
class User {
public:
    User(const std::string& title, WPARAM button) : thread_([this, title = wide(title), button] { answer(title, button); }) {}
    ~User() {
        isDone_ = true;
        thread_.join();
    }
    bool hasAnswered() const { return hasAnswered_; }

private:
    void answer(const std::wstring& title, WPARAM button) {
        for (int i = 0; i < 400 && !isDone_; ++i) {
            if (const HWND box = FindWindowW(L"#32770", title.c_str())) {
                hasAnswered_ = true;
                PostMessageW(box, WM_COMMAND, button, 0);
            }
            Sleep(50);
        }
    }
    std::atomic<bool> isDone_{false}, hasAnswered_{false};
    std::thread thread_;
};

TEST_F(Windows, ABoxAsksTheUser) {
    for (const bool wanted : {true, false}) {
        const std::string title = "Warning " + spoken + (wanted ? " 1" : " 2");
        const User user(title, wanted ? IDYES : IDNO);
        std::optional<bool> answer;
        desktopDialogs().question(title, "Really?", [&answer](bool yes) { answer = yes; });
        if (!user.hasAnswered()) {
            EXPECT_EQ(answer, false) << "nobody can see it";
            GTEST_SKIP() << "no display";
        }
        EXPECT_EQ(answer, wanted);
    }
    const User user("Error", IDOK);
    desktopDialogs().message("Error", "The factory sounds are missing.");
    EXPECT_TRUE(user.hasAnswered());
}

TEST_F(Windows, AChooserThatTheUserLeavesChoosesNothing) {
    const FileRequest request = fileRequest(FileKind::Patch, false, folder);
    const User user(request.title, IDCANCEL);
    std::optional<std::string> chosen = "not called";
    desktopDialogs().choosePath(request, [&chosen](std::optional<std::string> path) { chosen = std::move(path); });
    EXPECT_EQ(chosen, std::nullopt);
}

}  // namespace
}  // namespace vantoric::platform
