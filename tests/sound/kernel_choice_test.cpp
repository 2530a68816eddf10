#include <algorithm>
#include <cmath>

#include "kernel_fixture.h"
#include "sound/custom_wave.h"

using namespace vantoric;

namespace {

const SampleKernels noSamples;

KernelChoice choiceOf(int synType, int quality, bool modulated = false) {
    KernelChoice choice;
    choice.synType = synType;
    choice.quality = quality;
    choice.modulated = modulated;
    choice.internalRate = 96000.0f;
    return choice;
}

}  // namespace

TEST(KernelChoice, AnalogTakesTheSameKernelsAtEveryQuality) {
    for (const bool modulated : {false, true})
        for (int row = 0; row < 20; ++row) {
            KernelChoice low = choiceOf(analogType, lowCpu, modulated), blend = choiceOf(analogType, crossblendPw, modulated);
            low.anaWave = blend.anaWave = row;
            EXPECT_EQ(chooseKernel(low, noSamples), chooseKernel(blend, noSamples));
        }
}

TEST(KernelChoice, PulsePwIgnoresFmAndSync) {
    for (const bool modulated : {false, true}) {
        KernelChoice choice = choiceOf(analogType, highQuality, modulated);
        choice.anaWave = pulseWidthRow;
        EXPECT_EQ(chooseKernel(choice, noSamples), kernels::analogPulse);
    }
}

TEST(KernelChoice, ScannedWavesReadTwiceASampleAtLowRates) {
    KernelChoice choice = choiceOf(hypersawType, highQuality);
    EXPECT_EQ(chooseKernel(choice, noSamples), kernels::scanLinear);
    choice.internalRate = 44100.0f;
    EXPECT_EQ(chooseKernel(choice, noSamples), kernels::scanDouble);
    choice.modulated = true;
    EXPECT_EQ(chooseKernel(choice, noSamples), kernels::scanFmLinear);
    choice.modulated = false;
    choice.quality = lowCpu;
    EXPECT_EQ(chooseKernel(choice, noSamples), kernels::scanNearest);
}

TEST(KernelChoice, CustomWaveIsOneGradeAboveWavetable) {
    EXPECT_EQ(chooseKernel(choiceOf(customWaveType, lowCpu), noSamples),
              chooseKernel(choiceOf(wavetableType, highQuality), noSamples));
    EXPECT_EQ(chooseKernel(choiceOf(customWaveType, highQuality), noSamples),
              chooseKernel(choiceOf(wavetableType, crossblendPw), noSamples));
}

TEST(KernelChoice, WithoutASampleThereIsSilence) {
    const SampleKernels sample{kernels::frameNearest, kernels::frameLinear, kernels::frameBlend};
    KernelChoice choice = choiceOf(sampleType, lowCpu);
    EXPECT_EQ(chooseKernel(choice, sample), kernels::silent);
    choice.hasSample = true;
    EXPECT_EQ(chooseKernel(choice, sample), sample.read);
    choice.modulated = true;
    EXPECT_EQ(chooseKernel(choice, sample), sample.fmPlain);
    choice.quality = highQuality;
    EXPECT_EQ(chooseKernel(choice, sample), sample.fmLevels);
}

TEST(KernelChoice, BeyondTheListsThereIsSilence) {
    KernelChoice choice = choiceOf(noiseType, highQuality);
    for (choice.noiWave = noiseKernelCount; choice.noiWave < 128; ++choice.noiWave)
        EXPECT_EQ(chooseKernel(choice, noSamples), kernels::silent);
    choice = choiceOf(hypersawType, highQuality);
    for (choice.ssWave = stackWaveEnd; choice.ssWave < 128; ++choice.ssWave)
        EXPECT_EQ(chooseKernel(choice, noSamples), kernels::silent);
    for (int type = 6; type < 128; ++type) EXPECT_EQ(chooseKernel(choiceOf(type, 0), noSamples), kernels::silent);
    EXPECT_EQ(chooseKernel(choiceOf(wavetableType, 127), noSamples), kernels::frameBlend);
}

TEST(Preparation, AnAnaWaveBeyondTheListReadsAsRow19) {
    Oscillator o;
    for (const int anaWave : {19, 20, 127}) {
        OscillatorSetup setup;
        setup.synType = analogType;
        setup.anaWave = anaWave;
        prepareOscillator(o.state, setup, o.waves);
        EXPECT_EQ(o.state.analogRow, 19);
        EXPECT_EQ(o.state.hiss, 100);
    }
}

TEST(Preparation, AWaveThatFailedToLoadLeavesTheOscillatorSilent) {
    Oscillator o;
    OscillatorSetup setup;
    for (setup.wtWave = 0; setup.wtWave < 128; setup.wtWave += 127) {
        o.state.frameCount = 77;
        prepareOscillator(o.state, setup, o.waves);
        EXPECT_EQ(o.state.table, nullptr);
        EXPECT_EQ(o.state.frameCount, 1);
    }
}

TEST(Preparation, OnlyTheHenonMapStartsAwayFromTheOrigin) {
    constexpr int henon = 11;
    for (int noiWave = 0; noiWave < noiseKernelCount; ++noiWave) {
        Oscillator o;
        o.state.work[0] = o.state.work[1] = 0;
        OscillatorSetup setup;
        setup.synType = noiseType;
        setup.noiWave = noiWave;
        prepareOscillator(o.state, setup, o.waves);
        EXPECT_EQ(o.state.work[0], noiWave == henon ? 1.0f : 0.0f) << noiWave;
        EXPECT_EQ(o.state.work[1], noiWave == henon ? 1.0f : 0.0f) << noiWave;
    }
}

TEST(Preparation, ANoteTakesItsWaveAndFrames) {
    Oscillator o;
    o.makeRandomTable(6);
    o.waves.setWave(9, false, o.table.data(), 6);
    o.waves.setWave(2, true, o.table.data(), 3);
    OscillatorSetup setup;
    setup.wtWave = 9;
    setup.ssWave = 2;
    prepareOscillator(o.state, setup, o.waves);
    EXPECT_EQ(o.state.frameCount, 6);
    ASSERT_NE(o.state.table, nullptr);
    EXPECT_EQ(o.state.table[5 * cycleSamples + 4], o.table[5 * cycleSamples + 4]);
    setup.synType = hypersawType;
    prepareOscillator(o.state, setup, o.waves);
    EXPECT_EQ(o.state.frameCount, 3);
    setup.synType = customWaveType;
    CustomWaveSlot slot;
    setup.customWave = &slot;
    prepareOscillator(o.state, setup, o.waves);
    EXPECT_EQ(o.state.frameCount, 32);
    EXPECT_EQ(o.state.table, nullptr) << "it is not made";
    const auto made = std::make_shared<CustomWave>();
    slot.publish(made, slot.generation());
    prepareOscillator(o.state, setup, o.waves);
    EXPECT_EQ(o.state.table, made->samples.data());
}

TEST(Analog, TheSignFollowsThePolarityOfTheRow) {
    Oscillator o;
    o.fillStore([](int, int, int) { return 20000; });
    for (int row = 0; row < 20; ++row) {
        if (row == pulseWidthRow) continue;
        for (const Kernel kernel : {kernels::analogPlain, kernels::analogFm}) {
            o.state = OscillatorState{};
            OscillatorSetup setup;
            setup.synType = analogType;
            setup.anaWave = row;
            prepareOscillator(o.state, setup, o.waves);
            o.state.increment = 50000;
            const int last = o.run(kernel, 200).back();
            EXPECT_NEAR(last, row >= 8 && row <= 15 ? 10000 : -10000, 110) << row;
        }
    }
}

TEST(Analog, ReverseSyncTurnsTheWaveRound) {
    Oscillator o;
    o.fillStore([](int, int, int i) { return i * 8; });
    o.state.synced = 1;
    o.state.increment = 10000;
    o.run(kernels::analogFm, 11, {0, 0, 0, 0, 0, 5, 5, 5, 5, 5, 5});
    EXPECT_EQ(o.state.phaseDirection, -1);
    EXPECT_EQ(o.state.phase, (6 * 10000u - 5 * 10000u));
}

TEST(Analog, ASineCarriesItsHissAndNoMore) {
    Oscillator o;
    o.fillStore([](int, int, int) { return 0; });
    o.state.analogRow = 3;
    o.state.hiss = 18;
    int peak = 0;
    for (const std::int16_t sample : o.run(kernels::analogPlain, 5000)) peak = std::max(peak, std::abs(static_cast<int>(sample)));
    EXPECT_GE(peak, 16);
    EXPECT_LE(peak, 18);
}

TEST(Analog, APulseOfPwZeroIsSquareAndOfFullPwIsGone) {
    Oscillator o;
    o.fillStore([](int, int, int i) { return (i - 1024) * 30; });
    o.state.increment = 8192;
    o.state.framePending = 0;
    const double square = rmsOf(o.run(kernels::analogPulse, 4096));
    o.state.framePending = 511;
    const double thin = rmsOf(o.run(kernels::analogPulse, 4096));
    EXPECT_GT(square, 7000);
    EXPECT_LT(thin, 0.1 * square);
}

TEST(AnalogTuning, StaysWithinAFifthOfAPercent) {
    LinearCongruence random{5};
    for (int i = 0; i < 2000; ++i) {
        const double tuning = drawAnalogTuning(0, 1.0, random);
        EXPECT_GE(tuning, 0.9985);
        EXPECT_LE(tuning, 1.00151);
    }
}

TEST(StartPhases, AnyRandomStartLeavesPhasesWithinACycle) {
    for (int ssWave = 0; ssWave < 128; ++ssWave)
        for (const float start : {0.0f, 0.5f, 1.0f, -7.0f, 3e8f, std::nanf("")})
            for (const float pw : {0.0f, 1.0f, -2.0f, std::nanf("")}) {
                OscillatorState state;
                LinearCongruence random{1};
                drawStartPhases(state, random);
                setupFirstTickPhases(state, start, pw, ssWave, hypersawType, 0, random);
                EXPECT_LE(state.phase, phaseMask);
                for (const std::uint32_t phase : state.subPhase) EXPECT_LE(phase, phaseMask);
            }
}

TEST(StartPhases, ASampleStartsAtAShareOfItsLength) {
    OscillatorState state;
    LinearCongruence random{1};
    setupFirstTickPhases(state, 0.5f, 0.0f, 0, sampleType, 1000, random);
    EXPECT_EQ(state.phase >> 13, 500u);
}
