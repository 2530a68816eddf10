// The templates of the init menu, each a model of its technique.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>

#include "editor/model/control_table.h"
#include "factory/patches/studio.h"

namespace vantoric::factory {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> initTemplates() {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(fs::path(MADE_FOLDER) / "Vantoric_data"))
        if (entry.path().filename().string().starts_with("Init_")) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string testName(const ::testing::TestParamInfo<fs::path>& info) { return info.param.stem().string(); }

// Power of what one take has otherwise, in parts of the first one's.
double difference(const Take& one, const Take& other) {
    double apart = 0.0, all = 0.0;
    for (std::size_t i = 0; i < std::min(one.left.size(), other.left.size()); ++i) {
        apart += std::pow(one.left[i] - other.left[i], 2) + std::pow(one.right[i] - other.right[i], 2);
        all += std::pow(one.left[i], 2) + std::pow(one.right[i], 2);
    }
    return apart / std::max(all, 1e-12);
}

// What some types of oscillator or filter have no use for, or some techniques no room.
bool isForSomeTypes(const std::string& name) {
    const auto has = [&](const char* word) { return name.find(word) != std::string::npos; };
    return has("PW") || has("FM") || has("ANALOG") || has("FILTER 12") || has("OCTAVE") || has("INTERVAL") || has("DETUNE") ||
           has("KEY") || has("RINGMOD") || has("DECAY") || has("SUSTAIN");
}

class InitTemplate : public ::testing::TestWithParam<fs::path> {
protected:
    // One studio for all, so that the wave banks stay.
    static Studio& studio() {
        static Studio instance;
        return instance;
    }
};

TEST_P(InitTemplate, PlaysAChordAtTheLevelOfTheLibraryAndFallsSilent) {
    Studio& room = studio();
    room.takeMessages();
    ASSERT_TRUE(room.load(GetParam().string()));
    const Take chord = room.play({60, 64, 67, 72}, 100, isCheckedBuild ? 0.2 : 1.2, isCheckedBuild ? 0.05 : 14.0);
    for (const Message& message : room.takeMessages()) ADD_FAILURE() << message.text;
    EXPECT_TRUE(chord.finite);
    EXPECT_GT(chord.peak, 0.0);
    if (isCheckedBuild) return;
    EXPECT_GT(chord.loudness, -30.0);
    EXPECT_LT(chord.loudness, -10.0);
    EXPECT_LT(chord.peak, 1.0);
    EXPECT_LT(chord.endPeak, 0.00025);
}

// Whether a knob is in sight when the template opens.
bool isInSight(const ControlEntry& control, const ParameterModel& values) {
    if (control.kind != WidgetKind::Knob && control.kind != WidgetKind::LargeKnob) return false;
    if (control.page == page::layer || control.page == page::envelope1) return true;
    for (int oscillator = 0; oscillator < 3; ++oscillator) {
        const int type = values.getListIndex(hostIndex(parameter::SynType1 + oscillator, 0));
        if (control.page == page::sample1 + oscillator * page::perOscillator + type) return true;
    }
    return false;
}

TEST_P(InitTemplate, EveryKnobInSightIsHeard) {
    if (isCheckedBuild) GTEST_SKIP() << "too slow";
    Studio& room = studio();
    const auto play = [&] { return room.play({50}, 100, 0.35, 0.1); };
    ASSERT_TRUE(room.load(GetParam().string()));
    const Take before = play();
    const auto isHeard = [&](int index) {
        for (const float value : {0.0f, 1.0f, 0.37f}) {
            EXPECT_TRUE(room.load(GetParam().string()));
            if (room.parameters().getParameter(index) == value) continue;
            room.turn(index, value);
            if (difference(before, play()) > 1e-4) return true;
        }
        return false;
    };
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& control = controlEntry(i);
        if (!isInSight(control, room.parameters()) || isForSomeTypes(control.name)) continue;
        EXPECT_TRUE(isHeard(hostIndex(control.tag, 0))) << control.name;
    }
}

TEST(InitTemplates, AreNineteen) { EXPECT_EQ(initTemplates().size(), 19u); }

INSTANTIATE_TEST_SUITE_P(All, InitTemplate, ::testing::ValuesIn(initTemplates()), testName);

}  // namespace
}  // namespace vantoric::factory
