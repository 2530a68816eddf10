// What a window shows beside the values, after steps back and forth.
#include "editor/model/work_history.h"

#include <gtest/gtest.h>

#include "editor/model/menu_rows.h"
#include "editor/model/spoken_values.h"
#include "platform/module_folder.h"
#include "platform/scratch_folder.h"
#include "tests/editor/editor_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric::test {
namespace {

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

    WorkHistory work{audio, editor};
};

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
