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
    for (const auto& entry : fs::directory_iterator(std::string(MANUAL) + "/drives")) {
        const std::string name = entry.path().stem().string();
        if (name != "chooser") names.push_back(name);  // it shows where things lie on the machine
    }
    std::sort(names.begin(), names.end());
    return names;
}

Picture cutOut(const Picture& whole, const Drive& drive) {
    return whole.part(drive.x, drive.y, std::min(drive.width, whole.width - drive.x),
                      std::min(drive.height, whole.height - drive.y));
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
    for (const char* folder : {"User", "Favourites"})  // an installation has them
        fs::create_directories(installation.folder() / "Vantoric_sounds" / folder);
    WindowHost host(installation.plugin());
    ASSERT_TRUE(host.open());
    host.idle(500);
    for (const std::string& line : drive.lines) EXPECT_TRUE(testhost::drive(host, line)) << line;
    // A quarter of the size, for which the tolerance holds: the stored one has few colours, and may have been taken smaller.
    const Picture stored = loadPng(std::string(MANUAL) + "/pictures/" + GetParam() + ".png");
    ASSERT_FALSE(stored.isEmpty()) << "it is missing: tools/manual_pictures.sh " << GetParam();
    Picture seen = cutOut(host.picture(), drive);
    const Picture wanted = reduced(stored, seen.width / 4);
    Difference d = difference(seen, wanted);
    for (int i = 0; d.largest > tolerance && i < 12; ++i) {  // a caret blinks
        host.idle(100);
        seen = cutOut(host.glance(), drive);
        d = difference(seen, wanted);
    }
    host.release(1);  // a drive may end within a drag, and the next window has the same pointer
    fs::create_directories(PICTURES);
    savePng(seen, std::string(PICTURES) + "/manual-" + GetParam() + ".png");
    EXPECT_LE(d.largest, tolerance) << "docs/manual/pictures/" << GetParam() << ".png no longer shows the window, " << 4 * d.x
                                    << ", " << 4 * d.y << " pixels from its corner. Look at " << PICTURES << "/manual-"
                                    << GetParam()
                                    << ".png; if it is as it should be, renew the manual's: tools/manual_pictures.sh "
                                    << GetParam();
    std::printf("%s: %.1f at %d, %d\n", GetParam().c_str(), d.largest, d.x, d.y);
}

INSTANTIATE_TEST_SUITE_P(Manual, ManualPictures, testing::ValuesIn(driveNames()), [](const auto& drive) {
    std::string name = drive.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

}  // namespace
