// The displays: waves, filter responses, the envelope, the LFO.
#pragma once

#include <string>

#include "editor/control_face.h"
#include "editor/model/display_traces.h"

namespace vantoric {

// Kinds 15, 16, 18 and 19. Draws two traces and the surface between them, or a curve over its base.
class Wavedisplay : public ControlView {
public:
    using ControlView::ControlView;

    // What it shows, as points in window units relative to its left upper corner; kept until the next call.
    struct Shown {
        enum class Form {
            curve,    // a line over the base, filled towards it
            region,   // filled between `curve` and `lower`: a sample
            message,  // nothing to see: says why
        };
        Form form = Form::curve;
        Pen::Points curve, lower;
        Pen::Points grain;             // a faint noise floor behind the curve; may be empty
        double base = 0;               // the height that the fill goes to
        Pen::Points marks;             // small rings on the curve, with a line down to the base
        std::string line, secondLine;  // of a message
    };
    void setShown(Shown shown);

    // The markers of a sample, drawn and dragged while they show. Null for none.
    void setMarkers(SampleMarkers* markers) { markers_ = markers; }
    // Moves the loop's ends by keys, in fractions of the width. False if there is none.
    bool nudgeLoop(float start, float end);
    // The loop as the hint line tells it; empty if there is none.
    std::string loopText() const;

    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void cancelDrag() override;
    // A marker is being dragged.
    bool isDragged() const { return markers_ != nullptr && markers_->isDragging(); }

protected:
    void drawControl(Pen& pen) override;

private:
    void endDrag();
    void tellMarked();
    Corners corners() const;
    float fractionAt(const VSTGUI::MouseEvent& event) const;
    void drawGrid(Pen& pen);
    void drawCurve(Pen& pen);
    void drawRegion(Pen& pen);
    void drawMarkers(Pen& pen);
    void drawMessage(Pen& pen);

    Shown shown_;
    SampleMarkers* markers_ = nullptr;
};

}  // namespace vantoric
