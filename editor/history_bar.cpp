#include "editor/history_bar.h"

#include <numbers>
#include <utility>

namespace vantoric {

using VSTGUI::CPoint;
using VSTGUI::CRect;

HistoryBar::HistoryBar(const CRect& area, std::function<void(Button, bool)> pressed, std::function<void(Button)> hovered)
    : CView(area), pressed_(std::move(pressed)), hoveredTold_(std::move(hovered)) {
    setTransparency(true);
}

CRect HistoryBar::place(const CRect& area, Button button) {
    switch (button) {
        case Button::compare: return {area.left, area.top, area.left + 36, area.bottom};
        case Button::undo: return {area.left + 40, area.top, area.left + 60, area.bottom};
        case Button::redo: return {area.left + 60, area.top, area.left + 80, area.bottom};
        default: return {};
    }
}

void HistoryBar::setShown(const Shown& shown) {
    if (shown == shown_) return;
    shown_ = shown;
    invalid();
}

HistoryBar::Button HistoryBar::buttonAt(CPoint where) const {
    for (const Button button : {Button::compare, Button::undo, Button::redo})
        if (place(getViewSize(), button).pointInside(where)) return button;
    return Button::none;
}

void HistoryBar::setHovered(Button button) {
    if (button == hovered_) return;
    hovered_ = button;
    hoveredTold_(button);
    invalid();
}

void HistoryBar::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    event.ignoreFollowUpMoveAndUpEvents(true);
    const Button button = buttonAt(event.mousePosition);
    if (button == Button::none) return;
    pressed_(button, event.modifiers.has(VSTGUI::ModifierKey::Shift));
    hoveredTold_(button);
}

void HistoryBar::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) { setHovered(buttonAt(event.mousePosition)); }
void HistoryBar::onMouseExitEvent(VSTGUI::MouseExitEvent&) { setHovered(Button::none); }

void HistoryBar::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    drawCompare(pen);
    drawArrow(pen, Button::undo, shown_.canUndo);
    drawArrow(pen, Button::redo, shown_.canRedo);
    setDirty(false);
}

void HistoryBar::drawCompare(Pen& pen) const {
    const CRect r = place(getViewSize(), Button::compare);
    pen.round(r.left, r.top + 1, r.getWidth(), r.getHeight() - 2, 4, mix(style::band, style::black, 0.3));
    const double x = r.left + 18.0 * shown_.slot;
    pen.round(x, r.top + 1, 18, r.getHeight() - 2, 4, hovered_ == Button::compare ? style::hover : style::raised);
    for (int slot = 0; slot < 2; ++slot)
        pen.text(r.left + 9 + 18.0 * slot, r.top + 11.4, slot == 0 ? "A" : "B", style::Face::semibold, 9,
                 slot == shown_.slot ? style::text : style::text3, Align::centre);
}

// Three quarters of a circle that ends in an arrow's head, to the left for undo.
void HistoryBar::drawArrow(Pen& pen, Button button, bool isEnabled) const {
    const CPoint at = place(getViewSize(), button).getCenter();
    const double side = button == Button::undo ? -1 : 1;
    const Color color = !isEnabled ? mix(style::band, style::text3, 0.45) : hovered_ == button ? style::text : style::text2;
    constexpr double down = std::numbers::pi / 2, up = -std::numbers::pi / 2, left = std::numbers::pi;
    if (button == Button::undo) {
        pen.arc(at.x, at.y + 0.6, 3.6, up, down + 0.4, color, 1.3, true);
    } else {
        pen.arc(at.x, at.y + 0.6, 3.6, down - 0.4, left + down, color, 1.3, true);
    }
    const double headX = at.x + side * 2.6, headY = at.y - 3;
    pen.line({{at.x, headY}, {headX, headY}}, color, 1.3);
    pen.polygon({{headX + side * 2.8, headY}, {headX, headY - 2.6}, {headX, headY + 2.6}}, color);
}

}  // namespace vantoric
