// Where a source of modulation is picked up to be dropped on a control.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "editor/pen.h"
#include "vstgui/lib/cview.h"
#include "vstgui/lib/events.h"

namespace vantoric {

class SourceDrag;

// Hears of drags; places in window units.
class DragListener {
public:
    virtual void dragHovered(int area, bool isHovered) = 0;
    virtual void dragBegan(SourceDrag& drag) = 0;
    virtual void dragMoved(const SourceDrag& drag, VSTGUI::CPoint where) = 0;
    // `where` is where it was dropped.
    virtual void dragEnded(const SourceDrag& drag, VSTGUI::CPoint where) = 0;
    virtual void dragCancelled(const SourceDrag& drag) = 0;

protected:
    ~DragListener() = default;
};

// The gesture by which a view has its source carried away: the view hands on what the left button does.
class SourceDrag {
public:
    // `area` names the source to the listener, its cable goes out `from` there. The drag begins so many units away from where
    // the button went down. `ended` hears where the pointer is as the button is let go of, or the drag called off: no exit is
    // told of that.
    using Ended = std::function<void(VSTGUI::CPoint where)>;
    SourceDrag(DragListener& listener, int area, VSTGUI::CPoint from, double reach, Ended ended)
        : listener_(listener), area_(area), from_(from), reach_(reach), ended_(std::move(ended)) {}

    int area() const { return area_; }
    VSTGUI::CPoint from() const { return from_; }
    // The button is down; the second: what it carries is on its way.
    bool isPressed() const { return state_ != State::none; }
    bool isDragging() const { return state_ == State::dragging; }

    void press(VSTGUI::CPoint where);
    void move(VSTGUI::CPoint where);
    void release(VSTGUI::CPoint where);
    void cancel();

private:
    enum class State { none, pressed, dragging };

    DragListener& listener_;
    int area_;
    VSTGUI::CPoint from_;
    double reach_;
    Ended ended_;
    State state_ = State::none;
    VSTGUI::CPoint pressedAt_, last_;
};

class MYDragArea : public VSTGUI::CView {
public:
    // `area` names it to the listener.
    MYDragArea(const VSTGUI::CRect& rect, int area, const std::string& caption, const Color& color, const Color& ground,
               DragListener& listener);

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseEnterEvent(VSTGUI::MouseEnterEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;

    CLASS_METHODS_NOCOPY(MYDragArea, VSTGUI::CView)

private:
    void setHovered(bool isHovered);

    std::string caption_;
    Color color_, ground_;
    DragListener& listener_;
    SourceDrag drag_;
    bool isHovered_ = false;
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
