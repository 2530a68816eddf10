#include "library/patch_commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "tests/library/ended.h"
#include "tests/patch/patch_bench.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;

struct PatchMenu : ::testing::Test, PatchBench {
    PatchMenu() {
        for (const char* name : {"User", "Bass"}) fs::create_directories(folder / (std::string("Vantoric_sounds/") + name));
        platform::setDataFolder(folder.path());
        EXPECT_TRUE(files->savePatchAs(deep));
        program.setProgramName("Mine");
    }
    ~PatchMenu() override { platform::setDataFolder(""); }

    // The path that a command ends with; "none" for none.
    template <class... Taken, class... Given>
    std::string path(void (PatchCommands::*command)(Taken...), Given... given) {
        std::string path = "no end";
        (commands.*command)(given..., [&](const auto& chosen) { path = chosen.value_or("none"); });
        return path;
    }
    bool deletePatch(const std::string& category, const std::string& name) {
        return test::ended(commands, &PatchCommands::deletePatch, category, name);
    }

    platform::ScratchFolder folder;
    platform::RecordedDialogs dialogs;
    CommandLog log;
    PatchCommands commands{*files, messages, dialogs, log};
    const std::string deep = folder / "Vantoric_sounds/Bass/deep.fxp";
};

TEST_F(PatchMenu, ASaveBesideTheCategoriesCanBeCalledOff) {
    const auto save = [&] {
        dialogs.choosePathNext(folder / "Vantoric_sounds/lost.fxp");
        return path(&PatchCommands::savePatchAs, std::string("Mine"));
    };
    dialogs.callOffNext();
    EXPECT_EQ(save(), "none");
    EXPECT_FALSE(platform::exists(folder / "Vantoric_sounds/lost.fxp"));
    dialogs.answerNext(true);
    EXPECT_EQ(save(), folder / "Vantoric_sounds/User/lost.fxp");
    EXPECT_FALSE(platform::exists(folder / "Vantoric_sounds/lost.fxp"));
}

TEST_F(PatchMenu, LoadStartsInTheSoundsFolderUntilAFileWasChosen) {
    EXPECT_EQ(path(&PatchCommands::loadPatch), "none") << "the user goes back";
    dialogs.choosePathNext(deep);
    EXPECT_EQ(path(&PatchCommands::loadPatch), deep);
    EXPECT_EQ(program.getProgramName(), "deep");
    EXPECT_EQ(path(&PatchCommands::loadPatch), "none");
    const auto requests = dialogs.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].startFolder, platform::soundsFolder());
    EXPECT_EQ(requests[1].startFolder, platform::soundsFolder());
    EXPECT_EQ(requests[2].startFolder, "");
    EXPECT_EQ(requests[0].title, "Load a fxp program (.fxp file)");
}

TEST_F(PatchMenu, ABadFileIsShownAndThePatchStays) {
    dialogs.choosePathNext(folder / "Vantoric_sounds/Bass/../Bass/deep.fxp");
    fs::resize_file(deep, 1000);
    EXPECT_EQ(path(&PatchCommands::loadPatch), "none");
    ASSERT_EQ(dialogs.boxes().size(), 1u);
    EXPECT_EQ(dialogs.boxes()[0].text, "This file is not compatible with this product.");
    EXPECT_EQ(program.getProgramName(), "Mine");
}

TEST_F(PatchMenu, SaveAsNamesThePatchAndRemembersTheFolder) {
    dialogs.choosePathNext(folder / "Vantoric_sounds/Bass/growl");
    EXPECT_EQ(path(&PatchCommands::savePatchAs, "Growl"), folder / "Vantoric_sounds/Bass/growl.fxp");
    EXPECT_EQ(program.getProgramName(), "growl");
    EXPECT_TRUE(fs::exists(folder / "Vantoric_sounds/Bass/growl.fxp"));
    EXPECT_EQ(path(&PatchCommands::savePatchAs, "Growl"), "none") << "the user goes back";
    const auto requests = dialogs.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].startFolder, platform::userFolder());
    EXPECT_EQ(requests[1].startFolder, folder / "Vantoric_sounds/Bass/");
    EXPECT_TRUE(requests[0].isSave);
}

TEST_F(PatchMenu, QuickSaveOfANamelessPatchIsRefused) {
    EXPECT_FALSE(commands.quickSavePatch("Custom", "deep"));
    ASSERT_EQ(dialogs.boxes().size(), 1u);
    EXPECT_EQ(dialogs.boxes()[0].title, "Error");
    EXPECT_EQ(dialogs.boxes()[0].text, "Your patch still has no name. Use 'Save patch as...' to store it.");
    EXPECT_TRUE(commands.quickSavePatch("Bass", "deep"));
}

TEST_F(PatchMenu, DeleteAsksFirst) {
    EXPECT_FALSE(deletePatch("Bass", "deep"));
    EXPECT_TRUE(fs::exists(deep));
    dialogs.answerNext(true);
    EXPECT_TRUE(deletePatch("Bass", "deep"));
    EXPECT_FALSE(fs::exists(deep));
    EXPECT_EQ(dialogs.boxes()[0].text, "Are you sure that you want to delete the file '" + deep + "'?");
    dialogs.clear();
    dialogs.answerNext(true);
    EXPECT_FALSE(deletePatch("Bass", "deep"));
    EXPECT_EQ(dialogs.boxes()[1].text, "Could not delete this file. Please check if it is write protected.");
}

TEST_F(PatchMenu, SavingProposesTheNameAndStartsInTheUsersFolderWhichIsMade) {
    fs::remove_all(folder / "Vantoric_sounds/User");
    EXPECT_EQ(path(&PatchCommands::savePatchAs, "A/B\tside"), "none");
    EXPECT_TRUE(platform::isFolder(platform::userFolder()));
    ASSERT_EQ(dialogs.requests().size(), 1u);
    EXPECT_EQ(dialogs.requests()[0].startFolder, platform::userFolder());
    EXPECT_EQ(dialogs.requests()[0].name, "A-B-side");
}

TEST_F(PatchMenu, APatchBesideTheCategoriesMayGoToTheUsersFolderInstead) {
    dialogs.choosePathNext(platform::soundsFolder() + "lost");
    dialogs.answerNext(true);
    EXPECT_EQ(path(&PatchCommands::savePatchAs, ""), platform::userFolder() + "lost.fxp");
    EXPECT_TRUE(platform::exists(platform::userFolder() + "lost.fxp"));
    EXPECT_FALSE(platform::exists(platform::soundsFolder() + "lost.fxp"));
    dialogs.choosePathNext(platform::soundsFolder() + "other");
    dialogs.answerNext(false);
    EXPECT_EQ(path(&PatchCommands::savePatchAs, ""), platform::soundsFolder() + "other.fxp") << "as the user says";
}

}  // namespace
}  // namespace vantoric
