#include "effects/type_table.h"

#include <cmath>
#include <string>

namespace vantoric {
namespace {

TEST(EffectTypes, TheSeparatorsStandWhereTheMenuHasItsLines) {
    for (const int type : {1, 5, 10, 16, 23, 31, 39, 42, 51, 62, 70, 74}) {
        EXPECT_EQ(effectType(type).family, EffectFamily::separator) << type;
        EXPECT_STREQ(effectType(type).name, "-");
    }
}

TEST(EffectTypes, SeparatorsAndUnknownTypesOpenWithAHalfThroughout) {
    for (const int type : {16, 77, 127, -1})
        for (const float value : effectType(type).defaults) EXPECT_EQ(value, 0.5f) << type;
}

TEST(EffectTypes, TheMenuNamesASeparatorWhereverTheTableHasOne) {
    for (int type = 0; type < effectTypeCount; ++type)
        EXPECT_EQ(std::string(insertTypeLabels[type]) == "-", effectType(type).family == EffectFamily::separator) << type;
}

TEST(EffectTypes, EveryRowHasATextForEachParameterThatItsEffectListensTo) {
    for (int type = 0; type < effectTypeCount; ++type)
        for (const ParameterText& text : effectType(type).texts) {
            const std::string format = text.format;
            EXPECT_EQ(format.empty(), text.number == nullptr) << type;
            if (format.find("%s") != std::string::npos) {
                EXPECT_LT(text.number(1.0f), static_cast<float>(text.nameCount)) << type;
                EXPECT_GE(text.number(1.0f), static_cast<float>(text.nameCount - 1)) << type;
            }
        }
}

TEST(EffectTypes, MenuAndSlotCallSomeEffectsDifferently) {
    EXPECT_STREQ(insertTypeLabels[7], "Delay Band");
    EXPECT_STREQ(effectType(7).name, "PingPong");
    EXPECT_STREQ(insertTypeLabels[34], "Phaser Stereo ");
}

TEST(EffectTypes, AValueOfOneHalfIsNoise) {
    EXPECT_EQ(typeFromValue(0.5f), 64);
    EXPECT_STREQ(effectType(64).name, "Noise");
}

TEST(EffectTypes, AValueOfOneIsOff) { EXPECT_EQ(typeFromValue(1.0f), 0); }

TEST(EffectTypes, ValuesOutsideTheListAreOff) {
    for (const float value : {-3.0f, 1e30f, NAN, 77.0f / 128.0f}) EXPECT_EQ(typeFromValue(value), 0) << value;
}

TEST(EffectTypes, AMasterTypeOf17BehavesAsOff) {
    EXPECT_EQ(typeFromValue(17.0f / 128.0f), 17);
    EXPECT_EQ(masterTypeFromValue(17.0f / 128.0f), 0);
    EXPECT_STREQ(masterTypeLabels[17], "off");
    EXPECT_EQ(masterTypeFromValue(18.0f / 128.0f), 18);
}

TEST(FirstInsert, OfTwoVoicesEquallyFarFromTheBaseTheLowerIsUsed) { EXPECT_EQ(extremeValue(0.5f, 0.25f, 0.75f), 0.25f); }

TEST(FirstInsert, TakesTheExtremeFurtherFromTheBase) {
    EXPECT_EQ(extremeValue(0.5f, 0.375f, 0.75f), 0.75f);
    EXPECT_EQ(extremeValue(0.5f, 0.125f, 0.75f), 0.125f);
    EXPECT_EQ(extremeValue(0.5f, 0.5f, 0.5f), 0.5f);
}

TEST(FirstInsert, HoldsTheResultToItsRange) {
    EXPECT_EQ(extremeValue(0.5f, 0.5f, 1.75f), 1.0f);
    EXPECT_EQ(extremeValue(0.5f, -0.75f, 0.5f), 0.0f);
    EXPECT_EQ(extremeValue(0.5f, NAN, 0.5f), 0.0f);
}

}  // namespace
}  // namespace vantoric
