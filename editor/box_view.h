// Messages and questions, drawn over the window: nobody waits for them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "editor/layer_view.h"
#include "editor/panel_parts.h"

namespace vantoric {

struct Box {
    std::string title, text;
    std::vector<std::string> buttons;   // the first is the safe answer, which Escape gives
    std::function<double()> part = {};  // 0 to 1: how far something is, as a bar below the text; empty: no bar
    int main = 0;                       // the button that is filled and has the focus at first
};

// A box in the middle of the window. The title's word chooses its sign: "Error", "Warning", "Hint", and "Info" for all
// others. Long texts wrap and scroll. Buttons are chosen by click, Enter and Space, that of
// work in progress by click and Escape alone; Tab and the arrows go between them.
class BoxView : public LayerView {
public:
    // `answered` gets the number of a button, once, with the view still there; whoever opened it takes it away.
    BoxView(const VSTGUI::CRect& area, Box box, std::function<void(int button)> answered);

    const Box& box() const { return box_; }
    // How often the same was said while the box stands open.
    void setTimes(int times);

    void onKey(VSTGUI::KeyboardEvent& event) override;
    void dismiss() override { answer(0); }
    void follow() override;

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;

    // For tests.
    const VSTGUI::CRect& panel() const { return panel_; }
    VSTGUI::CRect buttonRect(int button) const;
    int focused() const { return focused_; }
    double scrolled() const { return bar_.position(); }

    CLASS_METHODS_NOCOPY(BoxView, VSTGUI::CView)

private:
    void layOut();
    int buttonAt(VSTGUI::CPoint where) const;
    void answer(int button);
    void focus(int button);
    void drawSign(Pen& pen) const;
    void drawText(Pen& pen) const;
    VSTGUI::CRect progressRect() const;
    void drawProgress(Pen& pen) const;

    Box box_;
    std::function<void(int)> answered_;
    int times_ = 1;
    double part_ = 0;
    std::vector<std::string> lines_;
    std::vector<double> buttonWidths_;
    VSTGUI::CRect panel_, textArea_;
    ScrollBar bar_;
    int focused_ = 0, hovered_ = -1, pressed_ = -1;
};

}  // namespace vantoric
