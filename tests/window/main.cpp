#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/window/window_rig.h"
#include "tests/window/x_server.h"

namespace {

constexpr int noServer = 77;  // for ctest: left out

// Large enough for the window at 300 % with room to leave it.
constexpr int screenWidth = 5600, screenHeight = 3000;

// The desktop's opener of pages, as the plug-in finds it: writes down what it is given.
void watchOpener() {
    const auto folder = testhost::openerFolder();
    std::ofstream(folder / "xdg-open") << "#!/bin/sh\nprintf '%s\\n' \"$1\" >> \"" << testhost::openedPages().string() << "\"\n";
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    setenv("PATH", (folder.string() + ":" + std::getenv("PATH")).c_str(), 1);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const testhost::XServer server(screenWidth, screenHeight);
    if (!server.isRunning()) {
        std::puts("Left out: no virtual X server. The package xvfb has one.");
        return noServer;
    }
    watchOpener();
    testhost::useOwnUserFolders();
    const int result = RUN_ALL_TESTS();
    testhost::dropSharedRig();
    std::filesystem::remove_all(testhost::openerFolder());
    return result;
}
