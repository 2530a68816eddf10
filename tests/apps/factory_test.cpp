#include <gtest/gtest.h>

#include <algorithm>
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
    // One instance for all: its wave banks take a while to load.
    static Studio& studio() {
        static Studio instance;
        return instance;
    }
};

TEST_P(FactoryPatch, PlaysAChordBelowFullScaleAndFallsSilent) {
    Studio& room = studio();
    const std::size_t boxes = room.boxes().size();
    ASSERT_TRUE(room.load(GetParam().string()));
    const Take chord = room.play({60, 64, 67, 72}, 100, 2.0, 10.0);
    EXPECT_EQ(room.boxes().size(), boxes) << room.boxes().back().text;
    EXPECT_TRUE(chord.finite);
    EXPECT_GT(chord.loudness, -30.0);
    EXPECT_LT(chord.loudness, -10.0);
    EXPECT_LT(chord.peak, 1.0);
    EXPECT_LT(chord.offset, 0.001);
    EXPECT_LT(chord.endPeak, 0.00025);
    // Ten keys at full force come close to full scale and may touch it by chance of their phases.
    EXPECT_LT(room.play({36, 43, 48, 52, 55, 60, 64, 67, 71, 74}, 127, 1.5, 0.6).peak, 1.1);
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
    const Take loud = room.play({48, 55}, 110, 1.0, 0.6), soft = room.play({48, 55}, 30, 1.0, 0.6);
    EXPECT_GT(soft.loudness, -60.0);
    // An arpeggiator's steps bring velocities of their own.
    if (GetParam().parent_path().filename().string().starts_with("Arp")) return;
    EXPECT_GT(loud.loudness, soft.loudness + 1.5);
}

INSTANTIATE_TEST_SUITE_P(All, FactoryPatch, ::testing::ValuesIn(factoryPatches()), testName);

TEST(FactoryPatches, AreADozenInSeveralCategories) {
    std::set<fs::path> categories;
    for (const fs::path& path : factoryPatches()) categories.insert(path.parent_path());
    EXPECT_GE(factoryPatches().size(), 13u);
    EXPECT_GE(categories.size(), 4u);
}

TEST(FactoryPatches, TheWelcomePatchIsWhereTheInstrumentLooksForIt) {
    Studio room;
    EXPECT_TRUE(fs::exists(welcomePatchPath()));
    EXPECT_TRUE(room.boxes().empty()) << room.boxes().back().text;
}

}  // namespace
}  // namespace vantoric::factory
