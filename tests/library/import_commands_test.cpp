#include "library/import_commands.h"

#include <gtest/gtest.h>

#include "platform/module_folder.h"
#include "tests/library/ended.h"
#include "tests/library/library_bench.h"

namespace vantoric {
namespace {

using Texts = std::vector<std::string>;

struct ImportMenu : ::testing::Test, test::LibraryBench {
    ImportMenu() {
        rig.clearParameters();
        rig.plainLayer();
        EXPECT_TRUE(platform::makeFolder(platform::bankFolder()));
    }
    ~ImportMenu() override {
        platform::removeFile(QuickImport::sampleTemplate());
        platform::removeFile(QuickImport::vocoderTemplate());
    }
    void makeTemplates() {
        EXPECT_TRUE(audio.patchFiles().savePatchFile(QuickImport::sampleTemplate()));
        EXPECT_TRUE(audio.patchFiles().savePatchFile(QuickImport::vocoderTemplate()));
        audio.program().setProgramName("Mine");
    }
    template <class Command, class... Given>
    bool import(Command command, Given... given) {
        return test::ended(imports, command, given...);
    }
    std::string sfz(const std::string& text) { return put("Grand Piano.sfz", test::Bytes(text.begin(), text.end())); }
};

TEST_F(ImportMenu, AUserWhoGoesBackKeepsThePatch) {
    makeTemplates();
    EXPECT_FALSE(import(&ImportCommands::importSample));
    EXPECT_FALSE(import(&ImportCommands::importVocoder));
    EXPECT_FALSE(import(&ImportCommands::importSfzDialog));
    EXPECT_EQ(audio.program().getProgramName(), "Mine");
    dialogs.choosePathNext(put("bad.wav", test::Bytes(100)));
    EXPECT_FALSE(import(&ImportCommands::importSample));
    EXPECT_EQ(shown().back(), "Error: Invalid wav file header.");
    EXPECT_EQ(audio.program().getProgramName(), "Mine");
}

TEST_F(ImportMenu, AQuickImportTakesTheChosenFile) {
    EXPECT_FALSE(import(&ImportCommands::importSample));
    EXPECT_TRUE(dialogs.requests().empty()) << "without a template there is nothing to choose for";
    makeTemplates();
    dialogs.choosePathNext(wave("Kick.wav", 60, 2));
    EXPECT_TRUE(import(&ImportCommands::importSample));
    EXPECT_EQ(sample(1).length, 60);
    EXPECT_EQ(audio.program().getProgramName(), "Kick");
    EXPECT_FALSE(import(&ImportCommands::importSample));
    EXPECT_EQ(dialogs.requests().back().startFolder, folder.path());
}

TEST_F(ImportMenu, AVocoderHintsWhatToChoose) {
    EXPECT_FALSE(import(&ImportCommands::importVocoder));
    EXPECT_EQ(shown(), Texts{"Error: The factory sounds are missing. Please reinstall the software."});
    dialogs.clear();
    makeTemplates();
    dialogs.choosePathNext(wave("Speech.wav"));
    EXPECT_TRUE(import(&ImportCommands::importVocoder));
    EXPECT_EQ(shown(), Texts{"Hint: Now select a speech sample or a drumline..."});
    EXPECT_EQ(audio.program().getProgramName(), "Speech");
}

// A user who cancels whatever takes time.
struct Impatient : platform::RecordedDialogs {
    void work(platform::Work work, platform::OnAnswer then) override {
        texts.push_back(work.title + " " + work.text);
        work.cancel();
        work.run();
        then(false);
    }
    std::vector<std::string> texts;
};

TEST_F(ImportMenu, WhatIsCancelledLeavesThePatchAsItWas) {
    makeTemplates();
    Impatient impatient;
    WaveChooser asked(impatient);
    ImportCommands impatientImports(audio.quickImport(), audio.sfzImport(), asked, audio.messages(), impatient, log);
    SampleCommands impatientSamples(audio.sampleLoader(), audio.sampleEditor(), audio.customWaveLoader(), asked, audio.messages(),
                                    impatient, log);
    ASSERT_TRUE(audio.sampleLoader().loadSample(0, 0, wave("earlier.wav", 70)));
    const auto parameters = [&] {
        std::vector<float> all;
        for (int i = 0; i < parameterCount; ++i) all.push_back(audio.parameters().getParameter(i));
        return all;
    };
    const std::vector<float> before = parameters();
    const std::string later = wave("later.wav", 600, 2), instrument = sfz("<region> sample=later.wav key=1\n");
    impatient.choosePathNext(later);
    impatient.choosePathNext(later);
    EXPECT_FALSE(test::ended(impatientImports, &ImportCommands::importSample));
    EXPECT_FALSE(test::ended(impatientImports, &ImportCommands::importVocoder));
    EXPECT_FALSE(test::ended(impatientImports, &ImportCommands::importSfz, instrument));
    EXPECT_FALSE(test::ended(impatientSamples, &SampleCommands::loadChosen, 0, 0, later, true));
    const auto samplesBefore = [&] {
        const Sample& earlier = sample(0);
        return std::vector<std::int16_t>(earlier.levels[0].get(), earlier.levels[0].get() + earlier.length);
    };
    const auto earlier = samplesBefore();
    constexpr int reverse = 11;
    EXPECT_FALSE(test::ended(impatientSamples, &SampleCommands::editSample, 0, 0, reverse));
    impatient.choosePathNext(folder / "out.wav");
    EXPECT_FALSE(test::ended(impatientSamples, &SampleCommands::editSample, 0, 0, exportCommand));
    EXPECT_FALSE(platform::exists(folder / "out.wav"));
    EXPECT_EQ(samplesBefore(), earlier);
    EXPECT_EQ(impatient.texts, (Texts{"Importing later.wav", "Importing later.wav", "Importing Grand Piano.sfz",
                                      "Loading later.wav", "Editing Reverse", "Saving out.wav"}));
    ASSERT_EQ(impatient.boxes().size(), 1u) << "no question, and nothing but the hint before the choice";
    EXPECT_EQ(impatient.boxes()[0].title, "Hint");
    EXPECT_EQ(parameters(), before);
    EXPECT_EQ(sample(0).length, 70);
    EXPECT_EQ(audio.program().getProgramName(), "Mine");
}

TEST_F(ImportMenu, SeveralGroupsAreAQuestion) {
    wave("a.wav", 70);
    wave("b.wav", 80);
    const std::string path = sfz("<group>\n<region> sample=a.wav key=1\n<group>\n<region> sample=b.wav key=2\n");
    EXPECT_TRUE(import(&ImportCommands::importSfz, path)) << "nobody answers: No";
    EXPECT_EQ(sample(1).length, 0);
    dialogs.answerNext(true);
    EXPECT_TRUE(import(&ImportCommands::importSfz, path));
    EXPECT_EQ(sample(1).length, 80);
    dialogs.callOffNext();
    EXPECT_FALSE(import(&ImportCommands::importSfz, path));
    EXPECT_EQ(sample(1).length, 80) << "called off, it imports nothing";
    ASSERT_FALSE(dialogs.boxes().empty());
    EXPECT_TRUE(dialogs.boxes()[0].isQuestion);
    EXPECT_EQ(dialogs.boxes()[0].title, "Warning");
    EXPECT_EQ(dialogs.boxes()[0].text,
              "This *.sfz file is not supported and contains more than one <group>. Should all groups be merged?");
}

TEST_F(ImportMenu, TheDialogAsksForAnSfzFileAndTellsWhatIsMissing) {
    dialogs.choosePathNext(sfz("<region> sample=a.wav key=60\n"));
    EXPECT_TRUE(import(&ImportCommands::importSfzDialog));
    EXPECT_EQ(dialogs.requests()[0].extension, ".sfz");
    EXPECT_EQ(shown(), Texts{"Error: File not found: a.wav"});
    EXPECT_FALSE(import(&ImportCommands::importSfz, folder / "none.sfz"));
    EXPECT_EQ(shown().back(), "Error: File read error");
}

}  // namespace
}  // namespace vantoric
