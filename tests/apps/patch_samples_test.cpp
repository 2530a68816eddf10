// Waves, SFZ files and edit commands by way of vantoric-patch.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <thread>

#include "apps/patch/compare.h"
#include "apps/patch/console.h"
#include "apps/patch/sample_commands.h"
#include "apps/patch/storage.h"
#include "base/math.h"
#include "base/numbers.h"
#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "samples/edit_commands.h"
#include "samples/resynthesis.h"
#include "samples/wave_file.h"
#include "sound/kernels.h"
#include "tests/apps/run_program.h"
#include "tests/samples/wave_maker.h"

namespace vantoric::patch {
namespace {

namespace p = parameter;
namespace fs = std::filesystem;
using test::WaveMaker;

class SampleProgram : public ::testing::Test {
protected:
    int run(const std::string& arguments) { return test::runProgram(PATCH_PROGRAM, arguments, folder.path(), output, errors); }
    // A path for the command line.
    std::string at(const std::string& name) const { return "\"" + (folder / name) + "\""; }
    void put(const std::string& name, const test::Bytes& bytes) const {
        ASSERT_TRUE(platform::writeFile(folder / name, bytes.data(), bytes.size()));
    }
    void putText(const std::string& name, const std::string& text) const {
        ASSERT_TRUE(platform::writeFile(folder / name, text.data(), text.size()));
    }
    void putSine(const std::string& name, int frames, double samplesPerTurn) const {
        put(name,
            WaveMaker()
                .putFrames(frames, [=](int i) { return static_cast<int>(20000 * math::sin(2 * math::pi * i / samplesPerTurn)); })
                .file());
    }
    // A patch with a sample of 3000 samples in layer 1, oscillator 1.
    std::string sampled(const std::string& name = "in.fxp") {
        put("sound.wav", WaveMaker().putFrames(3000, [](int i) { return (i * 37) % 20001 - 9000; }).file());
        EXPECT_EQ(run("load-wave init " + at("sound.wav") + " " + at(name)), 0) << errors;
        return at(name);
    }
    Patch& read(const std::string& name) {
        patch = std::make_unique<Patch>();
        load(folder / name, *patch);
        return *patch;
    }
    std::vector<std::int16_t> soundOf(const std::string& name, int wave = 0) {
        const Sample& sample = read(name).samples[static_cast<std::size_t>(wave)];
        return {sample.levels[0].get(), sample.levels[0].get() + sample.length};
    }
    bool exists(const std::string& name) const { return platform::exists(folder / name); }
    bool complains(const std::string& text) const { return errors.find(text) != errors.npos; }

    platform::ScratchFolder folder;
    std::string output, errors;
    std::unique_ptr<Patch> patch;
};

// ---- load-wave ----

TEST_F(SampleProgram, PutsAWaveIntoAnOscillatorThatThenPlaysIt) {
    put("a.wav", WaveMaker().putFrames(3000).looped(100, 1999));
    ASSERT_EQ(run("load-wave init " + at("a.wav") + " " + at("My Patch.fxp") + " --layer 3 --osc 2"), 0) << errors;
    EXPECT_EQ(output, "layer 3 oscillator 2: 3000 samples at 44100 Hz, loop 100 to 2000\n");
    const Patch& made = read("My Patch.fxp");
    EXPECT_EQ(made.name, "My Patch");
    EXPECT_TRUE(switchOn(made.parameters.getParameter(p::Layer1On + 2)));
    EXPECT_TRUE(switchOn(made.parameters.getParameter(hostIndex(p::On1 + 1, 2))));
    EXPECT_EQ(made.parameters.getListIndex(hostIndex(p::SynType1 + 1, 2)), sampleType);
    EXPECT_EQ(made.parameters.getListIndex(hostIndex(p::LoopMod1 + 1, 2)), loopModeLoop);
    EXPECT_EQ(made.samples[7].levels[0][1234], 1235);
}

TEST_F(SampleProgram, KeepsTheRestOfThePatch) {
    const std::string in = sampled();
    put("b.wav", WaveMaker().putFrames(500).file());
    ASSERT_EQ(run("load-wave " + in + " " + at("b.wav") + " " + in + " --osc 3"), 0) << errors;
    const Patch& made = read("in.fxp");
    EXPECT_EQ(made.samples[0].length, 3000);
    EXPECT_EQ(made.samples[2].length, 500);
}

TEST_F(SampleProgram, TakesOneChannelOfAStereoFile) {
    WaveMaker maker;
    maker.channels = 2;
    put("s.wav", maker.putFrames(600).file());
    ASSERT_EQ(run("load-wave init " + at("s.wav") + " " + at("l.fxp")), 0);
    ASSERT_EQ(run("load-wave init " + at("s.wav") + " " + at("r.fxp") + " --channel right"), 0);
    EXPECT_EQ(soundOf("l.fxp")[50], 51);
    EXPECT_EQ(soundOf("r.fxp")[50], 1051);
}

TEST_F(SampleProgram, TunesByNameUnlessToldNotTo) {
    putSine("Lead C3.wav", 3000, 100);
    ASSERT_EQ(run("load-wave init " + at("Lead C3.wav") + " " + at("a.fxp")), 0);
    EXPECT_NEAR(read("a.fxp").parameters.getParameter(p::Oct1), 1.0 - 5 * 0.11123471, 1e-6);
    ASSERT_EQ(run("load-wave init " + at("Lead C3.wav") + " " + at("b.fxp") + " --keep-tuning"), 0);
    EXPECT_EQ(read("b.fxp").parameters.getParameter(p::Oct1), Patch().parameters.getParameter(p::Oct1));
}

TEST_F(SampleProgram, MeasuresThePitchIfAsked) {
    putSine("tone.wav", 20000, 100);
    ASSERT_EQ(run("load-wave init " + at("tone.wav") + " " + at("a.fxp") + " --autotune"), 0);
    EXPECT_EQ(read("a.fxp").samples[0].sampleRate, 13081u);
}

TEST_F(SampleProgram, ShowsTheEnginesReasonAndWritesNoPatch) {
    WaveMaker three;
    three.channels = 3;
    put("three.wav", three.putFrames(10).file());
    put("none.wav", WaveMaker().file());
    putText("text.wav", "no wave at all");
    const std::pair<const char*, const char*> cases[] = {
        {"three.wav", "Error: Only mono or stereo samples can be loaded."},
        {"none.wav", "Error: Corrupt Wav file format. No data found."},
        {"text.wav", "Error: Invalid wav file header."},
        {"missing.wav", "missing.wav: cannot be read"},
    };
    for (const auto& [file, reason] : cases) {
        EXPECT_EQ(run("load-wave init " + at(file) + " " + at("out.fxp")), 3) << file;
        EXPECT_TRUE(complains(reason)) << errors;
        EXPECT_FALSE(exists("out.fxp")) << file;
    }
}

TEST_F(SampleProgram, LeavesThePatchAsItWasWhenAFileIsRefused) {
    const std::string in = sampled();
    const std::string before = test::contentOf(folder / "in.fxp");
    putText("text.wav", "no wave at all");
    EXPECT_EQ(run("load-wave " + in + " " + at("text.wav") + " " + in), 3);
    EXPECT_EQ(test::contentOf(folder / "in.fxp"), before);
}

TEST_F(SampleProgram, SaysThatALoopWasForgotten) {
    put("a.wav", WaveMaker().putFrames(300).looped(200, 5000));
    EXPECT_EQ(run("load-wave init " + at("a.wav") + " " + at("a.fxp")), 4);
    EXPECT_TRUE(complains("The loop point information of this sample is not valid!")) << errors;
    EXPECT_EQ(read("a.fxp").samples[0].loopEnd, 300);
}

TEST_F(SampleProgram, RefusesARateThatNoPatchCanHold) {
    WaveMaker fast;
    fast.rate = 400000;
    put("fast.wav", fast.putFrames(100).file());
    EXPECT_EQ(run("load-wave init " + at("fast.wav") + " " + at("a.fxp")), 3);
    EXPECT_FALSE(exists("a.fxp"));
    EXPECT_FALSE(errors.empty());
}

TEST_F(SampleProgram, WritesTextsTooWithTheSampleBeside) {
    putSine("tone.wav", 2000, 90);
    ASSERT_EQ(run("load-wave init " + at("tone.wav") + " " + at("a.fxp")), 0);
    ASSERT_EQ(run("load-wave init " + at("tone.wav") + " " + at("a.json")), 0);
    EXPECT_TRUE(exists("a-layer1-osc1.wav"));
    EXPECT_EQ(run("compare " + at("a.fxp") + " " + at("a.json")), 0) << output << errors;
}

TEST_F(SampleProgram, TellsWrongUse) {
    putSine("tone.wav", 2000, 90);
    for (const char* more : {"--layer 5", "--layer 0", "--osc 4", "--channel middle", "--loud"})
        EXPECT_EQ(run("load-wave init " + at("tone.wav") + " " + at("a.fxp") + " " + more), 2) << more;
    EXPECT_EQ(run("load-wave init " + at("tone.wav")), 2);
    for (const char* command : {"load-wave", "resynthesize", "edit", "import-sfz", "quick-import"})
        EXPECT_EQ(run(std::string(command) + " --help"), 0) << command;
    EXPECT_EQ(run("load-wave " + at("none.fxp") + " " + at("tone.wav") + " " + at("a.fxp")), 3);
    EXPECT_TRUE(complains("none.fxp: cannot be read")) << errors;
}

// ---- resynthesize ----

TEST_F(SampleProgram, MakesACustomWaveOfAFile) {
    putSine("tone.wav", 30000, 100);
    ASSERT_EQ(run("resynthesize init " + at("tone.wav") + " " + at("a.fxp") + " --layer 2 --osc 3"), 0) << errors;
    const Patch& made = read("a.fxp");
    EXPECT_EQ(made.parameters.getListIndex(hostIndex(p::SynType1 + 2, 1)), customWaveType);
    std::array<std::int16_t, cycleSamples> expected{};
    ASSERT_TRUE(resynthesizeFile(folder / "tone.wav", expected));
    EXPECT_EQ(made.customWaves[5], expected);
    EXPECT_EQ(made.customWaves[4], initCycle());
    // One turn of a sine, at the peak of all cycles.
    EXPECT_EQ(*std::max_element(expected.begin(), expected.end()), 20000);
}

TEST_F(SampleProgram, ShowsWhyAFileBecomesNoCustomWave) {
    put("large.wav", WaveMaker().putFrames(500001).file());
    EXPECT_EQ(run("resynthesize init " + at("large.wav") + " " + at("a.fxp")), 3);
    EXPECT_TRUE(complains("This file is too large and not suitable for resynthesis.")) << errors;
    EXPECT_EQ(run("resynthesize init " + at("missing.wav") + " " + at("a.fxp")), 3);
    EXPECT_TRUE(complains("missing.wav: cannot be read")) << errors;
    EXPECT_FALSE(exists("a.fxp"));
}

// ---- edit ----

TEST_F(SampleProgram, RunsEveryEditCommandOnItsRange) {
    sampled();
    Patch before;
    load(folder / "in.fxp", before);
    for (int command = firstStoredCommand; command < editCommandCount; ++command) {
        const EditCommand& row = editCommands[static_cast<std::size_t>(command)];
        if (row.apply == nullptr || row.role == EditRole::clear) continue;
        SCOPED_TRACE(row.label);
        ASSERT_EQ(run("edit " + at("in.fxp") + " " + at("out.fxp") + " --range 500:2500 \"" + row.label + "\""), 0) << errors;
        const Sample& sample = before.samples[0];
        EditSound expected{{sample.levels[0].get(), sample.levels[0].get() + sample.length}, 500, 2500, sample.sampleRate};
        LinearCongruence random;
        ASSERT_TRUE(applyEdit(expected, command, random));
        EXPECT_EQ(soundOf("out.fxp"), expected.samples);
        EXPECT_EQ(patch->samples[0].loopStart, expected.loopStart);
        EXPECT_EQ(patch->samples[0].loopEnd, expected.loopEnd);
        EXPECT_EQ(patch->samples[0].sampleRate, expected.sampleRate);
    }
}

TEST_F(SampleProgram, RunsCommandsInTurnAndSetsTheLoopAfterThem) {
    const std::string in = sampled();
    ASSERT_EQ(run("edit " + in + " " + at("out.fxp") + " --range 1000:2000 trim REVERSE 20 --loop 10:990"), 0) << errors;
    EXPECT_EQ(output, "layer 1 oscillator 1: 1000 samples at 44100 Hz, loop 10 to 990\n");
    const std::vector<std::int16_t> sound = soundOf("out.fxp");
    EXPECT_NEAR(*std::max_element(sound.begin(), sound.end()), 32760, 60);
}

TEST_F(SampleProgram, UndoesOneCommandOfTheSameRun) {
    const std::string in = sampled();
    const std::vector<std::int16_t> before = soundOf("in.fxp");
    ASSERT_EQ(run("edit " + in + " " + at("out.fxp") + " Silence Undo/Redo"), 0) << errors;
    EXPECT_EQ(soundOf("out.fxp"), before);
    EXPECT_EQ(run("edit " + in + " " + at("none.fxp") + " undo/redo"), 3);
    EXPECT_TRUE(complains("there is nothing to undo")) << errors;
    EXPECT_FALSE(exists("none.fxp"));
}

TEST_F(SampleProgram, ClearsASample) {
    const std::string in = sampled();
    ASSERT_EQ(run("edit " + in + " " + at("out.fxp") + " \"Clear all\""), 0) << errors;
    EXPECT_EQ(read("out.fxp").samples[0].length, 0);
    EXPECT_EQ(run("edit " + at("out.fxp") + " " + at("out.fxp") + " Reverse"), 3);
    EXPECT_TRUE(complains("layer 1 oscillator 1 has no sample")) << errors;
}

TEST_F(SampleProgram, ExportsTheSampleAsItStandsThen) {
    const std::string in = sampled();
    ASSERT_EQ(run("edit " + in + " " + at("out.fxp") + " \"Export as wav\" Silence --export " + at("before.wav")), 0) << errors;
    ASSERT_EQ(run("edit " + in + " " + at("out.fxp") + " Reverse --export " + at("after.wav")), 0) << errors;
    const auto expectFile = [&](const char* name, const std::vector<std::int16_t>& samples) {
        std::vector<std::uint8_t> bytes;
        ASSERT_TRUE(platform::readFile(folder / name, bytes));
        EXPECT_EQ(bytes, waveFileBytes(samples)) << name;
    };
    expectFile("before.wav", soundOf("in.fxp"));
    expectFile("after.wav", soundOf("out.fxp"));
    EXPECT_EQ(run("edit " + in + " " + at("out.fxp") + " \"Export as wav\""), 2);
    EXPECT_EQ(run("edit " + in + " " + at("none.fxp") + " --export /proc/no/where.wav"), 3);
    EXPECT_TRUE(complains("File write error.")) << errors;
    EXPECT_FALSE(exists("none.fxp"));
}

TEST_F(SampleProgram, RefusesMarkersBeyondTheSample) {
    const std::string in = sampled();
    for (const char* range : {"0:3001", "20:10"}) {
        EXPECT_EQ(run("edit " + in + " " + at("out.fxp") + " Reverse --range " + range), 3) << range;
        EXPECT_TRUE(complains("within the 3000 samples")) << errors;
    }
    for (const char* range : {"5", "1:", ":1", "a:b", "1:2:3", "99999999999:1"})
        EXPECT_EQ(run("edit " + in + " " + at("out.fxp") + " Reverse --loop " + range), 2) << range;
}

TEST(EditCommandNames, AreFoundByLabelOrNumber) {
    EXPECT_EQ(editCommandOf("Trim"), 17);
    EXPECT_EQ(editCommandOf("autoloop 66%"), 6);
    EXPECT_EQ(editCommandOf("44"), 44);
    EXPECT_EQ(editCommandOf("0"), 0);
    for (const char* wrong : {"1", "45", "-1", "-", ""}) EXPECT_THROW(editCommandOf(wrong), PatchError) << wrong;
    try {
        editCommandOf("Fade inn");
        ADD_FAILURE();
    } catch (const PatchError& error) {
        EXPECT_STREQ(error.what(), "there is no edit command \"Fade inn\"; did you mean \"Fade in\"?");
    }
}

// ---- import-sfz ----

TEST_F(SampleProgram, TurnsAnSfzFileIntoAPatch) {
    fs::create_directories(folder / "wav");
    putSine("wav/low.wav", 3000, 100);
    putSine("wav/high.wav", 2000, 50);
    putText("Two Keys.sfz",
            "<group> ampeg_release=0.5\r\n<region> sample=wav\\low.wav lokey=0 hikey=59 pitch_keycenter=48\r\n"
            "<region> sample=wav/high.wav lokey=60 hikey=127 pitch_keycenter=72\r\n");
    ASSERT_EQ(run("import-sfz " + at("Two Keys.sfz") + " " + at("a.fxp")), 0) << errors;
    EXPECT_NE(output.find("layer 1 oscillator 2: 2000 samples at 44100 Hz"), output.npos) << output;
    const Patch& made = read("a.fxp");
    EXPECT_EQ(made.name, "Two Keys");
    EXPECT_EQ(made.samples[0].length, 3000);
    EXPECT_EQ(made.samples[1].length, 2000);
    EXPECT_EQ(made.parameters.getListIndex(p::KeyEnd1), 59);
    EXPECT_EQ(made.parameters.getListIndex(p::KeyStar1 + 1), 60);
}

TEST_F(SampleProgram, MergesGroupsOrTakesTheFirst) {
    putSine("a.wav", 1000, 100);
    putText("g.sfz",
            "<group>\n<region> sample=a.wav lokey=0 hikey=59 pitch_keycenter=48\n"
            "<group>\n<region> sample=a.wav lokey=60 hikey=127 pitch_keycenter=72\n");
    ASSERT_EQ(run("import-sfz " + at("g.sfz") + " " + at("all.fxp")), 0) << errors;
    EXPECT_TRUE(complains("Should all groups be merged? Yes.")) << errors;
    EXPECT_EQ(read("all.fxp").samples[1].length, 1000);
    ASSERT_EQ(run("import-sfz " + at("g.sfz") + " " + at("first.fxp") + " --groups first"), 0) << errors;
    EXPECT_TRUE(complains("Should all groups be merged? No.")) << errors;
    EXPECT_EQ(read("first.fxp").samples[1].length, 0);
}

TEST_F(SampleProgram, TellsWhichSampleOfAnSfzFileIsMissing) {
    putSine("a.wav", 1000, 100);
    putText("m.sfz",
            "<region> sample=a.wav lokey=0 hikey=59 pitch_keycenter=48\n"
            "<region> sample=gone.wav lokey=60 hikey=127 pitch_keycenter=72\n");
    EXPECT_EQ(run("import-sfz " + at("m.sfz") + " " + at("m.fxp")), 4);
    EXPECT_TRUE(complains("File not found: gone.wav")) << errors;
    EXPECT_EQ(read("m.fxp").samples[0].length, 1000);
}

TEST_F(SampleProgram, RefusesWhatIsNoSfzFile) {
    putText("empty.sfz", "");
    EXPECT_EQ(run("import-sfz " + at("empty.sfz") + " " + at("a.fxp")), 3);
    EXPECT_TRUE(complains("No valid lines found.")) << errors;
    putText("none.sfz", "<region> lokey=3\n");
    EXPECT_EQ(run("import-sfz " + at("none.sfz") + " " + at("a.fxp")), 3);
    EXPECT_TRUE(complains("No sample found.")) << errors;
    EXPECT_EQ(run("import-sfz " + at("missing.sfz") + " " + at("a.fxp")), 3);
    EXPECT_TRUE(complains("File read error")) << errors;
    EXPECT_FALSE(exists("a.fxp"));
}

// ---- quick-import ----

TEST_F(SampleProgram, MakesAPatchOfOneFile) {
    ASSERT_EQ(run("compile " TEMPLATE_FOLDER " " + at("data/Vantoric_data")), 0) << errors;
    WaveMaker stereo;
    stereo.channels = 2;
    put("Hit.wav", stereo.putFrames(800).file());
    ASSERT_EQ(run("quick-import " + at("Hit.wav") + " " + at("a.fxp") + " --data " + at("data")), 0) << errors;
    EXPECT_EQ(read("a.fxp").name, "Hit");
    EXPECT_EQ(soundOf("a.fxp", 0)[5], 6);
    EXPECT_EQ(soundOf("a.fxp", 1)[5], 1006);
    ASSERT_EQ(run("quick-import --vocoder " + at("Hit.wav") + " " + at("v.fxp") + " --data " + at("data")), 0) << errors;
    EXPECT_EQ(soundOf("v.fxp", 0).size(), 800u);
    EXPECT_EQ(run("quick-import " + at("gone.wav") + " " + at("b.fxp") + " --data " + at("data")), 3);
    EXPECT_TRUE(complains("gone.wav: cannot be read")) << errors;
    EXPECT_EQ(run("quick-import " + at("Hit.wav") + " " + at("b.fxp") + " --data " + at("nowhere")), 3);
    EXPECT_TRUE(complains("Quick_Sample.fxp is missing")) << errors;
    EXPECT_FALSE(exists("b.fxp"));
}

// ---- the sign of life ----

TEST(BusySign, ShowsWhenItTakesLong) {
    Console console("test");
    testing::internal::CaptureStderr();
    {
        const Busy busy(console, "loading", std::chrono::milliseconds(20));
        std::this_thread::sleep_for(std::chrono::milliseconds(120));
    }
    EXPECT_NE(testing::internal::GetCapturedStderr().find("loading ... 0 s"), std::string::npos);
}

TEST(BusySign, StaysAwayFromWhatIsQuick) {
    Console console("test");
    testing::internal::CaptureStderr();
    {
        const Busy busy(console, "loading");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace vantoric::patch
