// Displays and knobs follow an engine that plays, learns and loads meanwhile.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

#include "editor/model/filter_display.h"
#include "editor/model/matrix_editing.h"
#include "editor/model/midi_learn.h"
#include "editor/model/wave_display.h"
#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

namespace par = parameter;

TEST(DisplayThreads, FollowWhileBlocksRunAndSamplesAreLoaded) {
    test::EngineRig rig;
    rig.clearParameters();
    rig.plainLayer();
    for (int i = 0; i < oscillatorCount; ++i) {
        rig.setList(par::SynType1 + i, i == 0 ? sampleType : i == 1 ? customWaveType : noiseType);
        rig.set(par::On1 + i, 1.0f);
    }
    platform::ScratchFolder folder;
    std::vector<std::string> files;
    for (const int length : {300, 4000}) {
        const test::Bytes bytes = test::WaveMaker().putFrames(length, [](int i) { return i % 50 * 100; }).file();
        files.push_back(folder / (std::to_string(length) + ".wav"));
        ASSERT_TRUE(platform::writeFile(files.back(), bytes.data(), bytes.size()));
    }

    std::atomic<bool> isOver{false};
    std::thread audio([&] {
        std::array<float, 128> left{}, right{};
        for (int block = 0; !isOver; ++block) {
            const auto key = static_cast<std::uint8_t>(40 + block % 40);
            if (block % 8 == 0) rig.audio.receive({0, static_cast<std::uint8_t>(block % 16 == 0 ? 0x90 : 0x80), key, 90});
            if (block % 50 == 0) rig.audio.receive({0, 0xb0, key, 20});
            rig.audio.render(left.data(), right.data(), 128, {});
        }
    });
    std::thread loader([&] {
        for (std::size_t i = 0; !isOver; ++i) rig.audio.sampleLoader().loadSample(0, 0, files[i % files.size()]);
    });

    OnShow onShow;
    ParameterEdits edits(rig.audio);
    platform::RecordedDialogs dialogs;
    MatrixEditing matrix(rig.audio.parameters(), edits, onShow, dialogs);
    MidiLearn learn(rig.audio);
    FilterDisplay filter;
    std::array<WaveDisplay, oscillatorCount> waves{WaveDisplay(rig.audio, 0), WaveDisplay(rig.audio, 1),
                                                   WaveDisplay(rig.audio, 2)};
    for (int i = 0; i < 300; ++i) {
        const auto voice = shownVoice(rig.audio.layer(0));
        filter.refresh(shownFilter(rig.audio.parameters(), 0, 0, voice), {});
        for (WaveDisplay& wave : waves) wave.refresh(0, voice, {});
        waves[0].markers().press(0.2f, MouseButton::left);
        waves[0].markers().move(0.8f);
        waves[0].markers().release();
        waves[0].writeMarkers(0, edits);
        matrix.addModulation(par::Cutoff1, 100 + i % 8);
        matrix.removeModulation(par::Cutoff1);
        learn.assignLearn(par::Cutoff1);
        learn.takeMapChange();
        for (const float y : filter.traces().traceA) ASSERT_TRUE(std::isfinite(y));
    }
    isOver = true;
    audio.join();
    loader.join();
    const Sample& sample = rig.audio.layer(0).sample(0);
    EXPECT_LE(sample.loopEnd, sample.length);
}

}  // namespace
}  // namespace vantoric
