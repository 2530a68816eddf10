#include "loading/quick_import.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::WaveMaker;

struct QuickImporting : ::testing::Test {
    QuickImporting() {
        rig.clearParameters();
        rig.plainLayer();
        EXPECT_TRUE(platform::makeFolder(platform::bankFolder()));
        EXPECT_TRUE(rig.audio.patchFiles().savePatchFile(pattern));
    }
    ~QuickImporting() override { platform::removeFile(pattern); }

    std::string wave(const std::string& name, int channels) {
        WaveMaker maker;
        maker.channels = channels;
        const test::Bytes bytes = maker.putFrames(60).file();
        EXPECT_TRUE(platform::writeFile(folder / name, bytes.data(), bytes.size()));
        return folder / name;
    }
    bool import(const std::string& path) {
        rig.dialogs.choosePathNext(path);
        return rig.audio.quickImport().importSample();
    }
    float value(int number) { return rig.audio.parameters().getParameter(number); }
    const Sample& sample(int oscillator) { return rig.audio.layer(0).sample(oscillator); }

    test::EngineRig rig;
    platform::ScratchFolder folder;
    const std::string pattern = platform::bankFolder() + "Quick_Sample.fxp";
};

TEST_F(QuickImporting, AMonoFileGoesToOscillatorOneOfTheTemplateAndNamesThePatch) {
    rig.set(par::Cutoff1, 0.9f);
    rig.set(par::LayerVol, 0.1f);
    ASSERT_TRUE(import(wave("Kick.wav", 1)));
    EXPECT_EQ(sample(0).length, 60);
    EXPECT_EQ(sample(1).length, 0);
    EXPECT_EQ(value(par::LayerVol), 0.5f) << "of the template";
    EXPECT_EQ(value(par::SynType1), listValue(sampleType));
    EXPECT_EQ(value(par::FilType1), 0.0f);
    EXPECT_EQ(value(par::Cutoff1), 0.5f);
    EXPECT_EQ(value(par::Cutoff1 + 1), 0.5f);
    EXPECT_EQ(rig.audio.program().getProgramName(), "Kick");
}

TEST_F(QuickImporting, AStereoFileGoesToTwoOscillatorsAndTwoSides) {
    ASSERT_TRUE(import(wave("Strings D3.wav", 2)));
    EXPECT_EQ(sample(0).levels[0][5], 6);
    EXPECT_EQ(sample(1).levels[0][5], 1006);
    EXPECT_EQ(value(par::SynType1 + 1), listValue(sampleType));
    EXPECT_EQ(value(par::FilPan1), 0.0f);
    EXPECT_EQ(value(par::FilPan1 + 1), 1.0f);
    EXPECT_EQ(value(par::FiltMix1 + 1), 1.0f);
    EXPECT_EQ(value(par::Oct1 + 1), value(par::Oct1));
    EXPECT_EQ(value(par::Semi1 + 1), value(par::Semi1));
    EXPECT_EQ(rig.audio.program().getProgramName(), "Strings D3");
}

TEST_F(QuickImporting, TheLayerThatTheWindowShowsTakesTheFileAndSounds) {
    test::WaveMaker maker;
    maker.channels = 2;
    const test::Bytes bytes = maker.putFrames(4000, [](int i) { return i % 80 < 40 ? 9000 : -9000; }).file();
    EXPECT_TRUE(platform::writeFile(folder / "Square.wav", bytes.data(), bytes.size()));
    rig.plainLayer(2);
    rig.set(par::Layer1On + 2, 0.0f);
    rig.set(par::Layer1On, 0.0f);
    EXPECT_TRUE(rig.audio.patchFiles().savePatchFile(pattern));
    rig.audio.sampleLoader().currentLayer = 2;
    ASSERT_TRUE(import(folder / "Square.wav"));
    EXPECT_EQ(rig.audio.layer(2).sample(1).length, 4000);
    EXPECT_EQ(value(par::Layer1On + 2), 1.0f);
    EXPECT_EQ(value(par::Layer1On), 0.0f);
    rig.send({{0x90, 60, 100}});
    rig.block(2400);
    EXPECT_GT(rig.peak(), 0.01f);
}

TEST_F(QuickImporting, WithoutATemplateAChoiceOrASoundFileThereIsNoImport) {
    EXPECT_FALSE(rig.audio.quickImport().importSample()) << "the user goes back";
    EXPECT_EQ(rig.audio.program().getProgramName(), "Quick_Sample");
    EXPECT_FALSE(import(pattern));
    EXPECT_EQ(sample(0).length, 0);
    platform::removeFile(pattern);
    EXPECT_FALSE(import(wave("Kick.wav", 1)));
}

TEST_F(QuickImporting, AVocoderTakesTheFileAsItsModulatorAfterAHint) {
    const std::string vocoder = platform::bankFolder() + "Quick_Vocoder.fxp";
    EXPECT_FALSE(rig.audio.quickImport().importVocoder()) << "there is no template";
    ASSERT_TRUE(rig.audio.patchFiles().savePatchFile(vocoder));
    rig.dialogs.clear();
    rig.dialogs.choosePathNext(wave("Speech.wav", 1));
    EXPECT_TRUE(rig.audio.quickImport().importVocoder());
    ASSERT_EQ(rig.dialogs.boxes().size(), 1u);
    EXPECT_EQ(rig.dialogs.boxes()[0].title, "Hint");
    EXPECT_EQ(rig.dialogs.boxes()[0].text, "Now select a speech sample or a drumline...");
    EXPECT_EQ(sample(0).length, 60);
    EXPECT_EQ(rig.audio.program().getProgramName(), "Speech");
    EXPECT_FALSE(rig.audio.quickImport().importVocoder()) << "the user goes back";
    platform::removeFile(vocoder);
}

}  // namespace
}  // namespace vantoric
