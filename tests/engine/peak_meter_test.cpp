#include "engine/peak_meter.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace vantoric {
namespace {

constexpr float rate = 48000.0f;

void takeConstant(PeakMeter& meter, float value, int count) {
    const std::vector<float> samples(static_cast<std::size_t>(count), value);
    meter.take(samples.data(), count, rate);
}

TEST(PeakMeter, RisesAtOnceToAQuarterOfTheHighestMagnitude) {
    PeakMeter meter;
    const float samples[] = {0.1f, -0.8f, 0.3f};
    meter.take(samples, 3, rate);
    EXPECT_FLOAT_EQ(meter.peak(), 0.2f);
}

TEST(PeakMeter, FallsToAHundredthInAboutASecondWhateverTheBlock) {
    for (const int block : {32, 512, 2048}) {
        PeakMeter meter;
        takeConstant(meter, 1.0f, block);
        for (int done = 0; done < 48000; done += block) takeConstant(meter, 0.0f, block);
        EXPECT_LT(meter.peak(), 0.25f * 0.01f) << block;
        EXPECT_GT(meter.peak(), 0.25f * 0.001f) << block;
    }
}

TEST(PeakMeter, ALongBlockOfSilenceEmptiesIt) {
    PeakMeter meter;
    takeConstant(meter, 1.0f, 64);
    takeConstant(meter, 0.0f, 48000);
    EXPECT_EQ(meter.peak(), 0.0f);
}

TEST(PeakMeter, WhatIsNoNumberIsNotHeard) {
    PeakMeter meter;
    takeConstant(meter, std::numeric_limits<float>::quiet_NaN(), 64);
    EXPECT_EQ(meter.peak(), 0.0f);
    meter.take(nullptr, 0, 0.0f);
    EXPECT_EQ(meter.peak(), 0.0f);
}

}  // namespace
}  // namespace vantoric
