// At the end of the hint line: undo, redo, and the two patches to compare.
#pragma once

#include <array>
#include <functional>
#include <string>

#include "editor/pen.h"
#include "vstgui/lib/cview.h"
#include "vstgui/lib/events.h"

namespace vantoric {

class HistoryBar : public VSTGUI::CView {
public:
    struct Shown {
        bool canUndo = false, canRedo = false;
        int slot = 0;  // 0: A, 1: B
        friend bool operator==(const Shown&, const Shown&) = default;
    };
    enum class Button { compare, undo, redo, none };

    // `pressed` hears of clicks, with whether Shift was held; `hovered` of the button under the pointer.
    HistoryBar(const VSTGUI::CRect& area, std::function<void(Button, bool)> pressed, std::function<void(Button)> hovered);

    void setShown(const Shown& shown);
    static VSTGUI::CRect place(const VSTGUI::CRect& area, Button button);

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;

    CLASS_METHODS_NOCOPY(HistoryBar, VSTGUI::CView)

private:
    Button buttonAt(VSTGUI::CPoint where) const;
    void setHovered(Button button);
    void drawCompare(Pen& pen) const;
    void drawArrow(Pen& pen, Button button, bool isEnabled) const;

    std::function<void(Button, bool)> pressed_;
    std::function<void(Button)> hoveredTold_;
    Shown shown_;
    Button hovered_ = Button::none;
};

}  // namespace vantoric
