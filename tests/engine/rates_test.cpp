#include "engine/rates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vantoric {
namespace {

TEST(Rates, FortyEightThousandIsTheHighestOversampledRate) {
    EngineState state;
    setRates(state, 48000.0f);
    EXPECT_TRUE(state.oversampled);
    EXPECT_EQ(state.internalRate, 96000.0f);
    setRates(state, 48001.0f);
    EXPECT_FALSE(state.oversampled);
    EXPECT_EQ(state.internalRate, 48001.0f);
}

TEST(Rates, TickIsAMillisecondWithoutItsFraction) {
    const struct {
        float hostRate;
        int samples;
    } rows[] = {{44100, 88}, {48000, 96}, {96000, 96}, {192000, 192}, {500, 1}, {499, 0}};
    for (const auto& row : rows) {
        EngineState state;
        setRates(state, row.hostRate);
        EXPECT_EQ(state.tickSamples, row.samples) << row.hostRate;
    }
    EngineState state;
    setRates(state, 44100.0f);
    EXPECT_DOUBLE_EQ(state.ticksPerSecond, 88200.0 / 88);
    EXPECT_EQ(state.reciprocalTickSamples, 1.0f / 88);
}

TEST(Rates, KeyStepsAreSemitones) {
    EngineState state;
    setRates(state, 44100.0f);
    EXPECT_FLOAT_EQ(state.keyIncrement[0], 523.2511306f / 128 / 88200);
    for (int k = 12; k < 256; ++k) EXPECT_NEAR(state.keyIncrement[k] / state.keyIncrement[k - 12], 2.0, 1e-6);
}

TEST(Rates, NonsenseStaysHarmless) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float rate : {0.0f, -44100.0f, nan, infinity, -infinity, 1e-30f, 1e9f, 3e38f}) {
        EngineState state;
        setRates(state, rate);
        EXPECT_GE(state.tickSamples, 0) << rate;
        EXPECT_LE(state.tickSamples, 10000) << rate;
        for (const double value : {static_cast<double>(state.internalRate), state.internalRateExact, state.ticksPerSecond,
                                   static_cast<double>(state.reciprocalRate), static_cast<double>(state.rateTo44100),
                                   static_cast<double>(state.reciprocalTickSamples)}) {
            EXPECT_TRUE(std::isfinite(value)) << rate;
        }
        for (const float increment : state.keyIncrement) EXPECT_TRUE(std::isfinite(increment)) << rate;
    }
}

TEST(Rates, ARateWithoutMeaningIsSilent) {
    for (const float rate : {0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        EngineState state;
        setRates(state, rate);
        EXPECT_EQ(state.tickSamples, 0) << rate;
    }
}

TEST(Rates, NoSecondHasMoreThanTenMillionSamples) {
    for (const float rate : {1e7f, 1e9f, std::numeric_limits<float>::max()}) EXPECT_EQ(internalRateOf(rate), 1e7f);
    EXPECT_EQ(internalRateOf(768000.0f), 768000.0f);
}

TEST(Rates, ATickIsAMillisecondBeyondTheVoicesBuffersToo) {
    EngineState state;
    setRates(state, 384000.0f);
    EXPECT_EQ(state.tickSamples, 384);
    EXPECT_DOUBLE_EQ(state.ticksPerSecond, 1000.0);
    setRates(state, 768000.0f);
    EXPECT_EQ(state.tickSamples, 768);
}

}  // namespace
}  // namespace vantoric
