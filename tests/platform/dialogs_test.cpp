#include "platform/dialogs.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "tests/platform/slow_dialogs.h"

namespace vantoric::platform {
namespace {

// What the user chose; "gone back" for none.
std::string chosen(Dialogs& dialogs, const std::string& startFolder, bool isSave, FileKind kind) {
    std::string path = "no answer";
    askFilePath(dialogs, startFolder, isSave, kind, [&](const auto& choice) { path = choice.value_or("gone back"); });
    return path;
}

bool answer(Dialogs& dialogs, const char* text, const char* name) {
    bool given = false;
    askQuestion(dialogs, [&](bool yes) { given = yes; }, "Warning", "%s '%s'?", text, name);
    return given;
}

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
    EXPECT_TRUE(answer(dialogs, "Delete", "a"));
    EXPECT_FALSE(answer(dialogs, "Delete", "b"));
    EXPECT_FALSE(answer(dialogs, "Delete", "nobody answers"));
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
    dialogs.choosePathNext("/nowhere/a");
    EXPECT_EQ(chosen(dialogs, "/start/", true, FileKind::Patch), "/nowhere/a.fxp");
    EXPECT_EQ(dialogs.requests()[0].startFolder, "/start/");
    dialogs.choosePathNext("/nowhere/a.fxp");
    EXPECT_EQ(chosen(dialogs, "", true, FileKind::Patch), "/nowhere/a.fxp");
    dialogs.choosePathNext("/nowhere/a.FXP");
    EXPECT_EQ(chosen(dialogs, "", true, FileKind::Patch), "/nowhere/a.FXP.fxp");
    dialogs.choosePathNext("/nowhere/a");
    EXPECT_EQ(chosen(dialogs, "", false, FileKind::Patch), "/nowhere/a") << "loading adds nothing";
    EXPECT_TRUE(dialogs.boxes().empty());
}

TEST(Dialogs, AnExistingFileIsOverwrittenOnlyByAYes) {
    const platform::ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a.wav", "1", 1));
    RecordedDialogs dialogs;
    dialogs.choosePathNext(folder / "a");
    EXPECT_EQ(chosen(dialogs, "", true, FileKind::Wave), "gone back");
    EXPECT_EQ(dialogs.boxes()[0].title, "Warning");
    EXPECT_EQ(dialogs.boxes()[0].text, "Are you sure that you want to overwrite this file?");
    dialogs.choosePathNext(folder / "a");
    dialogs.answerNext(true);
    EXPECT_EQ(chosen(dialogs, "", true, FileKind::Wave), folder / "a.wav");
}

TEST(Dialogs, WhoDoesNotOverwriteChoosesAnewWithFolderAndNameKept) {
    const platform::ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a.wav", "1", 1));
    RecordedDialogs dialogs;
    for (const char* name : {"a", "a.wav", "b"}) dialogs.choosePathNext(folder / name);
    EXPECT_EQ(chosen(dialogs, "/start", true, FileKind::Wave), folder / "b.wav");
    const auto requests = dialogs.requests();
    ASSERT_EQ(requests.size(), 3u);
    for (const int again : {1, 2}) {
        EXPECT_EQ(requests[again].startFolder, folder / "");
        EXPECT_EQ(requests[again].name, "a");
        EXPECT_TRUE(requests[again].isSave);
    }
}

TEST(Dialogs, GoingBackIsNoPath) {
    RecordedDialogs dialogs;
    EXPECT_EQ(chosen(dialogs, "", false, FileKind::All), "gone back");
    EXPECT_EQ(chosen(dialogs, "", true, FileKind::All), "gone back");
}

TEST(Dialogs, AUserMayTakeTimeAndAnswerOnce) {
    const platform::ScratchFolder folder;
    ASSERT_TRUE(writeFile(folder / "a.wav", "1", 1));
    test::SlowDialogs dialogs;
    std::vector<std::string> got;
    askFilePath(dialogs, "", true, FileKind::Wave, [&](const auto& path) { got.push_back(path.value_or("gone back")); });
    EXPECT_TRUE(got.empty());
    dialogs.paths.at(0)(folder / "a");
    EXPECT_TRUE(got.empty()) << "the file is there: a question";
    dialogs.answers.at(0)(true);
    EXPECT_EQ(got, std::vector<std::string>{folder / "a.wav"});
}

TEST(Dialogs, WithoutAWindowTextsGoToStandardErrorAndNothingWaits) {
    testing::internal::CaptureStderr();
    desktopDialogs().message("Error", "The factory sounds are missing.");
    EXPECT_FALSE(answer(desktopDialogs(), "Really", "x"));
    EXPECT_EQ(chosen(desktopDialogs(), "", true, FileKind::Patch), "gone back");
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_NE(text.find("The factory sounds are missing."), std::string::npos);
    EXPECT_NE(text.find("Really 'x'?"), std::string::npos);
}

}  // namespace
}  // namespace vantoric::platform
