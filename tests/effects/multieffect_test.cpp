#include "effects/multieffect.h"

#include <clocale>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace vantoric {
namespace {

class Slot : public ::testing::Test {
protected:
    std::string shown(int index, float value) {
        char text[effectTextSize];
        slot.setParameter(index, value);
        slot.getParameterDisplay(index, text);
        return text;
    }
    std::string name() {
        char text[effectTextSize];
        slot.getTypeName(text);
        return text;
    }
    std::vector<float> processed(std::vector<float> left) {
        std::vector<float> right = left;
        slot.process(left.data(), right.data(), static_cast<int>(left.size()));
        return left;
    }

    RandomSources random;
    Multieffect slot{random};
    const std::vector<float> ramp{0.1f, -0.2f, 0.3f, -0.4f, 0.5f};
};

TEST_F(Slot, ASeparatorPassesAudioUnchangedAndShowsTheBareValue) {
    slot.setType(16);
    EXPECT_EQ(processed(ramp), ramp);
    EXPECT_EQ(shown(1, 0.5f), "param 1 value 50 %");
}

TEST_F(Slot, OffPassesAudioUnchanged) {
    slot.setType(0);
    slot.setParameter(0, 0.3f);
    EXPECT_EQ(processed(ramp), ramp);
}

TEST_F(Slot, IsReadyAndOffAfterConstruction) {
    EXPECT_TRUE(slot.ready());
    EXPECT_EQ(slot.type(), 0);
    EXPECT_EQ(name(), "off");
    for (int index = 0; index < 8; ++index) EXPECT_EQ(slot.getParameter(index), 0.5f);
}

TEST_F(Slot, TheSameTypeTwiceClearsOnlyOnce) {
    EXPECT_TRUE(slot.setType(18));
    EXPECT_FALSE(slot.setType(18));
    EXPECT_TRUE(slot.setType(0));
    EXPECT_FALSE(slot.setType(90));
    EXPECT_TRUE(slot.setType(18));
}

TEST_F(Slot, AnotherTypeAndBackStartsSilent) {
    slot.setType(20);
    slot.setParameter(1, 1.0f);
    processed(std::vector<float>(200, 0.5f));
    const float ringing = processed({0.0f})[0];
    EXPECT_GT(std::fabs(ringing), 0.01f);
    slot.setType(20);
    EXPECT_GT(std::fabs(processed({0.0f})[0]), 0.01f);
    slot.setType(16);
    slot.setType(20);
    EXPECT_LT(std::fabs(processed({0.0f})[0]), 0.001f);
}

TEST_F(Slot, NumbersBeyondTheTableAreOff) {
    for (const int type : {77, 127, 128, -1, std::numeric_limits<int>::max()}) {
        slot.setType(18);
        slot.setType(type);
        EXPECT_EQ(slot.type(), 0) << type;
    }
}

TEST_F(Slot, Type75HasNoNameOfItsOwn) {
    slot.setType(75);
    EXPECT_EQ(name(), "Illegal type");
    slot.setType(73);
    EXPECT_EQ(name(), "Reverb Reverse");
    slot.setType(16);
    EXPECT_EQ(name(), "-");
}

TEST_F(Slot, TheMixOfAnEqualizerHasNoEffect) {
    slot.setType(20);
    slot.setParameter(1, 0.9f);
    slot.setParameter(0, 0.0f);
    const auto dry = processed(ramp);
    slot.clearState();
    slot.setParameter(0, 1.0f);
    EXPECT_EQ(processed(ramp), dry);
    EXPECT_NE(dry, ramp);
}

TEST_F(Slot, AFamilyChosenLaterFindsTheLatestValues) {
    slot.setType(0);
    slot.setParameter(1, 1.0f);
    slot.setType(20);
    EXPECT_NE(processed(ramp), ramp);
}

TEST_F(Slot, IndicesBeyondTheParametersAreHarmless) {
    slot.setParameter(6, 0.25f);
    slot.setParameter(8, 0.25f);
    slot.setParameter(-1, 0.25f);
    EXPECT_EQ(slot.getParameter(6), 0.25f);
    EXPECT_EQ(slot.getParameter(8), 0.0f);
    EXPECT_EQ(slot.getParameter(-1), 0.0f);
    EXPECT_EQ(slot.getParameter(0), 0.5f);
}

TEST_F(Slot, ACountOfNothingDoesNothing) {
    slot.setType(20);
    slot.process(nullptr, nullptr, 0);
    slot.process(nullptr, nullptr, -5);
}

TEST_F(Slot, ParameterNames) {
    char text[effectTextSize];
    slot.getParameterName(0, text);
    EXPECT_STREQ(text, "Effect mix");
    slot.getParameterName(4, text);
    EXPECT_STREQ(text, "Effect param 4");
    slot.getParameterName(1234567890, text);
    EXPECT_STREQ(text, "Effect param 1234567");
}

TEST_F(Slot, TextsDoNotFollowTheLocale) {
    // Whether or not the machine has this locale, the text is the same.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    slot.setType(2);
    const std::string text = shown(1, 0.5f);
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(text, "Size 20.0m");
}

TEST_F(Slot, EveryTypeShowsAShortTextForEveryValue) {
    for (int type = 0; type < effectTypeCount; ++type) {
        slot.setType(type);
        for (int index = -1; index < 9; ++index)
            for (const float value : {0.0f, 0.5f, 1.0f, -2.0f, 3.0f, NAN, INFINITY}) {
                const std::string text = shown(index, value);
                EXPECT_LT(text.size(), std::size_t{effectTextSize} - 1) << type << " " << index << " " << value;
                EXPECT_EQ(text.find("%s"), std::string::npos);
            }
    }
}

TEST_F(Slot, EveryTypeGivesFiniteNumbersForWildInput) {
    for (int type = 0; type < effectTypeCount; ++type) {
        if (static_cast<int>(effectType(type).family) <= 0) continue;
        slot.setType(type);
        std::vector<float> wild(32, 0.1f);
        wild[7] = std::numeric_limits<float>::quiet_NaN();
        wild[9] = std::numeric_limits<float>::infinity();
        for (const float y : processed(wild)) EXPECT_TRUE(std::isfinite(y)) << type;
        for (const float y : processed(ramp)) EXPECT_TRUE(std::isfinite(y)) << type;
    }
}

}  // namespace
}  // namespace vantoric
