// After a load the earlier patch's waves never sound, and the new one's sound once they are made.
#include <gtest/gtest.h>

#include <thread>

#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

using test::EngineRig;
namespace par = test::par;

using Bytes = std::vector<std::uint8_t>;

struct AfterALoad : testing::Test {
    AfterALoad() {
        rig.clearParameters();
        rig.plainLayer();
        rig.block(960);  // from here on every block begins as far from a tick as the others
    }

    static int squareAt(int i, int height) { return i % 100 < 50 ? height : -height; }

    // The chunk of a patch whose first oscillator plays a custom wave, or a sample, of such a height.
    Bytes customPatch(int height) {
        rig.setList(par::SynType1, customWaveType);
        CustomWaveSlot& slot = rig.audio.layer(0).customWave(0);
        slot.forget();
        for (int i = 0; i < cycleSamples; ++i)
            slot.cycle[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(i < 1024 ? height : -height);
        return chunk();
    }
    Bytes samplePatch(int height) {
        rig.setList(par::SynType1, sampleType);
        rig.setList(par::LoopMod1, loopModeLoop);
        Sample& sample = rig.audio.layer(0).sample(0);
        EXPECT_TRUE(sample.allocate(20000));
        sample.length = sample.loopEnd = 20000;
        for (int i = 0; i < 20000; ++i)
            sample.levels[0][static_cast<std::size_t>(i)] = static_cast<std::int16_t>(squareAt(i, height));
        return chunk();
    }
    Bytes chunk() {
        const ChunkBytes bytes = rig.audio.patchChunk().getChunk();
        return Bytes(bytes.data.get(), bytes.data.get() + bytes.size);
    }
    int take(const Bytes& bytes) {
        return rig.audio.patchChunk().setChunk(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    }
    void load(const Bytes& bytes) { EXPECT_EQ(take(bytes), 1); }

    // Half a second of a note from here on, in whole ticks; its peak.
    float playNote() {
        rig.left.clear();
        rig.right.clear();
        rig.send({{0x90, 60, 127}});
        for (int i = 0; i < 25; ++i) rig.block(960);
        return rig.peak();
    }
    void endNote() {
        rig.send({{0x80, 60, 0}});
        for (int i = 0; i < 50; ++i) rig.block(960);
    }
    WaveWorker& worker() { return rig.audio.waveWorker(); }
    // A loud patch, then a soft one that no worker builds.
    void loadSoftAfterLoud(const Bytes& loud, const Bytes& soft) {
        load(loud);
        ASSERT_TRUE(worker().waitForWaves(60000));
        EXPECT_GT(playNote(), 0.1f);
        worker().stop();
        load(soft);
    }
    void expectSilentUntilBuilt(const Bytes& loud, const Bytes& soft) {
        loadSoftAfterLoud(loud, soft);
        EXPECT_LT(playNote(), 1e-4f) << "nothing is made yet";
        worker().poll();
        rig.left.clear();
        rig.right.clear();
        for (int i = 0; i < 25; ++i) rig.block(960);
        const float peak = rig.peak();
        EXPECT_GT(peak, 1e-3f) << "the note that is held comes in";
        for (std::size_t i = 1; i < 40; ++i) EXPECT_LT(std::fabs(rig.left[i] - rig.left[i - 1]), 0.5f * peak) << i;
        endNote();
        EXPECT_LT(playNote(), 1.5f * peak) << "as the soft one, not as the loud one";
    }

    EngineRig rig;
};

TEST_F(AfterALoad, TheEarlierCustomWaveNeverSounds) {
    const Bytes soft = customPatch(2000);
    expectSilentUntilBuilt(customPatch(30000), soft);
}

TEST_F(AfterALoad, ASampleIsSilentUntilItsLevelsAreMade) {
    const Bytes soft = samplePatch(2000);
    expectSilentUntilBuilt(samplePatch(30000), soft);
}

TEST_F(AfterALoad, ARenderThatWaitsForTheWorkerIsTheSameEachTime) {
    const Bytes other = customPatch(30000), patch = customPatch(9000);
    std::vector<float> first;
    for (int round = 0; round < 5; ++round) {
        load(other);
        load(patch);
        ASSERT_TRUE(worker().waitForWaves(60000));
        playNote();
        if (round == 0) first = rig.left;
        EXPECT_EQ(rig.left, first) << round;
        endNote();
    }
}

// Without the wait the first blocks would be silent: nothing is built before they are asked for.
TEST_F(AfterALoad, ARenderToAFileWaitsForTheWavesByItself) {
    const Bytes patch = customPatch(9000);
    worker().stop();
    load(patch);
    rig.host.transport.offline = true;
    std::thread builder([&] {
        platform::sleepMilliseconds(100);
        worker().poll();
    });
    rig.left.clear();
    rig.right.clear();
    rig.send({{0x90, 60, 127}});
    for (int i = 0; i < 3; ++i) rig.block(960);
    builder.join();
    EXPECT_GT(rig.peak(), 0.01f);
}

TEST_F(AfterALoad, APatchThatIsRefusedLeavesTheOneInForceToBeBuilt) {
    const Bytes patch = customPatch(9000);
    worker().stop();
    load(patch);
    Bytes newer = patch;
    newer[chunk::versionOffset] = chunk::formatVersion + 1;
    EXPECT_EQ(take(newer), 0);
    worker().poll();
    EXPECT_GT(playNote(), 0.01f);
}

}  // namespace
}  // namespace vantoric
