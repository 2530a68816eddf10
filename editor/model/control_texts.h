// What controls say beside their own labels: the strip over a knob, the rows of its menu, the speed of an LFO. Any thread
// but the audio thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "editor/model/matrix_editing.h"
#include "editor/model/midi_learn.h"
#include "parameters/label_lists.h"

namespace vantoric {

// A colour as the knobs' rules write it: alpha, blue, green, red from the highest byte on.
using ColourWord = std::uint32_t;

inline constexpr ColourWord hintOutline = 0xff282828, mappedOutline = 0xff0000aa, hintFill = 0xff141414;

// What there is to say of a knob that is touched.
struct KnobState {
    std::string name, valueText = {}, unit = {};
    int ccNumber = MidiLearn::noController;
    int modCount = 0;           // slots of the matrix that move it
    std::string modNames = {};  // the first one's source
};

// The lines of the strip over a knob, one or two, the upper one first.
std::vector<std::string> hintLines(const KnobState& knob);

// The strip's outline: another for a knob with a controller or one that waits for one.
ColourWord hintOutlineOf(int ccNumber);

// The speed of an LFO (tab 0 to 2) or of the step LFO (3) for its value, 0 to 1, with its unit. `mode` is the list index of
// the LFO's mode; the step LFO always counts in beats.
std::string lfoSpeedText(int tab, int mode, float value);

// What a field shows at its two ends: "Size 28.0m", "Fade53ms" and "Fade off" have a name and a value, "Free" a value alone.
struct NameAndValue {
    std::string name, value;
    bool operator==(const NameAndValue&) const = default;
};
NameAndValue parted(const std::string& text);

// ---- the menu of a knob

inline constexpr int firstSubmenuRow = 5;
inline constexpr int knobSubmenuCount = 5;

// A row that opens another menu.
struct KnobSubmenu {
    const char* label;
    LabelList rows;
    SubmenuBase base;  // the tag of its first row
};
// In the order of the rows from firstSubmenuRow on.
std::span<const KnobSubmenu> knobSubmenus();

// The rows of the menu of a knob with that parameter number, "-" for separators. What they do: KnobCommands.
std::vector<std::string> knobMenuRows(int number, int ccNumber);

}  // namespace vantoric
