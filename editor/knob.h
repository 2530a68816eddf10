// The knob: a ring with a notch, an arc for its value, a band for what the matrix adds to it.
#pragma once

#include <optional>

#include "editor/control_face.h"
#include "editor/model/knob_drag.h"
#include "editor/model/matrix_editing.h"
#include "vstgui/lib/controls/cknob.h"

namespace vantoric {

// Measures of the two sizes of knob, in window units.
struct KnobMeasures {
    double arc, arcWidth, body, hole, pointer, bandInner, bandOuter, captionLine, hitRadius;
};
const KnobMeasures& knobMeasures(WidgetKind kind);

// Hears what is done to the depth of the modulation that a knob shows.
class DepthListener {
public:
    virtual void depthDragBegan(ControlFace& knob) = 0;
    // The amount, 0 to 1, of the slot that the knob shows.
    virtual void depthDragged(ControlFace& knob, float amount) = 0;
    virtual void depthDragEnded(ControlFace& knob) = 0;
    // The depth is to be what it was when the drag began.
    virtual void depthDragCancelled(ControlFace& knob) = 0;

protected:
    ~DepthListener() = default;
};

// Kinds 1 and 2.
class MYCKnob : public VSTGUI::CKnob, public ControlFace {
public:
    MYCKnob(const ControlEntry& entry, ControlListener& listener, DepthListener& depth);

    VSTGUI::CControl& view() override { return *this; }
    VSTGUI::CRect body() override;
    bool isHeldByLeft() const override { return drag_.isDragging() && button_ == vantoric::MouseButton::left; }
    void cancelDrag() override;

    // What the matrix does to its parameter, with the colour of the source.
    void setModulation(const KnobModulation& modulation, const Color& source);
    const KnobModulation& modulation() const { return modulation_; }
    // Something is being dragged that can be dropped here, or is about to be: the colour of its source.
    void setTargetRing(const std::optional<Color>& ring, bool isNearest);
    bool isDepthDragging() const { return drag_.isDepthDragging(); }

    void draw(VSTGUI::CDrawContext* context) override;
    void invalidRect(const VSTGUI::CRect& rect) override;
    bool hitTest(const VSTGUI::CPoint& where, const VSTGUI::Event& event) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseEnterEvent(VSTGUI::MouseEnterEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;
    void onKeyboardEvent(VSTGUI::KeyboardEvent&) override {}  // the window moves the control that has the focus

    CLASS_METHODS_NOCOPY(MYCKnob, VSTGUI::CKnob)

private:
    void drawGround(Pen& pen);
    void drawBody(Pen& pen);
    void drawValue(Pen& pen);
    void drawModulation(Pen& pen);
    void drawGrip(Pen& pen);
    void drawMarks(Pen& pen);
    void drawRing(Pen& pen, double radius, const Color& color, double width);
    void drawCaption(Pen& pen);
    VSTGUI::CPoint gripCentre() const;
    KnobMouse mouseAt(VSTGUI::CPoint where) const;
    KnobMouse mouseOf(const VSTGUI::MouseEvent& event) const;
    void showCursor(int cursor);
    void endDrag();

    DepthListener& depth_;
    const KnobMeasures& measures_;
    KnobModulation modulation_;
    Color sourceColor_ = style::output;
    std::optional<Color> targetRing_;
    bool isNearestTarget_ = false;
    KnobDrag drag_;
    vantoric::MouseButton button_ = vantoric::MouseButton::none;  // that began the drag: moves tell it wrongly
    ClickPair clicks_;
    KeptDrawing kept_;
};

}  // namespace vantoric
