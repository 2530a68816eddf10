// Where a source of modulation is picked up to be dropped on a control.
#pragma once

#include <functional>
#include <string>

#include "editor/pen.h"
#include "vstgui/lib/cview.h"
#include "vstgui/lib/events.h"

namespace vantoric {

// Hears of a drag; places in window units.
class DragListener {
public:
    virtual void dragHovered(int area, bool isHovered) = 0;
    virtual void dragBegan(int area) = 0;
    virtual void dragMoved(int area, VSTGUI::CPoint where) = 0;
    // `where` is where it was dropped.
    virtual void dragEnded(int area, VSTGUI::CPoint where) = 0;
    virtual void dragCancelled(int area) = 0;

protected:
    ~DragListener() = default;
};

class MYDragArea : public VSTGUI::CView {
public:
    // `area` names it to the listener.
    MYDragArea(const VSTGUI::CRect& rect, int area, const std::string& caption, const Color& color, const Color& ground,
               DragListener& listener);

    bool isDragging() const { return isDragging_; }
    void cancel();

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseEnterEvent(VSTGUI::MouseEnterEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;

    CLASS_METHODS_NOCOPY(MYDragArea, VSTGUI::CView)

private:
    int area_;
    std::string caption_;
    Color color_, ground_;
    DragListener& listener_;
    bool isHovered_ = false, isDragging_ = false;
};

// A place of the ground that can be clicked; it draws nothing.
class TitleArea : public VSTGUI::CView {
public:
    TitleArea(const VSTGUI::CRect& rect, std::function<void()> clicked, std::function<void(bool)> hovered);

    void draw(VSTGUI::CDrawContext*) override { setDirty(false); }
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseEnterEvent(VSTGUI::MouseEnterEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;

    CLASS_METHODS_NOCOPY(TitleArea, VSTGUI::CView)

private:
    std::function<void()> clicked_;
    std::function<void(bool)> hovered_;
};

}  // namespace vantoric
