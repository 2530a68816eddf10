#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <set>

#include "factory/patches/studio.h"

namespace vantoric::factory {
namespace {

namespace fs = std::filesystem;

// Every patch of the factory, compiled.
std::vector<fs::path> factoryPatches() {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(MADE_FOLDER) / "Vantoric_sounds"))
        if (entry.path().extension() == ".fxp") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string testName(const ::testing::TestParamInfo<fs::path>& info) {
    std::string name = info.param.parent_path().filename().string() + "_" + info.param.stem().string();
    std::erase_if(name, [](unsigned char c) { return !std::isalnum(c) && c != '_'; });
    return name;
}

class FactoryPatch : public ::testing::TestWithParam<fs::path> {
protected:
    // One studio for all, so that the wave banks stay.
    static Studio& studio() {
        static Studio instance;
        return instance;
    }
};

TEST_P(FactoryPatch, PlaysAChordBelowFullScaleAndFallsSilent) {
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
    EXPECT_LT(chord.offset, 0.001);
    EXPECT_LT(chord.endPeak, 0.00025);
    // Far above what any needs: what runs away is caught on a slow machine too.
    EXPECT_LT(chord.spent, 0.4 * static_cast<double>(chord.left.size()) / studioRate);
    // Ten keys at full force stay below full scale, but for the chance of their phases.
    EXPECT_LE(room.play({36, 43, 48, 52, 55, 60, 64, 67, 71, 74}, 127, 0.8, 0.1).peak, 1.03);
}

// Whether a layer that sounds has a matrix row with this source and an effect of its own or on another row.
bool usesSource(const ParameterModel& values, int source) {
    for (int layer = 0; layer < layerCount; ++layer) {
        if (values.getParameter(parameter::Layer1On + layer) <= 0.5f) continue;
        for (int row = 0; row < 15; ++row)
            if (values.getListIndex(hostIndex(parameter::MatSrc1 + row, layer)) == source &&
                values.getListIndex(hostIndex(parameter::MatDst1 + row, layer)) > 1 &&
                values.getParameter(hostIndex(parameter::MatVal1 + row, layer)) != 0.5f)
                return true;
    }
    return false;
}

TEST_P(FactoryPatch, AnswersToVelocityWheelAndPressure) {
    constexpr int velocity = 18, modwheel = 19, aftertouch = 21;
    Studio& room = studio();
    ASSERT_TRUE(room.load(GetParam().string()));
    EXPECT_TRUE(usesSource(room.parameters(), velocity));
    EXPECT_TRUE(usesSource(room.parameters(), modwheel));
    EXPECT_TRUE(usesSource(room.parameters(), aftertouch));
    if (isCheckedBuild) return;
    const Take loud = room.play({48, 55}, 110, 0.5, 0.05), soft = room.play({48, 55}, 30, 0.5, 0.05);
    EXPECT_GT(soft.loudness, -60.0);
    // An arpeggiator's steps bring velocities of their own.
    for (int layer = 0; layer < layerCount; ++layer)
        if (room.parameters().getListIndex(hostIndex(parameter::ArpType, layer)) != 0) return;
    EXPECT_GT(loud.loudness, soft.loudness + 1.5);
}

// The same chances for both, so that the wheel alone tells them apart.
TEST_P(FactoryPatch, SoundsOtherwiseWithTheWheelUp) {
    if (isCheckedBuild) GTEST_SKIP() << "too slow";
    Studio& room = studio();
    const auto bandsAt = [&](int wheel) {
        EXPECT_TRUE(room.load(GetParam().string()));
        room.setWheel(wheel);
        return thirdOctaves(room.play({48, 55}, 100, 1.0, 0.1), 10, 1.0);
    };
    EXPECT_GT(apart(bandsAt(0), bandsAt(127)), 1.0);  // dB
}

INSTANTIATE_TEST_SUITE_P(All, FactoryPatch, ::testing::ValuesIn(factoryPatches()), testName);

TEST(FactoryPatches, AreManyInManyCategories) {
    std::set<fs::path> categories;
    for (const fs::path& path : factoryPatches()) categories.insert(path.parent_path());
    EXPECT_GE(factoryPatches().size(), 438u);
    EXPECT_EQ(categories.size(), 25u);
}

// A favourite is kept under the name with "Fav" before it, and a name has at most 27 characters.
TEST(FactoryPatches, NamesLeaveRoomForAFavourite) {
    for (const fs::path& path : factoryPatches()) EXPECT_LE(path.stem().string().size(), 24u) << path;
}

TEST(FactoryPatches, NoTwoSoundAlike) {
    if (isCheckedBuild) GTEST_SKIP() << "too slow";
    Studio room;
    const std::vector<fs::path> paths = factoryPatches();
    std::vector<std::vector<double>> bands;
    for (const fs::path& path : paths) {
        ASSERT_TRUE(room.load(path.string()));
        bands.push_back(thirdOctaves(room.play({48, 55, 72}, 100, 0.6, 0.4), 10, 1.0));
    }
    for (std::size_t i = 0; i < paths.size(); ++i)
        for (std::size_t k = 0; k < i; ++k) EXPECT_GT(apart(bands[i], bands[k]), 2.5) << paths[i] << " and " << paths[k];  // dB
}

TEST(FactoryPatches, TheWelcomePatchIsWhereTheInstrumentLooksForIt) {
    Studio room;
    EXPECT_TRUE(fs::exists(welcomePatchPath()));
    for (const Message& message : room.takeMessages()) ADD_FAILURE() << message.text;
}

}  // namespace
}  // namespace vantoric::factory
