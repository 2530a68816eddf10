// The rows that the lists, menus and knobs of the window open, as they stand now.
#pragma once

#include <vector>

#include "editor/model/q7editor.h"
#include "editor/popup_menu.h"

namespace vantoric {

// The rows of a list or menu, each with its number as its result, and the one in force ticked.
std::vector<MenuRow> listRows(const Q7Editor& editor, const ControlEntry& entry);

// The rows of a knob's menu. Their results are row numbers; those of the submenus, from `firstSourceTag` on, tags of sources.
std::vector<MenuRow> knobRows(const Q7Editor& editor, const ControlEntry& entry);
inline constexpr int firstSourceTag = lfoRows;

}  // namespace vantoric
