// What a hand does beyond moving a control: fine drags, menus of knobs, drags from the envelopes and LFOs, learning, keys.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "base/parameters.h"
#include "editor/model/control_texts.h"
#include "editor/model/matrix_editing.h"
#include "editor/model/menu_rows.h"
#include "editor/model/window_size.h"
#include "tests/window/compare_pictures.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::ControlEntry;
using vantoric::WindowPart;
namespace page = vantoric::page;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

constexpr int slots = 15;

class Hand : public testing::Test {
protected:
    void SetUp() override { rig.reset(); }

    struct Slot {
        int source, destination;
        float amount;
    };
    Slot slot(int index) {
        const auto listRow = [this](int number) {
            return static_cast<int>(std::lround(rig.plugin().parameter(vantoric::hostIndex(number, rig.layer())) * 128));
        };
        return {listRow(parameter::MatSrc1 + index), listRow(parameter::MatDst1 + index),
                rig.plugin().parameter(vantoric::hostIndex(parameter::MatVal1 + index, rig.layer()))};
    }
    void expectNoModulation() {
        for (int i = 0; i < slots; ++i) EXPECT_EQ(slot(i).source * slot(i).destination, 0) << "slot " << i + 1;
    }
    void clearMatrix() {
        for (int i = 0; i < slots; ++i) {
            rig.plugin().setParameter(vantoric::hostIndex(parameter::MatSrc1 + i, rig.layer()), 0);
            rig.plugin().setParameter(vantoric::hostIndex(parameter::MatDst1 + i, rig.layer()), 0);
            rig.plugin().setParameter(vantoric::hostIndex(parameter::MatVal1 + i, rig.layer()), 0.5f);
        }
        rig.host().idle(120);
    }

    WindowRig& rig = sharedRig();
    WindowHost& host = rig.host();
    const ControlEntry& resonance = controlNamed("FIL1 RESO");
    const ControlEntry& cutoff = controlNamed("FIL1 CUTOFF");
    const ControlEntry& octave = controlNamed("OSC1 OCTAVE");
};

// ---- drags

TEST_F(Hand, ShiftMakesADragFineWithoutAJump) {
    rig.set(resonance, 0.2f);
    const Point p = rig.middle(resonance);
    host.move(p.x, p.y);
    host.press();
    host.move(p.x, p.y - 50);
    const float coarse = rig.value(resonance);
    EXPECT_NEAR(coarse, 0.4f, 0.003f);
    host.keyDown("Shift_L");
    EXPECT_EQ(rig.value(resonance), coarse);
    host.move(p.x, p.y - 51);
    EXPECT_NEAR(rig.value(resonance), coarse, 0.0041f) << "no jump at Shift";
    host.move(p.x, p.y - 100);
    const float fine = rig.value(resonance) - coarse;
    EXPECT_GT(fine, 0.05f);
    EXPECT_LT(fine, 0.15f) << "fine is slower than the 0.2 of the plain drag";
    host.keyUp("Shift_L");
    const float before = rig.value(resonance);
    host.move(p.x, p.y - 101);
    EXPECT_NEAR(rig.value(resonance), before, 0.0041f) << "no jump when Shift is let go of";
    host.move(p.x, p.y - 126);
    EXPECT_NEAR(rig.value(resonance) - before, 0.1f, 0.006f) << "and the drag is a plain one again";
    host.release();
}

TEST_F(Hand, ADragGoesOnOutsideOfTheWindow) {
    rig.set(cutoff, 0.5f);
    const auto gestures = rig.gestures();
    const Point p = rig.middle(cutoff);
    host.move(p.x, p.y);
    host.press();
    host.move(p.x + 60, p.y);
    host.move(rig.unit() * 1200 + 50, p.y);
    EXPECT_EQ(rig.value(cutoff), 1.0f);
    host.move(0, rig.unit() * 660 + 100);
    EXPECT_EQ(rig.value(cutoff), 0.0f);
    host.release();
    EXPECT_EQ(rig.gestures(), (WindowRig::Gestures{gestures.begun + 1, gestures.ended + 1}));
}

TEST_F(Hand, AWheelTurnIsOneStepAndOneGesture) {
    for (const char* name : {"FIL1 RESO", "VOL ENV HOLD", "OSC1 KEY FOL"}) {
        const ControlEntry& entry = controlNamed(name);
        rig.set(entry, 0.5f);
        const auto gestures = rig.gestures();
        const Point p = rig.middle(entry);
        host.wheel(p.x, p.y, 1);
        EXPECT_NEAR(rig.value(entry), 0.51f, 0.0005f) << name;
        host.wheel(p.x, p.y, -2);
        EXPECT_NEAR(rig.value(entry), 0.49f, 0.0005f) << name;
        EXPECT_EQ(rig.gestures(), (WindowRig::Gestures{gestures.begun + 3, gestures.ended + 3})) << name;
    }
}

TEST_F(Hand, AWheelTurnOverAListIsOneRow) {
    const ControlEntry& list = controlNamed("LFO1 WAVE");
    rig.set(list, 3.0f / 128);
    const Point p = rig.middle(list);
    host.wheel(p.x, p.y, -1);
    EXPECT_EQ(rig.row(list), 4);
    host.wheel(p.x, p.y, 2);
    EXPECT_EQ(rig.row(list), 2);
}

TEST_F(Hand, AWheelTurnOverTheWavesIsTheNextWave) {
    rig.plugin().setParameter(vantoric::hostIndex(parameter::SynType1, 0), 4.0f / 128);  // custom wave
    host.idle(150);
    const Point p = rig.middle(controlWithTag(vantoric::tag::waveMenu1));
    const auto turned = [&](int turns) {
        const auto before = rig.plugin().chunk();
        host.wheel(p.x, p.y, turns);
        EXPECT_TRUE(host.until([&] { return rig.plugin().chunk() != before; }, 10)) << turns;
        return rig.plugin().chunk();
    };
    const auto first = turned(-1);
    turned(-1);
    EXPECT_EQ(turned(1), first);
    const auto menu = rig.openMenu(p);
    ASSERT_TRUE(menu);
    host.key("Down");
    host.key("Return");
    EXPECT_TRUE(host.until([&] { return rig.plugin().chunk() != first; }, 10)) << "the list opens at the wave";
}

TEST_F(Hand, ADoubleClickRestoresTheDefault) {
    for (const char* name : {"FIL1 RESO", "FIL1 CUTOFF", "OSC1 PW", "VOL ENV HOLD", "EQ LOW", "STEP 3"}) {
        const ControlEntry& entry = controlNamed(name);
        rig.show(entry);
        rig.set(entry, 0.123f);
        const Point p = rig.middle(entry);
        host.doubleClick(p.x, p.y);
        EXPECT_TRUE(host.until([&] { return std::fabs(rig.value(entry) - entry.defaultValue) < 1e-6f; }, 3))
            << name << " is " << rig.value(entry) << ", its default " << entry.defaultValue;
    }
}

TEST_F(Hand, QuickDragsFromOnePlaceAreNoDoubleClick) {
    for (const char* name : {"FIL1 RESO", "VOL ENV HOLD"}) {
        const ControlEntry& entry = controlNamed(name);
        rig.set(entry, 0.2f);
        host.idle(600);  // no press before counts
        const Point p = rig.middle(entry);
        for (int turn = 0; turn < 3; ++turn) host.drag(p.x, p.y, p.x, p.y - 25, 1, 1);
        EXPECT_NEAR(rig.value(entry), 0.5f, 0.02f) << name;
    }
}

// The first bar that was pressed, those beside it and back: one step of the history.
TEST_F(Hand, ARowOfStepsIsDrawnInOneDrag) {
    const ControlEntry &first = controlNamed("STEP 2"), &last = controlNamed("STEP 7"), &after = controlNamed("STEP 8");
    rig.show(first);
    const auto before = rig.parameters();
    const auto gestures = rig.gestures();
    const auto level = [&](int step) { return rig.plugin().parameter(parameter::Step1 + step - 1); };
    const Box top = rig.box(first);
    const double from = top.top + 0.75 * top.height(), to = top.top + 0.25 * top.height();
    host.drag(rig.middle(first).x, from, rig.middle(last).x, to, 1, 2);  // so far at a time that bars are jumped over
    for (int step = 2; step <= 7; ++step) EXPECT_NEAR(level(step), 0.25f + 0.1f * static_cast<float>(step - 2), 0.03f) << step;
    EXPECT_EQ(rig.value(after), before[static_cast<std::size_t>(rig.hostIndex(after))]);
    EXPECT_EQ(rig.gestures(), (WindowRig::Gestures{gestures.begun + 6, gestures.ended + 6}));
    rig.click(rig.at(1195, 412));  // the ground, so that keys are the window's
    host.control("z");
    EXPECT_TRUE(host.until([&] { return rig.changedSince(before).empty(); }, 3)) << "one step back";
}

TEST_F(Hand, EscapeCallsARowOfStepsOff) {
    const ControlEntry &first = controlNamed("STEP 2"), &last = controlNamed("STEP 7");
    rig.show(first);
    const auto before = rig.parameters();
    host.move(rig.middle(first).x, rig.middle(first).y);
    host.press();
    host.move(rig.middle(last).x, rig.middle(last).y - 10);
    EXPECT_FALSE(rig.changedSince(before).empty());
    host.key("Escape");
    EXPECT_TRUE(rig.changedSince(before).empty());
    host.release();
    EXPECT_TRUE(rig.changedSince(before).empty());
}

TEST_F(Hand, ATouchWakesTheLayerOnShow) {
    rig.plugin().setParameter(parameter::Layer2On, 0);
    rig.plugin().setParameter(parameter::Layer3On, 0);
    rig.showLayer(1);
    rig.set(resonance, 0.5f);
    rig.drag(resonance, 0, -20);
    EXPECT_EQ(rig.plugin().parameter(parameter::Layer2On), 1.0f);
    EXPECT_EQ(rig.plugin().parameter(parameter::Layer3On), 0.0f);
}

TEST_F(Hand, AClickAloneWakesTheLayerOnShow) {
    rig.plugin().setParameter(parameter::Layer2On, 0);
    rig.showLayer(1);
    rig.click(resonance);
    EXPECT_EQ(rig.plugin().parameter(parameter::Layer2On), 1.0f);
}

TEST_F(Hand, TheWheelAndTheOtherButtonsWakeNoLayer) {
    const auto isAwake = [&] { return rig.plugin().parameter(parameter::Layer2On) == 1.0f; };
    rig.showLayer(1);
    const ControlEntry &list = controlNamed("LFO1 WAVE"), &field = controlNamed("VOL ENV HOLD");
    for (const ControlEntry* entry : {&resonance, &field, &list}) {
        rig.set(*entry, 4.0f / 128);
        rig.plugin().setParameter(parameter::Layer2On, 0);
        host.idle(120);
        const float before = rig.value(*entry);
        const Point p = rig.middle(*entry);
        host.wheel(p.x, p.y, 1);
        EXPECT_NE(rig.value(*entry), before) << entry->name;
        EXPECT_FALSE(isAwake()) << "the wheel on " << entry->name;
    }
    rig.set(resonance, 0.5f);
    const Point p = rig.middle(resonance);
    host.drag(p.x, p.y - 10, p.x + 10, p.y, 2);  // by the angle
    EXPECT_NE(rig.value(resonance), 0.5f);
    EXPECT_FALSE(isAwake()) << "the middle button";
    for (const ControlEntry* entry : {&resonance, &field, &list, &controlNamed("WAVE 1")}) {
        rig.click(*entry, 3);
        host.idle(100);
        rig.closeMenus();
        EXPECT_FALSE(isAwake()) << "the right button on " << entry->name;
    }
    const auto menu = rig.openMenu(list);
    ASSERT_TRUE(menu);
    rig.click(rig.rowPlace(*menu, labelsOf(list), 3), 3);
    EXPECT_TRUE(host.until([&] { return rig.row(list) == 3; }, 3));
    EXPECT_FALSE(isAwake()) << "a row by the right button";
    ASSERT_TRUE(rig.chooseFrom(list, 5));
    EXPECT_TRUE(isAwake()) << "the left button";
}

// A drag that did not wake the layer does not send it to sleep either.
TEST_F(Hand, AMiddleDragThatIsCalledOffLeavesTheLayerAlone) {
    rig.plugin().setParameter(parameter::Layer2On, 0);
    rig.showLayer(1);
    rig.set(resonance, 0.5f);
    rig.click(rig.at(controlNamed("WAVE 1").x + 20, controlNamed("WAVE 1").y + 20));
    ASSERT_EQ(rig.plugin().parameter(parameter::Layer2On), 1.0f);
    const Point p = rig.middle(resonance);
    host.move(p.x, p.y - 10);
    host.press(2);
    host.move(p.x + 10, p.y);
    EXPECT_NE(rig.value(resonance), 0.5f);
    host.key("Escape");
    host.release(2);
    EXPECT_EQ(rig.value(resonance), 0.5f);
    EXPECT_EQ(rig.plugin().parameter(parameter::Layer2On), 1.0f);
}

TEST_F(Hand, TheWheelsOnTheScreenTurn) {
    const Point mod = rig.middle(WindowPart::ModWheel);
    host.drag(mod.x, mod.y + 20, mod.x, mod.y - 20);
    EXPECT_NEAR(rig.plugin().parameter(parameter::Modwheel), 0.69, 0.05);
    // The pitch wheel springs back: what it shows at the end is what it showed at first.
    host.move(5, rig.unit() * 655);
    const Box before{static_cast<int>(610 * rig.unit()), static_cast<int>(14 * rig.unit()), static_cast<int>(624 * rig.unit()),
                     static_cast<int>(94 * rig.unit())};
    const auto wheel = [&] { return host.glance().part(before.left, before.top, before.width(), before.height()); };
    host.idle(150);
    const Picture atRest = wheel();
    const Point pitch = rig.middle(WindowPart::PitchWheel);
    host.move(pitch.x, pitch.y);
    host.press();
    host.move(pitch.x, pitch.y - 30);
    host.idle(60);
    EXPECT_GT(difference(wheel(), atRest).largest, tolerance);
    host.release();
    host.move(5, rig.unit() * 655);
    EXPECT_TRUE(host.until([&] { return difference(wheel(), atRest).largest < tolerance; }, 5))
        << difference(wheel(), atRest).largest;
}

// In the pixels of the small layout as in those of the normal one.
TEST(SmallWindow, ADragCrossesTheRangeInAsManyPixels) {
    dropSharedRig();
    WindowRig small(0);
    for (const char* name : {"FIL1 RESO", "VOL ENV HOLD"}) {
        const ControlEntry& entry = controlNamed(name);
        small.set(entry, 0.2f);
        small.host().idle(600);
        const Point p = small.middle(entry);
        small.host().drag(p.x, p.y, p.x, p.y - 125);
        EXPECT_NEAR(small.value(entry), 0.7f, 0.005f) << name;
    }
}

// ---- the menu of a knob

struct SourceRow {
    int submenu, row;
};

class EverySource : public Hand, public testing::WithParamInterface<SourceRow> {};

// By the list of sources.
int expectedSource(const SourceRow& at) {
    constexpr int lfo[] = {50, 2, 51, 3, 52, 4, 5, 6};
    constexpr int firstFreeLfo = 54, firstEnvelope = 7, firstDecay = 37, firstMidi = 17, firstRandom = 13;
    switch (at.submenu) {
        case 0: return lfo[at.row];
        case 1: return firstFreeLfo + at.row;
        case 2: return at.row < 4 ? firstEnvelope + at.row : firstDecay + at.row - 4;
        case 3: return firstMidi + at.row;
        default: return firstRandom + at.row;
    }
}

TEST_P(EverySource, OfTheMenuMakesARowOfTheMatrix) {
    clearMatrix();
    rig.set(resonance, 0.5f);
    ASSERT_TRUE(rig.chooseSource(resonance, GetParam().submenu, GetParam().row));
    EXPECT_EQ(slot(0).source, expectedSource(GetParam()));
    EXPECT_EQ(slot(0).destination, vantoric::destinationOf(parameter::Reso1));
    const bool isBipolar = vantoric::submenuSource(100 * (GetParam().submenu + 1) + GetParam().row).hasBipolarAmount;
    EXPECT_FLOAT_EQ(slot(0).amount, isBipolar ? 1.0f : 0.75f);
    EXPECT_EQ(rig.value(resonance), 0.5f);
}

std::vector<SourceRow> allSources() {
    std::vector<SourceRow> rows;
    constexpr int counts[] = {8, 17, 16, 15, 3};
    for (int submenu = 0; submenu < 5; ++submenu)
        for (int row = 0; row < counts[submenu]; ++row) rows.push_back({submenu, row});
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Window, EverySource, testing::ValuesIn(allSources()), [](const auto& source) {
    return "Submenu" + std::to_string(source.param.submenu) + "Row" + std::to_string(source.param.row);
});

const std::vector<std::string> knobRows{"", "", "-", "", "-", "", "", "", "", "", ""};
enum KnobRow { resetValue = 0, resetAll = 1, learn = 3, removeModulation = 10 };

TEST_F(Hand, TheMenuOfAKnobResetsAndRemoves) {
    clearMatrix();
    rig.set(resonance, 0.37f);
    ASSERT_TRUE(rig.chooseSource(resonance, 0, 0));
    auto menu = rig.openMenu(resonance, 3);
    ASSERT_TRUE(menu);
    ASSERT_TRUE(rig.choose(*menu, knobRows, removeModulation));
    expectNoModulation();
    EXPECT_EQ(rig.value(resonance), 0.37f);

    ASSERT_TRUE(rig.chooseSource(resonance, 2, 1));
    menu = rig.openMenu(resonance, 3);
    ASSERT_TRUE(menu && rig.choose(*menu, knobRows, resetValue));
    EXPECT_EQ(rig.value(resonance), resonance.defaultValue);
    EXPECT_EQ(slot(0).source, 8) << "the modulation stays";

    rig.set(resonance, 0.37f);
    menu = rig.openMenu(resonance, 3);
    ASSERT_TRUE(menu && rig.choose(*menu, knobRows, resetAll));
    EXPECT_EQ(rig.value(resonance), resonance.defaultValue);
    expectNoModulation();
}

// A knob's place is its middle, a field's its left upper corner.
TEST_F(Hand, TheMenuOpensAtTheControlsPlaceAndStaysInTheWindow) {
    for (const char* name :
         {"FIL1 RESO", "FIL1 CUTOFF", "OSC1 OCTAVE", "EQ HIGH", "VOL ENV HOLD", "ARP SWING", "INS FX1 PAR1", "MATRIX SEND5"}) {
        const ControlEntry& entry = controlNamed(name);
        rig.show(entry);
        const auto menu = rig.openMenu(entry, 3);
        ASSERT_TRUE(menu) << name;
        const Point place = rig.at(entry.x, entry.y);
        const double width = host.size().width, height = host.size().height, near = 2 * rig.unit();
        const double left = std::min(place.x, width - menu->width()), top = std::min(place.y, height - menu->height());
        EXPECT_NEAR(menu->left, left, left < place.x ? 4 * rig.unit() : near) << name;
        if (top < place.y)
            EXPECT_TRUE(std::abs(menu->bottom - place.y) <= near || std::abs(menu->top - top) <= 4 * rig.unit()) << name;
        else
            EXPECT_NEAR(menu->top, place.y, near) << name;
        EXPECT_GE(menu->top, 0) << name;
        EXPECT_LE(menu->right, width) << name;
        EXPECT_LE(menu->bottom, height) << name;
        rig.closeMenus();
    }
}

// It lies under the pointer that opened it: the button's release chooses nothing, however the hand trembles.
TEST_F(Hand, LettingGoOverTheMenuThatOpenedChoosesNothing) {
    clearMatrix();
    rig.set(resonance, 0.37f);
    const Point place = rig.at(resonance.x + 9, resonance.y + 9);
    host.move(place.x, place.y);
    host.press(3);
    for (const int off : {1, 0, 2, 1}) host.move(place.x + off, place.y + off);
    host.release(3);
    EXPECT_TRUE(host.until([&] { return rig.hasMenu(); }, 5));
    EXPECT_EQ(rig.value(resonance), 0.37f);
    rig.closeMenus();
}

TEST_F(Hand, ASecondSourceFromTheMenuReplacesTheFirst) {
    clearMatrix();
    ASSERT_TRUE(rig.chooseSource(resonance, 0, 0));
    ASSERT_TRUE(rig.chooseSource(resonance, 0, 2));
    EXPECT_EQ(slot(0).source, 51);
    EXPECT_EQ(slot(1).source, 0);
}

TEST_F(Hand, ADragAtTheGripChangesTheDepthAlone) {
    clearMatrix();
    rig.set(resonance, 0.5f);
    ASSERT_TRUE(rig.chooseSource(resonance, 0, 0));
    const float value = rig.value(resonance), amount = slot(0).amount;
    const Point grip = rig.at(resonance.x - 14.3, resonance.y - 13.2);
    const auto gestures = rig.gestures();
    host.drag(grip.x, grip.y, grip.x, grip.y + 60);
    EXPECT_EQ(rig.value(resonance), value);
    EXPECT_NEAR(slot(0).amount, amount - 0.1f, 0.03f);
    EXPECT_EQ(rig.gestures(), (WindowRig::Gestures{gestures.begun + 1, gestures.ended + 1}));
}

TEST_F(Hand, ThePointerTellsOfTheGrip) {
    clearMatrix();
    const Point middle = rig.middle(resonance), grip = rig.at(resonance.x - 14.3, resonance.y - 13.2);
    const auto pointerAt = [&](Point p) {
        host.move(p.x, p.y);
        host.idle();
        return host.pointer();
    };
    const auto plain = pointerAt(middle);
    ASSERT_FALSE(plain.empty());
    EXPECT_EQ(pointerAt(grip), plain) << "without a modulation there is no grip";
    ASSERT_TRUE(rig.chooseSource(resonance, 0, 0));
    EXPECT_EQ(pointerAt(middle), plain);
    const auto hand = pointerAt(grip);
    EXPECT_NE(hand, plain);
    host.press();
    host.idle();
    const auto arrows = host.pointer();
    EXPECT_NE(arrows, plain);
    EXPECT_NE(arrows, hand);
    EXPECT_EQ(pointerAt({grip.x, grip.y + 90}), arrows) << "as long as the drag goes on";
    host.release();
    host.idle();
    EXPECT_EQ(host.pointer(), plain);
    EXPECT_EQ(pointerAt(grip), hand);
    EXPECT_EQ(pointerAt(rig.at(600, 2)), plain);
}

// Where the grip of a large knob is drawn: its middle, and near its edges.
TEST_F(Hand, TheWholeGripOfALargeKnobTakesHold) {
    for (const double aside : {-2.8, 0.0, 2.8}) {
        clearMatrix();
        rig.set(cutoff, 0.5f);
        ASSERT_TRUE(rig.chooseSource(cutoff, 0, 0));
        const float amount = slot(0).amount;
        const Point grip = rig.at(cutoff.x - 22.8 + aside, cutoff.y - 22.2);
        host.drag(grip.x, grip.y, grip.x, grip.y + 60);
        EXPECT_EQ(rig.value(cutoff), 0.5f) << aside;
        EXPECT_NEAR(slot(0).amount, amount - 0.1f, 0.03f) << aside;
    }
}

TEST_F(Hand, EscapeCallsALearnOff) {
    const auto menu = rig.openMenu(resonance, 3);
    ASSERT_TRUE(menu && rig.choose(*menu, knobRows, learn));
    host.idle(120);
    host.key("Escape");
    host.idle(120);
    const float before = rig.value(resonance);
    rig.plugin().midi(0xB0, 31, 90);
    rig.plugin().renderLong(2048, 512);
    host.idle(120);
    EXPECT_EQ(rig.value(resonance), before);
}

// Not knobs alone: the two lines while one waits, a mark when it is mapped.
TEST_F(Hand, ListsAndSwitchesShowTheirController) {
    const std::vector<std::string> rows{"", "", "-", ""};
    for (const char* name : {"LFO1 WAVE", "OSC12 SYNC"}) {
        const ControlEntry& entry = controlNamed(name);
        const auto isRed = [&](double x, double y) {
            const Point p = rig.at(x, y);
            const unsigned pixel = host.glance().at(static_cast<int>(p.x), static_cast<int>(p.y));
            return (pixel >> 16) > 0x60 && (pixel >> 8 & 0xFF) * 2 < (pixel >> 16);
        };
        const auto isMapped = [&] { return isRed(entry.x + entry.width - 1, entry.y + 1); };
        const auto hasLines = [&] {  // the red outline of the strip below
            for (double y = entry.y + entry.height + 1; y < entry.y + entry.height + 6; y += 0.3)
                if (isRed(entry.x + entry.width / 2.0, y) && isRed(entry.x + entry.width / 2.0 + 20, y)) return true;
            return false;
        };
        EXPECT_FALSE(isMapped() || hasLines()) << name;
        auto menu = rig.openMenu(entry, 3);
        ASSERT_TRUE(menu && rig.choose(*menu, rows, learn)) << name;
        EXPECT_TRUE(host.until(hasLines, 3)) << name;
        rig.plugin().midi(0xB0, 30, 0);
        rig.plugin().renderLong(2048, 512);
        host.move(rig.at(1195, 412).x, rig.at(1195, 412).y);
        EXPECT_TRUE(host.until([&] { return isMapped() && !hasLines(); }, 5)) << name;
        menu = rig.openMenu(entry, 3);
        ASSERT_TRUE(menu && rig.choose(*menu, rows, learn)) << "forgets it";
        EXPECT_TRUE(host.until([&] { return !isMapped(); }, 3)) << name;
    }
}

TEST_F(Hand, AControllerThatIsLearntMovesTheKnob) {
    constexpr int controller = 0xB0, number = 30;
    const auto turn = [&](int value) {
        rig.plugin().midi(controller, number, value);
        rig.plugin().renderLong(2048, 512);
        host.idle(120);
    };
    auto menu = rig.openMenu(resonance, 3);
    ASSERT_TRUE(menu && rig.choose(*menu, knobRows, learn));
    turn(20);
    turn(100);
    EXPECT_NEAR(rig.value(resonance), 100.0 / 127, 0.01);
    menu = rig.openMenu(resonance, 3);
    ASSERT_TRUE(menu && rig.choose(*menu, knobRows, learn)) << "the same row removes it";
    turn(10);
    EXPECT_NEAR(rig.value(resonance), 100.0 / 127, 0.01);
}

// It stays as long as nothing has come, and no longer.
TEST_F(Hand, TheLineThatAsksForAControllerGoesWithTheFirst) {
    const auto& line = vantoric::windowPart(WindowPart::HintLine).rect;
    const auto asks = [&] {  // a red mark at its left end
        const unsigned pixel = host.glance().at(static_cast<int>((line.x + 1) * rig.unit()),
                                                static_cast<int>((line.y + line.height / 2.0) * rig.unit()));
        return (pixel >> 16) > 0xC0 && (pixel >> 8 & 0xFF) < 0x80;
    };
    const auto menu = rig.openMenu(resonance, 3);
    ASSERT_TRUE(menu && rig.choose(*menu, knobRows, learn));
    EXPECT_TRUE(host.until(asks, 2));
    host.move(rig.middle(cutoff).x, rig.middle(cutoff).y);  // to another control
    host.idle(5000);
    EXPECT_TRUE(asks());
    rig.plugin().midi(0xB0, 30, 64);
    rig.plugin().renderLong(2048, 512);
    EXPECT_TRUE(host.until([&] { return !asks(); }, 2));
    const auto again = rig.openMenu(resonance, 3);
    ASSERT_TRUE(again && rig.choose(*again, knobRows, learn)) << "forgets it";
}

TEST_F(Hand, TheWheelsMenuOffersTheResetAlone) {
    const ControlEntry& wheel = controlNamed("MODWHEEL");
    rig.plugin().setParameter(parameter::Modwheel, 0.6f);
    for (const Point at : {rig.middle(wheel), rig.middle(WindowPart::ModWheel)}) {
        const auto menu = rig.openMenu(at, 3);
        ASSERT_TRUE(menu) << at.x << " " << at.y;
        EXPECT_LT(menu->height(), 30 * rig.unit());
        ASSERT_TRUE(rig.choose(*menu, {""}, 0));
        EXPECT_EQ(rig.plugin().parameter(parameter::Modwheel), wheel.defaultValue);
        rig.plugin().setParameter(parameter::Modwheel, 0.6f);
    }
}

// ---- drags onto knobs

TEST_F(Hand, AnEnvelopeOrLfoDropsOntoAKnob) {
    struct Case {
        WindowPart from;
        int selector, source;
    };
    constexpr int none = 0;
    const Case cases[] = {
        {WindowPart::DragEnvelope, tag::envelopePage1, 7},
        {WindowPart::DragEnvelope, tag::envelopePage1 + 1, 8},
        {WindowPart::DragEnvelope, tag::envelopePage1 + 2, 9},
        {WindowPart::DragEnvelope, tag::envelopePage1 + 3, 10},
        {WindowPart::DragLfo, tag::lfoPage1, 50},
        {WindowPart::DragLfo, tag::lfoPage1 + 1, 51},
        {WindowPart::DragLfo, tag::lfoPage1 + 2, 52},
        {WindowPart::DragLfo, tag::lfoPage1 + 3, 5},
        {WindowPart::DragWheel, none, 19},
    };
    for (const Case& c : cases) {
        clearMatrix();
        if (c.selector != none) rig.click(controlWithTag(c.selector));
        rig.set(octave, 0.5f);
        rig.drop(c.from, octave);
        EXPECT_EQ(slot(0).source, c.source);
        EXPECT_EQ(slot(0).destination, vantoric::destinationOf(parameter::Oct1));
        EXPECT_FLOAT_EQ(slot(0).amount, 0.75f) << "as for a source of one side";
    }
}

// Also the tab that is not on show: its press selects it.
TEST_F(Hand, TheTabOfAnEnvelopeOrLfoDropsOntoAKnob) {
    constexpr int sources[2][4] = {{7, 8, 9, 10}, {50, 51, 52, 5}};
    constexpr int firstTabs[] = {tag::envelopePage1, tag::lfoPage1};
    for (int section = 0; section < 2; ++section) {
        for (int tab = 0; tab < 4; ++tab) {
            clearMatrix();
            rig.set(octave, 0.5f);
            const Point from = rig.middle(controlWithTag(firstTabs[section] + tab)), to = rig.middle(octave);
            host.drag(from.x, from.y, to.x, to.y);
            EXPECT_EQ(slot(0).source, sources[section][tab]);
            EXPECT_EQ(slot(0).destination, vantoric::destinationOf(parameter::Oct1));
            EXPECT_FLOAT_EQ(slot(0).amount, 0.75f);
            EXPECT_EQ(rig.value(octave), 0.5f);
        }
    }
    clearMatrix();
    const Point lfo1 = rig.middle(controlWithTag(tag::lfoPage1)), to = rig.middle(octave);
    for (const int button : {2, 3}) host.drag(lfo1.x, lfo1.y, to.x, to.y, button);
    host.move(lfo1.x, lfo1.y);
    host.press();
    host.move(to.x, to.y);
    host.key("Escape");
    host.move(to.x + 2, to.y);
    host.release();
    expectNoModulation();
}

// At once, wherever the pointer is then.
TEST_F(Hand, AfterADropNothingTellsOfTheDragAnyMore) {
    const auto hint = [&] {
        const auto& line = vantoric::windowPart(WindowPart::HintLine).rect;
        return host.glance().part(static_cast<int>(line.x * rig.unit()), static_cast<int>(line.y * rig.unit()),
                                  static_cast<int>((line.width - 90) * rig.unit()), static_cast<int>(line.height * rig.unit()));
    };
    const auto around = [&](Point p) {
        return host.glance().part(static_cast<int>(p.x - 12 * rig.unit()), static_cast<int>(p.y - 9 * rig.unit()),
                                  static_cast<int>(24 * rig.unit()), static_cast<int>(18 * rig.unit()));
    };
    const Point chip = rig.middle(WindowPart::DragLfo), tab = rig.middle(controlWithTag(tag::envelopePage1 + 1));
    rig.click(tab);
    host.move(3, 400);
    host.idle(150);
    const Picture resting = hint();
    Picture told;
    for (const Point from : {chip, tab}) {
        const Picture plain = around(from);
        host.move(from.x, from.y);
        host.idle(150);
        if (from.x == chip.x) {
            EXPECT_NE(around(from), plain) << "lit under the pointer";
        }
        EXPECT_NE(hint(), resting);
        if (told.isEmpty()) told = hint();
        EXPECT_EQ(hint(), told) << "what can be done with it";
        for (const bool isCalledOff : {false, true}) {
            host.move(from.x, from.y);
            host.press();
            const Point to = rig.middle(octave);
            host.move(to.x, to.y);
            if (isCalledOff) host.key("Escape");
            if (!isCalledOff) host.release();
            host.idle(150);
            EXPECT_TRUE(difference(around(from), plain).largest <= tolerance) << isCalledOff;
            EXPECT_TRUE(difference(hint(), resting).largest <= tolerance) << isCalledOff;
            if (isCalledOff) host.release();
            host.move(3, 400);
            host.idle(150);
        }
    }
}

TEST_F(Hand, ADropUsesTheSlotOfItsSourceAgain) {
    clearMatrix();
    rig.drop(WindowPart::DragLfo, resonance);
    rig.drop(WindowPart::DragLfo, resonance);
    EXPECT_NE(slot(0).source, 0);
    EXPECT_EQ(slot(1).source, 0);
}

TEST_F(Hand, ADropBesidesOrOnWhatTakesNoneDoesNothing) {
    clearMatrix();
    const auto before = rig.parameters();
    const Point from = rig.middle(WindowPart::DragLfo);
    host.drag(from.x, from.y, 3, 400);
    rig.drop(WindowPart::DragLfo, controlNamed("PLAY MODE"));
    rig.drop(WindowPart::DragLfo, controlNamed("EQ LOW"));
    EXPECT_EQ(rig.changedSince(before), std::vector<int>{});
}

TEST_F(Hand, TheRingOfADropTargetLeavesACaptionBesideTheKnobFree) {
    const ControlEntry& knob = controlNamed("OSC12 FM");
    const auto caption = [&] {
        const Point p = rig.at(knob.x + 14, knob.y - 5);
        return host.picture().part(static_cast<int>(p.x), static_cast<int>(p.y), static_cast<int>(14 * rig.unit()),
                                   static_cast<int>(10 * rig.unit()));
    };
    const auto above = [&] {
        const Point p = rig.at(knob.x - 4, knob.y - 18);
        return host.glance().part(static_cast<int>(p.x), static_cast<int>(p.y), static_cast<int>(8 * rig.unit()),
                                  static_cast<int>(4 * rig.unit()));
    };
    const Point from = rig.middle(WindowPart::DragLfo);
    host.move(from.x, from.y);
    const Picture captionAtRest = caption(), aboveAtRest = above();
    host.press();
    host.move(from.x + 20, from.y - 20);
    EXPECT_EQ(caption(), captionAtRest);
    EXPECT_NE(above(), aboveAtRest) << "the ring is there";
    host.key("Escape");
    host.release();
}

TEST_F(Hand, TheRingOfADropTargetIsWholeBesideADimmedNeighbour) {
    const ControlEntry& field = controlNamed("OSC1 SEMI");
    const auto ringAt = [&](double x) {  // the brightest of its edge in the middle of the field's height
        const Picture picture = host.glance();
        int brightest = 0;
        const Point p = rig.at(x, field.y + field.height / 2.0);
        for (int dx = -3; dx <= 3; ++dx)
            brightest =
                std::max(brightest, static_cast<int>(picture.at(static_cast<int>(p.x) + dx, static_cast<int>(p.y)) & 255));
        return brightest;
    };
    const Point from = rig.middle(WindowPart::DragLfo);
    host.move(from.x, from.y);
    host.press();
    host.move(from.x + 20, from.y - 20);
    EXPECT_NEAR(ringAt(field.x - 1), ringAt(field.x + field.width + 1), 12);
    host.key("Escape");
    host.release();
}

TEST_F(Hand, EscapeCallsADragOff) {
    clearMatrix();
    const auto before = rig.parameters();
    const Point from = rig.middle(WindowPart::DragEnvelope), to = rig.middle(resonance);
    host.move(from.x, from.y);
    host.press();
    host.move((from.x + to.x) / 2, (from.y + to.y) / 2);
    host.move(to.x, to.y);
    host.key("Escape");
    host.release();
    EXPECT_EQ(rig.changedSince(before), std::vector<int>{});
}

TEST_F(Hand, AFullMatrixTakesNoMore) {
    for (int i = 0; i < slots; ++i) {
        rig.plugin().setParameter(vantoric::hostIndex(parameter::MatSrc1 + i, 0), 20.0f / 128);
        rig.plugin().setParameter(vantoric::hostIndex(parameter::MatDst1 + i, 0), static_cast<float>(10 + i) / 128);
    }
    host.idle(120);
    const auto before = rig.parameters();
    rig.drop(WindowPart::DragEnvelope, resonance);
    EXPECT_EQ(rig.changedSince(before), std::vector<int>{});
    EXPECT_TRUE(host.until([&] { return rig.isCovered(); }, 5)) << "a box says so";
    host.key("Return");
    EXPECT_TRUE(host.until([&] { return !rig.isCovered(); }, 5));
}

// ---- several layers at once

TEST_F(Hand, MultilayerEditingMovesAllLayers) {
    const ControlEntry& copy = controlWithTag(tag::copyMenu);
    const auto handle = [&] {
        return host.glance().at(static_cast<int>(octave.x * rig.unit() + 10.5), static_cast<int>(octave.y * rig.unit()));
    };
    host.idle(100);
    const unsigned plain = handle();
    ASSERT_TRUE(rig.chooseFrom(copy, vantoric::copy_row::multilayer));
    host.move(3, 400);
    EXPECT_TRUE(host.until([&] { return handle() != plain; }, 5)) << "knobs are tinted";
    const auto before = rig.parameters();
    rig.drag(resonance, 0, rig.value(resonance) < 0.5f ? 40 : -40);
    const float value = rig.value(resonance);
    for (int layer = 0; layer < 4; ++layer)
        EXPECT_EQ(rig.plugin().parameter(vantoric::hostIndex(parameter::Reso1, layer)), value);
    EXPECT_LE(rig.changedSince(before).size(), 4u);
    ASSERT_TRUE(rig.chooseFrom(copy, vantoric::copy_row::multilayer));
    rig.drag(octave, 0, rig.value(octave) < 0.5f ? 40 : -40);
    EXPECT_EQ(rig.plugin().parameter(vantoric::hostIndex(parameter::Oct1, 1)), before[vantoric::hostIndex(parameter::Oct1, 1)]);
}

// ---- keys

TEST_F(Hand, ARowOfAListIsChosenByTyping) {
    const ControlEntry& list = controlNamed("SYNTHESIS OSC2");
    const auto labels = labelsOf(list);
    for (int row = 0; row < static_cast<int>(labels.size()); ++row) {
        std::string typed;
        for (const char c : labels[static_cast<std::size_t>(row)].substr(0, 4)) {
            if (std::isalpha(static_cast<unsigned char>(c)) == 0) break;
            typed += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
        if (typed.size() < 3 || row == rig.row(list)) continue;
        ASSERT_TRUE(rig.openMenu(list));
        host.type(typed);
        host.key("Return");
        EXPECT_TRUE(host.until([&] { return !rig.hasMenu(); }, 5));
        EXPECT_EQ(labels[static_cast<std::size_t>(rig.row(list))].substr(0, 3),
                  labels[static_cast<std::size_t>(row)].substr(0, 3))
            << typed;
    }
}

TEST_F(Hand, ArrowsMoveInAListAndEscapeLeavesIt) {
    const ControlEntry& list = controlNamed("LFO1 WAVE");
    rig.set(list, 2.0f / 128);
    ASSERT_TRUE(rig.openMenu(list));
    host.key("Down");
    host.key("Down");
    host.key("Up");
    host.key("Return");
    EXPECT_TRUE(host.until([&] { return rig.row(list) == 3; }, 5));
    ASSERT_TRUE(rig.openMenu(list));
    host.key("Down");
    host.key("Escape");
    EXPECT_TRUE(host.until([&] { return !rig.hasMenu(); }, 5));
    EXPECT_EQ(rig.row(list), 3);
    ASSERT_TRUE(rig.openMenu(list));
    rig.click({3, 400});
    EXPECT_TRUE(host.until([&] { return !rig.hasMenu(); }, 5)) << "a click outside closes it";
    EXPECT_EQ(rig.row(list), 3);
}

TEST_F(Hand, EndsAndPagesOfAListAreReachedByKeys) {
    const ControlEntry& list = controlNamed("KEY START OSC1");  // 128 keys, more than are seen at once
    const auto chosenBy = [&](const std::vector<const char*>& keys) {
        rig.set(list, 64.0f / 128);
        EXPECT_TRUE(rig.openMenu(list));
        for (const char* key : keys) host.key(key);
        host.key("Return");
        EXPECT_TRUE(host.until([&] { return !rig.hasMenu(); }, 3));
        return rig.row(list);
    };
    EXPECT_EQ(chosenBy({"End"}), 127);
    EXPECT_EQ(chosenBy({"Home"}), 0);
    const int page = chosenBy({"Home", "Next"});
    EXPECT_GT(page, 10);
    EXPECT_EQ(chosenBy({"Home", "Next", "Next"}), 2 * page);
    EXPECT_EQ(chosenBy({"Home", "Next", "Next", "Prior"}), page);
    EXPECT_EQ(chosenBy({"Home", "Prior"}), 0) << "it does not go round";
}

TEST_F(Hand, ARowIsChosenByPressDragAndRelease) {
    const ControlEntry& list = controlNamed("LFO1 WAVE");
    rig.set(list, 2.0f / 128);
    const Point p = rig.middle(list);
    host.move(p.x, p.y);
    host.press();
    std::optional<Box> menu;
    ASSERT_TRUE(host.until([&] { return (menu = menuBox(host.glance())).has_value(); }, 5));
    const Point row = rig.rowPlace(*menu, labelsOf(list), 5);
    host.move(row.x, (p.y + row.y) / 2);
    host.move(row.x, row.y);
    host.release();
    EXPECT_TRUE(host.until([&] { return rig.row(list) == 5; }, 5));
    EXPECT_TRUE(host.until([&] { return !rig.hasMenu(); }, 5));
}

// Keys as the plug-in interface numbers them.
enum Key {
    tabKey = 2,
    returnKey = 4,
    escapeKey = 6,
    endKey = 9,
    homeKey = 10,
    upKey = 12,
    downKey = 14,
    pageUpKey = 15,
    deleteKey = 22
};

TEST_F(Hand, TheKeyboardReachesEveryControl) {
    host.hostKey(0, escapeKey);
    constexpr int most = 400;
    std::vector<int> moved;
    const auto start = rig.parameters();
    for (int i = 0; i < most; ++i) {
        ASSERT_TRUE(host.hostKey(0, tabKey));
        const auto before = rig.parameters();
        host.hostKey(0, upKey);
        auto changed = rig.changedSince(before);
        if (changed.empty()) {
            host.hostKey(0, downKey);
            changed = rig.changedSince(before);
        }
        if (!changed.empty()) moved.push_back(changed.front());
    }
    std::vector<int> missed;
    for (int i = 0; i < vantoric::controlCount(); ++i) {
        const ControlEntry& entry = vantoric::controlEntry(i);
        const int index = rig.hostIndex(entry);
        const bool isShown = entry.page <= page::layer || entry.page == page::envelope1 || entry.page == page::lfo1 ||
                             entry.page == page::matrix1 || entry.page == page::insert1;
        const bool canMove = entry.kind != vantoric::WidgetKind::EffectValue;  // empty without an effect
        if (index >= 0 && isShown && canMove && std::find(moved.begin(), moved.end(), index) == moved.end()) missed.push_back(i);
    }
    EXPECT_EQ(missed, std::vector<int>{}) << "rows of the table whose parameter no key moved";
}

TEST_F(Hand, TheFocusShowsAndItsKeysStep) {
    host.move(3, 400);
    host.idle(150);
    const Picture before = host.picture();
    host.hostKey(0, tabKey);
    EXPECT_TRUE(host.until([&] { return host.glance() != before; }, 5)) << "a ring is seen";
    host.hostKey(0, escapeKey);
}

// ---- texts that come up

TEST(LowWindow, ArrowsMoveBetweenTheColumnsOfAList) {
    dropSharedRig();
    constexpr int lowSize = 4;
    WindowRig rig(lowSize);
    const ControlEntry& list = controlNamed("SOUND MODE");
    rig.set(list, 1.0f / 128);
    rig.host().idle(120);
    const auto chosenBy = [&](const char* key) {
        EXPECT_TRUE(rig.openMenu(list));
        rig.host().key(key);
        rig.host().key("Return");
        EXPECT_TRUE(rig.host().until([&] { return !rig.hasMenu(); }, 3));
        return rig.row(list);
    };
    const int beside = chosenBy("Right");
    EXPECT_GT(beside, 3);
    EXPECT_EQ(chosenBy("Right"), beside) << "there is no third column";
    EXPECT_EQ(chosenBy("Left"), 1);
}

TEST(Tooltips, ShowAfterAWhileAndGoWithThePointer) {
    dropSharedRig();
    WindowRig rig;
    const Point p = rig.middle(controlNamed("PLAY MODE"));
    rig.host().move(p.x, p.y);
    rig.host().idle(1500);
    EXPECT_FALSE(rig.hasMenu()) << "they are off";
    rig.host().close();
    rig.installation().setTooltips(true);
    ASSERT_TRUE(rig.host().open());
    rig.host().move(3, 400);
    rig.host().move(p.x, p.y);
    EXPECT_TRUE(rig.host().until([&] { return rig.hasMenu(); }, 10)) << "a box in the ground of menus";
    rig.host().move(3, 400);
    EXPECT_TRUE(rig.host().until([&] { return !rig.hasMenu(); }, 10));
}

TEST_F(Hand, TheHintLineSpeaksOfWhatIsUnderThePointer) {
    const auto& line = vantoric::windowPart(WindowPart::HintLine).rect;
    const auto hint = [&] {
        return host.glance().part(static_cast<int>(line.x * rig.unit()), static_cast<int>(line.y * rig.unit()),
                                  static_cast<int>(line.width * rig.unit()), static_cast<int>(line.height * rig.unit()));
    };
    host.move(3, 400);
    host.idle(100);
    const Picture resting = hint();
    Picture last = resting;
    for (const char* name : {"FIL1 RESO", "FIL1 DRIVE", "PLAY MODE", "SYNT1 ON"}) {
        const Point p = rig.middle(controlNamed(name));
        host.move(p.x, p.y);
        EXPECT_TRUE(host.until([&] { return hint() != last; }, 5)) << name;
        last = hint();
    }
}

}  // namespace
