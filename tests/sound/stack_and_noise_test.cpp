#include <algorithm>
#include <set>

#include "kernel_fixture.h"

using namespace vantoric;

namespace {

Samples noiseRun(Kernel kernel, int frame, std::uint32_t increment, int count, float rate = 96000.0f) {
    Oscillator o;
    o.engine.internalRate = rate;
    o.state.framePending = frame;
    o.state.increment = increment;
    if (kernel == kernels::fractal4) startHenonMap(o.state);
    return o.run(kernel, count);
}

}  // namespace

TEST(Stacks, WithoutDetuneAllVoicesHaveTheSameRate) {
    for (int ssWave = 3; ssWave <= 11; ++ssWave) {
        std::uint32_t steps[stackVoices];
        const int voices = stackSteps(ssWave, 123456, 0, steps);
        EXPECT_TRUE(std::all_of(steps, steps + voices, [](std::uint32_t step) { return step == 123456; })) << ssWave;
    }
}

TEST(Stacks, TheWidestPairIsFivePercentApartAtFullPw) {
    for (int ssWave = 3; ssWave <= 8; ++ssWave) {
        std::uint32_t steps[stackVoices];
        const int voices = stackSteps(ssWave, 1000000, 65534, steps);
        EXPECT_NEAR(static_cast<double>(steps[voices - 2]) / steps[0], 1.05, 0.0002) << ssWave;
        EXPECT_NEAR(static_cast<double>(steps[voices - 1]) / steps[0], 0.95, 0.0002) << ssWave;
    }
}

TEST(Stacks, AboveTheSampleRateTheVoicesStandApartAsFarAsTheyDoBelow) {
    for (int ssWave = 3; ssWave <= 11; ++ssWave) {
        std::uint32_t low[stackVoices], high[stackVoices];
        const int voices = stackSteps(ssWave, 1u << 20, 40000, low);
        stackSteps(ssWave, 1u << 25, 40000, high);
        for (int k = 0; k < voices; ++k) EXPECT_NEAR(high[k], 32.0 * low[k], 32.0) << ssWave;
        stackSteps(ssWave, static_cast<std::uint32_t>(-(1 << 20)), 40000, high);
        for (int k = 0; k < voices; ++k) EXPECT_EQ(high[k] + low[k], 0u) << ssWave;
    }
}

TEST(Stacks, WithoutDetuneTheSumDependsOnTheStartPhasesOnly) {
    Oscillator o;
    o.fillStore([](int, int, int i) { return (i - 1024) * 30; });
    o.state.increment = 8192 * 16;
    const Samples together = o.run(kernels::hypersaw3, 128);
    const Samples next = o.run(kernels::hypersaw3, 128);
    EXPECT_EQ(together, next);  // one cycle is 128 samples
    o.state = OscillatorState{};
    o.state.increment = 8192 * 16;
    o.state.subPhase[1] = 0x800000;
    EXPECT_NE(o.run(kernels::hypersaw3, 128), together);
}

TEST(Stacks, TheComputedSawAlternatesAboveFortyEightKilohertz) {
    Oscillator o;
    o.state.increment = 10000;
    o.run(kernels::supersawJp, 1);
    int moved = 0;
    for (int k = 0; k < 7; ++k) {
        EXPECT_TRUE(o.state.subPhase[k] == 0 || o.state.subPhase[k] == 20000);
        moved += o.state.subPhase[k] != 0;
    }
    EXPECT_TRUE(moved == 3 || moved == 4);
    o.run(kernels::supersawJp, 1);
    for (int k = 0; k < 7; ++k) EXPECT_EQ(o.state.subPhase[k], 20000u);

    Oscillator slow;
    slow.engine.internalRate = 48000.0f;
    slow.state.increment = 10000;
    slow.run(kernels::supersawJp, 1);
    for (int k = 0; k < 7; ++k) EXPECT_EQ(slow.state.subPhase[k], 10000u);
}

TEST(Noise, WhiteAndPinkIgnorePwAndPitch) {
    for (const Kernel kernel : {kernels::noiseWhite, kernels::noisePink}) {
        const Samples low = noiseRun(kernel, 0, 10, 500);
        EXPECT_EQ(low, noiseRun(kernel, 255, 2000000, 500));
    }
}

TEST(Noise, WhiteRisesWithTheRate) {
    EXPECT_NEAR(rmsOf(noiseRun(kernels::noiseWhite, 0, 0, 20000, 192000.0f)) /
                    rmsOf(noiseRun(kernels::noiseWhite, 0, 0, 20000, 48000.0f)),
                (0.07 * 192000 + 3087) / (0.07 * 48000 + 3087), 0.05);
}

TEST(Noise, GeneratorsOfAPitchActAtEverySampleWhenItPassesTheSampleRate) {
    const auto changes = [](const Samples& out) {
        int count = 0;
        for (std::size_t i = 1; i < out.size(); ++i) count += out[i] != out[i - 1];
        return count;
    };
    for (const std::uint32_t increment : {0x00ffffffu, 0x01000010u, 0x02400000u}) {
        EXPECT_GT(changes(noiseRun(kernels::noiseRandom, 0, increment, 500)), 490) << increment;
        EXPECT_GT(changes(noiseRun(kernels::noise8Bit, 200, increment, 500)), 400) << increment;
        EXPECT_GT(changes(noiseRun(kernels::fractal4, 255, increment, 500)), 450) << increment;
        EXPECT_LT(rmsOf(noiseRun(kernels::noiseRandomRamp, 0, increment, 5000)), 20000) << increment;
    }
}

TEST(Noise, SyncedRepeatsAtThePitch) {
    const Samples out = noiseRun(kernels::noiseSynced, 31, 1 << 20, 400);
    // Two steps of an eighth of the increment a sample: 64 samples a pattern.
    const Samples first(out.begin() + 64, out.begin() + 128), second(out.begin() + 128, out.begin() + 192);
    EXPECT_EQ(first, second);
    EXPECT_GT(rmsOf(first), 500);
}

// A sample takes two steps and two draws. Where the first step wraps, the draws begin with the number of the pattern.
TEST(Noise, ASyncedPatternBeginsAtItsNumber) {
    constexpr std::uint32_t pattern = 31;
    Oscillator oscillator;
    oscillator.state.framePending = static_cast<int>(pattern);
    oscillator.state.increment = 1 << 20;
    oscillator.state.phase = phaseMask;
    const Samples out = oscillator.run(kernels::noiseSynced, 1);
    LinearCongruence generator{pattern << 16};
    const float rate = 96000.0f, scale = rate * 9.32e-12f + 8.9472e-7f, middle = 0.02f * rate + 1920.0f;
    const auto first = static_cast<float>(generator.next()), second = static_cast<float>(generator.next());
    EXPECT_EQ(out[0], truncateToSample(first * scale - middle + second * scale - middle));
}

TEST(Noise, PwChoosesThePattern) {
    std::set<Samples> patterns;
    for (int frame = 0; frame < 256; ++frame) {
        const Samples out = noiseRun(kernels::noiseSynced, frame, 1 << 20, 192);
        patterns.insert(Samples(out.begin() + 64, out.begin() + 128));
    }
    EXPECT_EQ(patterns.size(), 256u);
}

TEST(Noise, EveryGeneratorSpeaksAndStaysWithinReason) {
    for (std::size_t noiWave = 0; noiWave < noiseKernels.size(); ++noiWave)
        for (const int frame : {0, 128, 255}) {
            const double rms = rmsOf(noiseRun(noiseKernels[noiWave], frame, 60000, 20000));
            EXPECT_GT(rms, 50) << noiWave << " " << frame;
            EXPECT_LT(rms, 20000) << noiWave << " " << frame;
        }
}

TEST(Chaos, ThePitchDecidesTheNumberOfSubSteps) {
    EXPECT_EQ(chaosStep(8, 30000).subSteps, 1);
    for (int noiWave = 8; noiWave <= 10; ++noiWave) {
        const float limit = noiWave == 8 ? 0.015f : noiWave == 9 ? 0.06f : 0.02f;
        for (std::uint32_t increment = 100; increment < 16777216; increment = increment * 3 / 2) {
            const ChaosStep step = chaosStep(noiWave, increment);
            EXPECT_LE(step.dt, limit);
            if (step.subSteps > 1) {
                EXPECT_GT(step.dt, limit / 2);
            }
        }
        EXPECT_LE(chaosStep(noiWave, 0xffffffff).subSteps, 512);
    }
}

TEST(Chaos, AttractorsStartAtTheOriginAndAreKickedOut) {
    for (const Kernel kernel : {kernels::fractal1, kernels::fractal3}) {
        const Samples out = noiseRun(kernel, 40, 30000, 4000);
        EXPECT_EQ(out[0], 0);
        EXPECT_GT(rmsOf(out), 100);
    }
}

TEST(Chaos, TheMemoriesStayFinite) {
    for (const Kernel kernel : {kernels::fractal1, kernels::fractal2, kernels::fractal3, kernels::fractal4})
        for (const std::uint32_t increment : {1u, 60000u, 4000000u, 16777215u, 0xffffffffu}) {
            Oscillator o;
            o.state.increment = increment;
            for (float& memory : o.state.work) memory = 1e30f;
            o.state.framePending = 255;
            for (int call = 0; call < 3; ++call) {
                o.run(kernel, 64);
                for (const float memory : o.state.work) ASSERT_TRUE(std::isfinite(memory));
            }
        }
}
