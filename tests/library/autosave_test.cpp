#include "library/autosave.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "library/text_sections.h"
#include "platform/files.h"
#include "platform/user_state.h"
#include "tests/engine/engine_rig.h"

namespace vantoric::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

struct Crash : ::testing::Test {
    Crash() { platform::setStateFolder(state.path()); }
    ~Crash() override { platform::setStateFolder(""); }

    std::string own(const std::string& extension, int number = 1) const {
        return state / ("autosave/" + std::to_string(getpid()) + "-" + std::to_string(number) + extension);
    }
    int filesLeft() const {
        std::error_code none;
        int count = 0;
        for (auto at = fs::directory_iterator(state / "autosave", none); at != fs::directory_iterator(); ++at) ++count;
        return count;
    }
    // The files of a process that is gone, or of one that runs.
    void leave(const std::string& process, const std::string& start, const std::string& name, int time = 100) {
        fs::create_directories(state / "autosave");
        const std::string path = state / ("autosave/" + process + "-1");
        rig.set(par::Cutoff1, 0.321f);
        const std::string named = rig.audio.program().getProgramName();
        EXPECT_TRUE(rig.audio.patchFiles().savePatchFile(path + ".fxp"));
        EXPECT_EQ(rig.audio.program().getProgramName(), named);
        rig.set(par::Cutoff1, 0.5f);
        saveSections(path + ".txt",
                     {{"", {{"name", name}, {"category", "Bass"}, {"time", std::to_string(time)}, {"process", start}}}});
    }
    bool waitFor(const std::function<bool()>& condition) {
        for (int i = 0; i < 2000 && !condition(); ++i) platform::sleepMilliseconds(5);
        return condition();
    }

    platform::ScratchFolder state;
    EngineRig rig;
};

TEST_F(Crash, AChangedPatchIsSavedByItself) {
    Autosave autosave(rig.audio, 10ms);
    autosave.follow({false, 1, "Bass", "Deep"});
    platform::sleepMilliseconds(50);
    EXPECT_EQ(filesLeft(), 0) << "nothing has changed";
    autosave.follow({true, 2, "Bass", "Deep"});
    EXPECT_TRUE(waitFor([&] { return fs::exists(own(".fxp")); }));
    const TextSections note = loadSections(own(".txt"));
    ASSERT_EQ(note.size(), 1u);
    EXPECT_EQ(note[0].valueOf("name"), "Deep");
    EXPECT_EQ(note[0].valueOf("process"), platform::processStart(getpid()));
}

TEST_F(Crash, OnlyANewStateIsWritten) {
    Autosave autosave(rig.audio, 1h);
    autosave.follow({true, 2, "Bass", "Deep"});
    EXPECT_TRUE(autosave.saveNow());
    fs::remove(own(".fxp"));
    EXPECT_TRUE(autosave.saveNow());
    EXPECT_FALSE(fs::exists(own(".fxp"))) << "it was saved already";
    autosave.follow({true, 3, "Bass", "Deep"});
    EXPECT_TRUE(autosave.saveNow());
    EXPECT_TRUE(fs::exists(own(".fxp")));
}

TEST_F(Crash, ASavedPatchNeedsNoFiles) {
    Autosave autosave(rig.audio, 1h);
    autosave.follow({true, 2, "Bass", "Deep"});
    autosave.saveNow();
    EXPECT_EQ(filesLeft(), 2);
    autosave.follow({false, 2, "Bass", "Deep"});
    autosave.saveNow();
    EXPECT_EQ(filesLeft(), 0);
}

TEST_F(Crash, ACleanEndLeavesNothing) {
    {
        Autosave one(rig.audio, 1h), two(rig.audio, 1h);
        for (Autosave* each : {&one, &two}) {
            each->follow({true, 2, "Bass", "Deep"});
            EXPECT_TRUE(each->saveNow());
        }
        EXPECT_EQ(filesLeft(), 4) << "each instrument has its own";
        EXPECT_TRUE(Autosave::recoverable().empty()) << "this process runs";
    }
    EXPECT_EQ(filesLeft(), 0);
}

TEST_F(Crash, WhatAProcessLeftCanBeRecovered) {
    leave("2000000000", "long ago", "Glass Harbour");
    const auto left = Autosave::recoverable();
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].name, "Glass Harbour");
    EXPECT_EQ(left[0].category, "Bass");
    EXPECT_EQ(left[0].savedAt, 100);
    Autosave autosave(rig.audio, 1h);
    EXPECT_TRUE(autosave.recover(left[0]));
    EXPECT_EQ(rig.audio.parameters().getParameter(par::Cutoff1), 0.321f);
    EXPECT_EQ(rig.audio.program().getProgramName(), "Glass Harbour");
    EXPECT_TRUE(Autosave::recoverable().empty());
    EXPECT_TRUE(fs::exists(own(".fxp"))) << "a second crash loses nothing";
}

TEST_F(Crash, ANumberThatWasGivenOutAgainIsAnotherProcess) {
    leave(std::to_string(getpid()), "another start", "Old");
    EXPECT_EQ(Autosave::recoverable().size(), 1u);
    leave(std::to_string(getpid()), platform::processStart(getpid()), "Mine");
    EXPECT_TRUE(Autosave::recoverable().empty());
    Autosave autosave(rig.audio, 1h);
    autosave.follow({true, 1, "", "New"});
    autosave.saveNow();
    EXPECT_TRUE(fs::exists(own(".fxp", 2))) << "another module of this process uses the first";
}

TEST_F(Crash, AKilledProcessLeavesItsPatch) {
    const pid_t child = fork();
    if (child == 0) {
        const std::string path = state / ("autosave/" + std::to_string(getpid()) + "-1");
        fs::create_directories(state / "autosave");
        saveSections(path + ".txt", {{"", {{"name", "Lost"}, {"process", platform::processStart(getpid())}}}});
        std::ofstream(path + ".fxp") << "x";
        pause();
        _exit(0);
    }
    ASSERT_TRUE(waitFor([&] { return filesLeft() == 2; }));
    EXPECT_TRUE(Autosave::recoverable().empty());
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    ASSERT_EQ(Autosave::recoverable().size(), 1u);
    EXPECT_EQ(Autosave::recoverable()[0].name, "Lost");
}

TEST_F(Crash, DiscardedFilesAreGone) {
    leave("2000000000", "", "A");
    EXPECT_TRUE(Autosave::discard(Autosave::recoverable().at(0)));
    EXPECT_EQ(filesLeft(), 0);
}

TEST_F(Crash, TheNewestComesFirst) {
    leave("2000000000", "", "older", 100);
    leave("2000000001", "", "newer", 200);
    const auto left = Autosave::recoverable();
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0].name, "newer");
}

TEST_F(Crash, BadFilesAreRefusedAndThePatchPlaysOn) {
    leave("2000000000", "", "A");
    const std::string path = state / "autosave/2000000000-1.fxp";
    Autosave autosave(rig.audio, 1h);
    const auto left = Autosave::recoverable();
    for (const std::uintmax_t size : {0, 10, 60, 5000, 55000}) {
        fs::resize_file(path, size);
        EXPECT_FALSE(autosave.recover(left.at(0))) << size;
        EXPECT_TRUE(fs::exists(path));
    }
    fs::remove(path);
    EXPECT_FALSE(autosave.recover(left.at(0)));
    EXPECT_FALSE(rig.audio.isBusy());
    EXPECT_EQ(rig.audio.parameters().getParameter(par::Cutoff1), 0.5f);
}

TEST_F(Crash, OtherFilesOfTheFolderStay) {
    fs::create_directories(state / "autosave/7-7.fxp");
    for (const char* name : {"x.fxp", "-1.fxp", "5-.fxp", "5-x.fxp", "99999999999999999999-1.fxp", ".fxp", "5-1.txt"})
        std::ofstream(state / ("autosave/" + std::string(name))) << "x";
    std::ofstream(state / "autosave/vantoric-2000000000-3.tmp") << "half";
    EXPECT_TRUE(Autosave::recoverable().empty());
    EXPECT_EQ(filesLeft(), 8) << "what was half written went";
}

TEST_F(Crash, WithoutAFolderNothingIsSaid) {
    std::ofstream(state / "file") << "x";
    platform::setStateFolder(state / "file/below");
    Autosave autosave(rig.audio, 1h);
    rig.audio.messages().take();
    autosave.follow({true, 1, "", ""});
    EXPECT_FALSE(autosave.saveNow());
    EXPECT_TRUE(rig.audio.messages().take().empty());
}

}  // namespace
}  // namespace vantoric::test
