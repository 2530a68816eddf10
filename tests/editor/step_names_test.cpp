// What the history calls the changes of parameters.
#include "editor/model/step_names.h"

#include <gtest/gtest.h>

#include "editor/model/control_table.h"
#include "editor/model/work_history.h"
#include "effects/effect_texts.h"
#include "effects/type_table.h"
#include "tests/editor/editor_rig.h"

namespace vantoric::test {
namespace {

struct StepNames : ::testing::Test {
    void turn(int index, float value) { rig.editor.edits().change(index, value); }
    std::string undone(int index, float value) {
        turn(index, value);
        return work.history().undoName();
    }
    void chooseEffect(int number, int row, int layer = 0) {
        audio.parameters().setParameter(hostIndex(number, layer), static_cast<float>(row) / 128);
    }

    EditorRig rig;
    Instrument& audio = rig.audio;
    WorkHistory work{audio, rig.editor};
};

TEST_F(StepNames, AreThoseOfTheControlsWithTheirLayer) {
    EXPECT_EQ(undone(hostIndex(par::Cutoff1, 1), 0.25f), "FIL1 CUTOFF, layer 2");
    EXPECT_EQ(undone(par::Cutoff1, 0.25f), "FIL1 CUTOFF, layer 1");
    EXPECT_EQ(undone(par::Volume, 0.25f), "MASTER VOLUME");
    EXPECT_EQ(undone(par::Layer2On, 1.0f), "SYNT2 ON");
    EXPECT_EQ(undone(hostIndex(par::LfoSpd1, 3), 0.75f), "LFO1 SPEED, layer 4") << "not that of the text beside it";
    EXPECT_EQ(undone(hostIndex(par::MatVal1 + 2, 2), 0.75f), "Modulation 3, layer 3");
    EXPECT_EQ(undone(par::ArpStp1 + 20, 0.75f), "ArpStp 21, layer 1") << "it has no control";
}

TEST_F(StepNames, OfEffectsAreTheSlotsAndWhatTheEffectCallsItsParameter) {
    chooseEffect(par::FxMaType, 6);
    const int master = masterTypeFromValue(audio.parameters().getParameter(par::FxMaType));
    EXPECT_EQ(effectParameterWords(master, 1), "Time");
    EXPECT_EQ(undone(par::FxMaPar1, 0.3f), "Master effect: Time");
    EXPECT_EQ(undone(par::FxMaPar1 + 1, 0.3f), "Master effect: Feedback");
    EXPECT_EQ(undone(par::FxMaMix, 0.3f), "Master effect: Mix");
    EXPECT_EQ(undone(par::FxMaType, 0.0f), "Master effect: Type");
    EXPECT_EQ(undone(par::FxMaPar1, 0.9f), "Master effect: Parameter 1") << "the slot is off";
    chooseEffect(par::FxIn2Type, 6, 2);
    const int insert = typeFromValue(audio.parameters().getParameter(hostIndex(par::FxIn2Type, 2)));
    const std::string name = effectParameterWords(insert, 2);
    ASSERT_FALSE(name.empty());
    EXPECT_EQ(undone(hostIndex(par::FxIn2Par1 + 1, 2), 0.3f), "Insert effect 2: " + name + ", layer 3");
    EXPECT_EQ(undone(par::FxIn2Par1 + 1, 0.3f), "Insert effect 2: Parameter 2, layer 1") << "that slot is off there";
}

TEST_F(StepNames, OfSeveralLayersTellThem) {
    History::Time time{};
    work.history().setClock([&] { return time; });
    const auto turnIn = [&](std::initializer_list<int> layers, float value) {
        time += std::chrono::minutes(1);
        const History::Action event(work.history());
        for (const int layer : layers) turn(hostIndex(par::Reso1, layer), value);
        turn(hostIndex(par::Cutoff1, 0), value);
    };
    turnIn({0, 1, 2, 3}, 0.25f);
    EXPECT_EQ(work.history().undoName(), "FIL1 RESO, all layers");
    turnIn({1, 3}, 0.75f);
    EXPECT_EQ(work.history().undoName(), "FIL1 RESO, layers 2, 4");
}

TEST_F(StepNames, OfAKnobsMenuTellTheControl) {
    rig.editor.showLayer(1);
    rig.editor.knobSourceChosen(par::Cutoff1, 100);
    EXPECT_EQ(work.history().undoName(), "Modulate FIL1 CUTOFF, layer 2");
    rig.editor.toggleMultilayer();
    rig.editor.knobRowChosen(par::Cutoff1, removeModulationRow);
    EXPECT_EQ(work.history().undoName(), "Remove modulation of FIL1 CUTOFF, all layers");
    EXPECT_EQ(work.undo(), "Undone: Remove modulation of FIL1 CUTOFF, all layers");
}

// Every control that writes a parameter: no step is called by a word that stands nowhere in the window.
TEST_F(StepNames, AreNeverThoseOfTheTableWhereThereIsAControl) {
    for (int i = 0; i < controlCount(); ++i) {
        const int number = parameterOfTag(controlEntry(i).tag);
        if (number < 0 || isOneOf(number, par::MatSrc1, 3 * storedMatrixSlots)) continue;
        const std::string name = stepName(audio.parameters(), {number});
        EXPECT_NE(name.substr(0, name.find(',')), nameOfParameter(number)) << controlEntry(i).name;
        EXPECT_FALSE(name.empty());
    }
}

TEST(EffectWords, StandBeforeTheValueInTheText) {
    int named = 0;
    for (int type = 0; type < effectTypeCount; ++type)
        for (int index = 1; index <= 4; ++index) {
            const std::string words = effectParameterWords(type, index);
            char text[effectTextSize];
            effectParameterText(type, index, 0.5f, text);
            if (words.empty()) continue;
            EXPECT_TRUE(std::string(text).starts_with(words + " ")) << text << ": " << words;
            EXPECT_EQ(words.find_first_of("0123456789%+-:"), std::string::npos) << words;
            ++named;
        }
    EXPECT_GT(named, 190);
    EXPECT_EQ(effectParameterWords(0, 1), "");
    EXPECT_EQ(effectParameterWords(1, 0), "");
    EXPECT_EQ(effectParameterWords(1, 5), "");
}

}  // namespace
}  // namespace vantoric::test
