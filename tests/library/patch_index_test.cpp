#include "library/patch_index.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "base/random.h"
#include "library/text_sections.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/scratch_folder.h"
#include "platform/thread.h"
#include "platform/user_state.h"
#include "tests/base/failing_allocation.h"
#include "tests/library/large_library.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;

struct Index : ::testing::Test {
    Index() {
        platform::setDataFolder(folder.path());
        platform::setStateFolder(folder / "state");
        fs::create_directories(sounds);
    }
    ~Index() override {
        platform::setDataFolder("");
        platform::setStateFolder("");
    }

    void put(const std::string& category, const std::string& name) const {
        std::error_code none;
        fs::create_directories(sounds + category, none);
        std::ofstream(sounds + category + "/" + name + ".fxp");
    }
    static void wait(const PatchIndex& index) {
        for (int i = 0; i < 10000 && index.isScanning(); ++i) platform::sleepMilliseconds(1);
        EXPECT_FALSE(index.isScanning());
    }
    static const CataloguedPatch* found(const PatchIndex& index, const std::string& category, const std::string& name) {
        static std::shared_ptr<const PatchCatalogue> held;
        held = index.catalogue();
        const auto at = held->find(category, name);
        return at ? &held->patches()[*at] : nullptr;
    }
    static std::vector<std::string> names(const PatchIndex& index, const std::string& query, const PatchFilter& filter = {}) {
        std::vector<std::string> all;
        for (const std::uint32_t i : index.search(query, filter)) all.push_back(index.catalogue()->patches()[i].name);
        return all;
    }

    platform::ScratchFolder folder;
    const std::string sounds = folder / "Vantoric_sounds/";
    Messages messages;
};

TEST_F(Index, WhatIsSavedOverAnInstallationIsOwnInEveryCategory) {
    put("Bass", "Deep");
    const platform::ScratchFolder own;
    platform::setOwnFolder(own.path());
    std::filesystem::create_directories(own / "Vantoric_sounds/Bass");
    std::ofstream(own / "Vantoric_sounds/Bass/Growl.fxp") << "x";
    {
        PatchIndex index(messages);
        wait(index);
        EXPECT_FALSE(found(index, "Bass", "Deep")->isOwn);
        EXPECT_TRUE(found(index, "Bass", "Growl")->isOwn);
    }
    platform::setOwnFolder("");
}

TEST_F(Index, ALibraryIsFoundWithItsStarsNotesAndFavourites) {
    put("Bass", "Deep");
    put("Bass", "Growl");
    put("User", "Mine");
    put("Favourites", "FavDeep");
    put(".hidden", "x");
    std::ofstream(sounds + "Bass.rnk") << "Deep\n5\n";
    std::ofstream(sounds + "Bass.tags") << "[Growl]\ntags = dirty, warm \nauthor = Me\nabout = Two\\nlines\n";
    PatchIndex index(messages);
    wait(index);
    EXPECT_EQ(index.generation(), 1u);
    EXPECT_EQ(index.catalogue()->patches().size(), 4u);
    const CataloguedPatch deep = *found(index, "Bass", "Deep"), growl = *found(index, "Bass", "Growl");
    EXPECT_EQ(deep.stars, 5);
    EXPECT_TRUE(deep.isFavourite);
    EXPECT_FALSE(deep.isOwn);
    EXPECT_EQ(growl.stars, 3);
    EXPECT_EQ(growl.tags, (std::vector<std::string>{"dirty", "warm"}));
    EXPECT_EQ(growl.author, "Me");
    EXPECT_EQ(growl.about, "Two\nlines");
    EXPECT_TRUE(found(index, "User", "Mine")->isOwn);
    EXPECT_TRUE(found(index, "Favourites", "FavDeep")->isFavourite);
    EXPECT_EQ(names(index, "dirt"), std::vector<std::string>{"Growl"});
    EXPECT_EQ(index.complete("gro"), "Growl");
}

// Whichever fails: of those in the thread that scans and writes, or of those of its caller.
TEST_F(Index, AllocationsThatFailEndNeitherThreadNorProcess) {
    put("Bass", "Deep, which is a name that fits into no string without memory");
    put("Keys", "Soft");
    const PatchPlace place{"Bass", "Deep, which is a name that fits into no string without memory"};
    const PatchNotes notes{{"warm", "a tag that fits into no string without memory"}, "Somebody", "One line"};
    PatchIndex index(messages);
    wait(index);
    const auto isWritten = [&] {
        const CataloguedPatch* const patch = found(index, place.category, place.patch);
        return patch != nullptr && patch->tags == notes.tags && index.recent().size() == 1;
    };
    const auto settle = [&] {
        for (int i = 0; i < 10000 && index.isScanning(); ++i) platform::sleepMilliseconds(1);
    };
    test::allocationsLeft = 0;
    index.rescan();
    settle();
    test::allocationsLeft = -1;
    EXPECT_FALSE(index.isScanning());
    EXPECT_EQ(index.generation(), 1u) << "the catalogue stays";
    EXPECT_TRUE(messages.lostSome());
    int failures = 0;
    for (long left = 1; !isWritten(); left += 1 + left / 32, ++failures) {
        ASSERT_LT(failures, 1000);
        test::allocationsLeft = left;
        try {
            index.notePlayed(place);
            index.write(place, notes);
        } catch (const std::bad_alloc&) {
            index.rescan();
        }
        settle();
        test::allocationsLeft = -1;
    }
    EXPECT_GT(failures, 20);
    EXPECT_NE(found(index, "Keys", "Soft"), nullptr);
}

TEST_F(Index, NotesAreWrittenBesideTheCategoryAndKeepOthers) {
    put("Bass", "Deep");
    std::ofstream(sounds + "Bass.tags") << "[Gone]\ntags = old\nfuture = kept\n[Deep]\nown = kept\n";
    const auto patchBefore = fs::last_write_time(sounds + "Bass/Deep.fxp");
    PatchIndex index(messages);
    index.write({"Bass", "Deep"}, {{"warm", "a,b"}, "\xd0\xaf", "line\nline"});
    wait(index);
    const CataloguedPatch deep = *found(index, "Bass", "Deep");
    EXPECT_EQ(deep.tags, (std::vector<std::string>{"warm", "a b"}));
    EXPECT_EQ(deep.author, "\xd0\xaf");
    EXPECT_EQ(deep.about, "line\nline");
    const TextSections file = loadSections(sounds + "Bass.tags");
    ASSERT_EQ(file.size(), 2u);
    EXPECT_EQ(file[0].valueOf("future"), "kept");
    EXPECT_EQ(file[1].valueOf("own"), "kept");
    EXPECT_EQ(fs::last_write_time(sounds + "Bass/Deep.fxp"), patchBefore) << "the patch is not touched";
    index.write({"Bass", "Deep"}, {});
    wait(index);
    EXPECT_TRUE(found(index, "Bass", "Deep")->tags.empty());
}

TEST_F(Index, NotesAreWrittenAtTheEndAtTheLatest) {
    put("Bass", "Deep");
    {
        PatchIndex(messages).write({"Bass", "Deep"}, {{"last"}, "", ""});
    }
    EXPECT_EQ(loadSections(sounds + "Bass.tags").at(0).valueOf("tags"), "last");
}

TEST_F(Index, NotesOnALibraryThatCannotBeWrittenAreTheUsersOwn) {
    put("Bass", "Deep");
    fs::create_directories(sounds + "Bass.tags");  // no file can be there
    PatchIndex index(messages);
    index.write({"Bass", "Deep"}, {{"mine"}, "", ""});
    wait(index);
    EXPECT_EQ(found(index, "Bass", "Deep")->tags, std::vector<std::string>{"mine"});
    EXPECT_TRUE(fs::exists(folder / "state/tags/Bass.tags"));
    EXPECT_TRUE(messages.take().empty());
    platform::setStateFolder(sounds + "Bass/Deep.fxp/none");
    index.write({"Bass", "Deep"}, {{"lost"}, "", ""});
    wait(index);
    EXPECT_EQ(messages.take().size(), 1u) << "the user is told";
}

TEST_F(Index, RecentPatchesAreSharedAndKept) {
    for (const char* name : {"a", "b", "c"}) put("Bass", name);
    {
        PatchIndex index(messages);
        for (const char* name : {"a", "b", "a"}) index.notePlayed({"Bass", name});
        EXPECT_EQ(index.recent(), (std::vector<PatchPlace>{{"Bass", "a"}, {"Bass", "b"}}));
    }
    PatchIndex index(messages);
    index.notePlayed({"Bass", "c"});
    index.notePlayed({"Gone", "x"});
    wait(index);
    PatchFilter filter;
    filter.recent = true;
    for (int i = 0; i < 10000 && index.recent().size() < 4; ++i) platform::sleepMilliseconds(1);
    EXPECT_EQ(names(index, "", filter), (std::vector<std::string>{"c", "a", "b"}));
    for (int i = 0; i < 300; ++i) index.notePlayed({"Bass", std::to_string(i)});
    EXPECT_EQ(index.recent().size(), PatchIndex::mostRecent);
    EXPECT_EQ(index.recent().front().patch, "299");
}

TEST_F(Index, AnyFolderIsSafe) {
    const std::string longest(251, 'x');
    put("Bass", longest);
    put("\xd0\x91\xd0\xb0\xd1\x81", "\xe6\xb5\xb7");
    put("broken\xff", "\xff\xfe[");
    put("a = [b]", "new\nline");
    fs::create_directory_symlink(sounds, sounds + "circle");
    fs::create_symlink(sounds + "self", sounds + "self");
    fs::create_symlink(sounds + "nowhere", sounds + "Bass/dangling.fxp");
    fs::create_directories(sounds + "Bass/folder.fxp");
    fs::create_directories(sounds + "closed");
    chmod((sounds + "closed").c_str(), 0);
    std::ofstream(sounds + "Bass.rnk") << std::string("\xff\0\n\n99999999999999999999", 24);
    std::ofstream(sounds + "Bass.tags") << std::string("[\xff\0]=[\n[]\n=", 12);
    ASSERT_EQ(mkfifo((sounds + "broken\xff.tags").c_str(), 0600), 0) << "whoever opens it waits for ever";
    PatchIndex index(messages);
    wait(index);
    EXPECT_NE(found(index, "Bass", longest), nullptr);
    EXPECT_NE(found(index, "\xd0\x91\xd0\xb0\xd1\x81", "\xe6\xb5\xb7"), nullptr);
    EXPECT_NE(found(index, "broken\xff", "\xff\xfe["), nullptr);
    EXPECT_EQ(names(index, "\xd0\xb1\xd0\x90\xd1\x81"), std::vector<std::string>{"\xe6\xb5\xb7"});
    index.write({"a = [b]", "new\nline"}, {{"odd"}, "", ""});
    wait(index);
    EXPECT_EQ(found(index, "a = [b]", "new\nline")->tags, std::vector<std::string>{"odd"});
    chmod((sounds + "closed").c_str(), 0700);
    fs::remove_all(sounds);
    index.rescan();
    wait(index);
    EXPECT_TRUE(index.catalogue()->patches().empty());
}

TEST_F(Index, NobodyWaitsWhileTwentyThousandPatchesAreFound) {
    for (const CataloguedPatch& patch : test::largeLibrary(20000)) {
        std::error_code none;
        if (patch.name.back() == '0') fs::create_directories(sounds + patch.category, none);
        std::ofstream(sounds + patch.category + "/" + patch.name + ".fxp");
    }
    PatchIndex index(messages);
    wait(index);
    index.rescan();
    EXPECT_TRUE(index.isScanning()) << "the caller goes on";
    wait(index);
    EXPECT_GT(index.catalogue()->patches().size(), 19000u);
    index.rescan();
    platform::sleepMilliseconds(5);
}

TEST_F(Index, ASearcherAndAScanDoNotMeet) {
    for (int i = 0; i < 200; ++i) put("Bass", "Deep " + std::to_string(i));
    PatchIndex index(messages);
    for (int i = 0; i < 200; ++i) {
        if (i % 10 == 0) index.rescan();
        if (i % 17 == 0) index.write({"Bass", "Deep 1"}, {{"tag" + std::to_string(i)}, "", ""});
        if (i % 5 == 0) index.notePlayed({"Bass", "Deep " + std::to_string(i)});
        if (i == 100) fs::remove_all(sounds + "Bass");
        names(index, "deep");
        index.complete("de");
        platform::sleepMilliseconds(1);
    }
}

}  // namespace
}  // namespace vantoric
