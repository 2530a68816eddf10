#include "faces/standalone/bar_tip.h"

namespace vantoric::standalone {

BarTip::BarTip(const std::string& text) : CView(VSTGUI::CRect()), text_(text) {
    const VSTGUI::CRect area({0, 0}, text_.size());
    setViewSize(area);
    setMouseableArea(area);
}

void BarTip::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const VSTGUI::CRect& r = getViewSize();
    pen.rect(r.left, r.top, r.getWidth(), r.getHeight(), style::menuEdge);
    const double edge = pen.hair();
    pen.rect(r.left + edge, r.top + edge, r.getWidth() - 2 * edge, r.getHeight() - 2 * edge, style::menu);
    text_.draw(pen, r.getTopLeft());
    setDirty(false);
}

}  // namespace vantoric::standalone
