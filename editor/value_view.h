// Values that are dragged up and down: fields with their text, and the bars of the step LFO.
#pragma once

#include <optional>

#include "editor/control_face.h"
#include "editor/model/knob_drag.h"

namespace vantoric {

// What drags have in common: a linear drag that Shift makes fine, the wheel, a double click.
class DraggedView : public ControlView {
public:
    using ControlView::ControlView;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;
    bool isHeldByLeft() const override { return isDragged(); }
    void cancelDrag() override;

protected:
    bool isDragged() const { return drag_.isDragging(); }
    // False if there is nothing to drag at present.
    virtual bool canDrag() const { return true; }
    // The value, 0 to 1, that the pointer stands for during a drag.
    virtual float valueAt(VSTGUI::MouseEvent& event);
    void setByHand(float value);
    KnobMouse mouseAt(const VSTGUI::MouseEvent& event);
    KnobDrag drag_;

private:
    void endDrag();

    ClickPair clicks_;
};

// Kinds 10 and 14: a name and a value, and the value once more as a bar along the foot.
class MYParamDisplay : public DraggedView {
public:
    using DraggedView::DraggedView;
    // The colour of the bar, where it is not the section's: an amount has that of its source.
    void setBarColor(const Color& bar);
    // Something is being dragged that can be dropped here.
    void setTargetRing(const std::optional<Color>& ring);

protected:
    void drawControl(Pen& pen) override;
    bool canDrag() const override;

private:
    void drawBar(Pen& pen);
    void drawText(Pen& pen);

    std::optional<Color> bar_, targetRing_;
};

// Kind 11: a step's level. A drag that leaves the bar sets its neighbours instead; the window leads it.
class StepSliderView : public DraggedView {
public:
    using DraggedView::DraggedView;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    // The level, 0 to 1, at that height.
    float levelAt(double y) const;

protected:
    void drawControl(Pen& pen) override;
    float valueAt(VSTGUI::MouseEvent& event) override;

private:
    VSTGUI::CPoint last_;  // of the pointer in a drag
    bool isFine_ = false;
};

}  // namespace vantoric
