// Whether what is written can be read: every colour of text against the grounds that it is drawn on.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "editor/control_face.h"
#include "editor/style.h"

namespace vantoric {
namespace {

// As the Web Content Accessibility Guidelines 2.1 define both.
double luminance(const Color& color) {
    const auto linear = [](std::uint8_t part) {
        const double share = part / 255.0;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(const Color& a, const Color& b) {
    const double one = luminance(a), other = luminance(b);
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

constexpr double small = 4.5;  // the guidelines' least for text of the window's sizes
constexpr double large = 3.0;  // for large text, and kept here for what is out of use too

struct Ground {
    const char* name;
    Color color;
};
struct Text {
    const char* name;
    Color color;
};

void expectRead(const std::vector<Text>& texts, const std::vector<Ground>& grounds, double least) {
    for (const Text& text : texts)
        for (const Ground& ground : grounds)
            EXPECT_GE(contrast(text.color, ground.color), least) << text.name << " on " << ground.name;
}

const std::vector<Ground> panels{
    {"the window", style::window}, {"the band", style::band}, {"panels", style::panel}, {"panels of the band", style::bandPanel}};

// The grounds of values, from the panels that they stand on.
std::vector<Ground> fields() {
    std::vector<Ground> all;
    for (const Ground& panel : panels) {
        all.push_back({"a field", mix(panel.color, style::black, 0.36)});
        all.push_back({"a field under the pointer", mix(panel.color, style::black, 0.26)});
    }
    return all;
}

TEST(Contrast, IsThatOfTheGuidelines) {
    EXPECT_NEAR(contrast(style::black, style::white), 21, 1e-9);
    EXPECT_NEAR(contrast(hexColor(0x777777), style::white), 4.48, 0.01);
}

TEST(Contrast, CaptionsAndTitlesAreReadOnEveryPanel) {
    expectRead({{"text", style::text}, {"second text", style::text2}, {"third text", style::text3}}, panels, small);
    expectRead({{"oscillators", style::oscillators},
                {"filters", style::filters},
                {"envelopes", style::envelopes},
                {"LFOs", style::lfo},
                {"arpeggiator", style::arpeggiator},
                {"output", style::output},
                {"all layers", style::multilayer}},
               panels, small);
}

TEST(Contrast, ListsFieldsAndMenusAreRead) {
    const std::vector<Ground> lists{{"a list", style::raised}, {"a list under the pointer", style::hover}};
    expectRead({{"a row", style::text}, {"second text", style::text2}}, lists, small);
    expectRead({{"a row of an oscillator that is off", style::text3}}, lists, large);
    expectRead({{"a value", style::text}, {"its name", style::text2}}, fields(), small);
    expectRead({{"what is off", style::text3}}, fields(), large);
    expectRead({{"a row", style::text}, {"second text", style::text2}}, {{"a menu", style::menu}}, small);
    expectRead({{"text of a display", style::text2}, {"a count", style::text3}, {"the name", style::text}},
               {{"an inset", style::inset}}, small);
    expectRead({{"a strip's name", style::white}, {"a strip's text", style::text2}}, {{"the strip", style::hintFill}}, small);
}

TEST(Contrast, SwitchesTabsAndLayersAreRead) {
    for (const Section section :
         {Section::Oscillators, Section::Filters, Section::Envelopes, Section::Lfo, Section::Arpeggiator, Section::Output}) {
        const Color full = functionColor(section);
        expectRead({{"the sign of a switch", style::sign}}, {{"a switch that is on", mix(full, style::panel, 0.08)}}, small);
        expectRead({{"a tab", style::text}}, {{"the tab on show", mix(style::panel, full, 0.17)}}, small);
        expectRead({{"a step", style::text}},
                   {{"its level", mix(mix(style::panel, style::black, 0.30), full, 0.28)}, {"a cell", style::hover}}, small);
    }
    for (const Section section : {Section::Oscillators, Section::Filters, Section::Envelopes, Section::Lfo})
        expectRead(
            {{"the sign of a switch", style::text}},
            {{"one that is on in a silent layer", mix(mix(functionColor(section), style::panel, 0.6), style::panel, 0.08)}},
            large);
    for (const Ground& panel : panels) {
        expectRead({{"the sign of a switch", style::text2}}, {{"a switch that is off", mix(panel.color, style::black, 0.3)}},
                   small);
        expectRead({{"a tab", style::text}}, {{"one under the pointer", mix(panel.color, style::white, 0.06)}}, small);
    }
    for (const double lit : {0.04, 0.09, 0.15})
        expectRead({{"a layer", style::text}, {"another layer", style::text2}},
                   {{"its button", mix(style::band, style::white, lit)}}, small);
}

TEST(Contrast, TheLibraryIsRead) {
    for (const double lit : {0.2, 0.25})
        expectRead({{"a name", style::text}, {"the word beside it", style::oscillators}, {"the category", style::text2}},
                   {{"the row that plays", mix(style::panel, style::oscillators, lit)}}, small);
    expectRead({{"a name", style::text}, {"the category", style::text3}},
               {{"a row under the pointer", mix(style::panel, style::white, 0.07)}}, small);
    expectRead({{"the hint", style::text}}, {{"a layer that waits", mix(style::panel, style::multilayer, 0.18)}}, small);
    for (const Color& row : {style::panel, mix(style::panel, style::oscillators, 0.25)})
        expectRead({{"what was found", style::white}}, {{"its mark", mix(row, style::oscillators, 0.32)}}, small);
}

}  // namespace
}  // namespace vantoric
