// Whole SFZ files in the ways that people write them, imported and played: every region that is taken sounds in
// its keys and at its pitch.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "loading/sfz_import.h"
#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

namespace par = parameter;

double frequencyOf(double key) { return 440.0 * std::exp2((key - 69.0) / 12.0); }

struct SfzLibraries : ::testing::Test {
    static constexpr int frames = 22050;  // of every sample, at 44.1 kHz

    SfzLibraries() { rig.dialogs.clear(); }  // of a start without factory sounds

    // Imports a kept file from a folder in which all samples that it can need are sines at their root's pitch.
    // The others are missing.
    bool import(const std::string& name, bool merge = true) {
        std::vector<std::uint8_t> text;
        EXPECT_TRUE(platform::readFile(std::string(VANTORIC_SFZ_FILES "/") + name, text)) << name;
        EXPECT_TRUE(platform::makeFolder(folder / "Instruments"));
        const std::string path = folder / ("Instruments/" + name);
        EXPECT_TRUE(platform::writeFile(path, text.data(), text.size()));
        const SfzFile file = parseSfz({reinterpret_cast<const char*>(text.data()), text.size()});
        for (const SfzRegion& region : file.regions) putSine(sfzSamplePath(path, region.sample), region.keyCenter);
        plan = planSfz(file, false);
        rig.dialogs.answerNext(merge);
        return rig.audio.sfzImport().importSfz(path);
    }
    static void putSine(const std::string& path, int key) {
        test::WaveMaker wave;
        const double step = 2.0 * M_PI * frequencyOf(key) / 44100.0;
        wave.putFrames(frames, [&](int i) { return static_cast<int>(12000.0 * std::sin(step * i)); });
        const test::Bytes bytes = wave.file();
        EXPECT_TRUE(platform::makeFolder(path.substr(0, path.find_last_of('/'))));
        EXPECT_TRUE(platform::writeFile(path, bytes.data(), bytes.size())) << path;
    }

    // Plays a key from silence for a sixth of a second.
    void play(int key) {
        rig.audio.resetEngine();
        rig.left.clear();
        rig.right.clear();
        rig.send({{0x90, key, 127}});
        rig.block(8000);
    }
    // Of the second half of what was played, in Hz.
    double pitch() const {
        double first = 0.0, last = 0.0;
        int crossings = 0;
        for (std::size_t i = rig.left.size() / 2; i < rig.left.size(); ++i) {
            const float before = rig.left[i - 1], x = rig.left[i];
            if (!(before < 0.0f && x >= 0.0f)) continue;
            last = static_cast<double>(i) - x / (x - before);
            if (crossings++ == 0) first = last;
        }
        return crossings < 2 ? 0.0 : (crossings - 1) * 48000.0 / (last - first);
    }
    void expectAllRegionsAtTheirPitch() {
        for (const SfzOscillator& oscillator : plan.oscillators) {
            const double cents = (oscillator.detune - 0.5) * 200.0;
            for (const int key : {oscillator.keys.low, oscillator.keys.high}) {
                const double wanted = frequencyOf(key + cents / 100.0);
                if (wanted > 8000.0 || wanted < 25.0) continue;
                play(key);
                EXPECT_NEAR(pitch() / wanted, 1.0, 0.004) << oscillator.sample << " at " << key;
            }
        }
    }
    void expectSilenceAt(int key) {
        play(key);
        EXPECT_LT(rig.peak(), 1e-4f) << key;
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const auto& box : rig.dialogs.boxes()) all.push_back(box.text);
        return all;
    }
    float value(int number, int layer = 0) { return rig.audio.parameters().getParameter(hostIndex(number, layer)); }
    int row(int number, int layer = 0) { return listIndex(value(number, layer)); }
    const Sample& sample(std::size_t k) {
        return rig.audio.layer(static_cast<int>(k) / oscillatorCount).sample(static_cast<int>(k) % oscillatorCount);
    }
    using Texts = std::vector<std::string>;
    static constexpr char groupsQuestion[] =
        "This *.sfz file is not supported and contains more than one <group>. Should all groups be merged?";

    test::EngineRig rig;
    platform::ScratchFolder folder;
    SfzPlan plan;
};

TEST_F(SfzLibraries, AGrandWithVelocityLayersAsGroupsPlaysItsLoudOne) {
    ASSERT_TRUE(import("grand_velocity_layers.sfz"));
    EXPECT_EQ(texts(), Texts({groupsQuestion}));
    ASSERT_EQ(plan.oscillators.size(), 12u);
    EXPECT_EQ(plan.oscillators[1].sample, "..\\Samples\\Concert Grand\\Grand Eb2 f.wav");
    EXPECT_EQ(rig.audio.program().getProgramName(), "grand_velocity_layers");
    for (std::size_t k = 0; k < 12; ++k) EXPECT_EQ(sample(k).length, frames) << k;
    for (int layer = 0; layer < layerCount; ++layer) {
        EXPECT_EQ(value(par::Layer1On + layer), 1.0f);
        EXPECT_EQ(value(par::AttVol, layer), envelopeOfSeconds(0.002));
        EXPECT_EQ(value(par::RelVol, layer), envelopeOfSeconds(0.6));
        EXPECT_EQ(value(par::Vol1, layer), 1.0f) << "all are as loud";
    }
    EXPECT_EQ(row(par::KeyStar1), 35);
    EXPECT_EQ(row(par::KeyEnd1 + 2, 3), 70);
    expectAllRegionsAtTheirPitch();
    expectSilenceAt(34);
    expectSilenceAt(71);
}

TEST_F(SfzLibraries, AGrandWhoseFirstGroupIsASoftLayerHasNothingInItAlone) {
    EXPECT_FALSE(import("grand_velocity_layers.sfz", false));
    EXPECT_EQ(texts(), Texts({groupsQuestion, "No sample found. This sfz file is not compatible with Vantori."}));
}

TEST_F(SfzLibraries, ADrumKitKeepsTheFirstOfEachRoundRobin) {
    ASSERT_TRUE(import("drums_round_robin.sfz"));
    EXPECT_EQ(texts(), Texts({}));
    ASSERT_EQ(plan.oscillators.size(), 5u);
    EXPECT_EQ(plan.oscillators[1].sample, "Kit/Snare Top rr1.wav");
    EXPECT_EQ(plan.oscillators[4].sample, "Kit/Tom & Rim.wav");
    EXPECT_EQ(row(par::PlayMode), 8) << "sixteen voices";
    EXPECT_EQ(row(par::LoopMod1), loopModeSingle);
    EXPECT_EQ(value(par::On1 + 2, 1), 0.0f);
    expectAllRegionsAtTheirPitch();
    for (const int key : {35, 37, 44, 47}) expectSilenceAt(key);
}

TEST_F(SfzLibraries, LoopedStringsHaveTheirLoopsOffsetsAndTunings) {
    ASSERT_TRUE(import("strings_looped.sfz"));
    EXPECT_EQ(texts(), Texts({}));
    ASSERT_EQ(plan.oscillators.size(), 5u);
    EXPECT_EQ(plan.oscillators[0].sample, "Strings/Str C#3.wav");
    for (std::size_t k = 0; k < 5; ++k) {
        const int layer = static_cast<int>(k) / oscillatorCount, oscillator = static_cast<int>(k) % oscillatorCount;
        EXPECT_EQ(sample(k).loopStart, 2000);
        EXPECT_EQ(sample(k).loopEnd, 9999);
        EXPECT_EQ(row(par::LoopMod1 + oscillator, layer), loopModeLoop);
        EXPECT_FLOAT_EQ(value(par::Start1 + oscillator, layer), 100.0f / frames);
        EXPECT_NEAR(value(par::Vol1 + oscillator, layer), k == 2 ? 1.0 : 0.37584, 1e-4);
    }
    EXPECT_FLOAT_EQ(value(par::Detune1 + 1), 0.46f);
    EXPECT_EQ(value(par::AttVol), envelopeOfSeconds(0.25));
    expectAllRegionsAtTheirPitch();
    rig.block(48000);
    EXPECT_GT(rig.peak(rig.left.size() - 4800), 0.01f) << "the loop goes on";
}

TEST_F(SfzLibraries, AHarpsichordWithASampleAKeyIsThinnedToTwelveOverTheWholeKeyboard) {
    ASSERT_TRUE(import("harpsichord_every_key.sfz"));
    EXPECT_EQ(texts(), Texts({groupsQuestion}));
    EXPECT_EQ(plan.regions, 88u) << "the releases are none";
    ASSERT_EQ(plan.oscillators.size(), 12u);
    EXPECT_EQ(plan.oscillators[0].sample, "wav/key026.wav");
    EXPECT_EQ(plan.oscillators[11].sample, "wav/key103.wav");
    EXPECT_EQ(plan.oscillators[0].keys.low, 0);
    EXPECT_EQ(plan.oscillators[11].keys.high, 127);
    expectAllRegionsAtTheirPitch();
}

}  // namespace
}  // namespace vantoric
