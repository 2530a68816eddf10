#include "faces/standalone/bar_tip.h"

#include <algorithm>

#include "editor/overlay.h"

namespace vantoric::standalone {
namespace {

using style::Face;
using VSTGUI::CRect;

constexpr double letters = 9.5, lineHeight = 13, mostWidth = 300, atSides = 9, aboveAndBelow = 6;

}  // namespace

BarTip::BarTip(const std::string& text) : CView(CRect()), lines_(wrapped(text, Face::medium, letters, mostWidth)) {
    double width = 0;
    for (const std::string& line : lines_) width = std::max(width, measured(line, Face::medium, letters));
    const CRect area(0, 0, width + 2 * atSides, lineHeight * static_cast<double>(lines_.size()) + 2 * aboveAndBelow);
    setViewSize(area);
    setMouseableArea(area);
}

void BarTip::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CRect& r = getViewSize();
    pen.rect(r.left, r.top, r.getWidth(), r.getHeight(), style::menuEdge);
    const double edge = pen.hair();
    pen.rect(r.left + edge, r.top + edge, r.getWidth() - 2 * edge, r.getHeight() - 2 * edge, style::menu);
    double y = r.top + aboveAndBelow + 10;
    for (const std::string& line : lines_) {
        pen.text(r.left + atSides, y, line, Face::medium, letters, style::text2);
        y += lineHeight;
    }
    setDirty(false);
}

}  // namespace vantoric::standalone
