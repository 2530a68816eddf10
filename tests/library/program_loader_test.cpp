#include "library/program_loader.h"

#include <filesystem>

#include "base/parameters.h"
#include "library/program_steps.h"
#include "platform/module_folder.h"
#include "tests/library/menu_bench.h"

namespace vantoric {
namespace {

// An instrument that is played from a MIDI keyboard, with no window.
struct Programs : ::testing::Test, test::MenuBench {
    Programs() {
        for (const char* name : {"a", "b", "c"}) putPatch("Bass", name);
        putPatch("Lead", "d");
        audio.program().setProgramName("a");
    }
    void change(int number) {
        rig.send({{0xc0, number, 0}});
        rig.tick();
    }
    // The name of the patch once it is this one, or after twenty seconds whatever it is then.
    std::string nameOnce(const std::string& expected) {
        for (int i = 0; i < 2000 && name() != expected; ++i) platform::sleepMilliseconds(10);
        return name();
    }
    // A controller moves the cutoff from now on.
    void learnCutoff() {
        audio.midi().setLearnPending(parameter::Cutoff1);
        rig.send({{0xb0, learnt, 64}});
    }
    // Its parameter in the file once it is this one, or after ten seconds whatever it is then.
    static int writtenOnce(int expected) {
        ControllerMap written;
        for (int i = 0; i < 1000 && written.get(learnt) != expected; ++i) {
            platform::sleepMilliseconds(10);
            written.load(controllerMapPath());
        }
        return written.get(learnt);
    }
    static constexpr int learnt = 20;
    // For what should not come.
    std::string nameAfterAWhile() {
        platform::sleepMilliseconds(500);
        return name();
    }
};

TEST(ProgramStep, GoesTheWayTheNumbersGoAlsoAroundTheirEnd) {
    EXPECT_EQ(programStep(5, 6), 1);
    EXPECT_EQ(programStep(6, 5), -1);
    EXPECT_EQ(programStep(127, 0), 1);
    EXPECT_EQ(programStep(0, 127), -1);
    EXPECT_EQ(programStep(0, 98), 1);
    EXPECT_EQ(programStep(99, 1), -1) << "98 apart is no wrap";
    EXPECT_EQ(programStep(99, 0), 1);
    EXPECT_EQ(programStep(7, 7), -1);
}

TEST_F(Programs, StepThroughThePatchesFromTheOneInForce) {
    const ProgramLoader loader(audio, dialogs);
    change(1);
    EXPECT_EQ(nameOnce("b"), "b");
    change(2);
    EXPECT_EQ(nameOnce("c"), "c");
    change(3);
    EXPECT_EQ(nameOnce("d"), "d");
    change(2);
    EXPECT_EQ(nameOnce("c"), "c");
    EXPECT_EQ(loader.lastNumber(), 2);
    EXPECT_TRUE(shown().empty());
}

TEST_F(Programs, ALearnIsWrittenThoughTheWindowThatArmedItIsClosed) {
    std::filesystem::create_directories(platform::bankFolder());
    const ProgramLoader loader(audio, dialogs);
    learnCutoff();
    EXPECT_EQ(writtenOnce(parameter::Cutoff1), parameter::Cutoff1);
    std::filesystem::remove(controllerMapPath());
}

TEST_F(Programs, ALearnThatCouldNotBeWrittenIsTriedAgain) {
    std::filesystem::remove_all(platform::bankFolder());
    const ProgramLoader loader(audio, dialogs);
    learnCutoff();
    platform::sleepMilliseconds(500);
    EXPECT_FALSE(std::filesystem::exists(controllerMapPath()));
    std::filesystem::create_directories(platform::bankFolder());
    EXPECT_EQ(writtenOnce(parameter::Cutoff1), parameter::Cutoff1);
    std::filesystem::remove(controllerMapPath());
}

TEST_F(Programs, AreTheWindowsWhileOneIsOpen) {
    ProgramLoader loader(audio, dialogs);
    loader.setWindowOpen(true);
    change(50);
    EXPECT_EQ(nameAfterAWhile(), "a");
    EXPECT_EQ(loader.lastNumber(), 50);
    loader.setWindowOpen(false);
    change(51);
    EXPECT_EQ(nameOnce("b"), "b") << "51 is above the 50 that the window followed";
}

TEST_F(Programs, FollowAPatchThatTheHostLoaded) {
    const ProgramLoader loader(audio, dialogs);
    change(1);
    EXPECT_EQ(nameOnce("b"), "b");
    audio.patchFiles().loadPatchFile(patchPath("Lead", "d"));
    change(0);
    EXPECT_EQ(nameOnce("c"), "c") << "the one before d";
}

TEST_F(Programs, GoOnPastAPatchThatIsBad) {
    putBadPatch("Bass", "b");
    const ProgramLoader loader(audio, dialogs);
    change(1);
    EXPECT_EQ(nameAfterAWhile(), "a");
    change(2);
    EXPECT_EQ(nameOnce("c"), "c");
    EXPECT_EQ(shown().size(), 1u);
}

TEST_F(Programs, WithoutALibraryNothingHappens) {
    std::filesystem::remove_all(platform::soundsFolder());
    const ProgramLoader loader(audio, dialogs);
    change(1);
    EXPECT_EQ(nameAfterAWhile(), "a");
    EXPECT_TRUE(shown().empty());
}

// One that waited for its patch, or for ever, would keep the test from its end.
TEST_F(Programs, EndWhileTheyLoad) {
    for (int i = 0; i < 20; ++i) {
        change(i);
        const ProgramLoader loader(audio, dialogs);
    }
    EXPECT_TRUE(shown().empty());
}

}  // namespace
}  // namespace vantoric
