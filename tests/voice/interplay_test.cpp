// What happens where the parts of a voice and a layer meet: settings that change in a note, states that voices share,
// effects behind silence, patches thrown together at random.
#include <gtest/gtest.h>

#include <random>

#include "sound/filters/wide_loops.h"
#include "sound/kernels.h"
#include "tests/voice/layer_bench.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::LayerBench;

struct Interplay : ::testing::Test, LayerBench {
    Voice& first() { return voice(15); }
    Voice& second() { return voice(14); }
};

constexpr int dynamicBass = 2, linear = 0, transientMode = 9, transientAndBass = 10;

TEST_F(Interplay, AGainThatNoModeReadsIsWhereItsRampWouldBe) {
    LayerBench always;
    always.engine.soundMode = dynamicBass;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &always}) {
        bench->set(par::AttVol, 0.4f);
        bench->layer->reset();
        bench->press(48);
    }
    for (int t = 0; t < 60; ++t) {
        engine.soundMode = t / 7 % 2 == 0 ? dynamicBass : linear;
        layer->tick();
        always.layer->tick();
        for (const int count : {1, engine.tickSamples - 1}) {  // the first sample shows where the ramp set out
            render(count);
            always.render(count);
            const OutputTargets here = layer->bank().output.gains(15), there = always.layer->bank().output.gains(15);
            ASSERT_NEAR(here.bass, there.bass, 1e-9) << t;
            ASSERT_EQ(here.left1, there.left1) << t;
        }
    }
}

// Whatever the processor, however many voices of a group sound: registers of four lanes, of two, or a voice alone.
TEST(OutputStage, GivesTheSameBitsOnEveryProcessor) {
    const auto rendered = [](bool wide, LaneMask mask, int soundMode) {
        const bool before = filters::wideLoopsInUse();
        filters::useWideLoops(wide);
        std::mt19937 chance(9);
        const auto unit = [&] { return static_cast<double>(chance()) / 4294967296.0; };
        const auto stage = std::make_unique<OutputStage>();
        stage->setMode(soundMode, 96000.0);
        std::vector<float> result;
        static LaneBuffer f1, f2;
        for (const int count : {96, 1, 40}) {
            for (int v = 0; v < voiceCount; ++v)
                stage->setTargets(v, {unit(), unit(), unit(), unit(), unit(), unit(), unit()}, 96, count == 1);
            for (int i = 0; i < count * voiceCount; ++i) {
                f1[i] = static_cast<float>(unit() - 0.5);
                f2[i] = static_cast<float>(unit() - 0.5);
            }
            std::vector<float> left(count), right(count);
            stage->render(f1, f2, count, mask, left.data(), right.data());
            result.insert(result.end(), left.begin(), left.end());
            result.insert(result.end(), right.begin(), right.end());
        }
        for (int v = 0; v < voiceCount; ++v) {
            const OutputTargets gains = stage->gains(v);
            for (const double gain : {gains.left1, gains.right2, gains.ring, gains.bass, gains.transient})
                result.push_back(static_cast<float>(gain));
        }
        filters::useWideLoops(before);
        return result;
    };
    for (const int soundMode : {linear, dynamicBass, transientMode, transientAndBass})
        for (const LaneMask mask : {0xffff, 0x8000, 0x0011, 0x7350, 0xe00f})
            EXPECT_EQ(rendered(true, mask, soundMode), rendered(false, mask, soundMode)) << soundMode << ' ' << mask;
}

TEST(OutputStage, SumsTheVoicesOfAGroup) {
    constexpr int count = 8;
    static LaneBuffer f1, f2;
    std::mt19937 chance(4);
    const auto unit = [&] { return static_cast<double>(chance()) / 4294967296.0; };
    for (int i = 0; i < count * voiceCount; ++i) {
        f1[i] = static_cast<float>(unit() - 0.5);
        f2[i] = static_cast<float>(unit() - 0.5);
    }
    std::array<OutputTargets, voiceCount> targets;
    for (OutputTargets& target : targets) target = {unit(), unit(), unit(), unit(), unit(), 0.0, 0.0};
    const auto rendered = [&](LaneMask mask) {
        const auto stage = std::make_unique<OutputStage>();
        stage->setMode(linear, 96000.0);
        for (int v = 0; v < voiceCount; ++v) stage->setTargets(v, targets[static_cast<std::size_t>(v)], count, true);
        std::array<float, 2 * count> sides{};
        stage->render(f1, f2, count, mask, sides.data(), sides.data() + count);
        return sides;
    };
    std::array<float, 2 * count> sum{};
    for (int v = 0; v < laneGroup; ++v) {
        const auto alone = rendered(static_cast<LaneMask>(1u << v));
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += alone[i];
    }
    const auto together = rendered(0x000f);
    for (std::size_t i = 0; i < sum.size(); ++i) EXPECT_NEAR(together[i], sum[i], 1e-6) << i;
}

TEST_F(Interplay, AModeSwitchedOnTakesUpTheRampsWhereTheyStand) {
    LayerBench always;
    always.engine.soundMode = transientAndBass;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &always}) {
        bench->set(par::AttVol, 0.4f);
        bench->layer->reset();
        bench->press(48);
        bench->play(20);
    }
    engine.soundMode = transientAndBass;
    for (LayerBench* bench : {static_cast<LayerBench*>(this), &always}) {
        bench->tick();
        bench->render(10);
    }
    const OutputTargets here = layer->bank().output.gains(15), there = always.layer->bank().output.gains(15);
    EXPECT_NEAR(here.bass, there.bass, 1e-9);
    EXPECT_NEAR(here.transient, there.transient, 1e-9);
}

TEST_F(Interplay, ASecondVoiceTakesOverTheMonoLfoAndTheStepLfoOfTheOldest) {
    constexpr int mono = 8, monoLoop = 2, saw = 4;
    setList(par::LfoMode1, mono);
    setList(par::LfoWave1, saw);
    set(par::LfoSpd1, 0.4f);
    set(par::LfoPhas1, 0.3f);
    setList(par::StepMode, monoLoop);
    set(par::StepSped, 0.5f);
    layer->reset();
    press(60);
    play(37);
    const double phase = first().lfos[0].phase;
    press(64);
    EXPECT_EQ(second().lfos[0].phase, phase);
    EXPECT_EQ(second().lfos[0].seed.state, first().lfos[0].seed.state);
    EXPECT_EQ(second().stepLfo.position, first().stepLfo.position);
    EXPECT_NE(second().lfos[1].rate, second().lfos[0].rate);
    play(20);
    EXPECT_EQ(second().lfos[0].output, first().lfos[0].output);
}

TEST_F(Interplay, ATypeChangedInANoteChangesTheKernelWithinAHundredTicksAndKeepsTheWave) {
    press(60);
    play(3);
    const std::int16_t* const table = first().oscillators[0].table;
    ASSERT_NE(table, nullptr);
    setList(par::SynType1, noiseType);
    const std::size_t before = left.size();
    play(60);
    const std::vector<float> still(left.begin() + static_cast<std::ptrdiff_t>(before), left.end());
    play(60);
    EXPECT_EQ(first().oscillators[0].table, table);
    const auto roughness = [](const float* x, std::size_t count) {
        double sum = 0.0, level = 0.0;
        for (std::size_t i = 1; i < count; ++i) {
            sum += std::fabs(static_cast<double>(x[i]) - static_cast<double>(x[i - 1]));
            level += std::fabs(static_cast<double>(x[i]));
        }
        return sum / level;
    };
    EXPECT_LT(roughness(still.data(), still.size()), 0.05);
    EXPECT_GT(roughness(left.data() + left.size() - 2000, 2000), 0.5);
}

TEST_F(Interplay, InsertsAreFedWhileNoVoiceSounds) {
    constexpr int delay = 6, reverb = 2;
    setList(par::FxInType, delay);
    set(par::FxInMix, 0.75f);
    set(par::FxInPar1 + 2, 0.125f);
    setList(par::FxIn2Type, reverb);
    set(par::FxIn2Par1 + 3, 0.375f);
    layer->reset();
    tick();
    EXPECT_EQ(layer->insert(0).type(), delay);
    EXPECT_EQ(layer->insert(0).getParameter(0), 0.75f);
    EXPECT_EQ(layer->insert(0).getParameter(3), 0.125f);
    EXPECT_EQ(layer->insert(1).type(), reverb);
    EXPECT_EQ(layer->insert(1).getParameter(4), 0.375f);
}

TEST_F(Interplay, AnInsertSoundsOnAfterTheLastVoice) {
    constexpr int hall = 2;
    setList(par::FxInType, hall);
    set(par::FxInMix, 0.5f);
    for (int k = 0; k < 4; ++k) set(par::FxInPar1 + k, 0.5f);
    layer->reset();
    press(60);
    play(100);
    release(60);
    play(200);
    ASSERT_EQ(sounding(), 0);
    const std::size_t from = left.size();
    play(20);
    EXPECT_GT(peak(from), 1e-4f);
}

TEST_F(Interplay, AStartPointIsTheSameAtTheNoteOnAndAtARestart) {
    OscillatorState state;
    LinearCongruence one{7}, other{7};
    for (const float start : {-0.25f, 0.0f, 0.3f, 0.99f, 0.995f, 1.5f}) {
        setupFirstTickPhases(state, start, 0.5f, 0, sampleType, 12345, one);
        EXPECT_EQ(state.phase, sampleStart(drawStart(start, other), 12345)) << start;
        EXPECT_EQ(one.state, other.state);
    }
}

TEST_F(Interplay, AnyTypeMayFollowAnyOtherWithinANote) {
    constexpr std::int32_t lengths[] = {8, 600000};  // one shorter than a cycle, one beyond what positions reach
    std::vector<std::int16_t> frames(32 * mipLevels * cycleSamples, 1000);
    for (const std::int32_t length : lengths)
        for (int from = wavetableType; from <= analogType; ++from)
            for (int to = wavetableType; to <= analogType; ++to) {
                LayerBench bench;
                bench.waves.setWave(0, true, frames.data(), 32);
                bench.waves.buildWaveRows();
                bench.engine.quality = (from + to) % 3;
                for (int i = 0; i < oscillatorCount; ++i) {
                    Sample& sample = bench.layer->sample(i);
                    ASSERT_TRUE(sample.allocate(length));
                    sample.length = sample.loopEnd = length;
                    for (const int n : {par::On1, par::Vol1}) bench.set(n + i, 1.0f);
                    bench.setList(par::SynType1 + i, from);
                    bench.setList(par::NoiWave1 + i, 8 + i);
                    bench.setList(par::SSWave1 + i, 4 * i);
                    bench.set(par::Start1 + i, 0.98f);
                }
                bench.set(par::Fm1, 0.5f);
                bench.set(par::Sync1 + 1, 1.0f);
                bench.layer->reset();
                bench.press(96);
                for (const int type : {from, to, from}) {
                    for (int i = 0; i < oscillatorCount; ++i) bench.setList(par::SynType1 + i, type);
                    bench.play(102);
                }
                for (const float x : bench.left) ASSERT_TRUE(std::fabs(x) < 100.0f) << from << " " << to;
            }
}

// Wavetables, stacks and custom waves with FM and sync under a random matrix: nothing here draws from the shared
// generator, so a stretch may be cut anywhere.
TEST(RandomPatch, SoundsTheSameHoweverItIsCutAndStaysFinite) {
    for (unsigned seed = 0; seed < 24; ++seed) {
        std::vector<float> sound[2];
        for (const bool cut : {false, true}) {
            LayerBench bench;
            std::mt19937 random(seed), cuts(seed + 100);
            const auto unit = [&] { return static_cast<float>(random() % 10001) / 10000.0f; };
            for (int n = globalParameterCount; n < par::ArpSpeed; ++n)
                if (random() % 3 == 0) bench.set(n, unit());
            const int types[] = {wavetableType, customWaveType, hypersawType};
            for (int i = 0; i < oscillatorCount; ++i) {
                bench.setList(par::SynType1 + i, types[random() % 3]);
                bench.setList(par::WTWave1 + i, 0);
                bench.setList(par::SSWave1 + i, static_cast<int>(3 + random() % 9));
                bench.set(par::On1 + i, 1.0f);
                bench.setList(par::KeyStar1 + i, 0);
                bench.setList(par::KeyEnd1 + i, 127);
            }
            for (int f = 0; f < filterCount; ++f) {
                bench.setList(par::FilType1 + f, 0);
                bench.setList(par::DisType1 + f, static_cast<int>(random() % 16));
            }
            for (int i = 0; i < matrixSlotCount; ++i) {
                constexpr int sources[] = {2, 7, 8, 12, 17, 18, 22, 33, 36, 40, 46, 50, 56};
                bench.setList(par::MatSrc1 + i, sources[random() % std::size(sources)]);
                bench.setList(par::MatDst1 + i, static_cast<int>(random() % 97));
                bench.set(par::MatVal1 + i, unit());
            }
            for (const int n : {par::FxInType, par::Split, par::VelRange}) bench.setList(n, 0);
            bench.setList(par::PlayMode, static_cast<int>(random() % 14));
            bench.engine.quality = static_cast<int>(random() % 3);
            bench.engine.soundMode = static_cast<int>(random() % 11);
            bench.engine.microtuning = static_cast<int>(random() % 11);
            bench.layer->blockChanged();
            bench.layer->reset();
            for (int t = 0; t < 120; ++t) {
                if (t % 5 == 0) bench.press(static_cast<int>(random() % 128), static_cast<int>(1 + random() % 127));
                if (t % 7 == 0) bench.release(static_cast<int>(random() % 128));
                bench.layer->tick();
                for (int left = bench.engine.tickSamples; left > 0;) {
                    const int count = cut ? std::min(left, static_cast<int>(1 + cuts() % 50)) : left;
                    bench.render(count);
                    left -= count;
                }
            }
            for (const float x : bench.left) ASSERT_TRUE(std::isfinite(x)) << seed;
            sound[cut] = bench.left;
        }
        ASSERT_EQ(sound[0], sound[1]) << seed;
    }
}

TEST(Extremes, TheHighestAndLowestKeysSoundFiniteAtEveryRateAndOctave) {
    for (const float rate : {16000.0f, 44100.0f, 96000.0f, 192000.0f, 384000.0f})
        for (const int type : {wavetableType, hypersawType, noiseType, customWaveType, analogType})
            for (const float octave : {0.0f, 1.0f}) {
                LayerBench bench;
                bench.engine.internalRate = rate;
                bench.engine.internalRateExact = static_cast<double>(rate);
                for (float& increment : bench.engine.keyIncrement) increment *= 96000.0f / rate;
                bench.engine.tickSamples = std::min(static_cast<int>(rate * 0.001f), maxTickSamples);
                bench.set(par::Oct1, octave);
                bench.setList(par::SynType1, type);
                bench.setList(par::NoiWave1, 8);
                bench.setList(par::SSWave1, 9);
                bench.set(par::Pw1, 1.0f);
                bench.layer->reset();
                for (const int key : {0, 127}) bench.press(key);
                bench.play(30);
                for (const float x : bench.left) ASSERT_TRUE(std::fabs(x) < 100.0f) << rate << " " << type;
            }
}

}  // namespace
}  // namespace vantoric
