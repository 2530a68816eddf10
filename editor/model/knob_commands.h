// The rows of a knob's menu, and the drop of a source on a control.
#pragma once

#include <optional>
#include <span>

#include "editor/model/matrix_editing.h"
#include "editor/model/midi_learn.h"

namespace vantoric {

// Rows of a knob's menu by their index; those of the submenus have tags.
enum KnobMenuRow : int { resetValueRow = 0, resetAllRow = 1, learnRow = 3, removeModulationRow = 10 };

// What a command leaves to show.
struct KnobCommandResult {
    std::optional<int> matrixPage;  // 1 to 3: to be shown
    const char* hint = "";          // for the hint line, if not empty
};

// On the thread of the window. Parameters are numbers, 0 to 323, of the layer on show; others do nothing.
class KnobCommands {
public:
    KnobCommands(ParameterEdits& edits, const OnShow& onShow, MatrixEditing& matrix, MidiLearn& learn)
        : edits_(edits), onShow_(onShow), matrix_(matrix), learn_(learn) {}

    // Carries out a row of the knob's menu; separators and the submenus' own rows do nothing.
    KnobCommandResult chooseRow(int number, int row);
    // Carries out the row of a submenu: the knob has one entry of the menu at a time.
    KnobCommandResult chooseSource(int number, int tag);
    // The parameter takes its default; with multilayer editing that of all layers.
    void resetToDefault(int number);
    // The parameter's host index on the layer on show.
    int hostIndexOf(int number) const;

private:
    ParameterEdits& edits_;
    const OnShow& onShow_;
    MatrixEditing& matrix_;
    MidiLearn& learn_;
};

// A control where a drop may land, in pixels of the unscaled table.
struct DropTarget {
    int kind;
    float x, y;
    bool isVisible;
};
// The index of the first control that takes a drop at a point of the window, in pixels before zoom; -1 for none.
// layoutFactor: 1 or 1.5.
int dropHit(std::span<const DropTarget> controls, float x, float y, float layoutFactor);

}  // namespace vantoric
