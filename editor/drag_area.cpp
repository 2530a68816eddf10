#include "editor/drag_area.h"

namespace vantoric {

MYDragArea::MYDragArea(const VSTGUI::CRect& rect, int area, const std::string& caption, const Color& color, const Color& ground,
                       DragListener& listener)
    : CView(rect), area_(area), caption_(caption), color_(color), ground_(ground), listener_(listener) {
    setTransparency(true);
}

void MYDragArea::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const VSTGUI::CRect& r = getViewSize();
    if (isDragging_) {
        pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, mix(ground_, color_, 0.35));
    } else {
        if (isHovered_) pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, mix(ground_, color_, 0.14));
        pen.roundLine(r.left, r.top, r.getWidth(), r.getHeight(), 4, mix(ground_, color_, isHovered_ ? 0.7 : 0.42));
    }
    const double middle = (r.top + r.bottom) / 2;
    pen.dots(r.left + 8, middle, color_);
    pen.text(r.left + 17, middle + 3.3, caption_, style::Face::medium, 9, isHovered_ || isDragging_ ? style::text : style::text2);
    setDirty(false);
}

void MYDragArea::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (!event.buttonState.isLeft()) return event.ignoreFollowUpMoveAndUpEvents(true);
    isDragging_ = true;
    invalid();
    listener_.dragBegan(area_);
}

void MYDragArea::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!isDragging_) return;
    event.consumed = true;
    listener_.dragMoved(area_, event.mousePosition);
}

void MYDragArea::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    if (!isDragging_) return;
    event.consumed = true;
    isDragging_ = false;
    invalid();
    listener_.dragEnded(area_, event.mousePosition);
}

void MYDragArea::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    cancel();
}

void MYDragArea::cancel() {
    if (!isDragging_) return;
    isDragging_ = false;
    invalid();
    listener_.dragCancelled(area_);
}

void MYDragArea::onMouseEnterEvent(VSTGUI::MouseEnterEvent&) {
    isHovered_ = true;
    invalid();
    listener_.dragHovered(area_, true);
}

void MYDragArea::onMouseExitEvent(VSTGUI::MouseExitEvent&) {
    isHovered_ = false;
    invalid();
    listener_.dragHovered(area_, false);
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
