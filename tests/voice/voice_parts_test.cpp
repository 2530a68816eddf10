// What a voice hands on to its parts: at a note-on, at every tick, from one oscillator to the next. The parts
// themselves have tests of their own.
#include <gtest/gtest.h>

#include <set>

#include "sound/kernels.h"
#include "tests/voice/layer_bench.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::LayerBench;

constexpr int monophonic = 0;
constexpr int lowPass24 = 4, distortionDegrade = 18, distortionCrush = 7;
constexpr int sourceVelocity = 18, sourceModwheel = 19, sourceImpulse = 36, sourceDecay16s = 48;
constexpr int effectDelay = 6, effectEcho = 48;

int destinationRow(int number) {
    int row = 0;
    while (destinationNumber(row) != number) ++row;
    return row;
}

struct VoiceParts : ::testing::Test, LayerBench {
    Voice& first() { return voice(15); }
    Voice& second() { return voice(14); }

    // A wave of 2048-sample cycles for entry 1 of the wavetable list, or of the scanned list.
    void addWave(int frames, bool scanned = false) {
        std::vector<std::int16_t> wave(static_cast<std::size_t>(frames) * mipLevels * cycleSamples);
        for (std::size_t i = 0; i < wave.size(); ++i) wave[i] = static_cast<std::int16_t>(i * 7919 % 20000);
        waves.setWave(1, scanned, wave.data(), frames);
    }
    void connect(int source, int destination, float amount) {
        setList(par::MatSrc1, source);
        setList(par::MatDst1, destinationRow(destination));
        set(par::MatVal1, amount);
    }
};

float largestDifference(const std::vector<float>& a, const std::vector<float>& b, std::size_t from = 0) {
    float largest = 0.0f;
    for (std::size_t i = from; i < a.size(); ++i) largest = std::max(largest, std::fabs(a[i] - b[i]));
    return largest;
}

// Plays one key on two benches that differ in one parameter; how far their sounds are apart.
template <class Prepare>
float effectOf(int number, float one, float other, Prepare prepare) {
    LayerBench benches[2];
    const float values[] = {one, other};
    for (int k = 0; k < 2; ++k) {
        prepare(benches[k]);
        benches[k].set(number, values[k]);
        benches[k].layer->reset();
        benches[k].press(60);
        benches[k].play(40);
    }
    return largestDifference(benches[0].left, benches[1].left);
}

// ---- note-on ------------------------------------------------------------------------------------------------

TEST_F(VoiceParts, ANoteSoundsTheSameOnAVoiceThatPlayedBefore) {
    LayerBench fresh;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &fresh}) {
        bench->set(par::AttVol, 0.3f);
        bench->set(par::Timbre1, 0.1f);
        bench->setList(par::FilType1, lowPass24);
        bench->set(par::Cutoff1, 0.5f);
        bench->set(par::Reso1, 0.9f);
        bench->layer->reset();
    }
    press(31);
    play(50);
    release(31);
    while (sounding() > 0) play();
    const std::size_t from = left.size();
    press(60);
    fresh.press(60);
    play(40);
    fresh.play(40);
    EXPECT_GT(fresh.peak(), 0.01f);
    for (std::size_t i = 0; i < fresh.left.size(); ++i) ASSERT_EQ(left[from + i], fresh.left[i]) << i;
}

TEST_F(VoiceParts, AResetVoiceSoundsLikeANewOne) {
    LayerBench fresh;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &fresh}) {
        bench->engine.soundMode = 10;
        bench->set(par::On1 + 1, 1.0f);
        bench->set(par::Vol1 + 1, 1.0f);
        bench->set(par::Fm1, 0.6f);
        bench->setList(par::DisType1, distortionDegrade);
        bench->set(par::Drive1, 0.7f);
        bench->layer->reset();
    }
    press(31);
    play(51);
    set(par::FilSerial, 1.0f);
    play(1);
    set(par::FilSerial, 0.0f);
    engine.heldNote.fill(0);
    setList(par::KeyEnd1, 50);  // oscillator 1 leaves what it played last to oscillator 2
    fresh.setList(par::KeyEnd1, 50);
    layer->reset();
    fresh.layer->reset();
    left.clear();
    random = fresh.random;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &fresh}) {
        bench->press(60);
        bench->play(40);
    }
    ASSERT_FALSE(first().oscillatorOn[0]);
    EXPECT_GT(fresh.peak(), 0.01f);
    for (std::size_t i = 0; i < left.size(); ++i) ASSERT_EQ(left[i], fresh.left[i]) << i;
}

TEST_F(VoiceParts, ANoteReadsTheLayersOwnParameters) {
    for (int n = globalParameterCount; n < layerParameterEnd; ++n) set(n, static_cast<float>(n % 89) / 89.0f);
    layer->blockChanged();
    first().noteOn(60, 100);
    for (int n = globalParameterCount; n < 323; ++n) ASSERT_EQ(first().mod[n], layer->block()[n]) << n;
}

TEST_F(VoiceParts, ANoteStartsUntunedAndLooksAtItsKernelsOnItsFirstTick) {
    first().tuneFactor = 1.05;
    first().ticksToRefresh = 50;
    press(60);
    EXPECT_EQ(first().tuneFactor, 1.0);
    EXPECT_EQ(first().ticksToRefresh, 0);
    tick();
    EXPECT_EQ(first().ticksToRefresh, 99);
}

TEST_F(VoiceParts, TheSubOscillatorsStartAtNineRandomPlaces) {
    press(60);
    press(61);
    std::set<std::uint32_t> places;
    for (const Voice* voice : {&first(), &second()})
        for (const std::uint32_t phase : voice->oscillators[0].subPhase) {
            EXPECT_LE(phase, phaseMask);
            places.insert(phase);
        }
    EXPECT_EQ(places.size(), 18u);
}

TEST_F(VoiceParts, TheAnalogRowsOfTheTuningLetEachVoiceWanderByItself) {
    constexpr int analogHeavy = 3;
    LayerBench steady;
    engine.microtuning = analogHeavy;
    press(60);
    steady.press(60);
    tick();
    steady.tick();
    const double plain = steady.voice(15).frequency[0], wandering = first().frequency[0];
    EXPECT_NE(wandering, plain);
    EXPECT_NEAR(wandering / plain, 1.0, 0.007);
    tick();
    EXPECT_NE(first().frequency[0], wandering);
    press(67);
    EXPECT_NE(second().pitch[0].driftPosition, first().pitch[0].driftPosition);
    EXPECT_GE(second().pitch[0].driftPosition, 0.0);
    EXPECT_LE(second().pitch[0].driftPosition, 1.0);
}

TEST_F(VoiceParts, AnalogOscillatorsAreEachALittleOutOfTune) {
    for (int i = 0; i < oscillatorCount; ++i) {
        setList(par::SynType1 + i, analogType);
        set(par::On1 + i, 1.0f);
        set(par::Vol1 + i, 1.0f);
    }
    press(60);
    for (int i = 0; i < oscillatorCount; ++i) {
        EXPECT_NE(first().pitch[i].tuning, 1.0);
        EXPECT_NEAR(first().pitch[i].tuning, 1.0, 0.0016);
    }
    setList(par::SynType1, wavetableType);
    press(61);
    EXPECT_EQ(second().pitch[0].tuning, 1.0);
    first().noteOn(61, 100);
    EXPECT_EQ(first().pitch[0].tuning, 1.0);
}

TEST_F(VoiceParts, AnAnalogNoteIsHeldWithinItsClipByEitherFilter) {
    constexpr float ceiling = 0.5f * 0.333f;
    waves.buildWaveRows();
    for (int i = 0; i < oscillatorCount; ++i) {
        setList(par::SynType1 + i, analogType);
        set(par::On1 + i, 1.0f);
        set(par::Vol1 + i, 1.0f);
    }
    for (const float filter : {0.0f, 1.0f}) {
        for (int i = 0; i < oscillatorCount; ++i) set(par::FiltMix1 + i, filter);
        layer->reset();
        press(60);
        play(40);
        const OutputTargets gains = layer->bank().output.gains(15);
        const auto highest = static_cast<float>(filter == 0.0f ? gains.left1 : gains.left2) * ceiling;
        EXPECT_NEAR(peak(left.size() - 2000), highest, 0.01f * highest) << filter;
    }
}

TEST_F(VoiceParts, ALoopedSampleIsContinuedBehindItsEndAtTheNoteOn) {
    setList(par::SynType1, sampleType);
    setList(par::LoopMod1, loopModeLoop);
    Sample& sample = layer->sample(0);
    ASSERT_TRUE(sample.allocate(100));
    sample.length = sample.loopEnd = 100;
    sample.loopStart = 40;
    for (std::int16_t i = 0; i < 100; ++i) sample.levels[0][i] = i;
    press(60);
    EXPECT_EQ(sample.levels[0][100], 40);
    EXPECT_EQ(sample.levels[0][101], 41);
}

TEST_F(VoiceParts, AnOscillatorIsActiveFromHalfOnAndWithinItsKeys) {
    set(par::On1 + 1, 0.5f);
    set(par::Vol1 + 1, 0.0051f);
    setList(par::KeyStar1 + 1, 60);
    setList(par::KeyEnd1 + 1, 62);
    for (const int key : {59, 60, 62, 63}) {
        first().noteOn(key, 100);
        EXPECT_EQ(first().oscillatorOn[1], key == 60 || key == 62) << key;
    }
    set(par::Vol1 + 1, 0.005f);
    first().noteOn(60, 100);
    EXPECT_FALSE(first().oscillatorOn[1]);
    set(par::Vol1 + 1, 1.0f);
    set(par::On1 + 1, 0.49f);
    first().noteOn(60, 100);
    EXPECT_FALSE(first().oscillatorOn[1]);
}

// ---- modulators ---------------------------------------------------------------------------------------------

TEST_F(VoiceParts, AnImpulseReachesTheParametersOfTheFirstTickOnly) {
    connect(sourceImpulse, par::FilAnalo, 1.0f);
    press(60);
    tick();
    EXPECT_EQ(first().mod[par::FilAnalo], 1.0f);
    tick();
    EXPECT_EQ(first().mod[par::FilAnalo], 0.0f);
}

TEST_F(VoiceParts, ADecayIsReadBeforeItFalls) {
    connect(sourceDecay16s, par::FilAnalo, 1.0f);
    press(60);
    tick();
    EXPECT_EQ(first().mod[par::FilAnalo], 1.0f);
    tick();
    EXPECT_LT(first().mod[par::FilAnalo], 1.0f);
}

TEST_F(VoiceParts, TheSlotsOfATickSeeItsControllers) {
    connect(sourceModwheel, par::FilAnalo, 1.0f);
    press(60);
    engine.modwheelSmoothed = 0.25f;
    tick();
    EXPECT_EQ(first().mod[par::FilAnalo], 0.25f);
    engine.modwheelSmoothed = 0.75f;
    tick();
    EXPECT_EQ(first().mod[par::FilAnalo], 0.75f);
}

TEST_F(VoiceParts, AnLfoTakesANewSpeedWithinTheNote) {
    constexpr int sine = 2;
    setList(par::LfoWave1, sine);
    set(par::LfoSpd1, 0.25f);
    press(60);
    tick(2);
    const double before = first().lfos[0].rate;
    set(par::LfoSpd1, 0.5f);
    tick(2);
    EXPECT_GT(first().lfos[0].rate, 5.0 * before);
}

TEST_F(VoiceParts, TheStepLfoTakesNewStepsAndANewShapeWithinTheNote) {
    press(60);
    tick();
    for (int i = 0; i < 16; ++i) set(par::Step1 + i, 0.75f);
    constexpr int sawDown = 12;
    setList(par::StepShap, sawDown);
    tick();
    for (const float step : first().stepLfo.steps) EXPECT_EQ(step, 0.75f);
    EXPECT_EQ(first().stepLfo.shape, sawDown);
}

TEST_F(VoiceParts, EachLfoFadesInByItsOwnTime) {
    const float fades[] = {0.0f, 0.3f, 0.6f};
    for (int i = 0; i < lfoCount; ++i) set(par::LfoFade1 + i, fades[i]);
    press(60);
    EXPECT_EQ(first().lfos[0].fadeLevel, 1.0);
    for (int i = 1; i < lfoCount; ++i) {
        EXPECT_EQ(first().lfos[i].fadeLevel, 0.0);
        EXPECT_EQ(first().lfos[i].fadeStep, fastExp(-10.0 * static_cast<double>(fades[i])));
    }
}

TEST_F(VoiceParts, AFreeStepLfoStartsWhereTheSongIs) {
    constexpr int freeLoop = 0;
    setList(par::StepMode, freeLoop);
    set(par::StepSped, 0.45f);  // four steps a beat
    set(par::Steps, 0.2f);
    engine.songPosition = 2.5;
    press(60);
    EXPECT_EQ(first().stepLfo.position, 10.0);
    EXPECT_EQ(first().stepLfo.stepCount, 4);
}

TEST_F(VoiceParts, VoicesAndHeldKeysAreCountedAgainstTheLimit) {
    constexpr int polyphonic8 = 6, sourceVoiceNumber = 33, sourceHeldKeys = 34;
    setList(par::PlayMode, polyphonic8);
    connect(sourceVoiceNumber, par::FilAnalo, 1.0f);
    press(60);
    press(64);
    tick();
    EXPECT_EQ(first().mod[par::FilAnalo], 0.125f);
    EXPECT_EQ(second().mod[par::FilAnalo], 0.25f);
    connect(sourceHeldKeys, par::FilAnalo, 1.0f);
    tick();
    EXPECT_EQ(first().mod[par::FilAnalo], 0.25f);
    release(60);
    tick();
    EXPECT_EQ(first().mod[par::FilAnalo], 0.125f);
}

// ---- oscillators --------------------------------------------------------------------------------------------

TEST_F(VoiceParts, ATickSetsWhatTheKernelsRead) {
    addWave(8);
    setList(par::WTWave1, 1);
    set(par::Pw1, 0.7f);
    layer->reset();
    press(60);
    tick();
    const OscillatorState& state = first().oscillators[0];
    EXPECT_EQ(state.increment, increment24(first().frequency[0]));
    EXPECT_EQ(state.scanIncrement, scanIncrement(first().frequency[0], 0.7f));
    const WavePosition position = wavePosition(8, 0.7f);
    EXPECT_EQ(state.frame, position.frame);
    EXPECT_EQ(state.framePending, position.frame);
    EXPECT_EQ(state.blendPending, position.blend);
    EXPECT_EQ(state.loopOn, 0);
    setList(par::LoopMod1, loopModeLoop);
    tick();
    EXPECT_EQ(state.loopOn, 1);
}

TEST_F(VoiceParts, TheStartPointCountsOnceANote) {
    set(par::Start1, 0.25f);
    layer->reset();
    press(60);
    play(10);
    const OscillatorState& state = first().oscillators[0];
    EXPECT_EQ(state.phase, ((1u << 22) + 960 * state.increment) & phaseMask);
}

TEST_F(VoiceParts, TheDepthOfFmArrivesWithinATick) {
    set(par::On1 + 1, 1.0f);
    set(par::Vol1 + 1, 1.0f);
    set(par::Fm1, 0.5f);
    layer->reset();
    press(60);
    tick();
    EXPECT_EQ(first().oscillators[1].fmDepth, 0);
    render(96);
    EXPECT_NEAR(first().oscillators[1].fmDepth, fmDepthTarget(0.5f), 96);
}

TEST_F(VoiceParts, EachOscillatorIsModulatedByTheOneBeforeIt) {
    // 1 moves 2, which alone is heard: another pitch of 1 is another sound, another pitch of 3 is not.
    const auto pair = [](LayerBench& bench) {
        for (const int n : {par::On1 + 0, par::On1 + 1, par::On1 + 2, par::Vol1 + 1}) bench.set(n, 1.0f);
        bench.set(par::Vol1, 0.0f);
        bench.set(par::Fm1, 0.3f);
    };
    EXPECT_GT(effectOf(par::Oct1, 0.5f, 0.7f, pair), 0.05f);
    EXPECT_EQ(effectOf(par::Oct1 + 2, 0.5f, 0.7f, pair), 0.0f);
    // The same for 2 and 3.
    const auto next = [](LayerBench& bench) {
        for (const int n : {par::On1 + 0, par::On1 + 1, par::On1 + 2, par::Vol1 + 2}) bench.set(n, 1.0f);
        bench.set(par::Vol1, 0.0f);
        bench.set(par::Fm1 + 1, 0.3f);
    };
    EXPECT_GT(effectOf(par::Oct1 + 1, 0.5f, 0.7f, next), 0.05f);
    EXPECT_EQ(effectOf(par::Oct1, 0.5f, 0.7f, next), 0.0f);
}

TEST_F(VoiceParts, TheToneStageFollowsThePitch) {
    float peaks[2];
    for (const int k : {0, 1}) {
        LayerBench bench;
        bench.set(par::Timbre1, 0.0f);  // nothing but its low-pass
        bench.layer->reset();
        bench.press(48 + 24 * k);
        bench.play(100);
        peaks[k] = bench.peak();
    }
    EXPECT_GT(peaks[0], 0.05f);
    EXPECT_NEAR(peaks[1] / peaks[0], 1.0f, 0.05f);
}

TEST_F(VoiceParts, ASwitchOfSyncIsTakenWithinATenthOfASecond) {
    set(par::On1 + 1, 1.0f);
    set(par::Vol1 + 1, 1.0f);
    press(60);
    tick(10);
    EXPECT_EQ(first().oscillators[1].synced, 0);
    set(par::Sync1, 1.0f);
    tick(100);
    EXPECT_EQ(first().oscillators[1].synced, 1);
}

// ---- pitch --------------------------------------------------------------------------------------------------

TEST_F(VoiceParts, ATickGlidesTheOscillatorsAndTheFiltersNote) {
    set(par::GlideSpd, 0.5f);
    press(48);
    tick();
    press(60);
    tick();
    const double f = static_cast<double>(glideFactor(0.5f));
    EXPECT_NEAR(second().smoothedNote, 48.0 + 12.0 * f, 1e-9);
    EXPECT_NEAR(second().pitch[0].position / static_cast<double>(engine.keyIncrement[48]), std::pow(2.0, f), 1e-5);
}

TEST_F(VoiceParts, WheelAndTuningMoveThePitch) {
    constexpr int pitch424 = 8;
    press(60);
    tick();
    const double plain = first().frequency[0];
    engine.pitchBendFactor = 1.25f;
    tick();
    EXPECT_NEAR(first().frequency[0] / plain, 1.25, 1e-9);
    engine.pitchBendFactor = 1.0f;
    engine.microtuning = pitch424;
    tick();
    EXPECT_NEAR(first().frequency[0] / plain, 0.9621999859809875, 1e-9);
}

TEST_F(VoiceParts, AGlideOfTheArpeggiatorMovesAllOscillatorsOfAllVoices) {
    constexpr int up = 2, velocity8 = 9, glideUp12 = 50, oneBpm = 4;
    setList(par::ArpType, up);
    setList(par::ArpSpeed, oneBpm);
    for (int step = 0; step < 16; ++step) {
        setList(par::ArpVol1 + step, velocity8);
        setList(par::ArpStp1 + step, glideUp12);
    }
    setList(par::ArpRetri, 1);
    for (int i = 0; i < oscillatorCount; ++i)
        for (const int n : {par::On1, par::Vol1}) set(n + i, 1.0f);
    set(par::RelVol, 0.9f);
    engine.tempoBpm = 150.0;  // a step of 100 ticks
    layer->reset();
    press(60);
    press(64);
    tick(160);
    ASSERT_EQ(sounding(), 2);  // the first step's note has been released
    ASSERT_NE(first().note, second().note);
    const double slide = static_cast<double>(layer->arpeggiator().slideFactor());
    ASSERT_GT(slide, 1.1);
    for (Voice* voice : {&first(), &second()}) {
        const double key = static_cast<double>(engine.keyIncrement[voice->note]) * fineFactor(0.5f) * fineFactor(0.5f);
        for (const double frequency : voice->frequency) EXPECT_NEAR(frequency / key, slide, 1e-6);
    }
}

// ---- filters, distortions, output ---------------------------------------------------------------------------

TEST_F(VoiceParts, EachFilterHasParametersOfItsOwn) {
    for (int f = 0; f < filterCount; ++f) {
        const auto alone = [f](LayerBench& bench) {
            bench.set(par::FiltMix1, static_cast<float>(f));
            for (int k = 0; k < filterCount; ++k) {
                bench.setList(par::FilType1 + k, lowPass24);
                bench.set(par::Cutoff1 + k, 0.6f);
                bench.set(par::Reso1 + k, 0.5f);
            }
        };
        for (const int family : {par::Cutoff1, par::Reso1, par::FilKey1, par::FilEnv1, par::FilVol1, par::FilPan1}) {
            EXPECT_GT(effectOf(family + f, 0.6f, 0.3f, alone), 1e-3f) << family << " " << f;
            EXPECT_LT(effectOf(family + 1 - f, 0.6f, 0.3f, alone), 1e-5f) << family << " " << f;
        }
        EXPECT_GT(effectOf(par::FilType1 + f, listValue(lowPass24), listValue(8), alone), 1e-3f);
        const auto driven = [&alone, f](LayerBench& bench) {
            alone(bench);
            bench.setList(par::DisType1 + f, distortionCrush);
        };
        EXPECT_GT(effectOf(par::Drive1 + f, 0.6f, 0.3f, driven), 1e-3f);
        EXPECT_GT(effectOf(par::DisType1 + f, listValue(distortionCrush), 0.0f,
                           [&driven, f](LayerBench& bench) {
                               driven(bench);
                               bench.set(par::Drive1 + f, 0.7f);
                           }),
                  1e-3f);
    }
}

TEST_F(VoiceParts, BothFiltersHearTheAnalogControl) {
    constexpr int ladder = 30;
    for (int f = 0; f < filterCount; ++f)
        EXPECT_GT(effectOf(par::FilAnalo, 0.0f, 1.0f,
                           [f](LayerBench& bench) {
                               bench.set(par::FiltMix1, static_cast<float>(f));
                               bench.setList(par::FilType1 + f, ladder);
                               bench.set(par::Cutoff1 + f, 0.6f);
                               bench.set(par::Reso1 + f, 0.8f);
                           }),
                  1e-4f);
}

TEST_F(VoiceParts, ADistortionIsChosenAnewWithinATenthOfASecond) {
    LayerBench plain;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &plain}) {
        bench->set(par::Drive1, 0.8f);
        bench->press(60);
        bench->play(50);
    }
    setList(par::DisType1, distortionCrush);
    play(40);
    plain.play(40);
    EXPECT_EQ(left, plain.left);
    play(60);
    plain.play(60);
    EXPECT_GT(largestDifference(left, plain.left), 0.01f);
}

TEST_F(VoiceParts, ADistortionCountsAtTheEnginesRate) {
    const auto longestRun = [](float rate) {
        LayerBench bench;
        bench.engine.internalRate = rate;
        bench.setList(par::DisType1, distortionDegrade);
        bench.set(par::Drive1, 0.9f);
        bench.layer->reset();
        bench.press(60);
        bench.play(60);
        int longest = 0, run = 0;
        for (std::size_t i = 2000; i < bench.left.size(); ++i) {
            run = std::fabs(bench.left[i] - bench.left[i - 1]) < 1e-7f ? run + 1 : 0;
            longest = std::max(longest, run);
        }
        return longest;
    };
    const int slow = longestRun(48000.0f), fast = longestRun(96000.0f);
    EXPECT_GT(slow, 3);
    EXPECT_NEAR(fast, 2 * slow, 2);
}

TEST_F(VoiceParts, OnlyTheFirstTickOfANoteJumpsToItsGains) {
    set(par::AttVol, 0.0f);
    set(par::SusVol, 0.5f);
    press(60);
    play();
    const double arrived = layer->bank().output.gains(15).left1;
    tick();  // the level falls to the sustain
    EXPECT_EQ(layer->bank().output.gains(15).left1, arrived);
    render(96);
    EXPECT_LT(layer->bank().output.gains(15).left1, 0.6 * arrived);
    first().noteOn(62, 100);  // the same voice again
    tick();
    EXPECT_EQ(layer->bank().output.gains(15).left1, arrived);
}

// ---- a layer's lines and inserts ----------------------------------------------------------------------------

TEST_F(VoiceParts, GlideCoversAKeyOnlyAboveAHundredth) {
    setList(par::KeyEnd1, 50);
    set(par::GlideSpd, 0.01f);
    press(60);
    EXPECT_EQ(sounding(), 0);
    set(par::GlideSpd, 0.0101f);
    press(61);
    EXPECT_EQ(sounding(), 1);
}

TEST_F(VoiceParts, AKeyThatIsNotHeardGoesUpWithoutARetrigger) {
    setList(par::PlayMode, monophonic);
    for (const int key : {60, 72, 64}) {
        press(key);
        tick(10);
    }
    ASSERT_EQ(voice(0).state(), Envelope::Sustain);
    release(60);
    EXPECT_EQ(voice(0).note, 64);
    EXPECT_EQ(voice(0).state(), Envelope::Sustain);
}

TEST_F(VoiceParts, ALineStaysOnItsKeyWhenTheFirstOfThePhraseGoesUp) {
    constexpr int legato = 1;
    setList(par::PlayMode, legato);
    for (const int key : {60, 72, 64}) {
        press(key);
        tick();
    }
    ASSERT_EQ(layer->currentNote, 60);  // only a phrase's first key sets it
    release(60);
    EXPECT_EQ(voice(0).note, 64);
    EXPECT_EQ(layer->currentNote, 64);
}

TEST_F(VoiceParts, TheFirstKeyOfALegatoPhraseRetriggersAReleasedVoice) {
    constexpr int legato = 1;
    setList(par::PlayMode, legato);
    set(par::RelVol, 0.7f);
    press(60);
    tick(10);
    release(60);
    tick(10);
    ASSERT_EQ(voice(0).state(), Envelope::Release);
    press(64);
    EXPECT_EQ(voice(0).state(), Envelope::Attack);
}

TEST_F(VoiceParts, TheFirstInsertGetsTheVoiceThatMovesItsParameterMost) {
    set(par::FxInPar1, 0.5f);
    connect(sourceVelocity, par::FxInPar1, 0.75f);
    press(60, 32);
    press(62, 96);
    tick();
    EXPECT_EQ(layer->insert(0).getParameter(1), 0.5f + 0.5f * 96.0f / 128.0f);
    set(par::MatVal1, 0.25f);
    tick();
    EXPECT_EQ(layer->insert(0).getParameter(1), 0.5f - 0.5f * 96.0f / 128.0f);
    EXPECT_EQ(layer->insert(0).getParameter(2), layer->block()[par::FxInPar1 + 1]);
}

TEST_F(VoiceParts, TheMixOfTheFirstInsertIsSlewedAndItsParametersAreNot) {
    set(par::FxInMix, 0.0f);
    set(par::FxInPar1, 0.0f);
    layer->reset();
    set(par::FxInMix, 1.0f);
    set(par::FxInPar1, 1.0f);
    tick();
    EXPECT_NEAR(layer->insert(0).getParameter(0), 0.04f, 1e-6f);
    EXPECT_EQ(layer->insert(0).getParameter(1), 1.0f);

    constexpr int sourceStatic = 12;
    connect(sourceStatic, par::FxInMix, 0.45f);
    layer->reset();
    set(par::FxInMix, 0.5f);
    press(60);
    tick(10);
    const float slewed = layer->smoothed()[par::FxInMix];  // on its way down from 1
    ASSERT_GT(slewed, 0.7f);
    EXPECT_NEAR(layer->insert(0).getParameter(0), slewed - 0.1f, 1e-6f);
}

// Ticks and samples until a short note comes back from a wet insert.
int echoOf(int type, float firstParameter, double tempo, int insert) {
    LayerBench bench;
    bench.engine.tempoBpm = tempo;
    const int family = insert == 0 ? par::FxInType : par::FxIn2Type, mix = insert == 0 ? par::FxInMix : par::FxIn2Mix;
    bench.setList(family, type);
    bench.set(mix, 1.0f);
    bench.set(mix + 1, firstParameter);
    bench.set(mix + 2, firstParameter);
    bench.layer->reset();
    bench.press(72);
    bench.play(1000);
    for (std::size_t i = 0; i < bench.left.size(); ++i)
        if (std::fabs(bench.left[i]) > 0.01f) return static_cast<int>(i);
    return -1;
}

TEST_F(VoiceParts, BothInsertsKnowTheRateAndTheTempo) {
    for (const int insert : {0, 1}) {
        EXPECT_NEAR(echoOf(effectEcho, 0.5f, 120.0, insert), 0.25 * 96000.0, 300) << insert;
        const int slow = echoOf(effectDelay, 0.3f, 120.0, insert), fast = echoOf(effectDelay, 0.3f, 240.0, insert);
        EXPECT_NEAR(slow, 2 * fast, 300) << insert;
        EXPECT_GT(fast, 4000) << insert;
    }
}

TEST_F(VoiceParts, AResetEmptiesInsertsArpeggiatorAndCounters) {
    setList(par::FxInType, effectEcho);
    set(par::FxInMix, 1.0f);
    set(par::FxInPar1, 0.5f);
    set(par::FxInPar1 + 1, 0.5f);
    layer->reset();
    press(60);
    play(100);  // the echo is on its way
    layer->reset();
    EXPECT_EQ(layer->ticksSinceNote, 0);
    const std::size_t from = left.size();
    play(400);
    EXPECT_LT(peak(from), 1e-4f);

    constexpr int up = 2;
    setList(par::ArpType, up);
    layer->reset();
    press(64);
    layer->reset();
    engine.tempoBpm = 120.0;
    for (int t = 0; t < 1000; ++t) {
        engine.songPosition += 0.002;
        tick();
    }
    EXPECT_EQ(sounding(), 0);  // the key was forgotten
}

TEST_F(VoiceParts, EachOscillatorHasParametersOfItsOwn) {
    for (int i = 0; i < oscillatorCount; ++i) {
        const auto alone = [i](LayerBench& bench) {
            for (int k = 0; k < oscillatorCount; ++k) {
                bench.set(par::On1 + k, k == i ? 1.0f : 0.0f);
                bench.set(par::Vol1 + k, 0.8f);
                bench.set(par::Timbre1 + k, 0.8f);
            }
        };
        for (const int family :
             {par::Oct1, par::Interv1, par::Detune1, par::Semi1, par::Start1, par::Timbre1, par::Vol1, par::On1}) {
            EXPECT_GT(effectOf(family + i, 0.8f, 0.3f, alone), 1e-3f) << family << " " << i;
            if (family == par::On1) continue;
            for (int other = 0; other < oscillatorCount; ++other)
                if (other != i) {
                    EXPECT_EQ(effectOf(family + other, 0.8f, 0.3f, alone), 0.0f) << family << " " << i << other;
                }
        }
    }
}

}  // namespace
}  // namespace vantoric
