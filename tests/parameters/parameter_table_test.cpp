#include "parameters/parameter_table.h"

#include <gtest/gtest.h>

#include <clocale>
#include <locale>
#include <map>
#include <set>
#include <string>

#include "base/fixed_text.h"
#include "base/numbers.h"

namespace vantoric {
namespace {

namespace p = parameter;

TEST(ParameterTable, HasTheControlsThatTheWindowHas) {
    std::map<ControlKind, int> counts;
    for (int n = 0; n < layerParameterEnd; ++n) ++counts[parameterInfo(n).kind];
    EXPECT_EQ(counts[ControlKind::Knob], 68);
    EXPECT_EQ(counts[ControlKind::Switch], 10);
    EXPECT_EQ(counts[ControlKind::List], 113);
    EXPECT_EQ(counts[ControlKind::Number], 41);
    EXPECT_EQ(counts[ControlKind::Step], 16);
    EXPECT_EQ(counts[ControlKind::EffectParameter], 12);
}

TEST(ParameterTable, EveryKindHasWhatItNeeds) {
    for (int n = 0; n < layerParameterEnd; ++n) {
        const ParameterInfo& info = parameterInfo(n);
        EXPECT_EQ(info.kind == ControlKind::List, !info.labels.empty()) << n;
        EXPECT_EQ(info.kind == ControlKind::Number || info.kind == ControlKind::EffectParameter, info.formatter != nullptr) << n;
        EXPECT_LE(info.labels.size(), 128u) << n;
        EXPECT_TRUE(info.kind == ControlKind::None || info.name != std::string("-")) << n;
    }
}

TEST(ParameterTable, NamesAreUnique) {
    std::set<std::string> names;
    for (int n = 0; n < layerParameterEnd; ++n)
        EXPECT_TRUE(names.insert(parameterInfo(n).name).second || parameterInfo(n).name == std::string("-")) << n;
    EXPECT_EQ(names.size(), 324u - 10u + 1u) << "15 to 18, 23, 90 to 92, 156 and 323 are all \"-\"";
}

TEST(ParameterTable, NumbersOutsideHaveNoFunction) {
    EXPECT_STREQ(parameterInfo(-1).name, "-");
    EXPECT_STREQ(parameterInfo(324).name, "-");
    EXPECT_EQ(parameterText(324, 0.5f, 0), "");
}

TEST(LabelLists, HaveTheirLengths) {
    EXPECT_EQ(keyNameLabels.size(), 128u);
    EXPECT_EQ(filterTypeLabels.size(), 64u);
    EXPECT_EQ(distortionTypeLabels.size(), 22u);
    EXPECT_EQ(arpStepNoteLabels.size(), 96u);
    EXPECT_EQ(matrixSourceLabels.size(), 71u);
    EXPECT_EQ(matrixDestinationLabels.size(), 97u);
    EXPECT_EQ(insertTypeMenuLabels.size(), 77u);
    EXPECT_EQ(masterTypeMenuLabels.size(), 77u);
}

TEST(LabelLists, KeysRunFromCMinusOneToG9) {
    EXPECT_STREQ(keyNameLabels[0], "C-1");
    EXPECT_STREQ(keyNameLabels[11], "B-1");
    EXPECT_STREQ(keyNameLabels[12], "C0");
    EXPECT_STREQ(keyNameLabels[61], "C#4");
    EXPECT_STREQ(keyNameLabels[127], "G9");
}

TEST(LabelLists, KeepTheirPlaces) {
    EXPECT_STREQ(arpStepNoteLabels[13], "16");
    EXPECT_STREQ(arpStepNoteLabels[34], "\\24");
    EXPECT_STREQ(arpStepNoteLabels[51], "/24");
    EXPECT_STREQ(arpStepNoteLabels[53], "13");
    EXPECT_STREQ(arpStepNoteLabels[95], "15/16");
    EXPECT_STREQ(matrixSourceLabels[70], "Sine 64Hz");
    EXPECT_STREQ(matrixDestinationLabels[96], "PitchOct3");
    EXPECT_STREQ(matrixDestinationLabels[58], "Matrix10");
    EXPECT_STREQ(filterTypeLabels[63], "Formant 4x");
    EXPECT_STREQ(insertTypeMenuLabels[34], "Phaser Stereo ");
    EXPECT_STREQ(insertTypeMenuLabels[76], "Haas Effect");
    EXPECT_STREQ(midiChannelLabels[16], "Midi chn 16");
}

TEST(ParameterTable, EnvelopeTimesLoseDecimalsAsTheyGrow) {
    EXPECT_EQ(parameterText(p::AttVol, 0.0f, 0), "0");
    EXPECT_EQ(parameterText(p::AttVol, 0.05f, 0), "0.002");
    EXPECT_EQ(parameterText(p::AttVol, 0.4f, 0), "0.05");
    EXPECT_EQ(parameterText(p::AttVol, 0.7333f, 0), "1.5");
    EXPECT_EQ(parameterText(p::AttVol, 1.0f, 0), "21");
}

// A numeric punctuation with a decimal comma and grouped digits.
struct CommaPunctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(ParameterTable, TextsDoNotDependOnTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
    const std::string beforeC = std::setlocale(LC_ALL, nullptr);
    // Where the machine has a language with a decimal comma, the C library is set to it as well.
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"})
        if (std::setlocale(LC_ALL, name) != nullptr) break;
    EXPECT_EQ(formatHold(0.6f), "Hold 0.39s");
    EXPECT_EQ(formatFade(0.5f), "Fade 0.1s");
    EXPECT_EQ(parameterText(p::LfoSpd1, 0.5f, 0), "5.29");
    EXPECT_EQ(parameterText(p::Cutoff1, 0.9f, 0), "11062");
    EXPECT_EQ(fixedText(1234567.25, 1), "1234567.2");
    std::setlocale(LC_ALL, beforeC.c_str());
    std::locale::global(before);
}

TEST(FixedText, RoundsAsTheTypeHoldsTheNumber) {
    EXPECT_EQ(fixedText(0.5, 0), "0");
    EXPECT_EQ(fixedText(1.5, 0), "2");
    EXPECT_EQ(fixedText(0.125, 2), "0.12");
    EXPECT_EQ(fixedText(-0.2, 0), "-0");
    EXPECT_EQ(fixedText(1e300, 0).size(), 301u);
}

TEST(ValueFormatters, TheirBordersFallAsStated) {
    EXPECT_EQ(formatStart(0.99f), "Start 99");
    EXPECT_EQ(formatStart(0.9901f), "Free");
    EXPECT_EQ(formatKey(0.98f), "Key 12");
    EXPECT_EQ(formatKey(0.4583f), "Key -1");
    EXPECT_EQ(formatKey(0.4584f), "Fixed");
    EXPECT_EQ(formatKey(0.546f), "Key 1");
    EXPECT_EQ(formatSteps(0.0f), "Steps 2");
    EXPECT_EQ(formatSteps(1.0f), "Steps 16");
    EXPECT_EQ(formatGlide(1.0f), "Glide 99");
    EXPECT_EQ(formatSwing(1.0f), "Swing 99");
    EXPECT_EQ(formatSemi(0.07f), "Semi 0");
    EXPECT_EQ(formatSemi(1.0f), "Semi +12");
    EXPECT_EQ(formatFade(0.0099f), "Fade off");
    EXPECT_EQ(formatEmpty(0.5f), "");
}

}  // namespace
}  // namespace vantoric
