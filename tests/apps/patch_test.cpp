#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "apps/patch/compare.h"
#include "apps/patch/patch_text.h"
#include "apps/patch/value_text.h"
#include "apps/patch/wave_text.h"
#include "base/numbers.h"
#include "base/random.h"
#include "parameters/parameter_table.h"
#include "patch/patch_file.h"
#include "platform/scratch_folder.h"
#include "tests/apps/run_program.h"

namespace vantoric::patch {
namespace {

namespace p = parameter;

std::string wrapped(const std::string& layer) { return "{\"format\": 1, \"layers\": [{" + layer + "}]}"; }

void read(const std::string& layer, Patch& patch) { readText(wrapped(layer), "", "Test", patch); }

std::string errorOf(const std::string& text) {
    Patch patch;
    try {
        readText(text, "", "Test", patch);
    } catch (const PatchError& error) {
        return error.what();
    }
    return "no error";
}

std::string layerError(const std::string& layer) { return errorOf(wrapped(layer)); }

// Text of a patch, read again.
std::vector<std::string> lostInText(const Patch& patch) {
    Patch again;
    readText(writeText(patch, [](int) { return std::string(); }), "", "Again", again);
    return differences(patch, again);
}

// ---- values ----

TEST(PatchValue, ReadsFrequenciesAndTimes) {
    EXPECT_NEAR(fastExp(-6.0 * (1.0 - readValue(p::Cutoff1, "1200 Hz"))) * 20000.0, 1200.0, 0.01);
    EXPECT_EQ(readValue(p::Cutoff1 + 1, "1.2 kHz"), readValue(p::Cutoff1 + 1, "1200 Hz"));
    EXPECT_NEAR(stageSeconds(readValue(p::AttVol, "0.35 sec")), 0.35, 1e-5);
    EXPECT_EQ(readValue(p::RelVol + 3, "350 ms"), readValue(p::AttVol, "0.35 sec"));
    EXPECT_NEAR(stageSeconds(readValue(p::HoldVol, "2 s")), 2.0, 1e-4);
    EXPECT_NEAR(fastExp(readValue(p::LfoSpd1 + 2, "5 Hz") * 8.85936) * 0.0625, 5.0, 1e-4);
    EXPECT_EQ(readValue(p::AttVol, "1 ms"), 0.0f);
    EXPECT_EQ(readValue(p::Cutoff1, "20 kHz"), 1.0f);
}

TEST(PatchValue, ReadsPercentagesLabelsAndTheValueItself) {
    EXPECT_EQ(readValue(p::Vol1, "37%"), 0.37f);
    EXPECT_EQ(readValue(p::Vol1, 37.0), 0.37f);
    EXPECT_EQ(readValue(p::FilPan1, "+50"), 0.75f);
    EXPECT_EQ(readValue(p::FilPan1, -50.0), 0.25f);
    EXPECT_EQ(readValue(p::Detune1, "-20 cent"), 0.4f);
    EXPECT_EQ(readValue(p::Step1, "12.5%"), 0.125f);
    EXPECT_EQ(readValue(p::FilType1, "LP 24dB"), listValue(4));
    EXPECT_EQ(readValue(p::Oct1, "-1"), readValue(p::Oct1, -1.0));
    EXPECT_EQ(readValue(p::ArpStp1, 12.0), readValue(p::ArpStp1, "12"));
    EXPECT_EQ(readValue(p::On1, "On"), 1.0f);
    EXPECT_EQ(readValue(p::Semi1, "Semi +7"), readValue(p::Semi1 + 1, " Semi +7 "));
    EXPECT_EQ(readValue(p::Vol1, "=0.6953"), 0.6953f);
    EXPECT_EQ(readValue(p::FilType1, "=0.5"), 0.5f);
}

TEST(PatchValue, WritesWhatAPersonWouldWrite) {
    EXPECT_EQ(writeValue(p::Vol1, 0.37f), "37%");
    EXPECT_EQ(writeValue(p::FilPan1, 0.75f), "+50");
    EXPECT_EQ(writeValue(p::FilPan1, 0.25f), "-50");
    EXPECT_EQ(writeValue(p::FilType1, listValue(4)), "LP 24dB");
    EXPECT_EQ(writeValue(p::Oct1, readValue(p::Oct1, "-1")), "-1");
    EXPECT_EQ(writeValue(p::Cutoff1, readValue(p::Cutoff1, "1200 Hz")), "1200 Hz");
    EXPECT_EQ(writeValue(p::Cutoff1, readValue(p::Cutoff1, "12 kHz")), "12 kHz");
    EXPECT_EQ(writeValue(p::AttVol, readValue(p::AttVol, "0.35 sec")), "0.35 sec");
    EXPECT_EQ(writeValue(p::AttVol, readValue(p::AttVol, "5 ms")), "5 ms");
    EXPECT_EQ(writeValue(p::LfoSpd1, readValue(p::LfoSpd1, "5 Hz"), 0), "5 Hz");
    EXPECT_EQ(writeValue(p::LfoSpd1, readValue(p::LfoSpd1, "1/4 BPM"), 2), "1/4 BPM");
    EXPECT_EQ(writeValue(p::KeyFol1, 1.0f), "Keyfol.");
    EXPECT_EQ(writeValue(p::On1, 1.0f), "On");
    EXPECT_EQ(writeValue(p::On1, 0.7f), "=0.7");
    EXPECT_EQ(writeValue(p::Vol1, 0.123456789f), "=0.12345679");
}

TEST(PatchValue, EveryValueOfEveryParameterReadsBackToTheSameBits) {
    LinearCongruence seed;
    for (int n = 0; n < layerParameterEnd; ++n) {
        for (int i = 0; i < 30; ++i) {
            float value = static_cast<float>(seed.next()) * 2.3283064e-10f;
            if (i < 5) value = static_cast<float>(i) * 0.25f;
            if (i >= 20) value = listValue(i - 20);
            if (value > 1.0f) value = 1.0f;
            const std::string text = writeValue(n, value, i % 10);
            EXPECT_EQ(readValue(n, text), value) << parameterInfo(n).name << " \"" << text << "\"";
        }
    }
}

// ---- patches ----

TEST(PatchText, AnEmptyTextIsTheInitState) {
    Patch patch;
    const Patch init;
    readText("{\"format\": 1, \"layers\": [{}]}", "", "Init", patch);
    EXPECT_TRUE(differences(patch, init).empty());
    EXPECT_EQ(patch.parameters.getParameter(p::Layer1On), 1.0f);
    EXPECT_EQ(patch.parameters.getListIndex(p::FilType1), 4);
    EXPECT_EQ(patch.parameters.getParameter(p::Cutoff1), 1.0f);
    EXPECT_EQ(patch.parameters.getParameter(p::KeyFol1), 1.0f);
    EXPECT_EQ(patch.parameters.getListIndex(p::KeyEnd1), 127);
    EXPECT_EQ(patch.customWaves[11][512], 32767);
}

TEST(PatchText, FillsGroupsOfALayer) {
    Patch patch;
    read(R"("matrix": [{"source": "Velocity", "destination": "Cutoff1", "amount": 35},
                       {"slot": 4, "source": "Modwheel", "destination": "Pitch", "amount": "-10"}],
            "arp": [{"step": 3, "note": "12", "velocity": "8"}, {"velocity": 4}],
            "steps": [0, 50, "25%", 100],
            "insert1": {"type": "Chorus", "mix": 50, "par1": 20}, "insert2": {"type": "Delay", "par4": "=0.123"})",
         patch);
    const ParameterModel& values = patch.parameters;
    EXPECT_EQ(values.getListIndex(p::MatSrc1), 18);
    EXPECT_EQ(values.getListIndex(p::MatDst1), 32);
    EXPECT_EQ(values.getParameter(p::MatVal1), 0.675f);
    EXPECT_EQ(values.getListIndex(p::MatSrc1 + 3), 19);
    EXPECT_EQ(values.getParameter(p::MatVal1 + 3), 0.45f);
    EXPECT_EQ(values.getListIndex(p::ArpStp1 + 2), 12);
    EXPECT_EQ(values.getListIndex(p::ArpVol1 + 2), 9);
    EXPECT_EQ(values.getListIndex(p::ArpVol1 + 3), 5);
    EXPECT_EQ(values.getParameter(p::Step1 + 1), 0.5f);
    EXPECT_EQ(values.getParameter(p::Step1 + 2), 0.25f);
    EXPECT_EQ(values.getListIndex(p::FxInType), 11);
    EXPECT_EQ(values.getParameter(p::FxInPar1), 0.2f);
    EXPECT_EQ(values.getListIndex(p::FxIn2Type), 6);
    EXPECT_EQ(values.getParameter(p::FxIn2Par1 + 3), 0.123f);
}

TEST(PatchText, ALayerThatIsWrittenIsOn) {
    Patch patch;
    readText(R"({"format": 1, "layers": [{"on": "Off"}, {"Vol1": "30%"}, {"on": false}]})", "", "Test", patch);
    EXPECT_EQ(patch.parameters.getParameter(p::Layer1On), 0.0f);
    EXPECT_EQ(patch.parameters.getParameter(p::Layer2On), 1.0f);
    EXPECT_EQ(patch.parameters.getParameter(p::Layer3On), 0.0f);
    EXPECT_EQ(patch.parameters.getParameter(p::Layer4On), 0.0f);
    EXPECT_EQ(patch.parameters.getParameter(hostIndex(p::Vol1, 1)), 0.3f);
}

TEST(PatchText, KeepsNameAuthorAndAbout) {
    Patch patch;
    readText(R"({"format": 1, "name": "Bells", "author": "A. Nonym", "about": "Rings",
                 "tags": ["bell", "late night"]})",
             "", "File", patch);
    const std::string text = writeText(patch, [](int) { return std::string(); });
    Patch again;
    readText(text, "", "File", again);
    EXPECT_EQ(again.name, "Bells");
    EXPECT_EQ(again.author, "A. Nonym");
    EXPECT_EQ(again.about, "Rings");
    EXPECT_EQ(again.tags, (std::vector<std::string>{"bell", "late night"}));
    Patch unnamed;
    readText(R"({"format": 1})", "", "File", unnamed);
    EXPECT_EQ(unnamed.name, "File");
}

TEST(PatchText, CustomWavesComeFromHarmonicsOrBytes) {
    Patch patch;
    read(R"("customWave2": {"harmonics": [1, 0, 0.3333]})", patch);
    const Cycle& cycle = patch.customWaves[1];
    EXPECT_EQ(cycle[0], 0);
    EXPECT_EQ(cycle[1024], 0);
    EXPECT_EQ(*std::max_element(cycle.begin(), cycle.end()), 32767);
    EXPECT_EQ(readCycle(writeCycle(cycle)), cycle);
    EXPECT_TRUE(lostInText(patch).empty());
    const double silence[] = {0.0};
    EXPECT_EQ(cycleOfHarmonics(silence), Cycle{});
}

// Any parameter at any value that the instrument can hold, and any custom wave.
void randomize(Patch& patch, unsigned start) {
    LinearCongruence seed;
    for (unsigned i = 0; i < start; ++i) seed.next();
    for (int index = 0; index < parameterCount; ++index) {
        const float unit = std::min(1.0f, static_cast<float>(seed.next()) * 2.3283064e-10f);
        const bool isList = parameterInfo(numberOfParameter(index)).kind == ControlKind::List && seed.next() % 3 != 0;
        patch.parameters.setParameterQuiet(index, isList ? listValue(static_cast<int>(unit * 127.0f)) : unit);
    }
    for (Cycle& cycle : patch.customWaves)
        for (std::int16_t& sample : cycle) sample = static_cast<std::int16_t>(seed.next() >> 16);
    cleanMatrix(patch);
}

TEST(PatchText, RandomPatchesComeBackBitForBit) {
    for (unsigned start = 1; start <= 12; ++start) {
        Patch patch, fromFile;
        randomize(patch, start * 7919);
        const std::vector<std::string> lost = lostInText(patch);
        EXPECT_TRUE(lost.empty() || (lost.size() == 1 && lost[0].starts_with("name"))) << lost[0];
        const std::vector<std::uint8_t> file = toPatchFile(patch);
        fromPatchFile(file, fromFile);
        EXPECT_TRUE(differences(patch, fromFile).empty());
        EXPECT_EQ(toPatchFile(fromFile), file);
    }
}

TEST(PatchFile, GoesThroughTheEnginesGuards) {
    Patch patch;
    std::vector<std::uint8_t> file = toPatchFile(patch);
    const std::size_t quality = patchHeaderBytes + chunk::parameterOffset + 4 * p::Quality;
    chunk::writeBigFloat(file.data() + quality, listValue(127));
    chunk::writeBigFloat(file.data() + quality - 4 * (p::Quality - p::EqLow), 2.0f);
    Patch loaded;
    fromPatchFile(file, loaded);
    EXPECT_EQ(loaded.parameters.getParameter(p::Quality), 0.0f);
    EXPECT_EQ(loaded.parameters.getParameter(p::EqLow), 1.0f);
}

TEST(PatchFile, RefusesWhatIsNone) {
    const auto error = [](const std::vector<std::uint8_t>& bytes) -> std::string {
        Patch patch;
        try {
            fromPatchFile(bytes, patch);
        } catch (const PatchError& problem) {
            return problem.what();
        }
        return "no error";
    };
    Patch patch;
    const std::vector<std::uint8_t> file = toPatchFile(patch);
    EXPECT_EQ(error(file), "no error");
    EXPECT_EQ(error({}), "not a patch file of this instrument");
    EXPECT_EQ(error(std::vector<std::uint8_t>(60000, 'C')), "not a patch file of this instrument");
    EXPECT_EQ(error(std::vector<std::uint8_t>(file.begin(), file.end() - 1)),
              "truncated: 55228 bytes, a patch has at least 55229");
    std::vector<std::uint8_t> newer = file;
    newer[patchHeaderBytes] = 8;
    EXPECT_NE(error(newer).find("version number of the file format"), std::string::npos);
    std::vector<std::uint8_t> header = file;
    chunk::writeLong(header.data() + patchHeaderBytes + chunk::sampleHeaderOffset, 0x7fffffff);
    EXPECT_EQ(error(header), "Invalid sample header");
}

// ---- errors ----

void expectStart(const std::string& text, const std::string& start) {
    EXPECT_TRUE(text.starts_with(start)) << text << "\n  should start with\n" << start;
}

TEST(PatchError, NamesTheKeyAndWhatWasExpected) {
    expectStart(layerError(R"("Cutof1": "1 kHz")"),
                "layers[1].Cutof1: no parameter of a layer has this name; did you mean \"Cutoff1\"?");
    EXPECT_EQ(layerError(R"("cutoff1": "1 kHz")"),
              "layers[1].cutoff1: no parameter of a layer has this name; did you mean \"Cutoff1\"?");
    EXPECT_EQ(layerError(R"("Volume": "37%")"), "layers[1].Volume: belongs into \"global\"");
    EXPECT_EQ(layerError(R"("Cutoff1": "loud")"),
              "layers[1].Cutoff1: \"loud\" should be a frequency from \"53 Hz\" to \"20 kHz\", or \"=\" and the stored value "
              "from 0 to 1");
    expectStart(layerError(R"("Cutoff1": "30 kHz")"), "layers[1].Cutoff1: \"30 kHz");
    expectStart(layerError(R"("AttVol": "1 hour")"),
                "layers[1].AttVol: \"1 hour\" should be a time from \"1 ms\" to \"21 sec\", or \"=\" an");
    expectStart(layerError(R"("LfoSpd1": "fast")"),
                "layers[1].LfoSpd1: \"fast\" should be a speed such as \"5 Hz\" or \"1/4 BPM\", or ");
    expectStart(layerError(R"("Vol1": "0.5")"), "layers[1].Vol1: \"0.5\" should be a percentage such as \"37%\", or ");
    expectStart(layerError(R"("Vol1": 120)"), "layers[1].Vol1: \"120\" should be a p");
    expectStart(layerError(R"("FilPan1": "left")"), "layers[1].FilPan1: \"left\" should be a number from -100 to 100");
    expectStart(layerError(R"("On1": "Maybe")"), "layers[1].On1: \"Maybe\" should be \"On\" or \"Off\", or \"=\"");
    expectStart(layerError(R"("LoopMod1": "Twice")"),
                "layers[1].LoopMod1: \"Twice\" should be one of \"Single\", \"Loop\", or \"");
    expectStart(layerError(R"("FilType1": "LP 25dB")"),
                "layers[1].FilType1: \"LP 25dB\" should be one of its labels (the nearest is \"LP 24dB\"), or \"=\"");
    expectStart(layerError(R"("Semi1": "seven")"), "layers[1].Semi1: \"seven\" should be a text such as \"Semi +6\", ");
    expectStart(layerError(R"("Pitch1": "high")"), "layers[1].Pitch1: \"high\" should be \"=\" and the value, as in \"=0.25\"");
    expectStart(layerError(R"("Vol1": "=1.5")"), "layers[1].Vol1: \"=1.5\" s");
    expectStart(layerError(R"("Vol1": [1])"), "layers[1].Vol1: should be a text, and is [1]");
    EXPECT_EQ(layerError(R"("WTWave1": "=0.99")"), "layers[1].WTWave1: \"\"=0.99\"\" lies beyond the end of its list");
}

TEST(PatchSample, IsStruckFromPartials) {
    Patch patch;
    read(R"("SynType1": "Sample", "sample1": {"partials": [[1, 1, 0.5], [4, 0.5, 0.1]], "seconds": 1})", patch);
    const Sample& sample = patch.samples[0];
    ASSERT_EQ(sample.length, 44101);
    EXPECT_EQ(sample.sampleRate, 44100u);
    const auto highest = [&sample](int from, int to) {
        int level = 0;
        for (int i = from; i < to; ++i)
            level = std::max(level, std::abs(static_cast<int>(sample.levels[0][static_cast<std::size_t>(i)])));
        return level;
    };
    EXPECT_EQ(highest(0, 44101), 32767);
    EXPECT_EQ(highest(44100, 44101), 0);
    // 60 dB down after half a second.
    EXPECT_NEAR(20.0 * std::log10(highest(22050, 22500) / static_cast<double>(highest(4410, 4860))), -48.0, 1.5);
}

TEST(PatchError, NamesPlacesInGroups) {
    EXPECT_EQ(layerError(R"("matrix": [{"source": "Velocity", "amount": 3}])"),
              "layers[1].matrix[1]: \"destination\" is missing");
    EXPECT_EQ(layerError(R"("matrix": [{"sauce": "Velocity"}])"),
              "layers[1].matrix[1].sauce: unknown key; did you mean \"source\"?");
    EXPECT_EQ(layerError(R"("matrix": [{"slot": 17}])"),
              "layers[1].matrix[1].slot: should be a whole number from 1 to 16, and is 17");
    EXPECT_EQ(layerError(R"("matrix": 5)"), "layers[1].matrix: should be a list, [...], and is 5");
    EXPECT_EQ(layerError(R"("arp": [{"step": 16}, {"note": "0"}])"), "layers[1].arp[2]: there are only 16 steps");
    EXPECT_EQ(layerError(R"("steps": [0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0])"),
              "layers[1].steps: has 17 entries, at most 16 are possible");
    EXPECT_EQ(layerError(R"("insert1": "Chorus")"), "layers[1].insert1: should be an object, {...}, and is \"Chorus\"");
    EXPECT_EQ(layerError(R"("insert1": {"mix": 101})"),
              "layers[1].insert1.mix: should be a percentage from 0 to 100, and is 101");
    EXPECT_EQ(layerError(R"("customWave1": {})"), "layers[1].customWave1: should have either \"harmonics\" or \"base64\"");
    EXPECT_EQ(layerError(R"("customWave1": {"base64": "AAAA"})"),
              "layers[1].customWave1.base64: holds 1 samples, a custom wave has 2048");
    EXPECT_EQ(layerError(R"("customWave1": {"base64": "!"})"), "layers[1].customWave1.base64: '!' is no digit of base64");
    EXPECT_EQ(layerError(R"("customWave1": {"harmonics": ["a"]})"),
              "layers[1].customWave1.harmonics[1]: should be a number, and is \"a\"");
    EXPECT_EQ(layerError(R"("sample1": {"loop": [0, 1]})"), "layers[1].sample1: \"file\" is missing");
    expectStart(layerError(R"("sample1": {"file": "/no/such.wav"})"), "layers[1].sample1: /no/such.wav: ");
    EXPECT_EQ(layerError(R"("sample1": {"file": "a.wav", "partials": []})"),
              "layers[1].sample1: should have either \"file\" or \"partials\"");
    EXPECT_EQ(layerError(R"("sample1": {"partials": [[1, 1]]})"),
              "layers[1].sample1.partials[1]: should be [ratio, level, seconds]");
    EXPECT_EQ(layerError(R"("sample1": {"partials": [[1, 1, 0]]})"),
              "layers[1].sample1.partials[1]: ratio and seconds should be above 0");
    EXPECT_EQ(layerError(R"("sample1": {"partials": [[1, 1e300, 1]]})"),
              "layers[1].sample1.partials[1]: the level should be from -1 to 1");
    EXPECT_EQ(layerError(R"("sample1": {"partials": [[1, 1, 1]], "seconds": 11})"),
              "layers[1].sample1.seconds: should be above 0, at most 10");
}

TEST(PatchError, NamesPlacesAtTheTop) {
    expectStart(errorOf("{}"), "\"format\": 1 is missing");
    EXPECT_EQ(errorOf(R"({"format": 2})"), "format: should be 1, and is 2");
    EXPECT_EQ(errorOf(R"({"format": 1, "layer": []})"), "layer: unknown key; did you mean \"layers\"?");
    EXPECT_EQ(errorOf(R"({"format": 1, "tags": ["soft", "a, b"]})"), "tags[2]: a tag has letters and no comma");
    EXPECT_EQ(errorOf(R"({"format": 1, "layers": [{}, {}, {}, {}, {}]})"), "layers: has 5 entries, at most 4 are possible");
    EXPECT_EQ(errorOf(R"({"format": 1, "name": "123456789012345678901234567"})"),
              "name: \"123456789012345678901234567\" should have 1 to 26 characters");
    EXPECT_EQ(errorOf(R"({"format": 1, "global": {"Cutoff1": "1 kHz"}})"), "global.Cutoff1: belongs into a layer");
    EXPECT_EQ(errorOf(R"({"format": 1, "global": {"Layer2On": "On"}})"), "global.Layer2On: say \"on\" in the layer instead");
    EXPECT_EQ(errorOf(R"({"format": 1, "global": {"Volum": "3%"}})"),
              "global.Volum: no global parameter has this name; did you mean \"Volume\"?");
    EXPECT_EQ(errorOf("[1]"), "should be an object, {...}, and is [1]");
    expectStart(errorOf("{\"format\": 1,\n \"name\": }"), "line 2, column 10");
    EXPECT_EQ(errorOf(R"({"format": 1, "name": "a", "name": "b"})"), "name: stands twice in the same object");
    EXPECT_EQ(layerError(R"("Vol1": 1, "Vol1": 2)"), "Vol1: stands twice in the same object");
}

// ---- comparing and describing ----

TEST(PatchCompare, ListsWhatDiffersByNameAndLayer) {
    Patch a, b;
    b.parameters.setParameterQuiet(hostIndex(p::Cutoff1, 1), readValue(p::Cutoff1, "900 Hz"));
    b.parameters.setParameterQuiet(p::Volume, 0.37f);
    b.customWaves[5][3] = 1;
    b.name = "Other";
    const std::vector<std::string> expected = {"name: Init | Other", "Volume: 50% | 37%", "layer 2 Cutoff1: 20 kHz | 900 Hz",
                                               "layer 2 oscillator 3 custom wave: 1 of 2048 samples differ"};
    EXPECT_EQ(differences(a, b), expected);
    EXPECT_TRUE(differences(a, a).empty());
}

TEST(PatchCompare, LooksIntoSamples) {
    Patch a, b;
    const std::int16_t one[] = {1, 2, 3}, two[] = {1, 2, 4};
    for (Patch* patch : {&a, &b}) patch->parameters.setParameterQuiet(p::SynType1, listValue(3));
    setSample(a, 0, one, 44100, 0, 2);
    EXPECT_EQ(differences(a, b),
              std::vector<std::string>{"layer 1 oscillator 1 sample: 3 samples at 44100 Hz, loop 0 to 2 | none"});
    setSample(b, 0, two, 44100, 0, 2);
    EXPECT_EQ(differences(a, b),
              std::vector<std::string>{"layer 1 oscillator 1 sample: other recordings, both 3 samples at 44100 Hz, loop 0 to 2"});
    EXPECT_THROW(setSample(a, 0, one, 44100, 0, 4), PatchError);
    EXPECT_THROW(setSample(a, 0, one, 400000, 0, 1), PatchError);
}

TEST(PatchInfo, TellsLayersAndEffects) {
    Patch patch;
    readText(R"({"format": 1, "name": "Pad", "master": {"type": "Reverb Hall"}, "layers": [
        {"SynType1": "Analog", "On2": "On", "WTWave2": "WT Bell", "insert2": {"type": "Chorus"}},
        {"SynType1": "Custom Wave", "ArpType": "Up 2", "PlayMode": "Legato"}]})",
             "", "", patch);
    EXPECT_EQ(describe(patch, 55229),
              "Pad\n  layer 1   Analog Saw + Wavetable WT Bell; Polyphonic 16, Chorus\n"
              "  layer 2   Custom Wave; Legato, arpeggiator Up 2\n  master    Reverb Hall\n  size      55229 bytes\n");
}

// ---- the program ----

class PatchProgram : public ::testing::Test {
protected:
    int run(const std::string& arguments) { return test::runProgram(PATCH_PROGRAM, arguments, folder.path(), output, errors); }
    std::string write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary) << text;
        return folder / name;
    }

    platform::ScratchFolder folder;
    std::string output, errors;
};

TEST_F(PatchProgram, CompilesAndDecompilesAFile) {
    const std::string text = write("a.json", R"({"format": 1, "name": "Init", "layers": [{"Vol1": "30%"}]})");
    EXPECT_EQ(run("compile " + text + " " + (folder / "a.fxp")), 0) << errors;
    EXPECT_EQ(run("decompile " + (folder / "a.fxp")), 0) << errors;
    EXPECT_EQ(output, "{\n  \"format\": 1,\n  \"name\": \"Init\",\n  \"layers\": [\n    {\"Vol1\": \"30%\"}\n  ]\n}\n");
    EXPECT_EQ(run("compare " + text + " " + (folder / "a.fxp")), 0) << output;
    EXPECT_EQ(run("info " + (folder / "a.fxp")), 0);
    EXPECT_NE(output.find("55229 bytes"), std::string::npos) << output;
}

TEST_F(PatchProgram, CompilesAFolderWithItsFolders) {
    write("in/Bass/One.json", R"({"format": 1})");
    write("in/Lead/Two.json",
          R"({"format": 1, "author": "A. Nonym", "tags": ["soft", "late night"], "layers": [{"Vol1": "12%"}]})");
    write("in/Lead/Bad.json", R"({"format": 1, "layers": [{"Vol9": "12%"}]})");
    EXPECT_EQ(run("compile " + (folder / "in") + " " + (folder / "out")), 3);
    EXPECT_TRUE(std::filesystem::exists(folder / "out/Bass/One.fxp"));
    EXPECT_TRUE(std::filesystem::exists(folder / "out/Lead/Two.fxp"));
    EXPECT_FALSE(std::filesystem::exists(folder / "out/Lead/Bad.fxp"));
    EXPECT_NE(errors.find("in/Lead/Bad.json: layers[1].Vol9: no parameter"), std::string::npos) << errors;
    EXPECT_NE(output.find("2 of 3 patches compiled"), std::string::npos) << output;
    // What the browser reads of it; a text without tags leaves no trace.
    EXPECT_EQ(test::contentOf(folder / "out/Lead.tags"), "[Two]\ntags = soft, late night\nauthor = A. Nonym\n");
    EXPECT_FALSE(std::filesystem::exists(folder / "out/Bass.tags"));
    write("out/Lead.tags", "[Mine]\ntags = keep\n");
    EXPECT_EQ(run("compile " + (folder / "in") + " " + (folder / "out")), 3);
    EXPECT_NE(test::contentOf(folder / "out/Lead.tags").find("[Mine]\ntags = keep"), std::string::npos);
}

TEST_F(PatchProgram, TellsDifferentFromBadFromWrongUse) {
    const std::string a = write("a.json", R"({"format": 1, "name": "X"})");
    const std::string b = write("b.json", R"({"format": 1, "name": "X", "global": {"Volume": "37%"}})");
    EXPECT_EQ(run("compare " + a + " " + a), 0);
    EXPECT_EQ(output, "");
    EXPECT_EQ(run("compare " + a + " " + b), 1);
    EXPECT_EQ(output, "Volume: 50% | 37%\n");
    EXPECT_EQ(run("compare " + a), 2);
    EXPECT_EQ(run("transpile " + a), 2);
    EXPECT_EQ(run(""), 2);
    EXPECT_EQ(run("--help"), 0);
    EXPECT_EQ(run("compare " + a + " " + (folder / "none.fxp")), 3);
    EXPECT_NE(errors.find("none.fxp: cannot be read"), std::string::npos) << errors;
    EXPECT_EQ(run("info " + write("bad.fxp", "CcnK")), 3);
    EXPECT_EQ(run("compile " + a + " /proc/no/where.fxp"), 3);
}

TEST_F(PatchProgram, KeepsSamplesBesideTheText) {
    Patch patch;
    std::vector<std::int16_t> frames(1000);
    for (std::size_t i = 0; i < frames.size(); ++i) frames[i] = static_cast<std::int16_t>(i * 31);
    patch.parameters.setParameterQuiet(hostIndex(p::SynType1 + 1, 2), listValue(3));
    setSample(patch, 7, frames, 48000, 100, 900);
    const std::vector<std::uint8_t> file = toPatchFile(patch);
    const std::string path = write("s.fxp", std::string(file.begin(), file.end()));
    EXPECT_EQ(run("decompile " + path + " " + (folder / "s.json")), 0) << errors;
    EXPECT_TRUE(std::filesystem::exists(folder / "s-layer3-osc2.wav"));
    EXPECT_EQ(run("compare " + path + " " + (folder / "s.json")), 0) << output;
    EXPECT_EQ(run("compile " + (folder / "s.json") + " " + (folder / "t.fxp")), 0) << errors;
    EXPECT_EQ(test::contentOf(path), test::contentOf(folder / "t.fxp"));
    EXPECT_EQ(run("decompile --no-samples " + path + " " + (folder / "u.json")), 0);
    EXPECT_EQ(run("compare " + path + " " + (folder / "u.json")), 1);
    EXPECT_EQ(output, "layer 3 oscillator 2 sample: 1000 samples at 48000 Hz, loop 100 to 900 | none\n");
}

TEST_F(PatchProgram, FindsSamplesAndTheirLoopsInAFolderOfTheirOwn) {
    Patch patch;
    patch.parameters.setParameterQuiet(hostIndex(p::SynType1, 0), listValue(3));
    setSample(patch, 0, std::vector<std::int16_t>(1000, 77), 44100, 0, 1000);
    const std::vector<std::uint8_t> file = toPatchFile(patch);
    const std::string source = write("s.fxp", std::string(file.begin(), file.end()));
    EXPECT_EQ(run("decompile " + source + " " + (folder / "made/s.json")), 0) << errors;
    // The "smpl" chunk of a wave file: one loop from frame 200 to 699, which both belong to it.
    std::string wave = test::contentOf(folder / "made/s-layer1-osc1.wav"), marks(68, '\0');
    marks.replace(0, 4, "smpl");
    for (const auto& [at, value] : {std::pair{4, 60}, {36, 1}, {52, 200}, {56, 699}})
        for (int k = 0; k < 4; ++k) marks[static_cast<std::size_t>(at + k)] = static_cast<char>(value >> (8 * k));
    wave += marks;
    for (int k = 0; k < 4; ++k) wave[static_cast<std::size_t>(4 + k)] = static_cast<char>((wave.size() - 8) >> (8 * k));
    write("made/Looped.wav", wave);
    const std::string text =
        write("a.json", R"({"format": 1, "name": "A", "layers": [{"SynType1": "Sample", "sample1": {"file": "Looped.wav"}}]})");
    EXPECT_EQ(run("compile " + text + " " + (folder / "a.fxp")), 3);
    EXPECT_EQ(run("compile " + text + " " + (folder / "a.fxp") + " --samples " + (folder / "made")), 0) << errors;
    EXPECT_EQ(run("decompile --no-samples " + (folder / "a.fxp") + " " + (folder / "b.json")), 0);
    EXPECT_EQ(run("compare " + (folder / "a.fxp") + " " + (folder / "b.json")), 1);
    EXPECT_EQ(output, "layer 1 oscillator 1 sample: 1000 samples at 44100 Hz, loop 200 to 700 | none\n");
}

}  // namespace
}  // namespace vantoric::patch
