// A list of rows that opens over the window: the lists of controls, menus, the knobs' menu with its submenus.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "editor/layer_view.h"
#include "editor/pen.h"

namespace vantoric {

struct MenuRow {
    std::string label;  // "-" is a separator
    int result = 0;     // what a choice of it tells
    bool isTicked = false;
    std::optional<Color> dot;  // in the colour of a source
    std::vector<MenuRow> submenu;

    bool isSeparator() const { return label == "-"; }
    bool isChoosable() const { return !isSeparator() && !label.empty(); }
};

// Covers the window while it is open; what is outside its panels closes it. Rows are chosen by click, by press, drag and
// release, by arrow keys and Enter, or by typing the beginning of a label; Escape closes. Long lists scroll; in a low window
// they stand in columns, where those leave every label whole.
class PopupMenu : public LayerView {
public:
    using Chosen = std::function<void(int result)>;

    // Opens below `anchor` (or above, where there is no room), at least as wide as it, within `area`; an anchor without a size
    // is where a corner of the menu stands. `chosen` is called once
    // at most, `closed` always, at the end and with the menu still there; both outside of drawing.
    PopupMenu(const VSTGUI::CRect& area, const VSTGUI::CRect& anchor, std::vector<MenuRow> rows, Chosen chosen,
              std::function<void()> closed);

    void setClosed(std::function<void()> closed) { closed_ = std::move(closed); }
    void onKey(VSTGUI::KeyboardEvent& event) override;
    void dismiss() override;

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;

    // Whether the row was chosen by the left button or a key.
    bool isByLeft() const { return isByLeft_; }

    // For tests: where the row with that result is drawn, if it is.
    std::optional<VSTGUI::CRect> rowWith(int result) const;

    CLASS_METHODS_NOCOPY(PopupMenu, VSTGUI::CView)

private:
    // Rows from `first` to before `end`, and where they stand in their panel.
    struct Column {
        int first = 0, end = 0;
        double left = 0, width = 0, height = 0;
    };
    // One panel of rows. `rows` are the menu's own or a submenu's.
    struct Panel {
        const std::vector<MenuRow>* rows;
        VSTGUI::CRect rect;
        std::vector<Column> columns;
        double scrolled = 0, contentHeight = 0;
        int highlighted = -1;
    };
    struct Hit {
        int panel = -1, row = -1;
    };

    static std::vector<Column> columnsOf(const std::vector<MenuRow>& rows, double room, bool isLow);
    static double widthOf(const std::vector<Column>& columns);
    static int columnOf(const Panel& panel, int row);
    Panel layOut(const std::vector<MenuRow>& rows, const VSTGUI::CRect& anchor, bool isSubmenu) const;
    VSTGUI::CRect rowRect(const Panel& panel, int row) const;
    Hit hit(VSTGUI::CPoint where) const;
    void highlight(Hit target);
    void openSubmenu(int panel, int row);
    void choose(Hit target);
    // Where keys work: the panel that was opened last and has a row highlighted, or the one that opened it.
    int activePanel() const;
    void move(int direction);
    // In the active panel to this row, or the next in that direction that can be chosen.
    void moveTo(int row, int direction);
    // In a low window: to the row beside, in the next column or the one before.
    void moveToColumn(int direction);
    int rowCount(int panel) const;
    // Rows that are seen at once, one of them kept from page to page.
    static int pageRows(const Panel& panel);
    void scrollTo(Panel& panel, int row) const;
    void typed(char32_t character);
    void drawPanel(Pen& pen, const Panel& panel) const;
    void drawRow(Pen& pen, const Panel& panel, int row) const;
    void close();

    std::vector<MenuRow> rows_;
    Chosen chosen_;
    std::function<void()> closed_;
    std::vector<Panel> panels_;             // the menu, then the submenus that are open
    std::optional<VSTGUI::CPoint> cameAt_;  // where the pointer was first seen
    bool hasMoved_ = false, isClosed_ = false, isByLeft_ = true;
    std::string typed_;
    std::uint64_t typedTicks_ = 0;
};

}  // namespace vantoric
