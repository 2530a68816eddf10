// What lies over all controls without taking part: the strip at a touched knob, tooltips, the cable of a drag.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "editor/pen.h"
#include "editor/tooltip_text.h"
#include "vstgui/lib/cview.h"

namespace vantoric {

class Overlay : public VSTGUI::CView {
public:
    explicit Overlay(const VSTGUI::CRect& area);

    struct Strip {
        VSTGUI::CPoint at;  // middle of its upper edge
        std::vector<std::string> lines;
        Color outline = style::hintEdge;
        friend bool operator==(const Strip&, const Strip&) = default;
    };
    void setStrip(const std::optional<Strip>& strip);

    // A tooltip at a control; an empty text takes it away.
    void setTooltip(const std::string& text, const VSTGUI::CRect& control);

    // A ring around what has the focus by keyboard, where that draws none itself.
    void setFocus(const std::optional<VSTGUI::CRect>& focus);

    struct Cable {
        VSTGUI::CPoint from, to;
        Color color;
        std::vector<std::string> lines;  // what a drop would do
        friend bool operator==(const Cable&, const Cable&) = default;
    };
    void setCable(const std::optional<Cable>& cable);

    void draw(VSTGUI::CDrawContext* context) override;

    CLASS_METHODS_NOCOPY(Overlay, VSTGUI::CView)

private:
    VSTGUI::CRect stripArea(const VSTGUI::CPoint& at, const std::vector<std::string>& lines) const;
    VSTGUI::CRect cableArea(const Cable& cable) const;
    void drawStrip(Pen& pen, const VSTGUI::CRect& area, const std::vector<std::string>& lines, const Color& outline) const;
    void drawTooltip(Pen& pen) const;
    void drawCable(Pen& pen, const Cable& cable) const;

    std::optional<Strip> strip_;
    std::optional<Cable> cable_;
    TooltipText tooltip_;
    VSTGUI::CRect tooltipArea_;
    std::optional<VSTGUI::CRect> focus_;
};

// The text in lines no wider than `width`, broken at blanks and newlines.
std::vector<std::string> wrapped(const std::string& text, style::Face face, double size, double width);
// The width of a text outside of drawing.
double measured(const std::string& text, style::Face face, double size);

}  // namespace vantoric
