#include "editor/helper_process.h"
#include "editor/desktop_chooser.h"

#include <chrono>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>

namespace vantoric {
namespace {

using namespace std::chrono_literals;

struct Ended {
    int count = 0, code = -2;
    std::string output;
};

void pollUntilEnd(HelperProcess& process) {
    for (int round = 0; round < 2000 && process.isRunning(); ++round) {
        process.poll();
        std::this_thread::sleep_for(1ms);
    }
}

Ended run(const std::vector<std::string>& words) {
    Ended ended;
    HelperProcess process;
    EXPECT_TRUE(process.start(words, [&](int code, const std::string& output) { ended = {ended.count + 1, code, output}; }));
    pollUntilEnd(process);
    return ended;
}

TEST(HelperProcess, TellsOutputAndExitCodeOnce) {
    const Ended ended = run({"sh", "-c", "echo /some/file; exit 3"});
    EXPECT_EQ(ended.count, 1);
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(ended.output, "/some/file\n");
}

TEST(HelperProcess, AMissingProgramDoesNotStart) {
    HelperProcess process;
    EXPECT_FALSE(process.start({"no-such-program-of-this-name"}, [](int, const std::string&) { FAIL(); }));
    EXPECT_FALSE(process.isRunning());
    EXPECT_FALSE(isInstalled("no-such-program-of-this-name"));
    EXPECT_TRUE(isInstalled("sh"));
}

TEST(HelperProcess, TheHostsOwnLibrariesDoNotReachIt) {
    setenv("LD_LIBRARY_PATH", "/nowhere", 1);
    setenv("VANTORIC_TEST_WORD", "kept", 1);
    const Ended ended = run({"sh", "-c", "echo \"$LD_LIBRARY_PATH|$VANTORIC_TEST_WORD\""});
    unsetenv("LD_LIBRARY_PATH");
    unsetenv("VANTORIC_TEST_WORD");
    EXPECT_EQ(ended.output, "|kept\n");
}

TEST(HelperProcess, PollingDoesNotWaitAndCancellingEndsEvenAStubbornOne) {
    bool hasEnded = false;
    HelperProcess process;
    ASSERT_TRUE(process.start({"sh", "-c", "trap '' TERM; echo ready; while true; do sleep 1; done"},
                              [&](int, const std::string&) { hasEnded = true; }));
    const auto before = std::chrono::steady_clock::now();
    process.poll();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 100ms);
    process.cancel();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 2s);
    EXPECT_FALSE(process.isRunning());
    EXPECT_FALSE(hasEnded);
}

TEST(DesktopChooser, AsksEachProgramInItsOwnWords) {
    const auto load = platform::fileRequest(platform::FileKind::Wave, false, "/music");
    EXPECT_EQ(
        chooserCommand("zenity", load),
        (std::vector<std::string>{"zenity", "--file-selection", "--title=Load a wave file (.wav file)", "--filename=/music/",
                                  "--file-filter=Wave file (*.wav) | *.wav *.WAV", "--file-filter=All files | *"}));
    const auto save = platform::fileRequest(platform::FileKind::Patch, true, "");
    EXPECT_EQ(chooserCommand("kdialog", save),
              (std::vector<std::string>{"kdialog", "--title", "Save a fxp program (.fxp file)", "--getsavefilename", ".",
                                        "*.fxp *.FXP|Single preset (*.fxp)\n*|All files"}));
}

TEST(DesktopChooser, TellsAChoiceARefusalAndAFailureApart) {
    EXPECT_EQ(chooserOutcome(0, "/music/a b.wav\n", 5s).path, "/music/a b.wav");
    const auto refused = chooserOutcome(1, "", 5s);
    EXPECT_FALSE(refused.path);
    EXPECT_FALSE(refused.failed);
    EXPECT_TRUE(chooserOutcome(1, "", 20ms).failed) << "no display";
    EXPECT_TRUE(chooserOutcome(127, "", 5s).failed);
    EXPECT_TRUE(chooserOutcome(-1, "", 5s).failed);
}

}  // namespace
}  // namespace vantoric
