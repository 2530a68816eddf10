#include "engine/pitch_wheel.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/numbers.h"

namespace vantoric {
namespace {

TEST(PitchWheel, CentreIsExact) {
    EXPECT_EQ(pitchWheelPosition(0, 64), 0.5f);
    for (int row = 0; row < 128; ++row) EXPECT_EQ(pitchBendFactorOf(0.5f, listValue(row)), 1.0f);
}

TEST(PitchWheel, EndsReachThroughTheDeadZones) {
    EXPECT_EQ(pitchWheelPosition(127, 127), 1.0f);
    EXPECT_EQ(pitchWheelPosition(0, 0), 0.0f);
    EXPECT_EQ(pitchWheelPosition(93, 126), 1.0f);
    EXPECT_LT(pitchWheelPosition(92, 126), 1.0f);
    EXPECT_EQ(pitchWheelPosition(35, 1), 0.0f);
    EXPECT_GT(pitchWheelPosition(36, 1), 0.0f);
}

TEST(PitchWheel, FlatAroundTheCentre) {
    EXPECT_EQ(pitchWheelPosition(93, 62), 0.5f);
    EXPECT_EQ(pitchWheelPosition(35, 65), 0.5f);
    EXPECT_NE(pitchWheelPosition(92, 62), 0.5f);
    EXPECT_NE(pitchWheelPosition(36, 65), 0.5f);
}

TEST(PitchWheel, ExtremesBendByTheRange) {
    const float semitones[] = {0, 1, 2, 3, 4, 7, 12, 24};
    for (int row = 0; row < 8; ++row) {
        EXPECT_NEAR(pitchBendFactorOf(1.0f, listValue(row)), std::exp2(semitones[row] / 12), 2e-6) << row;
        EXPECT_NEAR(pitchBendFactorOf(0.0f, listValue(row)), std::exp2(-semitones[row] / 12), 2e-6) << row;
    }
}

TEST(PitchWheel, BeyondTheListItDoesNothing) {
    EXPECT_EQ(pitchBendFactorOf(1.0f, listValue(8)), 1.0f);
    EXPECT_EQ(pitchBendFactorOf(0.0f, 1.0f), 1.0f);
}

}  // namespace
}  // namespace vantoric
