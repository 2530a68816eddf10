#include "editor/model/knob_drag.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace vantoric {
namespace {

constexpr float pi = 3.14159265f;

TEST(KnobDrag, ItTakesTheWholeRangeToCrossIt) {
    KnobDrag knob({.minimum = -1.0f, .maximum = 3.0f});
    EXPECT_EQ(knob.press({.x = 30, .y = 200}, -1.0f), KnobDrag::Press::value);
    EXPECT_FLOAT_EQ(knob.move({.x = 30, .y = 75}), 1.0f);
    EXPECT_FLOAT_EQ(knob.move({.x = 30, .y = -50}), 3.0f);
    EXPECT_FLOAT_EQ(knob.move({.x = 30, .y = -500}), 3.0f);
    knob.release();
    EXPECT_FALSE(knob.isDragging());
}

TEST(KnobDrag, ShiftInTheDragSlowsItWithoutAJump) {
    KnobDrag knob({.zoomFactor = 10.0f});
    knob.press({.x = 0, .y = 0}, 0.2f);
    const float before = knob.move({.x = 50, .y = 0});
    EXPECT_FLOAT_EQ(knob.move({.x = 50, .y = 0, .isFine = true}), before);
    EXPECT_FLOAT_EQ(knob.move({.x = 100, .y = 0, .isFine = true}), before + 0.02f);
    EXPECT_FLOAT_EQ(knob.move({.x = 100, .y = 0}), before + 0.02f);
}

TEST(KnobDrag, ADoubleClickOfAnyButtonTakesTheDefaultAndTheRightButtonTheMenu) {
    KnobDrag knob({.defaultValue = 0.7f});
    EXPECT_EQ(knob.press({.button = MouseButton::left, .isDouble = true}, 0.1f), KnobDrag::Press::reset);
    EXPECT_FLOAT_EQ(knob.value(), 0.7f);
    EXPECT_EQ(knob.press({.button = MouseButton::right}, 0.1f), KnobDrag::Press::menu);
    EXPECT_FALSE(knob.isDragging());
    EXPECT_FLOAT_EQ(knob.move({.x = 100}), 0.1f);
}

TEST(KnobDrag, TheGripStartsADepthDragOnlyWhereThereIsADepth) {
    KnobDrag knob;
    EXPECT_EQ(knob.press({.x = 50, .y = 6}, 0.5f, 0.0f), KnobDrag::Press::value);
    EXPECT_EQ(knob.press({.x = 50, .y = 6}, 0.5f, 0.4f), KnobDrag::Press::depth);
    EXPECT_TRUE(knob.isDepthDragging());
    EXPECT_FLOAT_EQ(knob.depth({.x = 51, .y = 0}), 0.7f);
    EXPECT_FLOAT_EQ(knob.depth({.x = 51, .y = -90}), 0.85f);
    EXPECT_FLOAT_EQ(knob.depth({.x = 51, .y = 5000}), 0.0f);
    EXPECT_FALSE(knob.hoverCursor(50, 6, 1));
    knob.release();
    EXPECT_EQ(knob.hoverCursor(50, 6, 1), depthStripCursor);
    EXPECT_EQ(knob.hoverCursor(10, 6, 1), plainCursor);
    EXPECT_FALSE(knob.hoverCursor(50, 6, 0));
}

TEST(KnobDrag, TheGapOfTheAngleDragBelongsToTheNearerEnd) {
    KnobDrag knob;
    knob.press({.x = 29, .y = 60, .button = MouseButton::other}, 0.5f);
    EXPECT_FLOAT_EQ(knob.value(), 0.0f);
    knob.press({.x = 31, .y = 60, .button = MouseButton::other}, 0.5f);
    EXPECT_FLOAT_EQ(knob.value(), 1.0f);
    EXPECT_FLOAT_EQ(knob.move({.x = 29, .y = 60, .button = MouseButton::other}), 1.0f);
}

TEST(KnobDrag, TheHandleStandsWhereTheAngleDragPutsIt) {
    const KnobShape shape;
    for (const float value : {0.1f, 0.5f, 0.9f}) {
        const float angle = angleOfValue(shape, value);
        KnobDrag knob(shape);
        knob.press({.x = 30 + 20 * std::cos(angle), .y = 30 + 20 * std::sin(angle), .button = MouseButton::other}, 0.0f);
        EXPECT_NEAR(knob.value(), value, 1e-5f);
    }
    EXPECT_NEAR(angleOfValue(shape, 0.5f), 1.5f * pi, 1e-5f);
}

TEST(ModulationArc, IsCutWhereTheRangeEnds) {
    const ArcParts parts = arcParts(modulationArc(0.5f, 0.75f, true));
    ASSERT_EQ(parts.count, 3);
    EXPECT_FLOAT_EQ(parts.parts[0].low, -0.25f);
    EXPECT_FALSE(parts.parts[0].isInRange);
    EXPECT_FLOAT_EQ(parts.parts[1].low, 0.0f);
    EXPECT_FLOAT_EQ(parts.parts[1].high, 1.0f);
    EXPECT_TRUE(parts.parts[1].isInRange);
    EXPECT_FLOAT_EQ(parts.parts[2].high, 1.25f);
    EXPECT_EQ(arcParts(modulationArc(0.5f, 0.0f, false)).count, 0);
}

}  // namespace
}  // namespace vantoric
