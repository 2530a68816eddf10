// What a window shows beside the values, after steps back and forth.
#include "editor/model/work_history.h"

#include <gtest/gtest.h>

#include "editor/model/menu_rows.h"
#include "editor/model/spoken_values.h"
#include "library/spare_patch.h"
#include "patch/patch_file.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/scratch_folder.h"
#include "tests/editor/editor_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric::test {
namespace {

namespace par = parameter;

// The folder of the data, there before the editor and gone after it.
struct OwnData {
    OwnData() { platform::setDataFolder(folder.path()); }
    ~OwnData() { platform::setDataFolder(""); }
    platform::ScratchFolder folder;
};

struct WorkSteps : ::testing::Test, OwnData, EditorRig {
    WorkSteps() {
        platform::makeFolder(platform::wavetableFolder());
        for (const char* name : {"Organ", "Saw"}) {
            WaveMaker maker;
            const int length = name[0] == 'O' ? 100 : 60;
            const auto wave = maker.putFrames(600, [=](int i) { return i % length < length / 2 ? 9000 : -9000; }).file();
            EXPECT_TRUE(platform::writeFile(platform::wavetableFolder() + name + ".wav", wave.data(), wave.size()));
        }
    }
    void chooseWave(int oscillator, const char* name) {
        const auto rows = editor.commands().waveRows();
        const auto row = std::find(rows.begin(), rows.end(), name) - rows.begin();
        ASSERT_LT(row, static_cast<std::ptrdiff_t>(rows.size())) << name;
        editor.rowChosen(tag::waveMenu1 + oscillator, static_cast<int>(row));
    }
    std::string shownWave(int oscillator) {
        return faceText(editor, controlEntry(controlIndexForTag(tag::waveMenu1 + oscillator)));
    }

    // Patches of a category, of different sound, in the lists.
    void putPatches(const std::string& category, const std::vector<std::string>& names) {
        platform::makeFolder(platform::soundsFolder() + category);
        const auto patch = std::make_unique<SparePatch>(audio.messages());
        for (const std::string& name : names) {
            patch->parameters().setParameter(par::Cutoff1, 0.01f * static_cast<float>(name.back()));
            EXPECT_TRUE(patch->files().savePatchFile(patchPath(category, name)));
        }
        editor.patches().scanCategories();
    }
    void load(const std::string& category, const std::string& name) {
        ASSERT_TRUE(editor.patches().selectPatch(category, name));
        ASSERT_TRUE(editor.patches().loadSelectedPatch());
    }
    void step(int tag) { editor.valueChanged(tag, 1.0f, true); }
    // What the band shows, and where the two lists stand.
    std::string band() { return editor.commands().patch().category() + "/" + editor.patchName(); }
    std::string selected() { return editor.patches().selectedCategory() + "/" + editor.patches().selectedPatch(); }
    std::string listed() { return editor.patches().patchNames().empty() ? "" : editor.patches().patchNames().front(); }

    WorkHistory work{audio, editor};
};

TEST_F(WorkSteps, TheListsFollowThePatchThatComesBack) {
    putPatches("Keys", {"Key 1", "Key 2", "Key 3", "Key 4"});
    load("Keys", "Key 2");
    load("Keys", "Key 3");
    work.undo();
    EXPECT_EQ(band(), "Keys/Key 2");
    EXPECT_EQ(selected(), "Keys/Key 2");
    work.redo();
    EXPECT_EQ(selected(), "Keys/Key 3");
    work.undo();
    step(tag::nextPatch);
    EXPECT_EQ(band(), "Keys/Key 3") << "the one after that on show";
    work.undo();
    step(tag::previousPatch);
    EXPECT_EQ(band(), "Keys/Key 1");
}

TEST_F(WorkSteps, ACategoryWithoutPatchesLeavesTheLists) {
    putPatches("Empty", {});
    putPatches("Keys", {"Key 1", "Key 2", "Key 3"});
    load("Keys", "Key 2");
    for (const int row : {0, 2}) {
        view.forget();
        editor.rowChosen(tag::categoryList, row);
        EXPECT_EQ(selected(), "Keys/Key 2");
        EXPECT_EQ(listed(), "Key 1");
        EXPECT_EQ(view.hints.size(), 1u);
    }
    editor.rowChosen(tag::initMenu, init_row::all);
    editor.rowChosen(tag::categoryList, 0);
    EXPECT_EQ(listed(), "Key 1") << "also of a patch in no list";
}

TEST_F(WorkSteps, TheListsFollowACompareIntoAnotherCategory) {
    putPatches("Bass", {"Acid", "Bone", "Crawl"});
    putPatches("Keys", {"Key 1", "Key 2"});
    load("Keys", "Key 1");
    work.compare();
    load("Bass", "Acid");
    work.compare();
    EXPECT_EQ(band(), "Keys/Key 1");
    EXPECT_EQ(selected(), "Keys/Key 1");
    EXPECT_EQ(listed(), "Key 1");
    work.compare();
    EXPECT_EQ(selected(), "Bass/Acid");
    EXPECT_EQ(listed(), "Acid");
    step(tag::nextPatch);
    EXPECT_EQ(band(), "Bass/Bone");
}

TEST_F(WorkSteps, TheListsFollowALayersPatchThatIsTakenBack) {
    putPatches("Brass", {"Horn", "Tuba"});
    putPatches("Seq", {"Run"});
    load("Brass", "Horn");
    const std::uint64_t before = work.history().stateId();
    editor.rowChosen(tag::fileMenu, file_row::loadToLayer1 + 1);
    load("Seq", "Run");
    EXPECT_EQ(band(), "Custom/Run");
    ASSERT_TRUE(work.history().undoTo(before));
    EXPECT_EQ(band(), "Brass/Horn");
    EXPECT_EQ(selected(), "Brass/Horn");
    step(tag::nextPatch);
    EXPECT_EQ(band(), "Brass/Tuba");
}

TEST_F(WorkSteps, APatchOfNoListThatComesBackIsInNoneAgain) {
    putPatches("Keys", {"Key 1", "Key 2"});
    load("Keys", "Key 2");
    editor.rowChosen(tag::initMenu, init_row::all);
    const std::string made = band();
    EXPECT_TRUE(made.starts_with("Custom/")) << made;
    work.undo();
    EXPECT_EQ(selected(), "Keys/Key 2");
    work.redo();
    EXPECT_EQ(band(), made);
    EXPECT_EQ(editor.patches().selection(), PatchSelection());
    EXPECT_EQ(editor.commands().patch().file(), "") << "there is nothing to delete";
}

TEST_F(WorkSteps, APatchWhoseFileIsGoneComesBackOutsideTheLists) {
    putPatches("Keys", {"Key 1", "Key 2"});
    load("Keys", "Key 1");
    load("Keys", "Key 2");
    EXPECT_TRUE(platform::removeFile(patchPath("Keys", "Key 1")));
    work.undo();
    EXPECT_EQ(band(), "Custom/Key 1");
}

TEST_F(WorkSteps, ANameThatAHostGaveComesBackWithItsFile) {
    putPatches("Keys", {"Key 1", "Key 2"});
    load("Keys", "Key 1");
    audio.program().setProgramName("Renamed");
    load("Keys", "Key 2");
    work.undo();
    EXPECT_EQ(band(), "Keys/Renamed");
    EXPECT_EQ(selected(), "Keys/Key 1");
    EXPECT_EQ(editor.commands().patch().file(), "Key 1");
}

TEST_F(WorkSteps, AWavesNameGoesAndComesBackWithIt) {
    chooseWave(1, "Organ");
    chooseWave(1, "Saw");
    EXPECT_EQ(shownWave(1), "Saw");
    EXPECT_EQ(work.undo(), "Undone: Load wave 'Saw'");
    EXPECT_EQ(shownWave(1), "Organ");
    work.undo();
    EXPECT_EQ(shownWave(1), "Custom wave");
    work.redo();
    EXPECT_EQ(shownWave(1), "Organ");
    EXPECT_EQ(work.redo(), "Done again: Load wave 'Saw'");
    EXPECT_EQ(shownWave(1), "Saw");
    EXPECT_EQ(shownWave(0), "Custom wave");
}

TEST_F(WorkSteps, TheMenuOfWavesStandsAtTheOneThatPlays) {
    const ControlEntry& menu = controlEntry(controlIndexForTag(tag::waveMenu1 + 1));
    const int first = MenuCommands::firstWaveRow;
    EXPECT_EQ(editor.shownRow(menu), -1);
    EXPECT_EQ(editor.rowAfter(menu, 1), first) << "commands are no waves";
    EXPECT_EQ(editor.rowAfter(menu, -1), -1);
    chooseWave(1, "Organ");
    EXPECT_EQ(editor.shownRow(menu), first);
    EXPECT_EQ(editor.rowAfter(menu, 1), first + 1);
    EXPECT_EQ(editor.rowAfter(menu, -1), first) << "the first";
    editor.rowChosen(tag::waveMenu1 + 1, editor.rowAfter(menu, 1));
    EXPECT_EQ(shownWave(1), "Saw");
    EXPECT_EQ(editor.rowAfter(menu, 10), first + 1) << "the last";
    EXPECT_EQ(editor.shownRow(controlEntry(controlIndexForTag(tag::waveMenu1))), -1) << "of another oscillator";
}

TEST_F(WorkSteps, WavesOfAllLayersHaveTheirNamesWhenAPatchComesBack) {
    constexpr int copyPatch = 0, pastePatch = 2;
    editor.rowChosen(tag::copyMenu, copyPatch);
    chooseWave(0, "Organ");
    editor.showLayer(2);
    chooseWave(2, "Saw");
    editor.rowChosen(tag::pasteMenu, pastePatch);
    editor.showLayer(0);
    EXPECT_EQ(shownWave(0), "Custom wave");
    EXPECT_EQ(work.undo(), "Undone: Paste complete patch");
    editor.showLayer(0);
    EXPECT_EQ(shownWave(0), "Organ");
    editor.showLayer(2);
    EXPECT_EQ(shownWave(2), "Saw");
    work.redo();
    editor.showLayer(2);
    EXPECT_EQ(shownWave(2), "Custom wave");
    work.compare();
    work.undo();
    work.undo();
    editor.showLayer(2);
    EXPECT_EQ(shownWave(2), "Saw") << "past the comparison";
}

}  // namespace
}  // namespace vantoric::test
