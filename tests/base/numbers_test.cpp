#include "base/numbers.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/parameters.h"
#include "base/random.h"

namespace vantoric {
namespace {

TEST(FastExp, PassesThroughItsSamplePoints) {
    EXPECT_EQ(fastExp(0.0), 1.0);
    EXPECT_NEAR(fastExp(-1.0), 0.37439, 5e-6);
    EXPECT_NEAR(fastExp(-2.5), 0.083631, 5e-7);
    EXPECT_NEAR(fastExp(-5.0), 0.0068570, 5e-8);
    EXPECT_NEAR(fastExp(-10.0), 0.00004674, 5e-9);
}

TEST(FastExp, StaysFiniteForAnyArgument) {
    for (double x : {1e9, -1e9, static_cast<double>(INFINITY), -static_cast<double>(INFINITY), std::nan("")})
        EXPECT_TRUE(std::isfinite(fastExp(x)));
}

TEST(FastPower2, MeetsThePowersOfTwo) {
    for (int n = -20; n <= 20; ++n) EXPECT_EQ(fastPower2(n), std::ldexp(1.0, n));
}

TEST(ListIndex, ReadsBackEveryIndexItWrote) {
    for (int k = 0; k < 128; ++k) EXPECT_EQ(listIndex(listValue(k)), k);
    EXPECT_EQ(listIndex(1.0f), 127);
    EXPECT_EQ(listIndex(-1.0f), 0);
    EXPECT_EQ(listIndex(NAN), 0);
}

TEST(ShapeCurve, IsTheIdentityWithoutShape) {
    for (float x = 0; x <= 1; x += 0.0625f) EXPECT_FLOAT_EQ(shapeCurve(x, 0.0f), x);
    EXPECT_EQ(shapeCurve(0.0f, 0.8f), 0.0f);
    EXPECT_NEAR(shapeCurve(1.0f, 0.8f), 1.0f, 1e-6f);
}

TEST(Parameters, AHostIndexFindsItsNumber) {
    EXPECT_EQ(parameter::Cutoff1 + 1 + 600, 698);
    EXPECT_EQ(numberOfParameter(698), parameter::Cutoff1 + 1);
    EXPECT_EQ(hostIndex(parameter::Cutoff1, 3), 997);
    EXPECT_EQ(numberOfParameter(parameter::Quality), parameter::Quality);
}

}  // namespace
}  // namespace vantoric
