#include <algorithm>

#include "kernel_fixture.h"
#include "sound/oscillator_control.h"

using namespace vantoric;

namespace {

Samples constantInput(int count, std::int16_t value) { return Samples(static_cast<std::size_t>(count), value); }

}  // namespace

TEST(MipMap, DoublesItsStepFromLevelToLevel) {
    EXPECT_EQ(mipMap[0], 0);
    EXPECT_EQ(mipMap[1], 1);
    for (int level = 2; level < 7; ++level) {
        EXPECT_EQ(mipMap[static_cast<std::size_t>(1 << (level - 1))], level);
        EXPECT_EQ(mipMap[static_cast<std::size_t>((1 << level) - 1)], level);
    }
    EXPECT_EQ(mipMap[64], 7);
    EXPECT_EQ(mipMap[2047], 7);
}

TEST(TableKernels, ReadingInGroupsGivesTheSameBitsAsSampleBySample) {
    for (const std::uint32_t increment : {1u, 300u, 8191u, 8192u, 76896u, 500001u, 2097152u, 5000000u, 16777215u}) {
        Oscillator o;
        o.makeRandomTable(3);
        o.state.increment = increment;
        o.state.phase = 16000000;
        o.state.framePending = 2;
        Samples expected;
        const int level = levelOf(increment);
        int frame = 0;
        std::uint32_t phase = o.state.phase;
        for (int i = 0; i < 1000; ++i) {
            const std::uint32_t before = phase;
            phase = (phase + increment) & phaseMask;
            if (phase < before) frame = 2;
            expected.push_back(static_cast<std::int16_t>(linearRead(o.table.data() + cycleOffset(3, frame, level), phase)));
        }
        EXPECT_EQ(o.run(kernels::frameLinear, 1000), expected) << increment;
        EXPECT_EQ(o.state.phase, phase) << increment;
    }
}

TEST(TableKernels, BlendingReadsFourSamples) {
    Oscillator o;
    o.makeRandomTable(4);
    o.state.frame = o.state.framePending = 1;
    o.state.blend = o.state.blendPending = 40000;
    const Samples out = o.run(kernels::frameBlend, 600);
    std::uint32_t phase = 0;
    for (const std::int16_t sample : out) {
        phase = (phase + o.state.increment) & phaseMask;
        const std::int16_t* near = o.table.data() + cycleOffset(4, 1, levelOf(o.state.increment));
        const std::int16_t* far = near + cycleSamples;
        const std::uint32_t i = phase >> 13, next = (i + 1) & 2047;
        const auto mix = [&](std::uint32_t at) { return (near[at] * (65535 - 40000) + far[at] * 40000) >> 16; };
        ASSERT_EQ(sample, linearSum(mix(i), mix(next), phase) >> 14);
    }
}

TEST(TableKernels, AboveASixteenthOfTheRateLevelSevenRunsAtTheRightStep) {
    Oscillator o;
    o.makeTable(1, [](int level, int, int i) { return level == 7 ? i * 8 : -32000; });
    o.state.increment = 3 << 20;  // 384 table samples
    const Samples out = o.run(kernels::frameNearest, 4);
    EXPECT_EQ(out, (Samples{384 * 4, 768 * 4, 1152 * 4, 1536 * 4}));
}

TEST(TableKernels, NearestAndLinearReadsDeliverHalfTheStoredScale) {
    Oscillator o;
    o.makeTable(1, [](int, int, int) { return 20000; });
    for (const Kernel kernel : {kernels::frameNearest, kernels::frameLinear, kernels::frameFmNearest, kernels::frameFmLinear,
                                kernels::scanNearest, kernels::scanLinear, kernels::scanDouble, kernels::scanFmLinear})
        EXPECT_EQ(o.run(kernel, 20).back(), 10000);
}

TEST(TableKernels, FmBeyondOneCycleASampleGivesSilenceInsteadOfNoise) {
    Oscillator o;
    o.makeTable(1, [](int, int, int) { return 20000; });
    o.state.fmDepth = 131070;
    Samples input;
    for (int i = 0; i < 20; ++i) input.push_back(i % 2 == 0 ? 16000 : -16000);
    const Samples out = o.run(kernels::frameFmLinear, 20, input);
    for (std::size_t i = 0; i < out.size(); ++i) EXPECT_EQ(out[i], 0) << i;
}

TEST(TableKernels, FmMovesTheReadAndNotThePitch) {
    Oscillator o, plain;
    o.makeRandomTable(1);
    plain.makeRandomTable(1);
    o.state.fmDepth = 20000;
    o.run(kernels::frameFmLinear, 200, constantInput(200, 5000));
    plain.run(kernels::frameLinear, 200);
    EXPECT_EQ(o.state.phase, plain.state.phase);
}

TEST(TableKernels, ASilentModulatorNeverRestarts) {
    for (const Kernel kernel : {kernels::frameFmNearest, kernels::frameFmLinear, kernels::scanFmLinear}) {
        Oscillator o;
        o.makeRandomTable(1);
        o.state.synced = 1;
        o.run(kernel, 250, constantInput(250, 0));
        EXPECT_EQ(o.state.phase, (250 * o.state.increment) & phaseMask);
    }
}

TEST(TableKernels, ARiseFromExactlyZeroIsACrossing) {
    Oscillator o;
    o.makeRandomTable(1);
    o.state.synced = 1;
    o.state.phase = 5000000;
    o.run(kernels::frameFmNearest, 3, {0, 0, 7});
    EXPECT_EQ(o.state.phase, 0u);
    EXPECT_EQ(o.state.lastSyncInput, 7);
}

TEST(TableKernels, ExactSyncStartsBetweenTheSamples) {
    Oscillator o;
    o.makeRandomTable(1);
    o.state.synced = 1;
    o.state.lastSyncInput = -300;
    o.run(kernels::frameFmLinear, 1, {100});
    EXPECT_EQ(o.state.phase, o.state.increment - o.state.increment * 300 / 400);
}

TEST(TableKernels, WithoutAWaveTheBufferStays) {
    for (const Kernel kernel :
         {kernels::frameNearest, kernels::frameLinear, kernels::frameBlend, kernels::frameFmNearest, kernels::frameFmLinear,
          kernels::scanNearest, kernels::scanLinear, kernels::scanDouble, kernels::scanFmLinear, kernels::analogPlain,
          kernels::analogFm, kernels::analogPulse, kernels::hypersaw3, kernels::hypersquare9, kernels::hypernoise9,
          kernels::supersawClean, kernels::supernoise}) {
        Oscillator o;
        EXPECT_EQ(o.run(kernel, 5, {}, 99), Samples(5, 99));
        EXPECT_EQ(o.state.phase, 0u);
    }
}

TEST(TableKernels, BeforeTheFirstTickTheBufferStays) {
    for (const Kernel kernel :
         {kernels::frameNearest, kernels::frameLinear, kernels::frameBlend, kernels::frameFmNearest, kernels::frameFmLinear}) {
        Oscillator o;
        o.makeRandomTable(1);
        o.state.frame = o.state.framePending = -1;
        EXPECT_EQ(o.run(kernel, 5, {}, 99), Samples(5, 99));
    }
}

TEST(TableKernels, TheLastFrameBlendsWithItself) {
    Oscillator o;
    o.makeTable(3, [](int, int frame, int) { return frame == 2 ? 16384 : -9000; });
    o.state.frame = o.state.framePending = 2;
    o.state.blend = o.state.blendPending = 50000;
    for (const std::int16_t sample : o.run(kernels::frameBlend, 50)) EXPECT_NEAR(sample, 8192, 1);
}

TEST(TableKernels, AFullPwReachesTheLastFrameAndNeverOverrunsIt) {
    for (int frames = 1; frames <= 512; ++frames)
        for (const float pw : {1.0f, 1.7f, 1e30f}) EXPECT_EQ(wavePosition(frames, pw).frame, frames - 1);
    EXPECT_EQ(wavePosition(64, -3.0f).frame, 0);
    EXPECT_EQ(wavePosition(64, std::nanf("")).frame, 0);
}

TEST(TableKernels, PwHasNoEffectOnAWaveOfOneFrame) {
    Samples first;
    for (const float pw : {0.0f, 0.37f, 1.0f}) {
        Oscillator o;
        o.makeRandomTable(1);
        o.state.frame = -1;
        setPosition(o.state, pw);
        const Samples out = o.run(kernels::frameLinear, 500);
        if (first.empty()) first = out;
        EXPECT_EQ(out, first);
    }
}

TEST(TableKernels, AScanAtRestStaysOnItsFrame) {
    Oscillator o;
    o.makeTable(16, [](int, int frame, int) { return frame * 1000; });
    o.state.scanPhase = 5 << 19;  // frame 5 of 16
    EXPECT_EQ(o.run(kernels::scanNearest, 300), Samples(300, 2500));
}

TEST(TableKernels, APassThroughTheFramesTakesThirtyTwoCyclesAtFullPw) {
    const double d = 0.01;
    EXPECT_NEAR(8388608.0 / scanIncrement(d, 1.0f), 32.0 / d, 2.0);
    EXPECT_EQ(scanIncrement(d, 0.0f), 0u);
}

TEST(TableKernels, RandomStatesNeverReadOutside) {
    LinearCongruence chance{99};
    Oscillator o;
    o.fillStore([](int, int frame, int i) { return frame * 64 + i; });
    Samples input(256);
    for (int round = 0; round < 400; ++round) {
        o.makeRandomTable(3, chance.next());
        o.state = OscillatorState{};
        o.state.table = o.table.data();
        o.state.frameCount = 3;
        o.state.frame = static_cast<int>(chance.next() >> 8) % 3;
        o.state.framePending = static_cast<int>(chance.next() >> 8) % 3;
        o.state.phase = chance.next();
        o.state.increment = chance.next() >> (chance.next() >> 27);
        o.state.scanPhase = chance.next();
        o.state.scanIncrement = chance.next();
        o.state.fmDepth = static_cast<std::int32_t>(chance.next());
        o.state.fmDepthStep = static_cast<std::int32_t>(chance.next());
        o.state.lastTotalPhase = static_cast<std::int32_t>(chance.next());
        o.state.lastFmOffset = static_cast<std::int32_t>(chance.next());
        o.state.synced = static_cast<std::uint8_t>(round & 1);
        o.state.blendPending = static_cast<std::uint16_t>(chance.next() >> 16);
        o.state.analogRow = static_cast<std::uint8_t>(round % analogRowCount);
        for (std::uint32_t& phase : o.state.subPhase) phase = chance.next();
        for (std::int16_t& sample : input) sample = static_cast<std::int16_t>(chance.next() >> 16);
        const OscillatorState start = o.state;
        const auto runFromStart = [&](Kernel kernel) {
            o.state = start;
            EXPECT_EQ(o.run(kernel, 256, input).size(), 256u);
        };
        for (const Kernel kernel : {kernels::frameNearest, kernels::frameLinear, kernels::frameBlend, kernels::frameFmNearest,
                                    kernels::frameFmLinear, kernels::scanNearest, kernels::scanLinear, kernels::scanDouble,
                                    kernels::scanFmLinear, kernels::analogPlain, kernels::analogFm, kernels::analogPulse})
            runFromStart(kernel);
        for (const Kernel kernel : stackKernels) runFromStart(kernel);
        if (round % 40 == 0)
            for (const Kernel kernel : noiseKernels) runFromStart(kernel);
    }
}

TEST(TableKernels, APhaseThatASampleLeftBehindCountsWithinItsCycle) {
    const std::uint32_t left = 524287u << 13;  // where a long sample ends
    for (const Kernel kernel : {kernels::frameNearest, kernels::frameLinear, kernels::frameBlend, kernels::frameFmNearest,
                                kernels::frameFmLinear, kernels::scanNearest, kernels::scanLinear, kernels::scanDouble}) {
        Oscillator o;
        o.makeRandomTable(3);
        o.state.frame = o.state.framePending = 1;
        o.state.increment = 2000;
        const OscillatorState fresh = o.state;
        o.state.phase = left;
        const Samples out = o.run(kernel, 100);
        o.state = fresh;
        o.state.phase = left & phaseMask;
        EXPECT_EQ(out, o.run(kernel, 100));
    }
}

TEST(TableKernels, TheLengthOfTheCallsDoesNotMatter) {
    Oscillator o;
    o.makeRandomTable(2);
    Samples joined;
    for (const int count : {1, 7, 8, 9, 88, 96, 256, 3}) {
        const Samples part = o.run(kernels::frameLinear, count);
        joined.insert(joined.end(), part.begin(), part.end());
    }
    Samples expected;
    std::uint32_t phase = 0;
    for (std::size_t i = 0; i < joined.size(); ++i) {
        phase = (phase + o.state.increment) & phaseMask;
        expected.push_back(
            static_cast<std::int16_t>(linearRead(o.table.data() + cycleOffset(2, 0, levelOf(o.state.increment)), phase)));
    }
    EXPECT_EQ(joined, expected);
}

TEST(TableKernels, ACrossfadeIsThatOfEachSampleWhateverTheLengthOfTheCalls) {
    for (const std::uint32_t increment : {3000u, 76896u, 700000u}) {
        Oscillator o;
        o.makeRandomTable(3);
        // Both ends of the scale side by side, where sums are largest.
        for (std::size_t i = 0; i < o.table.size(); i += 5) o.table[i] = i % 2 == 0 ? -32768 : 32767;
        o.state.increment = increment;
        std::uint32_t phase = 0;
        int frame = 0, blend = 0;
        for (const int count : {1, 7, 8, 9, 88, 96, 256, 3, 256, 256, 256}) {
            const int pendingFrame = count % 3, pendingBlend = count == 88 ? 65535 : count == 96 ? 32768 : 200 * count;
            o.state.framePending = pendingFrame;
            o.state.blendPending = static_cast<std::uint16_t>(pendingBlend);
            const Samples part = o.run(kernels::frameBlend, count);
            for (int i = 0; i < count; ++i) {
                phase += increment;
                if (phase > phaseMask) {
                    phase &= phaseMask;
                    frame = pendingFrame;
                    blend = pendingBlend;
                }
                const auto at = [&](int f, std::uint32_t index) {
                    return o.table[cycleOffset(3, std::min(f, 2), levelOf(increment)) + (index & 2047)];
                };
                const auto faded = [&](std::uint32_t index) {
                    return (at(frame, index) * (65535 - blend) + at(frame + 1, index) * blend) >> 16;
                };
                const std::uint32_t index = phase >> 13;
                ASSERT_EQ(part[i], linearSum(faded(index), faded(index + 1), phase) >> 14) << increment << " sample " << i;
            }
        }
    }
}

// Groups of samples and single ones, forward, backward, of either polarity, across the end of the cycle.
TEST(AnalogKernels, TheLengthOfTheCallsDoesNotMatter) {
    for (const std::uint32_t increment : {900u, 76896u, 1500000u, 0xff000000u}) {
        for (const int direction : {1, -1}) {
            Oscillator whole, parts;
            for (Oscillator* o : {&whole, &parts}) {
                o->fillStore([&, source = LinearCongruence{9}](int, int, int) mutable {
                    return static_cast<std::int16_t>(source.next() >> 16);
                });
                o->state = OscillatorState();
                o->state.increment = increment;
                o->state.phaseDirection = static_cast<std::int8_t>(direction);
                o->state.polarity = static_cast<std::int8_t>(increment == 900u ? -1 : 1);
                o->state.hiss = 80;
                o->state.analogRow = 2;
            }
            const Samples expected = whole.run(kernels::analogPlain, 240);
            Samples joined;
            for (int i = 0; i < 240; ++i) joined.push_back(parts.run(kernels::analogPlain, 1)[0]);
            EXPECT_EQ(joined, expected) << increment << " " << direction;
            EXPECT_EQ(parts.state.phase, whole.state.phase);
            EXPECT_EQ(parts.state.lowpass, whole.state.lowpass);
            EXPECT_EQ(parts.random.hash.counter, whole.random.hash.counter);
            EXPECT_GT(*std::max_element(expected.begin(), expected.end()), 1000);
        }
    }
}
