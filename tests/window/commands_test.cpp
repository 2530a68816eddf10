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
