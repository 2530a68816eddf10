// Every row of every menu is chosen by the mouse, and each page, layer and button does what it is for.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <set>

#include "base/parameters.h"
#include "editor/model/menu_rows.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::ControlEntry;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

struct MenuRow {
    int tag, row;
};

std::vector<std::string> linesOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

class Commands : public testing::Test {
protected:
    void SetUp() override { rig.reset(); }
    bool choose(int menu, int row) { return rig.chooseFrom(controlWithTag(menu), row); }
    float layerValue(int number, int layer = 0) { return rig.plugin().parameter(vantoric::hostIndex(number, layer)); }
    std::string patchName() { return rig.plugin().text(wire::opProgramName); }

    WindowRig& rig = sharedRig();
    WindowHost& host = rig.host();
};

// ---- pages, layers, buttons

TEST_F(Commands, AKnobAtTheSamePlaceBelongsToThePageOnShow) {
    struct Family {
        int firstSelector, count, firstParameter;
        const char* knob;
    };
    for (const Family& family :
         {Family{tag::envelopePage1, 4, 175, "VOL ENV ATTACK"}, Family{tag::lfoPage1, 3, 137, "LFO1 SPEED"}})
        for (int i = 0; i < family.count; ++i) {
            rig.click(controlWithTag(family.firstSelector + i));
            const auto before = rig.parameters();
            const Point p = rig.middle(controlNamed(family.knob));
            const float start = layerValue(family.firstParameter + i);
            host.drag(p.x, p.y, p.x, p.y + (start < 0.5f ? -30 : 30));
            EXPECT_EQ(rig.changedSince(before), std::vector{family.firstParameter + i});
        }
}

TEST_F(Commands, EachLayerHasItsOwnControls) {
    for (int layer = 0; layer < 4; ++layer) {
        rig.showLayer(layer);
        const auto before = rig.parameters();
        rig.drag(controlNamed("FIL1 RESO"), 0, layerValue(parameter::Reso1, layer) < 0.5f ? 30 : -30);
        EXPECT_EQ(rig.changedSince(before), std::vector{vantoric::hostIndex(parameter::Reso1, layer)});
    }
}

TEST_F(Commands, NextAndPreviousStepThroughThePatches) {
    const std::string first = patchName();
    rig.click(controlWithTag(tag::nextPatch));
    EXPECT_TRUE(host.until([&] { return patchName() != first; }, 10));
    rig.click(controlWithTag(tag::previousPatch));
    EXPECT_TRUE(host.until([&] { return patchName() == first; }, 10));
}

TEST_F(Commands, AStepIsTakenWhenTheButtonIsLetGoOfUponIt) {
    const std::string first = patchName();
    const Point next = rig.middle(controlWithTag(tag::nextPatch));
    host.move(next.x, next.y);
    host.press();
    host.idle(200);
    EXPECT_EQ(patchName(), first) << "not by the press";
    host.move(next.x, next.y + 60);
    host.release();
    host.idle(200);
    EXPECT_EQ(patchName(), first) << "nor beside it";
    host.move(next.x, next.y);
    host.press();
    host.release();
    EXPECT_TRUE(host.until([&] { return patchName() != first; }, 10));
}

TEST_F(Commands, TheBrowserOpensAndCloses) {
    const auto below = [](const Picture& whole) { return whole.part(300, 300, 600, 300); };
    const auto openAndClose = [&](const Picture& closed) {
        rig.click(controlWithTag(tag::browser));
        EXPECT_TRUE(host.until([&] { return below(host.glance()) != below(closed); }, 5));
        host.key("Escape");
        host.move(3, 400);
        host.idle(500);
    };
    // What is drawn anew stands as a picture from then on, which may differ by a step of a colour.
    openAndClose(host.picture());
    const Picture closed = host.picture();
    openAndClose(closed);
    EXPECT_TRUE(host.until([&] { return below(host.glance()) == below(closed); }, 5));
}

TEST_F(Commands, TheWordMarkOpensAPage) {
    const auto before = linesOf(openedPages()).size();
    rig.click(controlWithTag(tag::shop));
    EXPECT_TRUE(host.until([&] { return linesOf(openedPages()).size() > before; }, 10));
    EXPECT_NE(linesOf(openedPages()).back().find("vantoric.example"), std::string::npos);
}

TEST_F(Commands, DisplaysFollowTheirParameters) {
    struct Case {
        const char *display, *control;
    };
    for (const Case& c : {Case{"FILTER SPECTRUM 1", "FIL1 CUTOFF"}, Case{"FILTER SPECTRUM 2", "FIL2 CUTOFF"},
                          Case{"ENVELOPE", "VOL ENV DECAY"}}) {
        const ControlEntry& control = controlNamed(c.control);
        for (const int filter : {111, 112}) rig.plugin().setParameter(filter, 3.0f / 128);
        rig.set(control, 0.3f);
        host.move(3, 400);
        const Picture before = rig.pictureOf(controlNamed(c.display));
        rig.set(control, 0.6f);
        EXPECT_TRUE(host.until([&] { return rig.pictureOf(controlNamed(c.display)) != before; }, 5)) << c.display;
    }
}

// ---- menus

TEST_F(Commands, ResetsSetWhatTheyName) {
    ASSERT_TRUE(choose(tag::initMenu, vantoric::init_row::matrix));
    for (int i = 0; i < 16; ++i) EXPECT_EQ(layerValue(parameter::MatSrc1 + i), 0.0f);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(layerValue(parameter::MatVal1 + i), 0.5f);
    rig.set(controlNamed("FIL1 RESO"), 0.7f);
    ASSERT_TRUE(choose(tag::initMenu, vantoric::init_row::layer));
    EXPECT_EQ(layerValue(parameter::Reso1), 0.0f);
    EXPECT_EQ(layerValue(parameter::Cutoff1), 1.0f);
    ASSERT_TRUE(choose(tag::initMenu, vantoric::init_row::all));
    EXPECT_TRUE(host.until([&] { return rig.plugin().parameter(parameter::Layer2On) == 0.0f; }, 10));
    EXPECT_EQ(rig.plugin().parameter(parameter::Layer1On), 1.0f);
    EXPECT_EQ(patchName().substr(0, 5), "Init ");
}

TEST_F(Commands, TheArpeggiatorIsResetAlone) {
    rig.plugin().setParameter(parameter::ArpType, 12.0f / 128);
    rig.plugin().setParameter(parameter::Reso1, 0.43f);
    for (int step = 0; step < 16; ++step) rig.plugin().setParameter(parameter::ArpVol1 + step, 3.0f / 128);
    ASSERT_TRUE(choose(tag::initMenu, vantoric::init_row::arpeggiator));
    EXPECT_TRUE(host.until([&] { return layerValue(parameter::ArpVol1) == 9.0f / 128; }, 10));
    for (int step = 0; step < 16; step += 2) EXPECT_EQ(layerValue(parameter::ArpVol1 + step), 9.0f / 128) << step;
    EXPECT_EQ(layerValue(parameter::ArpRetri), 1.0f / 128);
    EXPECT_NE(layerValue(parameter::ArpType), 12.0f / 128);
    EXPECT_EQ(layerValue(parameter::Reso1), 0.43f);
}

TEST_F(Commands, CleaningTheMatrixEmptiesTheHalfRowsOfAllLayers) {
    constexpr float source = 20.0f / 128, destination = 40.0f / 128, amount = 0.9f;
    const auto set = [&](int layer, int slot, float from, float to) {
        const std::pair<int, float> values[] = {
            {parameter::MatSrc1, from}, {parameter::MatDst1, to}, {parameter::MatVal1, amount}};
        for (const auto& [number, value] : values) rig.plugin().setParameter(vantoric::hostIndex(number + slot, layer), value);
    };
    for (int layer = 0; layer < 4; ++layer) {
        set(layer, 0, source, 0);
        set(layer, 1, source, destination);
        set(layer, 2, 0, destination);
    }
    ASSERT_TRUE(choose(tag::initMenu, vantoric::init_row::cleanMatrix));
    EXPECT_TRUE(host.until([&] { return layerValue(parameter::MatVal1) == 0.5f; }, 10));
    for (int layer = 0; layer < 4; ++layer)
        for (const int slot : {0, 1, 2}) {
            EXPECT_EQ(layerValue(parameter::MatSrc1 + slot, layer), slot == 1 ? source : 0.0f);
            EXPECT_EQ(layerValue(parameter::MatDst1 + slot, layer), slot == 1 ? destination : 0.0f);
            EXPECT_EQ(layerValue(parameter::MatVal1 + slot, layer), slot == 1 ? amount : 0.5f);
        }
}

TEST_F(Commands, EveryTemplateMakesAPatchOfItsName) {
    const auto labels = labelsOf(controlWithTag(tag::initMenu));
    for (int row = vantoric::init_row::create1; row < static_cast<int>(labels.size()); ++row) {
        constexpr std::size_t nameFrom = 14;  // after "Create patch: "
        const std::string name = labels[static_cast<std::size_t>(row)].substr(nameFrom);
        ASSERT_TRUE(choose(tag::initMenu, row)) << name;
        EXPECT_TRUE(host.until([&] { return patchName().substr(0, name.size()) == name; }, 10))
            << name << ", not " << patchName();
        EXPECT_FALSE(rig.isCovered()) << name;
        rig.closeMenus();
    }
}

TEST_F(Commands, ALayerIsCopiedAndPasted) {
    rig.set(controlNamed("FIL1 RESO"), 0.77f);
    ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::layer));
    rig.closeMenus();
    rig.showLayer(2);
    ASSERT_TRUE(choose(tag::pasteMenu, vantoric::paste_row::layer));
    EXPECT_TRUE(host.until([&] { return std::fabs(layerValue(parameter::Reso1, 2) - 0.77f) < 1e-3f; }, 10));
}

TEST_F(Commands, AWholePatchIsCopiedAndPasted) {
    rig.set(controlNamed("FIL1 RESO"), 0.31f);
    ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::completePatch));
    const auto copied = rig.plugin().chunk();
    ASSERT_TRUE(choose(tag::initMenu, vantoric::init_row::all));
    ASSERT_TRUE(host.until([&] { return rig.plugin().chunk() != copied; }, 10));
    ASSERT_TRUE(choose(tag::pasteMenu, vantoric::paste_row::completePatch));
    EXPECT_TRUE(host.until([&] { return rig.plugin().chunk() == copied; }, 10));
}

TEST_F(Commands, AnOscillatorIsPastedIntoAnotherOneOfAnotherLayer) {
    const auto setInterval = [&](int oscillator, int layer, float value) {
        rig.plugin().setParameter(vantoric::hostIndex(parameter::Interv1 + oscillator, layer), value);
    };
    constexpr int target = 3;
    for (int oscillator = 0; oscillator < 3; ++oscillator) {
        setInterval(oscillator, 0, 0.2f + 0.2f * static_cast<float>(oscillator));
        setInterval(oscillator, target, 0.9f);
    }
    for (int from = 0; from < 3; ++from) {
        const int to = (from + 1) % 3;
        rig.showLayer(0);
        ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::layerToOscillator1 + from));
        rig.showLayer(target);
        const auto before = rig.parameters();
        ASSERT_TRUE(choose(tag::pasteMenu, vantoric::paste_row::oscillator1 + to));
        const float wanted = layerValue(parameter::Interv1 + from);
        EXPECT_TRUE(host.until([&] { return layerValue(parameter::Interv1 + to, target) == wanted; }, 10)) << from;
        for (const int index : rig.changedSince(before)) {
            const int number = index - vantoric::hostIndex(0, target);
            EXPECT_TRUE(number >= parameter::Oct1 && number < parameter::PitchOct1 && number % 3 == to)
                << "of that oscillator and layer alone, not " << index;
        }
    }
}

TEST_F(Commands, ASectionIsPastedAlone) {
    constexpr int arpeggio = parameter::ArpSpeed, steps = parameter::Step1, target = 1;
    struct Case {
        int copyRow, pasteRow, pasted, left;
    };
    for (const Case& c : {Case{vantoric::copy_row::layerToArpeggiator, vantoric::paste_row::arpeggiator, arpeggio, steps},
                          Case{vantoric::copy_row::layerToStepLfo, vantoric::paste_row::stepLfo, steps, arpeggio}}) {
        rig.showLayer(0);
        for (const int number : {arpeggio, steps}) {
            rig.plugin().setParameter(number, 12.0f / 128);
            rig.plugin().setParameter(vantoric::hostIndex(number, target), 0);
        }
        ASSERT_TRUE(choose(tag::copyMenu, c.copyRow));
        rig.showLayer(target);
        ASSERT_TRUE(choose(tag::pasteMenu, c.pasteRow));
        EXPECT_TRUE(host.until([&] { return layerValue(c.pasted, target) == layerValue(c.pasted); }, 10));
        EXPECT_EQ(layerValue(c.left, target), 0.0f);
    }
}

TEST_F(Commands, TheFirstLayerIsStackedInTwelveWays) {
    constexpr float amounts[] = {0.02f, 0.04f, 0.1f, 0.0625f, 0.125f, 0.25f};
    constexpr float shares[] = {0.43333337f, -0.36666667f, 0.23333335f, -0.20000002f};
    for (int row = 0; row < 12; ++row) {
        rig.reset();
        const int count = row < 6 ? 2 : 4;
        const bool isStereo = row % 6 >= 3;
        const float amount = amounts[row / 6 * 3 + row % 3];
        rig.plugin().setParameter(parameter::Detune1, 0.5f);
        rig.plugin().setParameter(parameter::Reso1, 0.43f);
        const float pan = layerValue(parameter::FilPan1);
        ASSERT_TRUE(choose(tag::copyMenu, vantoric::copy_row::stack1 + row));
        const auto isSpread = [&] { return std::fabs(layerValue(parameter::Detune1) - 0.5f - amount * shares[0]) < 1e-5f; };
        EXPECT_TRUE(host.until(isSpread, 10)) << row;
        for (int layer = 0; layer < 4; ++layer) {
            EXPECT_EQ(rig.plugin().parameter(parameter::Layer1On + layer), layer < count ? 1.0f : 0.0f) << row;
            if (layer >= count) continue;
            EXPECT_FLOAT_EQ(layerValue(parameter::Reso1, layer), 0.43f) << "a copy of the first";
            EXPECT_NEAR(layerValue(parameter::Detune1, layer), 0.5f + amount * shares[layer], 1e-5f) << row;
            EXPECT_EQ(layerValue(parameter::FilPan1, layer), isStereo ? static_cast<float>(layer % 2) : pan) << row;
        }
    }
}

TEST(Pasting, WithNothingCopiedIsToldAndChangesNothing) {
    using namespace vantoric::paste_row;
    dropSharedRig();
    WindowRig rig;
    const auto before = rig.plugin().chunk();
    for (const int row :
         {int(completePatch), int(layer), int(oscillator1), oscillator1 + 1, oscillator1 + 2, int(arpeggiator), int(stepLfo)}) {
        ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::pasteMenu), row));
        EXPECT_TRUE(rig.host().until([&] { return rig.isCovered(); }, 10)) << row;
        rig.host().key("Return");
        EXPECT_TRUE(rig.host().until([&] { return !rig.isCovered(); }, 10)) << row;
        EXPECT_EQ(rig.plugin().chunk(), before) << row;
    }
}

TEST_F(Commands, EveryPageOfHelpOpensInTheBrowser) {
    using namespace vantoric::help_row;
    for (const int row : {int(home), int(downloadSounds), int(tutorial), int(manual), int(updates)}) {
        const auto before = linesOf(openedPages()).size();
        ASSERT_TRUE(choose(tag::helpMenu, row));
        EXPECT_TRUE(host.until([&] { return linesOf(openedPages()).size() == before + 1; }, 10)) << row;
    }
    const auto lines = linesOf(openedPages());
    EXPECT_EQ(std::set<std::string>(lines.end() - 4, lines.end()).size(), 4u) << "each its own";
}

TEST_F(Commands, APageThatTheDesktopCannotShowIsTold) {
    const std::filesystem::path opener = openerFolder() / "xdg-open", usual = openerFolder() / "usual";
    std::filesystem::rename(opener, usual);
    std::ofstream(opener) << "#!/bin/sh\nsleep 0.5\nexit 3\n";
    std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
    EXPECT_TRUE(choose(tag::helpMenu, vantoric::help_row::manual));
    EXPECT_FALSE(rig.isCovered()) << "nobody knows yet";
    EXPECT_TRUE(host.until([&] { return rig.isCovered(); }, 10));
    std::filesystem::rename(usual, opener);
    host.key("Escape");
    EXPECT_TRUE(host.until([&] { return !rig.isCovered(); }, 5));
}

// Whatever a row does, and with nothing to do it on: the window lives on, and Escape leads back.
class EveryRow : public Commands, public testing::WithParamInterface<MenuRow> {};

TEST_P(EveryRow, CanBeChosen) {
    ASSERT_TRUE(choose(GetParam().tag, GetParam().row));
    host.idle(100);
    host.key("Escape");  // the browser leaves the band in sight
    rig.closeMenus();
    EXPECT_FALSE(rig.isCovered());
    EXPECT_TRUE(rig.plugin().render(512).finite());
    const auto gestures = rig.gestures();
    EXPECT_EQ(gestures.begun, gestures.ended);
    rig.set(controlNamed("FIL1 RESO"), 0.5f);
    rig.drag(controlNamed("FIL1 RESO"), 0, 30);
    EXPECT_NEAR(rig.value(controlNamed("FIL1 RESO")), 0.62f, 0.01f);
    if (GetParam().tag == tag::copyMenu && GetParam().row == vantoric::copy_row::multilayer) {
        EXPECT_TRUE(choose(tag::copyMenu, GetParam().row));
    }
}

std::vector<MenuRow> allRows() {
    std::vector<MenuRow> rows;
    for (const int menu : {int(tag::fileMenu), int(tag::copyMenu), int(tag::pasteMenu), int(tag::initMenu), int(tag::helpMenu)}) {
        const auto labels = labelsOf(controlWithTag(menu));
        // Each template is chosen above.
        const int end = menu == tag::initMenu ? int(vantoric::init_row::create1) : static_cast<int>(labels.size());
        for (int row = 0; row < end; ++row)
            if (labels[static_cast<std::size_t>(row)] != "-") rows.push_back({menu, row});
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Window, EveryRow, testing::ValuesIn(allRows()), [](const auto& row) {
    return "Menu" + std::to_string(row.param.tag) + "Row" + std::to_string(row.param.row);
});

}  // namespace
