#include "editor/panel_parts.h"

#include <algorithm>
#include <numbers>

#include "editor/overlay.h"

namespace vantoric {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;

namespace {

constexpr Color darkText = hexColor(0x14181A);

void drawRing(Pen& pen, const CRect& area, double radius) {
    pen.roundLine(area.left - 2.5, area.top - 2.5, area.getWidth() + 5, area.getHeight() + 5, radius + 2.5, style::white, 1.2);
}

}  // namespace

void drawVeil(Pen& pen, const CRect& area) {
    pen.rect(area.left, area.top, area.getWidth(), area.getHeight(), fade(style::black, 0.55));
}

void drawPanel(Pen& pen, const CRect& panel, double radius, const Color& fill) {
    for (int k = 10; k > 0; k -= 2)
        pen.round(panel.left - k, panel.top - k + 3, panel.getWidth() + 2 * k, panel.getHeight() + 2 * k, radius + k,
                  fade(style::black, 0.06));
    pen.round(panel.left, panel.top, panel.getWidth(), panel.getHeight(), radius, fill);
    pen.roundLine(panel.left, panel.top, panel.getWidth(), panel.getHeight(), radius, style::menuEdge);
}

bool isDrawn(Pen& pen, const CRect& area) {
    CRect clip;
    pen.context().getClipRect(clip);
    return clip.rectOverlap(area);
}

void drawButton(Pen& pen, const CRect& area, const std::string& label, const ButtonLook& look) {
    Color fill = look.isMain ? style::output : style::hover;
    if (look.isHovered) fill = mix(fill, style::white, look.isMain ? 0.6 : 0.12);
    if (look.isPressed) fill = mix(fill, style::black, 0.2);
    if (look.isOff) fill = mix(style::menu, style::hover, 0.5);
    pen.round(area.left, area.top, area.getWidth(), area.getHeight(), 4, fill);
    const Color ink = look.isOff ? style::text3 : look.isMain ? darkText : style::text;
    pen.text(area.getCenter().x, area.getCenter().y + 3.4, label, Face::semibold, 9.5, ink, Align::centre, area.getWidth() - 6);
    if (look.isFocused) drawRing(pen, area, 4);
}

double chipWidth(const std::string& label) { return measured(label, Face::medium, 9.5) + 20; }

void drawChip(Pen& pen, const CRect& area, const std::string& label, bool isOn, bool isHovered, bool isFocused) {
    const double radius = area.getHeight() / 2;
    if (isOn) {
        pen.round(area.left, area.top, area.getWidth(), area.getHeight(), radius, isHovered ? style::white : style::output);
    } else {
        if (isHovered) pen.round(area.left, area.top, area.getWidth(), area.getHeight(), radius, fade(style::white, 0.07));
        pen.roundLine(area.left, area.top, area.getWidth(), area.getHeight(), radius, fade(style::white, isHovered ? 0.5 : 0.28));
    }
    pen.text(area.getCenter().x, area.getCenter().y + 3.4, label, isOn ? Face::semibold : Face::medium, 9.5,
             isOn        ? darkText
             : isHovered ? style::text
                         : style::text2,
             Align::centre, area.getWidth() - 8);
    if (isFocused) drawRing(pen, area, radius);
}

void drawTypingPlace(Pen& pen, const CRect& area, bool isActive) {
    pen.round(area.left, area.top, area.getWidth(), area.getHeight(), 5, style::inset);
    pen.roundLine(area.left, area.top, area.getWidth(), area.getHeight(), 5, isActive ? style::text2 : style::menuEdge);
}

void drawCross(Pen& pen, CPoint middle, const Color& color) {
    pen.line({{middle.x - 4, middle.y - 4}, {middle.x + 4, middle.y + 4}}, color, 1.4);
    pen.line({{middle.x + 4, middle.y - 4}, {middle.x - 4, middle.y + 4}}, color, 1.4);
}

void drawLens(Pen& pen, CPoint middle, const Color& color) {
    pen.arc(middle.x - 1, middle.y - 1, 4, 0, 2 * std::numbers::pi, color, 1.3);
    pen.line({{middle.x + 2, middle.y + 2}, {middle.x + 5, middle.y + 5}}, color, 1.4);
}

void drawFolder(Pen& pen, CPoint middle, const Color& color) {
    const double x = middle.x - 5, y = middle.y - 4;
    pen.round(x, y, 5, 3, 1, mix(color, style::black, 0.25));
    pen.round(x, y + 1.4, 10, 7, 1.2, color);
}

void drawSheet(Pen& pen, CPoint middle, const Color& color) {
    const double x = middle.x - 3.5, y = middle.y - 4.5;
    pen.polygonLine({{x, y}, {x + 4.4, y}, {x + 7, y + 2.6}, {x + 7, y + 9}, {x, y + 9}}, color, 0.9);
    pen.line({{x + 4.4, y}, {x + 4.4, y + 2.6}, {x + 7, y + 2.6}}, color, 0.9);
}

// ---- the scroll bar

void ScrollBar::setPlace(const CRect& area, double content, double visible) {
    area_ = area;
    content_ = content;
    visible_ = visible;
    scrollTo(position_);
}

double ScrollBar::farthest() const { return std::max(0.0, content_ - visible_); }

void ScrollBar::scrollTo(double position) { position_ = std::clamp(position, 0.0, farthest()); }

void ScrollBar::reveal(double from, double to) {
    if (to > position_ + visible_) scrollTo(to - visible_);
    if (from < position_) scrollTo(from);
}

double ScrollBar::thumbLength() const {
    constexpr double shortest = 18;
    return std::clamp(length() * visible_ / std::max(content_, 1.0), std::min(shortest, length()), length());
}

CRect ScrollBar::thumb() const {
    const double from = start() + (farthest() > 0 ? (length() - thumbLength()) * position_ / farthest() : 0),
                 to = from + thumbLength();
    return isLying() ? CRect(from, area_.top, to, area_.bottom) : CRect(area_.left, from, area_.right, to);
}

bool ScrollBar::press(CPoint where) {
    if (!isNeeded() || !CRect(area_).inset(-3, -3).pointInside(where)) return false;
    isHeld_ = true;
    const bool isOnThumb = CRect(thumb()).inset(-3, -3).pointInside(where);
    heldAt_ = isOnThumb ? along(where) - along(thumb().getTopLeft()) : thumbLength() / 2;  // beside it: there at once
    drag(where);
    return true;
}

void ScrollBar::drag(CPoint where) {
    const double room = length() - thumbLength();
    if (isHeld_ && room > 0) scrollTo((along(where) - heldAt_ - start()) / room * farthest());
}

void ScrollBar::draw(Pen& pen, const Color& ground) const {
    if (!isNeeded()) return;
    const CRect bar = thumb();
    pen.round(bar.left, bar.top, bar.getWidth(), bar.getHeight(), std::min(bar.getWidth(), bar.getHeight()) / 2,
              mix(ground, style::white, isHeld_ ? 0.45 : 0.28));
}

}  // namespace vantoric
