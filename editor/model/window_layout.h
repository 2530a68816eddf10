// What stands in the window beside the table of controls: the panels they stand on and the controls of the window itself.
// Places in units of the small layout (1200 x 660), as in the table. Constant; any thread.
#pragma once

#include <span>

#include "editor/model/control_table.h"

namespace vantoric {

struct LayoutRect {
    int x, y, width, height;
};

// A panel, drawn behind the controls. The title is empty where the controls name themselves.
struct Panel {
    const char* title;
    LayoutRect rect;
    Section section;
    bool inBand;
};

std::span<const Panel> windowPanels();

// What each of the parts beside the table is.
enum class WindowPart {
    Favourite,
    CategoryList,
    PatchList,
    PitchWheel,
    ModWheel,
    Meter,  // left and right
    HintLine,
    DragEnvelope,  // drags the envelope on show onto a knob
    DragLfo,
    DragWheel,
    Multilayer,  // tells that multilayer editing is on
};

struct WindowPartEntry {
    WindowPart part;
    int tag;  // of namespace tag; 0 for a part that sends nothing
    const char* name;
    LayoutRect rect;
};

std::span<const WindowPartEntry> windowParts();

// The entry of that part.
const WindowPartEntry& windowPart(WindowPart part);

// What a control takes up of the window, without a knob's caption.
LayoutRect controlRect(const ControlEntry& entry);

// Whether a knob's caption stands to its right and not beneath it, where the switch that belongs to it is.
bool captionStandsBeside(const ControlEntry& entry);

}  // namespace vantoric
