#include "samples/autotune.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "base/random.h"

namespace vantoric {
namespace {

using Samples = std::vector<std::int16_t>;

Samples tone(double period, int count, double amplitude = 20000.0, double second = 0.0) {
    Samples x;
    for (int i = 0; i < count; ++i) {
        const double phase = 2.0 * M_PI * i / period;
        x.push_back(static_cast<std::int16_t>(amplitude * std::sin(phase) + second * std::sin(2 * phase)));
    }
    return x;
}
int lagOf(const Samples& x) { return bestLag(x.data(), static_cast<std::int32_t>(x.size())); }

TEST(Autotune, APureToneOf441HzHasAPeriodOf100SamplesAnd13081Hz) {
    EXPECT_EQ(lagOf(tone(44100.0 / 441.0, 20000)), 100);
    EXPECT_EQ(rateOfLag(100), 13081u);
}

TEST(Autotune, AStrongSecondHarmonicDoesNotMakeAnOctaveError) { EXPECT_EQ(lagOf(tone(300, 15000, 5000, 15000)), 300); }

TEST(Autotune, TheRangeEndsAtItsLowestAndHighestLag) {
    EXPECT_EQ(lagOf(tone(44, 8000)), 44);
    Samples pulses(30000);
    for (std::size_t i = 0; i < pulses.size(); i += 2881) pulses[i] = 30000;
    EXPECT_EQ(lagOf(pulses), 2881);
    EXPECT_EQ(rateOfLag(2881), 376871u);
}

TEST(Autotune, OfEqualScoresTheLowestLagIsTaken) {
    EXPECT_EQ(lagOf(Samples(5000)), 44) << "silence";
    EXPECT_EQ(lagOf({}), 44);
    EXPECT_EQ(lagOf(Samples(10, 1000)), 44) << "shorter than any lag";
}

TEST(Autotune, WhereNoLagScoresAboveZeroTheLeastBadIsTaken) {
    Samples x(2945);
    x[0] = 30000;
    for (std::size_t i = 44; i < x.size(); ++i) x[i] = -1;
    x[500] = 0;
    EXPECT_EQ(lagOf(x), 500);
}

TEST(Autotune, SumsOfTheLoudestLongestSampleStayExact) {
    Samples x(524277);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = i % 1000 < 500 ? 32767 : -32768;
    EXPECT_EQ(lagOf(x), 1000);
}

// All sums by their definition.
int lagByDefinition(const Samples& x) {
    const auto at = [&](std::size_t n) { return n < x.size() ? std::int64_t{x[n]} : 0; };
    int best = 0;
    std::int64_t highest = 0;
    for (std::size_t lag = lowestLag; lag <= highestLag; ++lag) {
        std::int64_t score = 0;  // times four
        for (std::size_t n = 0; n < x.size(); ++n) score += x[n] * (4 * at(n + lag) + 2 * at(n + 2 * lag) + at(n + 3 * lag));
        if (best != 0 && score <= highest) continue;
        best = static_cast<int>(lag);
        highest = score;
    }
    return best;
}

TEST(Autotune, TakesTheLagOfTheDefinitionForAnySound) {
    LinearCongruence random{3};
    for (int round = 0; round < 12; ++round) {
        Samples x(static_cast<std::size_t>(1 + random.next() % 9000));
        for (auto& value : x) value = static_cast<std::int16_t>(static_cast<int>(random.next() >> 16) % (1 << (1 + round)));
        EXPECT_EQ(lagOf(x), lagByDefinition(x)) << round;
    }
    Samples lone(6000);
    lone[10] = 1;
    EXPECT_EQ(lagOf(lone), 44) << "all scores are 0";
    lone[5000] = -1;
    EXPECT_EQ(lagOf(lone), lagByDefinition(lone));
}

TEST(Autotune, StretchesOfALongSoundJoinWithoutASeam) {
    Samples x(60000);
    x[23000] = x[25500] = 20000;  // on both sides of a border
    EXPECT_EQ(lagOf(x), 2500);
}

}  // namespace
}  // namespace vantoric
