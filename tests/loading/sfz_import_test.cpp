#include "loading/sfz_import.h"

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

struct SfzImporting : ::testing::Test {
    std::string put(const std::string& name, const std::string& text) {
        EXPECT_TRUE(platform::writeFile(folder / name, text.data(), text.size()));
        return folder / name;
    }
    void wave(const std::string& name, int frames = 4000) {
        const test::Bytes bytes = WaveMaker().putFrames(frames, [](int i) { return i / 50 % 2 == 0 ? 9000 : -9000; }).file();
        EXPECT_TRUE(platform::writeFile(folder / name, bytes.data(), bytes.size()));
    }
    void loopedWave(const std::string& name, int frames, std::uint32_t start, std::uint32_t end) {
        const test::Bytes bytes = WaveMaker().putFrames(frames).looped(start, end);
        EXPECT_TRUE(platform::writeFile(folder / name, bytes.data(), bytes.size()));
    }
    bool import(const std::string& text) { return rig.audio.sfzImport().importSfz(put("Grand Piano.sfz", text)); }
    float value(int number, int layer = 0) { return rig.audio.parameters().getParameter(hostIndex(number, layer)); }
    int row(int number, int layer = 0) { return listIndex(value(number, layer)); }
    Sample& sample(int layer, int oscillator) { return rig.audio.layer(layer).sample(oscillator); }
    std::vector<std::string> texts() {
        std::vector<std::string> all;
        for (const auto& box : rig.dialogs.boxes()) all.push_back(box.text);
        return all;
    }
    using Texts = std::vector<std::string>;

    SfzImporting() { rig.dialogs.clear(); }  // of a start without factory sounds

    test::EngineRig rig;
    platform::ScratchFolder folder;
};

TEST_F(SfzImporting, MakesAPatchThatSounds) {
    wave("a.wav");
    ASSERT_TRUE(import("<region> sample=a.wav lokey=0 hikey=127 pitch_keycenter=60 loop_mode=loop_continuous\n"));
    EXPECT_TRUE(texts().empty());
    rig.send({{0x90, 60, 100}});
    rig.block(4800);
    EXPECT_GT(rig.peak(), 0.01f);
    for (const float x : rig.left) ASSERT_TRUE(std::isfinite(x));
}

TEST_F(SfzImporting, RegionsPlayOnlyInTheirKeys) {
    wave("a.wav");
    ASSERT_TRUE(import("<region> sample=a.wav lokey=40 hikey=50 pitch_keycenter=45\n"));
    rig.send({{0x90, 60, 100}});
    rig.block(4800);
    EXPECT_LT(rig.peak(2400), 0.001f);
    rig.send({{0x90, 45, 100}});
    rig.block(2400);
    EXPECT_GT(rig.peak(4800), 0.01f);
}

TEST_F(SfzImporting, NamesThePatchAfterTheFile) {
    wave("a.wav");
    import("<region> sample=a.wav key=60\n");
    EXPECT_EQ(rig.audio.program().getProgramName(), "Grand Piano");
}

TEST_F(SfzImporting, ReplacesTheWholePatch) {
    sample(3, 2).allocate(10);
    sample(3, 2).length = 10;
    rig.set(par::MatSrc1 + 3, 0.5f);
    rig.set(par::SoundMod, 0.5f);
    rig.set(par::Layer1On + 3, 1.0f);
    wave("a.wav");
    ASSERT_TRUE(import("<region> sample=a.wav key=60\n"));
    EXPECT_EQ(sample(3, 2).length, 0);
    EXPECT_EQ(value(par::MatSrc1 + 3), 0.0f);
    EXPECT_EQ(value(par::SoundMod), 0.0f);
    EXPECT_EQ(value(par::Microtun), 0.0f);
    EXPECT_EQ(value(par::Layer1On), 1.0f);
    for (int layer = 1; layer < layerCount; ++layer) EXPECT_EQ(value(par::Layer1On + layer), 0.0f);
    for (int filter = 0; filter < filterCount; ++filter) EXPECT_EQ(value(par::FilType1 + filter), 0.0f);
}

TEST_F(SfzImporting, SpreadsRegionsOverTheOscillatorsOfTheLayers) {
    std::string text;
    for (int i = 0; i < 5; ++i) {
        std::string name = "w";
        name.append(std::to_string(i)).append(".wav");
        wave(name, 100 + i);
        text.append("<region> sample=").append(name).append(" key=").append(std::to_string(50 + i)).append("\n");
    }
    ASSERT_TRUE(import(text));
    EXPECT_EQ(sample(0, 2).length, 102);
    EXPECT_EQ(sample(1, 1).length, 104);
    EXPECT_EQ(row(par::SynType1 + 1, 1), sampleType);
    EXPECT_EQ(row(par::KeyStar1 + 1, 1), 54);
    EXPECT_EQ(value(par::On1 + 1, 1), 1.0f);
    EXPECT_EQ(value(par::On1 + 2, 1), 0.0f) << "no region, not on";
    EXPECT_EQ(value(par::Layer1On + 1), 1.0f);
    EXPECT_EQ(value(par::Layer1On + 2), 0.0f);
}

TEST_F(SfzImporting, AFileThatCannotBeReadIsTold) {
    EXPECT_FALSE(rig.audio.sfzImport().importSfz(folder / "none.sfz"));
    EXPECT_FALSE(rig.audio.sfzImport().importSfz(folder.path()));
    EXPECT_EQ(texts(), Texts({"File read error", "File read error"}));
    EXPECT_EQ(rig.dialogs.boxes()[0].title, "Error");
}

TEST_F(SfzImporting, AFileWithoutLinesOrSamplesLeavesThePatchAsItWas) {
    rig.set(par::Cutoff1, 0.77f);
    EXPECT_FALSE(import("\n\n  \n"));
    EXPECT_FALSE(import("<region> key=60\n"));
    EXPECT_FALSE(import("<region> sample=a.wav hivel=100\n"));
    EXPECT_EQ(texts(), Texts({"This sfz file is not compatible with Vantori. No valid lines found.",
                              "No sample found. This sfz file is not compatible with Vantori.",
                              "No sample found. This sfz file is not compatible with Vantori."}));
    EXPECT_EQ(value(par::Cutoff1), 0.77f);
}

TEST_F(SfzImporting, AMissingSampleLeavesItsOscillatorEmptyAndTheOthersLoad) {
    wave("b.wav", 90);
    EXPECT_TRUE(import("<region> sample=gone.wav key=60\n<region> sample=b.wav key=61\n"));
    EXPECT_EQ(texts(), Texts({"File not found: gone.wav"}));
    EXPECT_EQ(sample(0, 0).length, 0);
    EXPECT_EQ(sample(0, 1).length, 90);
    EXPECT_TRUE(import("<region> sample=gone.wav key=60\n")) << "a region with a sample was found";
}

TEST_F(SfzImporting, MissingKeysAreToldOnceAsAWarning) {
    wave("a.wav", 90);
    EXPECT_TRUE(import("<region> sample=a.wav\n<region> sample=a.wav lokey=5\n"));
    ASSERT_EQ(rig.dialogs.boxes().size(), 1u);
    EXPECT_EQ(rig.dialogs.boxes()[0].title, "Warning");
    EXPECT_EQ(rig.dialogs.boxes()[0].text,
              "The key info of this sfz file is invalid! Please check lokey=, hikey= and pitch_keycenter= .");
    EXPECT_EQ(row(par::KeyEnd1), 127);
}

TEST_F(SfzImporting, ASampleThatIsRefusedIsToldTwiceAndOneThatIsAFolderOnce) {
    EXPECT_TRUE(platform::makeFolder(folder / "folder.wav"));
    put("text.wav", "no sound");
    wave("b.wav", 90);
    EXPECT_TRUE(import("<region> sample=text.wav key=60\n<region> sample=folder.wav key=61\n<region> sample=b.wav key=62\n"));
    EXPECT_EQ(texts(), Texts({"Invalid wav file header.", "File not found: text.wav", "File not found: folder.wav"}));
    EXPECT_EQ(sample(0, 1).length, 0);
    EXPECT_EQ(sample(0, 2).length, 90);
}

TEST_F(SfzImporting, TheFileNameOfASampleDoesNotTuneIt) {
    wave("Piano A6.wav");
    ASSERT_TRUE(import("<region> sample=Piano A6.wav key=36\n"));
    EXPECT_EQ(value(par::Oct1), octOfKey(36));
    EXPECT_EQ(value(par::Semi1), semiOfKey(36));
}

TEST_F(SfzImporting, SamplePathsMayUseEitherSeparator) {
    EXPECT_TRUE(platform::makeFolder(folder / "Samples/Piano"));
    wave("Samples/Piano/a b.wav", 120);
    ASSERT_TRUE(import("<control>\r\ndefault_path=Samples\\Piano\\\r\n<region> sample=a b.wav key=60\r\n"));
    EXPECT_EQ(sample(0, 0).length, 120);
    ASSERT_TRUE(import("<region> sample=Samples/Piano/a b.wav key=60\n"));
    EXPECT_EQ(sample(0, 0).length, 120);
    ASSERT_TRUE(import("<region> sample=" + (folder / "Samples/Piano/a b.wav") + " key=60\n"));
    EXPECT_EQ(sample(0, 0).length, 120);
    EXPECT_TRUE(texts().empty());
}

TEST_F(SfzImporting, SeveralGroupsAreAQuestion) {
    wave("a.wav", 70);
    wave("b.wav", 80);
    const std::string text = "<group>\n<region> sample=a.wav key=1\n<group>\n<region> sample=b.wav key=2\n";
    EXPECT_TRUE(import(text)) << "nobody answers: No";
    EXPECT_EQ(sample(0, 1).length, 0);
    rig.dialogs.answerNext(true);
    EXPECT_TRUE(import(text));
    EXPECT_EQ(sample(0, 1).length, 80);
    EXPECT_TRUE(rig.dialogs.boxes()[0].isQuestion);
    EXPECT_EQ(rig.dialogs.boxes()[0].title, "Warning");
}

TEST_F(SfzImporting, LoopPointsOutsideTheSampleAreToldAndLeftOut) {
    wave("a.wav", 600);
    ASSERT_TRUE(import("<region> sample=a.wav key=5 loop_mode=loop_sustain loop_start=601 loop_end=2147483647\n"));
    EXPECT_EQ(texts(),
              Texts({"The loop_start is outside of the sample borders!", "The loop_end is outside of the sample borders!"}));
    EXPECT_EQ(sample(0, 0).loopStart, 0);
    EXPECT_EQ(sample(0, 0).loopEnd, 600);
    EXPECT_EQ(row(par::LoopMod1), loopModeLoop);
}

TEST_F(SfzImporting, CrossedLoopPointsAreTakenAsTheyStandAndHoldAtTheEnd) {
    wave("a.wav", 600);
    ASSERT_TRUE(import("<region> sample=a.wav key=5 loop_mode=loop_continuous loop_start=500 loop_end=20\n"));
    EXPECT_EQ(sample(0, 0).loopStart, 500);
    EXPECT_EQ(sample(0, 0).loopEnd, 20);
    rig.send({{0x90, 5, 100}});
    rig.block(4800);
    for (const float x : rig.left) ASSERT_TRUE(std::isfinite(x));
}

TEST_F(SfzImporting, TheLoopOfAWaveFileStaysUnlessTheTextSaysNo) {
    loopedWave("a.wav", 500, 100, 300);
    ASSERT_TRUE(import("<region> sample=a.wav key=5\n"));
    EXPECT_EQ(row(par::LoopMod1), loopModeLoop);
    EXPECT_EQ(sample(0, 0).loopStart, 100);
    ASSERT_TRUE(import("<region> sample=a.wav key=5 loop_mode=one_shot\n"));
    EXPECT_EQ(row(par::LoopMod1), loopModeSingle);
    EXPECT_EQ(sample(0, 0).loopEnd, 500);
}

TEST_F(SfzImporting, VelocityDepthSharesTheLayersVolumeOut) {
    wave("a.wav");
    ASSERT_TRUE(import("<region> sample=a.wav key=60 amp_veltrack=100 polyphony=1\n"));
    EXPECT_EQ(value(par::LayerVol), 0.0f);
    EXPECT_EQ(row(par::PlayMode), 13);
    rig.send({{0x90, 60, 127}});
    rig.block(4800);
    const float loud = rig.peak();
    EXPECT_GT(loud, 0.01f);
    rig.send({{0x80, 60, 0}});
    rig.block(24000);
    const std::size_t from = rig.left.size();
    rig.send({{0x90, 60, 30}});
    rig.block(4800);
    EXPECT_LT(rig.peak(from), 0.5f * loud);
}

TEST_F(SfzImporting, TheDialogAsksForAnSfzFile) {
    wave("a.wav");
    EXPECT_FALSE(rig.audio.sfzImport().importSfzDialog()) << "the user goes back";
    rig.dialogs.choosePathNext(put("x.sfz", "<region> sample=a.wav key=60\n"));
    EXPECT_TRUE(rig.audio.sfzImport().importSfzDialog());
    EXPECT_EQ(rig.dialogs.requests()[0].extension, ".sfz");
}

TEST_F(SfzImporting, LeavesAllFlagsClearForTheWorkerToBuildTheLevels) {
    wave("a.wav");
    ASSERT_TRUE(import("<region> sample=a.wav key=60\n"));
    for (int i = 0; i < 1000 && (rig.audio.flags().rebuildRequested.isSet() || rig.audio.flags().rebuildRunning.isSet()); ++i)
        platform::sleepMilliseconds(10);
    EXPECT_FALSE(rig.audio.flags().rebuildRequested.isSet());
    EXPECT_FALSE(rig.audio.flags().engineLocked.isSet());
}

TEST(SfzPaths, RelativeOnesStartAtTheFile) {
    EXPECT_EQ(sfzSamplePath("/home/me/x.sfz", "a\\b.wav"), "/home/me/a/b.wav");
    EXPECT_EQ(sfzSamplePath("x.sfz", "../b.wav"), "../b.wav");
    EXPECT_EQ(sfzSamplePath("/home/me/x.sfz", "/s/b.wav"), "/s/b.wav");
}

}  // namespace
}  // namespace vantoric
