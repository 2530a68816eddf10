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
            waves.push_back(std::make_unique<CustomWave>());
            holders[i] = waves.back().get();
        }
        for (int i = 0; i < parameterCount; ++i) parameters.writeRaw(i, 0.25f);
        loader = std::make_unique<CustomWaveLoader>(flags, parameters, holders, dialogs, noSleep);
    }
    std::string put(const std::string& path, int length, int period) {
        const auto bytes = waveFileBytes(tone(length, period));
        EXPECT_TRUE(platform::writeFile(path, bytes.data(), bytes.size()));
        return path;
    }
    int peakOf(int index) const {
        const std::int16_t* frame = holders[static_cast<std::size_t>(index)]->frame(0, 0);
        return *std::max_element(frame, frame + cycleSamples);
    }

    platform::ScratchFolder folder;
    EngineFlags flags;
    ParameterModel parameters;
    platform::RecordedDialogs dialogs;
    std::vector<std::unique_ptr<CustomWave>> waves;
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
    holders[0]->samples.fill(55);
    EXPECT_FALSE(loader->resynthesize(0, 0, folder / "none.wav"));
    EXPECT_EQ(peakOf(0), 55);
    EXPECT_FALSE(flags.rebuildRequested.isSet());
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Start1, 0)), 0.25f);
}

TEST_F(CustomWaveLoading, KnowsNoOtherOscillators) {
    const std::string path = put(folder / "x.wav", 300, 300);
    for (const auto& [layer, oscillator] : {std::pair{-1, 0}, {4, 0}, {0, -1}, {0, 3}}) {
        EXPECT_FALSE(loader->resynthesize(layer, oscillator, path));
        EXPECT_FALSE(loader->saveWave(layer, oscillator));
    }
}

TEST_F(CustomWaveLoading, DialogStartsInTheFolderOfCycles) {
    dialogs.choosePathNext(put(folder / "x.wav", 300, 300));
    EXPECT_TRUE(loader->resynthesizeDialog(0, 0));
    ASSERT_EQ(dialogs.requests().size(), 1u);
    EXPECT_EQ(dialogs.requests()[0].startFolder, platform::wavetableFolder());
    EXPECT_FALSE(loader->resynthesizeDialog(0, 0)) << "the user goes back";
}

TEST_F(CustomWaveLoading, RandomWaveComesFromTheFolderOfCycles) {
    platform::setDataFolder(folder / "");
    EXPECT_FALSE(loader->randomWave(0, 0)) << "there is none";
    platform::makeFolder(folder / "Vantoric_wavetables/sub.wav");
    put(folder / "Vantoric_wavetables/a.wav", 300, 300);
    put(folder / "Vantoric_wavetables/b.txt", 300, 300);
    EXPECT_TRUE(loader->randomWave(1, 1));
    EXPECT_EQ(peakOf(4), 20000);
    platform::setDataFolder("");
}

TEST_F(CustomWaveLoading, SaveWritesTheCycleOf2048Samples) {
    holders[0]->frame(0, 0)[5] = 77;
    dialogs.choosePathNext(folder / "cycle");
    EXPECT_TRUE(loader->saveWave(0, 0));
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(platform::readFile(folder / "cycle.wav", bytes));
    EXPECT_EQ(bytes.size(), 4140u);
    EXPECT_EQ(bytes[44 + 10], 77);
}

TEST_F(CustomWaveLoading, MakesAWaveThatAnEnginePlays) {
    test::EngineRig rig;
    EXPECT_TRUE(rig.audio.customWaveLoader().resynthesize(0, 0, put(folder / "x.wav", 2048, 2048)));
    for (int i = 0; i < 500 && (rig.audio.flags().rebuildRequested.isSet() || rig.audio.flags().rebuildRunning.isSet()); ++i)
        platform::sleepMilliseconds(10);
    EXPECT_NEAR(rig.audio.layer(0).customWave(0).frame(3, 0)[512], 20000, 20) << "the worker has made its levels";
}

}  // namespace
}  // namespace vantoric
