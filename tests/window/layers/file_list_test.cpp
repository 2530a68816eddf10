#include "editor/file_list.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "platform/scratch_folder.h"
#include "tests/base/failing_allocation.h"
#include "tests/base/failing_thread.h"

#ifndef _WIN32
#include <unistd.h>
#endif

namespace vantoric {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> namesOf(const FileList& list) {
    std::vector<std::string> names;
    for (int row = 0; row < list.count(); ++row) names.push_back(list.at(row).name);
    return names;
}

using Names = std::vector<std::string>;

FileList someFiles() {
    FileList list;
    list.setListing({"/music",
                     FolderState::read,
                     {{"kick 10.wav", false, 300, 50},
                      {"Kick 2.wav", false, 900, 10},
                      {".hidden.wav", false, 1, 1},
                      {"notes.txt", false, 5, 99},
                      {"Loops", true, 0, 5},
                      {"SNARE.WAV", false, 100, 70},
                      {"drums", true, 0, 80}}});
    return list;
}

TEST(FileList, FoldersComeFirstAndNumbersCountByTheirValue) {
    EXPECT_EQ(namesOf(someFiles()), (Names{"drums", "Loops", "Kick 2.wav", "kick 10.wav", "notes.txt", "SNARE.WAV"}));
}

TEST(FileList, ShowsOneKindOfFileWhateverItsCase) {
    FileList list = someFiles();
    list.setExtension(".wav");
    EXPECT_EQ(namesOf(list), (Names{"drums", "Loops", "Kick 2.wav", "kick 10.wav", "SNARE.WAV"}));
    list.setShowsHidden(true);
    EXPECT_EQ(list.rowOf(".hidden.wav"), 2);
}

TEST(FileList, OrdersBySizeAndDateTheLargestAndNewestFirst) {
    FileList list = someFiles();
    list.orderBy(FileOrder::size);
    EXPECT_EQ(list.at(2).name, "Kick 2.wav");
    list.orderBy(FileOrder::date);
    EXPECT_EQ(namesOf(list), (Names{"drums", "Loops", "notes.txt", "SNARE.WAV", "kick 10.wav", "Kick 2.wav"}));
    list.orderBy(FileOrder::date);
    EXPECT_EQ(list.at(2).name, "Kick 2.wav") << "the oldest, the other way round";
    list.orderBy(FileOrder::name);
    EXPECT_FALSE(list.isReversed());
}

TEST(FileList, FindsRowsByTheirBeginningGoingRound) {
    const FileList list = someFiles();
    EXPECT_EQ(list.rowWith("k", 0), 2);
    EXPECT_EQ(list.rowWith("K", 3), 3);
    EXPECT_EQ(list.rowWith("k", 4), 2);
    EXPECT_EQ(list.rowWith("x", 0), -1);
}

TEST(Completion, GoesAsFarAsItIsCertain) {
    const std::vector<FileEntry> entries{
        {"Field recordings", true}, {"Field notes", true}, {"vantoric", true}, {"Größe.wav"}, {"Gr\xc3\xa4ser.wav"}};
    EXPECT_EQ(completionOf("Fi", entries), "eld ");
    EXPECT_EQ(completionOf("fi", entries), "eld ") << "letter case does not matter if nothing has it so";
    EXPECT_EQ(completionOf("v", entries), "antoric/");
    EXPECT_EQ(completionOf("Gr", entries), "") << "never half of a character";
    EXPECT_EQ(completionOf("x", entries), "");
    EXPECT_EQ(completionOf("", entries), "");
}

TEST(Paths, AreTypedAsInAShell) {
    EXPECT_EQ(typedPath("~/Music/", "/a", "/home/me"), "/home/me/Music");
    EXPECT_EQ(typedPath("../b//c", "/a", "/home/me"), "/b/c");
    EXPECT_EQ(typedPath("/", "/a", ""), "/");
    EXPECT_EQ(typedPath("", "/a", ""), "/a");
    EXPECT_EQ(folderAbove("/a/b"), "/a");
    EXPECT_EQ(folderAbove("/"), "/");
    EXPECT_EQ(nearestFolder("/no/such/place/at/all"), "/");
}

TEST(FileTexts, AreShortAndPlain) {
    EXPECT_EQ(sizeText(0), "0 B");
    EXPECT_EQ(sizeText(999), "999 B");
    EXPECT_EQ(sizeText(12'345), "12 KB");
    EXPECT_EQ(sizeText(999'700), "1.0 MB");
    EXPECT_EQ(sizeText(123'456'789), "123 MB");
    EXPECT_EQ(dateText(0), "");
    EXPECT_EQ(dateText(1'700'000'000).substr(0, 8), "2023-11-");
    EXPECT_EQ(shownName("two\nlines\x7f"), "two?lines?");
    EXPECT_LT(shownName(std::string(255, 'x')).size(), 170u);
}

// ---- folders on disk

FolderListing listingOf(const std::string& folder) {
    const std::atomic<bool> goesOn{false};
    return readFolderListing(folder, goesOn);
}

TEST(FolderListing, TellsWhyThereIsNothing) {
    const platform::ScratchFolder scratch;
    std::ofstream(scratch / "file") << "x";
    EXPECT_EQ(listingOf(scratch / "none").state, FolderState::missing);
    EXPECT_EQ(listingOf(scratch / "file").state, FolderState::noFolder);
    fs::create_directory(scratch / "closed");
    fs::permissions(scratch / "closed", fs::perms::none);
#ifndef _WIN32
    if (geteuid() != 0) {  // nothing is closed to root
        EXPECT_EQ(listingOf(scratch / "closed").state, FolderState::forbidden);
    }
#endif
    fs::permissions(scratch / "closed", fs::perms::owner_all);
}

TEST(FolderListing, TakesNamesOfAnyBytesAndBrokenLinks) {
    const platform::ScratchFolder scratch;
    const Names names{std::string(255, 'x'), "broken \xff\xfe", "夜の港", "line\nbreak"};
    for (const std::string& name : names) std::ofstream(scratch / name) << "1234";
    fs::create_symlink("nowhere", scratch / "broken link");
    fs::create_symlink("self", scratch / "self");
    FileList list;
    list.setListing(listingOf(scratch.path()));
    EXPECT_EQ(list.count(), 6);
    for (const std::string& name : names) {
        ASSERT_GE(list.rowOf(name), 0) << name;
        EXPECT_EQ(list.at(list.rowOf(name)).size, 4u);
    }
    EXPECT_FALSE(list.at(list.rowOf("self")).isFolder);
}

TEST(FolderListing, ALinkBackShowsTheFolderAboveInsteadOfGoingRound) {
    const platform::ScratchFolder scratch;
    fs::create_directories(scratch / "a/b");
    fs::create_directory_symlink("..", scratch / "a/b/back");
    EXPECT_EQ(listingOf(scratch / "a/b/back").folder, scratch / "a");
    EXPECT_EQ(listingOf(scratch / "a/b/back/b/back/b").folder, scratch / "a/b");
}

TEST(FolderReader, AnswersWithTheFolderThatWasAskedForLast) {
    const platform::ScratchFolder scratch;
    for (const char* name : {"one", "two"}) fs::create_directory(scratch / name);
    FolderReader reader;
    EXPECT_FALSE(reader.take());
    for (int turn = 0; turn < 50; ++turn) reader.request(scratch / (turn % 2 == 0 ? "one" : "two"));
    reader.finish();
    const auto listing = reader.take();
    ASSERT_TRUE(listing);
    EXPECT_EQ(listing->folder, scratch / "two");
    EXPECT_FALSE(reader.take());
    EXPECT_FALSE(reader.isReading());
}

// Whichever allocation fails, in the thread that asks or in the one that reads.
TEST(FolderReader, AFolderThatThereIsNoMemoryForCantBeRead) {
    const platform::ScratchFolder scratch;
    const std::string folder = scratch / "a folder whose name fits into no string without memory";
    fs::create_directory(folder);
    std::ofstream(folder + "/file") << "x";
    FolderReader reader;
    reader.request(folder);
    reader.finish();
    const auto whole = reader.take();
    ASSERT_TRUE(whole && whole->state == FolderState::read);
    int unread = 0;
    for (long left = 1;; ++left) {  // with none it can't even be asked for
        test::allocationsLeft = left;
        reader.request(folder);
        reader.finish();
        test::allocationsLeft = -1;
        const auto listing = reader.take();
        ASSERT_TRUE(listing);
        EXPECT_EQ(listing->folder, folder);
        if (listing->state == FolderState::read) {
            EXPECT_EQ(*listing, *whole);
            break;
        }
        EXPECT_EQ(listing->state, FolderState::failed);
        ++unread;
    }
    EXPECT_GT(unread, 2);
}

TEST(FolderReader, WithoutAThreadNothingIsReadAndNobodyWaits) {
    const platform::ScratchFolder scratch;
    FolderReader reader;
    {
        const test::NoMoreThreads none;
        reader.request(scratch.path());
        reader.finish();
    }
    const auto listing = reader.take();
    ASSERT_TRUE(listing);
    EXPECT_EQ(listing->folder, scratch.path());
    EXPECT_EQ(listing->state, FolderState::failed);
    reader.request(scratch.path());
    reader.finish();
    EXPECT_EQ(reader.take()->state, FolderState::read);
}

TEST(FolderReader, EndsWhileItReads) {
    const platform::ScratchFolder scratch;
    for (int number = 0; number < 2000; ++number) std::ofstream(scratch / std::to_string(number)) << "x";
    for (int turn = 0; turn < 20; ++turn) {
        FolderReader reader;
        reader.request(scratch.path());
    }
}

}  // namespace
}  // namespace vantoric
