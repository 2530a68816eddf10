#include "editor/overlay.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "editor/lettering.h"

namespace vantoric {
namespace {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;

constexpr double stripSize = 9, stripLine = 12;

}  // namespace

double measured(const std::string& text, Face face, double size) { return lettering::width(text, face, size); }

std::vector<std::string> wrapped(const std::string& text, Face face, double size, double width) {
    std::vector<std::string> lines;
    std::istringstream paragraphs(text);
    for (std::string paragraph; std::getline(paragraphs, paragraph);) {
        std::istringstream words(paragraph);
        std::string line;
        for (std::string word; words >> word;) {
            std::string longer = line;
            if (!longer.empty()) longer += ' ';
            longer += word;
            if (!line.empty() && measured(longer, face, size) > width) {
                lines.push_back(line);
                line = word;
            } else {
                line = longer;
            }
        }
        lines.push_back(line);
    }
    return lines;
}

Overlay::Overlay(const CRect& area) : CView(area) {
    setTransparency(true);
    setMouseEnabled(false);
}

CRect Overlay::stripArea(const CPoint& at, const std::vector<std::string>& lines) const {
    double width = 96;
    for (const std::string& line : lines) width = std::max(width, measured(line, Face::semibold, stripSize) + 14);
    const double height = 6 + stripLine * static_cast<double>(lines.size());
    const CRect& all = getViewSize();
    double x = std::clamp(at.x - width / 2, all.left + 2, std::max(all.left + 2, all.right - width - 2)), y = at.y;
    if (y + height > all.bottom - 2) y = all.bottom - height - 2;
    return {x, y, x + width, y + height};
}

void Overlay::setStrip(const std::optional<Strip>& strip) {
    if (strip == strip_) return;
    const auto invalidStrip = [this] {
        if (strip_) invalidRect(stripArea(strip_->at, strip_->lines).inset(-3, -3));
    };
    invalidStrip();
    strip_ = strip;
    invalidStrip();
}

void Overlay::setTooltip(const std::string& text, const CRect& control) {
    if (!tooltip_.isEmpty()) invalidRect(CRect(tooltipArea_).inset(-4, -4));
    tooltip_ = TooltipText(text);
    if (tooltip_.isEmpty()) return;
    const auto [width, height] = tooltip_.size();
    const CRect& all = getViewSize();
    double y = control.bottom + 8;
    if (strip_) y = std::max(y, stripArea(strip_->at, strip_->lines).bottom + 6);
    if (y + height > all.bottom - 4) y = control.top - 8 - height;
    y = std::max(y, all.top + 4);
    const double x = std::clamp(control.getCenter().x - width / 2, all.left + 4, std::max(all.left + 4, all.right - width - 4));
    tooltipArea_ = {x, y, x + width, y + height};
    invalidRect(CRect(tooltipArea_).inset(-4, -4));
}

void Overlay::setFocus(const std::optional<CRect>& focus) {
    const auto redraw = [this] {
        if (focus_) invalidRect(CRect(*focus_).inset(-5, -5));
    };
    redraw();
    focus_ = focus;
    redraw();
}

CRect Overlay::cableArea(const Cable& cable) const {
    CRect area(cable.from, CPoint(0, 0));
    area.unite(CRect(cable.to, CPoint(0, 0)));
    area.inset(-110, -60);
    if (!cable.lines.empty()) area.unite(stripArea(CPoint(cable.to.x, cable.to.y + 16), cable.lines).inset(-4, -4));
    return area;
}

void Overlay::setCable(const std::optional<Cable>& cable) {
    if (cable == cable_) return;
    if (cable_) invalidRect(cableArea(*cable_));
    cable_ = cable;
    if (cable) invalidRect(cableArea(*cable));
}

void Overlay::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    if (focus_)
        pen.roundLine(focus_->left - 3, focus_->top - 3, focus_->getWidth() + 6, focus_->getHeight() + 6, 6, style::white, 1.4);
    if (strip_) drawStrip(pen, stripArea(strip_->at, strip_->lines), strip_->lines, strip_->outline);
    if (cable_) drawCable(pen, *cable_);
    if (!tooltip_.isEmpty()) drawTooltip(pen);
    setDirty(false);
}

void Overlay::drawStrip(Pen& pen, const CRect& area, const std::vector<std::string>& lines, const Color& outline) const {
    pen.round(area.left - 1, area.top + 1, area.getWidth() + 2, area.getHeight() + 1, 4, fade(style::black, 0.45));
    pen.round(area.left, area.top, area.getWidth(), area.getHeight(), 4, style::hintFill);
    pen.roundLine(area.left, area.top, area.getWidth(), area.getHeight(), 4, outline, 1);
    double y = area.top + 12;
    for (std::size_t i = 0; i < lines.size(); ++i, y += stripLine)
        pen.text(area.getCenter().x, y, lines[i], i == 0 ? Face::semibold : Face::medium, stripSize,
                 i == 0 ? style::white : style::text2, Align::centre);
}

void Overlay::drawTooltip(Pen& pen) const {
    const CRect& r = tooltipArea_;
    pen.round(r.left - 2, r.top + 1, r.getWidth() + 4, r.getHeight() + 3, 6, fade(style::black, 0.3));
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 5, style::menu);
    pen.roundLine(r.left, r.top, r.getWidth(), r.getHeight(), 5, style::menuEdge);
    tooltip_.draw(pen, r.getTopLeft());
}

void Overlay::drawCable(Pen& pen, const Cable& cable) const {
    const CPoint from = cable.from, to = cable.to;
    const double pull = std::max(40.0, std::abs(to.y - from.y) * 0.5);
    const double side = to.y < from.y ? -1 : 1;
    pen.bezier(from, {from.x, from.y + side * pull}, {to.x - (to.x - from.x) * 0.25, to.y - side * pull * 0.3}, to, cable.color,
               2);
    pen.dot(from.x, from.y, 3.5, cable.color);
    pen.dot(to.x, to.y, 4.5, cable.color);
    pen.dot(to.x, to.y, 2, style::white);
    if (!cable.lines.empty()) drawStrip(pen, stripArea(CPoint(to.x, to.y + 16), cable.lines), cable.lines, cable.color);
}

}  // namespace vantoric
