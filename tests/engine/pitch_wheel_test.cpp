#include <gtest/gtest.h>

#include <cmath>

#include "base/numbers.h"
#include "tests/patch/patch_bench.h"

namespace vantoric {
namespace {

struct PitchWheel : ::testing::Test, PatchBench {
    float position(int lsb, int msb) {
        play(0xe0, static_cast<std::uint8_t>(lsb), static_cast<std::uint8_t>(msb));
        return intake.pitchWheel();
    }
    float bend(int lsb, int msb, int row) {
        parameters.writeRaw(parameter::PitchWhl, listValue(row));
        position(lsb, msb);
        return state.pitchBendFactor;
    }
};

TEST_F(PitchWheel, CentreIsExact) {
    EXPECT_EQ(position(0, 64), 0.5f);
    for (int row = 0; row < 128; ++row) EXPECT_EQ(bend(0, 64, row), 1.0f);
}

TEST_F(PitchWheel, EndsReachThroughTheDeadZones) {
    EXPECT_EQ(position(127, 127), 1.0f);
    EXPECT_EQ(position(0, 0), 0.0f);
    EXPECT_EQ(position(93, 126), 1.0f);
    EXPECT_LT(position(92, 126), 1.0f);
    EXPECT_EQ(position(35, 1), 0.0f);
    EXPECT_GT(position(36, 1), 0.0f);
}

TEST_F(PitchWheel, FlatAroundTheCentre) {
    EXPECT_EQ(position(93, 62), 0.5f);
    EXPECT_EQ(position(35, 65), 0.5f);
    EXPECT_NE(position(92, 62), 0.5f);
    EXPECT_NE(position(36, 65), 0.5f);
}

TEST_F(PitchWheel, ExtremesBendByTheRange) {
    const float semitones[] = {0, 1, 2, 3, 4, 7, 12, 24};
    for (int row = 0; row < 8; ++row) {
        EXPECT_NEAR(bend(127, 127, row), std::exp2(semitones[row] / 12), 2e-6) << row;
        EXPECT_NEAR(bend(0, 0, row), std::exp2(-semitones[row] / 12), 2e-6) << row;
    }
}

TEST_F(PitchWheel, BeyondTheListItDoesNothing) {
    EXPECT_EQ(bend(127, 127, 8), 1.0f);
    EXPECT_EQ(bend(0, 0, 127), 1.0f);
}

}  // namespace
}  // namespace vantoric
