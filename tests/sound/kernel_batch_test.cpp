// Kernels in registers of four and eight lanes, and side by side, against calling them one after the other.
#include "sound/kernel_batch.h"

#include <map>
#include <string>

#include "base/math.h"
#include "kernel_fixture.h"
#include "sound/custom_wave.h"
#include "sound/filters/wide_loops.h"

using namespace vantoric;

namespace {

const std::map<std::string, Kernel> everyKernel = {
    {"silent", kernels::silent},
    {"frameNearest", kernels::frameNearest},
    {"frameLinear", kernels::frameLinear},
    {"frameBlend", kernels::frameBlend},
    {"frameFmNearest", kernels::frameFmNearest},
    {"frameFmLinear", kernels::frameFmLinear},
    {"scanNearest", kernels::scanNearest},
    {"scanLinear", kernels::scanLinear},
    {"scanDouble", kernels::scanDouble},
    {"scanFmLinear", kernels::scanFmLinear},
    {"analogPlain", kernels::analogPlain},
    {"analogFm", kernels::analogFm},
    {"analogPulse", kernels::analogPulse},
    {"hypersaw3", kernels::hypersaw3},
    {"hypersaw5", kernels::hypersaw5},
    {"hypersaw7", kernels::hypersaw7},
    {"hypersaw9", kernels::hypersaw9},
    {"hypersquare9", kernels::hypersquare9},
    {"hypernoise9", kernels::hypernoise9},
    {"supersawJp", kernels::supersawJp},
    {"supersawClean", kernels::supersawClean},
    {"supernoise", kernels::supernoise},
    {"White", kernels::noiseWhite},
    {"Lowpass", kernels::noiseLowpass},
    {"Bandpass", kernels::noiseBandpass},
    {"Random", kernels::noiseRandom},
    {"Random Ramp", kernels::noiseRandomRamp},
    {"Digital", kernels::noiseDigital},
    {"Bandlimit", kernels::noiseBandlimit},
    {"Synced", kernels::noiseSynced},
    {"Pink", kernels::noisePink},
    {"8Bit", kernels::noise8Bit},
    {"Fractal1", kernels::fractal1},
    {"Fractal2", kernels::fractal2},
    {"Fractal3", kernels::fractal3},
    {"Fractal4", kernels::fractal4},
};

// Everything that a kernel may leave behind.
auto fieldsOf(const OscillatorState& state) {
    std::vector<double> fields = {double(state.scanPhase),     double(state.phase),     double(state.lastTotalPhase),
                                  double(state.fmDepth),       double(state.frame),     double(state.blend),
                                  double(state.seed),          double(state.lowpass),   double(state.lastFmOffset),
                                  double(state.lastSyncInput), double(state.alternate), double(state.previousRead),
                                  double(state.phaseDirection)};
    for (const std::uint32_t phase : state.subPhase) fields.push_back(phase);
    for (const float memory : state.work) fields.push_back(memory);
    return fields;
}

class KernelLanes : public testing::TestWithParam<bool> {
protected:
    static constexpr int most = KernelBatch::capacity;

    KernelLanes() {
        filters::useWideLoops(GetParam());
        source_.fillStore([&, chance = LinearCongruence{9}](int, int, int) mutable {
            const std::uint32_t drawn = chance.next();
            return (drawn & 0x700) == 0 ? (drawn >> 31 != 0 ? 32767 : -32768) : static_cast<std::int16_t>(drawn >> 16);
        });
        for (auto& input : inputs_) {
            input.resize(maxTickSamples);
            const int slope = static_cast<int>(drawn() % 700);
            for (int i = 0; i < maxTickSamples; ++i) input[i] = static_cast<std::int16_t>((i * slope) % 20000 - 9000);
        }
    }
    ~KernelLanes() override { filters::useWideLoops(true); }

    std::uint32_t drawn() { return chance_.next() >> 8; }

    // A state as a note may have it, with any pitch, frame and memories.
    OscillatorState anyState() {
        OscillatorState state;
        state.table = source_.table.data();
        state.frameCount = 128;
        state.frame = static_cast<int>(drawn() % 128);
        state.framePending = drawn() % 2 == 0 ? state.frame : static_cast<int>(drawn() % 128);
        state.blend = static_cast<std::uint16_t>(drawn());
        state.blendPending = static_cast<std::uint16_t>(drawn());
        state.phase = state.scanPhase = drawn() & phaseMask;
        state.scanPhase &= 0x7fffff;
        state.increment = (drawn() & phaseMask) >> (2 + drawn() % 10);
        state.scanIncrement = drawn() % 5000;
        state.fmDepth = static_cast<std::int32_t>(drawn() % 131071);
        state.fmDepthStep = static_cast<std::int32_t>(drawn() % 401) - 200;
        state.synced = static_cast<std::uint8_t>(drawn() % 2);
        state.phaseDirection = drawn() % 2 == 0 ? 1 : -1;
        state.polarity = drawn() % 2 == 0 ? 1 : -1;
        state.analogRow = static_cast<std::uint8_t>(drawn() % analogRowCount);
        state.hiss = static_cast<std::int16_t>(drawn() % 200);
        state.previousRead = static_cast<std::int32_t>(drawn()) - (1 << 23);
        state.lowpass = static_cast<float>(drawn());
        state.alternate = static_cast<std::uint8_t>(drawn() % 2);
        state.seed = drawn();
        for (std::uint32_t& phase : state.subPhase) phase = drawn() & phaseMask;
        for (int k = 0; k < 4; ++k) state.work[k] = static_cast<float>(static_cast<int>(drawn() % 2001) - 1000) * 0.001f;
        return state;
    }

    const Samples& input(int voice) const { return inputs_[voice % 4]; }

    Oscillator source_;
    LinearCongruence chance_{4711};
    Samples inputs_[4];
};

std::string lanesName(const testing::TestParamInfo<bool>& info) { return info.param ? "EightLanes" : "FourLanes"; }

}  // namespace

INSTANTIATE_TEST_SUITE_P(Kernels, KernelLanes, testing::Bool(), lanesName);

TEST_P(KernelLanes, TheLengthOfTheCallsDoesNotMatter) {
    for (const auto& [name, kernel] : everyKernel)
        for (int round = 0; round < 12; ++round) {
            const OscillatorState start = anyState();
            OscillatorState whole = start, single = start;
            RandomSources wholeDraws{{drawn()}, {drawn()}}, singleDraws = wholeDraws;
            Samples expected(200), out(200);
            kernel({source_.engine, source_.waves, wholeDraws}, expected.data(), 200, whole, input(0).data());
            for (int i = 0; i < 200; ++i)
                kernel({source_.engine, source_.waves, singleDraws}, &out[i], 1, single, input(0).data() + i);
            ASSERT_EQ(out, expected) << name << " " << round;
            ASSERT_EQ(fieldsOf(single), fieldsOf(whole)) << name << " " << round;
            ASSERT_EQ(singleDraws.congruence.state, wholeDraws.congruence.state) << name;
            ASSERT_EQ(singleDraws.hash.counter, wholeDraws.hash.counter) << name;
        }
}

// From steps of 128 samples on FM reads a mean of several places: 128 itself, and where their number doubles.
TEST_P(KernelLanes, DeepFmReadsTheSameInRegistersAsAlone) {
    for (const int samples : {127, 128, 129, 256, 257, 512, 513, 1024, 1025, 2048, 2049}) {
        OscillatorState start = anyState();
        start.fmDepth = 16;  // an input of 1 moves the read by 1
        start.fmDepthStep = 0;
        start.synced = 0;
        start.lastFmOffset = 0;
        start.increment = static_cast<std::uint32_t>(samples) << 13;
        start.lastTotalPhase = 0;
        for (const Kernel kernel : {kernels::frameFmLinear, kernels::scanFmLinear, kernels::analogFm}) {
            OscillatorState whole = start, single = start;
            RandomSources wholeDraws{{1}, {2}}, singleDraws = wholeDraws;
            Samples expected(96), out(96), steady(96, 0);
            kernel({source_.engine, source_.waves, wholeDraws}, expected.data(), 96, whole, steady.data());
            for (int i = 0; i < 96; ++i)
                kernel({source_.engine, source_.waves, singleDraws}, &out[i], 1, single, steady.data() + i);
            ASSERT_EQ(out, expected) << samples;
        }
    }
}

TEST_P(KernelLanes, ABatchGivesWhatCallsInTurnGive) {
    for (const auto& [name, kernel] : everyKernel)
        for (const int voices : {1, 2, 5, 8, 9, 16, 17, 37, most})
            for (const int count : {96, 1, 61, 256}) {
                source_.engine.internalRate = drawn() % 2 == 0 ? 96000.0f : 44100.0f;
                RandomSources inTurn{{drawn()}, {drawn()}}, batched = inTurn;
                std::vector<OscillatorState> expectedStates, states;
                for (int v = 0; v < voices; ++v) expectedStates.push_back(anyState());
                states = expectedStates;
                std::vector<Samples> expected(most, Samples(256, 77)), out = expected;
                for (int v = 0; v < voices; ++v)
                    kernel({source_.engine, source_.waves, inTurn}, expected[v].data(), count, expectedStates[v],
                           input(v).data());
                KernelBatch batch(source_.engine, source_.waves, batched, count);
                for (int v = 0; v < voices; ++v) batch.add(batchedKernel(kernel), out[v].data(), states[v], input(v).data());
                batch.render();
                for (int v = 0; v < voices; ++v) {
                    ASSERT_EQ(out[v], expected[v]) << name << " voice " << v << " of " << voices;
                    ASSERT_EQ(fieldsOf(states[v]), fieldsOf(expectedStates[v])) << name << " voice " << v << " of " << voices;
                }
                ASSERT_EQ(batched.congruence.state, inTurn.congruence.state) << name;
                ASSERT_EQ(batched.hash.counter, inTurn.hash.counter) << name;
            }
}

// Three oscillators a voice of any kernels, the third reading the buffer of the second: plain ones in one batch, modulated
// ones in another that is rendered later.
TEST_P(KernelLanes, BatchesThatShareTheDrawsKeepTheirOrder) {
    std::vector<Kernel> plain;
    for (const auto& [name, kernel] : everyKernel)
        if (name.find("Fm") == std::string::npos) plain.push_back(kernel);
    const Kernel modulated[] = {kernels::frameFmLinear, kernels::scanFmLinear, kernels::analogFm};
    for (int round = 0; round < 40; ++round) {
        const int voices = 1 + static_cast<int>(drawn() % 16), count = 96;
        RandomSources inTurn{{drawn()}, {drawn()}}, batched = inTurn;
        std::vector<OscillatorState> expectedStates, states;
        std::vector<Kernel> chosen;
        for (int k = 0; k < 3 * voices; ++k) {
            expectedStates.push_back(anyState());
            chosen.push_back(k % 3 < 2 ? plain[drawn() % plain.size()] : modulated[drawn() % 3]);
        }
        states = expectedStates;
        std::vector<Samples> expected(3 * voices, Samples(count, 77)), out = expected;
        const Samples nothing(count, 0);
        for (int k = 0; k < 3 * voices; ++k)
            chosen[k]({source_.engine, source_.waves, inTurn}, expected[k].data(), count, expectedStates[k],
                      k % 3 == 2 ? expected[k - 1].data() : nothing.data());
        KernelBatch first(source_.engine, source_.waves, batched, count), second(source_.engine, source_.waves, batched, count);
        for (int k = 0; k < 3 * voices; ++k)
            (k % 3 == 2 ? second : first)
                .add(batchedKernel(chosen[k]), out[k].data(), states[k], k % 3 == 2 ? out[k - 1].data() : nothing.data());
        first.render();
        second.render();
        ASSERT_EQ(out, expected) << round;
        ASSERT_EQ(batched.congruence.state, inTurn.congruence.state);
        ASSERT_EQ(batched.hash.counter, inTurn.hash.counter);
    }
}

// The last group that runs side by side does not fill its rows: it ends with the last call.
TEST_P(KernelLanes, AFullBatchEndsWithItsLastCall) {
    const auto kernelOf = [](int voice) { return voice < 5 ? kernels::frameLinear : kernels::scanLinear; };
    std::vector<OscillatorState> expectedStates;
    for (int v = 0; v < most; ++v) expectedStates.push_back(anyState());
    std::vector<OscillatorState> states = expectedStates;
    std::vector<Samples> expected(most, Samples(96, 77)), out = expected;
    RandomSources random;
    KernelBatch batch(source_.engine, source_.waves, random, 96);
    for (int v = 0; v < most; ++v) {
        kernelOf(v)({source_.engine, source_.waves, random}, expected[v].data(), 96, expectedStates[v], input(v).data());
        batch.add(batchedKernel(kernelOf(v)), out[v].data(), states[v], input(v).data());
    }
    batch.render();
    EXPECT_EQ(out, expected);
}

// Without its wave an analog kernel draws nothing, so that what is drawn after it stays as it is.
TEST_P(KernelLanes, ABatchPassesOverNoDrawsOfAnOscillatorWithoutItsWave) {
    const WaveStore empty;
    for (const Kernel kernel : {kernels::analogPlain, kernels::analogFm, kernels::analogPulse}) {
        OscillatorState missing = anyState(), expectedNoise = anyState(), noise = expectedNoise;
        RandomSources inTurn{{drawn()}, {drawn()}}, batched = inTurn;
        Samples expected(96), out(96), untouched(96, 77);
        kernels::noiseLowpass({source_.engine, empty, inTurn}, expected.data(), 96, expectedNoise, nullptr);
        KernelBatch batch(source_.engine, empty, batched, 96);
        batch.add(batchedKernel(kernel), untouched.data(), missing, input(0).data());
        batch.add(batchedKernel(kernels::noiseLowpass), out.data(), noise, nullptr);
        batch.render();
        EXPECT_EQ(out, expected);
        EXPECT_EQ(untouched, Samples(96, 77));
        EXPECT_EQ(batched.hash.counter, inTurn.hash.counter);
        EXPECT_EQ(batched.congruence.state, inTurn.congruence.state);
    }
}

// As runKernel() does: silent while the wave is being made, then fading in, alone and side by side, in the batch or at once.
TEST_P(KernelLanes, ABatchFadesInWhatWasSilent) {
    for (const auto& [name, kernel] : everyKernel) {
        OscillatorState expectedState = anyState();
        expectedState.fadeIn = 200;
        OscillatorState state = expectedState;
        RandomSources inTurn{{drawn()}, {drawn()}}, batched = inTurn;
        Samples expected(96), out(96);
        const KernelContext context{source_.engine, source_.waves, inTurn};
        for (int block = 0; block < 3; ++block) {
            runKernel(kernel, context, expected.data(), 96, expectedState, input(0).data());
            KernelBatch batch(source_.engine, source_.waves, batched, 96);
            batch.add(batchedKernel(kernel), out.data(), state, input(0).data());
            batch.render();
            ASSERT_EQ(out, expected) << name;
            ASSERT_EQ(state.fadeIn, expectedState.fadeIn) << name;
        }
        EXPECT_EQ(state.fadeIn, 0) << name;
    }
}

TEST_P(KernelLanes, ABatchKeepsAnOscillatorSilentWhoseCustomWaveIsNotMade) {
    const CustomWaveSlot slot;
    OscillatorState state = anyState();
    state.customWave = &slot;
    Samples out(96, 77);
    RandomSources random;
    KernelBatch batch(source_.engine, source_.waves, random, 96);
    batch.add(batchedKernel(kernels::frameLinear), out.data(), state, input(0).data());
    batch.render();
    EXPECT_EQ(out, Samples(96, 0));
    EXPECT_EQ(state.fadeIn, 256);
}

TEST_P(KernelLanes, StacksSumTheNearestReadsOfTheirVoices) {
    const struct {
        Kernel kernel;
        int ssWave, wave, frame;
        float scale;
    } stacks[] = {{kernels::hypersaw3, 3, vaTriangleSaw, 63, 0.16f},
                  {kernels::hypersaw5, 4, vaTriangleSaw, 63, 0.132f},
                  {kernels::hypersaw7, 5, vaTriangleSaw, 63, 0.1f},
                  {kernels::hypersaw9, 6, vaTriangleSaw, 63, 0.08f},
                  {kernels::hypersquare9, 7, vaSquareImpulse, 0, 0.08f}};
    for (const auto& [kernel, ssWave, wave, frame, scale] : stacks) {
        source_.state = anyState();
        std::uint32_t steps[stackVoices], phases[stackVoices];
        const int voices = stackSteps(ssWave, source_.state.increment, source_.state.blendPending, steps);
        std::copy_n(source_.state.subPhase, stackVoices, phases);
        const std::int16_t* cycle = source_.waves.cycle(wave, frame, levelOf(source_.state.increment));
        const Samples out = source_.run(kernel, 203);
        for (const std::int16_t sample : out) {
            int sum = 0;
            for (int k = 0; k < voices; ++k) {
                phases[k] = (phases[k] + steps[k]) & phaseMask;
                sum += cycle[phases[k] >> 13];
            }
            ASSERT_EQ(sample, truncateToSample(static_cast<float>(-sum) * scale)) << ssWave;
        }
    }
}

// The scan of a wave with more frames than 32 bits of a product allow.
TEST_P(KernelLanes, AScanReadsTheFrameThatItsPhaseNames) {
    Oscillator o;
    o.table.assign(static_cast<std::size_t>(1000) * cycleSamples, 0);
    for (int frame = 0; frame < 1000; ++frame)
        std::fill_n(&o.table[static_cast<std::size_t>(frame) * cycleSamples], cycleSamples,
                    static_cast<std::int16_t>(frame * 16));
    o.state.table = o.table.data();
    o.state.frameCount = 1000;
    o.state.increment = 4000;  // level 0
    for (const Kernel kernel : {kernels::scanNearest, kernels::scanLinear}) {
        o.state.scanPhase = 5;
        o.state.scanIncrement = 123457;
        const Samples out = o.run(kernel, 250);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const std::uint64_t phase = (5 + (i + 1) * 123457) & 0x7fffff;
            ASSERT_EQ(out[i], static_cast<int>((phase * 1000) >> 23) * 8) << i;
        }
    }
}

TEST(Stacks, TheSupersawsFactorsAreTheExponentialForEveryDetune) {
    constexpr double exponents[] = {4.5907657e-12, -4.590784e-12, 1.404236e-11, -1.512249e-11, 2.3763942e-11, -2.7139528e-11};
    constexpr std::uint32_t increment = 0x7fffffff;  // tells any two floats around 1 apart
    for (int detune = 0; detune < 65536; ++detune) {
        std::uint32_t steps[stackVoices];
        stackSteps(9, increment, static_cast<std::uint16_t>(detune), steps);
        const double p = static_cast<double>(detune) * detune;
        for (int k = 0; k < 6; ++k) {
            const double factor = math::exp(static_cast<float>(p * exponents[k]));
            ASSERT_EQ(steps[k + 1], static_cast<std::uint32_t>(static_cast<std::int64_t>(increment * factor))) << detune;
        }
    }
}
