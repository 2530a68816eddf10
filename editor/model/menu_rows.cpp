#include "editor/model/menu_rows.h"

#include <array>

#include "editor/model/control_table.h"
#include "editor/model/window_size.h"
#include "samples/edit_commands.h"

namespace vantoric {

namespace {

constexpr const char* fileRows[] = {
    "Load patch",
    "Load patch to synth layer 1",
    "Load patch to synth layer 2",
    "Load patch to synth layer 3",
    "Load patch to synth layer 4",
    "-",
    "Save patch as...",
    "Quick save patch",
    "Save synth layer 1 to patch",
    "Save synth layer 2 to patch",
    "Save synth layer 3 to patch",
    "Save synth layer 4 to patch",
    "-",
    "Delete Patch",
    "-",
    "Quick import *.wav sample",
    "Quick import *.wav vocoder",
    "Import *.sfz",
    "-",
    "Download sounds",
};

constexpr const char* copyRows[] = {
    "Copy complete patch",
    "-",
    "Copy current layer",
    "Copy current layer->OSC1",
    "Copy current layer->OSC2",
    "Copy current layer->OSC3",
    "Copy current layer->Arpeggiator",
    "Copy current layer->Step LFO",
    "-",
    "Enable/disable multilayer editing",
    "-",
    "Stack 2x mono unison light",
    "Stack 2x mono unison medium",
    "Stack 2x mono unison heavy",
    "Stack 2x stereo unison light",
    "Stack 2x stereo unison medium",
    "Stack 2x stereo unison heavy",
    "Stack 4x mono unison light",
    "Stack 4x mono unison medium",
    "Stack 4x mono unison heavy",
    "Stack 4x stereo unison light",
    "Stack 4x stereo unison medium",
    "Stack 4x stereo unison heavy",
};

constexpr const char* pasteRows[] = {
    "Load a patch to current layer",
    "-",
    "Paste complete patch",
    "-",
    "Paste copied layer to currernt layer",
    "Paste OSC to currernt layer->OSC1",
    "Paste OSC to currernt layer->OSC2",
    "Paste OSC to currernt layer->OSC3",
    "Paste Arpeggiator to current layer",
    "Paste Step LFO to current layer",
};

constexpr const char* initRows[] = {
    "Reset all",
    "Reset synth layer",
    "Reset synth arpeggiator",
    "Reset synth matrix",
    "Clean matrix",
    "-",
    "Create patch: SubtractivePoly",
    "Create patch: SubtractiveMono",
    "Create patch: SubtractivePad",
    "Create patch: AnalogPoly",
    "Create patch: AnalogMono",
    "Create patch: FM",
    "Create patch: Synced",
    "Create patch: SoftSync",
    "Create patch: Ultrasaw",
    "Create patch: Fractal",
    "Create patch: Wavetable",
    "Create patch: Sample",
    "Create patch: PhaseDistortion",
    "Create patch: Waveshaping",
    "Create patch: PWM",
    "Create patch: AM",
    "Create patch: 303",
    "Create patch: PhysicalGuitar",
    "Create patch: PhysicalFlute",
};

constexpr const char* helpRows[] = {
    "Show/hide tooltips",
    "-",
    "Remove all Midi CC assignments",
    "-",
    "Visit www.vantoric.example",
    "Download sounds",
    "-",
    "View credits",
    "Online video tutorial",
    "Online manual",
    "-",
    "Show version info",
    "Download updates",
};

LabelList editRows() {
    static const auto labels = [] {
        std::array<const char*, editCommandCount> made{};
        for (std::size_t i = 0; i < made.size(); ++i) made[i] = editCommands[i].label;
        return made;
    }();
    return labels;
}

}  // namespace

LabelList menuRows(int tag) {
    switch (tag) {
        case tag::fileMenu: return fileRows;
        case tag::copyMenu: return copyRows;
        case tag::pasteMenu: return pasteRows;
        case tag::initMenu: return initRows;
        case tag::editorMenu:
        case tag::zoomMenu: return sizeLabels();
        case tag::helpMenu: return helpRows;
        case tag::sampleEdit1:
        case tag::sampleEdit1 + 2:
        case tag::sampleEdit1 + 4: return editRows();
        default: return {};
    }
}

}  // namespace vantoric
