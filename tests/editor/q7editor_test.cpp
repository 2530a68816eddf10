#include "editor/model/q7editor.h"

#include <gtest/gtest.h>

#include "editor/model/menu_rows.h"
#include "editor/model/spoken_values.h"
#include "library/web_pages.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "tests/editor/editor_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

using test::EditorRig;
namespace par = parameter;

const ControlEntry& entryOf(const char* name) { return controlEntry(controlIndexForName(name)); }

// What the host hears of gestures.
struct NotedHost : HostPort {
    std::vector<std::string> heard;
    void editBegun(int index) override { heard.push_back("begin " + std::to_string(index)); }
    void parameterEdited(int index, float) override { heard.push_back("set " + std::to_string(index)); }
    void editEnded(int index) override { heard.push_back("end " + std::to_string(index)); }
    void patchChanged() override {}
    void latencyChanged(int) override {}
    bool sizeWanted(int, int) override { return true; }
};

// ---- values

TEST(Q7Editor, ADragIsOneGestureForTheHost) {
    EditorRig rig;
    NotedHost host;
    rig.audio.setHostPort(&host);
    rig.editor.beginEdit(par::Cutoff1);
    rig.editor.valueChanged(par::Cutoff1, 0.4f, false);
    rig.editor.valueChanged(par::Cutoff1, 0.5f, false);
    rig.editor.endEdit(par::Cutoff1);
    rig.audio.setHostPort(nullptr);
    EXPECT_EQ(host.heard, (std::vector<std::string>{"begin 97", "set 97", "set 97", "end 97"}));
}

// The host would keep the parameter for touched.
TEST(Q7Editor, AWindowThatClosesInADragEndsTheGesture) {
    EditorRig rig;
    NotedHost host;
    rig.audio.setHostPort(&host);
    rig.editor.beginEdit(par::Cutoff1);
    rig.editor.close(0);
    rig.audio.setHostPort(nullptr);
    EXPECT_EQ(host.heard, (std::vector<std::string>{"begin 97", "end 97"}));
}

TEST(Q7Editor, AGestureStaysOnTheLayerThatItBeganOn) {
    EditorRig rig;
    rig.editor.beginEdit(par::Cutoff1);
    rig.editor.showLayer(2);
    rig.editor.valueChanged(par::Cutoff1, 0.75f, false);
    rig.editor.endEdit(par::Cutoff1);
    EXPECT_EQ(rig.value(par::Cutoff1), 0.75f);
    EXPECT_EQ(rig.value(hostIndex(par::Cutoff1, 2)), 0.0f);
}

TEST(Q7Editor, MultilayerEditingChangesAllLayersButNothingGlobal) {
    EditorRig rig;
    rig.editor.toggleMultilayer();
    rig.editor.valueChanged(par::Reso1, 0.25f, false);
    rig.editor.valueChanged(par::EqLow, 0.75f, false);
    for (int layer = 0; layer < layerCount; ++layer) EXPECT_EQ(rig.value(hostIndex(par::Reso1, layer)), 0.25f) << layer;
    EXPECT_EQ(rig.value(par::EqLow), 0.75f);
}

TEST(Q7Editor, ATouchWakesTheLayerOnShowAndNoOther) {
    EditorRig rig;
    rig.editor.showLayer(1);
    rig.editor.toggleMultilayer();
    rig.editor.valueChanged(par::Cutoff1, 0.5f, true);
    for (int layer = 0; layer < layerCount; ++layer)
        EXPECT_EQ(rig.value(par::Layer1On + layer), layer == 1 ? 1.0f : 0.0f) << layer;
}

TEST(Q7Editor, WhatTheLeftButtonDoesNotHoldWakesNoLayer) {
    EditorRig rig;
    rig.editor.touch(par::Cutoff1, false);
    rig.editor.valueChanged(par::Cutoff1, 0.5f, false);
    rig.editor.rowChosen(par::LfoWave1, 3, false);
    EXPECT_EQ(rig.value(par::Layer1On), 0.0f);
    rig.editor.rowChosen(par::LfoWave1, 4);
    EXPECT_EQ(rig.value(par::Layer1On), 1.0f);
}

TEST(Q7Editor, AGlobalControlOrAPageWakesNoLayer) {
    EditorRig rig;
    rig.editor.valueChanged(par::Volume, 0.5f, true);
    rig.editor.valueChanged(tag::lfoPage1 + 1, 1.0f, true);
    EXPECT_EQ(rig.value(par::Layer1On), 0.0f);
}

TEST(Q7Editor, ALayerCanBeSwitchedOffWithTheButtonHeld) {
    EditorRig rig;
    rig.rig.set(par::Layer1On, 1.0f);
    rig.editor.valueChanged(par::Layer1On, 0.0f, true);
    EXPECT_EQ(rig.value(par::Layer1On), 0.0f);
}

TEST(Q7Editor, TheTextOfASpeedMovesTheSpeed) {
    EditorRig rig;
    rig.editor.valueChanged(tag::lfoSpeedText1 + 1, 0.5f, false);
    EXPECT_EQ(rig.value(par::LfoSpd1 + 1), 0.5f);
    EXPECT_EQ(rig.editor.textOf(controlEntry(controlIndexForTag(tag::lfoSpeedText1 + 1))), "5.29 Hz");
    EXPECT_TRUE(rig.view.hasRedrawn("LFO2 SPEED"));
}

TEST(Q7Editor, WithoutAWindowAHandDoesNothing) {
    EditorRig rig;
    rig.editor.close(0);
    rig.editor.beginEdit(par::Cutoff1);
    rig.editor.valueChanged(par::Cutoff1, 0.5f, true);
    rig.editor.rowChosen(par::FxMaType, 2);
    rig.editor.knobRowChosen(par::Cutoff1, resetValueRow);
    rig.editor.idle();
    EXPECT_EQ(rig.values(), EditorRig().values());
}

TEST(Q7Editor, UnknownTagsAndRowsDoNothing) {
    EditorRig rig;
    const auto before = rig.values();
    for (const int tag : {-1, 324, 1223, 1224, 1273, 5000, 1 << 30}) {
        rig.editor.beginEdit(tag);
        rig.editor.valueChanged(tag, 1.0f, true);
        rig.editor.rowChosen(tag, 3);
        rig.editor.endEdit(tag);
    }
    rig.editor.rowChosen(tag::helpMenu, 99);
    rig.editor.rowChosen(par::FxMaType, -1);
    EXPECT_EQ(rig.values(), before);
}

// ---- effects

TEST(Q7Editor, AnEffectThatIsChosenComesWithItsDefaults) {
    EditorRig rig;
    rig.rig.set(par::Layer1On, 1.0f);
    rig.editor.rowChosen(par::FxInType, 2);
    EXPECT_EQ(rig.value(par::FxInType), listValue(2));
    const ControlEntry& field = entryOf("INS FX1 PAR1");
    EXPECT_EQ(rig.editor.effectField(field.tag).type, 2);
    EXPECT_EQ(rig.editor.effectField(field.tag).parameter, 1);
    EXPECT_FALSE(rig.editor.textOf(field).empty());
    EXPECT_TRUE(rig.view.hasRedrawn("INS FX1 PAR4"));
}

TEST(Q7Editor, WithMultilayerEditingTheEffectIsThatOfAllLayers) {
    EditorRig rig;
    rig.editor.toggleMultilayer();
    rig.editor.rowChosen(par::FxIn2Type, 6);
    for (int layer = 1; layer < layerCount; ++layer)
        for (int n = par::FxIn2Type; n < par::FxIn2Type + 6; ++n)
            EXPECT_EQ(rig.value(hostIndex(n, layer)), rig.value(n)) << n << " of layer " << layer;
    EXPECT_NE(rig.value(par::FxIn2Par1), 0.0f);
}

// ---- pages

TEST(Q7Editor, ASelectorShowsItsPage) {
    EditorRig rig;
    EXPECT_TRUE(rig.editor.isVisible(entryOf("VOL ENV ATTACK")));
    rig.editor.valueChanged(tag::envelopePage1 + 2, 1.0f, true);
    EXPECT_FALSE(rig.editor.isVisible(entryOf("VOL ENV ATTACK")));
    EXPECT_TRUE(rig.editor.isVisible(entryOf("AUX1 ENV ATTACK")));
    EXPECT_EQ(rig.editor.valueOf(tag::envelopePage1 + 2), 1.0f);
    EXPECT_EQ(rig.editor.valueOf(tag::envelopePage1), 0.0f);
    EXPECT_EQ(rig.view.pagesShown, 1);
}

TEST(Q7Editor, AnotherTypeOfSynthesisShowsItsControls) {
    EditorRig rig;
    EXPECT_TRUE(rig.editor.isVisible(entryOf("WAVE OSC1")));
    rig.editor.rowChosen(par::SynType1, 3);
    EXPECT_FALSE(rig.editor.isVisible(entryOf("WAVE OSC1")));
    EXPECT_TRUE(rig.editor.isVisible(entryOf("OSC1 LOOP")));
    EXPECT_EQ(rig.view.pagesShown, 1);
}

TEST(Q7Editor, ALayerShowsItsOwnValues) {
    EditorRig rig;
    rig.rig.set(hostIndex(par::Cutoff1, 3), 0.75f);
    rig.editor.valueChanged(tag::layer1 + 3, 1.0f, true);
    EXPECT_EQ(rig.editor.valueOf(par::Cutoff1), 0.75f);
    EXPECT_EQ(rig.editor.onShow().layer, 3);
    EXPECT_EQ(rig.audio.sampleLoader().currentLayer, 3) << "samples go to the layer that is seen";
    EXPECT_EQ(rig.view.redrawnAll, 1);
}

// ---- knobs

TEST(Q7Editor, ASourceFromAKnobsMenuShowsOnTheKnobAndInTheMatrix) {
    EditorRig rig;
    rig.editor.valueChanged(tag::matrixPage2, 1.0f, false);
    rig.editor.knobSourceChosen(par::Cutoff1, lfoRows);
    const KnobState knob = rig.editor.knobState(entryOf("FIL1 CUTOFF"));
    EXPECT_EQ(knob.modCount, 1);
    EXPECT_EQ(knob.modNames, "Lfo1+");
    EXPECT_TRUE(rig.editor.isVisible(entryOf("MOD SOURCE1")));
    rig.editor.knobRowChosen(par::Cutoff1, removeModulationRow);
    EXPECT_EQ(rig.editor.knobState(entryOf("FIL1 CUTOFF")).modCount, 0);
}

TEST(Q7Editor, TheModulationOfAKnobIsThatOfTheLayerOnShow) {
    EditorRig rig;
    rig.editor.knobSourceChosen(par::Cutoff1, lfoRows);
    rig.editor.showLayer(1);
    EXPECT_EQ(rig.editor.modulationOf(entryOf("FIL1 CUTOFF")).modCount, 0);
    rig.editor.showLayer(0);
    EXPECT_EQ(rig.editor.modulationOf(entryOf("FIL1 CUTOFF")).modCount, 1);
}

TEST(Q7Editor, ADropOnAKnobMakesAnEntryOfTheTabThatIsSelected) {
    EditorRig rig;
    rig.editor.valueChanged(tag::envelopePage1 + 1, 1.0f, false);
    const ControlEntry& knob = entryOf("FIL2 RESO");
    const int source = rig.editor.draggedSource(WindowPart::DragEnvelope);
    rig.editor.dropSource(source, static_cast<float>(knob.x + 3), static_cast<float>(knob.y - 4));
    EXPECT_EQ(rig.editor.knobState(knob).modNames, "Filt Env");
    EXPECT_EQ(rig.editor.dropTarget(700.0f, 415.0f), -1) << "between the panels";
}

TEST(Q7Editor, ADropIsFoundInTheLargeLayoutToo) {
    EditorRig rig;
    rig.view.primary = {8000, 6000};
    rig.editor.rowChosen(tag::editorMenu, 3);
    const ControlEntry& knob = entryOf("FIL2 RESO");
    EXPECT_EQ(rig.editor.dropTarget(1.5f * static_cast<float>(knob.x), 1.5f * static_cast<float>(knob.y)),
              controlIndexForName("FIL2 RESO"));
}

TEST(Q7Editor, AKnobThatLearnsSaysSo) {
    EditorRig rig;
    rig.editor.knobRowChosen(par::Cutoff1, learnRow);
    ASSERT_EQ(rig.view.hints.size(), 1u);
    EXPECT_EQ(rig.view.hints[0], "Assign the next Midi CC to this knob. Move your controler!");
    EXPECT_EQ(rig.editor.ccNumberOf(entryOf("FIL1 CUTOFF")), MidiLearn::learning);
    rig.rig.send({{0xb0, 74, 100}});
    rig.rig.block(64);
    rig.editor.idle();
    EXPECT_EQ(rig.editor.ccNumberOf(entryOf("FIL1 CUTOFF")), 74);
    EXPECT_EQ(rig.view.redrawnAll, 2) << "once for the command, once for the controller";
    rig.editor.rowChosen(tag::helpMenu, help_row::removeControllers);
    EXPECT_EQ(rig.editor.ccNumberOf(entryOf("FIL1 CUTOFF")), MidiLearn::noController);
}

// ---- menus and buttons

TEST(Q7Editor, ASizeThatIsChosenRebuildsTheWindow) {
    EditorRig rig;
    rig.editor.rowChosen(tag::editorMenu, 4);
    EXPECT_EQ(rig.editor.size().sizeIndex(), 4);
    EXPECT_EQ(rig.view.rebuilt, 1);
    EXPECT_TRUE(rig.view.zooms.empty());
    rig.editor.rowChosen(tag::zoomMenu, 14);
    EXPECT_EQ(rig.view.rebuilt, 2);
    EXPECT_EQ(rig.view.zooms, std::vector<double>{0.5});
}

TEST(Q7Editor, ASizeThatIsRefusedChangesNothing) {
    EditorRig rig;
    rig.view.primary = {1000, 600};
    rig.editor.rowChosen(tag::editorMenu, 4);
    EXPECT_EQ(rig.editor.size().sizeIndex(), 0);
    EXPECT_EQ(rig.view.rebuilt, 0);
}

TEST(Q7Editor, TheHelpMenuOpensPagesAndCredits) {
    EditorRig rig;
    for (const int row : {help_row::home, help_row::downloadSounds, help_row::tutorial, help_row::manual, help_row::updates})
        rig.editor.rowChosen(tag::helpMenu, row);
    rig.editor.rowChosen(tag::helpMenu, help_row::credits);
    rig.editor.valueChanged(tag::shop, 1.0f, true);
    std::vector<std::string> expected;
    for (const WebPage page :
         {WebPage::home, WebPage::sounds, WebPage::tutorial, WebPage::manual, WebPage::updates, WebPage::shop})
        expected.push_back(addressOf(page));
    EXPECT_EQ(rig.pages, expected);
    EXPECT_EQ(rig.view.creditsShown, 1);
}

TEST(Q7Editor, TheVersionLeadsToTheUpdatesOnlyAfterAYes) {
    EditorRig rig;
    rig.editor.rowChosen(tag::helpMenu, help_row::version);
    EXPECT_TRUE(rig.pages.empty());
    rig.dialogs.answerNext(true);
    rig.editor.rowChosen(tag::helpMenu, help_row::version);
    EXPECT_EQ(rig.pages, std::vector<std::string>{addressOf(WebPage::updates)});
    ASSERT_EQ(rig.dialogs.boxes().size(), 2u);
    EXPECT_EQ(rig.dialogs.boxes()[0].title, "Version info");
}

TEST(Q7Editor, ThePencilOpensTheSamplesMenu) {
    EditorRig rig;
    rig.editor.valueChanged(tag::sampleEdit1 + 2, 1.0f, false);
    ASSERT_EQ(rig.view.menus.size(), 1u);
    EXPECT_STREQ(controlEntry(rig.view.menus[0]).name, "OSC2 EDIT");
}

TEST(Q7Editor, ASampleThatIsNotThereCannotBeEdited) {
    EditorRig rig;
    rig.editor.rowChosen(tag::sampleEdit1, 11);
    ASSERT_EQ(rig.dialogs.boxes().size(), 1u);
    EXPECT_EQ(rig.dialogs.boxes()[0].text, "You must load a sample before you can edit it.");
}

TEST(Q7Editor, AButtonActsWhenItIsLetGoOfAndOnlyOnce) {
    EditorRig rig;
    rig.editor.valueChanged(tag::browser, 1.0f, true);
    rig.editor.valueChanged(tag::browser, 0.0f, false);
    EXPECT_EQ(rig.view.browsersToggled, 1);
}

// ---- patches

TEST(Q7Editor, TheMenusReachTheirCommands) {
    EditorRig rig;
    rig.rig.setList(par::MatSrc1, 3);
    rig.editor.rowChosen(tag::initMenu, init_row::matrix);
    EXPECT_EQ(rig.value(par::MatSrc1), 0.0f);
    rig.editor.rowChosen(tag::pasteMenu, paste_row::completePatch);
    ASSERT_EQ(rig.dialogs.boxes().size(), 1u);
    EXPECT_EQ(rig.dialogs.boxes()[0].text, "You need to copy a patch before you can paste it.");
    rig.editor.rowChosen(tag::fileMenu, file_row::downloadSounds);
    EXPECT_EQ(rig.pages, std::vector<std::string>{addressOf(WebPage::sounds)});
}

TEST(Q7Editor, ANewPatchShowsItsNameAndTheFirstPages) {
    EditorRig rig;
    rig.editor.showLayer(2);
    rig.editor.valueChanged(tag::lfoPage1 + 2, 1.0f, true);
    rig.editor.rowChosen(tag::initMenu, init_row::all);
    EXPECT_EQ(rig.editor.onShow().layer, 0);
    EXPECT_TRUE(rig.editor.pages().isSelected(tag::lfoPage1));
    EXPECT_TRUE(rig.editor.patchName().starts_with("Init ")) << rig.editor.patchName();
    EXPECT_GT(rig.view.namesShown, 0);
}

TEST(Q7Editor, AWindowThatOpensReadsTheListsAnew) {
    EditorRig rig;
    PatchLibrary& library = rig.editor.commands().library();
    const unsigned scans = library.patchScans();
    rig.editor.open(rig.view);
    EXPECT_EQ(library.patchScans(), scans) << "one that is only built anew does not";
    rig.editor.close(0);
    rig.editor.open(rig.view);
    EXPECT_GT(library.patchScans(), scans);
}

TEST(Q7Editor, ALoadToALayerAsksForThePatchInTheBrowser) {
    EditorRig rig;
    rig.editor.rowChosen(tag::fileMenu, file_row::loadToLayer1 + 2);
    EXPECT_EQ(rig.view.browsersOpened, 1);
    EXPECT_EQ(rig.editor.restingHint(), "Load a patch to synthesizer layer 3");
}

TEST(Q7Editor, APatchThatTheHostLoadsIsNamed) {
    EditorRig rig;
    rig.editor.idle();
    rig.view.forget();
    rig.audio.program().setProgramName("Glass");
    rig.editor.idle();
    EXPECT_EQ(rig.editor.patchName(), "Glass");
    EXPECT_EQ(rig.view.namesShown, 1);
    rig.editor.idle();
    EXPECT_EQ(rig.view.namesShown, 1) << "once is enough";
}

TEST(Q7Editor, AStarIsAFileAmongTheFavourites) {
    EditorRig rig;
    platform::makeFolder(folderOfPath(favouritePath("Star")));
    rig.audio.program().setProgramName("Star");
    EXPECT_EQ(rig.editor.valueOf(tag::favourite), 0.0f);
    rig.editor.valueChanged(tag::favourite, 1.0f, true);
    EXPECT_EQ(rig.editor.valueOf(tag::favourite), 1.0f);
    EXPECT_TRUE(rig.view.hasRedrawn(WindowPart::Favourite));
    rig.editor.valueChanged(tag::favourite, 0.0f, true);
    EXPECT_EQ(rig.editor.valueOf(tag::favourite), 1.0f) << "the user said No";
    rig.dialogs.answerNext(true);
    rig.editor.valueChanged(tag::favourite, 0.0f, true);
    EXPECT_EQ(rig.editor.valueOf(tag::favourite), 0.0f);
}

TEST(Q7Editor, TheWaveMenusRowsAreThoseOfTheFolder) {
    EditorRig rig;
    platform::makeFolder(platform::wavetableFolder());
    test::WaveMaker maker;
    const auto file = maker.putFrames(600, [](int i) { return 300 * (i % 60); }).file();
    platform::writeFile(platform::wavetableFolder() + "Vowel.wav", file.data(), file.size());
    const ControlEntry& menu = controlEntry(controlIndexForTag(tag::waveMenu1));
    const std::vector<std::string> rows = rig.editor.rowsOf(menu);
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[4], "Vowel");
    EXPECT_EQ(rig.editor.textOf(menu), "");
    rig.editor.rowChosen(tag::waveMenu1, 4);
    EXPECT_EQ(rig.editor.textOf(menu), "Vowel");
    platform::removeFile(platform::wavetableFolder() + "Vowel.wav");
}

TEST(Q7Editor, RowsOfAFixedListAreItsLabels) {
    EditorRig rig;
    EXPECT_EQ(rig.editor.rowsOf(entryOf("QUALITY")), (std::vector<std::string>{"Low CPU", "High quality", "Crossblend PW"}));
}

// ---- idle time

TEST(Q7Editor, TheStepOfTheArpeggiatorIsSeenWhileItPlays) {
    EditorRig rig;
    rig.rig.plainLayer();
    EXPECT_EQ(rig.editor.playingStep(), -1);
    rig.rig.setList(par::ArpType, 2);
    rig.rig.setList(par::ArpSpeed, 4);
    rig.rig.setList(par::ArpRetri, 1);
    rig.rig.block(480);
    rig.rig.send({{0x90, 60, 100}});
    std::vector<int> steps;
    for (int i = 0; i < 400; ++i) {
        rig.rig.block(480);
        if (const int step = rig.editor.playingStep(); steps.empty() || steps.back() != step) steps.push_back(step);
    }
    ASSERT_GE(steps.size(), 3u);
    EXPECT_EQ(steps[0], 0);
    EXPECT_EQ(steps[1], 1);
    rig.rig.send({{0x80, 60, 0}});
    rig.rig.block(960);
    EXPECT_EQ(rig.editor.playingStep(), -1);
}

TEST(Q7Editor, IdleTimeFollowsWhatTheHostChanges) {
    EditorRig rig;
    rig.audio.setParameter(par::Cutoff1, 0.3f);
    rig.audio.setParameter(hostIndex(par::Reso1, 2), 0.3f);
    rig.editor.displayFlags() = {};
    rig.editor.idle();
    EXPECT_TRUE(rig.view.hasRedrawn("FIL1 CUTOFF"));
    EXPECT_FALSE(rig.view.hasRedrawn("FIL1 RESO")) << "another layer's";
    EXPECT_TRUE(rig.editor.displayFlags().filter[0]);
    EXPECT_FALSE(rig.editor.displayFlags().filter[1]);
}

TEST(Q7Editor, IdleTimeFollowsAPatch) {
    EditorRig rig;
    rig.audio.parameters().setParameterQuiet(par::Cutoff1, 0.3f);
    rig.audio.parameters().changes().noteAll(ChangeSource::patch);
    rig.editor.idle();
    EXPECT_EQ(rig.view.redrawnAll, 1);
    EXPECT_EQ(rig.view.pagesShown, 1);
}

TEST(Q7Editor, TheWheelsOfTheScreenFollowThoseOfTheKeyboard) {
    EditorRig rig;
    rig.rig.send({{0xe0, 127, 127}, {0xb0, 1, 127}});
    rig.rig.tick();
    rig.rig.tick();
    rig.editor.idle();
    EXPECT_EQ(rig.editor.valueOf(tag::pitchWheel), 1.0f);
    EXPECT_TRUE(rig.view.hasRedrawn(WindowPart::PitchWheel));
    rig.view.forget();
    rig.editor.idle();
    EXPECT_FALSE(rig.view.hasRedrawn(WindowPart::PitchWheel)) << "it stands still";
    rig.audio.setParameter(par::Modwheel, 0.25f);
    rig.editor.idle();
    EXPECT_TRUE(rig.view.hasRedrawn(WindowPart::ModWheel));
    EXPECT_TRUE(rig.view.hasRedrawn("MODWHEEL"));
}

TEST(Q7Editor, ALampLightsWithANoteAndFades) {
    EditorRig rig;
    rig.rig.plainLayer();
    rig.rig.send({{0x90, 60, 100}});
    rig.rig.block(480);
    rig.editor.idle();
    EXPECT_GT(rig.editor.lamp(0), 120);
    EXPECT_TRUE(rig.view.hasRedrawn("SYNTH 1 SELECT"));
    rig.rig.send({{0x80, 60, 0}});
    rig.rig.block(48000);
    rig.rig.block(4800);
    rig.editor.idle();
    EXPECT_EQ(rig.editor.lamp(0), 0);
    EXPECT_EQ(rig.editor.lamp(1), 0);
}

TEST(Q7Editor, TheMeterShowsWhatIsHeardAndFalls) {
    EditorRig rig;
    EXPECT_EQ(rig.editor.meter(0), 0.0f);
    rig.rig.plainLayer();
    rig.rig.send({{0x90, 60, 127}});
    for (int i = 0; i < 20; ++i) rig.rig.block(256);
    const float sounding = rig.editor.meter(0);
    EXPECT_GT(sounding, 0.02f);
    EXPECT_LE(sounding, 1.0f);
    rig.audio.stop();
    for (int i = 0; i < 400; ++i) rig.rig.block(256);
    EXPECT_LT(rig.editor.meter(0), 0.02f * sounding);
}

TEST(Q7Editor, DisplaysTakeEverySecondRound) {
    EditorRig rig;
    int rounds = 0;
    for (int i = 0; i < 10; ++i) {
        rig.view.forget();
        rig.editor.idle();
        rounds += rig.view.hasRedrawn(WindowPart::Meter) ? 1 : 0;
    }
    EXPECT_EQ(rounds, 5);
}

// ---- rows of steps

TEST(Q7Editor, StepsPastTheCountAreSilentAndFollowIt) {
    EditorRig rig;
    rig.rig.set(par::Layer1On, 1.0f);
    for (const float count : {0.0f, 0.2f, 0.5f, 1.0f}) {
        rig.rig.set(par::Steps, count);
        rig.editor.idle();
        const int played = std::stoi(rig.editor.textOf(entryOf("STEP LFO STEPS")).substr(6));
        for (int step = 0; step < 16; ++step)
            EXPECT_EQ(isSilent(rig.editor, controlEntry(controlIndexForTag(par::Step1 + step))), step >= played)
                << step << " of " << played;
    }
    rig.view.forget();
    rig.editor.valueChanged(par::Steps, 0.0f, false);
    for (int step = 1; step <= 16; ++step) EXPECT_TRUE(rig.view.hasRedrawn(("STEP " + std::to_string(step)).c_str())) << step;
}

TEST(Q7Editor, AnArpeggiosStepsPastItsEndAreSilentButNotTheSignThatEndsIt) {
    EditorRig rig;
    rig.rig.set(par::Layer1On, 1.0f);
    const auto silent = [&](int first, int step) { return isSilent(rig.editor, controlEntry(controlIndexForTag(first + step))); };
    const auto expectEnd = [&](int end) {
        for (int step = 0; step < 16; ++step) {
            EXPECT_EQ(silent(par::ArpStp1, step), step >= end) << step;
            EXPECT_EQ(silent(par::ArpVol1, step), step > end) << step;
        }
    };
    constexpr float loop = 13.0f / 128, end = 14.0f / 128, full = 9.0f / 128;
    expectEnd(16);
    rig.rig.set(par::ArpVol1 + 11, end);
    expectEnd(11);
    rig.view.forget();
    rig.editor.valueChanged(par::ArpVol1 + 4, loop, false);
    expectEnd(4);
    EXPECT_TRUE(rig.view.hasRedrawn("ARP STEP 16 NOTE"));
    rig.rig.set(par::ArpVol1 + 4, full);
    rig.rig.set(par::ArpVol1, loop);
    expectEnd(11);
}

}  // namespace
}  // namespace vantoric
