#include "editor/model/matrix_editing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/model/knob_commands.h"
#include "parameters/label_lists.h"
#include "patch/patch_reset.h"
#include "platform/recorded_dialogs.h"
#include "tests/engine/engine_rig.h"
#include "voice/matrix.h"

namespace vantoric {
namespace {

namespace par = parameter;

struct Gesture {
    std::vector<int> began, ended;
};

class MatrixEditingTest : public testing::Test, protected EditListener {
protected:
    MatrixEditingTest() {
        rig.clearParameters();
        for (int layer = 0; layer < layerCount; ++layer)
            for (int i = 0; i < storedMatrixSlots; ++i) rig.set(par::MatVal1 + i, 0.5f, layer);
    }
    void setSlot(int slot, int source, int destination, float amount, int layer = 0) {
        rig.setList(par::MatSrc1 + slot, source, layer);
        rig.setList(par::MatDst1 + slot, destination, layer);
        rig.set(par::MatVal1 + slot, amount, layer);
    }
    int list(int number, int layer = 0) { return rig.audio.parameters().getListIndex(hostIndex(number, layer)); }
    float value(int number, int layer = 0) { return rig.audio.parameters().getParameter(hostIndex(number, layer)); }

    void editBegan(int index, float) override { gesture.began.push_back(index); }
    void editEnded(int index, float) override { gesture.ended.push_back(index); }

    test::EngineRig rig;
    OnShow onShow;
    ParameterEdits edits{rig.audio};
    platform::RecordedDialogs dialogs;
    MatrixEditing matrix{rig.audio.parameters(), edits, onShow, dialogs};
    Gesture gesture;
};

TEST_F(MatrixEditingTest, LeadsFromEveryDestinationToItsParameterAndBack) {
    for (int index = 1; index < 97; ++index) {
        const int number = destinationNumber(index);
        if (number == 0) continue;
        EXPECT_EQ(destinationOf(number), index) << number;
    }
    EXPECT_EQ(destinationOf(0), 0);
    EXPECT_EQ(destinationOf(par::Modwheel), 0);
}

TEST_F(MatrixEditingTest, GivesEveryRowOfTheSubmenusTheSourceOfItsLabel) {
    const auto label = [](int tag) {
        return std::string(matrixSourceLabels[static_cast<std::size_t>(submenuSource(tag).source)]);
    };
    EXPECT_EQ(label(100), "Lfo1+");
    EXPECT_EQ(label(105), "Lfo3+-");
    EXPECT_EQ(label(107), "Step Lfo+-");
    EXPECT_EQ(label(200), "Sine 1/64Hz");
    EXPECT_EQ(label(216), "Sine 64Hz");
    EXPECT_EQ(label(303), "Aux2 Env");
    EXPECT_EQ(label(304), "Decay8ms");
    EXPECT_EQ(label(315), "Decay16s");
    EXPECT_EQ(label(400), "Key");
    EXPECT_EQ(label(414), "Hold");
    EXPECT_EQ(label(502), "Noise");
}

TEST_F(MatrixEditingTest, ShowsTheLowestSlotOfAKnobAndCountsAll) {
    setSlot(2, 18, 32, 0.75f);
    setSlot(9, 2, 32, 0.1f);
    setSlot(15, 19, 32, 1.0f);  // beyond those that run
    const KnobModulations knobs = matrix.updateKnobModulation();
    const KnobModulation& cutoff = knobs[par::Cutoff1];
    EXPECT_FLOAT_EQ(cutoff.modDepth, 0.5f);
    EXPECT_EQ(cutoff.modCount, 2);
    EXPECT_STREQ(cutoff.modNames, "Velocity");
    EXPECT_FALSE(cutoff.modBipolar);
    EXPECT_EQ(knobs[par::Cutoff1 + 1].modCount, 0);
}

TEST_F(MatrixEditingTest, ASeparatorAsDestinationBelongsToNoKnob) {
    setSlot(0, 18, 4, 0.9f);
    EXPECT_EQ(matrix.updateKnobModulation()[par::Volume].modCount, 0);
    matrix.removeModulation(par::Volume);
    EXPECT_EQ(list(par::MatDst1), 4);
}

TEST_F(MatrixEditingTest, ADropOfTheSameSourceTakesItsSlotAgain) {
    rig.set(par::Cutoff1, 0.2f);
    EXPECT_EQ(matrix.addDroppedModulation(par::Cutoff1, 50), 1);
    EXPECT_FLOAT_EQ(value(par::MatVal1), 0.9f);
    rig.set(par::Cutoff1, 0.8f);
    EXPECT_EQ(matrix.addDroppedModulation(par::Cutoff1, 50), 1);
    EXPECT_FLOAT_EQ(value(par::MatVal1), 0.1f);
    EXPECT_EQ(list(par::MatSrc1 + 1), 0);
}

TEST_F(MatrixEditingTest, ShowsThePageOfTheSlot) {
    for (int i = 0; i < 13; ++i) setSlot(i, 18, 33, 0.7f);
    EXPECT_EQ(matrix.addModulation(par::Cutoff1, 100), 3);
    rig.setList(par::MatSrc1 + 6, 0);
    EXPECT_EQ(matrix.addModulation(par::Reso1, 100), 2);
}

TEST_F(MatrixEditingTest, WhenAllSlotsAreTakenItSaysSoAndChangesNothing) {
    for (int i = 0; i < matrixSlotCount; ++i) setSlot(i, 18, 33, 0.7f);
    EXPECT_FALSE(matrix.addModulation(par::Cutoff1, 100));
    ASSERT_EQ(dialogs.boxes().size(), 1u);
    EXPECT_EQ(dialogs.boxes()[0].title, "Error");
    EXPECT_EQ(dialogs.boxes()[0].text, "There are no free matrix slots available.");
    for (int i = 0; i < matrixSlotCount; ++i) EXPECT_EQ(list(par::MatDst1 + i), 33);
}

TEST_F(MatrixEditingTest, WhatCannotBeModulatedLeavesTheMatrixAsItIs) {
    setSlot(0, 18, 0, 0.7f);
    EXPECT_FALSE(matrix.addModulation(par::Modwheel, 100));
    EXPECT_FALSE(matrix.addModulation(par::SynType1, 100));
    EXPECT_FALSE(matrix.addModulation(par::Cutoff1, -1));
    EXPECT_EQ(list(par::MatSrc1), 18);
    EXPECT_TRUE(dialogs.boxes().empty());
}

TEST_F(MatrixEditingTest, CleaningNotesNoChangeWhereThereIsNone) {
    setSlot(0, 18, 32, 0.7f);
    ParameterChanges::Reader reader(rig.audio.parameters().changes());
    matrix.cleanMatrix();
    EXPECT_FALSE(reader.take().any());
    setSlot(1, 18, 0, 0.7f, 2);
    matrix.cleanMatrix();
    EXPECT_EQ(reader.take().changed.count(), 2u);  // source and amount
}

TEST_F(MatrixEditingTest, ADepthDragIsOneGestureOnTheFirstSlot) {
    edits.setListener(this);
    setSlot(3, 18, 32, 0.7f);
    setSlot(5, 19, 32, 0.6f);
    matrix.beginDepth(par::Cutoff1);
    matrix.dragDepth(0.8f);
    matrix.dragDepth(1.7f);
    matrix.endDepth();
    EXPECT_FLOAT_EQ(value(par::MatVal1 + 3), 1.0f);
    EXPECT_FLOAT_EQ(value(par::MatVal1 + 5), 0.6f);
    EXPECT_EQ(gesture.began, std::vector<int>{par::MatVal1 + 3});
    EXPECT_EQ(gesture.ended, std::vector<int>{par::MatVal1 + 3});
    matrix.dragDepth(0.1f);
    EXPECT_FLOAT_EQ(value(par::MatVal1 + 3), 1.0f);
}

TEST_F(MatrixEditingTest, MultilayerEditingDragsTheSlotOfAllLayers) {
    onShow.multilayer = true;
    onShow.layer = 1;
    setSlot(2, 18, 32, 0.7f, 1);
    matrix.beginDepth(par::Cutoff1);
    matrix.dragDepth(0.25f);
    matrix.endDepth();
    for (int layer = 0; layer < layerCount; ++layer) EXPECT_FLOAT_EQ(value(par::MatVal1 + 2, layer), 0.25f) << layer;
}

TEST_F(MatrixEditingTest, ResettingEmptiesTheLayerOnShowAlone) {
    setSlot(0, 18, 32, 0.7f, 0);
    setSlot(15, 18, 32, 0.7f, 1);
    onShow.layer = 1;
    resetSynthMatrix(rig.audio.parameters(), onShow.layer);
    EXPECT_EQ(list(par::MatSrc1, 0), 18);
    EXPECT_EQ(list(par::MatSrc1 + 15, 1), 0);
    EXPECT_FLOAT_EQ(value(par::MatVal1 + 15, 1), 0.5f);
}

class KnobCommandsTest : public MatrixEditingTest {
protected:
    MidiLearn learn{rig.audio};
    KnobCommands commands{edits, onShow, matrix, learn};
};

TEST_F(KnobCommandsTest, TheResetOfAGlobalKnobStaysGlobal) {
    onShow.layer = 2;
    commands.resetToDefault(par::EqLow);
    EXPECT_FLOAT_EQ(value(par::EqLow), 0.5f);
    commands.resetToDefault(par::Cutoff1);
    EXPECT_FLOAT_EQ(value(par::Cutoff1, 2), 0.5f);
    EXPECT_FLOAT_EQ(value(par::Cutoff1, 0), 0.0f);
}

TEST_F(KnobCommandsTest, MultilayerEditingResetsTheKnobOfAllLayers) {
    onShow.multilayer = true;
    commands.chooseRow(par::Cutoff1, resetValueRow);
    for (int layer = 0; layer < layerCount; ++layer) EXPECT_FLOAT_EQ(value(par::Cutoff1, layer), 0.5f);
}

TEST_F(KnobCommandsTest, ASecondSourceFromTheMenuReplacesTheFirst) {
    EXPECT_EQ(commands.chooseSource(par::Cutoff1, 100).matrixPage, 1);
    EXPECT_EQ(commands.chooseSource(par::Cutoff1, 102).matrixPage, 1);
    EXPECT_EQ(list(par::MatSrc1), 51);
    EXPECT_EQ(matrix.updateKnobModulation()[par::Cutoff1].modCount, 1);
}

TEST_F(KnobCommandsTest, NumbersOutsideDoNothing) {
    ParameterChanges::Reader reader(rig.audio.parameters().changes());
    for (const int number : {-1, 324, 100000})
        for (const int row : {0, 1, 3, 10, 2, -5}) commands.chooseRow(number, row);
    EXPECT_FALSE(reader.take().any());
    EXPECT_EQ(rig.audio.midi().learnPending(), ControllerMap::none);
}

TEST_F(KnobCommandsTest, ADropFindsTheFirstVisibleControlUnderIt) {
    const DropTarget controls[] = {{2, 100, 100, false}, {1, 100, 100, true}, {2, 110, 100, true}, {6, 0, 0, true}};
    EXPECT_EQ(dropHit(controls, 100, 100, 1.0f), 1);
    EXPECT_EQ(dropHit(controls, 125, 100, 1.0f), 2);
    EXPECT_EQ(dropHit(controls, 0, 0, 1.0f), -1);
    EXPECT_EQ(dropHit(controls, 150, 150, 1.5f), 1);
    EXPECT_EQ(dropHit({}, 0, 0, 1.0f), -1);
}

}  // namespace
}  // namespace vantoric
