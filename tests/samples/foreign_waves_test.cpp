// Files as other programs write them. Those that are not installed are skipped.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "samples/wave_file.h"
#include "tests/platform/scratch_folder.h"

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

    test::ScratchFolder folder;
    WaveLayout layout;
};

TEST_F(ForeignWaves, OfSoxLoadAtEveryDepth) {
    if (!runs("sox --version")) GTEST_SKIP() << "no sox";
    expectTone(soxTone("-c 1 -b 8 -e unsigned-integer"), 16384, 400);
    expectTone(soxTone("-c 1 -b 16 -e signed-integer"), 16384, 60);
    expectTone(soxTone("-c 1 -b 32 -e floating-point"), 16384 * 0.9, 60);
}

// It writes the extensible format for these, which is no plain PCM.
TEST_F(ForeignWaves, OfSoxWithAnExtensibleHeaderAreRefusedByName) {
    if (!runs("sox --version")) GTEST_SKIP() << "no sox";
    for (const char* bits : {"24", "32"}) {
        const std::string path = folder / "tone.wav";
        ASSERT_TRUE(runs(std::string("sox -n -r 44100 -c 1 -e signed-integer -b ") + bits + " " + path + " synth 1 sine 441"));
        std::vector<std::uint8_t> file;
        ASSERT_EQ(readWaveFile(path, file), WaveRead::done);
        EXPECT_EQ(parseWave(file).error, WaveError::badEncoding) << bits;
        // The plain form of the same file.
        ASSERT_TRUE(runs(std::string("sox -D -n -r 44100 -c 1 -e signed-integer -b ") + bits + " -t wavpcm " + path +
                         " synth 1 sine 441 vol 0.5"));
        expectTone(soundOf(path), 16384, 60);
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

TEST_F(ForeignWaves, OfFlacLoadAsTheyWereBeforePacking) {
    if (!runs("sox --version") || !runs("flac --version")) GTEST_SKIP() << "no sox or no flac";
    const auto before = soxTone("-c 1 -b 16 -e signed-integer");
    ASSERT_TRUE(runs("flac -s -f -o " + (folder / "x.flac") + " " + (folder / "tone.wav")));
    ASSERT_TRUE(
        runs("flac -s -d -f --keep-foreign-metadata-if-present -o " + (folder / "back.wav") + " " + (folder / "x.flac")) ||
        runs("flac -s -d -f -o " + (folder / "back.wav") + " " + (folder / "x.flac")));
    EXPECT_EQ(soundOf(folder / "back.wav"), before);
}

TEST_F(ForeignWaves, OfFfmpegLoadWithItsInfoChunk) {
    if (!runs("ffmpeg -version")) GTEST_SKIP() << "no ffmpeg";
    for (const char* codec : {"pcm_u8", "pcm_s16le", "pcm_f32le"}) {
        const std::string path = folder / (std::string(codec) + ".wav");
        ASSERT_TRUE(
            runs(std::string("ffmpeg -y -f lavfi -i sine=frequency=441:duration=1 -ar 44100 -ac 1 -metadata title=Tone -c:a ") +
                 codec + " " + path));
        EXPECT_EQ(soundOf(path).size(), 44100u) << codec;
    }
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
