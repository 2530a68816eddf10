// Values as a player types them.
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "base/number_text.h"
#include "base/parameters.h"
#include "editor/model/spoken_values.h"
#include "editor/model/typed_values.h"
#include "effects/effect_row.h"
#include "parameters/parameter_table.h"
#include "tests/editor/editor_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;

std::string shownAs(int number, const std::string& typed) {
    const auto value = typedValue(number, typed, 0);
    return value ? parameterText(number, *value, 0) : "not understood";
}

TEST(TypedValues, HertzAreTakenWithAndWithoutTheirUnit) {
    const float plain = typedValue(par::Cutoff1, "1200", 0).value();
    EXPECT_FLOAT_EQ(typedValue(par::Cutoff1, "1.2 kHz", 0).value(), plain);
    EXPECT_FLOAT_EQ(typedValue(par::Cutoff1, "1,2kHz", 0).value(), plain);
    EXPECT_FLOAT_EQ(typedValue(par::Cutoff1, " 1200 Hz ", 0).value(), plain);
    EXPECT_NEAR(std::stod(parameterText(par::Cutoff1, plain, 0)), 1200, 12);
}

TEST(TypedValues, TimesAreTakenInMillisecondsAndSeconds) {
    const float typed = typedValue(par::DecVol, "440ms", 0).value();
    EXPECT_FLOAT_EQ(typed, typedValue(par::DecVol, "0.44 s", 0).value());
    EXPECT_GT(typed, typedValue(par::DecVol, "100ms", 0).value());
    EXPECT_LT(typed, typedValue(par::DecVol, "2s", 0).value());
}

TEST(TypedValues, SemitonesAndPercentagesKeepTheirSign) {
    EXPECT_EQ(shownAs(par::Semi1, "7"), "Semi +7");
    EXPECT_EQ(shownAs(par::MatVal1, "-50"), "-50");
    EXPECT_EQ(shownAs(par::MatVal1, "+25"), "25");
    EXPECT_EQ(shownAs(par::Reso1, "62 %"), parameterText(par::Reso1, 0.62f, 0));
}

TEST(TypedValues, WordsOfTheDisplayAreTakenAsTheyStand) {
    EXPECT_EQ(shownAs(par::Start1, "Free"), "Free");
    EXPECT_EQ(shownAs(par::KeyFol1, "Keyfol."), "Keyfol.");
    EXPECT_EQ(shownAs(par::FilType1, "LP 24dB"), "LP 24dB");
}

TEST(TypedValues, AmountsBeyondTheRangeTakeItsEnd) {
    EXPECT_FLOAT_EQ(typedValue(par::Cutoff1, "999999", 0).value(), 1.0f);
    EXPECT_FLOAT_EQ(typedValue(par::MatVal1, "-999", 0).value(), 0.0f);
}

// So far that no display comes nearer to one than to the other.
TEST(TypedValues, AmountsBeyondAllMeasureTakeTheRangesEndToo) {
    for (const char* far : {"99999999999999999999", "99999999999999999999 Hz", "1e30"}) {
        EXPECT_FLOAT_EQ(typedValue(par::Cutoff1, far, 0).value(), 1.0f) << far;
        EXPECT_FLOAT_EQ(typedValue(par::Cutoff1, std::string("-") + far, 0).value(), 0.0f) << far;
    }
    EXPECT_FLOAT_EQ(typedValue(par::MatVal1, "99999999999999999999", 0).value(), 1.0f);
    test::EditorRig rig;
    rig.rig.set(hostIndexOfTag(par::FxInType, 0), 1.0f / 128);
    const ControlEntry& field = controlEntry(controlIndexForTag(par::FxInPar1));
    EXPECT_EQ(typedValue(rig.editor, field, "99999999999999999999"), typedValue(rig.editor, field, "99999"));
}

TEST(TypedValues, ANumberAmongOtherThingsIsNoValue) {
    for (const char* text : {"0x10", "12abc", "5 5", "loud 5", "5 loud", "1200 Hz or so", "1-2", "5 k Hz", "<1200>"})
        EXPECT_FALSE(typedValue(par::Cutoff1, text, 0)) << text;
    for (const char* text : {"0x10", "12abc", "5 5", "Semi 5 of", "Fine 5"})
        EXPECT_FALSE(typedValue(par::Semi1, text, 0)) << text;
    EXPECT_FALSE(typedValue(par::DecVol, "5k", 0)) << "thousands of hertz";
    EXPECT_TRUE(typedValue(par::Cutoff1, "5k", 0));
    test::EditorRig rig;
    for (int type = 1; type < effectTypeCount; ++type) {
        rig.rig.set(hostIndexOfTag(par::FxInType, 0), static_cast<float>(type) / 128);
        for (const int number : {int{par::FxInPar1}, par::FxInPar1 + 1}) {
            const ControlEntry& field = controlEntry(controlIndexForTag(number));
            for (const char* text : {"0x10", "12abc", "5 5", "loud 5"})
                EXPECT_FALSE(typedValue(rig.editor, field, text)) << "type " << type << ": " << text;
        }
    }
}

TEST(TypedValues, WhatIsNoValueIsNotTaken) {
    for (const char* text : {"", "   ", "loud", "\xff\xfe", "--"}) EXPECT_FALSE(typedValue(par::Cutoff1, text, 0)) << text;
}

TEST(TypedValues, AUnitOfAnotherKindIsNoValue) {
    EXPECT_FALSE(typedValue(par::Volume, "-6 dB", 0)) << "a percentage";
    EXPECT_FALSE(typedValue(par::Cutoff1, "440ms", 0));
    EXPECT_FALSE(typedValue(par::DecVol, "2 kHz", 0));
    EXPECT_FALSE(typedValue(par::LfoSpd1, "120 BPM", 0)) << "runs in hertz in this mode";
    EXPECT_TRUE(typedValue(par::Volume, "60 %", 0));
    EXPECT_TRUE(typedValue(par::HoldVol, "2s", 0)) << "the display names the unit itself";
    EXPECT_TRUE(typedValue(par::LfoFade1, "30ms", 0));
}

TEST(TypedValues, EveryParameterTakesBackWhatItShows) {
    for (int number = 0; number < layerParameterEnd; ++number) {
        if (parameterInfo(number).kind == ControlKind::None || parameterInfo(number).kind == ControlKind::EffectParameter)
            continue;
        for (const float value : {0.0f, 0.25f, 0.5f, 1.0f}) {
            const std::string shown = parameterText(number, value, 0);
            if (shown.empty() || shown == "empty" || shown == "-") continue;  // beyond the list
            EXPECT_EQ(shownAs(number, shown), shown) << number << " at " << value;
        }
    }
}

// What a control shows is typed back while it shows something else.
std::string typedBack(test::EditorRig& rig, const ControlEntry& entry, float value, float meanwhile) {
    const int index = hostIndexOfTag(entry.tag, 0);
    rig.rig.set(index, value);
    const std::string shown = spokenValue(rig.editor, entry);
    rig.rig.set(index, meanwhile);
    const auto typed = typedValue(rig.editor, entry, shown);
    if (!typed) return "'" + shown + "' is not understood";
    rig.rig.set(index, *typed);
    const std::string back = spokenValue(rig.editor, entry);
    return back == shown ? "" : "'" + shown + "' gave '" + back + "'";
}

TEST(TypedValues, EveryControlTakesBackWhatItShows) {
    test::EditorRig rig;
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        if (parameterOfTag(entry.tag) < 0 || entry.kind == WidgetKind::EffectValue) continue;
        const float step = entry.labels.empty() ? 0.0f : 1.0f / 128;
        for (const float value : step > 0 ? std::vector{0.0f, step, 2 * step} : std::vector{0.0f, 0.21f, 0.5f, 0.83f, 1.0f}) {
            if (step > 0 &&
                std::string(entry.labels[static_cast<std::size_t>(std::lround(value / step)) % entry.labels.size()]) == "-")
                continue;
            EXPECT_EQ(typedBack(rig, entry, value, 0.37f), "") << entry.name << " at " << value;
        }
    }
}

TEST(TypedValues, EveryModeOfAnLfoTakesBackItsSpeed) {
    test::EditorRig rig;
    const ControlEntry& speed = controlEntry(controlIndexForName("LFO1 SPEED"));
    for (int mode = 0; mode < 12; ++mode) {
        rig.rig.set(par::LfoMode1, static_cast<float>(mode) / 128);
        for (const float value : {0.0f, 0.21f, 0.5f, 0.83f, 1.0f})
            EXPECT_EQ(typedBack(rig, speed, value, 0.37f), "") << "mode " << mode << " at " << value;
    }
}

TEST(TypedValues, TheFieldsOfEveryEffectTakeBackWhatTheyShow) {
    test::EditorRig rig;
    for (int type = 1; type < effectTypeCount; ++type) {
        for (const int number : {int{par::FxMaType}, int{par::FxInType}, int{par::FxIn2Type}})
            rig.rig.set(hostIndexOfTag(number, 0), static_cast<float>(type) / 128);
        for (int i = 0; i < controlCount(); ++i) {
            const ControlEntry& entry = controlEntry(i);
            if (entry.kind != WidgetKind::EffectValue || spokenValue(rig.editor, entry).empty()) continue;
            for (const float value : {0.0f, 0.21f, 0.5f, 0.83f, 1.0f})
                EXPECT_EQ(typedBack(rig, entry, value, 0.37f), "") << "type " << type << ", " << entry.name << " at " << value;
        }
    }
}

TEST(TypedValues, AnEffectTakesItsOwnUnits) {
    test::EditorRig rig;
    const ControlEntry& field = controlEntry(controlIndexForTag(par::FxInPar1));
    const auto shownAfter = [&](const std::string& text) {
        const auto value = typedValue(rig.editor, field, text);
        if (!value) return std::string("not understood");
        rig.rig.set(hostIndexOfTag(par::FxInPar1, 0), *value);
        return spokenValue(rig.editor, field);
    };
    int times = 0;
    for (int type = 1; type < effectTypeCount; ++type) {
        rig.rig.set(hostIndexOfTag(par::FxInType, 0), static_cast<float>(type) / 128);
        EXPECT_EQ(shownAfter("?"), "not understood");
        if (spokenValue(rig.editor, field).find('/') != std::string::npos) {
            EXPECT_EQ(shownAfter("440 Hz"), "not understood") << "a part of a beat";
        }
        if (!spokenValue(rig.editor, field).ends_with("ms")) continue;
        ++times;
        const std::string thirty = shownAfter("30 ms");
        EXPECT_EQ(shownAfter("0.03s"), thirty);
        EXPECT_EQ(shownAfter("30"), thirty) << "a bare number is in the unit of the field";
        EXPECT_NE(shownAfter("10"), thirty);
    }
    EXPECT_GT(times, 0);
}

// The decimal comma of a host's language, if the system has one of those that have it.
class CommaLocale {
public:
    CommaLocale() {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8", "ru_RU.UTF-8", "nl_NL.UTF-8"})
            if (std::setlocale(LC_NUMERIC, name) != nullptr) return;
    }
    ~CommaLocale() { std::setlocale(LC_NUMERIC, before_.c_str()); }

private:
    std::string before_ = std::setlocale(LC_NUMERIC, nullptr);
};

TEST(TypedValues, ThePointIsAPointInEveryLanguageOfTheHost) {
    const auto point = typedValue(par::Cutoff1, "1.2 kHz", 0), comma = typedValue(par::Cutoff1, "1,2 kHz", 0);
    const std::string shown = parameterText(par::Cutoff1, *point, 0);
    const CommaLocale other;
    EXPECT_EQ(typedValue(par::Cutoff1, "1.2 kHz", 0), point);
    EXPECT_EQ(typedValue(par::Cutoff1, "1,2 kHz", 0), comma);
    EXPECT_EQ(point, comma);
    EXPECT_NE(point, typedValue(par::Cutoff1, "1 kHz", 0)) << "what stands behind the point counts";
    EXPECT_EQ(parameterText(par::Cutoff1, *point, 0), shown);
    EXPECT_EQ(typedValue(par::Oct1, "+1", 0), typedValue(par::Oct1, "1", 0));
}

TEST(TypedValues, NumbersInTextsFollowNoLocale) {
    const CommaLocale other;
    EXPECT_EQ(decimalText(1234.56, 1), "1234.6");
    EXPECT_EQ(decimalText(-0.5, 2), "-0.50");
    EXPECT_EQ(shortText(1.5, 6), "1.5");
    EXPECT_EQ(shortText(12, 6), "12");
    EXPECT_EQ(numberAtStart("1.25Hz").value().number, 1.25);
    EXPECT_EQ(numberAtStart("1.25Hz").value().bytes, 4u);
    EXPECT_EQ(numberAtStart("+3").value().number, 3);
    EXPECT_EQ(numberAtStart("-.5").value().number, -0.5);
    for (const char* none : {"", "+", "-", "+-1", "x1", " 1", ","}) EXPECT_FALSE(numberAtStart(none)) << none;
}

}  // namespace
}  // namespace vantoric
