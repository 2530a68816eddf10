#include "editor/model/control_texts.h"

#include <gtest/gtest.h>

#include "base/parameters.h"
#include "editor/model/control_table.h"

namespace vantoric {
namespace {

using Rows = std::vector<std::string>;

TEST(KnobStrip, ControllerZeroIsAController) {
    const Rows lines = hintLines({.name = "FIL1 RESO", .valueText = "50", .ccNumber = 0});
    EXPECT_EQ(lines, (Rows{"FIL1 RESO: 50  ", "Modulators:  CC0..."}));
    EXPECT_EQ(hintOutlineOf(0), mappedOutline);
}

TEST(KnobStrip, AKnobThatLearnsSaysNothingElse) {
    const Rows lines = hintLines({.name = "VOLUME", .valueText = "1", .ccNumber = MidiLearn::learning, .modCount = 3});
    EXPECT_EQ(lines, (Rows{"Midi learn: Assign CC ", "Move your controler!"}));
    EXPECT_EQ(hintOutlineOf(MidiLearn::learning), mappedOutline);
}

TEST(FieldTexts, HaveANameAndAValue) {
    const auto expect = [](const char* text, const char* name, const char* value) {
        EXPECT_EQ(parted(text), (NameAndValue{name, value})) << text;
    };
    expect("Size 28.0m", "Size", "28.0m");
    expect("Stereo width 50%", "Stereo width", "50%");
    expect("Semi +3", "Semi", "+3");
    expect("High gain -6 dB", "High gain", "-6 dB");
    expect("Key -12", "Key", "-12");
    expect("1 BPM", "", "1 BPM");
    expect("Free", "", "Free");
    expect("Pingpong echo1", "", "Pingpong echo1");
    expect("", "", "");
}

// Its name stays where it is while it is dragged from end to end.
TEST(FieldTexts, TheFadeIsPartedAtEveryValue) {
    const ControlEntry& fade = controlEntry(controlIndexForName("LFO1 FADE"));
    for (int step = 0; step <= 1000; ++step) {
        const std::string text = fade.format(static_cast<float>(step) / 1000);
        const NameAndValue parts = parted(text);
        EXPECT_EQ(parts.name, "Fade") << text;
        EXPECT_EQ(parts.value, text.substr(text.find_first_not_of(' ', 4))) << text;
    }
}

TEST(KnobMenu, ControllerZeroCanBeRemoved) {
    EXPECT_EQ(knobMenuRows(parameter::Cutoff1, 0)[3], "Midi learn-> remove CC0");
    EXPECT_EQ(knobMenuRows(parameter::Cutoff1, MidiLearn::learning)[3], "Midi learn -> assign CC");
}

TEST(KnobMenu, RowsStandWhereTheCommandsExpectThem) {
    const Rows rows = knobMenuRows(parameter::Cutoff1, MidiLearn::noController);
    ASSERT_EQ(rows.size(), 11u);
    EXPECT_EQ(rows[10], "Remove modulation");
    for (int i = 0; i < knobSubmenuCount; ++i)
        EXPECT_EQ(rows[static_cast<std::size_t>(firstSubmenuRow + i)], knobSubmenus()[static_cast<std::size_t>(i)].label);
}

TEST(KnobMenu, WhatCannotBeModulatedOffersNoSources) {
    EXPECT_EQ(knobMenuRows(parameter::KeyFol1, 3).size(), 4u);
    EXPECT_EQ(knobMenuRows(parameter::Modwheel, 3), Rows{"Reset to default value"});
}

// The tag of a submenu's row leads to the source that the row names.
TEST(KnobMenu, SubmenuRowsLeadToTheirSources) {
    const auto sourceOf = [](int submenu, int row) {
        return std::string(matrixSourceLabels[static_cast<std::size_t>(
            submenuSource(knobSubmenus()[static_cast<std::size_t>(submenu)].base + row).source)]);
    };
    EXPECT_EQ(sourceOf(0, 7), "Step Lfo+-");
    EXPECT_EQ(sourceOf(2, 4), "Decay8ms");
    for (const int submenu : {3, 4}) {
        const LabelList rows = knobSubmenus()[static_cast<std::size_t>(submenu)].rows;
        for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(sourceOf(submenu, static_cast<int>(i)), rows[i]);
    }
    const LabelList sines = knobSubmenus()[1].rows;
    for (std::size_t i = 0; i < sines.size(); ++i) EXPECT_EQ(sourceOf(1, static_cast<int>(i)), std::string("Sine ") + sines[i]);
}

}  // namespace
}  // namespace vantoric
