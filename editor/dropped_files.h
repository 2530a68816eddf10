// What becomes of files that are dropped on the window.
#pragma once

#include <string>
#include <vector>

#include "editor/model/q7editor.h"
#include "vstgui/lib/cpoint.h"

namespace vantoric {

// Takes the first patch, wave or .sfz file of them: patch and .sfz are loaded, a wave goes into the oscillator whose row it
// was dropped on. `where` in window units. Returns what there is to tell, which may be nothing. On the thread of the window.
std::string takeDropped(Q7Editor& editor, const std::vector<std::string>& paths, VSTGUI::CPoint where);

}  // namespace vantoric
