#include "effects/equalizer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "base/random.h"

namespace vantoric {
namespace {

std::vector<float> noise(int count, std::uint32_t seed) {
    LinearCongruence random{seed};
    std::vector<float> x(static_cast<std::size_t>(count));
    for (float& value : x) value = random.unit() - 0.5f;
    return x;
}

// Gain of a section at a frequency.
double gainAt(const BiquadCoefficients& c, double frequency, double sampleRate) {
    const double w = 2.0 * M_PI * frequency / sampleRate;
    const auto square = [&](double a, double b, double d) {
        const double re = a + b * std::cos(w) + d * std::cos(2 * w), im = b * std::sin(w) + d * std::sin(2 * w);
        return re * re + im * im;
    };
    return std::sqrt(square(c.b0, c.b1, c.b2) / square(1.0, -c.feedback1, -c.feedback2));
}

TEST(Equalizer, ABandNearItsCentreIsNotEvenOffset) {
    for (const float value : {0.45f, 0.5f, 0.55f}) {
        Equalizer equalizer;
        equalizer.setLowGain(value);
        std::vector<float> left = noise(300, 1), right = noise(300, 2);
        const auto wasLeft = left, wasRight = right;
        equalizer.process(left.data(), right.data(), 300);
        EXPECT_EQ(left, wasLeft) << value;
        EXPECT_EQ(right, wasRight) << value;
    }
}

TEST(Equalizer, JustBeyondItsCentreABandIsComputed) {
    for (const float value : {std::nextafter(0.45f, 0.0f), std::nextafter(0.55f, 1.0f)}) {
        Equalizer equalizer;
        equalizer.setLowGain(value);
        float left = 0.0f, right = 0.0f;
        equalizer.process(&left, &right, 1);
        EXPECT_NE(left, 0.0f) << value;
        EXPECT_EQ(left, right);
    }
}

TEST(Equalizer, LowGain0CutsTheLowsWholeAnd1GivesAGainOf4) {
    Equalizer equalizer;
    equalizer.setSampleRate(88200.0);
    equalizer.setLowGain(0.0f);
    EXPECT_LT(gainAt(equalizer.coefficients(Equalizer::low), 0.0, 88200.0), 1e-6);
    EXPECT_NEAR(gainAt(equalizer.coefficients(Equalizer::low), 20000.0, 88200.0), 1.0, 0.01);
    equalizer.setLowGain(1.0f);
    EXPECT_NEAR(gainAt(equalizer.coefficients(Equalizer::low), 0.0, 88200.0), 4.0, 1e-4);
}

TEST(Equalizer, TheOnePassForAllBandsEqualsPassesBandByBand) {
    Equalizer all, low, high, mid;
    const float lowGain = 0.9f, highGain = 0.2f, midGain = 0.8f;
    all.setLowGain(lowGain);
    all.setHighGain(highGain);
    all.setMidGain(midGain);
    low.setLowGain(lowGain);
    high.setHighGain(highGain);
    mid.setMidGain(midGain);
    std::vector<float> left = noise(777, 3), right = noise(777, 4);
    auto stepLeft = left, stepRight = right;
    all.process(left.data(), right.data(), 777);
    for (Equalizer* band : {&low, &high, &mid}) band->process(stepLeft.data(), stepRight.data(), 777);
    EXPECT_EQ(left, stepLeft);
    EXPECT_EQ(right, stepRight);
}

TEST(Equalizer, BlocksOfAnyLengthGiveTheSameSound) {
    Equalizer whole, parts;
    for (Equalizer* e : {&whole, &parts}) {
        e->setLowGain(1.0f);
        e->setMidGain(0.0f);
    }
    std::vector<float> left = noise(500, 5), right = noise(500, 6);
    auto partLeft = left, partRight = right;
    whole.process(left.data(), right.data(), 500);
    for (int at = 0; at < 500; at += 7) parts.process(partLeft.data() + at, partRight.data() + at, std::min(7, 500 - at));
    EXPECT_EQ(left, partLeft);
    EXPECT_EQ(right, partRight);
}

TEST(Equalizer, ASkippedBandKeepsItsMemory) {
    Equalizer equalizer;
    std::vector<float> left(100, 0.5f), right(100, 0.5f);
    equalizer.setLowGain(1.0f);
    equalizer.process(left.data(), right.data(), 100);
    equalizer.setLowGain(0.5f);
    equalizer.process(left.data(), right.data(), 50);
    equalizer.setLowGain(1.0f);
    float l = 0.0f, r = 0.0f;
    equalizer.process(&l, &r, 1);
    EXPECT_GT(std::fabs(l), 0.01f);
}

TEST(Equalizer, AResetSilencesItsMemory) {
    Equalizer equalizer, fresh;
    for (Equalizer* e : {&equalizer, &fresh}) e->setHighGain(1.0f);
    std::vector<float> left = noise(100, 7), right = noise(100, 8);
    equalizer.process(left.data(), right.data(), 100);
    equalizer.reset();
    left = noise(100, 9);
    right = noise(100, 10);
    auto freshLeft = left, freshRight = right;
    equalizer.process(left.data(), right.data(), 100);
    fresh.process(freshLeft.data(), freshRight.data(), 100);
    EXPECT_EQ(left, freshLeft);
}

TEST(Equalizer, RecoversFromABlockWithoutFiniteNumbers) {
    Equalizer equalizer, fresh;
    for (Equalizer* e : {&equalizer, &fresh}) e->setLowGain(1.0f);
    std::vector<float> left(16, std::numeric_limits<float>::infinity()), right(16, 0.1f);
    equalizer.process(left.data(), right.data(), 16);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(left[static_cast<std::size_t>(i)], 0.0f);
    left = noise(50, 11);
    right = noise(50, 12);
    auto freshLeft = left, freshRight = right;
    equalizer.process(left.data(), right.data(), 50);
    fresh.process(freshLeft.data(), freshRight.data(), 50);
    EXPECT_EQ(left, freshLeft);
    EXPECT_EQ(right, freshRight);
}

}  // namespace
}  // namespace vantoric
