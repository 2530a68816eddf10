#include "loading/sample_loader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "sound/kernels.h"
#include "tests/base/failing_allocation.h"
#include "tests/base/told.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

using test::failingAllocation;

namespace par = parameter;
using test::Bytes;
using test::WaveMaker;

int sleptTimes = 0;
Flag* fallsAfterThreeSleeps = nullptr;
void countSleep(int) {
    if (++sleptTimes == 3 && fallsAfterThreeSleeps != nullptr) fallsAfterThreeSleeps->clear();
}

struct SampleLoading : ::testing::Test {
    SampleLoading() {
        for (std::size_t i = 0; i < samples.size(); ++i) holders[i] = &samples[i];
        for (int i = 0; i < parameterCount; ++i) parameters.writeRaw(i, 0.25f);
        loader = std::make_unique<SampleLoader>(access, parameters, holders, messages);
        sleptTimes = 0;
        fallsAfterThreeSleeps = nullptr;
    }
    std::string put(const std::string& name, const Bytes& bytes) {
        EXPECT_TRUE(platform::writeFile(folder / name, bytes.data(), bytes.size()));
        return folder / name;
    }
    std::string wave(const std::string& name = "x.wav", int frames = 100) {
        return put(name, WaveMaker().putFrames(frames).file());
    }
    // A sample that was there before.
    void fill(int index) {
        ASSERT_TRUE(samples[static_cast<std::size_t>(index)].allocate(77));
        samples[static_cast<std::size_t>(index)].length = 77;
    }
    float value(int number, int layer = 0) const { return parameters.getParameter(hostIndex(number, layer)); }
    std::string onlyBox() const {
        const auto boxes = told.boxes();
        return boxes.size() == 1 ? boxes[0].title + ": " + boxes[0].text : std::to_string(boxes.size()) + " boxes";
    }

    platform::ScratchFolder folder;
    EngineFlags flags;
    EngineAccess access{flags, countSleep};
    ParameterModel parameters;
    Messages messages;
    test::Told told{messages};
    std::array<Sample, layerCount * oscillatorCount> samples;
    SampleHolders holders{};
    std::unique_ptr<SampleLoader> loader;
};

TEST_F(SampleLoading, FillsTheHolderOfItsOscillatorAndNoOther) {
    EXPECT_TRUE(loader->loadSample(2, 1, wave()));
    for (std::size_t i = 0; i < samples.size(); ++i) EXPECT_EQ(samples[i].length, i == 7 ? 100 : 0) << i;
    const Sample& sample = samples[7];
    EXPECT_EQ(sample.loopStart, 0);
    EXPECT_EQ(sample.loopEnd, 100);
    EXPECT_EQ(sample.sampleRate, 44100u);
    EXPECT_EQ(sample.levels[0][99], 100);
    EXPECT_NE(sample.levels[1][50], 0) << "levels are built";
    EXPECT_EQ(sample.levels[0][107], 100) << "and have their guards";
    EXPECT_TRUE(told.boxes().empty());
}

TEST_F(SampleLoading, SetsLoopModeAndStartOfItsOscillatorAlone) {
    loader->loadSample(3, 2, put("x.wav", WaveMaker().putFrames(50).looped(5, 20)));
    EXPECT_EQ(samples[11].loopStart, 5);
    EXPECT_EQ(samples[11].loopEnd, 21);
    EXPECT_EQ(parameters.getListIndex(hostIndex(par::LoopMod1 + 2, 3)), loopModeLoop);
    EXPECT_EQ(value(par::Start1 + 2, 3), 0.0f);
    for (int i = 0; i < parameterCount; ++i) {
        if (i == hostIndex(par::LoopMod1 + 2, 3) || i == hostIndex(par::Start1 + 2, 3)) continue;
        EXPECT_EQ(parameters.getParameter(i), 0.25f) << i;
    }
    loader->loadSample(3, 2, wave());
    EXPECT_EQ(parameters.getListIndex(hostIndex(par::LoopMod1 + 2, 3)), loopModeSingle);
}

TEST_F(SampleLoading, ANoteInTheFileNameTunesOctAndSemi) {
    loader->loadSample(0, 0, wave("Lead C3.wav"));
    EXPECT_FLOAT_EQ(value(par::Oct1), 0.44382645f);
    EXPECT_FLOAT_EQ(value(par::Semi1), 1.0f);
}

TEST_F(SampleLoading, KeepTuningLeavesOctAndSemi) {
    EXPECT_TRUE(loader->loadSampleChannel(0, 0, wave("Lead C3.wav"), true, 0));
    EXPECT_EQ(value(par::Oct1), 0.25f);
    EXPECT_EQ(value(par::Start1), 0.0f);
    loader->loadSampleChannel(0, 0, wave("Lead C3.wav"), false, 0);
    EXPECT_NE(value(par::Oct1), 0.25f);
}

TEST_F(SampleLoading, StereoFilesKeepTheFirstChannelUnlessAskedOtherwise) {
    WaveMaker maker;
    maker.channels = 2;
    const std::string path = put("x.wav", maker.putFrames(10).file());
    loader->loadSample(0, 0, path);
    loader->loadSampleChannel(0, 1, path, false, 1);
    EXPECT_EQ(samples[0].levels[0][3], 4);
    EXPECT_EQ(samples[1].levels[0][3], 1004);
}

TEST_F(SampleLoading, LayerMinusOneIsTheOneTheWindowShows) {
    loader->currentLayer = 2;
    EXPECT_TRUE(loader->loadSample(-1, 0, wave()));
    EXPECT_EQ(samples[6].length, 100);
    EXPECT_EQ(value(par::Start1, 2), 0.0f);
}

TEST_F(SampleLoading, OtherLayersAndOscillatorsLoadNothing) {
    const std::string path = wave();
    for (const int layer : {-2, 4, 1000}) EXPECT_FALSE(loader->loadSample(layer, 0, path)) << layer;
    for (const int oscillator : {-1, 3}) EXPECT_FALSE(loader->loadSample(0, oscillator, path)) << oscillator;
    for (const Sample& sample : samples) EXPECT_EQ(sample.length, 0);
    EXPECT_EQ(value(par::Start1), 0.25f);
    loader->autotune(9, 9);
}

TEST_F(SampleLoading, AFileThatCannotBeOpenedFailsInSilenceAndKeepsTheEarlierSample) {
    fill(0);
    EXPECT_FALSE(loader->loadSample(0, 0, folder / "missing.wav"));
    EXPECT_FALSE(loader->loadSample(0, 0, folder.path()));
    EXPECT_FALSE(loader->loadSample(0, 0, ""));
    EXPECT_EQ(samples[0].length, 77);
    EXPECT_TRUE(told.boxes().empty());
}

TEST_F(SampleLoading, AFileAboveTenMillionBytesIsRefusedAndTheEarlierSampleStays) {
    fill(0);
    Bytes bytes = WaveMaker().file();
    bytes.resize(10000001);
    EXPECT_FALSE(loader->loadSample(0, 0, put("x.wav", bytes)));
    EXPECT_EQ(onlyBox(), "Warning: This wave file is too large.");
    EXPECT_EQ(samples[0].length, 77);
}

TEST_F(SampleLoading, AFileOfExactlyTenMillionBytesLoads) {
    WaveMaker maker;
    maker.bits = 8;
    maker.data.assign(10000000 - 44, 128);
    EXPECT_TRUE(loader->loadSample(0, 0, put("x.wav", maker.file())));
    EXPECT_EQ(samples[0].length, 312498) << "halved five times";
    EXPECT_EQ(samples[0].sampleRate, 44100u / 32);
}

TEST_F(SampleLoading, ARefusedFileLeavesTheOscillatorEmpty) {
    fill(0);
    EXPECT_FALSE(loader->loadSample(0, 0, put("x.wav", Bytes(100))));
    EXPECT_EQ(onlyBox(), "Error: Invalid wav file header.");
    EXPECT_EQ(samples[0].length, 0);
    EXPECT_NE(samples[0].levels[0], nullptr) << "the earlier buffers stay";
    EXPECT_EQ(value(par::Start1), 0.25f);
}

TEST_F(SampleLoading, AChosenFileThatIsRefusedLeavesTheEarlierSample) {
    fill(0);
    WaveMaker encoded = WaveMaker().putFrames(4);
    encoded.tag = 2;
    for (const Bytes& file : {Bytes(100), encoded.file(), WaveMaker().claimSize(0).file()})
        for (const bool isSilent : {false, true}) {
            told.clear();
            EXPECT_FALSE(loader->loadSample(0, 0, put("x.wav", file), isSilent, Refusal::leavesEarlier));
            EXPECT_EQ(told.boxes().size(), isSilent ? 0u : 1u);
            EXPECT_EQ(samples[0].length, 77);
            EXPECT_EQ(value(par::Start1), 0.25f);
        }
    EXPECT_FALSE(loader->loadSampleChannel(0, 0, put("x.wav", Bytes(100)), false, 1, Refusal::leavesEarlier));
    EXPECT_EQ(samples[0].length, 77);
    const std::string path = wave();
    failingAllocation = 200;
    EXPECT_FALSE(loader->loadSample(0, 0, path, false, Refusal::leavesEarlier));
    failingAllocation = 0;
    EXPECT_EQ(samples[0].length, 77);
    EXPECT_NE(samples[0].levels[4], nullptr);
}

TEST_F(SampleLoading, ARateThatNoPatchCanHoldIsRefused) {
    const auto file = [&](std::uint32_t rate) {
        WaveMaker maker = WaveMaker().putFrames(50);
        maker.rate = rate;
        return put("x.wav", maker.file());
    };
    EXPECT_TRUE(loader->loadSample(0, 0, file(384000)));
    EXPECT_EQ(samples[0].sampleRate, 384000u);
    EXPECT_TRUE(told.boxes().empty());
    for (const std::uint32_t rate : {384001u, 768000u, 0xffffffffu}) {
        told.clear();
        EXPECT_FALSE(loader->loadSample(0, 0, file(rate), false, Refusal::leavesEarlier));
        EXPECT_EQ(onlyBox(), "Error: Unsupported file format (no PCM or FLOAT encoding).");
        EXPECT_EQ(samples[0].sampleRate, 384000u) << "the sample that was there stays";
    }
}

TEST_F(SampleLoading, EveryRefusalHasItsText) {
    const auto boxFor = [&](int tag, int channels, int bits, std::uint32_t size) {
        WaveMaker maker = WaveMaker().putFrames(4).claimSize(size);
        maker.tag = tag;
        maker.channels = channels;
        maker.bits = bits;
        told.clear();
        EXPECT_FALSE(loader->loadSample(0, 0, put("x.wav", maker.file())));
        return onlyBox();
    };
    EXPECT_EQ(boxFor(2, 1, 16, 8), "Error: Unsupported file format (no PCM or FLOAT encoding).");
    EXPECT_EQ(boxFor(1, 3, 16, 8), "Error: Only mono or stereo samples can be loaded.");
    EXPECT_EQ(boxFor(1, 1, 12, 8), "Error: Only 8bit, 16bit, 24bit or 32 bit samples can be loaded.");
    EXPECT_EQ(boxFor(1, 1, 16, 0), "Error: Corrupt Wav file format. No data found.");
}

TEST_F(SampleLoading, ALoopThatTheSoundDoesNotHoldIsToldUnderThePath) {
    const std::string path = put("x.wav", WaveMaker().putFrames(50).looped(20, 51));
    EXPECT_TRUE(loader->loadSample(0, 0, path));
    EXPECT_EQ(onlyBox(), path + ": The loop point information of this sample is not valid!");
    EXPECT_EQ(samples[0].loopEnd, 50);
    EXPECT_EQ(parameters.getListIndex(par::LoopMod1), loopModeSingle);
}

TEST_F(SampleLoading, ShortMemoryIsToldAndLeavesTheOscillatorEmpty) {
    fill(0);
    const std::string path = wave();
    failingAllocation = 200;
    EXPECT_FALSE(loader->loadSample(0, 0, path));
    failingAllocation = 0;
    EXPECT_EQ(onlyBox(), "Error L2: Not enought memory to load sample.");
    EXPECT_EQ(samples[0].length, 0);
    EXPECT_FALSE(flags.engineLocked.isSet());
    EXPECT_TRUE(loader->loadSample(0, 0, path)) << "and another time it works";
}

TEST_F(SampleLoading, SilentLoadsShowNoBox) {
    EXPECT_FALSE(loader->loadSample(0, 0, put("x.wav", Bytes(100)), true));
    EXPECT_TRUE(loader->loadSample(0, 0, put("x.wav", WaveMaker().putFrames(50).looped(20, 51)), true));
    EXPECT_TRUE(told.boxes().empty());
}

TEST_F(SampleLoading, AutotuneSetsTheRateFromThePitch) {
    const auto square = [](int i) { return i / 50 % 2 == 0 ? 9000 : -9000; };
    ASSERT_TRUE(loader->loadSample(0, 0, put("x.wav", WaveMaker().putFrames(4000, square).file())));
    loader->autotune(0, 0);
    EXPECT_EQ(samples[0].sampleRate, 13081u);
}

TEST_F(SampleLoading, AutotuneLeavesAnEmptySampleAlone) {
    loader->autotune(0, 0);
    EXPECT_EQ(samples[0].sampleRate, 44100u);
}

// ---- the flags ----------------------------------------------------------------------------------------------

TEST_F(SampleLoading, TakesNothingWhileItIsAllQuietAndLeavesTheFlagsClear) {
    loader->loadSample(0, 0, wave());
    EXPECT_EQ(sleptTimes, 0);
    EXPECT_FALSE(flags.engineLocked.isSet() || flags.rebuildCancel.isSet() || flags.rebuildRequested.isSet());
}

TEST_F(SampleLoading, WaitsForARebuildAndAsksForItAgain) {
    flags.rebuildRunning.set();
    fallsAfterThreeSleeps = &flags.rebuildRunning;
    EXPECT_TRUE(loader->loadSample(0, 0, wave()));
    EXPECT_EQ(sleptTimes, 3);
    EXPECT_TRUE(flags.rebuildRequested.isSet());
    EXPECT_FALSE(flags.rebuildCancel.isSet());
}

TEST_F(SampleLoading, WaitsForARebuildNoLongerThan51Times) {
    flags.rebuildRunning.set();
    {
        const EngineHold hold(access, HoldFor::waves);
    }
    EXPECT_EQ(sleptTimes, 51);
    EXPECT_FALSE(flags.rebuildRunning.isSet());
}

TEST_F(SampleLoading, WaitsForAnotherLoaderAndForTheBlockAThousandTimesEach) {
    flags.engineLocked.set();
    flags.audioRunning.set();
    {
        const EngineHold hold(access, HoldFor::waves);
        EXPECT_TRUE(flags.engineLocked.isSet());
        EXPECT_FALSE(flags.audioRunning.isSet());
    }
    EXPECT_EQ(sleptTimes, 2000);
    EXPECT_FALSE(flags.engineLocked.isSet());
}

TEST_F(SampleLoading, TheWorkerIsCancelledOnlyWhileItRuns) {
    flags.rebuildRequested.set();
    const EngineHold hold(access, HoldFor::waves);
    EXPECT_FALSE(flags.rebuildRequested.isSet()) << "it will come again at the end";
    EXPECT_EQ(sleptTimes, 0);
}

TEST_F(SampleLoading, ReadingTellsHowFarItIsAndGivesUpWhenItIsNotWanted) {
    test::WaveMaker maker;
    const std::string path = put("long.wav", maker.putFrames(2000000, [](int i) { return i % 100 < 50 ? 9000 : -9000; }).file());
    Progress progress;
    const WaveReading whole = loader->readWave(path, 0, &progress);
    ASSERT_TRUE(whole.wave);
    EXPECT_EQ(whole.wave->sample.sample.length, 500000);
    EXPECT_GT(progress.part(), 0.8);
    EXPECT_LE(progress.part(), 1.0);
    progress.cancel();
    const WaveReading given = loader->readWave(path, 0, &progress);
    EXPECT_FALSE(given.wave);
    EXPECT_EQ(given.refused.text, "");
    EXPECT_EQ(samples[0].length, 0) << "it is in no place yet";
}

TEST_F(SampleLoading, ACancelLeftByALoadThatFailedIsTakenBack) {
    flags.rebuildCancel.set();
    EXPECT_TRUE(loader->loadSample(0, 0, wave()));
    EXPECT_NE(samples[0].levels[4][50], samples[0].levels[0][50]) << "the levels are built";
    EXPECT_FALSE(flags.rebuildCancel.isSet()) << "or the worker would give up the next rebuild";
}

TEST_F(SampleLoading, LevelsThatAnotherLoadCutShortAreLeftToTheWorker) {
    const std::vector<std::int16_t> sound(300, 9000);
    flags.rebuildCancel.set();
    EXPECT_TRUE(exchangeSample(access, samples[0], {sound, 0, 300, 44100}, false, false));
    EXPECT_EQ(samples[0].levels[4][0], 9000) << "not built";
    EXPECT_TRUE(flags.rebuildRequested.isSet());
    EXPECT_FALSE(flags.rebuildCancel.isSet());
    EXPECT_FALSE(flags.engineLocked.isSet());
}

TEST_F(SampleLoading, ABlockThatNeverEndsReadsOnFromWhatItHad) {
    ASSERT_TRUE(loader->loadSample(0, 0, wave()));
    const std::int16_t* const read = samples[0].levels[0].get();
    {
        const Passes::Scope block(flags.blockPasses);
        flags.audioRunning.set();
        ASSERT_TRUE(loader->loadSample(0, 0, wave("y.wav", 50)));
        EXPECT_EQ(sleptTimes, 1000) << "waited for, then cleared by force";
        EXPECT_EQ(samples[0].length, 50);
        EXPECT_EQ(access.retired(), static_cast<std::size_t>(sampleLevels));
        EXPECT_EQ(read[99], 100);
    }
    ASSERT_TRUE(loader->loadSample(0, 1, wave()));
    EXPECT_EQ(access.retired(), 0u);
}

// ---- in an engine -------------------------------------------------------------------------------------------

struct SamplePlaying : ::testing::Test {
    SamplePlaying() {
        rig.clearParameters();
        rig.plainLayer();
        rig.setList(par::SynType1, sampleType);
        rig.audio.resetEngine();
    }
    std::string tone(int frames) {
        const Bytes bytes = WaveMaker().putFrames(frames, [](int i) { return i % 64 < 32 ? 12000 : -12000; }).looped(0, 63);
        EXPECT_TRUE(platform::writeFile(folder / "tone.wav", bytes.data(), bytes.size()));
        return folder / "tone.wav";
    }
    float loudness(int frames) {
        const std::size_t from = rig.left.size();
        rig.block(frames);
        return rig.peak(from);
    }
    platform::ScratchFolder folder;
    test::EngineRig rig;
};

TEST_F(SamplePlaying, ALoadedSampleSoundsAndAnEmptyOneDoesNot) {
    rig.send({{0x90, 60, 100}});
    EXPECT_LT(loudness(2000), 0.001f);
    ASSERT_TRUE(rig.audio.sampleLoader().loadSample(0, 0, tone(640)));
    rig.send({{0x90, 64, 100}});
    EXPECT_GT(loudness(2000), 0.01f);
}

TEST_F(SamplePlaying, ANoteGoesOnWithTheNewSample) {
    rig.audio.sampleLoader().loadSample(0, 0, tone(6400));
    rig.send({{0x90, 60, 100}});
    EXPECT_GT(loudness(3000), 0.01f);
    rig.audio.sampleLoader().loadSample(0, 0, tone(70));
    loudness(3000);
    EXPECT_GT(loudness(3000), 0.01f);
}

TEST_F(SamplePlaying, ASingleSampleEndsInAConstantAndALoopedOneGoesOn) {
    rig.audio.sampleLoader().loadSample(0, 0, tone(640));
    rig.send({{0x90, 60, 100}});
    const auto swing = [&] {
        const std::size_t from = rig.left.size();
        rig.block(4000);
        const auto [low, high] = std::minmax_element(rig.left.begin() + static_cast<std::ptrdiff_t>(from), rig.left.end());
        return *high - *low;
    };
    swing();
    EXPECT_GT(swing(), 0.01f);
    rig.setList(par::LoopMod1, loopModeSingle);
    for (int i = 0; i < 10; ++i) swing();
    EXPECT_LT(swing(), 0.001f);
}

TEST_F(SamplePlaying, TheWorkerBuildsTheLevelsOfALoadedPatch) {
    ASSERT_TRUE(rig.audio.sampleLoader().loadSample(0, 0, tone(640)));
    Sample& sample = rig.audio.layer(0).sample(0);
    const std::vector<std::int16_t> built(sample.levels[3].get(), sample.levels[3].get() + 640);
    const ChunkBytes chunk = rig.audio.patchChunk().getChunk();
    ASSERT_EQ(rig.audio.patchChunk().setChunk(chunk.data.get(), chunk.size), 1);
    const auto isBuilt = [&] { return std::equal(built.begin(), built.end(), sample.levels[3].get()); };
    for (int i = 0; i < 3000 && !isBuilt(); ++i) platform::sleepMilliseconds(10);
    EXPECT_TRUE(isBuilt());
}

}  // namespace
}  // namespace vantoric
