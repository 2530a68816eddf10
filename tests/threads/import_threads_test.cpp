// An engine plays while the window's thread imports, edits and resynthesizes and the worker rebuilds.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

using Clock = std::chrono::steady_clock;

struct ImportThreads : testing::Test {
    ImportThreads() {
        const test::Bytes wave = test::WaveMaker().putFrames(5000, [](int i) { return i % 100 * 150; }).file();
        const std::string text =
            "<region> sample=a.wav lokey=0 hikey=127 pitch_keycenter=60 loop_mode=loop_continuous\n"
            "<region> sample=a.wav lokey=0 hikey=127 pitch_keycenter=72\n";
        EXPECT_TRUE(platform::writeFile(folder / "a.wav", wave.data(), wave.size()));
        EXPECT_TRUE(platform::writeFile(folder / "a.sfz", text.data(), text.size()));
    }

    platform::ScratchFolder folder;
    test::EngineRig rig;
};

TEST_F(ImportThreads, PlayWhileTheWindowImportsAndEdits) {
    const auto end = Clock::now() + std::chrono::seconds(2);
    std::atomic<bool> finite{true};
    int imports = 0;
    std::thread window([&] {
        for (int i = 0; Clock::now() < end; ++i) {
            if (i % editCommandCount == 0)
                imports += rig.audio.sfzImport().importSfz(folder / "a.sfz", SfzGroups::merged) ? 1 : 0;
            rig.audio.sampleEditor().editSample(0, i % 2, i % editCommandCount);
            if (i % 10 == 5) rig.audio.customWaveLoader().resynthesize(0, 2, folder / "a.wav");
        }
    });
    for (int number = 0; Clock::now() < end; ++number) {
        rig.left.clear();
        rig.right.clear();
        if (number % 5 == 0) rig.send({{0x90, 40 + number % 40, 100}, {0x80, 40 + (number + 20) % 40, 0}});
        rig.block(128);
        for (const float x : rig.left)
            if (!std::isfinite(x)) finite = false;
    }
    window.join();
    EXPECT_GT(imports, 0);
    EXPECT_TRUE(finite);
    EXPECT_FALSE(rig.audio.flags().engineLocked.isSet());
    EXPECT_FALSE(rig.audio.flags().audioMuted.isSet());
}

}  // namespace
}  // namespace vantoric
