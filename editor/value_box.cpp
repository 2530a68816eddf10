#include "editor/value_box.h"

#include <algorithm>
#include <cmath>

#include "editor/overlay.h"

namespace vantoric {

using style::Face;
using VSTGUI::CRect;
using VSTGUI::VirtualKey;

namespace {

constexpr double boxWidth = 172, padding = 10, headHeight = 24, lineHeight = 22, noteSize = 9, noteHeight = 12;
constexpr unsigned caretRounds = 10;  // of `follow`: half a second

}  // namespace

ValueBox::ValueBox(const CRect& area, const CRect& anchor, Asked asked, Then then, std::function<void()> closed)
    : LayerView(area),
      asked_(std::move(asked)),
      then_(std::move(then)),
      closed_(std::move(closed)),
      line_(asked_.maxBytes),
      anchor_(anchor) {
    setTransparency(true);
    line_.setText(asked_.text, asked_.selectsAll);
    layOut();
}

void ValueBox::layOut() {
    const CRect area = CRect(getViewSize()).inset(4, 4);
    const double width = std::clamp(measured(asked_.title, Face::title, 10.5) + 2 * padding, boxWidth, 232.0);
    notes_ = wrapped(error_.empty() ? asked_.hint : error_, Face::medium, noteSize, width - 2 * padding);
    const double notes = notes_.empty() ? 0 : 4 + noteHeight * static_cast<double>(notes_.size());
    const double height = headHeight + lineHeight + notes + padding;
    double left = getViewSize().getCenter().x - width / 2, top = getViewSize().getCenter().y - height / 2;
    if (!anchor_.isEmpty()) {
        left = anchor_.getCenter().x - width / 2;
        top = anchor_.bottom + 6;
        if (top + height > area.bottom) top = anchor_.top - 6 - height;
    }
    left = std::round(std::clamp(left, area.left, std::max(area.left, area.right - width)));
    top = std::round(std::clamp(top, area.top, std::max(area.top, area.bottom - height)));
    panel_ = {left, top, left + width, top + height};
}

void ValueBox::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    drawPanel(pen, panel_, 6);
    const double left = panel_.left + padding, width = panel_.getWidth() - 2 * padding;
    pen.text(left, panel_.top + 16.5, asked_.title, Face::title, 10.5, style::text, Align::left, width);
    const CRect place(left, panel_.top + headHeight, panel_.right - padding, panel_.top + headHeight + lineHeight);
    drawTypingPlace(pen, place, true);
    if (!error_.empty()) pen.roundLine(place.left, place.top, place.getWidth(), place.getHeight(), 5, style::alarm);
    const double unit = pen.text(place.right - 7, place.top + 14.6, asked_.unit, Face::medium, 10, style::text3, Align::right);
    const bool hasCaret = rounds_ / caretRounds % 2 == 0;
    line_.draw(pen, place.left + 8, place.top + 14.6, place.getWidth() - 16 - (unit > 0 ? unit + 6 : 0), Face::medium, 10.5,
               style::text, true, hasCaret);
    double y = place.bottom + 13;
    for (const std::string& note : notes_) {
        pen.text(left, y, note, Face::medium, noteSize, error_.empty() ? style::text2 : mix(style::alarm, style::white, 0.45));
        y += noteHeight;
    }
    setDirty(false);
}

void ValueBox::follow() {
    if (++rounds_ % caretRounds == 0) invalidRect(panel_);
}

void ValueBox::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (!panel_.pointInside(event.mousePosition)) dismiss();
}

void ValueBox::onKey(VSTGUI::KeyboardEvent& event) {
    event.consumed = true;
    if (event.type != VSTGUI::EventType::KeyDown) return;
    switch (event.virt) {
        case VirtualKey::Escape: return dismiss();
        case VirtualKey::Return:
        case VirtualKey::Enter: return accept();
        default: break;
    }
    if (!line_.onKey(event)) return;
    rounds_ = 0;
    if (!error_.empty()) {  // it is being mended
        error_.clear();
        layOut();
        return invalid();
    }
    invalidRect(panel_);
}

void ValueBox::accept() {
    const auto alive = VSTGUI::shared(this);
    const auto wrong = then_ ? then_(line_.text()) : std::nullopt;
    if (!wrong) return close();
    error_ = *wrong;
    layOut();
    invalid();
}

void ValueBox::close() {
    const auto alive = VSTGUI::shared(this);
    if (const auto closed = std::exchange(closed_, nullptr)) closed();
}

void ValueBox::dismiss() {
    then_ = nullptr;
    close();
}

}  // namespace vantoric
