#include "library/init_commands.h"

#include <chrono>

#include "library/patch_parts.h"
#include "library/show_messages.h"
#include "patch/exchange_contents.h"
#include "patch/patch_reset.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"

namespace vantoric {

namespace {

std::uint32_t systemClock() {
    return static_cast<std::uint32_t>(std::chrono::system_clock::now().time_since_epoch().count() / 1000);
}

}  // namespace

std::string templatePath(const std::string& name) {
    return platform::dataPath(std::string("Vantoric_data") + platform::pathSeparator + "Init_" + name + ".fxp");
}

InitCommands::InitCommands(Instrument& instrument, OnShow& onShow, PatchOnShow& patch, platform::Dialogs& dialogs,
                           CommandLog& log, Clock clock)
    : instrument_(instrument),
      onShow_(onShow),
      patch_(patch),
      dialogs_(dialogs),
      log_(log),
      clock_(clock != nullptr ? clock : systemClock) {}

// Under an EngineHold.
void InitCommands::releaseSamples(int firstLayer, int endOfLayers) {
    const PatchParts parts = partsOf(instrument_);
    for (int i = firstLayer * oscillatorCount; i < endOfLayers * oscillatorCount; ++i) {
        Sample& holder = *parts.samples[static_cast<std::size_t>(i)];
        exchangeContents(parts.access, holder, Sample());
        holder.levelsPending.clear();
    }
}

// What every one of them ends with.
void InitCommands::finish() {
    instrument_.flags().rebuildRequested.set();
    instrument_.parametersWritten();
    instrument_.parameters().changes().noteAll(ChangeSource::window);
}

void InitCommands::showNewPatch(const std::string& kind) {
    onShow_.layer = 0;
    instrument_.sampleLoader().currentLayer = 0;
    instrument_.program().setProgramName(nextPatchName(kind, patchNameSeed()));
    patch_.showCustom();
}

void InitCommands::resetAll() {
    const CommandLog::Running running(log_, "Reset all");
    {
        const EngineHold hold(instrument_.patchChunk().access(), HoldFor::waves);
        instrument_.allNotesOff();
        releaseSamples(0, layerCount);
        resetAllParameters(instrument_.parameters());
        instrument_.resetEngine();
    }
    finish();
    patchNameSeed().state = clock_();
    showNewPatch("Init");
}

void InitCommands::resetLayer() {
    const CommandLog::Running running(log_, "Reset synth layer");
    {
        const EngineHold hold(instrument_.patchChunk().access(), HoldFor::waves);
        releaseSamples(layer(), layer() + 1);
        resetSynthLayer(instrument_.parameters(), layer());
    }
    finish();
}

void InitCommands::resetArpeggiator() {
    const CommandLog::Running running(log_, "Reset synth arpeggiator");
    const EngineTurn turn(instrument_.patchChunk().access());
    resetSynthArpeggiator(instrument_.parameters(), layer());
    instrument_.parameters().changes().noteAll(ChangeSource::window);
}

void InitCommands::resetMatrix() {
    const CommandLog::Running running(log_, "Reset synth matrix");
    const EngineTurn turn(instrument_.patchChunk().access());
    resetSynthMatrix(instrument_.parameters(), layer());
    instrument_.parameters().changes().noteAll(ChangeSource::window);
}

void InitCommands::cleanMatrix() {
    const CommandLog::Running running(log_, "Clean matrix");
    instrument_.patchChunk().cleanMatrix();
    instrument_.parameters().changes().noteAll(ChangeSource::window);
}

bool InitCommands::createPatch(const std::string& name) {
    const std::string path = templatePath(name);
    bool isLoaded = false;
    {
        const CommandLog::Running running(log_, "Create patch: " + name);
        isLoaded = instrument_.patchFiles().loadPatchFile(path);
        if (isLoaded) showNewPatch(name);
    }
    if (!platform::exists(path))
        instrument_.messages().post("Error", "The factory sounds are missing. Please reinstall the software.");
    showMessages(instrument_.messages(), dialogs_);
    return isLoaded;
}

}  // namespace vantoric
