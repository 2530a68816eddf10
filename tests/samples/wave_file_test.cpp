#include "samples/wave_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

using test::Bytes;
using test::WaveMaker;
using Samples = std::vector<std::int16_t>;

Samples soundOf(const Bytes& file, int channel = 0) {
    const WaveLayout layout = parseWave(file);
    EXPECT_EQ(layout.error, WaveError::none) << waveErrorText(layout.error);
    return convertWave(file, layout, channel);
}
Samples convert(int bits, int tag, std::initializer_list<std::int32_t> values) {
    WaveMaker wave;
    wave.bits = bits;
    wave.tag = tag;
    for (const std::int32_t value : values) wave.put(value);
    return soundOf(wave.file());
}
Samples convertFloats(std::initializer_list<float> values) {
    WaveMaker wave;
    wave.bits = 32;
    wave.tag = 3;
    for (const float value : values) wave.putFloat(value);
    return soundOf(wave.file());
}
WaveError errorOf(const Bytes& file) { return parseWave(file).error; }

// ---- depths -------------------------------------------------------------------------------------------------

TEST(WaveConversion, EightBitsAreUnsignedAndSpreadBy255) {
    EXPECT_EQ(convert(8, 1, {0, 1, 127, 128, 129, 255}), (Samples{-32640, -32385, -255, 0, 255, 32385}));
}

TEST(WaveConversion, SixteenBitsMoveOneUpButTheTop) {
    EXPECT_EQ(convert(16, 1, {-32768, -32767, -1, 0, 32765, 32766, 32767}), (Samples{-32767, -32766, 0, 1, 32766, 32767, 32767}));
}

TEST(WaveConversion, TwentyFourBitsKeepTheirTwoTopBytes) {
    EXPECT_EQ(convert(24, 1, {-8388608, -8388352, -1, 0, 255, 256, 8388607}), (Samples{-32767, -32767, -1, 0, 0, 1, 32767}));
}

TEST(WaveConversion, ThirtyTwoBitsKeepTheirTwoTopBytes) {
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(convert(32, 1, {lowest, lowest + 65536, -1, 65535, 65536, 2147483647}), (Samples{-32767, -32767, -1, 0, 1, 32767}));
}

TEST(WaveConversion, FloatsAreScaledTruncatedAndClamped) {
    EXPECT_EQ(convertFloats({0.0f, 1.0f, -1.0f, 0.5f, 2.0f, -2.0f, 0.00004f}),
              (Samples{0, 29489, -29489, 14744, 32767, -32767, 1}));
}

TEST(WaveConversion, FloatsBeyondAllMeasureAreBounded) {
    constexpr float huge = std::numeric_limits<float>::max(), infinite = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN(), tiny = std::numeric_limits<float>::denorm_min();
    EXPECT_EQ(convertFloats({huge, -huge, infinite, -infinite, nan, tiny}), (Samples{32767, -32767, 32767, -32767, 0, 0}));
}

TEST(WaveConversion, TagThreeWithSixteenBitsTakesThePathOfSixteenBits) {
    EXPECT_EQ(convert(16, 3, {-32768, 5, 32767}), (Samples{-32767, 6, 32767}));
}

TEST(WaveConversion, TagThreeWithEightOrTwentyFourBitsTakesThePathOfThoseBits) {
    EXPECT_EQ(convert(8, 3, {0, 255}), (Samples{-32640, 32385}));
    EXPECT_EQ(convert(24, 3, {512}), (Samples{2}));
}

TEST(WaveConversion, StereoFilesGiveEitherChannelAtEveryDepth) {
    for (const int bits : {16, 24, 32}) {
        WaveMaker wave;
        wave.channels = 2;
        wave.bits = bits;
        const int scale = bits == 16 ? 1 : bits == 24 ? 256 : 65536;
        for (int i = 1; i <= 5; ++i) wave.put(i * scale).put((i + 100) * scale);
        const int up = bits == 16 ? 1 : 0;
        const Samples left = soundOf(wave.file(), 0), right = soundOf(wave.file(), 1);
        ASSERT_EQ(left.size(), 5u);
        ASSERT_EQ(right.size(), 5u);
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(left[static_cast<std::size_t>(i)], i + 1 + up) << bits;
            EXPECT_EQ(right[static_cast<std::size_t>(i)], i + 101 + up) << bits;
        }
    }
}

TEST(WaveConversion, TheRightChannelOfAMonoFileIsItsOnlyOne) {
    const Bytes file = WaveMaker().putFrames(4).file();
    EXPECT_EQ(soundOf(file, 1), soundOf(file, 0));
}

// ---- where things stand -------------------------------------------------------------------------------------

TEST(WaveHeader, AChunkBeforeTheFormatMovesAllItsFields) {
    const WaveMaker wave = WaveMaker().putFrames(6);
    Bytes junk;
    test::putText(junk, "JUNK");
    test::putNumber(junk, 6, 4);
    test::putText(junk, "datum!");
    EXPECT_EQ(soundOf(WaveMaker::join({wave.head(), junk, wave.format(), wave.dataChunk()})), soundOf(wave.file()));
}

TEST(WaveHeader, AFileMayBeginWithItsFormatChunk) {
    const WaveMaker wave = WaveMaker().putFrames(6);
    EXPECT_EQ(soundOf(WaveMaker::join({wave.format(), wave.dataChunk()})), soundOf(wave.file()));
}

TEST(WaveHeader, TheUsualPlaceOfTheFormatWinsOverAnEarlierOne) {
    WaveMaker wave;
    Bytes head = wave.head();
    std::copy_n("fmt ", 4, head.begin());
    WaveMaker full = wave.putFrames(6);
    EXPECT_EQ(soundOf(WaveMaker::join({head, full.format(), full.dataChunk()})), soundOf(full.file()));
}

TEST(WaveHeader, TheFormatIsSearchedInTheFirstThousandBytes) {
    const WaveMaker wave = WaveMaker().putFrames(6);
    const auto shifted = [&](std::size_t at) { return WaveMaker::join({Bytes(at), wave.format(), wave.dataChunk()}); };
    EXPECT_EQ(errorOf(shifted(996)), WaveError::none);
    EXPECT_EQ(errorOf(shifted(1000)), WaveError::badHeader);
}

TEST(WaveHeader, DataMayComeBeforeTheFormatAndTheSamplerBeforeData) {
    const WaveMaker wave = WaveMaker().putFrames(30);
    EXPECT_EQ(soundOf(WaveMaker::join({wave.head(), wave.dataChunk(), wave.format()})), soundOf(wave.file()));
    const WaveLayout layout =
        parseWave(WaveMaker::join({wave.head(), wave.format(), WaveMaker::sampler(3, 9), wave.dataChunk()}));
    EXPECT_TRUE(layout.loopOn);
    EXPECT_EQ(layout.loopStart, 3u);
    EXPECT_EQ(layout.loopEnd, 9u);
}

TEST(WaveHeader, TheExtensibleFormatIsThatOfItsSubFormat) {
    for (const int bits : {8, 16, 24, 32}) {
        WaveMaker plain;
        plain.bits = bits;
        plain.channels = 2;
        for (int i = 0; i < 6; ++i) plain.put(i * 40).put(i * 50);
        WaveMaker extensible = plain;
        extensible.isExtensible = true;
        for (const int channel : {0, 1}) EXPECT_EQ(soundOf(extensible.file(), channel), soundOf(plain.file(), channel)) << bits;
    }
    WaveMaker floats;
    floats.tag = 3;
    floats.bits = 32;
    floats.isExtensible = true;
    EXPECT_EQ(soundOf(floats.putFloat(0.5f).putFloat(-1.0f).file()), (Samples{14744, -29489}));
}

TEST(WaveHeader, AnExtensibleFormatOfAnotherKindIsRefused) {
    WaveMaker wave = WaveMaker().putFrames(6);
    wave.isExtensible = true;
    const std::size_t subFormat = 44, end = 60;
    for (const int tag : {0, 2, 6, 7, 65534}) {
        wave.tag = tag;
        EXPECT_EQ(errorOf(wave.file()), WaveError::badEncoding) << tag;
    }
    wave.tag = 1;
    EXPECT_EQ(errorOf(wave.file()), WaveError::none);
    for (std::size_t at = subFormat; at < end; ++at) {
        Bytes file = wave.file();
        file[at] ^= 0x40;
        EXPECT_EQ(errorOf(file), WaveError::badEncoding) << "an identifier of somebody's own: byte " << at;
    }
    WaveMaker plain = WaveMaker().putFrames(200);
    plain.tag = 65534;
    EXPECT_EQ(errorOf(plain.file()), WaveError::badEncoding) << "no sub-format at all";
    const Bytes whole = wave.file();
    EXPECT_EQ(errorOf(Bytes(whole.begin(), whole.begin() + end - 1)), WaveError::badEncoding) << "the file ends within it";
}

TEST(WaveHeader, NothingIsAFile) {
    EXPECT_EQ(errorOf({}), WaveError::badHeader);
    EXPECT_EQ(errorOf(Bytes(44)), WaveError::badHeader);
}

TEST(WaveHeader, TheTestsSpeakInTheirOrder) {
    WaveMaker wave = WaveMaker().putFrames(4);
    wave.tag = 2;
    wave.channels = 3;
    wave.bits = 12;
    EXPECT_EQ(errorOf(wave.file()), WaveError::badEncoding);
    wave.tag = 1;
    EXPECT_EQ(errorOf(wave.file()), WaveError::badChannels);
    wave.channels = 1;
    EXPECT_EQ(errorOf(wave.file()), WaveError::badBits);
    wave.bits = 16;
    EXPECT_EQ(errorOf(wave.claimSize(0).file()), WaveError::noData);
    EXPECT_EQ(errorOf(wave.claimSize(8).file()), WaveError::none);
}

TEST(WaveHeader, EveryOddFormatIsRefused) {
    for (const int tag : {0, 2, 4, 6, 7, 65534, 65535}) {
        WaveMaker wave = WaveMaker().putFrames(4);
        wave.tag = tag;
        EXPECT_EQ(errorOf(wave.file()), WaveError::badEncoding) << tag;
    }
    for (const int channels : {0, 3, 255, 65535}) {
        WaveMaker wave = WaveMaker().putFrames(4);
        wave.channels = channels;
        EXPECT_EQ(errorOf(wave.file()), WaveError::badChannels) << channels;
    }
    for (const int bits : {0, 1, 12, 20, 64, 65535}) {
        WaveMaker wave = WaveMaker().putFrames(4);
        wave.bits = bits;
        EXPECT_EQ(errorOf(wave.file()), WaveError::badBits) << bits;
    }
}

TEST(WaveHeader, ADataChunkOfSizeZeroIsNoData) {
    EXPECT_EQ(errorOf(WaveMaker().putFrames(4).claimSize(0).file()), WaveError::noData);
    EXPECT_STREQ(waveErrorText(WaveError::noData), "Corrupt Wav file format. No data found.");
}

TEST(WaveHeader, AFileThatStopsAnywhereIsRefusedOrShort) {
    const Bytes whole = WaveMaker().putFrames(20).looped(2, 9);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const WaveLayout layout = parseWave(part);
        EXPECT_EQ(layout.error == WaveError::none, size >= 41) << size;
        if (layout.error != WaveError::none) continue;
        EXPECT_LE(convertWave(part, layout, 0).size(), 20u) << size;
    }
}

TEST(WaveHeader, ASizeBelowTheFileCountsAndABrokenFrameIsDropped) {
    EXPECT_EQ(soundOf(WaveMaker().putFrames(20).claimSize(14).file()).size(), 7u);
    EXPECT_EQ(soundOf(WaveMaker().putFrames(20).claimSize(15).file()).size(), 7u);
    EXPECT_EQ(soundOf(WaveMaker().putFrames(20).claimSize(1).file()).size(), 0u);
}

TEST(WaveHeader, ASizeJustBeyondTheFileIsFilledFromTheMargin) {
    const Samples sound = soundOf(WaveMaker().putFrames(20).claimSize(60).file());
    ASSERT_EQ(sound.size(), 30u);
    EXPECT_EQ(sound[19], 20);
    EXPECT_EQ(sound[20], 1);  // silence, one up
}

TEST(WaveHeader, AnySizeFarBeyondTheFileIsCutToIt) {
    for (const std::uint32_t size : {40u + 1001, 100000u, 0x7fffffffu, 0x80000000u, 0xffffffffu})
        EXPECT_EQ(soundOf(WaveMaker().putFrames(20).claimSize(size).file()).size(), 20u) << size;
    EXPECT_EQ(errorOf(WaveMaker().claimSize(0xffffffff).file()), WaveError::noData) << "nothing is there";
}

TEST(WaveHeader, TheRateIsWhatTheFileSays) {
    for (const std::uint32_t rate : {0u, 1u, 192000u, 0xffffffffu}) {
        WaveMaker wave = WaveMaker().putFrames(2);
        wave.rate = rate;
        EXPECT_EQ(parseWave(wave.file()).sampleRate, rate);
    }
}

TEST(WaveHeader, AFileIsStereoIfItsFormatSaysTwoChannels) {
    platform::ScratchFolder folder;
    WaveMaker wave = WaveMaker().putFrames(2);
    const auto isStereo = [&](int channels) {
        wave.channels = channels;
        const Bytes bytes = wave.file();
        platform::writeFile(folder / "x.wav", bytes.data(), bytes.size());
        return isStereoFile(folder / "x.wav");
    };
    EXPECT_FALSE(isStereo(1));
    EXPECT_TRUE(isStereo(2));
    EXPECT_FALSE(isStereo(3));
    EXPECT_FALSE(isStereoFile(folder / "none.wav"));
    EXPECT_FALSE(isStereoFile(folder.path()));
    EXPECT_FALSE(isStereoWave({}));
}

// ---- loops --------------------------------------------------------------------------------------------------

WaveSound settled(const Bytes& file, bool* wasSound = nullptr) {
    const WaveLayout layout = parseWave(file);
    WaveSound sound{convertWave(file, layout, 0), layout.sampleRate, layout.loopOn, layout.loopStart, layout.loopEnd};
    const bool holds = settleLoop(sound);
    if (wasSound != nullptr) *wasSound = holds;
    return sound;
}

TEST(WaveLoop, TheEndBecomesExclusive) {
    const WaveSound sound = settled(WaveMaker().putFrames(40).looped(3, 20));
    EXPECT_TRUE(sound.loopOn);
    EXPECT_EQ(sound.loopStart, 3u);
    EXPECT_EQ(sound.loopEnd, 21u);
}

TEST(WaveLoop, AnEndAtTheLengthIsValidAndHeldThere) {
    bool holds = false;
    const WaveSound sound = settled(WaveMaker().putFrames(40).looped(0, 40), &holds);
    EXPECT_TRUE(holds);
    EXPECT_TRUE(sound.loopOn);
    EXPECT_EQ(sound.loopEnd, 40u);
}

TEST(WaveLoop, PointsThatTheSoundDoesNotHoldAreForgotten) {
    constexpr std::uint32_t top = 0xffffffff;
    const std::uint32_t wrong[][2] = {{0, 41},  {5, 5},   {6, 5},     {40, 40},      {41, 42},
                                      {0, top}, {top, 0}, {top, top}, {top - 1, top}};
    for (const auto& points : wrong) {
        bool holds = true;
        const WaveSound sound = settled(WaveMaker().putFrames(40).looped(points[0], points[1]), &holds);
        EXPECT_FALSE(holds) << points[0] << ' ' << points[1];
        EXPECT_FALSE(sound.loopOn);
        EXPECT_EQ(sound.loopStart, 0u);
        EXPECT_EQ(sound.loopEnd, 40u);
    }
}

TEST(WaveLoop, OnlyTheLowByteOfTheCountIsLookedAt) {
    EXPECT_FALSE(settled(WaveMaker().putFrames(40).looped(3, 20, 0)).loopOn);
    EXPECT_FALSE(settled(WaveMaker().putFrames(40).looped(3, 20, 256)).loopOn);
    EXPECT_TRUE(settled(WaveMaker().putFrames(40).looped(3, 20, 257)).loopOn);
    EXPECT_TRUE(settled(WaveMaker().putFrames(40).looped(3, 20, 0xffffffff)).loopOn);
}

TEST(WaveLoop, ASamplerChunkWithoutALoopIsNoFault) {
    bool holds = false;
    EXPECT_FALSE(settled(WaveMaker().putFrames(40).looped(9, 3, 0), &holds).loopOn);
    EXPECT_TRUE(holds);
}

TEST(WaveLoop, ASamplerChunkCutByTheEndOfTheFileReadsAsZeros) {
    Bytes file = WaveMaker().putFrames(40).looped(3, 20);
    file.resize(file.size() - 12);  // behind the loop's start
    bool holds = true;
    EXPECT_FALSE(settled(file, &holds).loopOn) << "it ends at 0";
    EXPECT_FALSE(holds);
}

// ---- reduction ----------------------------------------------------------------------------------------------

WaveSound longSound(std::size_t count) { return {Samples(count, 8000), 48000, true, 1001, 250001}; }

TEST(WaveReduction, WhatFitsIsLeftAlone) {
    WaveSound sound = longSound(524277);
    reduceSound(sound, levelRows().front());
    EXPECT_EQ(sound.samples, Samples(524277, 8000));
    EXPECT_EQ(sound.sampleRate, 48000u);
}

TEST(WaveReduction, OneSampleMoreHalvesAllAndAnOddCountLosesItsLast) {
    WaveSound sound = longSound(524279);
    reduceSound(sound, levelRows().front());
    EXPECT_EQ(sound.samples.size(), 262139u);
    EXPECT_EQ(sound.sampleRate, 24000u);
    EXPECT_EQ(sound.loopStart, 500u);
    EXPECT_EQ(sound.loopEnd, 125000u);
    EXPECT_NEAR(sound.samples[1000], 8000, 40) << "the low-pass passes what stands still";
}

TEST(WaveReduction, ItHalvesUntilTheSoundFits) {
    WaveSound sound = longSound(9999999);
    reduceSound(sound, levelRows().front());
    EXPECT_EQ(sound.samples.size(), 312499u);
    EXPECT_EQ(sound.sampleRate, 1500u);
}

// ---- file-name tuning ---------------------------------------------------------------------------------------

TEST(FileNameTuning, ANoteAndItsOctaveSetOctAndSemi) {
    const auto tuning = fileNameTuning("/sounds/Lead C3.wav");
    ASSERT_TRUE(tuning);
    EXPECT_EQ(tuning->note, 0);
    EXPECT_EQ(tuning->octave, 3);
    EXPECT_FLOAT_EQ(tuning->oct, 1.0f - 5 * 0.11123471f);
    EXPECT_FLOAT_EQ(tuning->semi, 1.0f);
}

TEST(FileNameTuning, AllFiveFormsOfANameAreKnown) {
    for (const char* name : {"F2.wav", "F-2.wav", "f2.wav", "F_2.wav", "f-2.wav"}) {
        const auto tuning = fileNameTuning(name);
        ASSERT_TRUE(tuning) << name;
        EXPECT_EQ(tuning->note, 5) << name;
        EXPECT_EQ(tuning->octave, 2) << name;
    }
    EXPECT_EQ(fileNameTuning("F#2.wav")->note, 6);
    EXPECT_EQ(fileNameTuning("a#-2.wav")->note, 10);
}

// "Gb2" holds "b2" as well, and B stands above it in the list.
TEST(FileNameTuning, AFlatReadsAsB) { EXPECT_EQ(fileNameTuning("Gb2.wav")->note, 11); }

TEST(FileNameTuning, TheHigherEntryOfTheListWins) {
    EXPECT_EQ(fileNameTuning("C6 D1.wav")->note, 2);
    EXPECT_EQ(fileNameTuning("D1 C6.wav")->note, 2);
    EXPECT_EQ(fileNameTuning("E2 E5 E3.wav")->octave, 5);
}

TEST(FileNameTuning, OctavesEndAtSix) {
    EXPECT_EQ(fileNameTuning("B6.wav")->octave, 6);
    EXPECT_FALSE(fileNameTuning("B7.wav"));
}

TEST(FileNameTuning, FoldersDoNotTune) {
    EXPECT_FALSE(fileNameTuning("/sounds/C3/kick.wav"));
    EXPECT_FALSE(fileNameTuning("C:\\sounds\\C3\\kick.wav"));
    EXPECT_FALSE(fileNameTuning(""));
    EXPECT_FALSE(fileNameTuning("/C3/"));
}

// ---- files --------------------------------------------------------------------------------------------------

TEST(WaveReading, TenMillionBytesAreReadAndOneMoreIsNot) {
    platform::ScratchFolder folder;
    Bytes bytes(maxWaveFileBytes), read;
    platform::writeFile(folder / "x.wav", bytes.data(), bytes.size());
    EXPECT_EQ(readWaveFile(folder / "x.wav", read), WaveRead::done);
    EXPECT_EQ(read.size(), bytes.size());
    bytes.push_back(0);
    platform::writeFile(folder / "x.wav", bytes.data(), bytes.size());
    EXPECT_EQ(readWaveFile(folder / "x.wav", read), WaveRead::tooLarge);
    EXPECT_TRUE(read.empty());
}

TEST(WaveReading, MissingFilesAndFoldersAreUnreadable) {
    platform::ScratchFolder folder;
    Bytes read;
    EXPECT_EQ(readWaveFile(folder / "none.wav", read), WaveRead::unreadable);
    EXPECT_EQ(readWaveFile(folder.path(), read), WaveRead::unreadable);
    EXPECT_EQ(readWaveFile("", read), WaveRead::unreadable);
    EXPECT_EQ(readWaveFile("/dev/zero", read), WaveRead::unreadable);
}

TEST(WaveReading, LinksToNowhereAndFilesThatFailWhileTheyAreReadAreUnreadable) {
    platform::ScratchFolder folder;
    Bytes read;
    std::filesystem::create_symlink(folder / "gone.wav", folder / "dangling.wav");
    std::filesystem::create_symlink(folder / "round.wav", folder / "round.wav");
    EXPECT_EQ(readWaveFile(folder / "dangling.wav", read), WaveRead::unreadable);
    EXPECT_EQ(readWaveFile(folder / "round.wav", read), WaveRead::unreadable);
    EXPECT_EQ(readWaveFile("/proc/self/mem", read), WaveRead::unreadable);
    EXPECT_TRUE(read.empty());
}

TEST(WaveReading, AFileThatGrowsAndShrinksWhileItIsReadGivesWhatWasThere) {
    platform::ScratchFolder folder;
    const std::string path = folder / "x.wav";
    const Bytes whole = WaveMaker().putFrames(200000).file();
    platform::writeFile(path, whole.data(), whole.size());
    std::atomic<bool> isDone{false};
    std::thread writer([&] {
        for (std::size_t i = 0; !isDone; ++i) std::filesystem::resize_file(path, i % 2 == 0 ? 44 + i * 7919 % 400000 : 400044);
    });
    for (int i = 0; i < 200; ++i) {
        Bytes read;
        if (readWaveFile(path, read) != WaveRead::done) continue;
        EXPECT_LE(read.size(), whole.size());
        const WaveLayout layout = parseWave(read);
        if (layout.error == WaveError::none) {
            EXPECT_LE(convertWave(read, layout, 0).size(), 200000u);
        }
    }
    isDone = true;
    writer.join();
}

TEST(WaveWriting, AFileHas44BytesAndTwoPerSample) {
    EXPECT_EQ(waveFileBytes({}).size(), 44u);
    EXPECT_EQ(waveFileBytes(Samples(2048)).size(), 4140u);
}

TEST(WaveWriting, WhatIsWrittenClaims44100HzAndLoadsAgain) {
    platform::ScratchFolder folder;
    const Samples sound{-32767, -1, 0, 1, 32766, 32767};
    const Outcome outcome = writeWave(sound, folder / "x.wav");
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome.text, "");
    Bytes file;
    ASSERT_EQ(readWaveFile(folder / "x.wav", file), WaveRead::done);
    EXPECT_EQ(parseWave(file).sampleRate, 44100u);
    EXPECT_EQ(soundOf(file), (Samples{-32766, 0, 1, 2, 32767, 32767}));
}

TEST(WaveWriting, AFailureIsToldUnderThePath) {
    platform::ScratchFolder folder;
    for (const std::string& path : {folder / "missing/x.wav", folder.path()}) {
        const Outcome outcome = writeWave(Samples{1}, path);
        EXPECT_FALSE(outcome);
        EXPECT_EQ(outcome.title, path);
        EXPECT_EQ(outcome.text, "File write error. File is write protected or opened by another application.");
    }
}

}  // namespace
}  // namespace vantoric
