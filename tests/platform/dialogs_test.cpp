#include "platform/dialogs.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"

namespace vantoric::platform {
namespace {

TEST(Dialogs, AMessageIsFormattedByPrintfRules) {
    RecordedDialogs dialogs;
    showMessage(dialogs, "Info", "%d of '%s' %%", 3, "x");
    ASSERT_EQ(dialogs.boxes().size(), 1u);
    EXPECT_EQ(dialogs.boxes()[0].title, "Info");
    EXPECT_EQ(dialogs.boxes()[0].text, "3 of 'x' %");
    EXPECT_FALSE(dialogs.boxes()[0].isQuestion);
}

TEST(Dialogs, ATextMayBeLong) {
    RecordedDialogs dialogs;
    const std::string text(5000, 'a');
    showMessage(dialogs, "Info", "%s!", text.c_str());
    EXPECT_EQ(dialogs.boxes()[0].text, text + "!");
}

TEST(Dialogs, OnlyYesIsYes) {
    RecordedDialogs dialogs;
    dialogs.answerNext(true);
    dialogs.answerNext(false);
    EXPECT_TRUE(askQuestion(dialogs, "Warning", "Delete '%s'?", "a"));
    EXPECT_FALSE(askQuestion(dialogs, "Warning", "Delete '%s'?", "b"));
    EXPECT_FALSE(askQuestion(dialogs, "Warning", "Delete '%s'?", "nobody answers"));
    EXPECT_EQ(dialogs.boxes()[1].text, "Delete 'b'?");
    EXPECT_TRUE(dialogs.boxes()[1].isQuestion);
}

TEST(Dialogs, EachKindOfFileHasItsTitlesAndFilter) {
    EXPECT_EQ(fileRequest(FileKind::All, false, "").title, "Load a file");
    EXPECT_EQ(fileRequest(FileKind::All, true, "").title, "Save a file");
    EXPECT_EQ(fileRequest(FileKind::Patch, false, "").title, "Load a fxp program (.fxp file)");
    EXPECT_EQ(fileRequest(FileKind::Patch, true, "").title, "Save a fxp program (.fxp file)");
    EXPECT_EQ(fileRequest(FileKind::Bank, true, "").title, "Save a fxb bank (.fxb file)");
    EXPECT_EQ(fileRequest(FileKind::Wave, false, "").filterText, "Wave file (*.wav)");
    EXPECT_EQ(fileRequest(FileKind::Sfz, false, "").title, "Import .sfz file");
    EXPECT_EQ(fileRequest(FileKind::Sfz, false, "").extension, ".sfz");
    EXPECT_EQ(fileRequest(FileKind::All, false, "").filterText, "All files(*.*)");
    EXPECT_EQ(fileRequest(static_cast<FileKind>(4), false, "").title, "Load a file");
}

TEST(Dialogs, SavingAddsTheExtensionUnlessItIsThere) {
    RecordedDialogs dialogs;
    std::string path;
    dialogs.choosePathNext("/nowhere/a");
    ASSERT_TRUE(askFilePath(dialogs, path, "/start/", true, FileKind::Patch));
    EXPECT_EQ(path, "/nowhere/a.fxp");
    EXPECT_EQ(dialogs.requests()[0].startFolder, "/start/");
    dialogs.choosePathNext("/nowhere/a.fxp");
    ASSERT_TRUE(askFilePath(dialogs, path, "", true, FileKind::Patch));
    EXPECT_EQ(path, "/nowhere/a.fxp");
    dialogs.choosePathNext("/nowhere/a.FXP");
    ASSERT_TRUE(askFilePath(dialogs, path, "", true, FileKind::Patch));
    EXPECT_EQ(path, "/nowhere/a.FXP.fxp");
    dialogs.choosePathNext("/nowhere/a");
    ASSERT_TRUE(askFilePath(dialogs, path, "", false, FileKind::Patch));
    EXPECT_EQ(path, "/nowhere/a") << "loading adds nothing";
    EXPECT_TRUE(dialogs.boxes().empty());
}

TEST(Dialogs, AnExistingFileIsOverwrittenOnlyByAYes) {
    const platform::ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a.wav", "1", 1));
    RecordedDialogs dialogs;
    std::string path = "before";
    dialogs.choosePathNext(folder / "a");
    EXPECT_FALSE(askFilePath(dialogs, path, "", true, FileKind::Wave));
    EXPECT_EQ(path, "before");
    EXPECT_EQ(dialogs.boxes()[0].title, "Warning");
    EXPECT_EQ(dialogs.boxes()[0].text, "Are you sure that you want to overwrite this file?");
    dialogs.choosePathNext(folder / "a");
    dialogs.answerNext(true);
    EXPECT_TRUE(askFilePath(dialogs, path, "", true, FileKind::Wave));
    EXPECT_EQ(path, folder / "a.wav");
}

TEST(Dialogs, GoingBackLeavesThePath) {
    RecordedDialogs dialogs;
    std::string path = "before";
    EXPECT_FALSE(askFilePath(dialogs, path, "", false, FileKind::All));
    EXPECT_EQ(path, "before");
}

TEST(Dialogs, WithoutAWindowTextsGoToStandardErrorAndNothingWaits) {
    testing::internal::CaptureStderr();
    std::string path = "before";
    desktopDialogs().message("Error", "The factory sounds are missing.");
    EXPECT_FALSE(desktopDialogs().question("Warning", "Really?"));
    EXPECT_FALSE(askFilePath(desktopDialogs(), path, "", true, FileKind::Patch));
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_NE(text.find("The factory sounds are missing."), std::string::npos);
    EXPECT_NE(text.find("Really?"), std::string::npos);
    EXPECT_EQ(path, "before");
}

}  // namespace
}  // namespace vantoric::platform
