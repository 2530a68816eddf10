// Every one of the controls is moved by the mouse, in the way of its kind, and its parameter read back from the plug-in.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "base/parameters.h"
#include "editor/model/pages.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::ControlEntry;
using vantoric::WidgetKind;
namespace page = vantoric::page;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

constexpr float listStep = 1.0f / 128;

class EveryControl : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        rig.reset();
        rig.show(entry);
    }

    // What a hand did to the control is told to the host: one gesture, whose last value is the parameter's, and no other
    // parameter moved.
    void expectToldToHost(const std::vector<float>& before, WindowRig::Gestures gesturesBefore) {
        const int index = rig.hostIndex(entry);
        EXPECT_EQ(rig.changedSince(before), std::vector{index});
        EXPECT_EQ(rig.gestures(), (WindowRig::Gestures{gesturesBefore.begun + 1, gesturesBefore.ended + 1}));
        const std::vector<Automation> told = rig.plugin().automations();
        ASSERT_FALSE(told.empty());
        EXPECT_EQ(told.back().index, index);
        EXPECT_EQ(told.back().value, rig.value(entry));
    }

    // A drag of 50 pixels up, or down where there is no room above.
    void dragsByPixels(double pixelsOfRange) {
        const float start = rig.value(entry);
        const bool isUp = start < 0.7f;
        const auto before = rig.parameters();
        const auto gestures = rig.gestures();
        rig.plugin().forgetAutomations();
        rig.drag(entry, 0, isUp ? 50 : -50);
        EXPECT_NEAR(rig.value(entry) - start, (isUp ? 50 : -50) / pixelsOfRange, 0.004);
        expectToldToHost(before, gestures);
    }

    void togglesByClick() {
        const float start = rig.value(entry);
        const auto before = rig.parameters();
        const auto gestures = rig.gestures();
        rig.plugin().forgetAutomations();
        rig.click(entry);
        EXPECT_EQ(rig.value(entry), start > 0.5f ? 0.0f : 1.0f);
        expectToldToHost(before, gestures);
    }

    void takesRowOfList() {
        const auto labels = labelsOf(entry);
        const int count = static_cast<int>(labels.size()), start = rig.row(entry);
        int row = (start + 3) % count;
        while (labels[static_cast<std::size_t>(row)] == "-" || row == start) row = (row + 1) % count;
        const auto before = rig.parameters();
        const auto gestures = rig.gestures();
        rig.plugin().forgetAutomations();
        ASSERT_TRUE(rig.chooseFrom(entry, row));
        EXPECT_NEAR(rig.value(entry), static_cast<float>(row) * listStep, 0.25f * listStep)
            << labels[static_cast<std::size_t>(row)];
        const std::vector<Automation> told = rig.plugin().automations();
        ASSERT_FALSE(told.empty());
        EXPECT_EQ(told.front().index, rig.hostIndex(entry));
        EXPECT_EQ(rig.gestures().begun - gestures.begun, rig.gestures().ended - gestures.ended);
        const auto changed = rig.changedSince(before);
        EXPECT_TRUE(std::find(changed.begin(), changed.end(), rig.hostIndex(entry)) != changed.end());
    }

    // A bar goes to where the pointer is.
    void followsPointer() {
        const Box box = rig.box(entry);
        const auto before = rig.parameters();
        const auto gestures = rig.gestures();
        rig.plugin().forgetAutomations();
        const double x = (box.left + box.right) / 2.0;
        rig.host().drag(x, box.top + 0.6 * box.height(), x, box.top + 0.3 * box.height());
        EXPECT_NEAR(rig.value(entry), 0.7, 0.02);
        expectToldToHost(before, gestures);
    }

    const ControlEntry& entry = vantoric::controlEntry(GetParam());
    WindowRig& rig = sharedRig();
};

struct Effect {
    int type, firstField;  // parameters
};
constexpr Effect effects[] = {{parameter::FxMaType, parameter::FxMaPar1}, {121, 123}, {269, 271}};

const Effect& effectOf(int field) {
    return *std::find_if(std::begin(effects), std::end(effects),
                         [field](const Effect& effect) { return field >= effect.firstField && field < effect.firstField + 4; });
}

// Chooses the first type of effect whose four fields all have a text.
int fullEffect(WindowRig& rig, const Effect& effect) {
    for (int type = 1; type < static_cast<int>(controlWithTag(effect.type).labels.size()); ++type) {
        rig.plugin().setParameter(effect.type, static_cast<float>(type) * listStep);
        int filled = 0;
        for (int i = 0; i < 4; ++i) filled += rig.plugin().text(wire::opParameterDisplay, effect.firstField + i).empty() ? 0 : 1;
        if (filled == 4) return type;
    }
    return 0;
}

TEST_P(EveryControl, MovesByTheMouse) {
    switch (entry.kind) {
        case WidgetKind::Knob:
        case WidgetKind::LargeKnob:
        case WidgetKind::Value: return dragsByPixels(250);
        case WidgetKind::EffectValue: {
            const Effect& effect = effectOf(entry.tag);
            ASSERT_GT(fullEffect(rig, effect), 0);
            rig.host().idle(150);
            return dragsByPixels(250);
        }
        case WidgetKind::Switch: return togglesByClick();
        case WidgetKind::Step: return followsPointer();
        case WidgetKind::LargeList:
        case WidgetKind::List:
        case WidgetKind::SmallList:
            if (vantoric::parameterOfTag(entry.tag) >= 0) return takesRowOfList();
            break;
        default: break;
    }
    GTEST_SKIP() << "no parameter of its own: see the tests of its kind";
}

std::string nameOfRow(const testing::TestParamInfo<int>& info) {
    std::string name = std::to_string(info.param) + "_";
    for (const char* c = vantoric::controlEntry(info.param).name; *c != 0; ++c)
        name += std::isalnum(static_cast<unsigned char>(*c)) != 0 ? *c : '_';
    return name;
}

std::vector<int> rowsWithParameter() {
    std::vector<int> rows;
    for (int i = 0; i < vantoric::controlCount(); ++i)
        if (vantoric::parameterOfTag(vantoric::controlEntry(i).tag) >= 0) rows.push_back(i);
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Window, EveryControl, testing::ValuesIn(rowsWithParameter()), nameOfRow);

}  // namespace
