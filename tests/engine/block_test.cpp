// Properties that hold for a whole engine, whatever it plays.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <array>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <thread>
#include <utility>

#include "base/random.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::EngineRig;

// A patch of several layers: custom waves with FM, both filters, drive, LFOs and a matrix, an insert and a
// master effect that count samples, not calls.
void richPatch(EngineRig& rig) {
    rig.clearParameters();
    const std::vector<std::int16_t> wave = test::plainWave(customFrames);
    for (int layer = 0; layer < 2; ++layer) {
        rig.plainLayer(layer);
        for (int i = 0; i < oscillatorCount; ++i) {
            test::giveWave(rig.audio.layer(layer).customWave(i), wave);
            rig.set(par::On1 + i, 1.0f, layer);
            rig.set(par::Vol1 + i, 0.6f, layer);
            rig.set(par::Pw1 + i, 0.3f, layer);
            rig.set(par::Timbre1 + i, 0.3f + 0.2f * i, layer);
            rig.set(par::FiltMix1 + i, 0.4f, layer);
            rig.setList(par::SynType1 + i, 4, layer);
            rig.set(par::LfoSpd1 + i, 0.5f, layer);
        }
        rig.set(par::Fm1, 0.2f, layer);
        for (int f = 0; f < filterCount; ++f) {
            rig.setList(par::FilType1 + f, 2 + f, layer);
            rig.setList(par::DisType1 + f, 2, layer);
            rig.set(par::Cutoff1 + f, 0.5f, layer);
            rig.set(par::Reso1 + f, 0.4f, layer);
            rig.set(par::Drive1 + f, 0.4f, layer);
        }
        rig.set(par::AttVol, 0.3f, layer);
        rig.set(par::RelVol, 0.4f, layer);
        for (int slot = 0; slot < 3; ++slot) {
            rig.setList(par::MatSrc1 + slot, 2 + slot, layer);
            rig.setList(par::MatDst1 + slot, 32 + slot, layer);
            rig.set(par::MatVal1 + slot, 0.7f, layer);
        }
    }
    rig.setList(par::Quality, 2);
    rig.audio.resetEngine();
    // The volume ramps across the first block; behind it nothing depends on the length of a block.
    rig.block(4800);
    rig.left.clear();
    rig.right.clear();
}

// Plays stretches of 4800 frames, with notes at their beginnings, each stretch divided into blocks of the
// given lengths over and over.
std::vector<float> played(EngineRig& rig, const std::vector<int>& lengths, int stretches = 4) {
    std::size_t next = 0;
    for (int s = 0; s < stretches; ++s) {
        rig.send({{0x90, 48 + 5 * s, 100}, {0x90, 55 + 3 * s, 80}});
        if (s > 0) rig.send({{0x80, 48 + 5 * (s - 1), 0}});
        for (int left = 4800; left > 0;) {
            const int length = std::min(left, lengths[next++ % lengths.size()]);
            rig.block(length);
            left -= length;
        }
    }
    std::vector<float> all = rig.left;
    all.insert(all.end(), rig.right.begin(), rig.right.end());
    return all;
}

std::vector<float> playedFresh(const std::vector<int>& lengths, float rate = 48000.0f) {
    EngineRig rig(rate);
    richPatch(rig);
    return played(rig, lengths);
}

bool sameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

bool allFinite(const std::vector<float>& samples) {
    return std::all_of(samples.begin(), samples.end(), [](float x) { return std::isfinite(x); });
}

TEST(Block, SoundDoesNotDependOnTheDivisionIntoBlocks) {
    const std::vector<float> whole = playedFresh({4800});
    EXPECT_GT(*std::max_element(whole.begin(), whole.end()), 0.01f);
    for (const std::vector<int>& lengths : {std::vector<int>{256}, std::vector<int>{64}, std::vector<int>{1, 7, 48, 333},
                                            std::vector<int>{47}, std::vector<int>{0, 512}})
        EXPECT_TRUE(sameBits(playedFresh(lengths), whole)) << lengths[0];
}

TEST(Block, SoundDoesNotDependOnTheDivisionWithoutOversampling) {
    const std::vector<float> whole = playedFresh({4800}, 96000.0f);
    EXPECT_TRUE(sameBits(playedFresh({1, 7, 48, 333}, 96000.0f), whole));
    EXPECT_TRUE(sameBits(playedFresh({128}, 96000.0f), whole));
}

// A tick of 384 samples is rendered in pieces that fit the voices' buffers.
TEST(Block, SoundDoesNotDependOnTheDivisionWhereATickIsLongerThanTheVoicesBuffers) {
    const std::vector<float> whole = playedFresh({4800}, 384000.0f);
    EXPECT_GT(*std::max_element(whole.begin(), whole.end()), 0.001f);
    EXPECT_TRUE(sameBits(playedFresh({1, 7, 48, 333}, 384000.0f), whole));
    EXPECT_TRUE(sameBits(playedFresh({300}, 384000.0f), whole));
}

TEST(Block, RenderRepeatsBitForBitAfterFreshConstruction) { EXPECT_TRUE(sameBits(playedFresh({200}), playedFresh({200}))); }

TEST(Block, ResetEngineLeavesNothingOfTheNotesBefore) {
    EngineRig rig;
    richPatch(rig);
    played(rig, {256});
    EXPECT_GT(rig.peak(), 0.01f);
    rig.audio.allNotesOff();
    rig.audio.resetEngine();
    rig.left.clear();
    rig.right.clear();
    rig.block(4800);
    EXPECT_LT(rig.peak(2400), 1e-4f);
}

TEST(Block, InstancesSideBySideDoNotDisturbEachOther) {
    const std::vector<float> alone = playedFresh({256});
    EngineRig a, b;
    richPatch(a);
    richPatch(b);
    b.setList(par::Microtun, 3);
    b.setList(par::SynType1, 2);
    for (int s = 0; s < 4; ++s) {
        a.send({{0x90, 48 + 5 * s, 100}, {0x90, 55 + 3 * s, 80}});
        b.send({{0x90, 30 + 7 * s, 100}});
        if (s > 0) a.send({{0x80, 48 + 5 * (s - 1), 0}});
        for (int left = 4800; left > 0; left -= std::min(left, 256)) {
            a.block(std::min(left, 256));
            b.block(100);
        }
    }
    std::vector<float> beside = a.left;
    beside.insert(beside.end(), a.right.begin(), a.right.end());
    EXPECT_TRUE(sameBits(beside, alone));
}

TEST(Block, InstancesOnTwoThreadsDoNotDisturbEachOther) {
    const std::vector<float> alone = playedFresh({256});
    EngineRig a, b;
    richPatch(a);
    richPatch(b);
    std::vector<float> ofA, ofB;
    std::thread other([&] { ofB = played(b, {256}); });
    ofA = played(a, {256});
    other.join();
    EXPECT_TRUE(sameBits(ofA, alone));
    EXPECT_TRUE(sameBits(ofB, alone));
}

TEST(Block, RandomPatchesStayFinite) {
    LinearCongruence random{20240607};
    EngineRig rig;
    for (int patch = 0; patch < 300; ++patch) {
        for (int i = 0; i < parameterCount; ++i) rig.audio.parameters().setParameterQuiet(i, random.unit());
        for (int layer = 0; layer < layerCount; ++layer) {
            rig.set(par::Layer1On + layer, layer == patch % 4 || random.unit() > 0.7f ? 1.0f : 0.0f);
            rig.set(par::On1, 1.0f, layer);
            rig.set(par::MidiSpli, 0.0f, layer);
            rig.set(par::Split, 0.0f, layer);
            rig.set(par::VelRange, 0.0f, layer);
            if (patch % 2 == 0) rig.set(par::ArpType, 0.0f, layer);
        }
        if (patch % 5 == 0) rig.audio.resetEngine();
        rig.host.tell(300.0 * random.unit(), 10.0 * random.unit());
        const int key = static_cast<int>(127 * random.unit());
        rig.send({{0x90, key, 100}, {0x90, (key + 7) % 128, 90}, {0xe0, 3, static_cast<int>(127 * random.unit())}});
        rig.left.clear();
        rig.right.clear();
        for (int i = 0; i < 4; ++i) rig.block(300);
        rig.send({{0x80, key, 0}});
        rig.block(300);
        ASSERT_TRUE(allFinite(rig.left) && allFinite(rig.right)) << "patch " << patch;
    }
}

TEST(Block, ParametersThatAreNoNumbersLeaveNoTrace) {
    EngineRig rig;
    richPatch(rig);
    for (int i = 0; i < parameterCount; i += 7) rig.audio.parameters().setParameter(i, std::numeric_limits<float>::quiet_NaN());
    rig.send({{0x90, 60, 100}});
    for (int i = 0; i < 20; ++i) rig.block(256);
    EXPECT_TRUE(allFinite(rig.left));
}

TEST(Block, HostsControlWordIsRestoredAtEveryExit) {
    EngineRig rig;
    richPatch(rig);
    const unsigned before = _mm_getcsr();
    const unsigned own = (before & ~0x8040u) ^ 0x6000u;  // another rounding, denormals on
    EngineFlags& flags = rig.audio.flags();
    for (Flag* flag : {static_cast<Flag*>(nullptr), &flags.engineLocked, &flags.audioMuted, &flags.bootPending}) {
        if (flag != nullptr) flag->set();
        _mm_setcsr(own);
        rig.block(64);
        const unsigned after = _mm_getcsr();
        std::vector<double> wide(128);
        rig.audio.render(wide.data(), wide.data() + 64, 64, rig.host.transport);
        const unsigned afterDoubles = _mm_getcsr();
        _mm_setcsr(before);
        if (flag != nullptr) flag->clear();
        EXPECT_EQ(after & ~0x3fu, own & ~0x3fu);  // but for the sticky exception bits
        EXPECT_EQ(afterDoubles & ~0x3fu, own & ~0x3fu);
    }
}

TEST(Block, LongBlocksSoundLikeShortOnes) {
    EngineRig whole, parts;
    for (EngineRig* rig : {&whole, &parts}) {
        richPatch(*rig);
        rig->send({{0x90, 60, 100}});
    }
    whole.block(100000);
    for (int left = 100000; left > 0; left -= std::min(left, 500)) parts.block(std::min(left, 500));
    EXPECT_TRUE(sameBits(whole.left, parts.left));
    EXPECT_TRUE(sameBits(whole.right, parts.right));
}

TEST(Block, EventsDeepInALongBlockComeInTime) {
    EngineRig rig;
    rig.clearParameters();
    rig.plainLayer();
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100, 50000}});
    rig.block(60000);
    const auto loud = std::find_if(rig.left.begin(), rig.left.end(), [](float x) { return std::fabs(x) > 1e-3f; });
    EXPECT_NEAR(static_cast<double>(loud - rig.left.begin()), 50000.0, 100.0);
}

TEST(Block, PlaysAtEveryRate) {
    for (const float rate :
         {8000.0f, 11025.0f, 22050.0f, 44100.0f, 48000.0f, 48001.0f, 88200.0f, 96000.0f, 192000.0f, 400000.0f}) {
        EngineRig rig(rate);
        richPatch(rig);
        rig.send({{0x90, 60, 100}});
        for (int i = 0; i < 40; ++i) rig.block(256);
        EXPECT_TRUE(allFinite(rig.left)) << rate;
        EXPECT_GT(rig.peak(), 1e-3f) << rate;
    }
}

// Below its usual rates some filters are tuned past their stability and run away from tick to tick.
TEST(Block, AFilterThatRunsAwayLeavesFiniteSoundAndNoTrace) {
    constexpr int phaser = 23, orvix = 51, lowPass12 = 2, soft = 3, dynamicBass = 2, transientAndBass = 10, noMode = 20;
    for (const float rate : {8000.0f, 11025.0f, 16000.0f, 32000.0f})
        for (const int type : {phaser, orvix, lowPass12})
            for (const int mode : {dynamicBass, transientAndBass, noMode}) {
                EngineRig rig(rate);
                rig.clearParameters();
                rig.plainLayer();
                rig.setList(par::SoundMod, mode);
                for (int f = 0; f < filterCount; ++f) {
                    rig.setList(par::FilType1 + f, type);
                    rig.setList(par::DisType1 + f, soft);
                    rig.set(par::Drive1 + f, 0.7f, 0);
                    rig.set(par::Cutoff1 + f, 1.0f, 0);
                    rig.set(par::Reso1 + f, type == orvix ? 1.0f : 0.0f, 0);
                }
                rig.set(par::FilSerial, 1.0f, 0);
                rig.set(par::Ringmod, 0.5f, 0);
                rig.audio.resetEngine();
                rig.send({{0x90, 60, 100}});
                for (int i = 0; i < 100; ++i) rig.block(64);
                ASSERT_TRUE(allFinite(rig.left) && allFinite(rig.right)) << type << " in mode " << mode << " at " << rate;
                for (int f = 0; f < filterCount; ++f) {
                    rig.setList(par::FilType1 + f, 0);
                    rig.setList(par::DisType1 + f, 0);
                }
                for (int i = 0; i < 200; ++i) rig.block(64);
                rig.left.clear();
                rig.right.clear();
                rig.block(1000);
                EXPECT_GT(rig.peak(), 1e-4f) << type << " in mode " << mode << " at " << rate;
                EXPECT_LT(rig.peak(), 10.0f) << type << " in mode " << mode << " at " << rate;
            }
}

TEST(Block, NonsenseRatesAreSilentOrPlayButNeverFail) {
    for (const float rate :
         {0.0f, -44100.0f, 1.0f, 249.0f, 1e9f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        EngineRig rig(rate);
        richPatch(rig);
        rig.send({{0x90, 60, 100}});
        for (int i = 0; i < 10; ++i) rig.block(256);
        EXPECT_TRUE(allFinite(rig.left)) << rate;
        if (rate < 250.0f) {
            EXPECT_LT(rig.peak(), 1e-4f) << rate;
        }
    }
}

TEST(Block, RateMayChangeBetweenBlocks) {
    EngineRig rig;
    richPatch(rig);
    rig.send({{0x90, 60, 100}});
    for (const float rate : {44100.0f, 96000.0f, 8000.0f, 192000.0f, 48000.0f}) {
        rig.audio.setSampleRate(rate);
        rig.block(700);
    }
    EXPECT_TRUE(allFinite(rig.left));
}

// Sets another rate on a thread of its own as soon as a block begins, and looks whether the block stays what it was.
struct RateChange final : BlockObserver {
    explicit RateChange(Instrument& instrument) : audio(instrument) {}
    ~RateChange() {
        if (other.joinable()) other.join();
    }
    void onStep(BlockStep step, int first, int) override {
        if (step == BlockStep::clearOutputs) {
            samples = first;
            if (other.joinable()) return;
            other = std::thread([this] {
                audio.setSampleRate(96000.0f);
                isSet.set();
            });
            for (int i = 0; i < 50 && !isSet.isSet(); ++i) platform::sleepMilliseconds(1);
        }
        if (step == BlockStep::renderSubBlock) isWhole = isWhole && audio.state().oversampled == (samples == 2 * frames);
    }

    static constexpr int frames = 200;
    Instrument& audio;
    std::thread other;
    Flag isSet;
    int samples = 0;
    bool isWhole = true;
};

TEST(Block, IsRenderedAtOneRateThoughAnotherIsSetAsItBegins) {
    EngineRig rig(48000.0f);
    rig.clearParameters();
    rig.plainLayer();
    rig.audio.resetEngine();
    RateChange change(rig.audio);
    rig.audio.setBlockObserver(&change);
    rig.block(RateChange::frames);
    EXPECT_TRUE(change.isWhole);
    change.other.join();
    rig.block(RateChange::frames);
    EXPECT_TRUE(change.isWhole);
    EXPECT_EQ(change.samples, RateChange::frames);
    rig.audio.setBlockObserver(nullptr);
}

struct ThrowsOnce final : BlockObserver {
    void onStep(BlockStep step, int, int) override {
        if (step != BlockStep::renderSubBlock || --stepsLeft != 0) return;
        throw std::bad_alloc();
    }
    int stepsLeft = 3;
};

TEST(Block, ThatThrowsIsSilentAndTheNextBeginsAnew) {
    EngineRig rig(48000.0f);
    rig.clearParameters();
    rig.plainLayer();
    rig.audio.resetEngine();
    const auto peakOfABlock = [&] {
        const std::size_t from = rig.left.size();
        rig.block(512);
        return rig.peak(from);
    };
    rig.audio.receive({0, 0x90, 60, 100});
    EXPECT_GT(peakOfABlock(), 0.01f);
    ThrowsOnce observer;
    rig.audio.setBlockObserver(&observer);
    EXPECT_EQ(peakOfABlock(), 0.0f);
    EXPECT_FALSE(rig.audio.flags().audioRunning.isSet());
    EXPECT_EQ(rig.audio.state().heldNote[60], 1);
    rig.audio.setBlockObserver(nullptr);
    peakOfABlock();
    EXPECT_EQ(rig.audio.state().heldNote[60], 0);
    rig.audio.receive({0, 0x90, 60, 100});
    EXPECT_GT(peakOfABlock(), 0.01f);
}

#ifndef NDEBUG
// Does something within each block.
struct WithinTheBlock final : BlockObserver {
    explicit WithinTheBlock(std::function<void()> what) : act(std::move(what)) {}
    void onStep(BlockStep, int, int) override { act(); }
    std::function<void()> act;
};

TEST(BlockDeathTest, WhoeverAsksThereForAPartThatMayWaitIsCaught) {
    EngineRig rig(48000.0f);
    Instrument& audio = rig.audio;
    const auto parts = std::to_array<std::pair<const char*, std::function<void()>>>({
        {"messages", [&] { audio.messages(); }},
        {"program", [&] { audio.program(); }},
        {"waveWorker", [&] { audio.waveWorker(); }},
        {"patchFiles", [&] { audio.patchFiles(); }},
        {"patchChunk", [&] { audio.patchChunk(); }},
        {"sampleLoader", [&] { audio.sampleLoader(); }},
        {"quickImport", [&] { audio.quickImport(); }},
        {"sampleEditor", [&] { audio.sampleEditor(); }},
        {"customWaveLoader", [&] { audio.customWaveLoader(); }},
        {"sfzImport", [&] { audio.sfzImport(); }},
        {"another rate", [&] { audio.setSampleRate(44100.0f); }},
        {"memory of an effect", [&] { audio.layer(0).insert(0).touchMemory(6); }},
    });
    for (const auto& [name, ask] : parts) {
        WithinTheBlock observer(ask);
        audio.setBlockObserver(&observer);
        EXPECT_DEATH(rig.block(64), "not from within") << name;
        audio.setBlockObserver(nullptr);
    }
}
#endif

// Whatever the rate was when a host asked for its longest block, nothing is written beyond what the block is rendered in.
TEST(Block, OfAnyLengthAtAnyRateStaysWithinTheBuffers) {
    EngineRig rig(96000.0f);
    rig.clearParameters();
    rig.plainLayer();
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}});
    std::vector<double> left(140000), right(140000);
    for (const float rate : {96000.0f, 48000.0f, 192000.0f, 44100.0f}) {
        rig.audio.setSampleRate(rate);
        rig.block(140000);
        rig.audio.render(left.data(), right.data(), 140000, {});
        EXPECT_NE(left.back(), 0.0) << rate;
        EXPECT_NE(rig.left.back(), 0.0f) << rate;
    }
}

}  // namespace
}  // namespace vantoric
