#include "parameters/parameter_text.h"

#include <gtest/gtest.h>

#include "base/numbers.h"
#include "parameters/parameter_table.h"

namespace vantoric {
namespace {

namespace p = parameter;

TEST(ParameterIndex, FindsNamesInEveryLayer) {
    EXPECT_EQ(parameterIndex("Cutoff2", 2), 698);
    EXPECT_EQ(parameterIndex("Volume", 3), 0);
    EXPECT_EQ(parameterIndex("FilSerial", 0), 117);
    EXPECT_EQ(parameterIndex("#90", 1), 390);
    EXPECT_EQ(parameterIndex("-", 0), -1);
    EXPECT_EQ(parameterIndex("cutoff1", 0), -1);
    EXPECT_EQ(parameterIndex("Cutoff1", 4), -1);
    EXPECT_EQ(parameterIndex("#324", 0), -1);
    EXPECT_EQ(parameterIndex("", 0), -1);
}

TEST(ParameterIndex, ReadsALayerInFrontOfAName) {
    EXPECT_EQ(parameterIndex("Cutoff2"), 98);
    EXPECT_EQ(parameterIndex("3:Cutoff2"), 698);
    EXPECT_EQ(parameterIndex("4:Volume"), 0);
    EXPECT_EQ(parameterIndex("#1223"), 1223);
    EXPECT_EQ(parameterIndex("#1224"), -1);
    EXPECT_EQ(parameterIndex("#-1"), -1);
    EXPECT_EQ(parameterIndex("5:Cutoff2"), -1);
    EXPECT_EQ(parameterIndex("1:"), -1);
    EXPECT_EQ(parameterIndex(""), -1);
}

TEST(ParseValue, ReadsLabelsAndIndicesOfLists) {
    EXPECT_EQ(parseParameterValue(p::FilType1, "LP 24dB"), listValue(4));
    EXPECT_EQ(parseParameterValue(p::FilType1, "lp 24db"), listValue(4));
    EXPECT_EQ(parseParameterValue(p::FilType1, "30"), listValue(30));
    EXPECT_EQ(parseParameterValue(p::FilType1, "#127"), listValue(127));
    EXPECT_EQ(parseParameterValue(p::FilType1, "128"), std::nullopt);
    EXPECT_EQ(parseParameterValue(p::FilType1, "-"), std::nullopt);
    EXPECT_EQ(parseParameterValue(p::FilType1, "LP 48dB"), std::nullopt);
    EXPECT_EQ(parseParameterValue(p::KeyEnd1, "C4"), listValue(60));
    EXPECT_EQ(parseParameterValue(p::FxInType, "Phaser Stereo"), listValue(34));
    EXPECT_EQ(parseParameterValue(p::FxMaType, "off"), 0.0f);
}

TEST(ParseValue, ALabelWinsOverAnIndex) {
    EXPECT_EQ(parseParameterValue(p::ArpStp1, "16"), listValue(13));
    EXPECT_EQ(parseParameterValue(p::ArpStp1, "-12"), listValue(21));
    EXPECT_EQ(parseParameterValue(p::ArpStp1, "#16"), listValue(16));
    EXPECT_EQ(parseParameterValue(p::ArpVol1, "8"), listValue(9));
    EXPECT_EQ(parseParameterValue(p::ArpVol1, "Loop"), listValue(13));
    EXPECT_EQ(parseParameterValue(p::ArpVol1, "L"), listValue(13));
}

TEST(ParseValue, ReadsSwitches) {
    EXPECT_EQ(parseParameterValue(p::Layer1On, "On"), 1.0f);
    EXPECT_EQ(parseParameterValue(p::Layer1On, "off"), 0.0f);
    EXPECT_EQ(parseParameterValue(p::Layer1On, "1"), 1.0f);
    EXPECT_EQ(parseParameterValue(p::Layer1On, "maybe"), std::nullopt);
}

TEST(ParseValue, ReadsNumbersInTheUnitOfTheDisplay) {
    EXPECT_EQ(parseParameterValue(p::FilPan1, "+50"), 0.75f);
    EXPECT_EQ(parseParameterValue(p::FilPan1, "-100"), 0.0f);
    EXPECT_EQ(parseParameterValue(p::Detune1, "+10 cent"), 0.55f);
    EXPECT_EQ(parseParameterValue(p::MatVal1, "-50"), 0.25f);
    EXPECT_EQ(parseParameterValue(p::Vol1, "37%"), 0.37f);
    EXPECT_EQ(parseParameterValue(p::FilPan1, "0%"), 0.5f);
    EXPECT_EQ(parseParameterValue(p::FilPan1, "+101"), std::nullopt);
    EXPECT_EQ(parseParameterValue(p::Vol1, "+5"), std::nullopt);
}

TEST(ParseValue, ReadsBareNumbersAsTheValueItself) {
    EXPECT_EQ(parseParameterValue(p::Cutoff1, "0.25"), 0.25f);
    EXPECT_EQ(parseParameterValue(p::Cutoff1, " 1 "), 1.0f);
    EXPECT_EQ(parseParameterValue(90, "0.5"), 0.5f);
    for (const char* text : {"1.01", "-0.1", "nan", "inf", "0.5x", "", " ", "0,5"})
        EXPECT_EQ(parseParameterValue(p::Cutoff1, text), std::nullopt) << text;
    EXPECT_EQ(parseParameterValue(-1, "0.5"), std::nullopt);
    EXPECT_EQ(parseParameterValue(324, "0.5"), std::nullopt);
}

TEST(ParseValue, ReadsOctavesAndIntervals) {
    EXPECT_EQ(parseParameterValue(p::Oct1, "0"), 0.5f);
    EXPECT_EQ(parseParameterValue(p::Oct1, "-4"), 0.0f);
    EXPECT_EQ(parseParameterValue(p::Oct1, "0.25"), 0.25f);
    EXPECT_EQ(parseParameterValue(p::Interv1, "3/2"), 4.0f / 6.0f);
    for (std::size_t k = 0; k < octaveLabels.size(); ++k)
        EXPECT_EQ(parameterText(p::Oct1, parseParameterValue(p::Oct1, octaveLabels[k]).value_or(-1.0f), 0), octaveLabels[k]);
    for (std::size_t k = 0; k < intervalLabels.size(); ++k)
        EXPECT_EQ(parameterText(p::Interv1, parseParameterValue(p::Interv1, intervalLabels[k]).value_or(-1.0f), 0),
                  intervalLabels[k]);
}

TEST(ParseValue, ReadsTempos) {
    for (std::size_t k = 0; k < tempoLabels.size(); ++k) {
        const std::optional<float> value = parseParameterValue(p::LfoSpd1, std::string(tempoLabels[k]) + " BPM");
        EXPECT_EQ(parameterText(p::LfoSpd1, value.value_or(-1.0f), 1), tempoLabels[k]);
    }
    EXPECT_EQ(parameterText(p::StepSped, parseParameterValue(p::StepSped, "3/4").value_or(-1.0f), 0), "3/4");
    EXPECT_EQ(parseParameterValue(p::LfoSpd1, "1"), 1.0f);
}

TEST(ParseValue, ReadsWhatAValueFieldShows) {
    for (int n = 0; n < layerParameterEnd; ++n) {
        const ParameterInfo& info = parameterInfo(n);
        if (info.kind != ControlKind::Number || info.formatter == formatBipolar) continue;
        for (const float value : {0.0f, 0.1f, 0.3f, 0.5f, 0.77f, 1.0f}) {
            const std::string text = parameterText(n, value, 0);
            EXPECT_EQ(parameterText(n, parseParameterValue(n, text).value_or(-1.0f), 0), text) << n;
        }
    }
    EXPECT_EQ(parseParameterValue(p::KeyFol1, "Keyfol."), 1.0f);
    EXPECT_EQ(parseParameterValue(p::KeyFol1, "Fixed"), 0.5f);
    EXPECT_EQ(parseParameterValue(p::Semi1, "Semi 0"), 0.0f);
    EXPECT_EQ(parseParameterValue(p::Semi1, "Semi +13"), std::nullopt);
}

TEST(ValueText, ReadsBackToExactlyTheSameFloat) {
    for (int n = 0; n < layerParameterEnd; ++n) {
        for (int k = 0; k <= 128; ++k) {
            const float value = static_cast<float>(k) / 128.0f;
            EXPECT_EQ(parseParameterValue(n, parameterValueText(n, value)), value) << n << " " << parameterValueText(n, value);
        }
        for (const float value : {0.1f, 0.3333333f, 1e-7f, 1e-40f, 0.695f, 0.99999994f})
            EXPECT_EQ(parseParameterValue(n, parameterValueText(n, value)), value) << n << " " << parameterValueText(n, value);
    }
}

TEST(ValueText, IsReadable) {
    EXPECT_EQ(parameterValueText(p::FilType1, listValue(4)), "LP 24dB");
    EXPECT_EQ(parameterValueText(p::FilType1, listValue(1)), "#1") << "a separator has no name of its own";
    EXPECT_EQ(parameterValueText(p::FxMaType, listValue(17)), "#17") << "its label stands for row 0";
    EXPECT_EQ(parameterValueText(p::On1, 1.0f), "On");
    EXPECT_EQ(parameterValueText(p::Cutoff1, 0.25f), "0.25");
    EXPECT_EQ(parameterValueText(p::Cutoff1, 1.0f), "1.0");
}

}  // namespace
}  // namespace vantoric
