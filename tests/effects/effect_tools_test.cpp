#include "effects/effect_tools.h"

#include <array>
#include <cmath>
#include <limits>
#include <numeric>

#include "effects/ring.h"

namespace vantoric {
namespace {

TEST(EffectTools, PhasesWrapAtOne) {
    float phase = 0.75f;
    EXPECT_EQ(stepPhase(phase, 0.5f), 0.25f);
    EXPECT_EQ(phase, 0.25f);
}

TEST(EffectTools, TheTriangleRisesAndFalls) {
    EXPECT_EQ(triangle(0.0f), 0.0f);
    EXPECT_EQ(triangle(0.25f), 0.5f);
    EXPECT_EQ(triangle(0.5f), 1.0f);
    EXPECT_EQ(triangle(0.75f), 0.5f);
}

TEST(EffectTools, TheBumpIsCloseToASine) {
    for (double phase = 0.0; phase < 1.0; phase += 0.01)
        EXPECT_NEAR(bump(phase), 0.5 + 0.5 * std::sin(2.0 * M_PI * phase), 0.03) << phase;
    EXPECT_EQ(bump(0.25), 1.0);
    EXPECT_EQ(bump(0.75), 0.0);
}

TEST(EffectTools, TheFourPointCurveMeetsItsMiddlePointsAndStraightLines) {
    EXPECT_EQ(fourPointCurve(0.0, 7.0, 2.0, -3.0, 5.0), 2.0);
    EXPECT_NEAR(fourPointCurve(1.0, 7.0, 2.0, -3.0, 5.0), -3.0, 1e-12);
    for (double t = 0.0; t <= 1.0; t += 0.125) EXPECT_NEAR(fourPointCurve(t, 0.0, 1.0, 2.0, 3.0), 1.0 + t, 1e-12);
    EXPECT_NEAR(fourPointCurve(0.5f, 0.0f, 1.0f, 1.0f, 0.0f), 1.125f, 1e-6f);
}

TEST(EffectTools, TheSixPointCurveRunsFromTheFourthPointToTheThird) {
    EXPECT_EQ(sixPointCurve(0.0, 9, 8, 7, 1, 5, 4), 1.0);
    EXPECT_NEAR(sixPointCurve(1.0, 9, 8, 7, 1, 5, 4), 7.0, 1e-6);
    for (double f = 0.0; f <= 1.0; f += 0.125) EXPECT_NEAR(sixPointCurve(f, 0, 1, 2, 3, 4, 5), 3.0 - f, 1e-6);
}

TEST(EffectTools, TapsReadBetweenSamplesOnBothSidesOfTheRingsEnd) {
    Ring<float, 10> ring;
    for (const int position : {3, 500}) {
        for (int age = 0; age < 64; ++age) ring[position - age] = static_cast<float>(age);
        for (const float delay : {4.0f, 7.25f, 30.875f}) {
            EXPECT_NEAR(linearTap(ring, position, delay), delay, 1e-4f);
            // The four-point tap lies one sample further back.
            EXPECT_NEAR(cubicTap(ring, position, delay), delay + 1.0f, 1e-4f);
        }
        EXPECT_NEAR(indexRead(ring, position - 10, 0.25f), 10.25f, 1e-4f);
    }
}

TEST(EffectTools, TapsMoveWithoutAStepAcrossWholeSamples) {
    Ring<float, 12> ring;
    for (int i = 0; i < 4096; ++i) ring[i] = static_cast<float>(std::sin(0.3 * i));
    // Single precision is coarser beyond a power of two: a step there must not be rounded into.
    for (const float delay : {1.0f, 2.0f, 20.0f, 128.0f, 1022.0f, 1023.0f, 1024.0f, 2048.0f}) {
        const float before = std::nextafter(delay, 0.0f);
        EXPECT_NEAR(linearTap(ring, 300, before), linearTap(ring, 300, delay), 1e-4f) << delay;
        EXPECT_NEAR(cubicTap(ring, 300, before), cubicTap(ring, 300, delay), 1e-4f) << delay;
    }
    EXPECT_NEAR(indexRead(ring, 300, 1.0f), indexRead(ring, 299, 0.0f), 1e-5f);
    Ring<double, 10> tank;
    for (int i = 0; i < 1024; ++i) tank[i] = std::sin(0.3 * i);
    EXPECT_NEAR(sixPointRead(tank, 300, 1.0), sixPointRead(tank, 299, 0.0), 1e-6);
    EXPECT_NEAR(sixPointRead(tank, 300, 0.5), std::sin(0.3 * 298.5), 1e-3);
}

TEST(EffectTools, DampingGrowsWithTheFrequencyUpToOne) {
    EXPECT_NEAR(trueDamping(1000.0, 88200.0), 1.0 - std::exp(-6.28 * 1000.0 / 88200.0), 1e-15);
    EXPECT_NEAR(quickDamping(1000.0f, 88200.0f), trueDamping(1000.0, 88200.0), 0.008);
    EXPECT_LE(quickDamping(1e9f, 88200.0f), 1.0f);
    EXPECT_LT(quickDamping(200.0f, 88200.0f), quickDamping(400.0f, 88200.0f));
}

TEST(EffectTools, OnePoleAndCutShareTheSignal) {
    OnePole<double> low, cut;
    for (int i = 0; i < 20; ++i) {
        const double x = std::sin(0.7 * i);
        EXPECT_NEAR(low.low(x, 0.25) + cut.cut(x, 0.25), x, 1e-15);
    }
}

TEST(EffectTools, TheAllpassKeepsTheEnergy) {
    AllpassStage<double> stage;
    double energy = 0.0;
    for (int i = 0; i < 400; ++i) {
        const double y = stage.step(i == 0 ? 1.0 : 0.0, 0.6);
        energy += y * y;
    }
    EXPECT_NEAR(energy, 1.0, 1e-12);
}

TEST(EffectTools, TheSoftCurveIsContinuousAndEndsAtOne) {
    EXPECT_EQ(softCurve(0.25f), 0.25f);
    EXPECT_EQ(softCurve(1.5f), 1.0f);
    EXPECT_EQ(softCurve(9.0f), 1.0f);
    EXPECT_EQ(softCurve(-9.0f), -1.0f);
    for (float v = -2.0f; v < 2.0f; v += 0.001f) EXPECT_NEAR(softCurve(v), softCurve(v + 0.001f), 0.0011f) << v;
}

TEST(EffectTools, TheSineShapeRepeatsEachWholeStep) {
    for (const float v : {-3.0f, -2.0f, 0.0f, 1.0f}) {
        EXPECT_EQ(sineShape(v), 0.0f);
        EXPECT_EQ(sineShape(v + 0.25f), 1.0f);
        EXPECT_EQ(sineShape(v + 0.75f), -1.0f);
    }
}

TEST(EffectTools, TheShaperFiltersPassASteadyLevel) {
    for (const auto& filter : {shaperFilter(1.570795, 0.6366203), shaperFilter(0.7853975, 1.2732406)}) {
        EXPECT_NEAR(std::accumulate(filter.begin(), filter.end(), 0.0), 1.0, 1e-6);
        EXPECT_EQ(filter[0], 0.0f);
        EXPECT_EQ(*std::max_element(filter.begin(), filter.end()), filter[8]);
    }
}

TEST(EffectTools, FindsASampleThatIsNoNumber) {
    std::array<float, 5> left{1, 2, 3, 4, 5}, right{};
    EXPECT_TRUE(allFinite(left.data(), right.data(), 5));
    right[4] = -std::numeric_limits<float>::infinity();
    EXPECT_FALSE(allFinite(left.data(), right.data(), 5));
    EXPECT_TRUE(allFinite(left.data(), right.data(), 4));
    left[0] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(allFinite(left.data(), right.data(), 1));
    left[0] = -1e37f;
    EXPECT_TRUE(allFinite(left.data(), right.data(), 1));
    left[0] = -3e38f;  // two of these are no number any more
    EXPECT_FALSE(allFinite(left.data(), right.data(), 1));
}

}  // namespace
}  // namespace vantoric
