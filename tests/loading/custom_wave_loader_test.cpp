#include "loading/custom_wave_loader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/scratch_folder.h"
#include "samples/wave_file.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;

void noSleep(int) {}

std::vector<std::int16_t> tone(int length, int period) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i)
        samples[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(15000.0 * std::sin(2.0 * M_PI * i / period));
    return samples;
}

struct CustomWaveLoading : testing::Test {
    CustomWaveLoading() {
        for (std::size_t i = 0; i < holders.size(); ++i) {
            waves.push_back(std::make_unique<CustomWaveSlot>());
            holders[i] = waves.back().get();
        }
        for (int i = 0; i < parameterCount; ++i) parameters.writeRaw(i, 0.25f);
        loader = std::make_unique<CustomWaveLoader>(access, parameters, holders, messages);
    }
    std::string put(const std::string& path, int length, int period) {
        const auto bytes = waveFileBytes(tone(length, period));
        EXPECT_TRUE(platform::writeFile(path, bytes.data(), bytes.size()));
        return path;
    }
    int peakOf(int index) const {
        const CustomCycle& cycle = holders[static_cast<std::size_t>(index)]->cycle;
        return *std::max_element(cycle.begin(), cycle.end());
    }

    platform::ScratchFolder folder;
    EngineFlags flags;
    EngineAccess access{flags, noSleep};
    ParameterModel parameters;
    Messages messages;
    std::vector<std::unique_ptr<CustomWaveSlot>> waves;
    CustomWaveHolders holders{};
    std::unique_ptr<CustomWaveLoader> loader;
};

TEST_F(CustomWaveLoading, FillsFrame0AndAsksTheWorkerForTheRest) {
    EXPECT_TRUE(loader->resynthesize(2, 1, put(folder / "x.wav", 9000, 300)));
    EXPECT_EQ(peakOf(7), 20000);
    EXPECT_EQ(peakOf(6), 0);
    EXPECT_TRUE(flags.rebuildRequested.isSet());
    EXPECT_FALSE(flags.engineLocked.isSet());
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Start1 + 1, 2)), 0.0f);
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Start1, 2)), 0.25f);
}

TEST_F(CustomWaveLoading, LeavesTheWaveAsItWasAfterAFailure) {
    holders[0]->cycle.fill(55);
    EXPECT_FALSE(loader->resynthesize(0, 0, folder / "none.wav"));
    EXPECT_EQ(peakOf(0), 55);
    EXPECT_FALSE(flags.rebuildRequested.isSet());
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Start1, 0)), 0.25f);
}

TEST_F(CustomWaveLoading, KnowsNoOtherOscillators) {
    const std::string path = put(folder / "x.wav", 300, 300);
    for (const auto& [layer, oscillator] : {std::pair{-1, 0}, {4, 0}, {0, -1}, {0, 3}}) {
        EXPECT_FALSE(loader->resynthesize(layer, oscillator, path));
        EXPECT_FALSE(loader->saveWave(layer, oscillator, folder / "y.wav"));
    }
}

TEST_F(CustomWaveLoading, SaveWritesTheCycleOf2048Samples) {
    holders[0]->cycle[5] = 77;
    EXPECT_TRUE(loader->saveWave(0, 0, folder / "cycle.wav"));
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(platform::readFile(folder / "cycle.wav", bytes));
    EXPECT_EQ(bytes.size(), 4140u);
    EXPECT_EQ(bytes[44 + 10], 77);
}

TEST_F(CustomWaveLoading, MakesAWaveThatAnEnginePlays) {
    test::EngineRig rig;
    EXPECT_TRUE(rig.audio.customWaveLoader().resynthesize(0, 0, put(folder / "x.wav", 2048, 2048)));
    EXPECT_TRUE(rig.audio.waveWorker().waitForWaves(60000));
    EXPECT_NEAR(rig.audio.layer(0).customWave(0).samples()[cycleOffset(customFrames, 0, 3) + 512], 20000, 20)
        << "the worker has made its levels";
}

}  // namespace
}  // namespace vantoric
