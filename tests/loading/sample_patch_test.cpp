// A patch in which all twelve oscillators play samples, as one block of bytes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::Bytes;

struct TwelveSamples : ::testing::Test {
    TwelveSamples() {
        first.clearParameters();
        for (int layer = 0; layer < layerCount; ++layer) {
            first.plainLayer(layer);
            for (int i = 0; i < oscillatorCount; ++i) {
                first.set(par::On1 + i, 1.0f, layer);
                first.set(par::Vol1 + i, 0.4f, layer);
                first.setList(par::SynType1 + i, sampleType, layer);
                EXPECT_TRUE(first.audio.sampleLoader().loadSample(layer, i, wave(layer * oscillatorCount + i)));
            }
        }
        first.audio.patchChunk().cleanMatrix();
        first.audio.program().setProgramName("Twelve");
        first.audio.resetEngine();
    }
    // Each of another length, depth and rate; every second one looped.
    std::string wave(int number) {
        test::WaveMaker maker;
        maker.bits = number % 3 == 0 ? 24 : 16;
        maker.rate = static_cast<std::uint32_t>(22050 + 5000 * number);
        const double step = 0.02 + 0.013 * number;
        maker.putFrames(3000 + 777 * number,
                        [&](int i) { return static_cast<int>(9000.0 * std::sin(step * i)) << (maker.bits - 16); });
        const Bytes bytes = number % 2 == 0 ? maker.file() : maker.looped(100, 2000 + static_cast<std::uint32_t>(number));
        const std::string path = folder / ("wave" + std::to_string(number) + "_.wav");
        EXPECT_TRUE(platform::writeFile(path, bytes.data(), bytes.size()));
        return path;
    }
    static Bytes save(test::EngineRig& rig) {
        const ChunkBytes chunk = rig.audio.patchChunk().getChunk();
        return Bytes(chunk.data.get(), chunk.data.get() + chunk.size);
    }
    static void load(test::EngineRig& rig, Bytes bytes) {
        EXPECT_EQ(rig.audio.patchChunk().setChunk(bytes.data(), static_cast<std::int32_t>(bytes.size())), 1);
        const EngineFlags& flags = rig.audio.flags();
        for (int i = 0; i < 3000 && (flags.rebuildRequested.isSet() || flags.rebuildRunning.isSet()); ++i)
            platform::sleepMilliseconds(10);
    }
    static void play(test::EngineRig& rig) {
        rig.audio.resetEngine();
        rig.audio.random() = {};
        for (int key = 40; key < 90; key += 10) rig.send({{0x90, key, 100}});
        for (int i = 0; i < 40; ++i) rig.block(480);
    }

    platform::ScratchFolder folder;
    test::EngineRig first, second;
};

TEST_F(TwelveSamples, ComeBackBitForBit) {
    const Bytes bytes = save(first);
    std::size_t samples = 0;
    for (std::size_t number = 0; number < 12; ++number) samples += 3000 + 777 * number;
    EXPECT_EQ(bytes.size(), 55169 + 2 * samples);
    load(second, bytes);
    EXPECT_EQ(save(second), bytes);
    load(second, save(second));
    EXPECT_EQ(save(second), bytes) << "and once more";
}

TEST_F(TwelveSamples, HaveTheirLevelsAfterALoad) {
    load(second, save(first));
    for (int index = 0; index < layerCount * oscillatorCount; ++index) {
        const Sample& a = first.audio.layer(index / oscillatorCount).sample(index % oscillatorCount);
        const Sample& b = second.audio.layer(index / oscillatorCount).sample(index % oscillatorCount);
        ASSERT_EQ(a.length, b.length);
        EXPECT_EQ(a.loopStart, b.loopStart);
        EXPECT_EQ(a.loopEnd, b.loopEnd);
        EXPECT_EQ(a.sampleRate, b.sampleRate);
        for (int level = 0; level < sampleLevels; ++level)
            EXPECT_TRUE(std::equal(a.levels[level].get(), a.levels[level].get() + a.length, b.levels[level].get()))
                << index << " level " << level;
    }
}

TEST_F(TwelveSamples, PlayTheSameAfterALoad) {
    load(second, save(first));
    play(first);
    play(second);
    EXPECT_GT(first.peak(), 0.05f);
    EXPECT_EQ(first.left, second.left);
    EXPECT_EQ(first.right, second.right);
}

}  // namespace
}  // namespace vantoric
