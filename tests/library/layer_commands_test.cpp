#include "library/layer_commands.h"

#include <atomic>
#include <thread>

#include "library/history.h"
#include "tests/library/menu_bench.h"

namespace vantoric {
namespace {

namespace par = parameter;
using Texts = std::vector<std::string>;

constexpr char writeError[] =
    "File write error. File is write protected, opened by another application or the path does not exist.";
constexpr int sampleRow = 3;  // of the list of synthesis types

struct Layers : ::testing::Test, test::MenuBench {
    LayerCommands& layers = menus.layers();
    void loadToLayer(int target, const std::string& name) {
        onShow.loadTarget = target;
        menus.library().findPatch(name);
        menus.library().loadSelectedPatch();
    }
};

TEST_F(Layers, ALayerTravelsToAnotherInstance) {
    setCut(2, 0.7f);
    rig.setList(par::SynType1, sampleRow, 2);
    putSound(2, 0, 500, 1234);
    onShow.layer = 2;
    menus.copy(2);
    EXPECT_EQ(userFiles(), Texts{"CopyLayer.fxp"}) << "backups are gone";

    test::EngineRig other;
    other.clearParameters();
    other.audio.messages().take();  // of a start without factory sounds
    OnShow otherShow{1, false, 0};
    MenuCommands otherMenus(other.audio, otherShow, dialogs);
    otherMenus.paste(4);
    EXPECT_EQ(other.audio.parameters().getParameter(hostIndex(par::Cutoff1, 1)), 0.7f);
    EXPECT_EQ(other.audio.parameters().getParameter(par::Layer1On + 1), 1.0f);
    EXPECT_EQ(other.audio.parameters().getParameter(par::Cutoff1), 0.0f);
    const Sample& sample = other.audio.layer(1).sample(0);
    ASSERT_EQ(sample.length, 500);
    EXPECT_EQ(sample.levels[0][250], 1234);
    EXPECT_TRUE(shown().empty());
}

TEST_F(Layers, CopyingChangesNothingThatAPlayerHears) {
    menus.library().findPatch("none");
    putSound(1, 2, 300, 7);  // of an oscillator that plays no sample: no patch file would hold it
    setCut(1, 0.3f);
    const auto before = values();
    onShow.layer = 1;
    menus.copy(2);
    auto after = values();
    for (int layer = 0; layer < layerCount; ++layer)
        for (int row = 0; row < 16; ++row) after[hostIndex(par::MatVal1 + row, layer)] = 0.0f;  // empty rows are cleared
    EXPECT_EQ(after, before);
    EXPECT_EQ(audio.layer(1).sample(2).length, 300);
    EXPECT_EQ(name(), "Mine");
    EXPECT_EQ(onShow.layer, 1);
}

// With a history, as the window has one.
struct LayersWithHistory : Layers {
    struct Forwarded : CommandListener {
        explicit Forwarded(History& h) : history(h) {}
        void commandBegins(const std::string& name) override { history.commandBegins(name); }
        void commandEnded() override { history.commandEnded(); }
        void patchLoaded() override { history.markLoaded(); }
        void patchSaved() override { history.markSaved(); }
        History& history;
    };
    LayersWithHistory() {
        menus.log().setListener(&forwarded);
        for (int layer = 0; layer < layerCount; ++layer)  // rows that are empty, as a load leaves them
            for (int row = 0; row < storedMatrixSlots; ++row) rig.set(par::MatVal1 + row, 0.5f, layer);
        edits.change(hostIndex(par::Cutoff1, 1), 0.3f);
    }
    ~LayersWithHistory() override { menus.log().setListener(&commands); }
    void expectAllStepsAreThere() {
        EXPECT_TRUE(history.isChanged()) << "what was turned is in no file yet";
        EXPECT_EQ(history.undoCount(), 1u);
        EXPECT_TRUE(history.undo());
        EXPECT_EQ(cut(1), 0.0f);
    }

    ParameterEdits edits{audio};
    History history{audio, edits, nullptr};
    Forwarded forwarded{history};
};

TEST_F(LayersWithHistory, CopyingALayerLeavesAllStepsToTakeBack) {
    onShow.layer = 1;
    menus.copy(2);
    expectAllStepsAreThere();
}

TEST_F(LayersWithHistory, SavingALayerLeavesAllStepsToTakeBack) {
    dialogs.choosePathNext(platform::userFolder() + "solo");
    menus.file(9);
    EXPECT_EQ(userFiles(), Texts{"solo.fxp"});
    expectAllStepsAreThere();
}

TEST_F(LayersWithHistory, ASaveOfALayerThatIsCalledOffLeavesThemToo) {
    menus.file(9);  // no path is chosen
    EXPECT_TRUE(userFiles().empty());
    expectAllStepsAreThere();
}

TEST_F(Layers, APatchGoesToALayer) {
    putPatch("Bass", "Deep", 0.25f);
    setCut(0, 0.9f);
    loadToLayer(3, "Deep");
    EXPECT_EQ(cut(2), 0.25f);
    EXPECT_EQ(cut(0), 0.9f);
    EXPECT_EQ(value(par::Layer1On + 2), 1.0f);
    EXPECT_EQ(value(par::Volume), 0.0f) << "global values stay";
    EXPECT_EQ(name(), "Deep");
    EXPECT_EQ(onShow.loadTarget, 0);
    EXPECT_EQ(menus.patch().category(), "Custom") << "a quick save would put four layers in the place of one patch";
    EXPECT_EQ(commands.names, Texts{"Load 'Deep' to layer 3"});
    EXPECT_EQ(commands.ended, 1);
    EXPECT_TRUE(userFiles().empty());
}

TEST_F(Layers, ALongNameIsNotTaken) {
    const std::string longest = "abcdefghijklmnopqrstuvwxyz", tooLong = longest + "1";
    putPatch("Bass", longest);
    putPatch("Bass", tooLong);
    loadToLayer(2, tooLong);
    EXPECT_EQ(name(), "Mine");
    EXPECT_EQ(value(par::Layer1On + 1), 1.0f);
    loadToLayer(2, longest);
    EXPECT_EQ(name(), longest);
}

TEST_F(Layers, ABadPatchLeavesThePatchThatWasThere) {
    const std::string bad = putBadPatch("Bass", "bad");
    setCut(2, 0.6f);
    const auto before = values();
    loadToLayer(3, "bad");
    EXPECT_EQ(values(), before) << "the layer's switch too";
    EXPECT_EQ(shown(), Texts{bad + ": This file is not compatible with this product."});
    EXPECT_EQ(name(), "Mine");
    EXPECT_EQ(onShow.loadTarget, 0);
    EXPECT_TRUE(userFiles().empty());
}

TEST_F(Layers, WithoutAPlaceForBackupsMemoryServes) {
    putPatch("Bass", "Deep", 0.25f);
    setCut(0, 0.9f);
    const std::string folder = platform::userFolder().substr(0, platform::userFolder().size() - 1);
    std::filesystem::remove_all(folder);
    ASSERT_TRUE(platform::writeFile(folder, nullptr, 0)) << "no folder, and none can be made";
    loadToLayer(2, "Deep");
    EXPECT_EQ(cut(1), 0.25f);
    EXPECT_EQ(cut(0), 0.9f);
    EXPECT_EQ(shown(), Texts{platform::userFolder() + "MergedLayers.fxp: " + writeError});
    menus.copy(2);
    EXPECT_EQ(cut(0), 0.9f);
    EXPECT_EQ(shown(), (Texts{platform::userFolder() + "CopyBackup.fxp: " + writeError,
                              platform::userFolder() + "CopyLayer.fxp: " + writeError}));
}

TEST_F(Layers, ABackupThatACrashLeftIsNotTakenForOurs) {
    putPatch("Bass", "Deep", 0.25f);
    putPatch("User", "MergedLayers", 0.75f);
    setCut(0, 0.9f);
    // The file can't be replaced: its folder is a link to one that is gone by then.
    struct Replacing : PatchFileListener {
        void patchFile(FileAction action, const std::string& path) override {
            if (action == FileAction::read && path.find("Deep") != std::string::npos)
                std::filesystem::copy_file(patchPath("User", "Foreign"), patchPath("User", "MergedLayers"),
                                           std::filesystem::copy_options::overwrite_existing);
        }
    } replacing;
    putPatch("User", "Foreign", 0.75f);
    audio.patchFiles().setListener(&replacing);
    loadToLayer(2, "Deep");
    EXPECT_EQ(cut(0), 0.9f) << "another instance wrote its own in between";
    EXPECT_EQ(cut(1), 0.25f);
}

TEST_F(Layers, PastingWithoutACopiedFileHintsAndOnlySwitchesTheLayerOn) {
    setCut(3, 0.4f);
    onShow.layer = 3;
    menus.paste(4);
    EXPECT_EQ(shown(), Texts{"Hint: You need to copy a layer before you can paste it."});
    EXPECT_EQ(cut(3), 0.4f);
    EXPECT_EQ(value(par::Layer1On + 3), 1.0f);
    EXPECT_EQ(name(), "Mine");
    const std::string path = putBadPatch("User", "CopyLayer");
    menus.paste(4);
    EXPECT_EQ(shown(), (Texts{path + ": This file is not compatible with this product.",
                              "Hint: You need to copy a layer before you can paste it."}));
    EXPECT_EQ(cut(3), 0.4f);
}

TEST_F(Layers, ALayerBecomesAPatch) {
    setCut(1, 0.35f);
    rig.setList(par::SynType1 + 1, sampleRow, 1);
    putSound(1, 1, 90, 5);
    dialogs.choosePathNext(platform::userFolder() + "solo");
    menus.file(9);
    EXPECT_EQ(name(), "Mine");
    EXPECT_EQ(cut(1), 0.35f);
    EXPECT_EQ(audio.layer(1).sample(1).length, 90);
    EXPECT_EQ(userFiles(), Texts{"solo.fxp"});
    const auto saved = std::make_unique<SparePatch>(audio.messages());
    ASSERT_TRUE(saved->files().loadPatchFile(platform::userFolder() + "solo.fxp"));
    EXPECT_EQ(saved->parameters().getParameter(par::Cutoff1), 0.35f);
    EXPECT_EQ(saved->parameters().getParameter(par::Layer1On), 1.0f);
    EXPECT_EQ(saved->parameters().getParameter(par::Layer1On + 1), 0.0f);
    EXPECT_EQ(saved->parts().samples[1]->length, 90);
}

TEST_F(Layers, AnOscillatorTakesItsSampleAndWaveAlong) {
    putSound(0, 1, 77, 9);
    audio.layer(0).customWave(1).cycle[5] = 4321;
    menus.copy(4);
    onShow.layer = 2;
    menus.paste(7);
    EXPECT_EQ(audio.layer(2).sample(2).length, 77);
    EXPECT_EQ(audio.layer(2).sample(0).length, 0);
    EXPECT_EQ(audio.layer(2).customWave(2).cycle[5], 4321);
    EXPECT_EQ(commands.names, Texts{"Paste OSC3"});
}

TEST_F(Layers, ACompletePatchComesBackWithItsName) {
    setCut(0, 0.2f);
    menus.copy(0);
    setCut(0, 0.8f);
    audio.program().setProgramName("Other");
    menus.paste(2);
    EXPECT_EQ(cut(0), 0.2f);
    EXPECT_EQ(name(), "Mine");
}

TEST_F(Layers, AStackIsOneStepOfTheHistory) {
    setCut(0, 0.5f);
    menus.copy(22);
    EXPECT_EQ(cut(3), 0.5f);
    EXPECT_EQ(commands.names, Texts{"Stack 4x"});
    EXPECT_EQ(commands.ended, 1);
    EXPECT_FALSE(stackingOfRow(10));
    EXPECT_FALSE(stackingOfRow(23));
}

TEST_F(Layers, LayersComeAndGoWhileNotesPlay) {
    rig.plainLayer();
    putPatch("Bass", "Deep", 0.4f);
    putSound(0, 0, 4000, 8000);
    std::atomic<bool> stop{false};
    std::thread player([&] {
        std::vector<float> left(256), right(256);
        for (int block = 0; !stop; ++block) {
            if (block % 20 == 0) audio.receive({0, 0x90, static_cast<std::uint8_t>(40 + block % 40), 100});
            audio.render(left.data(), right.data(), 256, rig.host.transport);
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
    });
    for (int round = 0; round < 4; ++round) {
        onShow.layer = round;
        for (const int row : {2, 3, 0, 12, 21}) menus.copy(row);
        for (const int row : {4, 5, 8, 9, 2}) menus.paste(row);
        loadToLayer(round + 1, "Deep");
        menus.init(round);
    }
    stop = true;
    player.join();
    EXPECT_TRUE(shown().empty());
}

}  // namespace
}  // namespace vantoric
