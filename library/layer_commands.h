// Copying, pasting, stacking, loading and saving layers, as the menus offer it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "engine/instrument.h"
#include "library/command_log.h"
#include "library/layer_clipboard.h"
#include "library/on_show.h"
#include "library/patch_on_show.h"
#include "library/spare_patch.h"
#include "platform/dialogs.h"

namespace vantoric {

// How `stackLayers` spreads layer 1.
struct Stacking {
    int count;      // layers, 2 or 4
    bool isStereo;  // layers 1 and 3 left, 2 and 4 right
    float amount;   // of the detuning
};
// The twelve rows of the copy menu, 11 to 22, from "Stack 2x mono unison light" on; others give none.
std::optional<Stacking> stackingOfRow(int row);

// On the thread of the window. Each command takes its turn at the engine, so that nobody saves a patch half made, tells the
// user what there is to tell, and leaves the layer on show, the program's name and its place in the lists as they were,
// where nothing else is said. One that fails midway ends with the patch that was there before. The clipboard is filled by
// all that takes a layer, also on its way. Layers are 0 to 3, oscillators 0 to 2.
class LayerCommands {
public:
    // All outlive it.
    LayerCommands(Instrument& instrument, const OnShow& onShow, PatchOnShow& patch, platform::Dialogs& dialogs, CommandLog& log);

    // The whole patch, kept in memory. Pasting gives the patch the copied one's name.
    void copyPatch();
    void pastePatch();

    // The layer on show, also to a file from which any instance can paste.
    void copyLayerToFile();
    void copyOscillator(int oscillator);
    void copySection();

    // To the layer on show. Without a readable file of a copied layer nothing is pasted, but the layer is switched on.
    void pasteFromFile();
    void pasteOscillator(int oscillator);
    void pasteSection(LayerSection section);

    // Layer 1 of a patch file as `layer`, which is switched on. The program takes the patch's name if it has fewer than 27
    // characters. False, with the patch as it was, if the file could not be loaded.
    bool loadToLayer(const std::string& path, int layer);
    // A layer as layer 1 of a new patch in a file that the user chose; nothing: the user went back.
    void saveLayerAsPatch(int layer, const std::optional<std::string>& path);

    // Layer 1 on two or four layers, detuned against each other.
    void stackLayers(const Stacking& stacking);

private:
    void act(const std::function<void()>& work);
    void hint(const char* text);
    void check(bool pasted);
    std::unique_ptr<SparePatch> makeSpare();
    std::unique_ptr<SparePatch> patchOfCopiedLayer();
    void set(int number, int layer, float value);
    void spreadLayer(int layer, const Stacking& stacking);

    Instrument& instrument_;
    const OnShow& onShow_;
    PatchOnShow& patch_;
    platform::Dialogs& dialogs_;
    CommandLog& log_;
    LayerClipboard clipboard_;
    ChunkBytes copiedPatch_;
};

}  // namespace vantoric
