// Keys: what Escape calls off, what the focus reaches beside the controls of the table, menus without a mouse.
#include <gtest/gtest.h>

#include <cmath>

#include "base/parameters.h"
#include "editor/model/window_layout.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::ControlEntry;
using vantoric::WindowPart;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

// The keys of the plug-in interface.
enum Key { tabKey = 2, returnKey = 4, escapeKey = 6, spaceKey = 7, upKey = 12, downKey = 14 };

class Keyboard : public testing::Test {
protected:
    void SetUp() override {
        rig.reset();
        host.hostKey(0, escapeKey);
    }

    // Everything as it was, the host's gesture ended, and nothing new to take back.
    void expectCalledOff(const std::vector<float>& before, const WindowRig::Gestures& gestures, const Picture& history) {
        EXPECT_EQ(rig.changedSince(before), std::vector<int>{});
        EXPECT_EQ(rig.gestures().begun, rig.gestures().ended);
        EXPECT_GT(rig.gestures().begun, gestures.begun) << "there was a gesture";
        host.release();
        host.move(3, 400);
        EXPECT_EQ(rig.changedSince(before), std::vector<int>{});
        EXPECT_TRUE(host.until([&] { return historyArrows() == history; }, 3)) << "no step";
    }
    Picture historyArrows() {
        const auto& line = vantoric::windowPart(WindowPart::HintLine).rect;
        const double left = (line.x + line.width - 40) * rig.unit();
        return host.glance().part(static_cast<int>(left), static_cast<int>(line.y * rig.unit()),
                                  static_cast<int>(40 * rig.unit()), static_cast<int>(line.height * rig.unit()));
    }
    // Presses at a point, drags up and presses Escape with the button still down.
    void escapeFromDrag(Point from) {
        host.move(from.x, from.y);
        host.press();
        host.move(from.x, from.y - 30);
        host.move(from.x, from.y - 60);
        host.idle(60);
        host.key("Escape");
        host.idle(60);
    }
    // Tab until `found`; false after a round.
    bool tabUntil(const std::function<bool()>& found) {
        for (int i = 0; i < 400; ++i) {
            host.hostKey(0, tabKey);
            if (found()) return true;
        }
        return false;
    }
    Picture around(const vantoric::LayoutRect& r) {
        const double u = rig.unit();
        return host.glance().part(static_cast<int>((r.x - 6) * u), static_cast<int>((r.y - 6) * u),
                                  static_cast<int>((r.width + 12) * u), static_cast<int>((r.height + 12) * u));
    }

    WindowRig& rig = sharedRig();
    WindowHost& host = rig.host();
    const ControlEntry& resonance = controlNamed("FIL1 RESO");
    const ControlEntry& octave = controlNamed("OSC1 OCTAVE");
};

TEST_F(Keyboard, EscapeCallsTheDragOfAKnobOff) {
    rig.set(resonance, 0.3f);
    host.idle(100);
    const auto before = rig.parameters();
    const auto gestures = rig.gestures();
    const Picture history = historyArrows();
    escapeFromDrag(rig.middle(resonance));
    expectCalledOff(before, gestures, history);
}

TEST_F(Keyboard, EscapeCallsTheDragOfAFieldOff) {
    const ControlEntry& field = controlNamed("OSC1 SEMI");
    const auto before = rig.parameters();
    const auto gestures = rig.gestures();
    const Picture history = historyArrows();
    escapeFromDrag(rig.middle(field));
    expectCalledOff(before, gestures, history);
}

TEST_F(Keyboard, EscapeCallsTheDragOfADepthOff) {
    rig.set(resonance, 0.5f);
    ASSERT_TRUE(rig.chooseSource(resonance, 0, 0));
    host.idle(100);
    const auto before = rig.parameters();
    const auto gestures = rig.gestures();
    const Picture history = historyArrows();
    escapeFromDrag(rig.at(resonance.x - 14.3, resonance.y - 13.2));
    expectCalledOff(before, gestures, history);
}

TEST_F(Keyboard, EscapeLetsALayerThatADragWokeFallSilentAgain) {
    const int layer = parameter::Layer1On + rig.layer();
    rig.plugin().setParameter(layer, 0);
    host.idle(150);
    host.move(rig.middle(resonance).x, rig.middle(resonance).y);
    host.press();
    EXPECT_EQ(rig.plugin().parameter(layer), 1);
    host.move(rig.middle(resonance).x, rig.middle(resonance).y - 40);
    host.idle(60);
    host.key("Escape");
    EXPECT_EQ(rig.plugin().parameter(layer), 0);
    host.release();
}

TEST_F(Keyboard, TheFocusReachesWhatStandsBesideTheTable) {
    host.move(3, 400);
    host.idle(200);
    std::vector<WindowPart> missed;
    for (const WindowPart part :
         {WindowPart::CategoryList, WindowPart::PatchList, WindowPart::Favourite, WindowPart::PitchWheel, WindowPart::ModWheel}) {
        host.hostKey(0, escapeKey);
        host.idle(60);
        const auto& place = vantoric::windowPart(part).rect;
        const Picture without = around(place);
        const bool isSeen = tabUntil([&] {
            host.idle(40);
            return !(around(place) == without);
        });
        if (!isSeen) missed.push_back(part);
    }
    EXPECT_EQ(missed, std::vector<WindowPart>{}) << "no ring was seen there";
    host.hostKey(0, escapeKey);
}

TEST_F(Keyboard, ArrowsTurnTheModulationWheel) {
    const int wheel = parameter::Modwheel;
    const float before = rig.plugin().parameter(wheel);
    EXPECT_TRUE(tabUntil([&] {
        const auto all = rig.parameters();
        host.hostKey(0, upKey);
        const bool isWheel = rig.plugin().parameter(wheel) != before;
        if (!isWheel)
            for (const int index : rig.changedSince(all)) rig.plugin().setParameter(index, all[static_cast<std::size_t>(index)]);
        return isWheel;
    }));
    EXPECT_NEAR(rig.plugin().parameter(wheel), before + 0.01f, 0.001f);
    host.hostKey(0, escapeKey);
}

TEST_F(Keyboard, ShiftAndF10OpenTheMenuOfTheKnob) {
    const Point p = rig.middle(resonance);
    host.click(3, 400);  // the window has the keys
    host.move(p.x, p.y);
    host.idle(100);
    host.keyDown("Shift_L");
    host.key("F10");
    host.keyUp("Shift_L");
    EXPECT_TRUE(host.until([&] { return rig.hasMenu(); }, 5));
    rig.closeMenus();
}

TEST_F(Keyboard, TheMenuKeyOpensTheMenuOfTheKnob) {
    const Point p = rig.middle(resonance);
    host.click(3, 400);
    host.move(p.x, p.y);
    host.idle(100);
    host.keyDown("Menu");
    EXPECT_TRUE(host.until([&] { return rig.hasMenu(); }, 5));
    host.keyUp("Menu");
    rig.closeMenus();
}

TEST_F(Keyboard, ASubmenuIsTypedInto) {
    rig.set(resonance, 0.5f);
    ASSERT_TRUE(rig.openMenu(resonance, 3));
    host.type("modulate with e");  // the row with its submenu
    host.key("Right");
    host.idle(1100);  // a word begins anew
    host.type("aux2");
    host.key("Return");
    EXPECT_TRUE(host.until([&] { return !rig.hasMenu(); }, 5));
    constexpr int aux2 = 10, slots = 15;
    bool isThere = false;
    for (int i = 0; i < slots; ++i) {
        const float source = rig.plugin().parameter(vantoric::hostIndex(parameter::MatSrc1 + i, rig.layer()));
        isThere = isThere || std::lround(source * 128) == aux2;
    }
    EXPECT_TRUE(isThere);
}

}  // namespace
