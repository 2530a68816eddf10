#include "base/shapes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/numbers.h"

namespace vantoric {
namespace {

using Quad = Lanes<float, 4>;
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

// Calls check(x, function of x in lanes, function of x alone).
template <class Function, class Check>
void eachWay(float from, float to, float step, Function function, Check check) {
    for (float x = from; x < to; x += step) {
        const float alone = function(x);
        const Quad lanes = function(Quad(x));
        ASSERT_EQ(lanes[3], alone) << x;
        check(x, alone);
    }
}

TEST(Shapes, ExponentialIsTrueToAMillionth) {
    eachWay(
        -87.0f, 88.0f, 0.0137f, [](auto x) { return exponential(x); },
        [](float x, float y) { ASSERT_NEAR(y / std::exp(static_cast<double>(x)), 1.0, 5e-7) << x; });
}

TEST(Shapes, ExponentialStaysFinite) {
    EXPECT_TRUE(std::isfinite(exponential(infinity)));
    EXPECT_GT(exponential(infinity), 1e38f);
    EXPECT_GE(exponential(-infinity), 0.0f);
    EXPECT_LT(exponential(-infinity), 1e-37f);
    EXPECT_EQ(exponential(nan), exponential(-infinity));
    EXPECT_EQ(exponential(0.0f), 1.0f);
}

TEST(Shapes, QuickExponentialIsTheInstrumentsOwn) {
    eachWay(
        -80.0f, 80.0f, 0.0211f, [](auto x) { return quickExponential(x); },
        [](float x, float y) { ASSERT_NEAR(y / fastExp(x), 1.0, 2e-5) << x; });
    EXPECT_TRUE(std::isfinite(quickExponential(infinity)));
    EXPECT_EQ(quickExponential(nan), quickExponential(-infinity));
}

TEST(Shapes, LogarithmIsExactNearZeroToo) {
    eachWay(
        0.0f, 50.0f, 0.00313f, [](auto x) { return logarithmOfOneMore(x); },
        [](float x, float y) { ASSERT_NEAR(y, std::log1p(static_cast<double>(x)), 3e-7 * (1.0 + y)) << x; });
    for (const float x : {1e-12f, 1e-7f, 1e-4f, 0.01f, 1e6f, 1e30f})
        EXPECT_NEAR(logarithmOfOneMore(x) / std::log1p(static_cast<double>(x)), 1.0, 3e-7) << x;
}

TEST(Shapes, FractionsCountFromTheFloorAndFromTheNearest) {
    eachWay(
        -9.0f, 9.0f, 0.125f, [](auto x) { return fractionAbove(x); }, [](float x, float y) { ASSERT_EQ(y, x - std::floor(x)); });
    eachWay(
        -9.0f, 9.0f, 0.125f, [](auto x) { return distanceToWhole(x); },
        [](float x, float y) { ASSERT_EQ(y, x - std::nearbyint(x)); });
    for (const float far : {5e6f, -5e6f, 1e30f, infinity, -infinity, nan}) {
        EXPECT_EQ(fractionAbove(far), 0.0f);
        EXPECT_EQ(distanceToWhole(far), 0.0f);
    }
}

TEST(Shapes, SineIsHarmlessWhereverItsArgumentGoes) {
    for (const float far : {1e8f, -1e20f, infinity, -infinity, nan}) EXPECT_LE(std::fabs(polynomialSine(far)), 1.0f);
    EXPECT_EQ(polynomialSine(0.0f), 0.0f);
    for (const float far : {1e17f, -1e20f, infinity, -infinity, nan}) EXPECT_EQ(farReachingSine(far), 0.0f);
}

TEST(Shapes, FarReachingSineIsASineWhereASingleNumberHasNoFractionLeft) {
    for (float x = 3e7f; x < 1e12f; x *= 1.0173f) {
        ASSERT_NEAR(farReachingSine(x), std::sin(static_cast<double>(x)), 3e-4) << x;
        ASSERT_EQ(farReachingSine(-x), -farReachingSine(x));
        // Beside lanes that stay near, and the near ones beside it.
        const Lanes<float, 4> mixed([x](auto lane) { return lane % 2 == 0 ? x : 0.3f * lane; });
        const auto y = farReachingSine(mixed);
        for (int lane = 0; lane < 4; ++lane) ASSERT_EQ(y[lane], farReachingSine(static_cast<float>(mixed[lane]))) << x;
    }
    for (float x = -2e4f; x < 2e4f; x += 7.3f) ASSERT_EQ(farReachingSine(x), polynomialSine(x));
}

}  // namespace
}  // namespace vantoric
