// Mixes: their text, the instances added up, the mastering and the program that plays them.
#include "apps/render/mix.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "apps/render/mastering.h"
#include "base/random.h"
#include "tests/apps/run_program.h"

namespace vantoric::render {
namespace {

constexpr double rate = 48000.0;

std::string refusal(const std::string& text) {
    Mix mix;
    std::string problem;
    EXPECT_FALSE(parseMix(text, mix, problem));
    return problem;
}

// Both sides alike.
std::vector<double> sine(double level, double hertz, double seconds) {
    std::vector<double> samples;
    for (int i = 0; i < static_cast<int>(seconds * rate); ++i)
        samples.insert(samples.end(), 2, level * std::sin(2.0 * M_PI * hertz * i / rate));
    return samples;
}

// A quiet tone with a short loud burst every half second.
std::vector<double> drummed() {
    std::vector<double> samples = sine(0.05, 997.0, 6.0);
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (i / 2 % 24000 < 200) samples[i] *= 8.0;
    return samples;
}

double rms(const std::vector<double>& samples, std::size_t from, std::size_t to) {
    double sum = 0.0;
    for (std::size_t i = from; i < to; ++i) sum += samples[i] * samples[i];
    return std::sqrt(sum / static_cast<double>(to - from));
}

TEST(MixText, NamesSongLoudnessAndInstruments) {
    Mix mix;
    std::string problem;
    ASSERT_TRUE(
        parseMix("; two players\nsong a b.mid\r\nloudness -16\n\ninstrument Bass/Rubber Bass\n"
                 "instrument level=-3.5 pan=-20 track=1 track=4 set=2:Cutoff1=0.5 Pad/Winter  Cathedral \n",
                 mix, problem))
        << problem;
    EXPECT_EQ(mix.song, "a b.mid");
    EXPECT_EQ(mix.loudness, -16.0);
    ASSERT_EQ(mix.instruments.size(), 2u);
    EXPECT_EQ(mix.instruments[0].patch, "Bass/Rubber Bass");
    EXPECT_EQ(mix.instruments[0].level, 0.0);
    EXPECT_TRUE(mix.instruments[0].tracks.empty());
    EXPECT_EQ(mix.instruments[1].patch, "Pad/Winter  Cathedral");
    EXPECT_EQ(mix.instruments[1].level, -3.5);
    EXPECT_EQ(mix.instruments[1].pan, -20.0);
    EXPECT_EQ(mix.instruments[1].tracks, (std::vector<int>{1, 4}));
    EXPECT_EQ(mix.instruments[1].settings, std::vector<std::string>{"2:Cutoff1=0.5"});
}

TEST(MixText, SaysWhereItMakesNoSense) {
    EXPECT_EQ(refusal(""), "it names no song");
    EXPECT_EQ(refusal("song a.mid"), "it names no instrument");
    EXPECT_EQ(refusal("song a.mid\nnonsense"), "line 2: what is \"nonsense\"?");
    EXPECT_EQ(refusal("loudness high"), "line 1: a loudness is a number of LUFS from -60 to 0");
    EXPECT_EQ(refusal("instrument level=3"), "line 1: an instrument without a patch");
    for (const char* word : {"level=x", "level=", "level=61", "level=nan", "pan=101", "track=-1", "width=3"})
        EXPECT_EQ(refusal(std::string("instrument ") + word + " A/B"), std::string("line 1: what is \"") + word + "\"?");
}

TEST(MixText, SurvivesBytesAtRandom) {
    const std::string whole = "song a.mid\nloudness -16\ninstrument level=-3 pan=4 track=2 set=A=1 Bass/B\n";
    LinearCongruence random{7};
    for (int round = 0; round < 2000; ++round) {
        std::string text = whole;
        for (int i = 0; i < 4; ++i) text[random.next() % text.size()] = static_cast<char>(random.next() >> 16);
        Mix mix;
        std::string problem;
        const bool read = parseMix(text, mix, problem);
        EXPECT_EQ(read, problem.empty());
    }
}

TEST(MixTracks, AreTakenOutOfTheFile) {
    const auto bytes = midi::write(480, "", {{0, 0.4}}, {}, {{"A", {{0, {0x90, 60, 90}}}}, {"B", {{0, {0x90, 72, 90}}}}}, 960);
    midi::File file;
    std::string problem;
    ASSERT_TRUE(midi::parse(bytes, file, problem)) << problem;
    EXPECT_EQ(withTracks(file, {}).events.size(), 2u);
    const midi::File second = withTracks(file, {2});
    ASSERT_EQ(second.events.size(), 1u);
    EXPECT_EQ(second.events[0].message.data1, 72);
    EXPECT_EQ(second.length, 960);
    EXPECT_EQ(second.tempos.size(), 1u);
    EXPECT_TRUE(withTracks(file, {9}).events.empty());
}

TEST(MixBuffer, AddsByLevelAndPan) {
    MixBuffer mix;
    const float ones[] = {1.0f, 1.0f, 1.0f, 1.0f};
    mix.add(0, ones, 2, 0.0, 0.0);
    mix.add(1, ones, 2, -6.0206, 0.0);
    ASSERT_EQ(mix.frames(), 3u);
    EXPECT_NEAR(mix.samples()[0], 1.0, 1e-9);
    EXPECT_NEAR(mix.samples()[3], 1.5, 1e-5);
    EXPECT_NEAR(mix.samples()[4], 0.5, 1e-5);
    for (const double pan : {-100.0, -35.0, 60.0, 100.0}) {
        MixBuffer panned;
        panned.add(0, ones, 1, 0.0, pan);
        const double left = panned.samples()[0], right = panned.samples()[1];
        EXPECT_NEAR(left * left + right * right, 2.0, 1e-9) << pan;
        EXPECT_EQ(left > right, pan < 0.0) << pan;
        EXPECT_EQ(std::fabs(pan) == 100.0, std::min(left, right) < 1e-9) << pan;
    }
}

TEST(Mastering, MeasuresASineAsTheStandardSays) {
    // 997 Hz on both sides at -20 dBFS: -20 LUFS (EBU Tech 3341).
    const Measures measures = measure(sine(0.1, 997.0, 5.0), rate);
    EXPECT_NEAR(measures.loudness, -20.0, 0.1);
    EXPECT_NEAR(measures.truePeak, -20.0, 0.1);
}

TEST(Mastering, GoesByPlainGainWhereThatIsEnough) {
    std::vector<double> samples = sine(0.01, 997.0, 5.0);
    const std::vector<double> before = samples;
    const Mastered mastered = master(samples, rate, -16.0, -1.0);
    EXPECT_NEAR(mastered.gain, 24.0, 0.1);
    EXPECT_EQ(mastered.reduction, 0.0);
    EXPECT_NEAR(measure(samples, rate).loudness, -16.0, 0.01);
    EXPECT_NEAR(samples[1001] / before[1001], std::pow(10.0, mastered.gain / 20.0), 1e-9);
}

TEST(Mastering, LimitsPeaksAndReachesTheLoudness) {
    std::vector<double> samples = drummed();
    ASSERT_GT(measure(samples, rate).truePeak - measure(samples, rate).loudness, 14.0);
    const Mastered mastered = master(samples, rate, -16.0, -3.0);
    EXPECT_GT(mastered.reduction, 1.0);
    EXPECT_NEAR(measure(samples, rate).loudness, -16.0, 0.1);
    EXPECT_LE(measure(samples, rate).truePeak, -3.0 + 0.01);
}

TEST(Mastering, LeavesSilenceAlone) {
    std::vector<double> samples(static_cast<std::size_t>(2 * rate), 0.0), none;
    EXPECT_EQ(master(samples, rate, -16.0, -1.0).gain, 0.0);
    EXPECT_EQ(master(none, rate, -16.0, -1.0).gain, 0.0);
    EXPECT_EQ(*std::max_element(samples.begin(), samples.end()), 0.0);
}

TEST(Limiter, HoldsPeaksBetweenTheSamplesToo) {
    // At a quarter of the rate and 45 degrees the samples are 3 dB below the crests.
    std::vector<double> samples;
    for (int i = 0; i < 48000; ++i) samples.insert(samples.end(), 2, std::sin(M_PI / 2.0 * i + M_PI / 4.0));
    limit(samples, rate, 0.5);
    EXPECT_NEAR(rms(samples, 40000, 80000), 0.5 / std::numbers::sqrt2, 0.01);
}

TEST(Limiter, LeavesWhatIsBelowTheCeiling) {
    std::vector<double> samples = sine(0.4, 300.0, 1.0);
    const std::vector<double> before = samples;
    EXPECT_EQ(limit(samples, rate, 0.5), 1.0);
    EXPECT_LT(std::fabs(samples[777] - before[777]), 1e-12);
}

TEST(Limiter, HasLoweredItsGainWhenThePeakComesAndReturns) {
    std::vector<double> samples = sine(0.1, 1000.0, 2.0);
    samples[2 * 24012] = 1.0;
    const double lowest = limit(samples, rate, 0.5);
    EXPECT_NEAR(lowest, 0.5, 0.01);
    EXPECT_LE(samples[2 * 24012], 0.5 + 1e-9);
    EXPECT_NEAR(rms(samples, 2 * 20000, 2 * 23000), 0.1 / std::numbers::sqrt2, 1e-4);
    EXPECT_NEAR(rms(samples, 2 * 70000, 2 * 90000), 0.1 / std::numbers::sqrt2, 1e-3);
}

// The program with a song of two tracks and a folder of patches for the plug-in of one sine.
class MixProgram : public testing::Test {
protected:
    MixProgram() {
        std::filesystem::create_directories(folder / "sounds/Bass");
        const auto bytes = midi::write(
            480, "", {}, {},
            {{"", {{0, {0x90, 69, 100}}, {1900, {0x80, 69, 0}}}}, {"", {{960, {0x90, 81, 100}}, {2800, {0x80, 81, 0}}}}}, 2880);
        save("two.mid", std::string(bytes.begin(), bytes.end()));
        std::string patch(56, '\0');
        patch.replace(0, 4, "CcnK").replace(8, 4, "FPCh").replace(16, 4, "Fake");
        save("sounds/Bass/One Sine.fxp", patch + std::string("\0\0\0\2V\x40", 6));
    }
    ~MixProgram() override { std::filesystem::remove_all(folder); }

    void save(const std::string& name, const std::string& content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
    }
    int run(const std::string& mix, const std::string& more = "") {
        save("a.mix", mix);
        return test::runProgram(RENDER_PROGRAM,
                                (folder / "a.mix").string() + " " + (folder / "out.wav").string() +
                                    " --settle 0 --tail 0 --plugin " + FAKE_PLUGIN + " --sounds " + (folder / "sounds").string() +
                                    " " + more,
                                folder, output, errors);
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("vantoric-mix-test-" + std::to_string(getpid()));
    std::string output, errors;
};

TEST_F(MixProgram, PlaysEveryInstrumentOnItsTracks) {
    EXPECT_EQ(run("song two.mid\ninstrument track=1 pan=-100 Bass/One Sine\ninstrument track=2 level=-6 Bass/One Sine\n"), 0)
        << errors;
    EXPECT_NE(output.find("length    0:03.0 at 44100 Hz (2 notes)"), std::string::npos) << output;
    EXPECT_NE(output.find("true peak"), std::string::npos) << output;
}

TEST_F(MixProgram, BringsTheRecordingToALoudness) {
    EXPECT_EQ(run("song two.mid\nloudness -20\ninstrument Bass/One Sine\n"), 0) << errors;
    EXPECT_NE(output.find("loudness  -20.0 LUFS"), std::string::npos) << output;
    EXPECT_EQ(run("song two.mid\nloudness -20\ninstrument Bass/One Sine\n", "--loudness -23"), 0) << errors;
    EXPECT_NE(output.find("loudness  -23.0 LUFS"), std::string::npos) << output;
    EXPECT_EQ(run("song two.mid\nloudness -20\ninstrument level=-120 set=Volume=0 Bass/One Sine\n"), 1);
    EXPECT_NE(errors.find("too short or too quiet"), std::string::npos) << errors;
}

TEST_F(MixProgram, TellsWhatIsWrong) {
    EXPECT_EQ(run("song two.mid\n"), 3);
    EXPECT_NE(errors.find("a.mix: it names no instrument"), std::string::npos) << errors;
    EXPECT_EQ(run("song none.mid\ninstrument Bass/One Sine\n"), 3);
    EXPECT_NE(errors.find("none.mid: cannot be opened"), std::string::npos) << errors;
    EXPECT_EQ(run("song two.mid\ninstrument Bass/None\n"), 3);
    EXPECT_NE(errors.find("None.fxp: cannot be opened"), std::string::npos) << errors;
    EXPECT_EQ(run("song two.mid\ninstrument set=Nothing=1 Bass/One Sine\n"), 2);
    EXPECT_EQ(run("song two.mid\ninstrument Bass/One Sine\n", "--patch x.fxp"), 2);
    EXPECT_NE(errors.find("--patch, --set and --list-parameters go with a MIDI file"), std::string::npos) << errors;
    EXPECT_EQ(run("song two.mid\ninstrument Bass/One Sine\n", "--loudness 3"), 2);
}

}  // namespace
}  // namespace vantoric::render
