// Whether the window's table makes a window that a player can use: everything there, nothing over anything else.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string_view>
#include <vector>

#include "editor/model/control_table.h"
#include "editor/model/window_layout.h"
#include "samples/edit_commands.h"

namespace vantoric {
namespace {

using Counts = std::map<int, int>;

template <class Member>
Counts countsOf(Member member) {
    Counts counts;
    for (int i = 0; i < controlCount(); ++i) ++counts[static_cast<int>(controlEntry(i).*member)];
    return counts;
}

TEST(ControlTable, HasSoManyControlsOfEachKind) {
    EXPECT_EQ(controlCount(), 311);
    EXPECT_EQ(countsOf(&ControlEntry::kind), (Counts{{1, 64},
                                                     {2, 4},
                                                     {3, 10},
                                                     {4, 17},
                                                     {5, 4},
                                                     {6, 36},
                                                     {7, 37},
                                                     {8, 46},
                                                     {9, 7},
                                                     {10, 45},
                                                     {11, 16},
                                                     {14, 12},
                                                     {15, 3},
                                                     {16, 2},
                                                     {17, 6},
                                                     {18, 1},
                                                     {19, 1}}));
}

TEST(ControlTable, HasSoManyControlsOnEachPage) {
    Counts expected{{page::always, 47}, {page::layer, 117}};
    for (const int first : {page::sample1, page::sample2, page::sample3}) {
        expected[first] = 4;
        for (int type = 1; type < 6; ++type) expected[first + type] = 1;
    }
    for (int n = page::envelope1; n < page::stepLfo; ++n) expected[n] = 6;
    expected[page::stepLfo] = 21;
    for (int n = page::matrix1; n <= page::matrix3; ++n) expected[n] = 15;
    expected[page::insert1] = expected[page::insert2] = 6;
    EXPECT_EQ(countsOf(&ControlEntry::page), expected);
}

// An index that is none shows the first control instead of what lies beside the table.
TEST(ControlTable, AnIndexOutsideIsTheFirstControl) {
    for (const int index : {-1, 311, 1 << 30}) EXPECT_STREQ(controlEntry(index).name, "WAVE 1") << index;
}

TEST(ControlTable, EveryTextFitsItsField) {
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        EXPECT_LT(std::strlen(entry.name), 64u) << entry.name;
        EXPECT_LT(entry.tooltip.size(), 304u) << entry.name;
        EXPECT_FALSE(entry.tooltip.empty()) << entry.name;
        EXPECT_EQ(entry.tooltip.find('#'), std::string::npos) << entry.tooltip;
    }
}

TEST(ControlTable, ListsHaveLabelsAndFieldsHaveTexts) {
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        const bool isWaveMenu = entry.tag >= tag::waveMenu1 && entry.tag < tag::waveMenu1 + 3;
        const bool isList = entry.kind == WidgetKind::LargeList || entry.kind == WidgetKind::List ||
                            entry.kind == WidgetKind::SmallList || entry.kind == WidgetKind::Menu;
        const bool opensCommands = entry.kind == WidgetKind::SampleButton && std::string_view(entry.name).ends_with("EDIT");
        EXPECT_EQ(!entry.labels.empty(), opensCommands || (isList && !isWaveMenu)) << entry.name;
        const bool isField = entry.kind == WidgetKind::Value || entry.kind == WidgetKind::EffectValue;
        EXPECT_EQ(entry.format != nullptr, isField) << entry.name;
    }
}

TEST(ControlTable, TheSamplesMenuHasTheEditorsCommands) {
    const LabelList rows = controlEntry(controlIndexForTag(tag::sampleEdit1)).labels;
    ASSERT_EQ(rows.size(), editCommands.size());
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_STREQ(rows[i], editCommands[i].label);
}

// The text of the ninth source speaks of the eighth slot; users know it so.
TEST(ControlTable, TheNinthSourceHasTheTooltipOfTheEighth) {
    EXPECT_EQ(controlEntry(controlIndexForTag(283)).tooltip, "Modulation source of slot 8.");
    EXPECT_EQ(controlEntry(controlIndexForTag(284)).tooltip, "Modulation source of slot 10.");
}

TEST(ControlTable, TheSameControlsServeAllLayers) {
    EXPECT_EQ(hostIndexOfTag(97, 0), 97);
    EXPECT_EQ(hostIndexOfTag(97, 3), 997);
    EXPECT_EQ(hostIndexOfTag(0, 3), 0) << "the master volume belongs to no layer";
    EXPECT_EQ(hostIndexOfTag(tag::lfoSpeedText1 + 1, 2), 738) << "the text of a speed writes the speed";
    EXPECT_EQ(hostIndexOfTag(tag::fileMenu, 2), -1);
}

TEST(ControlTable, ArcsOfWhatHasAMiddleBeginThere) {
    const auto isBipolarNamed = [](const char* name) { return controlEntry(controlIndexForName(name)).bipolar; };
    for (const char* name : {"FIL1 PAN", "OSC2 DETUNE", "OSC3 OCTAVE", "EQ MID", "MATRIX SEND4"})
        EXPECT_TRUE(isBipolarNamed(name)) << name;
    for (const char* name : {"FIL1 CUTOFF", "MASTER VOLUME", "VOL ENV ATTACK", "OSC1 INTERVAL", "LFO1 SPEED"})
        EXPECT_FALSE(isBipolarNamed(name)) << name;
}

// ---- places

// Sections of pages of which one shows at a time.
int groupOf(int page) {
    if (page >= page::insert1) return 7;
    if (page >= page::matrix1) return 6;
    if (page >= page::lfo1) return 5;
    if (page >= page::envelope1) return 4;
    return page < page::sample1 ? 0 : 1 + (page - page::sample1) / page::perOscillator;
}

bool canShowTogether(const ControlEntry& a, const ControlEntry& b) {
    return a.page == b.page || groupOf(a.page) != groupOf(b.page) || groupOf(a.page) == 0;
}

int lettersOf(const char* caption) {
    int letters = 0;
    for (; *caption != 0; ++caption) letters += (*caption & 0xc0) != 0x80 ? 1 : 0;
    return letters;
}

// What a control takes up: its own place and, of a knob, the arc around it and the caption beneath, with 5 units a letter.
std::vector<LayoutRect> spaceOf(const ControlEntry& entry) {
    if (!isKnob(entry)) return {controlRect(entry)};
    const bool isLarge = entry.kind == WidgetKind::LargeKnob;
    const int arc = isLarge ? 22 : 14, caption = isLarge ? 28 : 18;
    const int width = 5 * lettersOf(entry.caption);
    const LayoutRect ring{entry.x - arc, entry.y - arc, 2 * arc, 2 * arc};
    if (captionStandsBeside(entry)) return {ring, {entry.x + arc, entry.y - 5, width, 10}};
    return {ring, {entry.x - width / 2, entry.y + caption, width, 10}};
}

bool overlap(const LayoutRect& a, const LayoutRect& b) {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

bool overlap(const std::vector<LayoutRect>& a, const std::vector<LayoutRect>& b) {
    for (const LayoutRect& one : a)
        for (const LayoutRect& other : b)
            if (overlap(one, other)) return true;
    return false;
}

bool isInside(const LayoutRect& inner, const LayoutRect& outer) {
    return inner.x >= outer.x && inner.y >= outer.y && inner.x + inner.width <= outer.x + outer.width &&
           inner.y + inner.height <= outer.y + outer.height;
}

TEST(Layout, NoControlsThatShowTogetherOverlap) {
    for (int i = 0; i < controlCount(); ++i) {
        for (int j = 0; j < i; ++j) {
            const ControlEntry &a = controlEntry(i), &b = controlEntry(j);
            EXPECT_FALSE(canShowTogether(a, b) && overlap(spaceOf(a), spaceOf(b))) << a.name << " and " << b.name;
        }
    }
}

TEST(Layout, EverythingIsInsideTheWindow) {
    for (int i = 0; i < controlCount(); ++i)
        for (const LayoutRect& rect : spaceOf(controlEntry(i)))
            EXPECT_TRUE(isInside(rect, {0, 0, layoutWidth, layoutHeight})) << controlEntry(i).name;
}

TEST(Layout, TheLowAndNarrowSizesCutNoControl) {
    for (int i = 0; i < controlCount(); ++i) {
        for (const LayoutRect& rect : spaceOf(controlEntry(i))) {
            EXPECT_TRUE(rect.y >= bandHeight || rect.y + rect.height <= bandHeight) << controlEntry(i).name;
            EXPECT_FALSE(rect.y < bandHeight && rect.x < coreWidth && rect.x + rect.width > coreWidth) << controlEntry(i).name;
        }
    }
}

TEST(Layout, ControlsBelowTheBandStandOnAPanel) {
    for (int i = 0; i < controlCount(); ++i) {
        const LayoutRect rect = controlRect(controlEntry(i));
        if (rect.y < bandHeight) continue;
        bool stands = false;
        for (const Panel& panel : windowPanels()) stands = stands || isInside(rect, panel.rect);
        EXPECT_TRUE(stands) << controlEntry(i).name;
    }
}

// The lists beneath a display are as wide as it is.
TEST(Layout, TheListsOfTheLfosEndWhereTheirDisplayEnds) {
    const LayoutRect display = controlRect(controlEntry(controlIndexForName("LFO WAVEFORM")));
    for (const char* name : {"LFO1 WAVE", "LFO2 MODE", "LFO3 MODE", "STEP SHAPE", "LFO STEP MODE"}) {
        const LayoutRect list = controlRect(controlEntry(controlIndexForName(name)));
        EXPECT_EQ(list.x, display.x) << name;
        EXPECT_EQ(list.x + list.width, display.x + display.width) << name;
    }
}

// So that they stay on whole pixels at one and a half times the size.
TEST(Layout, EdgesAreEven) {
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        if (isKnob(entry)) continue;
        for (const int edge : {entry.x, entry.y, entry.width, entry.height}) EXPECT_EQ(edge % 2, 0) << entry.name;
    }
    for (const Panel& panel : windowPanels())
        for (const int edge : {panel.rect.x, panel.rect.y, panel.rect.width, panel.rect.height}) EXPECT_EQ(edge % 2, 0);
}

TEST(Layout, PartsBesideTheTableKeepClearOfIt) {
    for (const WindowPartEntry& part : windowParts()) {
        EXPECT_EQ(&windowPart(part.part), &part) << part.name;
        EXPECT_TRUE(isInside(part.rect, {0, 0, layoutWidth, layoutHeight})) << part.name;
        for (int i = 0; i < controlCount(); ++i)
            EXPECT_FALSE(overlap({part.rect}, spaceOf(controlEntry(i)))) << part.name << " and " << controlEntry(i).name;
    }
}

TEST(Layout, PanelsLieSideBySide) {
    const auto panels = windowPanels();
    for (std::size_t i = 0; i < panels.size(); ++i)
        for (std::size_t j = 0; j < i; ++j) EXPECT_FALSE(overlap(panels[i].rect, panels[j].rect)) << i << " and " << j;
}

}  // namespace
}  // namespace vantoric
