#include "editor/drag_area.h"

#include <cmath>

namespace vantoric {

void SourceDrag::press(VSTGUI::CPoint where) {
    state_ = State::pressed;
    pressedAt_ = last_ = where;
    if (reach_ > 0) return;
    state_ = State::dragging;
    listener_.dragBegan(*this);
}

void SourceDrag::move(VSTGUI::CPoint where) {
    last_ = where;
    if (state_ == State::pressed && std::hypot(where.x - pressedAt_.x, where.y - pressedAt_.y) >= reach_) {
        state_ = State::dragging;
        listener_.dragBegan(*this);
    }
    if (state_ == State::dragging) listener_.dragMoved(*this, where);
}

void SourceDrag::release(VSTGUI::CPoint where) {
    const bool wasDragging = isDragging();
    state_ = State::none;
    if (wasDragging) listener_.dragEnded(*this, where);
    ended_(where);
}

void SourceDrag::cancel() {
    const bool wasDragging = isDragging();
    state_ = State::none;
    if (wasDragging) listener_.dragCancelled(*this);
    ended_(last_);
}

MYDragArea::MYDragArea(const VSTGUI::CRect& rect, int area, const std::string& caption, const Color& color, const Color& ground,
                       DragListener& listener)
    : CView(rect),
      caption_(caption),
      color_(color),
      ground_(ground),
      listener_(listener),
      drag_(listener, area, rect.getCenter(), 0, [this](VSTGUI::CPoint where) { setHovered(getViewSize().pointInside(where)); }) {
    setTransparency(true);
}

void MYDragArea::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const VSTGUI::CRect& r = getViewSize();
    if (drag_.isDragging()) {
        pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, mix(ground_, color_, 0.35));
    } else {
        if (isHovered_) pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, mix(ground_, color_, 0.14));
        pen.roundLine(r.left, r.top, r.getWidth(), r.getHeight(), 4, mix(ground_, color_, isHovered_ ? 0.7 : 0.42));
    }
    const double middle = (r.top + r.bottom) / 2;
    pen.dots(r.left + 8, middle, color_);
    pen.text(r.left + 17, middle + 3.3, caption_, style::Face::medium, 9,
             isHovered_ || drag_.isDragging() ? style::text : style::text2);
    setDirty(false);
}

void MYDragArea::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (!event.buttonState.isLeft()) return event.ignoreFollowUpMoveAndUpEvents(true);
    drag_.press(event.mousePosition);
    invalid();
}

void MYDragArea::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!drag_.isPressed()) return;
    event.consumed = true;
    drag_.move(event.mousePosition);
}

void MYDragArea::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    drag_.release(event.mousePosition);
}

void MYDragArea::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    drag_.cancel();
}

void MYDragArea::onMouseEnterEvent(VSTGUI::MouseEnterEvent&) { setHovered(true); }
void MYDragArea::onMouseExitEvent(VSTGUI::MouseExitEvent&) { setHovered(false); }

void MYDragArea::setHovered(bool isHovered) {
    isHovered_ = isHovered;
    invalid();
    listener_.dragHovered(drag_.area(), isHovered);
}

TitleArea::TitleArea(const VSTGUI::CRect& rect, std::function<void()> clicked, std::function<void(bool)> hovered)
    : CView(rect), clicked_(std::move(clicked)), hovered_(std::move(hovered)) {
    setTransparency(true);
}

void TitleArea::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    event.ignoreFollowUpMoveAndUpEvents(true);
    clicked_();
}

void TitleArea::onMouseEnterEvent(VSTGUI::MouseEnterEvent&) { hovered_(true); }
void TitleArea::onMouseExitEvent(VSTGUI::MouseExitEvent&) { hovered_(false); }

}  // namespace vantoric
