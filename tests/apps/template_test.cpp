// The templates of the quick imports, as made, with the wave banks as made.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "platform/files.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;

struct QuickTemplates : testing::Test {
    QuickTemplates() {
        const fs::path data = fs::path(test::sharedDataFolder().path()) / "Vantoric_data";
        fs::create_directories(data);
        for (const auto& made : fs::directory_iterator(fs::path(MADE_FOLDER) / "Vantoric_data")) {
            const fs::path here = data / made.path().filename();
            if (!fs::exists(here)) fs::create_symlink(made.path(), here);
        }
        platform::setDataFolder(test::sharedDataFolder().path());
    }

    // Clicks at 100 Hz: something in every band of a vocoder.
    std::string clicks(int channels) {
        test::WaveMaker maker;
        maker.channels = channels;
        const test::Bytes bytes = maker.putFrames(40000, [](int i) { return i % 441 < 4 ? 20000 : 0; }).file();
        const std::string path = test::sharedDataFolder().path() + "Clicks.wav";
        EXPECT_TRUE(platform::writeFile(path, bytes.data(), bytes.size()));
        return path;
    }
    static void play(test::EngineRig& rig, int key) {
        rig.left.clear();
        rig.right.clear();
        rig.send({{0x90, key, 100}});
        rig.block(24000);
        for (std::size_t i = 0; i < rig.left.size(); ++i) ASSERT_TRUE(std::isfinite(rig.left[i]) && std::isfinite(rig.right[i]));
        EXPECT_LT(rig.peak(), 1.0f);
    }
    static float peakOf(const std::vector<float>& side) {
        float highest = 0.0f;
        for (const float x : side) highest = std::max(highest, std::fabs(x));
        return highest;
    }
};

TEST_F(QuickTemplates, PlayAMonoSampleOnBothSides) {
    test::EngineRig rig;
    ASSERT_TRUE(rig.audio.quickImport().importSample(clicks(1)));
    play(rig, 60);
    EXPECT_GT(peakOf(rig.left), 0.02f);
    EXPECT_NEAR(peakOf(rig.left), peakOf(rig.right), 0.05f * peakOf(rig.left));
}

TEST_F(QuickTemplates, PlayAStereoSampleOnItsSides) {
    test::EngineRig rig;
    ASSERT_TRUE(rig.audio.quickImport().importSample(clicks(2)));
    play(rig, 60);
    EXPECT_GT(peakOf(rig.left), 0.02f);
    EXPECT_GT(peakOf(rig.right), 0.02f);
}

TEST_F(QuickTemplates, LetASampleModulateAVoice) {
    test::EngineRig rig;
    ASSERT_TRUE(rig.audio.quickImport().importVocoder(clicks(1)));
    play(rig, 48);
    EXPECT_GT(rig.peak(), 0.01f);
    const float voiced = rig.peak();
    // Without a modulator the vocoder is silent.
    ASSERT_TRUE(rig.audio.patchFiles().loadPatchFile(QuickImport::vocoderTemplate()));
    play(rig, 48);
    EXPECT_LT(rig.peak(12000), 0.1f * voiced);
}

}  // namespace
}  // namespace vantoric
