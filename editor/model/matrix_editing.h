// The modulation matrix as the knobs show and change it.
#pragma once

#include <array>
#include <optional>

#include "library/on_show.h"
#include "library/parameter_edits.h"
#include "platform/dialogs.h"

namespace vantoric {

// ---- fixed tables, any thread

// The list index of the destination that is this parameter number, the lowest if there are several; 0 for none: such a
// parameter cannot be modulated. (The other way: destinationNumber.)
int destinationOf(int number);

// Whether a source, by its list index, moves a knob to both sides.
bool isBipolarSource(int source);

// The submenus of a knob's menu: the tag of a row is the base of its submenu plus its index.
enum SubmenuBase : int { lfoRows = 100, freeLfoRows = 200, envelopeRows = 300, midiRows = 400, randomRows = 500 };

// What a row of them stands for: the source's list index, and whether its first amount is chosen as for a bipolar one.
struct SubmenuSource {
    int source;
    bool hasBipolarAmount;
};
SubmenuSource submenuSource(int tag);

// Where a source can be picked up to be dropped on a knob.
enum class DragSection { envelope, lfo };
// The source that a section gives while tab 0 to 3 is selected; the fourth tab of the LFOs is the step LFO.
int dragSource(DragSection section, int tab);

// ---- what knobs show

// The modulation of a knob. With several slots: the first one's depth and source.
struct KnobModulation {
    float modDepth = 0.0f;      // -1 to 1; 0: none
    const char* modNames = "";  // the source's label
    int source = 0;             // the source's list index
    int modCount = 0;           // slots that aim here
    bool modBipolar = false;    // the source moves to both sides
};
using KnobModulations = std::array<KnobModulation, layerParameterEnd>;  // by parameter number

// ---- changing it

// On the thread of the window. Parameters are numbers, 0 to 323, of the layer on show; all layers with multilayer editing.
// Others do nothing. Page numbers are 1 to 3.
class MatrixEditing {
public:
    MatrixEditing(const ParameterModel& parameters, ParameterEdits& edits, const OnShow& onShow, platform::Dialogs& dialogs)
        : parameters_(parameters), edits_(edits), onShow_(onShow), dialogs_(dialogs) {}

    // What the slots of the layer on show do, for all knobs.
    KnobModulations updateKnobModulation() const;

    // Makes a slot for a row of a submenu. The page of the matrix that shows it; none if nothing was done: not for the
    // modulation wheel, for tags below 0, for what cannot be modulated, and, with a message, if all slots are taken.
    std::optional<int> addModulation(int number, int tag);
    // The same for a source, by its list index, that was dropped on the knob.
    std::optional<int> addDroppedModulation(int number, int source);
    // Empties all slots that aim at the parameter. 0 stands for the layer's volume.
    void removeModulation(int number);
    // Empties in all layers the slots that lack a source or a destination.
    void cleanMatrix();

    // A drag of the depth, with the amount 0 to 1 of its slot: the first that aims at the parameter. A gesture: any number
    // of `dragDepth` between `beginDepth` and `endDepth`.
    void beginDepth(int number);
    void dragDepth(float amount);
    void endDepth();
    // The same with the amounts as they were at its beginning.
    void cancelDepth();

private:
    struct Slot {
        int source, destination;  // list indices
    };
    Slot slotAt(int slot, int layer) const;
    bool aimsAt(int slot, int number) const;
    std::optional<int> freeSlot(const Slot& wanted) const;
    std::optional<int> add(int number, int source, bool hasBipolarAmount);
    void empty(int slot, int layer);
    void writeIfOther(int index, float value);
    // The layers that a change goes to: the one on show, or all.
    template <class Function>
    void forLayers(Function function) const {
        for (int layer = 0; layer < layerCount; ++layer)
            if (onShow_.multilayer || layer == onShow_.layer) function(layer);
    }

    const ParameterModel& parameters_;
    ParameterEdits& edits_;
    const OnShow& onShow_;
    platform::Dialogs& dialogs_;
    struct Dragged {
        int index;     // host index of the amount that a drag moves
        float before;  // its value at the beginning
    };
    std::array<Dragged, layerCount> dragged_{};
    int draggedCount_ = 0;
};

}  // namespace vantoric
