// The pictures of the manual show the window as it is: each drive of docs/manual/drives is played as tools/manual_pictures.sh
// plays it, and its place in the window compared with the picture that was taken.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/window/compare_pictures.h"
#include "tests/window/drive_commands.h"
#include "tests/window/window_rig.h"

using namespace testhost;
namespace fs = std::filesystem;

namespace {

struct Drive {
    std::vector<std::string> lines;
    int size = 3;
    int x = 0, y = 0, width = 0, height = 0;  // what is cut out
};

Drive readDrive(const fs::path& path) {
    Drive drive;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line); drive.lines.push_back(line)) {
        std::sscanf(line.c_str(), "# size %d", &drive.size);
        std::sscanf(line.c_str(), "# crop %dx%d+%d+%d", &drive.width, &drive.height, &drive.x, &drive.y);
    }
    return drive;
}

std::vector<std::string> driveNames() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(std::string(MANUAL) + "/drives"))
        names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

class ManualPictures : public testing::TestWithParam<std::string> {};

TEST_P(ManualPictures, ShowTheWindowAsItIs) {
    dropSharedRig();
    const Drive drive = readDrive(std::string(MANUAL) + "/drives/" + GetParam() + ".drive");
    ASSERT_GT(drive.width, 0) << GetParam() << ".drive has no line \"# crop WIDTHxHEIGHT+X+Y\"";
    const Installation installation(pluginUnderTest());
    installation.setSize(drive.size);
    installation.setTooltips(true);
    if (!fs::exists(installation.folder() / "Vantoric_sounds")) GTEST_SKIP() << "the target patches is not built";
    WindowHost host(installation.plugin());
    ASSERT_TRUE(host.open());
    host.idle(500);
    for (const std::string& line : drive.lines) EXPECT_TRUE(testhost::drive(host, line)) << line;
    const Picture whole = host.picture();
    const int width = std::min(drive.width, whole.width - drive.x), height = std::min(drive.height, whole.height - drive.y);
    const Picture seen = whole.part(drive.x, drive.y, width, height);
    fs::create_directories(PICTURES);
    savePng(seen, std::string(PICTURES) + "/manual-" + GetParam() + ".png");
    const Picture stored = loadPng(std::string(MANUAL) + "/pictures/" + GetParam() + ".png");
    const Difference d = difference(seen, stored);
    std::printf("%s: %.1f at %d, %d\n", GetParam().c_str(), d.largest, d.x, d.y);
    EXPECT_LE(d.largest, tolerance) << "docs/manual/pictures/" << GetParam() << ".png no longer shows the window, at " << d.x
                                    << ", " << d.y << " of " << stored.width << " x " << stored.height
                                    << ". Look at the change, then renew it: tools/manual_pictures.sh " << GetParam();
}

INSTANTIATE_TEST_SUITE_P(Manual, ManualPictures, testing::ValuesIn(driveNames()), [](const auto& info) {
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

}  // namespace
