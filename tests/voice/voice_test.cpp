#include "voice/voice.h"

#include <gtest/gtest.h>

#include "sound/analog_clip.h"
#include "tests/voice/layer_bench.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::LayerBench;

struct VoiceTest : ::testing::Test, LayerBench {
    Voice& first() { return voice(15); }
};

TEST_F(VoiceTest, VoiceWithoutOscillatorsRunsItsEnvelopesAndEndsByThem) {
    set(par::Vol1, 0.0f);  // the key is covered, but nothing is heard
    layer->reset();
    press(60);
    play(5);
    EXPECT_TRUE(first().sounding());
    EXPECT_EQ(first().state(), Envelope::Sustain);
    for (const bool on : first().oscillatorOn) EXPECT_FALSE(on);
    release(60);
    play(60);
    EXPECT_FALSE(first().sounding());
}

TEST_F(VoiceTest, SerialFilterTwoHearsOnlyFilterOneWhenNothingIsMixedToIt) {
    set(par::FilVol1, 0.0f);  // listen to filter 2 alone
    LayerBench parallel;
    parallel.set(par::FilVol1, 0.0f);
    LayerBench filterOne;
    filterOne.set(par::FilVol1 + 1, 0.0f);
    set(par::FilSerial, 1.0f);
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &parallel, &filterOne}) {
        bench->layer->reset();
        bench->press(60);
        bench->play(30);
    }
    EXPECT_LT(parallel.peak(), 1e-4f);
    EXPECT_GT(peak(), 0.01f);
    for (std::size_t i = 0; i < left.size(); ++i) ASSERT_NEAR(left[i], filterOne.left[i], 1e-5f);
}

TEST_F(VoiceTest, SerialSwitchActsAboveTheMiddle) {
    set(par::FilVol1, 0.0f);
    set(par::FilSerial, 0.5f);
    layer->reset();
    press(60);
    play(20);
    EXPECT_LT(peak(), 1e-4f);
}

TEST_F(VoiceTest, RingmodAtZeroLeavesItsGainAtAMillionth) {
    press(60);
    play(3);
    EXPECT_NEAR(layer->bank().output.gains(15).ring, 1e-6, 1e-12);
}

TEST_F(VoiceTest, ShortAttackStartsAtFullGainOnTheFirstSample) {
    set(par::AttVol, 0.019f);
    press(60);
    tick();
    const double arrived = layer->bank().output.gains(15).left1;
    EXPECT_GT(arrived, 1.0);
    render(1);
    EXPECT_EQ(layer->bank().output.gains(15).left1, arrived);
}

TEST_F(VoiceTest, LongerAttackRampsFromZeroAcrossTheFirstTick) {
    set(par::AttVol, 0.02f);
    press(60);
    tick();
    EXPECT_EQ(layer->bank().output.gains(15).left1, 0.0);
    render(48);
    const double half = layer->bank().output.gains(15).left1;
    render(48);
    EXPECT_NEAR(layer->bank().output.gains(15).left1, 2.0 * half, 1e-9);
    EXPECT_GT(half, 0.5);
}

TEST_F(VoiceTest, NoteOnDropsTheLevelGainsAndLeavesThoseOfTheSoundModes) {
    engine.soundMode = 10;
    press(60);
    play(3);
    const OutputTargets before = layer->bank().output.gains(15);
    ASSERT_GT(before.bass, 0.0);
    ASSERT_GT(before.transient, 0.0);
    first().noteOn(62, 100);
    const OutputTargets after = layer->bank().output.gains(15);
    for (const double level : {after.left1, after.left2, after.right1, after.right2, after.ring}) EXPECT_EQ(level, 0.0);
    EXPECT_EQ(after.bass, before.bass);
    EXPECT_EQ(after.transient, before.transient);
}

TEST(OutputTargets, TheLayersVolumeHasItsLimitsFarAboveOne) {
    const auto left = [](float volume) {
        return outputTargets(
                   {.envelope = 1, .layerVolume = volume, .pan1 = 0, .pan2 = 0, .volume1 = 1, .volume2 = 0, .ringmod = 0})
            .left1;
    };
    EXPECT_NEAR(left(3.0f) / left(1.0f), 9.0, 1e-6);
    EXPECT_EQ(left(20000.0f), left(9999.0f));
    EXPECT_EQ(left(-1.0f), 1e-6);
}

TEST_F(VoiceTest, TheFilterEnvelopesLevelIsClampedWhereItIs) {
    constexpr int sourceStatic = 12, destinationFilterSustain = 66;
    set(par::SusFil, 0.9f);
    setList(par::MatSrc1, sourceStatic);
    setList(par::MatDst1, destinationFilterSustain);
    set(par::MatVal1, 1.0f);
    press(60);
    play(10);
    ASSERT_GT(first().mod[par::SusFil], 1.8f);
    EXPECT_EQ(first().envelopes[filterEnvelope].level, 1.0f);
}

TEST_F(VoiceTest, TheFiltersTakeTheRateInWholeHertz) {
    LayerBench whole;
    engine.internalRate = 96000.75f;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &whole}) {
        bench->setList(par::FilType1, 2);
        bench->set(par::Cutoff1, 0.5f);
        bench->press(60);
        bench->play(20);
    }
    EXPECT_GT(peak(), 0.01f);
    EXPECT_EQ(left, whole.left);
}

TEST_F(VoiceTest, CutoffChangesOnlyAtTheNextTick) {
    LayerBench steady;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &steady}) {
        bench->setList(par::FilType1, 2);
        bench->press(60);
        bench->play(20);
        bench->tick();
        bench->render(40);
    }
    set(par::Cutoff1, 0.1f);
    render(56);
    steady.render(56);
    EXPECT_EQ(left, steady.left);
    play(100);
    steady.play(100);
    EXPECT_NE(left, steady.left);
}

TEST_F(VoiceTest, TimbreAroundTheMiddleIsSkipped) {
    LayerBench middle;
    set(par::Timbre1, 0.509f);
    layer->reset();
    press(60);
    middle.press(60);
    play(20);
    middle.play(20);
    EXPECT_EQ(left, middle.left);

    LayerBench dull;
    dull.set(par::Timbre1, 0.4f);
    dull.layer->reset();
    dull.press(60);
    dull.play(20);
    EXPECT_NE(left, dull.left);
}

TEST_F(VoiceTest, AnalogInputSaturatesAtAHalfOnceItPassesAQuarter) {
    for (const float x : {0.25f, 0.3f, 1.0f, 1000.0f}) {
        EXPECT_EQ(analogSoftClip(x), 0.5f);
        EXPECT_EQ(analogSoftClip(-x), -0.5f);
    }
    EXPECT_LT(analogSoftClip(0.24f), 0.5f);
    EXPECT_NEAR(analogSoftClip(0.05f), 0.15f, 1e-7f);
}

TEST_F(VoiceTest, AnalogOscillatorDrivesAndScalesItsFilters) {
    VoiceBank& bank = layer->bank();
    bank.setAnalog(15, true);
    bank.output.setTargets(15, {1.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0}, 96, true);
    float left1[4] = {}, right1[4] = {};
    bank.mix(4, 1u << 15);
    for (int i = 0; i < 4; ++i) bank.input1(15)[i * voiceCount] = 2.0f;
    bank.render(4, 1u << 15, left1, right1);
    EXPECT_NEAR(left1[0], 0.5f * 0.333f, 1e-5f);
}

TEST_F(VoiceTest, AnalogModeIsSetByAnActiveAnalogOscillatorOnly) {
    setList(par::SynType1 + 1, 5);
    press(60);
    EXPECT_FALSE(first().analogMode);  // oscillator 2 is off
    set(par::On1 + 1, 1.0f);
    set(par::Vol1 + 1, 1.0f);
    press(62);
    EXPECT_TRUE(voice(14).analogMode);
}

TEST_F(VoiceTest, OscillatorSwitchedOnDuringANoteComesInWithinATenthOfASecond) {
    set(par::On1, 0.0f);
    set(par::On1 + 1, 1.0f);  // covers the key, at volume 0
    press(60);
    play(10);
    EXPECT_LT(peak(), 1e-4f);
    set(par::On1, 1.0f);
    const std::size_t from = left.size();
    play(100);
    EXPECT_GT(peak(from), 0.01f);
}

TEST_F(VoiceTest, OscillatorTurnedDownStopsCostingWithinATenthOfASecond) {
    press(60);
    play(10);
    set(par::Vol1, 0.0f);
    play(300);
    EXPECT_FALSE(first().oscillatorOn[0]);
}

TEST_F(VoiceTest, ANewRateReachesTheDistortionsOfASoundingNoteWithinATenthOfASecond) {
    constexpr int degrade = 18;
    setList(par::DisType1, degrade);
    set(par::Drive1, 0.5f);
    set(par::FilVol1 + 1, 0.0f);
    layer->reset();
    const auto heldSamples = [this] {
        const std::size_t from = left.size();
        play(10);
        int changes = 0;
        for (std::size_t i = from + 1; i < left.size(); ++i) changes += std::fabs(left[i] - left[i - 1]) > 1e-5f ? 1 : 0;
        return (left.size() - from) / std::max<std::size_t>(static_cast<std::size_t>(changes), 1);
    };
    press(90);
    play(30);
    const std::size_t before = heldSamples();
    engine.internalRate = 192000.0f;
    play(100);
    const std::size_t after = heldSamples();
    EXPECT_NEAR(static_cast<double>(before), distortion::holdLength(0.5f, 96000.0f), 1.0);
    EXPECT_NEAR(static_cast<double>(after), distortion::holdLength(0.5f, 192000.0f), 2.0);
}

TEST_F(VoiceTest, AnOscillatorRunsFromAVolumeOfHalfAPercentOn) {
    set(par::Vol1, 0.005f);
    layer->reset();
    press(60);
    EXPECT_FALSE(first().oscillatorOn[0]);
    set(par::Vol1, 0.00501f);
    press(61);
    EXPECT_TRUE(voice(14).oscillatorOn[0]);
}

TEST_F(VoiceTest, SilentOscillatorRunsForTheOneThatItModulates) {
    set(par::Vol1, 0.0f);
    layer->reset();
    press(60);
    EXPECT_FALSE(first().oscillatorOn[0]);
    set(par::Fm1, 0.3f);
    press(61);
    EXPECT_TRUE(voice(14).oscillatorOn[0]);
    set(par::Fm1, 0.0f);
    set(par::Sync1, 1.0f);
    press(62);
    EXPECT_TRUE(voice(13).oscillatorOn[0]);
    set(par::Sync1, 0.0f);
    constexpr int destinationFm2 = 26;
    setList(par::MatDst1, destinationFm2);
    press(63);
    EXPECT_TRUE(voice(12).oscillatorOn[0]);
}

TEST_F(VoiceTest, MatrixSlotOnItsVolumeKeepsAnOscillatorActive) {
    set(par::Vol1, 0.0f);
    layer->reset();
    int row = 0;
    while (destinationNumber(row) != par::Vol1) ++row;
    setList(par::MatDst1, row);
    press(60);
    EXPECT_TRUE(first().oscillatorOn[0]);
}

TEST_F(VoiceTest, SampleOscillatorWithoutASampleIsInactive) {
    setList(par::SynType1, 3);
    press(60);
    EXPECT_FALSE(first().oscillatorOn[0]);
}

TEST_F(VoiceTest, ModulatedKernelNeedsThePreviousOscillatorSwitchedOn) {
    set(par::On1 + 1, 1.0f);
    set(par::Fm1, 0.5f);
    press(60);
    EXPECT_TRUE(first().oscillatorModulated(1));
    EXPECT_FALSE(first().oscillatorModulated(0));
    set(par::On1, 0.0f);
    press(61);
    EXPECT_FALSE(voice(14).oscillatorModulated(1));
}

TEST_F(VoiceTest, ShareOfTheLimitCountsTheVoiceItself) {
    press(60);
    EXPECT_EQ(first().voiceNumber, 1.0f / 16.0f);
    press(61);
    EXPECT_EQ(voice(14).voiceNumber, 2.0f / 16.0f);
}

TEST_F(VoiceTest, NoteOnCopiesTheLayerAndResetsTheMatrixSources) {
    press(60);
    tick(5);
    EXPECT_LT(first().decays.a, 1.0f);
    EXPECT_EQ(first().impulse, 0.0f);
    first().noteOn(61, 90);
    EXPECT_EQ(first().impulse, 1.0f);
    EXPECT_EQ(first().decays.d, 1.0f);
    EXPECT_EQ(first().age, 0);
    EXPECT_EQ(first().velocity, 90);
    for (int n = globalParameterCount; n < 323; ++n) ASSERT_EQ(first().mod[n], layer->block()[n]);
}

TEST_F(VoiceTest, ResetReturnsEverythingToTheStart) {
    press(70);
    play(20);
    first().tuneFactor = 1.05;
    first().tuneOffset = 3.0;
    set(par::Cutoff1, 0.4f);
    first().reset();
    EXPECT_EQ(first().mod, layer->block());
    EXPECT_FALSE(first().sounding());
    EXPECT_EQ(first().age, 1410065407);
    EXPECT_EQ(first().smoothedNote, 60.0);
    EXPECT_EQ(first().tuneFactor, 1.0);
    EXPECT_EQ(first().tuneOffset, 0.0);
    EXPECT_FALSE(first().analogMode);
    EXPECT_EQ(layer->bank().output.gains(15).left1, 0.0);
    for (const Envelope& envelope : first().envelopes) EXPECT_EQ(envelope.phase, 1.0f);
}

TEST_F(VoiceTest, DynamicModesAddLowEndAndTransientModesHighEnd) {
    float peaks[3];
    int k = 0;
    for (const int mode : {0, 1, 9}) {
        LayerBench bench;
        bench.engine.soundMode = mode;
        bench.press(36);
        bench.play(200);
        peaks[k++] = bench.peak(96 * 100);
    }
    EXPECT_GT(peaks[1], 1.1f * peaks[0]);
    EXPECT_NE(peaks[2], peaks[0]);
}

}  // namespace
}  // namespace vantoric
