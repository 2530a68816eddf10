#include "library/menu_commands.h"

#include <filesystem>

#include "base/version.h"
#include "platform/scratch_folder.h"
#include "platform/thread.h"
#include "platform/web_page.h"
#include "tests/library/ended.h"
#include "tests/library/menu_bench.h"
#include "tests/platform/environment.h"
#include "tests/platform/slow_dialogs.h"

namespace vantoric {
namespace {

namespace par = parameter;
using Texts = std::vector<std::string>;

struct Menus : ::testing::Test, test::MenuBench {
    void putWave(const std::string& path) {
        test::WaveMaker maker;
        const auto wave = maker.putFrames(600, [](int i) { return i % 100 < 50 ? 9000 : -9000; }).file();
        platform::makeFolder(folderOfPath(path));
        EXPECT_TRUE(platform::writeFile(path, wave.data(), wave.size()));
    }
};

TEST_F(Menus, SeparatorsAndRowsThatAreNoneDoNothing) {
    const auto before = values();
    for (const int row : {-1, 5, 12, 14, 18, 20, 1000}) menus.file(row);
    for (const int row : {-1, 1, 8, 10, 23, 1000}) menus.copy(row);
    for (const int row : {-1, 1, 3, 10, 1000}) menus.paste(row);
    for (const int row : {-1, 5, 25, 1000}) menus.init(row);
    for (const int row : {-1, 1, 3, 6, 10, 13, 1000}) menus.help(row);
    for (const int row : {-1, 1, 45, 1000}) menus.editSample(0, row);
    for (const int row : {-1, 3, 4, 1000}) menus.chooseWave(0, row);
    EXPECT_EQ(values(), before);
    EXPECT_TRUE(shown().empty());
    EXPECT_TRUE(pages.empty());
    EXPECT_TRUE(commands.names.empty());
}

TEST_F(Menus, ALoadedFileOfTheListsIsSelectedThere) {
    putPatch("Bass", "Deep", 0.25f);
    dialogs.choosePathNext(putPatch("Lead", "Deep", 0.5f));
    onShow.layer = 2;
    menus.file(0);
    EXPECT_EQ(cut(0), 0.5f);
    EXPECT_EQ(onShow.layer, 0);
    EXPECT_EQ(menus.patch().category() + "/" + menus.patch().name(), "Lead/Deep");
    EXPECT_EQ(menus.library().selectedCategory(), "Lead");
    EXPECT_EQ(commands.names, Texts{"Load 'Deep'"});
}

TEST_F(Menus, AFileFromElsewhereIsNeverSavedOverAPatchOfItsName) {
    putPatch("Bass", "Deep", 0.25f);
    const platform::ScratchFolder elsewhere;
    putPatchFile(elsewhere / "Deep.fxp", 0.5f);
    EXPECT_TRUE(menus.loadPatchFile(elsewhere / "Deep.fxp"));
    EXPECT_EQ(menus.library().selectedCategory(), "Bass") << "the selection follows the name";
    menus.file(7);
    EXPECT_EQ(shown(), Texts{"Error: Your patch still has no name. Use 'Save patch as...' to store it."});
}

TEST_F(Menus, ANameWithASeparatorIsNoFile) {
    putPatch("Bass", "Deep");
    menus.library().findPatch("Deep");
    menus.library().loadSelectedPatch();
    audio.program().setProgramName("../x");
    menus.file(7);
    EXPECT_EQ(shown(), Texts{"Error: Your patch still has no name. Use 'Save patch as...' to store it."});
    test::Ended end;
    menus.setFavourite(true, end);
    EXPECT_FALSE(end.result());
    EXPECT_FALSE(platform::exists(platform::soundsFolder() + "x.fxp"));
}

TEST_F(Menus, QuickSaveKeepsALongFileName) {
    const std::string name(200, 'x');
    putPatch("Bass", name);
    menus.library().findPatch(name);
    menus.library().loadSelectedPatch();
    shown();
    setCut(0, 0.75f);
    menus.file(7);
    EXPECT_TRUE(shown().empty());
    const auto saved = std::make_unique<SparePatch>(audio.messages());
    ASSERT_TRUE(saved->files().loadPatchFile(patchPath("Bass", name)));
    EXPECT_EQ(saved->parameters().getParameter(par::Cutoff1), 0.75f);
}

TEST_F(Menus, ALayerIsSavedUnderANameThatAPatchCanHave) {
    const auto proposed = [&](const std::string& name, int layer) {
        putPatch("Bass", name);
        menus.library().findPatch(name);
        menus.library().loadSelectedPatch();
        dialogs.clear();
        menus.file(8 + layer);
        return dialogs.requests().at(0).name;
    };
    EXPECT_EQ(proposed("Short", 3), "Short layer 4");
    EXPECT_EQ(proposed("Nineteen letters in", 0), "Nineteen letters in layer 1");
    EXPECT_EQ(proposed("Ghost In The Subwoofer", 0), "Ghost In The Subwoo layer 1");
    EXPECT_EQ(proposed("Ghost In Every Box Here", 1), "Ghost In Every Box layer 2") << "without the blank at its end";
    EXPECT_EQ(proposed("Ghost In Every Bo\xc3\xa4\xc3\xb6", 1), "Ghost In Every Bo\xc3\xa4 layer 2");
    const std::string split = proposed("Ghost In Every Box\xc3\xa4\xc3\xb6", 1);
    EXPECT_EQ(split, "Ghost In Every Box layer 2") << "no half letter";
    dialogs.choosePathNext(platform::userFolder() + split);
    menus.file(9);
    EXPECT_TRUE(shown().empty()) << "nothing to warn of";
}

TEST_F(Menus, ARefusedPatchLeavesPatchAndPlace) {
    putPatch("Bass", "a");
    putBadPatch("Bass", "b");
    putPatch("Bass", "c", 0.5f);
    menus.library().findPatch("a");
    menus.library().loadSelectedPatch();
    menus.browser().clickNext();
    EXPECT_EQ(shown().size(), 1u);
    EXPECT_EQ(menus.patch().name(), "a");
    EXPECT_EQ(cut(0), 0.25f);
    menus.browser().clickNext();
    EXPECT_EQ(menus.patch().name(), "c");
    EXPECT_EQ(cut(0), 0.5f);
}

TEST_F(Menus, TheSelectionFollowsWhatAHostLoads) {
    putPatch("Lead", "One");
    audio.program().setProgramName("One");
    const ChunkBytes chunk = audio.patchChunk().getChunk();
    audio.program().setProgramName("Mine");
    audio.patchChunk().setChunk(chunk.data.get(), chunk.size);
    EXPECT_EQ(menus.patch().category(), "Custom");
    menus.patch().follow();
    EXPECT_EQ(menus.patch().category() + "/" + menus.patch().name(), "Lead/One");
    menus.library().selectNone();
    menus.patch().follow();
    EXPECT_EQ(menus.library().selection(), PatchSelection()) << "only once";
}

TEST_F(Menus, AuditioningAPatchOfANameThatIsThereTwiceStaysWithIt) {
    putPatch("Bass", "Deep");
    putPatch("Lead", "Deep");
    menus.library().scanCategories();
    menus.browser().clickCategory(1);
    menus.patch().follow();
    EXPECT_EQ(menus.library().selectedCategory(), "Lead");
}

TEST_F(Menus, DeletingAsksAndRebuildsTheList) {
    putPatch("Bass", "a");
    const std::string path = putPatch("Bass", "b");
    menus.library().findPatch("b");
    menus.library().loadSelectedPatch();
    menus.file(13);
    EXPECT_TRUE(platform::exists(path));
    dialogs.answerNext(true);
    menus.file(13);
    EXPECT_FALSE(platform::exists(path));
    EXPECT_EQ(menus.library().patchNames(), Texts{"a"});
    EXPECT_EQ(menus.patch().category(), "Custom");
    shown();
    menus.file(13);
    EXPECT_EQ(shown(), Texts{"Info: This patch is in no list: there is no file to delete."});
}

TEST_F(Menus, StepsGoOnFromWhereADeletedPatchStood) {
    const auto deleteAndStep = [&](const char* name, bool isNext) {
        for (const char* patch : {"a", "b", "c", "d"}) putPatch("Bass", patch);
        putPatch("Lead", "x");
        menus.library().scanCategories();
        menus.library().findPatch(name);
        menus.library().loadSelectedPatch();
        dialogs.answerNext(true);
        menus.file(13);
        EXPECT_EQ(menus.library().selectedPatch(), "");
        isNext ? menus.library().nextPatch() : menus.library().previousPatch();
        return menus.library().selectedPatch();
    };
    EXPECT_EQ(deleteAndStep("b", true), "c");
    menus.library().nextPatch();
    EXPECT_EQ(menus.library().selectedPatch(), "d") << "from there by one";
    EXPECT_EQ(deleteAndStep("b", false), "a");
    EXPECT_EQ(deleteAndStep("c", false), "b");
    EXPECT_EQ(deleteAndStep("a", true), "b");
    EXPECT_EQ(deleteAndStep("d", true), "x") << "the last one of its category";
}

TEST_F(Menus, DeletingMeansThePatchOnShowAndNotItsNamesake) {
    const std::string namesake = putPatch("Bass", "Deep");
    menus.library().scanCategories();
    const platform::ScratchFolder elsewhere;
    const std::string outside = elsewhere / "Deep.fxp";
    putPatchFile(outside);
    ASSERT_TRUE(menus.loadPatchFile(outside));
    EXPECT_EQ(menus.patch().category(), "Custom");
    shown();
    dialogs.answerNext(true);
    menus.file(13);
    EXPECT_TRUE(platform::exists(namesake));
    EXPECT_EQ(shown(), Texts{"Info: This patch is in no list: there is no file to delete."});
}

TEST_F(Menus, AFavouriteIsACopyThatGoesOnlyByAYes) {
    EXPECT_FALSE(menus.isFavourite());
    test::Ended first, second, third;
    menus.setFavourite(true, first);
    EXPECT_TRUE(first.result());
    EXPECT_TRUE(menus.isFavourite());
    EXPECT_TRUE(platform::exists(favouritePath("Mine")));
    menus.setFavourite(false, second);
    EXPECT_FALSE(second.result());
    EXPECT_TRUE(menus.isFavourite());
    dialogs.answerNext(true);
    menus.setFavourite(false, third);
    EXPECT_TRUE(third.result());
    EXPECT_FALSE(menus.isFavourite());
}

TEST_F(Menus, AFavouriteThatIsOnShowItselfIsNoneAnyMoreOnceItsFileIsGone) {
    menus.setFavourite(true, [](bool) {});
    ASSERT_TRUE(menus.loadPatchFile(favouritePath("Mine")));
    ASSERT_EQ(menus.patch().category(), "Favourites");
    EXPECT_TRUE(menus.isFavourite());
    dialogs.answerNext(true);
    menus.setFavourite(false, [](bool) {});
    EXPECT_FALSE(platform::exists(favouritePath("Mine")));
    EXPECT_FALSE(menus.isFavourite());
    EXPECT_EQ(menus.patch().category(), "Custom");
    EXPECT_EQ(name(), "FavMine") << "what plays goes on";
}

TEST_F(Menus, ANewPatchBeginsWithOneLayerAndNoSamples) {
    putSound(2, 1, 100, 3);
    onShow.layer = 2;
    menus.init(0);
    EXPECT_EQ(audio.layer(2).sample(1).length, 0);
    EXPECT_EQ(value(par::Layer1On), 1.0f);
    EXPECT_EQ(value(par::Layer1On + 2), 0.0f);
    EXPECT_EQ(onShow.layer, 0);
    EXPECT_TRUE(name().starts_with("Init ")) << name();
    EXPECT_EQ(menus.patch().category(), "Custom");
    EXPECT_EQ(commands.names, Texts{"Reset all"});
}

TEST_F(Menus, ALayerIsResetAloneWithItsSamples) {
    putSound(2, 1, 100, 3);
    putSound(1, 1, 100, 3);
    setCut(1, 0.3f);
    onShow.layer = 2;
    menus.init(1);
    EXPECT_EQ(audio.layer(2).sample(1).length, 0);
    EXPECT_EQ(audio.layer(1).sample(1).length, 100);
    EXPECT_EQ(cut(2), 1.0f);
    EXPECT_EQ(cut(1), 0.3f);
    EXPECT_EQ(name(), "Mine");
}

TEST_F(Menus, ATemplateThatIsMissingIsToldAndThePatchStays) {
    menus.init(6);
    EXPECT_EQ(shown(), Texts{"Error: The factory sounds are missing. Please reinstall the software."});
    EXPECT_EQ(name(), "Mine");
    putPatchFile(templatePath("SubtractivePoly"), 0.5f);
    onShow.layer = 3;
    menus.init(6);
    EXPECT_EQ(cut(0), 0.5f);
    EXPECT_EQ(onShow.layer, 0);
    EXPECT_TRUE(name().starts_with("SubtractivePoly ")) << name();
    EXPECT_EQ(menus.patch().category(), "Custom");
    menus.patch().follow();
    EXPECT_EQ(menus.patch().category(), "Custom");
}

TEST_F(Menus, HelpOpensTheMakersPages) {
    for (const int row : {4, 5, 8, 9, 12}) menus.help(row);
    menus.file(19);
    menus.visitShop();
    EXPECT_EQ(pages.size(), 7u);
    for (const std::string& page : pages) EXPECT_TRUE(page.starts_with("https://www.vantoric.example/")) << page;
    menus.help(11);
    EXPECT_EQ(pages.size(), 7u) << "nobody says yes";
    dialogs.answerNext(true);
    menus.help(11);
    EXPECT_EQ(pages.back(), addressOf(WebPage::updates));
    EXPECT_NE(shown().back().find(std::string("Vantoric ") + versionText), std::string::npos);
}

TEST_F(Menus, TheManualIsTheInstalledOneWhereThereIsOne) {
    menus.help(9);
    EXPECT_EQ(pages.back(), addressOf(WebPage::manual));
    const std::string path = platform::bankFolder() + "Manual.html";
    platform::makeFolder(platform::bankFolder());
    ASSERT_TRUE(platform::writeFile(path, "", 0));
    menus.help(9);
    EXPECT_EQ(pages.back(), platform::addressOfFile(path));
    EXPECT_TRUE(pages.back().starts_with("file:///") && pages.back().ends_with("/Vantoric_data/Manual.html")) << pages.back();
}

TEST_F(Menus, WithoutAnOpenerTheUserReadsWhereToLook) {
    menus.help(9);
    EXPECT_TRUE(shown().empty());
    hasOpener = false;
    menus.help(12);
    EXPECT_NE(shown().back().find(addressOf(WebPage::updates)), std::string::npos);
    menus.help(9);
    EXPECT_NE(shown().back().find(addressOf(WebPage::manual)), std::string::npos);
    const std::string path = platform::bankFolder() + "Manual.html";
    platform::makeFolder(platform::bankFolder());
    ASSERT_TRUE(platform::writeFile(path, "", 0));
    menus.help(9);
    const std::vector<std::string> boxes = shown();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0].ends_with("\n" + path)) << boxes[0];
}

TEST_F(Menus, AnOpenerThatFailsIsToldOnceLater) {
    const platform::ScratchFolder desktop;
    const std::string word = desktop / "fail", opener = desktop / "xdg-open",
                      script = "#!/bin/sh\nwhile [ ! -e '" + word + "' ]; do sleep 0.01; done\nexit 3\n";
    ASSERT_TRUE(platform::writeFile(opener, script.data(), script.size()));
    std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
    const platform::Environment path("PATH", (desktop.path() + ":/usr/bin:/bin").c_str());
    MenuCommands byTheDesktop(audio, onShow, dialogs);
    byTheDesktop.help(9);
    byTheDesktop.help(12);
    byTheDesktop.poll();
    EXPECT_TRUE(shown().empty()) << "nobody knows yet";
    ASSERT_TRUE(platform::writeFile(word, "", 0));
    std::vector<std::string> boxes;
    for (int i = 0; i < 500 && boxes.size() < 2; ++i) {
        platform::sleepMilliseconds(10);
        byTheDesktop.poll();
        for (const std::string& box : shown()) boxes.push_back(box);
    }
    ASSERT_EQ(boxes.size(), 2u);
    const bool isManualFirst = boxes[0].find(addressOf(WebPage::manual)) != std::string::npos;
    EXPECT_NE(boxes[isManualFirst ? 0 : 1].find(addressOf(WebPage::manual)), std::string::npos) << boxes[0];
    EXPECT_NE(boxes[isManualFirst ? 1 : 0].find(addressOf(WebPage::updates)), std::string::npos) << boxes[1];
    byTheDesktop.poll();
    EXPECT_TRUE(shown().empty());
}

TEST_F(Menus, LoadTargetsAreArmed) {
    menus.file(3);
    EXPECT_EQ(onShow.loadTarget, 3);
    onShow.layer = 1;
    menus.paste(0);
    EXPECT_EQ(onShow.loadTarget, 2);
    menus.copy(9);
    EXPECT_TRUE(onShow.multilayer);
    menus.copy(9);
    EXPECT_FALSE(onShow.multilayer);
}

TEST_F(Menus, AWaveOfTheFolderShowsUntilAnotherPatchComes) {
    for (const char* name : {"saw", "Organ"}) putWave(platform::wavetableFolder() + name + ".wav");
    onShow.layer = 1;
    menus.chooseWave(2, 5);
    EXPECT_EQ(menus.shownWave(2), "saw");
    EXPECT_EQ(menus.shownWave(1), "");
    EXPECT_EQ(commands.names, Texts{"Load wave 'saw'"});
    EXPECT_NE(audio.layer(1).customWave(2).cycle[10], 0);
    menus.chooseWave(2, 2);
    EXPECT_FALSE(menus.shownWave(2).empty()) << "a random one";
    onShow.layer = 0;
    EXPECT_EQ(menus.shownWave(2), "");
    onShow.layer = 1;
    menus.copy(0);
    menus.paste(2);
    EXPECT_EQ(menus.shownWave(2), "");
}

TEST_F(Menus, SamplesGoToTheLayerOnShow) {
    const platform::ScratchFolder folder;
    putWave(folder / "kick.wav");
    onShow.layer = 3;
    dialogs.choosePathNext(folder / "kick.wav");
    menus.loadSample(1);
    EXPECT_EQ(audio.layer(3).sample(1).length, 600);
    EXPECT_EQ(commands.names, Texts{"Load sample 'kick'"});
    constexpr int reverse = 11;
    menus.editSample(1, reverse);
    EXPECT_EQ(commands.names.size(), 2u);
}

// A user who takes time to answer.
struct SlowMenus : ::testing::Test, test::MenuBench {
    test::SlowDialogs slow;
    MenuCommands slowMenus{audio, onShow, slow};
};

TEST_F(SlowMenus, NothingChangesWhileTheUserThinks) {
    const std::string deep = putPatch("Bass", "Deep", 0.25f);
    const auto before = values();
    slowMenus.file(0);
    slowMenus.file(6);
    slowMenus.file(10);
    EXPECT_EQ(slow.paths.size(), 3u);
    EXPECT_EQ(values(), before);
    EXPECT_TRUE(userFiles().empty());
    slow.paths[0](deep);
    EXPECT_EQ(cut(0), 0.25f);
}

TEST_F(SlowMenus, ALayerIsTheOneOfTheClick) {
    const platform::ScratchFolder folder;
    test::WaveMaker maker;
    const auto wave = maker.putFrames(600, [](int i) { return i % 100 < 50 ? 9000 : -9000; }).file();
    ASSERT_TRUE(platform::writeFile(folder / "a.wav", wave.data(), wave.size()));
    onShow.layer = 2;
    slowMenus.loadSample(0);
    onShow.layer = 0;
    slow.paths.at(0)(folder / "a.wav");
    slow.answers.at(0)(false);
    EXPECT_EQ(audio.layer(2).sample(0).length, 600);
    EXPECT_EQ(audio.layer(0).sample(0).length, 0);
}

}  // namespace
}  // namespace vantoric
