// Every text of the window fits its place at the widths of the real fonts.
#include <gtest/gtest.h>

#include <string>

#include "editor/gui_module.h"
#include "editor/model/control_table.h"
#include "editor/overlay.h"
#include "effects/effect_texts.h"

namespace vantoric {
namespace {

using style::Face;

struct WindowTexts : ::testing::Test {
    WindowTexts() { GuiModule::shared().enter("."); }
    ~WindowTexts() override { GuiModule::shared().leave(); }
};

void expectFits(const std::string& text, Face face, double size, double room, const char* name) {
    EXPECT_LE(measured(text, face, size), room) << name << ": \"" << text << "\"";
}

TEST_F(WindowTexts, TheFontsOfTheDesignAreThere) {
    // Otherwise the others measure a substitute.
    EXPECT_NEAR(measured("Vantoric", Face::title, 10.5), 47, 4);
    constexpr char words[] = "Cutoff and resonance of the first filter";
    EXPECT_LT(measured(words, Face::medium, 100), measured(words, Face::semibold, 100));
}

TEST_F(WindowTexts, LabelsOfListsFit) {
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        const bool isSmall = entry.kind == WidgetKind::SmallList;
        if (parameterOfTag(entry.tag) < 0 || entry.labels.empty()) continue;
        if (!isSmall && entry.kind != WidgetKind::LargeList && entry.kind != WidgetKind::List) continue;
        for (const char* label : entry.labels)
            expectFits(label, isSmall ? Face::semibold : Face::medium, isSmall ? 9 : 10, entry.width - (isSmall ? 4 : 24),
                       entry.name);
    }
}

TEST_F(WindowTexts, TextsOfFieldsFit) {
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        if (entry.kind != WidgetKind::Value || entry.format == nullptr) continue;
        for (int step = 0; step <= 200; ++step)
            expectFits(entry.format(static_cast<float>(step) / 200), Face::medium, 9.5, entry.width - 12, entry.name);
    }
}

TEST_F(WindowTexts, TextsOfAllEffectsFit) {
    for (int type = 0; type < 128; ++type)
        for (int parameter = 1; parameter <= 4; ++parameter)
            for (int step = 0; step <= 50; ++step) {
                char text[effectTextSize] = {};
                effectParameterText(type, parameter, static_cast<float>(step) / 50, text);
                expectFits(text, Face::medium, 9.5, 130 - 15, std::to_string(type).c_str());
            }
}

TEST_F(WindowTexts, CaptionsFitBesideTheirNeighbours) {
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        const std::string caption = entry.caption;
        if (entry.kind == WidgetKind::Knob) expectFits(caption, Face::medium, 9, 50, entry.name);
        if (entry.kind == WidgetKind::LargeKnob) expectFits(caption, Face::medium, 9.5, 60, entry.name);
        if (entry.kind == WidgetKind::Switch && caption != "On")
            expectFits(caption, Face::semibold, 8.5, entry.width - 3, entry.name);
        if (entry.kind == WidgetKind::Selector) expectFits(caption, Face::semibold, 9.5, entry.width - 2, entry.name);
        if (entry.kind == WidgetKind::Menu) expectFits(caption, Face::medium, 10, entry.width - 4, entry.name);
    }
}

TEST_F(WindowTexts, NumbersFitTheHolesOfLargeKnobs) {
    for (const char* text : {"100", "22k", "9.9k", "783", "-50"}) expectFits(text, Face::semibold, 8.2, 20, "large knob");
}

}  // namespace
}  // namespace vantoric
