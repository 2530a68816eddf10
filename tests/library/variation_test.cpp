#include "library/variation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>

#include "patch/patch_reset.h"
#include "tests/engine/engine_rig.h"

namespace vantoric::test {
namespace {

constexpr VariedSection sections[] = {VariedSection::oscillators, VariedSection::filters,     VariedSection::envelopes,
                                      VariedSection::lfos,        VariedSection::arpeggiator, VariedSection::all};

// A data folder with a plain wave for every bank.
class Banks {
public:
    Banks() {
        sharedDataFolder();  // what tests after this one go back to
        std::filesystem::create_directories(folder_ / "Vantoric_data");
        const auto samples = plainWave(2);
        for (const WaveFile& file : wtWaveFiles) write(std::string(file.stem), samples);
        for (const WaveFile& file : ssWaveFiles) write(std::string(file.stem), samples);
        platform::setDataFolder(folder_.path());
    }
    ~Banks() { sharedDataFolder(); }

private:
    void write(const std::string& stem, const std::vector<std::int16_t>& samples) const {
        std::string header(bankHeaderBytes, '\0');
        const auto put = [&](std::size_t at, std::size_t value) {
            for (int k = 0; k < 4; ++k) header[at + static_cast<std::size_t>(k)] = static_cast<char>(value >> (8 * k));
        };
        put(16, 16);
        header[20] = header[22] = 1;
        header[34] = 16;
        put(40, samples.size() * 2);
        std::ofstream file(folder_ / ("Vantoric_data/" + stem + ".va"), std::ios::binary);
        file << header;
        file.write(reinterpret_cast<const char*>(samples.data()), static_cast<std::streamsize>(samples.size() * 2));
    }
    platform::ScratchFolder folder_;
};

struct Chances : ::testing::Test {
    Chances() {
        audio.setSampleRate(44100.0f);
        for (int i = 0; i < 5000 && audio.flags().audioMuted.isSet(); ++i) platform::sleepMilliseconds(1);
        resetAllParameters(audio.parameters());
    }

    ParameterModel& parameters() { return audio.parameters(); }
    void set(int number, float value) { parameters().writeRaw(hostIndex(number, 0), value); }
    std::vector<float> values() {
        std::vector<float> all;
        for (int i = 0; i < parameterCount; ++i) all.push_back(parameters().getParameter(i));
        return all;
    }
    void restore(const std::vector<float>& all) {
        for (int i = 0; i < parameterCount; ++i) parameters().writeRaw(i, all[static_cast<std::size_t>(i)]);
    }
    void apply(const std::vector<VariedParameter>& varied) {
        for (const VariedParameter& parameter : varied) parameters().writeRaw(parameter.index, parameter.value);
    }
    // All that a section can change does something.
    void busyPatch() {
        for (int o = 0; o < 3; ++o) set(par::On1 + o, 1.0f);
        set(par::SynType1 + 1, listValue(1));
        set(par::SynType1 + 2, listValue(5));
        set(par::Vol1 + 1, 0.5f);
        set(par::Vol1 + 2, 0.5f);
        set(par::ArpType, listValue(2));
        set(par::ArpSpeed, listValue(9));
        for (int i = 0; i < 3; ++i) set(par::LfoWave1 + i, listValue(2));
        set(par::MatSrc1, listValue(2));
        set(par::MatDst1, listValue(32));  // LFO 1 on the cutoff
        set(par::MatVal1, 0.6f);
    }
    // Root mean square of a note's first third of a second.
    double level() {
        audio.stop();
        audio.start();
        audio.receive({0, 0x90, 60, 100});
        double sum = 0.0;
        constexpr int frames = 512, blocks = 28;
        std::vector<float> left(frames), right(frames);
        for (int b = 0; b < blocks; ++b) {
            audio.render(left.data(), right.data(), frames, transport);
            for (int i = 0; i < frames; ++i) {
                EXPECT_TRUE(std::isfinite(left[static_cast<std::size_t>(i)]));
                sum += left[static_cast<std::size_t>(i)] * left[static_cast<std::size_t>(i)];
                sum += right[static_cast<std::size_t>(i)] * right[static_cast<std::size_t>(i)];
            }
        }
        return std::sqrt(sum / (2.0 * frames * blocks));
    }

    Banks banks;
    Instrument audio;
    Transport transport{true, 120.0, 0.0, true};
};

TEST_F(Chances, ASeedGivesTheSameSoundAgain) {
    busyPatch();
    for (const VariedSection section : sections) {
        const auto once = randomised(parameters(), 0, section, 7), again = randomised(parameters(), 0, section, 7);
        ASSERT_EQ(once.size(), again.size());
        for (std::size_t i = 0; i < once.size(); ++i) EXPECT_EQ(once[i].value, again[i].value);
        const auto other = randomised(parameters(), 0, section, 8);
        EXPECT_TRUE(once.size() != other.size() || once[0].value != other[0].value || once.back().value != other.back().value);
    }
}

TEST_F(Chances, SwitchesVolumesRoutingAndOtherLayersStay) {
    busyPatch();
    const auto before = values();
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        for (const VariedParameter& varied : randomised(parameters(), 1, VariedSection::all, seed)) {
            EXPECT_EQ(ParameterModel::parameterLayer(varied.index), 2);
            const int n = numberOfParameter(varied.index);
            EXPECT_NE(parameterInfo(n).kind, ControlKind::Switch);
            for (const int first : {par::Vol1, par::FiltMix1, par::KeyStar1, par::KeyEnd1})
                EXPECT_FALSE(n >= first && n < first + 3);
            EXPECT_FALSE(n >= par::FilVol1 && n < par::FilVol1 + 2);
            EXPECT_FALSE(n >= par::LayerVol && n <= par::FxInPar1 + 3);
            EXPECT_FALSE(n >= par::MatSrc1);
            EXPECT_FALSE(n >= par::FxIn2Type && n <= par::FxIn2Par1 + 3);
            EXPECT_GE(varied.value, 0.0f);
            EXPECT_LE(varied.value, ParameterModel::parameterLimit(varied.index));
        }
    }
    EXPECT_EQ(values(), before) << "nothing is set yet";
}

TEST_F(Chances, ListsOnlyGoToRowsWithNames) {
    busyPatch();
    for (std::uint32_t seed = 0; seed < 300; ++seed)
        for (const VariedParameter& varied : randomised(parameters(), 0, VariedSection::all, seed)) {
            const ParameterInfo& info = parameterInfo(numberOfParameter(varied.index));
            if (info.kind != ControlKind::List) continue;
            const auto row = static_cast<std::size_t>(listIndex(varied.value));
            ASSERT_LT(row, info.labels.size()) << info.name;
            EXPECT_STRNE(info.labels[row], "-") << info.name << " row " << row;
        }
}

TEST_F(Chances, WhatIsOffOrOfAKindOfItsOwnStays) {
    set(par::SynType1, listValue(3));  // a sample
    set(par::FilType1, listValue(7));  // a high-pass
    set(par::Cutoff1, 0.3f);
    set(par::ArpType, 0.0f);
    set(par::LfoWave1, 0.0f);
    set(par::ArpVol1 + 3, listValue(13));  // back to the first step
    for (std::uint32_t seed = 0; seed < 200; ++seed)
        for (const VariedParameter& varied : randomised(parameters(), 0, VariedSection::all, seed)) {
            for (const int n : {par::SynType1, par::FilType1, par::ArpType, par::LfoWave1}) EXPECT_NE(varied.index, int{n});
            EXPECT_NE(varied.index, par::ArpVol1 + 3);
            if (varied.index == par::Cutoff1) {
                EXPECT_NEAR(varied.value, 0.3f, 0.11f);
            }
        }
}

TEST_F(Chances, PitchStaysWithinAnOctave) {
    std::map<std::string, int> octaves;
    for (std::uint32_t seed = 0; seed < 500; ++seed)
        for (const VariedParameter& varied : randomised(parameters(), 0, VariedSection::oscillators, seed))
            if (varied.index == par::Oct1) ++octaves[parameterText(par::Oct1, varied.value, 0)];
    EXPECT_EQ(octaves.size(), 2u);
    EXPECT_GT(octaves["-1"], 40);
    EXPECT_GT(octaves["1"], 40);
}

TEST_F(Chances, AMutationIsGentle) {
    busyPatch();
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        const auto varied = mutated(parameters(), 0, VariedSection::all, seed);
        EXPECT_GT(varied.size(), 10u);
        for (const VariedParameter& parameter : varied) {
            EXPECT_LE(std::fabs(parameter.value - parameters().getParameter(parameter.index)), 0.1251f);
            const ControlKind kind = parameterInfo(numberOfParameter(parameter.index)).kind;
            EXPECT_TRUE(kind != ControlKind::List && kind != ControlKind::Switch);
        }
    }
}

TEST_F(Chances, ItIsOneStepOfTheHistory) {
    OnShow onShow;
    onShow.layer = 2;
    ParameterEdits edits(audio);
    History history(audio, edits, nullptr);
    VariationCommands commands(audio, edits, history, onShow);
    const auto before = values();
    commands.randomise(VariedSection::filters, 5);
    EXPECT_NE(values(), before);
    EXPECT_EQ(history.undoName(), "Randomise filters");
    const auto randomised = values();
    commands.mutate(VariedSection::all, 6);
    EXPECT_EQ(history.undoName(), "Mutate layer");
    EXPECT_EQ(history.undoCount(), 2u);
    history.undo();
    EXPECT_EQ(values(), randomised);
    history.undo();
    EXPECT_EQ(values(), before);
}

// 20 dB either way.
TEST_F(Chances, WhateverComesSounds) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr std::uint32_t seeds = 20;
#else
    constexpr std::uint32_t seeds = 500;
#endif
    for (const bool isBusy : {false, true}) {
        if (isBusy) busyPatch();
        const auto before = values();
        const double loudness = level();
        ASSERT_GT(loudness, 0.001);
        for (const VariedSection section : sections) {
            for (std::uint32_t seed = isBusy ? 1 : 0; seed < seeds; seed += 2) {
                restore(before);
                apply(randomised(parameters(), 0, section, seed));
                const double ratio = level() / loudness;
                EXPECT_GT(ratio, 0.1) << "section " << static_cast<int>(section) << " seed " << seed;
                EXPECT_LT(ratio, 10.0) << "section " << static_cast<int>(section) << " seed " << seed;
            }
        }
        restore(before);
    }
}

}  // namespace
}  // namespace vantoric::test
