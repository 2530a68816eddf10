#include "editor/model/midi_learn.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/files.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

class MidiLearnTest : public testing::Test {
protected:
    MidiLearnTest() {
        platform::makeFolder(platform::bankFolder());
        rig.audio.controllerMap().clear();
        learn.takeMapChange();
    }
    int controller(int number) { return rig.audio.controllerMap().get(number); }

    test::EngineRig rig;
    MidiLearn learn{rig.audio};
};

TEST_F(MidiLearnTest, TheNextControllerIsLearnedAndStored) {
    EXPECT_STREQ(learn.assignLearn(397), "Assign the next Midi CC to this knob. Move your controler!");
    EXPECT_EQ(learn.ccNumber(397), MidiLearn::learning);
    EXPECT_FALSE(learn.takeMapChange());
    rig.send({{0xb0, 20, 64}});
    EXPECT_EQ(learn.ccNumber(397), 20);
    EXPECT_TRUE(learn.takeMapChange());
    EXPECT_FALSE(learn.takeMapChange());
    ControllerMap stored;
    stored.load(controllerMapPath());
    EXPECT_EQ(stored.get(20), 397);
}

TEST_F(MidiLearnTest, AskingForAMappedParameterLetsGoOfItsControllersAndNoOthers) {
    rig.audio.controllerMap().set(3, 98);
    rig.audio.controllerMap().set(9, 98);
    rig.audio.controllerMap().set(10, 99);
    EXPECT_STREQ(learn.assignLearn(98), "Midi learn removed the assignment of the Midi CC.");
    EXPECT_EQ(controller(3), ControllerMap::none);
    EXPECT_EQ(controller(9), ControllerMap::none);
    EXPECT_EQ(controller(10), 99);
    EXPECT_EQ(rig.audio.midi().learnPending(), ControllerMap::none);
    EXPECT_TRUE(learn.takeMapChange());
}

TEST_F(MidiLearnTest, ParametersOutsideTheMapDoNothing) {
    for (const int parameter : {-1, 1225, ControllerMap::none}) {
        EXPECT_STREQ(learn.assignLearn(parameter), "");
        EXPECT_FALSE(learn.removeAssignment(parameter));
    }
    EXPECT_EQ(rig.audio.midi().learnPending(), ControllerMap::none);
    EXPECT_FALSE(learn.takeMapChange());
}

TEST_F(MidiLearnTest, ALearnThatIsPendingEndsWithAllAssignmentsOrByTheHand) {
    learn.assignLearn(97);
    EXPECT_TRUE(learn.isPending());
    learn.removeAll();
    EXPECT_FALSE(learn.isPending());
    EXPECT_EQ(learn.ccNumber(97), MidiLearn::noController);
    rig.send({{0xb0, 20, 64}});
    EXPECT_EQ(controller(20), ControllerMap::none);
    EXPECT_FALSE(learn.cancel());
    learn.assignLearn(97);
    EXPECT_TRUE(learn.cancel());
    rig.send({{0xb0, 20, 64}});
    EXPECT_EQ(controller(20), ControllerMap::none);
    EXPECT_EQ(learn.ccNumber(97), MidiLearn::noController);
}

TEST_F(MidiLearnTest, RemovingAllEmptiesMapAndFile) {
    rig.audio.controllerMap().set(7, 97);
    EXPECT_STREQ(learn.removeAll(), "All Midi CCs removed");
    EXPECT_EQ(learn.ccNumber(97), MidiLearn::noController);
    EXPECT_TRUE(learn.takeMapChange());
    ControllerMap stored;
    stored.load(controllerMapPath());
    EXPECT_EQ(stored.get(7), ControllerMap::none);
}

}  // namespace
}  // namespace vantoric
