#include "samples/resynthesis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "samples/wave_file.h"

namespace vantoric {
namespace {

using Cycle = std::array<std::int16_t, cycleSamples>;
using Sound = std::vector<std::int16_t>;

Sound sine(std::size_t count, double period, double amplitude = 20000.0) {
    Sound sound(count);
    for (std::size_t i = 0; i < count; ++i)
        sound[i] = static_cast<std::int16_t>(amplitude * std::sin(2.0 * M_PI * static_cast<double>(i) / period));
    return sound;
}

int peakOf(const Cycle& cycle) {
    int peak = 0;
    for (const int s : cycle) peak = std::max(peak, std::abs(s));
    return peak;
}

TEST(Resynthesis, TakesAFileOf4096SamplesWhole) {
    Cycle cycle;
    EXPECT_EQ(resynthesizeSound(sine(4096, 4096.0), cycle).lag, 0);
    EXPECT_EQ(peakOf(cycle), 20000);
    EXPECT_NEAR(cycle[512], 20000, 2);
    EXPECT_NEAR(cycle[1536], -20000, 2);
}

TEST(Resynthesis, SearchesTheFirstSampleMore) {
    Cycle cycle;
    EXPECT_EQ(resynthesizeSound(sine(4097, 200.0), cycle).lag, 200);
}

TEST(Resynthesis, FindsExactlyOneCycleOfA100HertzSineAt44100) {
    Cycle cycle;
    const Sound sound = sine(22050, 441.0);
    EXPECT_EQ(resynthesizeSound(sound, cycle).lag, 441);
    const double start = 2.0 * M_PI * 11025 / 441.0;
    for (std::size_t i = 0; i < cycle.size(); ++i)
        ASSERT_NEAR(cycle[i], 20000.0 * std::sin(start + 2.0 * M_PI * static_cast<double>(i) / 2048.0), 40.0) << i;
}

TEST(Resynthesis, JoinsTheEndOfTheCycleToItsStart) {
    Sound sound = sine(20000, 700.0);
    for (std::size_t i = 0; i < sound.size(); ++i)
        sound[i] = static_cast<std::int16_t>(sound[i] * (1.0 - static_cast<double>(i) / 20000.0));
    Cycle cycle;
    resynthesizeSound(sound, cycle);
    int largestStep = 0;
    for (std::size_t i = 1; i < cycle.size(); ++i) largestStep = std::max(largestStep, std::abs(cycle[i] - cycle[i - 1]));
    EXPECT_LE(std::abs(cycle[0] - cycle[2047]), largestStep + 10);
}

TEST(Resynthesis, LeavesSilenceSilent) {
    for (const std::size_t count : {std::size_t{1}, std::size_t{500}, std::size_t{6000}}) {
        Cycle cycle;
        cycle.fill(99);
        EXPECT_EQ(resynthesizeSound(Sound(count), cycle).peakBefore, 0);
        EXPECT_EQ(peakOf(cycle), 0);
    }
}

TEST(Resynthesis, GivesSilenceForNoSoundAtAll) {
    Cycle cycle;
    cycle.fill(99);
    resynthesizeSound({}, cycle);
    EXPECT_EQ(peakOf(cycle), 0);
}

TEST(Resynthesis, CutsADrumHitAtTheCentreOfTheFile) {
    Sound hit(8000);
    for (std::size_t i = 4000; i < hit.size(); ++i)
        hit[i] = static_cast<std::int16_t>(20000.0 * std::exp(-(static_cast<double>(i) - 4000.0) / 1000.0) *
                                           std::cos(2.0 * M_PI * static_cast<double>(i - 4000) / 300.0));
    Sound otherStart = hit;
    for (std::size_t i = 0; i < 500; ++i) otherStart[i] = static_cast<std::int16_t>(i % 7);
    Cycle cycle, other;
    const int lag = resynthesizeSound(hit, cycle).lag;
    EXPECT_NEAR(lag, 300, 3);
    EXPECT_GT(cycle[0], 15000);
    EXPECT_EQ(resynthesizeSound(otherStart, other).lag, lag);
    EXPECT_EQ(cycle, other);
}

TEST(Resynthesis, ReadsSilenceBehindAShortFilesEnd) {
    Sound clicks(4097);
    clicks[500] = clicks[500 + 2800] = 9000;
    Cycle cycle;
    EXPECT_EQ(resynthesizeSound(clicks, cycle).lag, 2800);  // from the middle on it passes the end
    EXPECT_EQ(peakOf(cycle), 20000);
}

TEST(Resynthesis, BringsOneLoudSampleToThePeak) {
    Cycle cycle;
    resynthesizeSound(Sound(1, 32767), cycle);
    EXPECT_EQ(cycle[0], 20000);
    EXPECT_EQ(cycle[2047], 20000);
}

class ResynthesisFiles : public testing::Test {
protected:
    ResynthesisFiles() { cycle.fill(1234); }

    std::string put(const std::vector<std::uint8_t>& bytes) {
        const std::string path = folder / "cycle.wav";
        platform::writeFile(path, bytes.data(), bytes.size());
        return path;
    }
    platform::ScratchFolder folder;
    Cycle cycle{};
};

TEST_F(ResynthesisFiles, AreRefusedAboveAMillionBytes) {
    std::vector<std::uint8_t> bytes = waveFileBytes(sine(499978, 400.0));
    ASSERT_EQ(bytes.size(), 1000000u);
    bytes.push_back(0);
    const Outcome outcome = resynthesizeFile(put(bytes), cycle);
    EXPECT_FALSE(outcome);
    EXPECT_EQ(outcome.text, "This file is too large and not suitable for resynthesis. Please choose a smaller one!");
    EXPECT_EQ(outcome.title, "Error");
    EXPECT_EQ(cycle[0], 1234);
}

TEST_F(ResynthesisFiles, OfAMillionBytesAreTaken) {
    std::vector<std::uint8_t> bytes = waveFileBytes(sine(5000, 400.0));
    bytes.resize(1000000);
    const Outcome outcome = resynthesizeFile(put(bytes), cycle);
    EXPECT_TRUE(outcome);
    EXPECT_EQ(outcome.text, "");
}

TEST_F(ResynthesisFiles, ThatAreMissingFailInSilence) {
    const Outcome outcome = resynthesizeFile(folder / "none.wav", cycle);
    EXPECT_FALSE(outcome);
    EXPECT_EQ(outcome.text, "");
}

TEST_F(ResynthesisFiles, WithoutAHeaderAreToldUnderTheirPath) {
    const std::string path = put({1, 2, 3});
    const Outcome outcome = resynthesizeFile(path, cycle);
    EXPECT_FALSE(outcome);
    EXPECT_EQ(outcome.text, "Invalid wav file header.");
    EXPECT_EQ(outcome.title, path);
    EXPECT_EQ(cycle[0], 1234);
}

TEST_F(ResynthesisFiles, WithLessThanOneFrameHoldNoData) {
    std::vector<std::uint8_t> bytes = waveFileBytes(Sound(1, 5));
    bytes[40] = 1;  // bytes of data
    bytes.pop_back();
    EXPECT_EQ(resynthesizeFile(put(bytes), cycle).text, "Corrupt Wav file format. No data found.");
}

TEST_F(ResynthesisFiles, MayHaveAnyRate) {
    std::vector<std::uint8_t> bytes = waveFileBytes(sine(5000, 400.0));
    bytes[26] = 0x7f;  // more than 8 MHz: a cycle has no rate
    EXPECT_TRUE(resynthesizeFile(put(bytes), cycle));
}

}  // namespace
}  // namespace vantoric
