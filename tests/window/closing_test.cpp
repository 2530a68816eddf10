// Hosts that close the window from within a call that it makes to them.
#include <gtest/gtest.h>

#include "tests/window/window_rig.h"

using namespace testhost;
namespace tag = vantoric::tag;

namespace {

struct ClosingHost : testing::Test {
    ClosingHost() { dropSharedRig(); }
    // Closes it the first time that the plug-in makes this call.
    void closeAt(WindowRig& rig, int call) {
        rig.plugin().answers().heard = [this, &rig, call](int op) {
            if (op != call || closings > 0) return;
            ++closings;
            rig.host().close();
        };
    }
    // Once it was closed so: it opens anew, and stays open.
    void expectReopening(WindowRig& rig) {
        EXPECT_EQ(closings, 1);
        EXPECT_EQ(rig.host().window(), 0u);
        rig.plugin().answers().heard = nullptr;
        ASSERT_TRUE(rig.host().open());
    }
    int closings = 0;
};

struct ClosingHostAt : ClosingHost, testing::WithParamInterface<int> {};

TEST_P(ClosingHostAt, LeavesNoGestureOpen) {
    WindowRig rig;
    closeAt(rig, GetParam());
    rig.drag(controlNamed("FIL1 RESO"), 0, 30);
    rig.host().release();
    expectReopening(rig);
    EXPECT_EQ(rig.gestures().begun, rig.gestures().ended);
    const float before = rig.value(controlNamed("FIL1 RESO"));
    rig.drag(controlNamed("FIL1 RESO"), 0, before < 0.5f ? 30 : -30);
    EXPECT_NE(rig.value(controlNamed("FIL1 RESO")), before);
}

TEST_P(ClosingHostAt, MayDoSoAtAKey) {
    WindowRig rig;
    closeAt(rig, GetParam());
    constexpr int tabKey = 2, upKey = 12;
    for (int i = 0; i < 40 && rig.host().window() != 0; ++i) {
        rig.plugin().call(wire::opKeyDown, 0, tabKey);
        rig.plugin().call(wire::opKeyDown, 0, upKey);
    }
    expectReopening(rig);
}

INSTANTIATE_TEST_SUITE_P(FromACall, ClosingHostAt,
                         testing::Values(wire::hostAutomated, wire::hostEditBegins, wire::hostEditEnds));

TEST_F(ClosingHost, MayDoSoWhenItIsAskedForASize) {
    HostAnswers answers;
    answers.product = "Glaigail";
    WindowRig rig(3, answers);
    closeAt(rig, wire::hostSize);
    rig.chooseFrom(controlWithTag(tag::editorMenu), 0);
    rig.host().idle(200);
    expectReopening(rig);
}

TEST_F(ClosingHost, MayDoSoWhenItHearsOfAnotherPatch) {
    WindowRig rig;
    closeAt(rig, wire::hostRedraw);
    rig.click(controlWithTag(tag::nextPatch));
    rig.host().idle(300);
    expectReopening(rig);
}

}  // namespace
