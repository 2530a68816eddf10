#include "editor/browser_library.h"

#include "patch/patch_file.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/thread.h"
#include "platform/user_state.h"
#include "tests/engine/engine_rig.h"
#include "tests/library/library_on_disk.h"

#include <gtest/gtest.h>

namespace vantoric {
namespace {

// A library on disk of three categories, open in a browser.
struct BrowserOnDisk : ::testing::Test, test::LibraryOnDisk {
    BrowserOnDisk() {
        platform::setStateFolder(root / "state");
        put("Bass", {"Deep", "acid", "Round"});
        put("Keys", {"Glass Harbour", "Glassine", "Zinc"});
        put("User", {"my glass"});
        library.scanCategories();
        library.select({0, 0});
        index.rescan();
        wait();
        model.open();
    }
    ~BrowserOnDisk() override { platform::setStateFolder(""); }
    void wait() {
        for (int i = 0; i < 10000 && index.isScanning(); ++i) platform::sleepMilliseconds(1);
    }
    std::vector<std::string> found(const std::string& query, const BrowserFilters& filters = {}) {
        std::vector<std::string> names;
        for (const BrowserPatch& found : model.search(query, filters)) names.push_back(found.category + "/" + found.name);
        return names;
    }
    BrowserPatch first(const std::string& query) { return model.search(query, {}).at(0); }

    OnShow onShow;
    test::EngineRig rig;
    PatchOnShow patch{rig.audio, library};
    PatchBrowser browser{library, onShow};
    PatchIndex index{rig.audio.messages()};
    BrowserLibrary model{library, browser, patch, index, onShow};
};

using Names = std::vector<std::string>;

TEST_F(BrowserOnDisk, ShowsCategoriesWithTheirCounts) {
    EXPECT_EQ(model.categories(), (std::vector<BrowserCategory>{{"Bass", 3}, {"Keys", 3}, {"User", 1}, {"Custom", 0}}));
    EXPECT_EQ(model.listedCategory(), 0);
    EXPECT_EQ(model.patches(), (std::vector<BrowserPatch>{{"Bass", "acid"}, {"Bass", "Deep"}, {"Bass", "Round"}}));
}

TEST_F(BrowserOnDisk, AClickOnAPatchLoadsItAndMakesItARecentOne) {
    model.clickPatch(1);
    EXPECT_EQ(loads, Names{"Bass/Deep"});
    EXPECT_EQ(index.recent().at(0), (PatchPlace{"Bass", "Deep"}));
    model.clickPatch(77);
    EXPECT_EQ(loads.size(), 1u);
}

TEST_F(BrowserOnDisk, FindsInAllCategoriesAndPlaysWhatItFound) {
    EXPECT_EQ(found("glass"), (Names{"Keys/Glass Harbour", "Keys/Glassine", "User/my glass"}));
    model.playFound(first("glassine"));
    EXPECT_EQ(loads, Names{"Keys/Glassine"});
    EXPECT_EQ(model.listedCategory(), 1) << "the lists follow";
}

TEST_F(BrowserOnDisk, CompletesToWhatItFindsFirst) {
    library.select({place("Keys"), 0});
    model.clickStar(1, 5);  // Glassine has more stars, and is shorter
    wait();
    EXPECT_EQ(first("glas").name, "Glass Harbour");
    EXPECT_EQ(model.complete("glas", {}), "Glass Harbour");
    EXPECT_EQ(model.complete("glas", {.fourStars = true}), "Glassine");
    EXPECT_EQ(model.complete("glas", {.mine = true}), "glass") << "a word";
    model.clickStar(1, starsByDefault);
}

TEST_F(BrowserOnDisk, MarksWhatWasSearchedFor) {
    EXPECT_EQ(first("my gla").matchFrom, 0u);
    EXPECT_EQ(first("my gla").matched, 6u);
    EXPECT_EQ(matchIn("Glass Harbour", "HARB"), (std::pair<std::size_t, std::size_t>{6, 4}));
    EXPECT_EQ(matchIn("Glass Harbour", "keys har"), (std::pair<std::size_t, std::size_t>{6, 3}));
    EXPECT_EQ(matchIn("Glass Harbour", "hxrbour"), (std::pair<std::size_t, std::size_t>{0, 0}));
    EXPECT_EQ(matchIn("Glass", ""), (std::pair<std::size_t, std::size_t>{0, 0}));
}

TEST_F(BrowserOnDisk, RatesWhatItFoundInACategoryThatIsNotListed) {
    model.rateFound(first("zinc"), 5);
    EXPECT_EQ(first("zinc").stars, 5) << "at once";
    wait();
    EXPECT_EQ(first("zinc").stars, 5) << "and from the disk";
    EXPECT_EQ(found("", {.fourStars = true}), Names{"Keys/Zinc"});
    EXPECT_EQ(loadRanks("Keys", {"Glass Harbour", "Zinc"}), (Ratings{3, 5}));
    EXPECT_TRUE(loads.empty());
}

TEST_F(BrowserOnDisk, AStarOfTheListedCategoryShowsInListAndSearch) {
    model.clickStar(0, 4);
    EXPECT_EQ(model.patches()[0].stars, 4);
    EXPECT_EQ(first("acid").stars, 4);
}

TEST_F(BrowserOnDisk, FiltersTheUsersOwnAndTheRecentOnes) {
    EXPECT_EQ(found("", {.mine = true}), Names{"User/my glass"});
    model.playFound(first("zinc"));
    EXPECT_EQ(found("", {.recent = true}), Names{"Keys/Zinc"});
}

TEST_F(BrowserOnDisk, APatchThatHasGoneIsNotPlayedAndLeavesTheSearch) {
    const BrowserPatch gone = first("zinc");
    std::filesystem::remove(patchPath("Keys", "Zinc"));
    model.playFound(gone);
    EXPECT_TRUE(loads.empty());
    wait();
    EXPECT_EQ(found("zinc"), Names{});
}

TEST_F(BrowserOnDisk, ClosedOnACategoryWithoutPatchesTheListsGoBackToThePatchInForce) {
    put("Empty", {});
    model.open();
    const auto inForce = [&](const char* category, const char* name) {
        library.selectPatch(category, name);
        rig.audio.program().setProgramName(name);
        patch.showListed(category, name);
    };
    inForce("Keys", "Glassine");
    for (const char* category : {"Custom", "Empty"}) {
        model.open();
        model.clickCategory(place(category));
        EXPECT_EQ(library.selectedPatch(), "") << category;
        model.close();
        EXPECT_EQ(library.selectedCategory() + "/" + library.selectedPatch(), "Keys/Glassine") << category;
        EXPECT_EQ(library.patchNames().size(), 3u);
    }
    patch.showCustom();
    model.open();
    model.clickCategory(place("Custom"));
    model.close();
    EXPECT_EQ(library.patchNames().size(), 3u) << "the list of names stays as it was";
}

TEST_F(BrowserOnDisk, ClosedOnAPatchThatWasPlayedTheListsStayThere) {
    patch.showListed("Keys", "Glassine");
    model.open();
    model.clickCategory(place("Bass"));
    model.clickPatch(1);
    model.close();
    EXPECT_EQ(library.selectedPatch(), "Deep");
}

TEST_F(BrowserOnDisk, TellsThatSomethingHasChanged) {
    const unsigned before = model.revision();
    EXPECT_EQ(model.revision(), before);
    onShow.loadTarget = 2;
    EXPECT_NE(model.revision(), before);
    EXPECT_EQ(model.hint(), (BrowserHint{"Load a patch to synthesizer layer 2", true}));
    const unsigned between = model.revision();
    library.scanPatches(1);
    EXPECT_NE(model.revision(), between);
}

TEST_F(BrowserOnDisk, WhatIsWrittenAboutAPatchIsFoundAndStandsBesideItsFolder) {
    std::vector<std::uint8_t> before, after, sidecar;
    ASSERT_TRUE(platform::readFile(patchPath("Bass", "Deep"), before));
    model.writeNotes({"Bass", "Deep"}, {" bright,bell , ,bright", "Somebody", "Slow"});
    const BrowserNotes written{"bright, bell", "Somebody", "Slow"};
    EXPECT_EQ(model.notes({"Bass", "Deep"}), written) << "at once";
    wait();
    EXPECT_EQ(model.notes({"Bass", "Deep"}), written) << "as the catalogue knows it";
    EXPECT_EQ(found("bell"), Names{"Bass/Deep"});
    EXPECT_EQ(found("somebody"), Names{"Bass/Deep"});
    ASSERT_TRUE(platform::readFile(patchPath("Bass", "Deep"), after));
    EXPECT_EQ(after, before) << "the patch is as it was";
    EXPECT_TRUE(platform::readFile(platform::soundsFolder() + "Bass.tags", sidecar));
    EXPECT_EQ(model.notes({"Bass", "acid"}), BrowserNotes());
    model.writeNotes({"Bass", "Deep"}, {});
    wait();
    EXPECT_TRUE(found("bell").empty());
}

TEST_F(BrowserOnDisk, ATrialLeavesTheLayerWaiting) {
    onShow.loadTarget = 2;
    model.tryPatch(1);
    EXPECT_EQ(loads, Names{"Bass/Deep"});
    EXPECT_EQ(onShow.loadTarget, 2);
    model.tryFound(first("zinc"));
    EXPECT_EQ(loads.back(), "Keys/Zinc");
    EXPECT_EQ(onShow.loadTarget, 2);
    model.clickCategory(place("Bass"));
    EXPECT_EQ(loads.back(), "Bass/" + library.patchNames().front());
    EXPECT_EQ(onShow.loadTarget, 2) << "the patch that is meant comes next";
}

TEST_F(BrowserOnDisk, PatchesBeyondTheListArePlayedAndRated) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < PatchLibrary::mostPatches + 40; ++i) names.push_back("many " + std::to_string(10000 + i));
    put("Many", names);
    library.scanCategories();
    index.rescan();
    wait();
    const BrowserPatch last = first(names.back());
    ASSERT_EQ(last.name, names.back());
    model.rateFound(last, 5);
    model.playFound(last);
    EXPECT_EQ(loads, Names{"Many/" + names.back()});
    EXPECT_EQ(library.patchNames().size(), PatchLibrary::mostPatches) << "the list stays as it is";
    const std::vector<BrowserCategory> categories = model.categories();
    const auto many = std::ranges::find(categories, "Many", &BrowserCategory::name);
    ASSERT_NE(many, categories.end());
    EXPECT_EQ(many->count, static_cast<int>(names.size())) << "all of the folder are counted";
    model.clickStar(0, 1);
    EXPECT_EQ(loadRanks("Many", {names.front(), names.back()}), (Ratings{1, 5})) << "stars of the list leave those beyond it";
    library.previousPatch();
    EXPECT_EQ(loads.back(), "Many/" + names[PatchLibrary::mostPatches - 1]);
}

TEST_F(BrowserOnDisk, ALoadToALayerIsCalledOff) {
    onShow.loadTarget = 3;
    EXPECT_TRUE(model.hint().isTarget);
    model.callOffLoad();
    EXPECT_EQ(onShow.loadTarget, 0);
    EXPECT_FALSE(model.hint().isTarget);
}

}  // namespace
}  // namespace vantoric
