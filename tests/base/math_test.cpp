#include "base/math.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/random.h"

namespace vantoric {
namespace {

double spread(LinearCongruence& random, double low, double high) {
    return low + (high - low) * random.next() * (1.0 / 4294967296.0);
}

TEST(Math, StaysWithinAUnitInTheLastPlaceOfTheTrueFunctions) {
    LinearCongruence random{1};
    for (int i = 0; i < 200000; ++i) {
        const double x = spread(random, -40, 40), angle = spread(random, -1e6, 1e6),
                     positive = std::exp(spread(random, -300, 300));
        EXPECT_NEAR(math::exp(x) / std::exp(x), 1.0, 5e-16);
        EXPECT_NEAR(math::log(positive), std::log(positive), 5e-16 * std::fabs(std::log(positive)) + 1e-16);
        EXPECT_NEAR(math::sin(angle), std::sin(angle), 3e-16);
        EXPECT_NEAR(math::cos(angle), std::cos(angle), 3e-16);
        EXPECT_NEAR(math::sinh(x) / std::sinh(x), 1.0, 1e-15);
        EXPECT_NEAR(math::tanh(x), std::tanh(x), 1e-15);
    }
}

TEST(Math, TangentAndPower) {
    for (double x = -1.5; x < 1.5; x += 0.001) EXPECT_NEAR(math::tan(x), std::tan(x), 1e-15 * (1 + std::tan(x) * std::tan(x)));
    for (double x = 0.01; x < 100; x *= 1.1) EXPECT_NEAR(math::pow(x, 0.37) / std::pow(x, 0.37), 1.0, 4e-15);
    EXPECT_EQ(math::pow(0.0, 2.0), 0.0);
}

TEST(Math, StaysFiniteAtTheEdges) {
    for (double x : {1e308, -1e308, std::nan(""), static_cast<double>(INFINITY), -static_cast<double>(INFINITY)}) {
        EXPECT_TRUE(std::isfinite(math::exp(x)));
        EXPECT_TRUE(std::isfinite(math::log(x)));
        EXPECT_TRUE(std::isfinite(math::sin(x)));
        EXPECT_TRUE(std::isfinite(math::cos(x)));
    }
}

}  // namespace
}  // namespace vantoric
