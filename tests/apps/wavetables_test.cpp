// The folder of single cycles, as made, in the hands of an engine.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;
namespace par = parameter;

struct MadeCycles : testing::Test {
    MadeCycles() {
        const fs::path here = fs::path(test::sharedDataFolder().path()) / "Vantoric_wavetables";
        if (!fs::exists(here)) fs::create_directory_symlink(fs::path(MADE_FOLDER) / "Vantoric_wavetables", here);
        for (const auto& entry : fs::directory_iterator(here)) files.push_back(entry.path());
        std::sort(files.begin(), files.end());
    }
    static void finishRebuild(test::EngineRig& rig) {
        const auto isDue = [&] { return rig.audio.flags().rebuildRequested.isSet() || rig.audio.flags().rebuildRunning.isSet(); };
        for (int i = 0; i < 10000 && isDue(); ++i) platform::sleepMilliseconds(1);
        ASSERT_FALSE(isDue());
    }
    static void preparePlaying(test::EngineRig& rig) {
        rig.plainLayer();
        rig.setList(par::SynType1, customWaveType);
    }

    std::vector<fs::path> files;
};

TEST_F(MadeCycles, AllLoadWithoutAComplaint) {
    EXPECT_GE(files.size(), 61u);
    EXPECT_TRUE(fs::exists(files.front().parent_path() / "2048.wav"));
    test::EngineRig rig;
    rig.told.clear();
    for (const fs::path& file : files) EXPECT_TRUE(rig.audio.customWaveLoader().resynthesize(0, 0, file)) << file;
    EXPECT_TRUE(rig.told.boxes().empty());
}

TEST_F(MadeCycles, SoundWithoutDrift) {
    test::EngineRig rig;
    preparePlaying(rig);
    for (std::size_t i = 0; i < files.size(); i += 9) {
        SCOPED_TRACE(files[i]);
        ASSERT_TRUE(rig.audio.customWaveLoader().resynthesize(0, 0, files[i]));
        finishRebuild(rig);
        rig.left.clear();
        rig.right.clear();
        rig.send({{0x90, 48, 100}});
        rig.block(24000);
        double sum = 0.0;
        for (std::size_t n = 4800; n < rig.left.size(); ++n) {
            ASSERT_TRUE(std::isfinite(rig.left[n]));
            sum += rig.left[n];
        }
        EXPECT_GT(rig.peak(4800), 0.02f);
        EXPECT_LT(std::fabs(sum / static_cast<double>(rig.left.size() - 4800)), 0.01 * rig.peak(4800));
        rig.send({{0x80, 48, 0}});
        rig.block(24000);
    }
}

}  // namespace
}  // namespace vantoric
