#include "editor/control_menus.h"

#include "editor/model/menu_rows.h"

namespace vantoric {
namespace {

Color submenuColor(int base) {
    if (base == lfoRows || base == freeLfoRows) return style::lfo;
    return base == envelopeRows ? style::envelopes : style::output;
}

}  // namespace

std::vector<MenuRow> listRows(const Q7Editor& editor, const ControlEntry& entry) {
    std::vector<MenuRow> rows;
    for (const std::string& label : editor.rowsOf(entry)) rows.push_back({label, static_cast<int>(rows.size()), false, {}, {}});
    if (const int shown = editor.shownRow(entry); shown >= 0 && shown < static_cast<int>(rows.size()))
        rows[shown].isTicked = !rows[shown].isSeparator();
    if (entry.tag == tag::copyMenu) rows[copy_row::multilayer].isTicked = editor.onShow().multilayer;
    if (const int target = editor.onShow().loadTarget; entry.tag == tag::fileMenu && target != 0)
        rows[file_row::loadToLayer1 + target - 1].isTicked = true;
    if (entry.tag == tag::editorMenu || entry.tag == tag::zoomMenu) rows[editor.size().sizeIndex()].isTicked = true;
    return rows;
}

std::vector<MenuRow> knobRows(const Q7Editor& editor, const ControlEntry& entry) {
    std::vector<MenuRow> rows;
    for (const std::string& label : knobMenuRows(parameterOfTag(entry.tag), editor.ccNumberOf(entry))) {
        const int index = static_cast<int>(rows.size());
        MenuRow row{label, index, false, {}, {}};
        if (index >= firstSubmenuRow && index < firstSubmenuRow + knobSubmenuCount) {
            const KnobSubmenu& submenu = knobSubmenus()[index - firstSubmenuRow];
            row.dot = submenuColor(submenu.base);
            int choice = submenu.base;
            for (const char* source : submenu.rows) row.submenu.push_back({source, choice++, false, row.dot, {}});
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace vantoric
