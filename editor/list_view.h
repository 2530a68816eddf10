// A control that opens a list to choose from.
#pragma once

#include "editor/control_face.h"

namespace vantoric {

// Kinds 6, 7 and 8: drop-down lists in three sizes; the arpeggiator's cells are lists too.
class ListView : public ControlView {
public:
    using ControlView::ControlView;
    // How loud an arpeggiator step is, 0 to 1; drawn behind its text.
    void setLevel(float level);
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;

protected:
    void drawControl(Pen& pen) override;

private:
    bool isCell() const;
    Corners corners() const;
    void drawCell(Pen& pen);
    void drawSmall(Pen& pen, const Color& fill);

    float level_ = 0;
    bool isPressed_ = false;
};

}  // namespace vantoric
