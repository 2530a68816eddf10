#include <limits>
#include <random>
#include <vector>

#include "kernel_fixture.h"
#include "sound/analog_clip.h"
#include "sound/filters/wide_loops.h"
#include "sound/oscillator_control.h"
#include "sound/tone_stages.h"

using namespace vantoric;

TEST(ToneStage, TheMiddleOfTimbreIsSkipped) {
    Samples buffer{1000, -2000, 30000};
    std::int32_t state = 77;
    for (const float timbre : {0.491f, 0.5f, 0.509f}) {
        const ToneGains gains = toneGains(timbre);
        EXPECT_FALSE(gains.isHeard());
        toneStage(buffer.data(), 3, state, 10000, gains);
    }
    EXPECT_EQ(buffer, (Samples{1000, -2000, 30000}));
    EXPECT_EQ(state, 77);
    EXPECT_TRUE(toneGains(0.52f).isHeard());
    EXPECT_TRUE(toneGains(0.48f).isHeard());
}

TEST(ToneStage, BelowTheMiddleItCrossfadesToItsLowpass) {
    const ToneGains gains = toneGains(0.0f);
    EXPECT_EQ(gains.wet, 1023);
    EXPECT_EQ(gains.dry, 0);
    Samples buffer(4000, 10000);
    std::int32_t state = 0;
    toneStage(buffer.data(), 4000, state, 500, gains);
    EXPECT_LT(buffer[0], 1000);
    EXPECT_NEAR(buffer.back(), 9990, 60);
}

TEST(ToneStage, TheCornerFollowsThePitchUpToATenthOfTheRate) {
    EXPECT_EQ(toneCoefficient(0.01), 2686);
    EXPECT_EQ(toneCoefficient(0.3), 26862);
    EXPECT_EQ(toneCoefficient(0.0), 0);
    EXPECT_EQ(toneCoefficient(1e300), 13431);
}

// Any number of stages, any count, coefficients on both sides of unity, memories of more than 16 bits.
void expectStagesSideBySideAsOneByOne() {
    std::mt19937 chance(7);
    const auto between = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(chance); };
    for (int round = 0; round < 300; ++round) {
        const int stages = between(0, 40), count = between(0, maxTickSamples);
        std::vector<Samples> one(stages, Samples(maxTickSamples)), many;
        std::vector<std::int32_t> oneState(stages), manyState;
        std::vector<ToneRun> runs(stages);
        for (int k = 0; k < stages; ++k) {
            for (std::int16_t& x : one[k])
                x = static_cast<std::int16_t>(round % 3 == 0 ? between(0, 1) * 65535 - 32768 : between(-32768, 32767));
            oneState[k] = between(0, 5) == 0 ? between(-149000, 149000) : between(-32768, 32767);
            runs[k].coefficient = between(0, 3) == 0 ? between(16380, 26862) : between(0, 16384);
            runs[k].gains = toneGains(static_cast<float>(between(0, 1000)) * 0.001f);
        }
        many = one;
        manyState = oneState;
        for (int k = 0; k < stages; ++k) {
            runs[k].buffer = many[k].data();
            runs[k].state = &manyState[k];
            toneStage(one[k].data(), count, oneState[k], runs[k].coefficient, runs[k].gains);
        }
        toneStages(runs, count);
        ASSERT_EQ(many, one) << round;
        ASSERT_EQ(manyState, oneState) << round;
    }
}

TEST(ToneStage, ManySideBySideGiveWhatOneAfterTheOtherDoes) {
    expectStagesSideBySideAsOneByOne();
    if (!filters::wideLoopsInUse()) return;
    filters::useWideLoops(false);
    expectStagesSideBySideAsOneByOne();
    filters::useWideLoops(true);
}

TEST(Control, NonsenseIsHeldWithinItsType) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(increment24(infinity), 0x7fffffffu);
    EXPECT_EQ(scanIncrement(infinity, 1.0f), 0x7fffffffu);
    EXPECT_EQ(fmDepthTarget(std::nanf("")), 0);
    EXPECT_EQ(toneGains(std::nanf("")).wet, 1023);
    const MixGains gains = mixGains(true, 1.0f, 1e30f);
    EXPECT_EQ(gains.toFilter2, std::numeric_limits<std::int32_t>::max());
}

TEST(Control, FmDepthRunsToItsTargetWithinATick) {
    const std::int32_t target = fmDepthTarget(0.5f);
    EXPECT_EQ(target, 32767);
    const std::int32_t step = fmDepthStep(target, 1000, 96);
    EXPECT_NEAR(1000 + 96 * step, target, 96);
    EXPECT_EQ(fmDepthTarget(2.0f), 131070);
    EXPECT_EQ(fmDepthStep(0, 1000, 96), -10);
}

TEST(Control, TheFirstTickSetsTheFrameAndLaterOnesWait) {
    OscillatorState state;
    state.frameCount = 64;
    setPosition(state, 0.5f);
    EXPECT_EQ(state.frame, 31);
    EXPECT_EQ(state.frame, state.framePending);
    EXPECT_EQ(state.blend, state.blendPending);
    setPosition(state, 1.0f);
    EXPECT_EQ(state.frame, 31);
    EXPECT_EQ(state.framePending, 63);
}

TEST(Mix, AnInactiveOscillatorHasNoGain) {
    const MixGains gains = mixGains(false, 1.0f, 0.5f);
    EXPECT_EQ(gains.toFilter1, 0);
    EXPECT_EQ(gains.toFilter2, 0);
}

TEST(Mix, AVoiceGoesIntoItsLaneAndSilenceIntoTheOthersOfItsGroup) {
    const Samples a{1000, -32768}, b{2000, -32768}, c{-500, -32768};
    MixSource voices[mixVoices];
    voices[1] = {{a.data(), b.data(), c.data()}, {{100, 32767}, {200, 32767}, {400, 32767}}};
    std::vector<float> f1(2 * voiceCount, 9.0f), f2(2 * voiceCount, 9.0f);
    mixToLanes(voices, 2, &f1[4], &f2[4]);
    EXPECT_FLOAT_EQ(f1[5], 300000.0f / 2097152000.0f);
    EXPECT_FLOAT_EQ(f2[5], 2500.0f * 32767.0f / 2097152000.0f);
    // Three full-scale oscillators pass 32 bits and wrap.
    const std::int64_t sum = 3ll * -32768 * 32767;
    EXPECT_FLOAT_EQ(f2[5 + voiceCount], static_cast<float>(sum + (1ll << 32)) / 2097152000.0f);
    for (int i = 0; i < 2 * voiceCount; ++i)
        if (i % voiceCount != 5) {
            EXPECT_EQ(f1[static_cast<std::size_t>(i)], i % voiceCount / 4 == 1 ? 0.0f : 9.0f);
        }
}

float wrappedSum(const MixSource& voice, std::int32_t MixGains::* side, int i) {
    std::int64_t sum = 0;
    for (int k = 0; k < oscillatorCount; ++k) sum += static_cast<std::int64_t>(voice.buffers[k][i]) * (voice.gains[k].*side);
    return static_cast<float>(static_cast<std::int32_t>(sum)) / 2097152000.0f;
}

// Four voices, no two of which have the same.
void expectWrappedSums() {
    LinearCongruence chance{7};
    Samples b[3];
    for (Samples& buffer : b)
        for (int i = 0; i < 103; ++i) buffer.push_back(static_cast<std::int16_t>(chance.next() >> 16));
    const std::int16_t *x = b[0].data(), *y = b[1].data(), *z = b[2].data();
    for (const std::int32_t gain : {0, 1, -5000, 32767, 32768, -40000, 2147483647}) {
        const MixSource voices[mixVoices] = {{{x, y, z}, {{11, 700}, {-2300, 41}, {900, -8000}}},
                                             {{z, x, x}, {{5, -9}, {7, 7}, {300, 20}}},
                                             {{y, z, x}, {{-1200, 60}, {31, 15000}, {-77, 2}}},
                                             {{x, y, z}, {{gain, 12345}, {20000, -7}, {-3, gain}}}};
        for (const int count : {1, 3, 4, 9, 96, 103}) {
            std::vector<float> f1(count * voiceCount), f2(count * voiceCount);
            mixToLanes(voices, count, f1.data(), f2.data());
            for (int i = 0; i < count; ++i)
                for (int v = 0; v < mixVoices; ++v) {
                    ASSERT_EQ(f1[i * voiceCount + v], wrappedSum(voices[v], &MixGains::toFilter1, i)) << v;
                    ASSERT_EQ(f2[i * voiceCount + v], wrappedSum(voices[v], &MixGains::toFilter2, i)) << v;
                }
        }
    }
}

TEST(Mix, EverySampleIsTheWrappedSumOverItsScale) {
    expectWrappedSums();
    if (!filters::wideLoopsInUse()) return;
    filters::useWideLoops(false);
    expectWrappedSums();
    filters::useWideLoops(true);
}

TEST(AnalogClip, SaturatesAtOneHalfOnceItPassesOneQuarter) {
    EXPECT_EQ(analogSoftClip(0.25f), 0.5f);
    EXPECT_EQ(analogSoftClip(7.0f), 0.5f);
    EXPECT_EQ(analogSoftClip(-7.0f), -0.5f);
    EXPECT_FLOAT_EQ(analogSoftClip(0.05f), 0.15f);
}

TEST(AnalogClip, LanesGetTheBitsOfTheScalarForm) {
    using Vector = Lanes<float, 8>;
    for (int k = 0; k < 100; ++k) {
        float x[8];
        for (int lane = 0; lane < 8; ++lane) x[lane] = 0.007f * static_cast<float>(k - 50) + 0.03f * static_cast<float>(lane - 4);
        const Vector y = analogSoftClip(Vector(x, stdx::element_aligned));
        for (int lane = 0; lane < 8; ++lane) EXPECT_EQ(y[lane], analogSoftClip(x[lane]));
    }
}
