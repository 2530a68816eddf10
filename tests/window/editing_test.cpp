// What a hand takes back, compares, copies, types, varies and teaches to a controller.
#include <gtest/gtest.h>

#include <cmath>

#include "base/parameters.h"
#include "editor/model/control_texts.h"
#include "editor/model/menu_rows.h"
#include "editor/model/window_layout.h"
#include "effects/effect_row.h"
#include "effects/effect_texts.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::ControlEntry;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

// The keys of the plug-in interface.
enum Key { tabKey = 2, escapeKey = 6, upKey = 12 };

class Editing : public testing::Test {
protected:
    void SetUp() override {
        rig.reset();
        host.hostKey(0, escapeKey);
        rig.set(resonance, 0.3f);
    }

    // The window has the keys.
    void focus() { host.click(3, 400); }
    bool comesTo(const ControlEntry& entry, float value) {
        return host.until([&] { return std::fabs(rig.value(entry) - value) < 1e-4f; }, 5);
    }
    // What Tab reaches next of which an arrow makes a hundredth more: the parameter's index; -1 for none. The wheel is
    // there twice.
    int tabToAmount() {
        for (int tabs = 0; tabs < 60; ++tabs) {
            host.hostKey(0, tabKey);
            const auto before = rig.parameters();
            host.hostKey(0, upKey);
            const auto changed = rig.changedSince(before);
            if (changed.size() != 1 || changed[0] == parameter::Modwheel) continue;
            const auto index = static_cast<std::size_t>(changed[0]);
            if (std::fabs(rig.plugin().parameter(changed[0]) - before[index] - 0.01f) < 1e-4f) return changed[0];
        }
        return -1;
    }
    void typeInto(const ControlEntry& entry, const std::string& text) {
        host.keyDown("Alt_L");
        rig.click(entry);
        host.keyUp("Alt_L");
        host.idle(150);
        host.type(text);
        host.key("Return");
        host.idle(60);
    }
    // The right end of the hint line has the two arrows, and what compares before them.
    Point historyButton(double fromRight) const {
        const auto& line = vantoric::windowPart(vantoric::WindowPart::HintLine).rect;
        return rig.at(line.x + line.width - fromRight, line.y + line.height / 2.0);
    }

    WindowRig& rig = sharedRig();
    WindowHost& host = rig.host();
    const ControlEntry& resonance = controlNamed("FIL1 RESO");
};

TEST_F(Editing, ControlAndLettersTakeBackAndDoAgain) {
    rig.drag(resonance, 0, 30);
    const float turned = rig.value(resonance);
    ASSERT_GT(turned, 0.35f);
    focus();
    host.control("z");
    EXPECT_TRUE(comesTo(resonance, 0.3f));
    host.control("z", true);
    EXPECT_TRUE(comesTo(resonance, turned));
    host.control("z");
    EXPECT_TRUE(comesTo(resonance, 0.3f));
    host.control("y");
    EXPECT_TRUE(comesTo(resonance, turned));
}

TEST_F(Editing, AChosenEffectIsTakenBackAsOneStep) {
    const auto before = rig.parameters();
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(parameter::FxInType), 3));
    ASSERT_GT(rig.changedSince(before).size(), 1u) << "with its settings";
    focus();
    host.control("z");
    EXPECT_TRUE(host.until([&] { return rig.changedSince(before).empty(); }, 5));
}

TEST_F(Editing, TwoPatchesAreCompared) {
    const Point compare = historyButton(62);
    rig.drag(resonance, 0, 30);
    const float first = rig.value(resonance);
    host.keyDown("Shift_L");
    rig.click(compare);  // the other one is made like this
    host.keyUp("Shift_L");
    host.idle(100);
    rig.drag(resonance, 0, 60);
    const float second = rig.value(resonance);
    ASSERT_GT(second, first);
    rig.click(compare);
    EXPECT_TRUE(comesTo(resonance, first));
    rig.click(compare);
    EXPECT_TRUE(comesTo(resonance, second));
}

TEST_F(Editing, AValueIsCopiedFromControlToControl) {
    focus();
    const int first = tabToAmount();
    ASSERT_GE(first, 0);
    host.control("c");
    const int second = tabToAmount();
    ASSERT_GE(second, 0);
    ASSERT_NE(second, first);
    const float copied = rig.plugin().parameter(first);
    rig.plugin().setParameter(second, copied > 0.5f ? 0.2f : 0.8f);
    host.idle(120);
    host.control("v");
    EXPECT_TRUE(host.until([&] { return rig.plugin().parameter(second) == copied; }, 5));
    host.key("Escape");
}

TEST_F(Editing, AltAndAClickTypeAValue) {
    typeInto(resonance, "62");
    EXPECT_NEAR(rig.value(resonance), 0.62f, 0.005f);
    const auto before = rig.parameters();
    typeInto(resonance, "loud");
    host.key("Escape");
    EXPECT_EQ(rig.changedSince(before), std::vector<int>{}) << "what is no value is told and not taken";
}

TEST_F(Editing, AnEffectIsTypedInItsOwnUnit) {
    // The first type that shows metres.
    const auto shown = [](int type, float value) {
        char text[vantoric::effectTextSize];
        vantoric::effectParameterText(type, 1, value, text);
        return std::string(text);
    };
    int type = 1;
    while (type < vantoric::effectTypeCount && !(shown(type, 0.5f).starts_with("Size") && shown(type, 0.5f).ends_with("m")))
        ++type;
    ASSERT_LT(type, vantoric::effectTypeCount);
    rig.set(controlWithTag(parameter::FxInType), static_cast<float>(type) / 128);
    const ControlEntry& size = controlWithTag(parameter::FxInPar1);
    rig.set(size, 0.1f);
    const std::string wanted = shown(type, 0.75f).substr(5);
    typeInto(size, wanted);
    EXPECT_EQ(shown(type, rig.value(size)).substr(5), wanted);
    const float typed = rig.value(size);
    typeInto(size, "");
    EXPECT_EQ(rig.value(size), typed) << "what stands there is what it has";
}

TEST_F(Editing, AValueThatIsCalledOffWakesNoLayer) {
    const int layer = parameter::Layer1On + rig.layer();
    rig.plugin().setParameter(layer, 0);
    host.idle(150);
    host.keyDown("Alt_L");
    rig.click(resonance);
    host.keyUp("Alt_L");
    host.idle(100);
    host.key("Escape");
    EXPECT_EQ(rig.plugin().parameter(layer), 0);
    typeInto(resonance, "40");
    EXPECT_EQ(rig.plugin().parameter(layer), 1) << "one that is typed is to be heard";
}

TEST_F(Editing, AClickInADisplayWakesItsLayer) {
    const int layer = parameter::Layer1On + rig.layer();
    for (const char* display : {"WAVE 1", "FILTER SPECTRUM 1", "ENVELOPE"}) {
        rig.plugin().setParameter(layer, 0);
        host.idle(150);
        const ControlEntry& entry = controlNamed(display);
        rig.click(rig.at(entry.x + entry.width / 2.0, entry.y + entry.height / 2.0));
        EXPECT_EQ(rig.plugin().parameter(layer), 1) << display;
    }
}

TEST_F(Editing, ATitleVariesItsSectionInOneStep) {
    const auto before = rig.parameters();
    const auto menu = rig.openMenu(rig.at(38, 146));
    ASSERT_TRUE(menu);
    ASSERT_TRUE(rig.choose(*menu, {"Mutate", "Randomise"}, 1));
    EXPECT_TRUE(host.until([&] { return !rig.changedSince(before).empty(); }, 5));
    focus();
    host.control("z");
    EXPECT_TRUE(host.until([&] { return rig.changedSince(before).empty(); }, 5));
}

TEST_F(Editing, AFieldLearnsItsControllerAndForgetsIt) {
    const ControlEntry& field = controlNamed("OSC1 SEMI");
    const auto turn = [&](int value) {
        rig.plugin().midi(0xB0, 21, value);
        rig.plugin().render(256);
        host.idle(120);
        return rig.value(field);
    };
    const auto rows = vantoric::knobMenuRows(vantoric::parameterOfTag(field.tag), vantoric::MidiLearn::noController);
    const auto menu = rig.openMenu(field, 3);
    ASSERT_TRUE(menu);
    constexpr int learnRow = 3;
    ASSERT_TRUE(rig.choose(*menu, rows, learnRow));
    turn(64);
    const float high = turn(127);
    EXPECT_GT(high, turn(0));
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::helpMenu), vantoric::help_row::removeControllers));
    host.idle(120);
    rig.closeMenus();
    const float before = rig.value(field);
    EXPECT_EQ(turn(127), before) << "no controller moves anything any more";
}

TEST_F(Editing, AProgramChangeStepsWithTheWindowOpen) {
    const auto name = [&] { return rig.plugin().text(wire::opProgramName); };
    const auto change = [&](int number) {
        rig.plugin().midi(0xC0, number, 0);
        rig.plugin().render(256);
    };
    change(10);
    host.idle(200);
    const std::string first = name();
    change(11);
    ASSERT_TRUE(host.until([&] { return name() != first; }, 10));
    change(10);
    EXPECT_TRUE(host.until([&] { return name() == first; }, 10));
}

// ---- rows of menus, by what they leave

class RowsRead : public Editing {
protected:
    bool choose(int menu, int row) {
        const bool isChosen = rig.chooseFrom(controlWithTag(menu), row);
        host.idle(80);
        rig.closeMenus();
        return isChosen;
    }
    float at(int number, int layer = 0) { return rig.plugin().parameter(vantoric::hostIndex(number, layer)); }
    void put(int number, float value, int layer = 0) {
        rig.plugin().setParameter(vantoric::hostIndex(number, layer), value);
        host.idle(60);
    }
};

TEST_F(RowsRead, StacksSwitchTheirLayersAndShowTheFirst) {
    for (const int row : {0, 5, 6, 11}) {
        rig.showLayer(2);
        ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::stack1 + row));
        const bool isFour = row >= 6;
        EXPECT_EQ(rig.plugin().parameter(parameter::Layer2On), 1.0f) << row;
        EXPECT_EQ(rig.plugin().parameter(parameter::Layer3On), isFour ? 1.0f : 0.0f) << row;
        EXPECT_NE(at(parameter::Detune1, 0), at(parameter::Detune1, 1)) << row;
        if (row % 6 >= 3) {
            EXPECT_EQ(at(parameter::FilPan1, 1), 1.0f) << row;
        }
        // The first layer is the one on show.
        const float before = at(parameter::Reso1);
        rig.drag(resonance, 0, before < 0.5f ? 30 : -30);
        EXPECT_NE(at(parameter::Reso1), before) << row;
    }
}

TEST_F(RowsRead, OscillatorsAndSectionsArePasted) {
    for (int to = 0; to < 3; ++to) {
        const int from = (to + 1) % 3;
        put(parameter::Pw1 + from, 0.11f + 0.2f * static_cast<float>(from));
        put(parameter::Pw1 + to, 0.9f);
        ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::layerToOscillator1 + from));
        ASSERT_TRUE(choose(tag::pasteMenu, vantoric::paste_row::oscillator1 + to));
        EXPECT_EQ(at(parameter::Pw1 + to), at(parameter::Pw1 + from)) << to;
    }
    put(parameter::ArpVol1, 0.0f);
    ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::layerToArpeggiator));
    put(parameter::ArpVol1, 5.0f / 128);
    ASSERT_TRUE(choose(tag::pasteMenu, vantoric::paste_row::arpeggiator));
    EXPECT_EQ(at(parameter::ArpVol1), 0.0f);
}

TEST_F(RowsRead, TheArpeggiatorAndTheMatrixAreResetAlone) {
    put(parameter::Reso1, 0.77f);
    put(parameter::ArpVol1 + 3, 5.0f / 128);
    put(parameter::MatSrc1, 20.0f / 128);
    put(parameter::MatDst1, 0.0f);
    ASSERT_TRUE(choose(tag::initMenu, vantoric::init_row::cleanMatrix));
    EXPECT_EQ(at(parameter::MatSrc1), 0.0f);
    ASSERT_TRUE(choose(tag::initMenu, vantoric::init_row::arpeggiator));
    EXPECT_NE(at(parameter::ArpVol1 + 3), 5.0f / 128);
    EXPECT_EQ(at(parameter::Reso1), 0.77f);
}

TEST_F(RowsRead, TheStepLfoIsPasted) {
    put(parameter::Step1 + 2, 0.3f);
    ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::layerToStepLfo));
    put(parameter::Step1 + 2, 0.8f);
    ASSERT_TRUE(choose(tag::pasteMenu, vantoric::paste_row::stepLfo));
    EXPECT_EQ(at(parameter::Step1 + 2), 0.3f);
}

TEST_F(RowsRead, ACompletePatchIsCopiedAndPasted) {
    ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::completePatch));
    const auto before = rig.parameters();
    put(parameter::Reso1, 0.91f);
    put(parameter::Cutoff1, 0.17f, 1);
    ASSERT_TRUE(choose(tag::pasteMenu, vantoric::paste_row::completePatch));
    EXPECT_TRUE(host.until([&] { return rig.changedSince(before).empty(); }, 5));
}

}  // namespace
