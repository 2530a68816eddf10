#include "editor/value_view.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "editor/model/control_texts.h"

namespace vantoric {
namespace {

using VSTGUI::ModifierKey;

bool hasDigit(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; });
}

}  // namespace

// ---- drags

void DraggedView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (!event.buttonState.isLeft()) {
        event.ignoreFollowUpMoveAndUpEvents(true);
        if (event.buttonState.isRight()) window().controlMenuWanted(*this);
        return;
    }
    if (!canDrag()) return event.ignoreFollowUpMoveAndUpEvents(true);
    endDrag();
    if (event.modifiers.has(ModifierKey::Alt)) {
        event.ignoreFollowUpMoveAndUpEvents(true);
        return window().controlTypingWanted(*this);
    }
    KnobMouse mouse = mouseAt(event);
    mouse.isDouble = clicks_.isSecond(event.mousePosition);
    if (drag_.press(mouse, getValueNormalized()) == KnobDrag::Press::reset) {
        event.ignoreFollowUpMoveAndUpEvents(true);
        return window().controlResetWanted(*this);
    }
    beginEdit();
    setByHand(valueAt(event));
    invalid();
}

KnobMouse DraggedView::mouseAt(const VSTGUI::MouseEvent& event) {
    const double pixelsAUnit = window().layoutScale();
    KnobMouse mouse;
    mouse.x = static_cast<float>(event.mousePosition.x * pixelsAUnit);
    mouse.y = static_cast<float>(event.mousePosition.y * pixelsAUnit);
    mouse.isFine = event.modifiers.has(ModifierKey::Shift);
    return mouse;
}

void DraggedView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!isDragged()) return;
    event.consumed = true;
    clicks_.moved(event.mousePosition);
    setByHand(valueAt(event));
}

void DraggedView::setByHand(float value) {
    value = std::clamp(value, 0.0f, 1.0f);
    if (value == getValueNormalized()) return;
    setValueNormalized(value);
    valueChanged();
    invalid();
}

float DraggedView::valueAt(VSTGUI::MouseEvent& event) { return drag_.move(mouseAt(event)); }

void DraggedView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    endDrag();
    event.consumed = true;
}

void DraggedView::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    endDrag();
    event.consumed = true;
}

void DraggedView::endDrag() {
    if (!isDragged()) return;
    drag_.release();
    endEdit();
    invalid();
}

void DraggedView::cancelDrag() {
    if (!isDragged()) return;
    window().controlCancelled(*this);
    endDrag();
}

void DraggedView::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    event.consumed = true;
    if (!canDrag()) return;
    const float step = event.modifiers.has(ModifierKey::Shift) ? 0.001f : 0.01f;
    beginEdit();
    setByHand(getValueNormalized() + step * static_cast<float>(event.deltaY + event.deltaX));
    endEdit();
}

// ---- fields

void MYParamDisplay::setBarColor(const Color& bar) {
    if (bar_ == bar) return;
    bar_ = bar;
    invalid();
}

void MYParamDisplay::setTargetRing(const std::optional<Color>& ring) {
    if (ring == targetRing_) return;
    targetRing_ = ring;
    invalid();
}

// An effect that has no such parameter leaves its field empty.
bool MYParamDisplay::canDrag() const { return entry().kind != WidgetKind::EffectValue || !text().empty(); }

void MYParamDisplay::drawControl(Pen& pen) {
    if (!canDrag()) return pen.round(left(), top(), width(), height(), 3, mix(ground(), style::black, 0.14));
    Color fill = mix(ground(), style::black, isHovered() ? 0.26 : 0.36);
    if (isDragged()) fill = mix(fill, bar_.value_or(color()), 0.14);
    pen.round(left(), top(), width(), height(), 3, fill);
    drawBar(pen);
    drawText(pen);
    if (targetRing_) pen.roundLine(left() - 1, top() - 1, width() + 2, height() + 2, 4, *targetRing_, 1.2);
}

void MYParamDisplay::drawBar(Pen& pen) {
    if (!text().empty() && !hasDigit(text())) return;  // a state such as "Free" has no amount
    constexpr double thick = 1.7;
    const double foot = top() + height() - thick, value = getValueNormalized();
    const Pen::Clip clip(pen, left(), foot - 1.5, width(), thick + 1.5);
    const auto bar = [&](double from, double to, const Color& fill) {
        const Pen::Clip part(pen, left() + from * width(), foot, (to - from) * width(), thick);
        pen.round(left(), top(), width(), height(), 3, fill);
    };
    bar(0, 1, mix(ground(), style::white, 0.06));
    const Color fill = bar_.value_or(color());
    if (entry().bipolar) {
        bar(std::min(0.5, value), std::max(0.5, value), fill);
        pen.rect(centre() - pen.hair() / 2, foot - 1.5, pen.hair(), thick + 1.5, style::text3);
    } else if (value > 0.004) {
        bar(0, value, fill);
    }
}

void MYParamDisplay::drawText(Pen& pen) {
    const NameAndValue parts = parted(text());
    const double line = middle() + 2.6;
    const Color bright = isOff() ? style::text3 : style::text;
    if (entry().bipolar || parts.name.empty()) {
        pen.text(centre(), line, parts.value, style::Face::medium, 9.5, bright, Align::centre, width() - 6);
        return;
    }
    const double valueWidth = pen.text(left() + width() - 6, line, parts.value, style::Face::medium, 9.5, bright, Align::right);
    pen.text(left() + 6, line, parts.name, style::Face::medium, 9.5, isOff() ? style::text3 : style::text2, Align::left,
             width() - 15 - valueWidth);
}

// ---- steps

void StepSliderView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    last_ = event.mousePosition;
    isFine_ = event.modifiers.has(ModifierKey::Shift);
    DraggedView::onMouseDownEvent(event);
}

// A row of bars is drawn like a curve; with Shift the one that was pressed moves alone.
void StepSliderView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    const VSTGUI::CPoint from = std::exchange(last_, event.mousePosition);
    const bool wasFine = std::exchange(isFine_, event.modifiers.has(ModifierKey::Shift));
    if (isDragged() && isFine_ && !wasFine) drag_.press(mouseAt(event), getValueNormalized());  // goes on from here
    if (!isDragged() || isFine_) return DraggedView::onMouseMoveEvent(event);
    event.consumed = true;
    window().stepsDrawn(from, event.mousePosition);
}

float StepSliderView::levelAt(double y) const {
    return static_cast<float>(std::clamp((top() + height() - 1 - y) / (height() - 2), 0.0, 1.0));
}

// The bar follows the pointer itself.
float StepSliderView::valueAt(VSTGUI::MouseEvent& event) {
    return event.modifiers.has(ModifierKey::Shift) ? DraggedView::valueAt(event) : levelAt(event.mousePosition.y);
}

void StepSliderView::drawControl(Pen& pen) {
    const Color fill = mix(ground(), style::black, isHovered() ? 0.26 : 0.36);
    pen.round(left(), top(), width(), height(), 3, fill);
    const double bar = std::max(3.0, height() * getValueNormalized()), from = top() + height() - bar;
    const Pen::Clip clip(pen, left(), from, width(), bar);
    pen.round(left(), top(), width(), height(), 3, mix(fill, color(), isDragged() || isHovered() ? 0.5 : 0.34));
    pen.rect(left(), from, width(), 2, color());
}

}  // namespace vantoric
