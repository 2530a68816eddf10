// The player: the song on the clock, the plug-in from outside, the render loop and the program itself.
#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "apps/render/patch_file.h"
#include "apps/render/patch_library.h"
#include "apps/render/render.h"
#include "apps/render/report.h"
#include "apps/render/settings.h"
#include "apps/render/wave_output.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "tests/apps/run_program.h"

namespace vantoric::render {
namespace {

using midi::Message;

// 480 ticks a quarter: 120 until tick 960, then 60; 4/4, from tick 1920 3/4.
midi::File example() {
    midi::File file;
    file.ticksPerQuarter = 480;
    file.tempos = {{0, 0.5}, {960, 1.0}};
    file.meters = {{0, 4, 4}, {1920, 3, 4}};
    file.length = 2400;
    file.events = {{0, {0xb0, 7, 100}},    {0, {0x90, 69, 100}},    {480, {0x80, 69, 0}},  {480, {0xb0, 7, 50}},
                   {960, {0x90, 57, 100}}, {1440, {0xb0, 64, 127}}, {1440, {0x80, 57, 0}}, {1920, {0x91, 81, 9}}};
    return file;
}

class Folder {
public:
    Folder() : path(std::filesystem::temp_directory_path() / ("vantoric-player-test-" + std::to_string(getpid()))) {
        std::filesystem::create_directories(path);
    }
    ~Folder() { std::filesystem::remove_all(path); }
    std::string file(const std::string& name, const std::string& content) const {
        std::ofstream(path / name, std::ios::binary) << content;
        return path / name;
    }
    const std::filesystem::path path;
};

std::unique_ptr<PluginHost> fake() {
    std::string problem;
    auto plugin = PluginHost::load(FAKE_PLUGIN, problem);
    EXPECT_TRUE(plugin) << problem;
    return plugin;
}

struct Rendered {
    std::vector<float> left, right;
    RenderResult result;
};

Rendered rendered(PluginHost& plugin, const midi::File& file, RenderSettings settings, double settle = 0.0) {
    Rendered out;
    out.result = render(
        plugin, Song(file), settings, settle,
        [&out](const float* samples, int frames) {
            for (int i = 0; i < frames; ++i) {
                out.left.push_back(samples[2 * i]);
                out.right.push_back(samples[2 * i + 1]);
            }
            return true;
        },
        [](std::int64_t, std::int64_t) {});
    return out;
}

RenderSettings settings(int block = 512, double tail = 0.0) {
    RenderSettings result;
    result.rate = 48000.0;
    result.block = block;
    result.tail = tail;
    return result;
}

TEST(SongClock, FollowsTheTempoMap) {
    const Song song(example());
    EXPECT_DOUBLE_EQ(song.secondsAt(960), 1.0);
    EXPECT_DOUBLE_EQ(song.secondsAt(1440), 2.0);
    EXPECT_DOUBLE_EQ(song.tickAt(0.5), 480.0);
    EXPECT_DOUBLE_EQ(song.tickAt(2.5), 1680.0);
    EXPECT_DOUBLE_EQ(song.length(), 4.0);
    for (double seconds = 0.0; seconds < 5.0; seconds += 0.37) EXPECT_NEAR(song.secondsAt(song.tickAt(seconds)), seconds, 1e-12);
}

TEST(SongClock, TellsWhereTheTransportStands) {
    const Song song(example());
    const Transport early = song.transportAt(0.75), late = song.transportAt(3.5);
    EXPECT_DOUBLE_EQ(early.ppq, 1.5);
    EXPECT_DOUBLE_EQ(early.tempo, 120.0);
    EXPECT_DOUBLE_EQ(early.barStart, 0.0);
    EXPECT_DOUBLE_EQ(late.ppq, 4.5);
    EXPECT_DOUBLE_EQ(late.tempo, 60.0);
    EXPECT_DOUBLE_EQ(late.barStart, 4.0);
    EXPECT_EQ(late.numerator, 3);
}

TEST(SongClock, GoesBy120WithoutATempo) {
    midi::File file;
    file.ticksPerQuarter = 96;
    EXPECT_DOUBLE_EQ(Song(file).secondsAt(96), 0.5);
    EXPECT_DOUBLE_EQ(Song(file).transportAt(1.0).tempo, 120.0);
}

TEST(Performance, PutsMessagesOnTheirFrames) {
    const Performance whole = perform(Song(example()), 48000.0, 0.0, 100.0);
    EXPECT_EQ(whole.frames, 4 * 48000);
    EXPECT_EQ(whole.messages[0].message, (Message{0xb0, 7, 100}));
    EXPECT_EQ(whole.messages[2].frame, 24000);
    EXPECT_EQ(whole.messages[4].frame, 48000);
}

TEST(Performance, LetsGoOfKeysAndPedalsAtTheEnd) {
    const Performance whole = perform(Song(example()), 48000.0, 0.0, 100.0);
    const auto count = whole.messages.size();
    EXPECT_EQ(whole.messages[count - 2].message, (Message{0xb0, 64, 0}));
    EXPECT_EQ(whole.messages[count - 1].message, (Message{0x81, 81, 64}));
    EXPECT_EQ(whole.messages[count - 1].frame, whole.frames);
}

TEST(Performance, BeginsInTheMiddleWithTheLastControllers) {
    const Performance part = perform(Song(example()), 48000.0, 1.0, 1.5);
    ASSERT_EQ(part.messages.size(), 3u);
    EXPECT_EQ(part.messages[0].message, (Message{0xb0, 7, 50}));
    EXPECT_EQ(part.messages[1].message, (Message{0x90, 57, 100}));
    EXPECT_EQ(part.messages[1].frame, 0);
    EXPECT_EQ(part.messages[2].message, (Message{0x80, 57, 64}));
    EXPECT_EQ(part.frames, 24000);
}

TEST(Performance, LeavesOutNotesThatBeganBeforeIt) {
    for (const auto& timed : perform(Song(example()), 48000.0, 0.25, 1.0).messages) EXPECT_FALSE(timed.message.data1 == 69);
}

TEST(PluginFromOutside, TellsItsNamesAndParameters) {
    const auto plugin = fake();
    EXPECT_EQ(plugin->name(), "Fake");
    EXPECT_EQ(plugin->parameters(), 6);
    EXPECT_EQ(plugin->parameterName(1), "Cutoff1");
    EXPECT_EQ(plugin->parameterLabel(1), "Hz");
    EXPECT_EQ(plugin->parameterDisplay(1), "0.1");
}

TEST(PluginFromOutside, IsRefusedWithAReason) {
    const Folder folder;
    std::string problem;
    EXPECT_FALSE(PluginHost::load("/nowhere/at/all.so", problem));
    EXPECT_EQ(problem, "no such file");
    EXPECT_FALSE(PluginHost::load(folder.file("text.so", "no module"), problem));
    EXPECT_NE(problem.find("text.so"), std::string::npos);
    EXPECT_FALSE(PluginHost::load(EMPTY_MODULE, problem));
    EXPECT_EQ(problem, "not a VST 2 plug-in: it has no VSTPluginMain");
}

TEST(Rendering, IsTheSameForEveryBlockSize) {
    const auto expected = rendered(*fake(), example(), settings(512));
    EXPECT_EQ(expected.result.frames, 4 * 48000);
    EXPECT_GT(*std::max_element(expected.left.begin(), expected.left.end()), 0.3f);
    for (const int block : {1, 7, 64, 4096, 32768})
        EXPECT_EQ(rendered(*fake(), example(), settings(block)).left, expected.left) << block;
    RenderSettings random = settings(4096);
    random.randomBlocks = true;
    EXPECT_EQ(rendered(*fake(), example(), random).left, expected.left);
}

TEST(Rendering, StartsNotesOnTheFrame) {
    const auto out = rendered(*fake(), example(), settings(480));
    EXPECT_EQ(out.left[24000], 0.0f);  // the note ended here
    EXPECT_EQ(out.left[47999], 0.0f);
    EXPECT_EQ(out.left[48000], 0.0f);  // the sine's first sample
    EXPECT_GT(out.left[48001], 0.0f);
}

TEST(Rendering, TellsThePluginTheTime) {
    auto probe = [](float what) {
        const auto plugin = fake();
        plugin->setParameter(3, what);
        return rendered(*plugin, example(), settings(480)).right;
    };
    const auto ppq = probe(0.1f), tempo = probe(0.2f), bar = probe(0.3f);
    EXPECT_FLOAT_EQ(ppq[24000], 0.001f);
    EXPECT_FLOAT_EQ(ppq[3 * 48000], 0.004f);
    EXPECT_FLOAT_EQ(tempo[100], 0.120f);
    EXPECT_FLOAT_EQ(tempo[48000], 0.060f);
    EXPECT_FLOAT_EQ(bar[3 * 48000 + 24000], 0.004f);
}

TEST(Rendering, NeverSendsMoreEventsThanAQueueHolds) {
    midi::File file;
    file.ticksPerQuarter = 480;
    file.length = 4800;
    for (int i = 0; i < 4800; ++i) file.events.push_back({i, {0xb0, 1, static_cast<std::uint8_t>(i & 127)}});
    const auto plugin = fake();
    plugin->setParameter(3, 0.5f);
    const auto out = rendered(*plugin, file, settings(32768));
    double most = 0.0, all = 0.0;
    for (const float x : out.right) {
        most = std::max(most, static_cast<double>(x));
        all += x * 1000.0;
    }
    EXPECT_LE(most, 0.256);
    EXPECT_NEAR(all, 4800.0, 0.5);
}

TEST(Rendering, CountsWhatIsNoNumberAndWritesSilence) {
    const auto plugin = fake();
    plugin->setParameter(3, 0.4f);
    const auto out = rendered(*plugin, example(), settings());
    EXPECT_EQ(out.result.badSamples, out.result.frames);
    EXPECT_EQ(out.right[1000], 0.0f);
}

TEST(Rendering, EndsWhenTheTailIsSilent) {
    const auto out = rendered(*fake(), example(), settings(512, -1.0));
    EXPECT_NEAR(static_cast<double>(out.result.frames), (4.0 + silentSeconds) * 48000.0, 513.0);
}

TEST(Rendering, KeepsALongTailToItsLimit) {
    const auto plugin = fake();
    plugin->setParameter(3, 0.2f);  // a right output that never falls silent
    EXPECT_EQ(rendered(*plugin, example(), settings(512, -1.0)).result.frames,
              static_cast<std::int64_t>((4.0 + longestTail) * 48000.0));
}

TEST(Rendering, RendersTheTailThatIsAskedFor) {
    EXPECT_EQ(rendered(*fake(), example(), settings(512, 1.5)).result.frames, static_cast<std::int64_t>(5.5 * 48000.0));
}

TEST(Rendering, AppliesTheGain) {
    RenderSettings half = settings();
    half.gain = 0.5;
    const auto loud = rendered(*fake(), example(), settings()), soft = rendered(*fake(), example(), half);
    EXPECT_FLOAT_EQ(soft.left[1234], 0.5f * loud.left[1234]);
}

TEST(Rendering, StopsWhenTheDiskIsFull) {
    const auto plugin = fake();
    const auto result = render(
        *plugin, Song(example()), settings(), 0.0, [](const float*, int) { return false; }, [](std::int64_t, std::int64_t) {});
    EXPECT_FALSE(result.written);
    EXPECT_EQ(result.frames, 512);
}

TEST(Rendering, WaitsUntilThePluginHasLoadedItsData) {
    const auto plugin = fake();
    const std::uint8_t slow[] = {'S'};
    ASSERT_TRUE(plugin->setChunk(slow));  // 300 ms of work on a thread of the plug-in
    const auto out = rendered(*plugin, example(), settings(), 10.0);
    EXPECT_NE(out.left[100], 0.0f);
}

TEST(Settings, FindParametersByNameAndLayer) {
    const auto plugin = fake();
    std::string problem;
    EXPECT_TRUE(applySetting(*plugin, "Cutoff1=0.7", problem));
    EXPECT_TRUE(applySetting(*plugin, "2:Cutoff1=0.25", problem));
    EXPECT_FLOAT_EQ(plugin->parameter(1), 0.7f);
    EXPECT_FLOAT_EQ(plugin->parameter(2), 0.25f);
    EXPECT_TRUE(applySetting(*plugin, "FilSerial=1", problem));  // the plug-in shows eight characters
    EXPECT_FLOAT_EQ(plugin->parameter(5), 1.0f);
}

TEST(Settings, FindValuesByWhatTheDisplayShows) {
    const auto plugin = fake();
    std::string problem;
    EXPECT_TRUE(applySetting(*plugin, "FilSeria=on", problem));
    EXPECT_GT(plugin->parameter(5), 0.5f);
    EXPECT_TRUE(applySetting(*plugin, "Wave=12", problem));
    EXPECT_FLOAT_EQ(plugin->parameter(4), 3 / 128.0f);
    EXPECT_TRUE(applySetting(*plugin, "Wave=@Sine", problem));
    EXPECT_FLOAT_EQ(plugin->parameter(4), 0.0f);
    EXPECT_TRUE(applySetting(*plugin, "Wave=#2", problem));
    EXPECT_FLOAT_EQ(plugin->parameter(4), 2 / 128.0f);
}

TEST(Settings, AreRefusedWithAReasonAndChangeNothing) {
    const auto plugin = fake();
    std::string problem;
    for (const auto& [setting, reason] :
         {std::pair{"Volume", "it should be [LAYER:]NAME=VALUE"}, std::pair{"=1", "it should be [LAYER:]NAME=VALUE"},
          std::pair{"-=1", "it should be [LAYER:]NAME=VALUE"}, std::pair{"x:Volume=1", "the layer should be a number from 1"},
          std::pair{"3:Cutoff1=1", "there is no parameter Cutoff1 in layer 3"},
          std::pair{"Nothing=1", "there is no parameter Nothing"}, std::pair{"Wave=Square", "no value of it shows as \"Square\""},
          std::pair{"Wave=#200", "a row should be #0 to #127"},
          std::pair{"Wave=Pulse 1/2", "\"Pulse 1/2\" could be several of its values: give the row as #n"}}) {
        EXPECT_FALSE(applySetting(*plugin, setting, problem));
        EXPECT_EQ(problem, reason);
    }
    EXPECT_FLOAT_EQ(plugin->parameter(4), 0.0f);
}

std::string patchBytes(const std::string& chunk) {
    std::string bytes(56, '\0');
    bytes.replace(0, 4, "CcnK").replace(8, 4, "FPCh").replace(16, 4, "Fake");
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(chunk.size() >> shift);
    return bytes + chunk;
}

constexpr std::int32_t fakeId = 0x46616b65;

// As with an installation that belongs to the system.
TEST(PatchLibrary, AUsersOwnPatchHidesTheFactorys) {
    const Folder folder;
    const std::string root = folder.path.string() + "/", bass = "Vantoric_sounds/Bass/";
    for (const char* part : {"lib/Vantoric_data", "lib/Vantoric_sounds/Bass", "own/Vantoric_sounds/Bass", "vst"})
        std::filesystem::create_directories(folder.path / part);
    for (const std::string& name : {"lib/" + bass + "Low.fxp", "lib/" + bass + "Deep.fxp", "own/" + bass + "Low.fxp",
                                    "own/" + bass + "Mine.fxp", std::string("lib/Vantoric.so")})
        static_cast<void>(folder.file(name, ""));
    std::filesystem::create_symlink(root + "lib/Vantoric.so", root + "vst/Vantoric.so");
    platform::setOwnFolder(root + "own");
    chooseLibrary(root + "vst/Vantoric.so", "");
    EXPECT_EQ(libraryPatch("Bass/Low"), root + "own/" + bass + "Low.fxp");
    EXPECT_EQ(libraryPatch("Bass/Mine"), root + "own/" + bass + "Mine.fxp");
    EXPECT_EQ(patchPath("Bass/Deep"), root + "lib/" + bass + "Deep.fxp");
    EXPECT_EQ(patchPath(root + "lib/" + bass + "Low.fxp"), root + "lib/" + bass + "Low.fxp");
    EXPECT_EQ(patchPath("Bass/None"), "Bass/None");
    platform::setOwnFolder("");
    platform::setDataFolder("");
}

TEST(PatchFile, HandsOverTheChunk) {
    const Folder folder;
    std::vector<std::uint8_t> chunk;
    std::string problem;
    ASSERT_TRUE(loadPatch(folder.file("a.fxp", patchBytes("V\x80") + "beyond"), fakeId, chunk, problem)) << problem;
    EXPECT_EQ(chunk, (std::vector<std::uint8_t>{'V', 0x80}));
}

TEST(PatchFile, FieldsThatNobodyReadsMayHoldAnything) {
    const Folder folder;
    std::vector<std::uint8_t> chunk;
    std::string problem, bytes = patchBytes("chunk");
    for (std::size_t at = 2; at < 56; ++at)
        if (at < 16 || at >= 20) bytes[at] = 'x';
    EXPECT_TRUE(loadPatch(folder.file("a.fxp", bytes), fakeId, chunk, problem)) << problem;
    EXPECT_EQ(chunk.size(), 5u);
}

TEST(PatchFile, IsRefusedWithAReason) {
    const Folder folder;
    std::vector<std::uint8_t> chunk;
    std::string problem;
    const std::string whole = patchBytes("chunk");
    auto reason = [&](const std::string& bytes) {
        EXPECT_FALSE(loadPatch(folder.file("bad.fxp", bytes), fakeId, chunk, problem));
        return problem;
    };
    EXPECT_EQ(reason(""), "not a patch file");
    EXPECT_EQ(reason(whole.substr(0, 59)), "not a patch file");
    EXPECT_EQ(reason(whole.substr(0, 64)), "truncated: the file ends within the chunk");
    EXPECT_EQ(reason(patchBytes("")), "its chunk is empty");
    EXPECT_EQ(reason(std::string(1, 'X').append(whole, 1)), "not a patch file");
    EXPECT_EQ(reason(whole.substr(0, 16) + "Else" + whole.substr(20)), "a patch of another plug-in");
    EXPECT_FALSE(loadPatch("/nowhere/at/all.fxp", fakeId, chunk, problem));
    EXPECT_EQ(problem, "cannot be opened");
}

TEST(Report, MeasuresPeakAndLoudness) {
    // A stereo sine at 997 Hz with a peak of -20 dBFS has a loudness of -20 LUFS (EBU Tech 3341; both sides add up).
    Meter meter(48000.0);
    std::vector<float> samples;
    for (int i = 0; i < 5 * 48000; ++i) {
        const auto x = static_cast<float>(0.1 * std::sin(2 * M_PI * 997.0 * i / 48000.0));
        samples.insert(samples.end(), {x, x});
    }
    meter.hear(samples.data(), 5 * 48000);
    EXPECT_NEAR(meter.peakDecibels(), -20.0, 0.01);
    EXPECT_NEAR(meter.loudness(), -20.0, 0.1);
}

TEST(Report, WritesTimesAndLevels) {
    EXPECT_EQ(clockText(0.0), "0:00.0");
    EXPECT_EQ(clockText(65.24), "1:05.2");
    EXPECT_EQ(clockText(59.99), "1:00.0");
    EXPECT_EQ(levelText(-3.21, "dBFS"), "-3.2 dBFS");
    EXPECT_EQ(levelText(-INFINITY, "dBFS"), "silence");
}

TEST(Report, ShowsProgressOnlyOfALongRender) {
    testing::internal::CaptureStderr();
    {
        ProgressLine line(true);
        for (int i = 0; i < 1000; ++i) line.update(i, 1000);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Report, ShowsTheTimeLeftAfterTwoSeconds) {
    testing::internal::CaptureStderr();
    {
        ProgressLine line(true), unwanted(false);
        line.update(0, 1000);
        unwanted.update(0, 1000);
        std::this_thread::sleep_for(std::chrono::milliseconds(2010));
        line.update(500, 1000);
        line.update(501, 1000);
        unwanted.update(500, 1000);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "rendering:  50%, 0:02.0 left\n");
}

TEST(Report, TellsThatThePluginIsLoadingAfterTwoSeconds) {
    testing::internal::CaptureStderr();
    {
        ProgressLine line(true);
        line.loading();
        std::this_thread::sleep_for(std::chrono::milliseconds(2010));
        line.loading();
        line.update(0, 1000);  // another stage, with a clock of its own
        line.update(1, 1000);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "loading the plug-in: 0:02.0\n");
}

TEST(WaveOutput, WritesAllThreeFormats) {
    const Folder folder;
    const float samples[] = {0.5f, -0.5f, 2.0f, -2.0f};
    for (const auto& [format, subtype] :
         {std::pair{SampleFormat::pcm16, SF_FORMAT_PCM_16}, std::pair{SampleFormat::pcm24, SF_FORMAT_PCM_24},
          std::pair{SampleFormat::float32, SF_FORMAT_FLOAT}}) {
        const std::string path = folder.path / "out.wav";
        std::string problem;
        const auto output = WaveOutput::create(path, 96000, format, problem);
        ASSERT_TRUE(output) << problem;
        EXPECT_TRUE(output->write(samples, 2));
        EXPECT_TRUE(output->close());
        SF_INFO info{};
        SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
        ASSERT_TRUE(file);
        EXPECT_EQ(info.format, SF_FORMAT_WAV | subtype);
        EXPECT_EQ(info.samplerate, 96000);
        float back[4];
        EXPECT_EQ(sf_readf_float(file, back, 2), 2);
        EXPECT_NEAR(back[0], 0.5, 1e-4);
        EXPECT_NEAR(back[2], format == SampleFormat::float32 ? 2.0 : 1.0, 1e-4);
        sf_close(file);
    }
}

// The program itself.
class Program : public testing::Test {
protected:
    int run(const std::string& arguments) { return test::runProgram(RENDER_PROGRAM, arguments, folder.path, output, errors); }
    std::string song(int velocity = 100) const {
        const midi::Track track{"", {{0, {0x90, 69, static_cast<std::uint8_t>(velocity)}}, {240, {0x80, 69, 0}}}};
        const auto bytes = midi::write(480, "", {}, {}, {track}, 480);
        return folder.file("song.mid", std::string(bytes.begin(), bytes.end()));
    }
    std::string plugin(const std::string& path = FAKE_PLUGIN) const { return " --settle 0 --plugin " + path + " "; }

    Folder folder;
    std::string wave = folder.path / "out.wav", output, errors;
};

TEST_F(Program, RendersASongAndReports) {
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--tail 1 --rate 48000 --format 24 --block random"), 0) << errors;
    EXPECT_NE(output.find("length    0:01.5 at 48000 Hz (1 notes)"), std::string::npos) << output;
    EXPECT_NE(output.find("peak      -6.0 dBFS"), std::string::npos) << output;
    EXPECT_NE(output.find("LUFS"), std::string::npos);
    EXPECT_NE(output.find("times real time"), std::string::npos);
    const auto size = std::filesystem::file_size(wave);
    EXPECT_GE(size, 72000u * 6 + 44);
    EXPECT_LT(size, 72000u * 6 + 200);
}

TEST_F(Program, LoadsPatchesAndSettings) {
    const std::string patch = folder.file("a.fxp", patchBytes("V\xff"));
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--patch " + patch), 0) << errors;
    EXPECT_NE(output.find("peak      -0.0 dBFS"), std::string::npos) << output;
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--set Volume=0.25 --gain -6"), 0) << errors;
    EXPECT_NE(output.find("peak      -18.0 dBFS"), std::string::npos) << output;
}

TEST_F(Program, TakesAPatchByItsPlaceInTheLibrary) {
    std::filesystem::create_directories(folder.path / "songs");
    std::filesystem::create_directories(folder.path / "Vantoric/Vantoric_sounds/Bass");
    static_cast<void>(folder.file("Vantoric/Vantoric_sounds/Bass/Loud One.fxp", patchBytes("V\xff")));
    const std::string inFolder = folder.file("songs/song.mid", test::contentOf(song()));
    EXPECT_EQ(run(inFolder + " " + wave + plugin() + "--patch 'Bass/Loud One'"), 0) << errors;
    EXPECT_NE(output.find("peak      -0.0 dBFS"), std::string::npos) << output;
    EXPECT_EQ(run(inFolder + " " + wave + plugin() + "--patch 'Bass/None'"), 3);
    EXPECT_NE(errors.find("Bass/None: cannot be opened"), std::string::npos) << errors;
}

TEST_F(Program, TellsWhichGainWouldNotClip) {
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--set Volume=1 --gain 12.5"), 0);
    EXPECT_NE(errors.find("clipped; try --gain 0"), std::string::npos) << errors;
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--set Volume=1 --gain 12.5 --format 32f --tail 0"), 0);
    EXPECT_EQ(errors, "");
}

TEST_F(Program, ListsParametersWithoutASong) {
    EXPECT_EQ(run(plugin() + "--list-parameters --set 2:Cutoff1=0.7"), 0) << errors;
    EXPECT_NE(output.find("1  Cutoff1    0.1          Hz"), std::string::npos) << output;
    EXPECT_NE(output.find("2  Cutoff1    0.7"), std::string::npos) << output;
}

TEST_F(Program, FailsOnTroubleWithTheRender) {
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--set Volume=0 --fail-on-silence"), 1);
    EXPECT_NE(errors.find("silence"), std::string::npos);
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--set Volume=0"), 0);
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--set Probe=0.4"), 1);
    EXPECT_NE(errors.find("not finite"), std::string::npos);
}

TEST_F(Program, FailsOnWrongUse) {
    for (const char* wrong :
         {"--rate 7999", "--rate 200000", "--block 0", "--block 32769", "--block x", "--format 8", "--nonsense",
          "--set Nothing=1", "--set nan:Volume=1", "--set Volume=nan", "--set Volume=#inf", "--start 2 --end 1"})
        EXPECT_EQ(run(song() + " " + wave + plugin() + wrong), 2) << wrong;
    for (const std::string option : {"--gain", "--loudness", "--true-peak", "--start", "--end", "--tail", "--settle"})
        for (const char* number : {"nan", "-nan", "inf", "-inf", "1e999", "1e9", "one", "1x"}) {
            EXPECT_EQ(run(song() + " " + wave + plugin() + option + "=" + number), 2) << option << ' ' << number;
            EXPECT_NE(errors.find(option + ": should be a number from "), std::string::npos) << errors;
        }
    EXPECT_EQ(run(""), 2);
    EXPECT_EQ(run("--help"), 0);
}

TEST_F(Program, FailsOnBadFiles) {
    EXPECT_EQ(run("/nowhere.mid " + wave + plugin()), 3);
    EXPECT_EQ(run(folder.file("text.mid", "hello") + " " + wave + plugin()), 3);
    EXPECT_NE(errors.find("not a MIDI file"), std::string::npos);
    const std::string whole = test::contentOf(song());
    EXPECT_EQ(run(folder.file("cut.mid", whole.substr(0, whole.size() - 5)) + " " + wave + plugin()), 3);
    EXPECT_NE(errors.find("truncated"), std::string::npos);
    EXPECT_EQ(run(song() + " " + wave + plugin("/nowhere.so")), 3);
    EXPECT_NE(errors.find("no such file"), std::string::npos);
    EXPECT_EQ(run(song() + " " + wave + plugin(EMPTY_MODULE)), 3);
    EXPECT_NE(errors.find("no VSTPluginMain"), std::string::npos);
    EXPECT_EQ(run(song() + " /nowhere/out.wav" + plugin()), 3);
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--patch " + song()), 3);
    EXPECT_NE(errors.find("not a patch file"), std::string::npos) << errors;
    EXPECT_EQ(run(song() + " " + wave + plugin() + "--patch " + folder.file("refused.fxp", patchBytes("R"))), 3);
    EXPECT_NE(errors.find("refused.fxp: the plug-in refuses it"), std::string::npos) << errors;
}

}  // namespace
}  // namespace vantoric::render
