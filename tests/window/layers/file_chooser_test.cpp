#include "editor/file_chooser.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "layer_picture.h"
#include "platform/scratch_folder.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;
using VSTGUI::VirtualKey;

// A chooser in a folder with two folders and some waves.
struct Choosing {
    WithGui gui;
    platform::ScratchFolder scratch;
    std::string folder;
    int answers = 0;
    std::optional<std::string> path;
    VSTGUI::SharedPointer<FileChooser> view;

    explicit Choosing(bool isSave = false) : folder(fs::path(scratch.path()).parent_path().string()) {
        for (const char* name : {"Drums", "Loops"}) fs::create_directory(scratch / name);
        for (const char* name : {"kick.wav", "snare.wav", "tom.WAV", "readme.txt", "Drums/hat.wav"})
            std::ofstream(scratch / name) << "x";
        open(isSave, folder);
    }
    void open(bool isSave, const std::string& start) {
        view = VSTGUI::makeOwned<FileChooser>(
            VSTGUI::CRect(0, 0, 1200, 660), platform::fileRequest(platform::FileKind::Wave, isSave, start),
            std::vector<FileChooser::Place>{{"Root", "/"}}, [this](std::optional<std::string> chosen) {
                ++answers;
                path = std::move(chosen);
            });
        view->finishReading();
    }
    std::string selectedName() const { return view->selected() < 0 ? "" : view->list().at(view->selected()).name; }
    void key(VirtualKey key, bool withShift = false) {
        press(*view, key, withShift);
        view->finishReading();
    }
    void types(const std::string& text) {
        type(*view, text);
        view->finishReading();
    }
};

TEST(FileChooser, ShowsFoldersAndTheFilesThatFit) {
    const Choosing choosing;
    EXPECT_EQ(choosing.view->folder(), choosing.folder);
    EXPECT_EQ(choosing.view->list().count(), 5);
}

TEST(FileChooser, ALetterAndEnterChooseAFile) {
    Choosing choosing;
    choosing.types("s");
    EXPECT_EQ(choosing.selectedName(), "snare.wav");
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.path, choosing.folder + "/snare.wav");
    EXPECT_EQ(choosing.answers, 1);
}

TEST(FileChooser, EnterOpensAFolderAndBackspaceLeavesItAtItsPlace) {
    Choosing choosing;
    choosing.types("dr");
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.view->folder(), choosing.folder + "/Drums");
    EXPECT_EQ(choosing.selectedName(), "hat.wav");
    choosing.key(VirtualKey::Back);
    EXPECT_EQ(choosing.view->folder(), choosing.folder);
    EXPECT_EQ(choosing.selectedName(), "Drums");
}

TEST(FileChooser, ADoubleClickOpensAndASingleOneSelects) {
    Choosing choosing;
    const auto snare = choosing.view->rowRect(choosing.view->list().rowOf("snare.wav")).getCenter();
    click(*choosing.view, snare);
    EXPECT_EQ(choosing.answers, 0);
    EXPECT_EQ(choosing.selectedName(), "snare.wav");
    click(*choosing.view, snare);
    EXPECT_EQ(choosing.path, choosing.folder + "/snare.wav");
}

TEST(FileChooser, EscapeChoosesNothing) {
    Choosing choosing;
    choosing.key(VirtualKey::Escape);
    EXPECT_EQ(choosing.answers, 1);
    EXPECT_FALSE(choosing.path);
}

TEST(FileChooser, APathIsTypedAndCompleted) {
    Choosing choosing;
    choosing.types(choosing.folder + "/Dr");
    choosing.key(VirtualKey::Tab);
    choosing.types("ha");
    choosing.key(VirtualKey::Tab);
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.path, choosing.folder + "/Drums/hat.wav");
}

TEST(FileChooser, TheListFollowsAPathThatIsTyped) {
    Choosing choosing;
    choosing.types(choosing.folder + "/Dr");
    EXPECT_EQ(choosing.view->folder(), choosing.folder);
    choosing.key(VirtualKey::Tab);
    EXPECT_EQ(choosing.view->folder(), choosing.folder + "/Drums");
    EXPECT_EQ(choosing.view->list().count(), 1);
    EXPECT_EQ(choosing.selectedName(), "") << "no row of the folder before";
    for (int i = 0; i < 7; ++i) choosing.key(VirtualKey::Back);
    choosing.types("/Loops/");
    EXPECT_EQ(choosing.view->folder(), choosing.folder + "/Loops");
    EXPECT_EQ(choosing.view->list().count(), 0);
    choosing.types("none/");
    EXPECT_EQ(choosing.view->folder(), choosing.folder + "/Loops") << "of what is not there the last folder";
    choosing.key(VirtualKey::Escape);
    EXPECT_EQ(choosing.view->folder(), choosing.folder) << "where the path was begun";
    EXPECT_EQ(choosing.answers, 0);
}

TEST(FileChooser, ARelativePathGoesOnFromWhereItWasBegun) {
    Choosing choosing;
    choosing.types("/");
    choosing.key(VirtualKey::Back);
    choosing.types("Drums/");
    EXPECT_EQ(choosing.view->folder(), choosing.folder + "/Drums");
    choosing.types("hat.wav");
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.path, choosing.folder + "/Drums/hat.wav");
}

TEST(FileChooser, TheLineForANewFolderHidesNoRow) {
    Choosing choosing;
    const auto first = choosing.view->rowRect(0);
    auto makes = typedKey(U'n');
    makes.modifiers.add(VSTGUI::ModifierKey::Control);
    choosing.view->onKey(makes);
    EXPECT_GE(choosing.view->rowRect(0).top, first.top + 20);
    const auto snare = choosing.view->rowRect(choosing.view->list().rowOf("snare.wav")).getCenter();
    click(*choosing.view, snare);
    EXPECT_EQ(choosing.selectedName(), "snare.wav") << "what was under the pointer";
    EXPECT_EQ(choosing.view->rowRect(0), first);
}

TEST(FileChooser, APathToNothingIsToldAndKept) {
    Choosing choosing;
    choosing.types("/no such place/x");
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.view->note(), "There is no such folder.");
    EXPECT_EQ(choosing.answers, 0);
    choosing.key(VirtualKey::Escape);
    EXPECT_EQ(choosing.answers, 0) << "Escape leaves the path first";
    choosing.key(VirtualKey::Escape);
    EXPECT_EQ(choosing.answers, 1);
}

TEST(FileChooser, SavesUnderATypedNameInTheFolder) {
    Choosing choosing(true);
    choosing.types("my sound");
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.path, choosing.folder + "/my sound");
}

TEST(FileChooser, ANameOfAFolderOpensItWhenSaving) {
    Choosing choosing(true);
    choosing.types("Drums");
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.view->folder(), choosing.folder + "/Drums");
    choosing.types("../Loops/x");
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.path, choosing.folder + "/Loops/x");
}

TEST(FileChooser, AnEmptyNameSavesNothing) {
    Choosing choosing(true);
    choosing.key(VirtualKey::Return);
    EXPECT_EQ(choosing.answers, 0);
    EXPECT_EQ(choosing.view->note(), "Type a name for the file.");
}

TEST(FileChooser, MakesAFolderAndGoesIntoIt) {
    Choosing choosing(true);
    auto makes = typedKey(U'n');
    makes.modifiers.add(VSTGUI::ModifierKey::Control);
    choosing.view->onKey(makes);
    choosing.types("Takes");
    choosing.key(VirtualKey::Return);
    EXPECT_TRUE(fs::is_directory(choosing.scratch / "Takes"));
    EXPECT_EQ(choosing.view->folder(), choosing.folder + "/Takes");
}

TEST(FileChooser, AFolderThatVanishesIsToldAndLeftUpwards) {
    Choosing choosing;
    choosing.open(false, choosing.folder + "/Drums");
    fs::remove_all(choosing.scratch / "Drums");
    choosing.key(VirtualKey::F5);
    EXPECT_EQ(choosing.view->list().listing().state, FolderState::missing);
    EXPECT_EQ(choosing.selectedName(), "");
    choosing.key(VirtualKey::Back);
    EXPECT_EQ(choosing.view->folder(), choosing.folder);
}

TEST(FileChooser, FollowsFilesThatComeAndGoOnDisk) {
    Choosing choosing;
    choosing.types("sn");
    std::ofstream(choosing.scratch / "a new one.wav") << "x";
    for (int round = 0; round < 70; ++round) choosing.view->follow();
    choosing.view->finishReading();
    EXPECT_EQ(choosing.view->list().count(), 6);
    EXPECT_EQ(choosing.selectedName(), "snare.wav") << "what was selected stays so";
}

TEST(FileChooser, BeginsAtTheNearestFolderThatIsThere) {
    Choosing choosing;
    choosing.open(false, choosing.folder + "/gone/long ago");
    EXPECT_EQ(choosing.view->folder(), choosing.folder);
}

TEST(FileChooser, FiveThousandFilesScroll) {
    Choosing choosing;
    fs::create_directory(choosing.scratch / "many");
    for (int number = 0; number < 5000; ++number)
        std::ofstream(choosing.scratch / ("many/" + std::to_string(number) + ".wav")) << "x";
    choosing.open(false, choosing.folder + "/many");
    EXPECT_EQ(choosing.view->list().count(), 5000);
    choosing.key(VirtualKey::End);
    EXPECT_EQ(choosing.selectedName(), "4999.wav");
    EXPECT_LT(choosing.view->rowRect(4999).bottom, 660);
    turnWheel(*choosing.view, choosing.view->rowRect(4999).getCenter(), 1);
    EXPECT_GT(choosing.view->rowRect(4999).top, choosing.view->rowRect(4990).top);
    choosing.types("42");
    EXPECT_EQ(choosing.selectedName(), "42.wav");
}

TEST(FileChooser, AnyClickAndKeyInAnySizeIsSafe) {
    Choosing choosing;
    for (const VSTGUI::CRect& area :
         {VSTGUI::CRect(0, 0, 1200, 660), VSTGUI::CRect(0, 0, 1200, 128), VSTGUI::CRect(0, 0, 802, 128)})
        for (const bool isSave : {false, true}) {
            const auto view =
                VSTGUI::makeOwned<FileChooser>(area, platform::fileRequest(platform::FileKind::Wave, isSave, "/proc/self"),
                                               std::vector<FileChooser::Place>{{"Root", "/"}}, nullptr);
            for (double y = 1; y < area.bottom; y += 9)
                for (double x = 1; x < area.right; x += 31) {
                    click(*view, {x, y});
                    turnWheel(*view, {x, y}, x > 400 ? 2 : -2);
                    press(*view, static_cast<int>(x) % 2 == 0 ? VirtualKey::Tab : VirtualKey::Down);
                }
            view->finishReading();
        }
}

}  // namespace
}  // namespace vantoric
