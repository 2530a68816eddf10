// Files as other programs write them: kept ones, each named after its program and what is in it, and those that
// sox writes here and now, if it is installed.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "platform/scratch_folder.h"
#include "samples/wave_file.h"

namespace vantoric {
namespace {

struct ForeignWaves : ::testing::Test {
    static bool runs(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; }

    // A second of 441 Hz at a level of -6 dB, written by sox with these options.
    std::vector<std::int16_t> soxTone(const std::string& options) {
        const std::string path = folder / "tone.wav";
        if (!runs("sox -D -n -r 44100 " + options + " " + path + " synth 1 sine 441 vol 0.5")) {
            ADD_FAILURE() << "sox refuses " << options;
            return {};
        }
        return soundOf(path);
    }
    std::vector<std::int16_t> soundOf(const std::string& path, int channel = 0) {
        std::vector<std::uint8_t> file;
        EXPECT_EQ(readWaveFile(path, file), WaveRead::done);
        layout = parseWave(file);
        EXPECT_EQ(layout.error, WaveError::none) << waveErrorText(layout.error);
        return layout.error == WaveError::none ? convertWave(file, layout, channel) : std::vector<std::int16_t>();
    }
    static void expectTone(const std::vector<std::int16_t>& x, double peak, double tolerance) {
        ASSERT_EQ(x.size(), 44100u);
        for (std::size_t i = 0; i < x.size(); ++i)
            ASSERT_NEAR(x[i], peak * std::sin(2.0 * M_PI * 441.0 * static_cast<double>(i) / 44100.0), tolerance) << i;
    }

    platform::ScratchFolder folder;
    WaveLayout layout;
};

// 400 samples of the same tone of 441 Hz at a peak of 16000, mono at 44.1 kHz unless told.
struct KeptWave {
    const char* name;
    WaveError error = WaveError::none;
    double peak = 16000.0;  // after conversion
    double tolerance = 2.0;
    int channels = 1;
};
constexpr double floatPeak = 16000.0 / 32768.0 * 32766.0 * 0.9;
const KeptWave keptWaves[] = {
    {.name = "ffmpeg_16_list"},
    {.name = "ffmpeg_8_list", .tolerance = 260.0},
    {.name = "ffmpeg_bext"},
    {.name = "ffmpeg_piped"},
    {.name = "ffmpeg_rf64"},
    {.name = "flac_16"},
    {.name = "flac_loop"},
    {.name = "python_16"},
    {.name = "python_24"},
    {.name = "python_32"},
    {.name = "python_stereo", .channels = 2},
    {.name = "sndfile_24"},
    {.name = "sndfile_bext_list"},
    {.name = "sndfile_float_peak", .peak = 32766.0 * 0.9, .tolerance = 3.0},  // it goes up to 1
    {.name = "sox_24"},
    {.name = "sox_8", .tolerance = 260.0},
    {.name = "sox_float", .peak = floatPeak},
    {.name = "sox_piped"},
    {.name = "ffmpeg_float_extensible", .peak = floatPeak},
    {.name = "flac_24_extensible"},
    {.name = "sox_24_extensible"},
    {.name = "ffmpeg_mulaw", .error = WaveError::badEncoding},
    {.name = "sox_adpcm", .error = WaveError::badEncoding},
    {.name = "sox_alaw", .error = WaveError::badEncoding},
    {.name = "sox_3_channels", .error = WaveError::badChannels},
    {.name = "sox_float64", .error = WaveError::badBits},
};

std::vector<std::uint8_t> keptFile(const std::string& name) {
    std::vector<std::uint8_t> file;
    EXPECT_EQ(readWaveFile(std::string(VANTORIC_WAVE_FILES "/") + name + ".wav", file), WaveRead::done) << name;
    return file;
}

TEST(KeptWaves, LoadOrAreRefusedByName) {
    for (const KeptWave& wave : keptWaves) {
        SCOPED_TRACE(wave.name);
        const std::vector<std::uint8_t> file = keptFile(wave.name);
        const WaveLayout layout = parseWave(file);
        ASSERT_EQ(layout.error, wave.error);
        if (layout.error != WaveError::none) continue;
        EXPECT_EQ(layout.sampleRate, 44100u);
        EXPECT_EQ(isStereoWave(file), wave.channels == 2);
        ASSERT_EQ(layout.frames, 400);
        for (int channel = 0; channel < wave.channels; ++channel) {
            const std::vector<std::int16_t> x = convertWave(file, layout, channel);
            for (std::size_t i = 0; i < x.size(); ++i)
                ASSERT_NEAR(x[i], wave.peak / (channel + 1) * std::sin(2.0 * M_PI * static_cast<double>(i) / 100.0),
                            wave.tolerance)
                    << i;
        }
    }
}

TEST(KeptWaves, AreAllTested) {
    std::set<std::string> named, there;
    for (const KeptWave& wave : keptWaves) named.insert(std::string(wave.name) + ".wav");
    named.insert("sox_96k.wav");
    for (const auto& entry : std::filesystem::directory_iterator(VANTORIC_WAVE_FILES)) there.insert(entry.path().filename());
    EXPECT_EQ(there, named);
}

TEST(KeptWaves, HaveTheLoopOfTheirSamplerChunk) {
    const WaveLayout layout = parseWave(keptFile("flac_loop"));
    EXPECT_TRUE(layout.loopOn);
    EXPECT_EQ(layout.loopStart, 100u);
    EXPECT_EQ(layout.loopEnd, 299u);
    EXPECT_FALSE(parseWave(keptFile("flac_16")).loopOn);
}

TEST(KeptWaves, HaveTheirOwnRate) {
    const WaveLayout layout = parseWave(keptFile("sox_96k"));
    EXPECT_EQ(layout.error, WaveError::none);
    EXPECT_EQ(layout.sampleRate, 96000u);
    EXPECT_EQ(layout.frames, 871);
}

TEST_F(ForeignWaves, OfSoxLoadAtEveryDepth) {
    if (!runs("sox --version")) GTEST_SKIP() << "no sox";
    expectTone(soxTone("-c 1 -b 8 -e unsigned-integer"), 16384, 400);
    expectTone(soxTone("-c 1 -b 16 -e signed-integer"), 16384, 60);
    expectTone(soxTone("-c 1 -b 32 -e floating-point"), 16384 * 0.9, 60);
}

// It writes the extensible format for these.
TEST_F(ForeignWaves, OfSoxWithAnExtensibleHeaderAreWhatTheirPlainFormIs) {
    if (!runs("sox --version")) GTEST_SKIP() << "no sox";
    for (const char* bits : {"24", "32"}) {
        const std::string path = folder / "tone.wav";
        for (const char* form : {"wav", "wavpcm"}) {
            ASSERT_TRUE(runs(std::string("sox -D -n -r 44100 -c 1 -e signed-integer -b ") + bits + " -t " + form + " " + path +
                             " synth 1 sine 441 vol 0.5"));
            expectTone(soundOf(path), 16384, 60);
        }
    }
}

TEST_F(ForeignWaves, OfSoxInStereoGiveBothSides) {
    if (!runs("sox --version")) GTEST_SKIP() << "no sox";
    const std::string path = folder / "stereo.wav";
    ASSERT_TRUE(runs("sox -D -n -r 44100 -c 2 -b 16 " + path + " synth 1 sine 441 sine 441 remix 1v0.5 2v0.25"));
    EXPECT_TRUE(isStereoFile(path));
    expectTone(soundOf(path, 0), 16384, 60);
    expectTone(soundOf(path, 1), 8192, 30);
}

TEST_F(ForeignWaves, OfSoxThroughAPipeHaveNoTrueSizeAndLoadWhole) {
    if (!runs("sox --version")) GTEST_SKIP() << "no sox";
    const std::string path = folder / "piped.wav";
    ASSERT_TRUE(runs("sh -c 'sox -D -n -r 44100 -c 1 -b 16 -t wav - synth 1 sine 441 vol 0.5 | cat > " + path + "'"));
    expectTone(soundOf(path), 16384, 60);
}

// And what we write, others read.
TEST_F(ForeignWaves, SoxReadsWhatIsWritten) {
    if (!runs("sox --version")) GTEST_SKIP() << "no sox";
    const auto sound = soxTone("-c 1 -b 16 -e signed-integer");
    const auto bytes = waveFileBytes(sound);
    std::FILE* const file = std::fopen((folder / "ours.wav").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size());
    std::fclose(file);
    EXPECT_TRUE(runs("sh -c '[ $(soxi -s " + (folder / "ours.wav") + ") = 44100 ]'"));
}

}  // namespace
}  // namespace vantoric
