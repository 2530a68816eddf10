#include "library/layer_commands.h"

#include "base/numbers.h"
#include "base/outcome.h"
#include "base/parameters.h"
#include "library/patch_backup.h"
#include "library/show_messages.h"
#include "patch/patch_reset.h"
#include "platform/own_files.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr std::size_t longestNameTaken = 26;  // of a patch that is loaded to a layer
constexpr int detunedNumbers = 3;

std::string copiedLayerPath() { return platform::userFolder() + "CopyLayer.fxp"; }

// The shares of the amount by which a stack's layers are detuned: no two beat at the same rate.
constexpr float detuneShares[] = {0.43333337f, -0.36666667f, 0.23333335f, -0.20000002f};

}  // namespace

std::optional<Stacking> stackingOfRow(int row) {
    static constexpr float amounts[2][3] = {{0.02f, 0.04f, 0.1f}, {0.0625f, 0.125f, 0.25f}};
    constexpr int firstRow = 11, rows = 12;
    const int k = row - firstRow;
    if (k < 0 || k >= rows) return {};
    return Stacking{k < 6 ? 2 : 4, k % 6 >= 3, amounts[k / 6][k % 3]};
}

LayerCommands::LayerCommands(Instrument& instrument, const OnShow& onShow, PatchOnShow& patch, platform::Dialogs& dialogs,
                             CommandLog& log)
    : instrument_(instrument), onShow_(onShow), patch_(patch), dialogs_(dialogs), log_(log) {}

void LayerCommands::act(const std::function<void()>& work) {
    try {
        const EngineTurn turn(instrument_.patchChunk().access());
        work();
    } catch (...) {
        instrument_.messages().post("Error", notEnoughMemory);
    }
    instrument_.parametersWritten();
    patch_.keep();
    showMessages(instrument_.messages(), dialogs_);
}

void LayerCommands::hint(const char* text) { dialogs_.message("Hint", text); }

void LayerCommands::check(bool pasted) {
    if (!pasted) instrument_.messages().post("Error", "Paste error!");
}

void LayerCommands::set(int number, int layer, float value) {
    instrument_.setParameter(hostIndex(number, layer), value, ChangeSource::window);
}

std::unique_ptr<SparePatch> LayerCommands::makeSpare() {
    auto spare = std::make_unique<SparePatch>(instrument_.messages());
    spare->files().setListener(instrument_.patchFiles().listener());
    return spare;
}

// A new patch with the copied layer as its first.
std::unique_ptr<SparePatch> LayerCommands::patchOfCopiedLayer() {
    auto spare = makeSpare();
    resetAllParameters(spare->parameters());
    check(clipboard_.pasteLayer(spare->parts(), 0));
    spare->program().setProgramName(instrument_.program().getProgramName());
    return spare;
}

// ---- whole patches

void LayerCommands::copyPatch() {
    ChunkBytes copied = instrument_.patchChunk().getChunk();
    if (copied.data) copiedPatch_ = std::move(copied);
    showMessages(instrument_.messages(), dialogs_);
}

void LayerCommands::pastePatch() {
    if (!copiedPatch_.data) return hint("You need to copy a patch before you can paste it.");
    {
        const CommandLog::Running running(log_, "Paste complete patch");
        instrument_.patchChunk().setCheckedChunk(copiedPatch_.data.get(), copiedPatch_.size);
    }
    patch_.follow();
    showMessages(instrument_.messages(), dialogs_);
}

// ---- copying

// The patch is taken apart and put together again: one command, after which it is as it was.
void LayerCommands::copyLayerToFile() {
    const CommandLog::Running running(log_, "Copy layer");
    act([this] {
        clipboard_.copyLayer(partsOf(instrument_), onShow_.layer);
        PatchBackup backup(instrument_, "CopyBackup.fxp");
        if (!backup.isKept()) return;
        patchOfCopiedLayer()->files().savePatchFile(copiedLayerPath());
        backup.takeBack();
    });
}

void LayerCommands::copyOscillator(int oscillator) {
    act([this, oscillator] {
        clipboard_.copyLayer(partsOf(instrument_), onShow_.layer);
        clipboard_.chooseOscillator(oscillator);
    });
}

void LayerCommands::copySection() {
    act([this] { clipboard_.copyLayer(partsOf(instrument_), onShow_.layer); });
}

// ---- pasting

void LayerCommands::pasteFromFile() {
    bool isCopied = true;
    {
        const CommandLog::Running running(log_, "Paste layer");
        act([this, &isCopied] {
            instrument_.setParameter(par::Layer1On + onShow_.layer, 1.0f, ChangeSource::window);
            PatchBackup backup(instrument_, "PasteBackup.fxp");
            if (!backup.isKept()) return;
            const auto spare = makeSpare();
            isCopied = spare->files().loadPatchFile(copiedLayerPath());
            // Loading clears matrix rows that are half set up: a layer that gets nothing else gets its own back.
            LayerClipboard own;
            if (isCopied)
                clipboard_.copyLayer(spare->parts(), 0);
            else
                own.copyLayer(partsOf(instrument_), onShow_.layer);
            backup.takeBack();
            check((isCopied ? clipboard_ : own).pasteLayer(partsOf(instrument_), onShow_.layer));
        });
    }
    if (!isCopied) hint("You need to copy a layer before you can paste it.");
}

void LayerCommands::pasteOscillator(int oscillator) {
    if (clipboard_.oscillator() < 0) return hint("You need to copy an OSC before you can paste it.");
    const CommandLog::Running running(log_, "Paste OSC" + std::to_string(oscillator + 1));
    act([this, oscillator] { check(clipboard_.pasteOscillator(partsOf(instrument_), onShow_.layer, oscillator)); });
}

void LayerCommands::pasteSection(LayerSection section) {
    if (clipboard_.isEmpty()) return hint("You need to copy something before you can paste it.");
    const CommandLog::Running running(log_, section == LayerSection::arpeggiator ? "Paste Arpeggiator" : "Paste Step LFO");
    act([this, section] { clipboard_.pasteSection(partsOf(instrument_), onShow_.layer, section); });
}

// ---- patches and layers

bool LayerCommands::loadToLayer(const std::string& path, int layer) {
    const std::string name = patchNameOfPath(path);
    const int number = par::Layer1On + layer;
    bool isLoaded = false;
    const CommandLog::Running running(log_, "Load '" + name + "' to layer " + std::to_string(layer + 1));
    act([&] {
        const float wasOn = instrument_.parameters().getParameter(number);
        instrument_.setParameter(number, 1.0f, ChangeSource::window);
        PatchBackup backup(instrument_, "MergedLayers.fxp");
        const auto spare = makeSpare();
        isLoaded = backup.isKept() && spare->files().loadPatchFile(path);
        if (!isLoaded) {
            instrument_.setParameter(number, wasOn, ChangeSource::window);
            return backup.drop();
        }
        clipboard_.copyLayer(spare->parts(), 0);
        backup.takeBack();
        check(clipboard_.pasteLayer(partsOf(instrument_), layer));
        if (name.size() <= longestNameTaken) instrument_.program().setProgramName(name);
    });
    if (isLoaded) patch_.showCustomHere();
    return isLoaded;
}

void LayerCommands::saveLayerAsPatch(int layer, const std::optional<std::string>& path) {
    const CommandLog::Running running(log_, "Save layer " + std::to_string(layer + 1));
    act([&] {
        PatchBackup backup(instrument_, "MergedLayers.fxp");
        if (!backup.isKept()) return;
        clipboard_.copyLayer(partsOf(instrument_), layer);
        if (path) patchOfCopiedLayer()->files().savePatchAs(*path);
        backup.takeBack();
    });
}

// ---- stacking

void LayerCommands::spreadLayer(int layer, const Stacking& stacking) {
    for (int k = 0; k < detunedNumbers; ++k) {
        const float value = instrument_.parameters().getParameter(hostIndex(par::Detune1 + k, layer));
        set(par::Detune1 + k, layer, clampTo(value + stacking.amount * detuneShares[layer], 0.0f, 1.0f));
    }
    if (!stacking.isStereo) return;
    for (int k = 0; k < filterCount; ++k) set(par::FilPan1 + k, layer, layer % 2 == 0 ? 0.0f : 1.0f);
}

void LayerCommands::stackLayers(const Stacking& stacking) {
    const CommandLog::Running running(log_, "Stack " + std::to_string(stacking.count) + "x");
    act([this, &stacking] {
        clipboard_.copyLayer(partsOf(instrument_), 0);
        bool isPasted = true;
        for (int layer = 1; layer < stacking.count && isPasted; ++layer)
            isPasted = clipboard_.pasteLayer(partsOf(instrument_), layer);
        if (!isPasted) return check(false);
        for (int layer = 0; layer < stacking.count; ++layer) spreadLayer(layer, stacking);
        for (int layer = 0; layer < layerCount; ++layer)
            instrument_.setParameter(par::Layer1On + layer, layer < stacking.count ? 1.0f : 0.0f, ChangeSource::window);
    });
}

}  // namespace vantoric
