#include "effects/multieffect.h"

#include <atomic>
#include <clocale>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
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

// A request of any thread is carried out by the thread that plays, at its next block, and only once.
TEST_F(Slot, AChangeOfTypeActsAtTheNextBlock) {
    slot.setType(20);
    slot.setParameter(1, 1.0f);
    processed(std::vector<float>(200, 0.5f));
    std::thread([&] {
        EXPECT_TRUE(slot.setType(6));
        EXPECT_FALSE(slot.setType(6));
        EXPECT_TRUE(slot.setType(20));
        EXPECT_EQ(slot.type(), 20);
    }).join();
    EXPECT_LT(std::fabs(processed({0.0f})[0]), 0.001f);
    processed(std::vector<float>(200, 0.5f));
    EXPECT_GT(std::fabs(processed({0.0f})[0]), 0.01f);
    std::thread([&] { slot.clearState(); }).join();
    EXPECT_LT(std::fabs(processed({0.0f})[0]), 0.001f);
}

TEST_F(Slot, TypesAndParametersMayBeSetWhileABlockRuns) {
    std::atomic<bool> isOver{false};
    std::thread host([&] {
        for (int i = 0; !isOver; ++i) {
            slot.setType(i % 77);
            slot.setParameter(i % 5, static_cast<float>(i % 11) / 10.0f);
            if (i % 7 == 0) slot.clearState();
            slot.touchMemory(i % 77);
        }
    });
    bool isFinite = true;
    for (int block = 0; block < 400; ++block)
        for (const float x : processed(std::vector<float>(64, 0.25f))) isFinite = isFinite && std::isfinite(x);
    isOver = true;
    host.join();
    EXPECT_TRUE(isFinite);
    slot.setType(0);
    EXPECT_EQ(processed({0.5f})[0], 0.5f) << "the last type counts";
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

// One type of each family, chosen so that rate and memory are heard.
constexpr int familyTypes[] = {2, 48, 13, 63, 18, 61, 20, 40};
constexpr int longPlay = 20000;

std::vector<float> noise(int count, unsigned seed) {
    LinearCongruence random{seed};
    std::vector<float> samples(static_cast<std::size_t>(count));
    for (float& x : samples) x = random.unit() - 0.5f;
    return samples;
}

std::vector<float> played(Multieffect& slot, std::vector<float> left, std::vector<float> right) {
    for (int done = 0; done < static_cast<int>(left.size()); done += 100)
        slot.process(left.data() + done, right.data() + done, 100);
    left.insert(left.end(), right.begin(), right.end());
    return left;
}
std::vector<float> played(Multieffect& slot) { return played(slot, noise(longPlay, 1), noise(longPlay, 2)); }

TEST_F(Slot, EveryFamilyHearsParametersAndRateThatWereSetBeforeItWasChosen) {
    for (const int type : familyTypes) {
        RandomSources one, two, three;
        Multieffect plain(one), set(two), fast(three);
        for (int index = 0; index < 5; ++index) {
            plain.setParameter(index, 0.6f);
            set.setParameter(index, 0.8f);
            fast.setParameter(index, 0.6f);
        }
        fast.setSampleRate(96000.0f);
        for (Multieffect* each : {&plain, &set, &fast}) each->setType(type);
        const std::vector<float> sound = played(plain);
        EXPECT_NE(sound, played(set)) << type;
        EXPECT_NE(sound, played(fast)) << type;
    }
}

TEST_F(Slot, EveryWayOfClearingEmptiesTheFamilyThatPlays) {
    for (const int type : familyTypes) {
        RandomSources one;
        Multieffect fresh(one);
        for (int index = 0; index < 5; ++index) fresh.setParameter(index, 0.6f);
        fresh.setType(type);
        const std::vector<float> first = played(fresh);
        for (const int way : {0, 1, 2}) {
            RandomSources two;
            Multieffect used(two);
            for (int index = 0; index < 5; ++index) used.setParameter(index, 0.6f);
            used.setType(type);
            played(used, noise(longPlay, 3), noise(longPlay, 4));
            if (way == 0) used.clearState();
            if (way == 1) used.clearAll();
            if (way == 2) {
                used.setType(0);
                used.setType(type);
            }
            two = RandomSources();
            EXPECT_EQ(played(used), first) << type << " " << way;
        }
    }
}

TEST_F(Slot, DelaysHearTheTempoAndTheGateHearsTheSong) {
    constexpr int delay = 6, trancegate = 17;
    for (const int type : {delay, trancegate}) {
        RandomSources one, two;
        Multieffect still(one), moved(two);
        for (Multieffect* each : {&still, &moved}) {
            each->setType(type);
            each->setParameter(0, 1.0f);
            each->setParameter(1, 0.3f);
        }
        moved.setTempo(type == delay ? 240.0f : 120.0f, 2.75);
        EXPECT_NE(played(still), played(moved)) << type;
    }
}

TEST_F(Slot, ANewSlotHearsATempoOf120At44100Hz) {
    constexpr int delay = 6;
    RandomSources one, two;
    Multieffect fresh(one), told(two);
    told.setSampleRate(44100.0f);
    told.setTempo(120.0f, 0.0);
    for (Multieffect* each : {&fresh, &told}) each->setType(delay);
    EXPECT_EQ(played(fresh), played(told));
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
