#include "engine/decimator.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/random.h"
#include "engine/rates.h"

namespace vantoric {
namespace {

std::vector<float> noise(int count, std::uint32_t seed) {
    LinearCongruence random{seed};
    std::vector<float> x(static_cast<std::size_t>(count));
    for (float& value : x) value = random.unit() - 0.5f;
    return x;
}

struct Output {
    std::vector<float> left, right;
};

// Runs both sides through a decimator in blocks of `block` internal samples.
Output run(Decimator& decimator, const std::vector<float>& left, const std::vector<float>& right, int block) {
    const int count = static_cast<int>(left.size());
    Output out{std::vector<float>(left.size() / 2), std::vector<float>(left.size() / 2)};
    for (int at = 0; at < count; at += block)
        decimator.process(left.data() + at, right.data() + at, std::min(block, count - at), out.left.data() + at / 2,
                          out.right.data() + at / 2);
    return out;
}

TEST(Decimator, SilenceComesOutAsTheOffset) {
    Decimator decimator;
    const std::vector<float> silence(200, 0.0f);
    const Output out = run(decimator, silence, silence, 200);
    for (std::size_t i = 16; i < out.left.size(); ++i) {
        EXPECT_FLOAT_EQ(out.left[i], 0.00001f);
        EXPECT_EQ(out.right[i], out.left[i]);
    }
}

TEST(Decimator, PassesASteadyLevelAtUnity) {
    Decimator decimator;
    const std::vector<float> level(200, 0.5f);
    EXPECT_NEAR(run(decimator, level, level, 200).left.back(), 0.50001f, 1e-6f);
}

TEST(Decimator, KeepsTheFirstOfEachPairOfSamples) {
    // An impulse on the first sample meets tap 0 in the first output; one on the second meets tap 1 in the next.
    for (int at = 0; at < 2; ++at) {
        Decimator decimator;
        std::vector<float> impulse(16, 0.0f);
        impulse[static_cast<std::size_t>(at)] = 1.0f;
        const Output out = run(decimator, impulse, impulse, 16);
        EXPECT_NEAR(out.left[static_cast<std::size_t>(at)], at == 0 ? 0.0282846f : 0.1481396f, 0.00002f);
    }
}

TEST(Decimator, BlocksOfAnyLengthGiveTheSameSound) {
    const auto left = noise(2000, 1), right = noise(2000, 2);
    Decimator whole;
    const Output expected = run(whole, left, right, 2000);
    for (const int block : {2, 6, 30, 32, 34, 62, 256, 258, 600}) {
        Decimator decimator;
        const Output out = run(decimator, left, right, block);
        EXPECT_EQ(out.left, expected.left) << block;
        EXPECT_EQ(out.right, expected.right) << block;
        EXPECT_EQ(decimator.ringIndex(), 2000 % 32);
    }
}

TEST(Decimator, WorksInPlace) {
    const auto left = noise(1000, 3), right = noise(1000, 4);
    Decimator apart, inPlace;
    const Output expected = run(apart, left, right, 1000);
    auto l = left, r = right;
    inPlace.process(l.data(), r.data(), 1000, l.data(), r.data());
    l.resize(500);
    r.resize(500);
    EXPECT_EQ(l, expected.left);
    EXPECT_EQ(r, expected.right);
}

TEST(Decimator, ABlockOfNothingChangesNothing) {
    Decimator decimator;
    decimator.process(nullptr, nullptr, 0, nullptr, nullptr);
    EXPECT_EQ(decimator.ringIndex(), 0);
}

TEST(Decimator, AResetEmptiesRingsAndIndex) {
    Decimator decimator, fresh;
    const auto before = noise(46, 5), after = noise(100, 6);
    run(decimator, before, before, 46);
    decimator.reset();
    EXPECT_EQ(decimator.ringIndex(), 0);
    EXPECT_EQ(run(decimator, after, after, 100).left, run(fresh, after, after, 100).left);
}

TEST(Decimator, SuppressesWhatWouldFoldBack) {
    // 30 kHz at an internal rate of 88.2 kHz would alias to 14.1 kHz.
    std::vector<float> tone(4000);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = static_cast<float>(std::sin(2.0 * M_PI * 30000.0 / 88200.0 * static_cast<double>(i)));
    Decimator decimator;
    const Output out = run(decimator, tone, tone, 4000);
    for (std::size_t i = 20; i < out.left.size(); ++i) EXPECT_LT(std::fabs(out.left[i]), 0.02f);
}

TEST(Rates, UpTo48kHzTheEngineRunsAtTwiceTheHostsRate) {
    EXPECT_TRUE(ratesOf(48000.0f).oversampled);
    EXPECT_EQ(ratesOf(48000.0f).internalRate, 96000.0f);
    EXPECT_FALSE(ratesOf(48001.0f).oversampled);
    EXPECT_EQ(ratesOf(48001.0f).internalRate, 48001.0f);
}

TEST(Rates, TheTickIsAboutAMillisecond) {
    EXPECT_EQ(ratesOf(44100.0f).tickSamples, 88);
    EXPECT_EQ(ratesOf(48000.0f).tickSamples, 96);
    EXPECT_EQ(ratesOf(96000.0f).tickSamples, 96);
    EXPECT_EQ(ratesOf(192000.0f).tickSamples, 192);
}

TEST(Rates, ARateBelow500HasNoTicks) { EXPECT_EQ(ratesOf(499.0f).tickSamples, 0); }

}  // namespace
}  // namespace vantoric
