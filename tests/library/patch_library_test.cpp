#include "library/patch_library.h"

#include "library/name_order.h"
#include "tests/library/library_on_disk.h"

namespace vantoric {
namespace {

using Names = std::vector<std::string>;

struct Lists : ::testing::Test, test::LibraryOnDisk {};

TEST(NameOrder, OnlyTheLettersAToZFold) {
    Names names{"b", "Zoo", "\xc3\xa4", "A", "_x", "a", "10", "Z", "\xc3\x84", "9"};
    sortNames(names);
    EXPECT_EQ(names, (Names{"10", "9", "_x", "A", "a", "b", "Z", "Zoo", "\xc3\x84", "\xc3\xa4"}));
}

TEST_F(Lists, FavouritesAndUserStandLastBeforeCustom) {
    for (const char* name : {"User", "zebra", "Favourites", "Bass", ".hidden"}) put(name, {});
    putText("readme.txt", "");
    EXPECT_EQ(library.scanCategories(), 5);
    EXPECT_EQ(library.categoryNames(), (Names{"Bass", "zebra", "Favourites", "User", "Custom"}));
}

TEST_F(Lists, AFolderOfTheSortedNameShowsAsFavourites) {
    put("ZZZF", {});
    library.scanCategories();
    EXPECT_EQ(library.categoryNames(), (Names{"Favourites", "Custom"}));
}

TEST_F(Lists, WithoutASoundsFolderThereIsOnlyCustom) {
    std::filesystem::remove_all(platform::soundsFolder());
    EXPECT_EQ(library.scanCategories(), 1);
    EXPECT_FALSE(library.nextPatch());
    EXPECT_FALSE(library.previousPatch());
    library.findPatch("Deep");
    EXPECT_EQ(library.selection(), PatchSelection());
    EXPECT_TRUE(loads.empty());
}

TEST_F(Lists, OnlyPatchFilesAreListed) {
    put("Bass", {"Deep", "acid"});
    putText("Bass/notes.txt", "");
    putText("Bass/LOUD.FXP", "");
    putText("Bass/.fxp", "");
    platform::makeFolder(platform::soundsFolder() + "Bass/folder.fxp");
    library.scanCategories();
    library.scanPatches(0);
    EXPECT_EQ(library.patchNames(), (Names{"acid", "Deep"}));
}

TEST_F(Lists, AFolderOfFiveThousandFilesFillsTheList) {
    put("Bass", {});
    for (int i = 0; i < 5000; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "p%04d.fxp", i);
        std::filesystem::path path = platform::soundsFolder() + "Bass/" + name;
        std::fclose(std::fopen(path.c_str(), "wb"));
    }
    library.scanCategories();
    library.select({0, 2046});
    ASSERT_EQ(library.patchNames().size(), PatchLibrary::mostPatches);
    EXPECT_EQ(library.patchNames().front(), "p0000");
    EXPECT_EQ(library.selectedPatch(), "p2046");
    library.findPatch("p4999");
    EXPECT_EQ(library.selection(), PatchSelection()) << "it is in no list";
}

TEST_F(Lists, NamesMayBeLongAndOfAnyBytes) {
    const std::string longest(251, 'x'), broken = "\xff\xfe\x80 name", lines = "two\nlines";
    put("Bass", {longest, broken, lines, "\xe9\x9f\xb3\xe8\x89\xb2"});
    library.scanCategories();
    library.scanPatches(0);
    EXPECT_EQ(library.patchNames(), (Names{lines, longest, "\xe9\x9f\xb3\xe8\x89\xb2", broken}));
    for (const std::string& name : Names{longest, broken, lines}) {
        library.findPatch(name);
        EXPECT_EQ(library.selectedPatch(), name);
    }
}

TEST_F(Lists, LinksInACircleAreNoCategory) {
    put("Bass", {"Deep"});
    std::filesystem::create_symlink(platform::soundsFolder() + "b", platform::soundsFolder() + "a");
    std::filesystem::create_symlink(platform::soundsFolder() + "a", platform::soundsFolder() + "b");
    std::filesystem::create_directory_symlink(platform::soundsFolder(), platform::soundsFolder() + "Bass/up");
    std::filesystem::create_directory_symlink(platform::soundsFolder() + "Bass", platform::soundsFolder() + "Linked");
    library.scanCategories();
    EXPECT_EQ(library.categoryNames(), (Names{"Bass", "Linked", "Custom"}));
    library.select({1, 0});
    EXPECT_TRUE(library.loadSelectedPatch());
    EXPECT_EQ(loads, Names{"Linked/Deep"});
}

TEST_F(Lists, FoldersMayVanishAtAnyTime) {
    put("Bass", {"Deep"});
    put("Lead", {"One"});
    library.scanCategories();
    library.select({1, 0});
    vanish("Lead");
    library.scanPatches(-1);
    EXPECT_TRUE(library.patchNames().empty());
    EXPECT_FALSE(library.loadSelectedPatch());
    library.findPatch("One");
    EXPECT_EQ(library.selection(), PatchSelection());
    vanish("Bass");
    EXPECT_FALSE(library.nextPatch());
    library.scanCategories();
    EXPECT_EQ(library.categoryNames(), Names{"Custom"});
    EXPECT_EQ(library.selection(), PatchSelection());
}

TEST_F(Lists, TheSelectionStaysWithItsCategoryWhenFoldersCome) {
    put("Lead", {"One", "two"});
    library.scanCategories();
    library.select({0, 1});
    put("Bass", {"Deep"});
    library.scanCategories();
    EXPECT_EQ(library.selection(), (PatchSelection{1, 1}));
    EXPECT_EQ(library.selectedPatch(), "two");
}

TEST_F(Lists, TheSelectionStaysWithItsPatchWhenFilesComeAndGo) {
    put("Bass", {"Deep", "acid"});
    library.scanCategories();
    library.select({0, 1});
    ASSERT_EQ(library.selectedPatch(), "Deep");
    put("Bass", {"00first"});
    library.scanPatches(-1);
    EXPECT_EQ(library.selection(), (PatchSelection{0, 2}));
    EXPECT_EQ(library.selectedPatch(), "Deep");
    EXPECT_TRUE(library.previousPatch());
    EXPECT_EQ(library.selectedPatch(), "acid");
    put("Bass", {"000"});
    library.select({0, 0});
    EXPECT_EQ(library.selectedPatch(), "000") << "a place counts in the list as it is now";
}

TEST_F(Lists, APatchIsFoundByItsExactNameInTheFirstCategory) {
    put("Bass", {"Deep", "acid"});
    put("Lead", {"Deep", "One"});
    library.findPatch("Deep");
    EXPECT_EQ(library.selectedCategory() + "/" + library.selectedPatch(), "Bass/Deep");
    library.findPatch("deep");
    EXPECT_EQ(library.selection(), PatchSelection());
    EXPECT_EQ(library.patchNames(), (Names{"acid", "Deep"})) << "the list stays";
    library.findPatch("../Lead/One");
    EXPECT_EQ(library.selection(), PatchSelection()) << "a name is no path";
    library.findPatch("");
    EXPECT_EQ(library.selection(), PatchSelection());
}

TEST_F(Lists, WhileAPatchOfTheListsIsLoadedItsNameIsNotLookedUp) {
    put("Bass", {"Deep"});
    put("Lead", {"Deep"});
    library.scanCategories();
    library.select({1, 0});
    {
        const PatchLibrary::Loading loading(library);
        library.findPatch("Deep");
    }
    EXPECT_EQ(library.selectedCategory(), "Lead");
    library.findPatch("Deep");
    EXPECT_EQ(library.selectedCategory(), "Bass");
}

TEST_F(Lists, SteppingGoesOnPastAPatchThatCannotBeLoaded) {
    put("Bass", {"a", "bad", "c"});
    library.scanCategories();
    library.select({0, 0});
    succeeds = false;
    EXPECT_FALSE(library.nextPatch());
    EXPECT_FALSE(library.nextPatch());
    EXPECT_EQ(loads, (Names{"Bass/bad", "Bass/c"}));
}

TEST_F(Lists, ALookUpStopsAfterTwoHundredAndFiftyCategories) {
    for (int i = 0; i < 252; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "c%03d", i);
        put(name, {name});
    }
    library.findPatch("c249");
    EXPECT_EQ(library.selection(), (PatchSelection{249, 0}));
    library.findPatch("c250");
    EXPECT_EQ(library.selection(), PatchSelection());
    library.select({251, 0});
    EXPECT_TRUE(library.loadSelectedPatch());
}

TEST_F(Lists, WavetablesAreListedInTheSameOrder) {
    EXPECT_TRUE(wavetableNames().empty());
    platform::makeFolder(platform::wavetableFolder());
    for (const char* name : {"b Wave.wav", "A1.wav", "a0.wav", "x.txt"})
        platform::writeFile(platform::wavetableFolder() + name, nullptr, 0);
    EXPECT_EQ(wavetableNames(), (Names{"a0", "A1", "b Wave"}));
}

}  // namespace
}  // namespace vantoric
