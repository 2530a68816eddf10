#include "effects/filter_degrader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

constexpr int degrader = 6;

struct DegraderTest : testing::Test {
    Filter filter;
    std::vector<float> left, right;

    void SetUp() override { set(1.0f, 0.5f); }
    void set(float mix, float rate) {
        filter.setVariant(degrader);
        filter.setSampleRate(88200.0f);
        filter.setParameter(0, mix);
        filter.setParameter(1, rate);
    }
    void ramp(int count) {
        left.resize(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) left[i] = static_cast<float>(i) * 0.001f;
        right = left;
        for (float& x : right) x = -x;
    }
    void run() { filter.process(left.data(), right.data(), static_cast<int>(left.size())); }
};

TEST_F(DegraderTest, ReducesToAHundredHertzAtTheLowest) {
    EXPECT_EQ(Filter::factor(0.0f, 88200.0f), 882);
    EXPECT_EQ(Filter::factor(0.0f, 44100.0f), 441);
}

TEST_F(DegraderTest, NeverReducesBelowOneSample) {
    EXPECT_EQ(Filter::factor(1.0f, 8000.0f), 1);
    EXPECT_GE(Filter::factor(1.0f, 100.0f), 1);
    EXPECT_GE(Filter::factor(0.5f, 1.0f), 1);
}

TEST_F(DegraderTest, HoldsTheMeanOfEachBox) {
    const int n = Filter::factor(0.5f, 88200.0f);
    ramp(3 * n);
    const std::vector<float> in = left;
    run();
    float sum = 0.0f;
    for (int i = 0; i < n; ++i) sum += in[i];
    for (int i = 0; i < n - 1; ++i) EXPECT_EQ(left[i], 0.0f);
    for (int i = n - 1; i < 2 * n - 1; ++i) {
        EXPECT_EQ(left[i], sum / static_cast<float>(n));
        EXPECT_EQ(right[i], -left[i]);
    }
}

TEST_F(DegraderTest, PassesBlocksBeyondTheLimitUnprocessed) {
    ramp(16385);
    const std::vector<float> in = left;
    run();
    EXPECT_EQ(left, in);
    ramp(16384);
    run();
    EXPECT_NE(left[0], 1.0f);
    EXPECT_NE(left, std::vector<float>(in.begin(), in.begin() + 16384));
}

TEST_F(DegraderTest, OtherParametersDoNothing) {
    ramp(500);
    run();
    const std::vector<float> first = left;
    filter.reset();
    for (int index = 2; index < 5; ++index) filter.setParameter(index, 0.9f);
    ramp(500);
    run();
    EXPECT_EQ(left, first);
}

TEST_F(DegraderTest, OtherVariantsPassAudioThrough) {
    for (const int variant : {0, 2, 5, 7}) {
        filter.setVariant(variant);
        ramp(100);
        const std::vector<float> in = left;
        run();
        EXPECT_EQ(left, in);
    }
}

TEST_F(DegraderTest, MixesDryAndHeld) {
    set(0.0f, 0.3f);
    ramp(700);
    const std::vector<float> in = left;
    run();
    EXPECT_EQ(left, in);
}

TEST_F(DegraderTest, ResetEmptiesSumsAndHeldSamples) {
    ramp(777);
    run();
    filter.reset();
    left.assign(2000, 0.0f);
    right = left;
    run();
    for (const float v : left) EXPECT_EQ(v, 0.0f);
}

TEST_F(DegraderTest, StaysBoundedAtEveryRate) {
    for (const float rate : testing_effects::everyRate())
        for (const float p1 : {0.0f, 0.5f, 1.0f})
            for (const float level : {0.0f, 1.0f, 1e-41f}) {
                filter.reset();
                set(1.0f, p1);
                filter.setSampleRate(rate);
                left.assign(10000, level);
                right.assign(10000, -level);
                run();
                for (const float v : left) ASSERT_LE(std::fabs(v), level * 1.0001f);
            }
}

}  // namespace
}  // namespace vantoric
