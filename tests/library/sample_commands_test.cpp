#include "library/sample_commands.h"

#include <gtest/gtest.h>

#include "base/parameters.h"
#include "platform/module_folder.h"
#include "sound/kernels.h"
#include "tests/library/ended.h"
#include "tests/library/library_bench.h"

namespace vantoric {
namespace {

using Texts = std::vector<std::string>;

struct SampleMenu : ::testing::Test, test::LibraryBench {
    template <class Command, class... Given>
    bool run(Command command, Given... given) {
        return test::ended(samples, command, given...);
    }
};

TEST_F(SampleMenu, AChosenFileIsTunedIfTheUserSaysYes) {
    const std::string path = wave("x.wav", 9000);
    dialogs.answerNext(false);
    EXPECT_TRUE(run(&SampleCommands::loadChosen, 0, 0, path, false));
    EXPECT_EQ(shown(), Texts{"Autotune: Should the sample be tuned automatically (YES) or be tuned to C (NO)?"});
    EXPECT_EQ(sample(0).sampleRate, 44100u);
    dialogs.clear();
    dialogs.answerNext(true);
    EXPECT_TRUE(run(&SampleCommands::loadChosen, 0, 0, path, true));
    EXPECT_EQ(shown(), Texts{"Autotune: Autotune the sample?"});
    EXPECT_EQ(sample(0).sampleRate, 13081u);
}

TEST_F(SampleMenu, AQuestionThatIsCalledOffLeavesTheEarlierSample) {
    ASSERT_TRUE(audio.sampleLoader().loadSample(0, 0, wave("x.wav")));
    dialogs.callOffNext();
    EXPECT_FALSE(run(&SampleCommands::loadChosen, 0, 0, wave("y.wav", 9000), true));
    EXPECT_EQ(shown(), Texts{"Autotune: Autotune the sample?"});
    EXPECT_EQ(sample(0).length, 60);
}

TEST_F(SampleMenu, WhatTheLoaderHasToTellComesBeforeTheQuestion) {
    const std::string path = put("x.wav", test::WaveMaker().putFrames(50).looped(20, 51));
    EXPECT_TRUE(run(&SampleCommands::loadChosen, 0, 0, path, true));
    EXPECT_EQ(shown(),
              (Texts{path + ": The loop point information of this sample is not valid!", "Autotune: Autotune the sample?"}));
}

TEST_F(SampleMenu, ADroppedFileIsOneCommandAndThePatchPlaysIt) {
    struct Steps final : CommandListener {
        void commandBegins(const std::string& name) override { names.push_back(name); }
        void commandEnded() override {}
        void patchLoaded() override {}
        void patchSaved() override {}
        Texts names;
    } steps;
    log.setListener(&steps);
    rig.clearParameters();
    dialogs.answerNext(true);
    EXPECT_TRUE(run(&SampleCommands::loadChosen, 0, 1, wave("x.wav", 9000), true));
    log.setListener(nullptr);
    EXPECT_EQ(steps.names, Texts{"Load sample 'x'"});
    EXPECT_EQ(sample(1).sampleRate, 13081u);
    EXPECT_EQ(audio.parameters().getListIndex(parameter::SynType1 + 1), sampleType);
    EXPECT_EQ(audio.parameters().getListIndex(parameter::SynType1), 0);
}

TEST_F(SampleMenu, ARefusedFileAsksNothingAndLeavesTheEarlierSample) {
    ASSERT_TRUE(audio.sampleLoader().loadSample(0, 0, wave("x.wav")));
    EXPECT_FALSE(run(&SampleCommands::loadChosen, 0, 0, folder / "missing.wav", true));
    EXPECT_TRUE(shown().empty());
    EXPECT_FALSE(run(&SampleCommands::loadChosen, 0, 0, put("y.wav", test::Bytes(100)), true));
    EXPECT_EQ(shown(), Texts{"Error: Invalid wav file header."});
    EXPECT_EQ(sample(0).length, 60);
}

TEST_F(SampleMenu, TheDialogStartsInTheFolderThatWasUsedLast) {
    dialogs.choosePathNext(wave("x.wav", 70));
    EXPECT_TRUE(run(&SampleCommands::loadSampleDialog, 1));
    EXPECT_EQ(shown(), Texts{"Autotune: Should the sample be tuned automatically (YES) or be tuned to C (NO)?"});
    EXPECT_EQ(sample(1).length, 70);
    EXPECT_FALSE(run(&SampleCommands::loadSampleDialog, 1)) << "the user goes back";
    ASSERT_EQ(dialogs.requests().size(), 2u);
    EXPECT_EQ(dialogs.requests()[0].startFolder, "");
    EXPECT_EQ(dialogs.requests()[1].startFolder, folder.path());
    EXPECT_EQ(dialogs.requests()[0].title, "Load a wave file (.wav file)");
}

TEST_F(SampleMenu, ExportAsksWhereIfThereIsSomethingToExport) {
    EXPECT_FALSE(run(&SampleCommands::editSample, 0, 0, exportCommand));
    EXPECT_TRUE(dialogs.requests().empty());
    ASSERT_TRUE(audio.sampleLoader().loadSample(0, 0, wave("x.wav")));
    EXPECT_FALSE(run(&SampleCommands::editSample, 0, 0, exportCommand)) << "the user goes back";
    dialogs.choosePathNext(folder / "out");
    EXPECT_FALSE(run(&SampleCommands::editSample, 0, 0, exportCommand)) << "the patch is the same";
    EXPECT_TRUE(platform::exists(folder / "out.wav"));
    dialogs.choosePathNext(folder / "none/out.wav");
    run(&SampleCommands::editSample, 0, 0, exportCommand);
    EXPECT_EQ(shown(),
              Texts{(folder / "none/out.wav") + ": File write error. File is write protected or opened by another application."});
}

TEST_F(SampleMenu, OtherEditsRunAsTheyAre) {
    constexpr int reverse = 11;
    ASSERT_TRUE(audio.sampleLoader().loadSample(0, 0, wave("x.wav", 99)));
    const std::int16_t first = sample(0).levels[0][0];
    EXPECT_TRUE(run(&SampleCommands::editSample, 0, 0, reverse));
    EXPECT_NE(sample(0).levels[0][0], first);
}

TEST_F(SampleMenu, CustomWavesComeFromTheFolderOfCyclesAndGoWhereTheUserSays) {
    dialogs.choosePathNext(wave("x.wav", 300));
    EXPECT_TRUE(run(&SampleCommands::resynthesizeDialog, 0, 0));
    ASSERT_EQ(dialogs.requests().size(), 1u);
    EXPECT_EQ(dialogs.requests()[0].startFolder, platform::wavetableFolder());
    EXPECT_FALSE(run(&SampleCommands::resynthesizeDialog, 0, 0)) << "the user goes back";
    dialogs.choosePathNext(folder / "cycle");
    EXPECT_TRUE(run(&SampleCommands::saveWaveDialog, 0, 0));
    EXPECT_TRUE(platform::exists(folder / "cycle.wav"));
    EXPECT_FALSE(run(&SampleCommands::saveWaveDialog, 0, 0));
    dialogs.choosePathNext(put("bad.wav", test::Bytes(100)));
    EXPECT_FALSE(run(&SampleCommands::resynthesizeDialog, 0, 0));
    EXPECT_EQ(shown(), Texts{(folder / "bad.wav") + ": Invalid wav file header."});
}

}  // namespace
}  // namespace vantoric
