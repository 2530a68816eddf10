#include "editor/button_views.h"

#include <cmath>
#include <numbers>

namespace vantoric {
namespace {

// A click that ends with the press: nothing follows that the control would have to see.
bool isPlainClick(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    event.ignoreFollowUpMoveAndUpEvents(true);
    return event.buttonState.isLeft();
}

}  // namespace

// ---- switch

void SwitchView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    if (!isPlainClick(event)) return window().controlMenuWanted(*this);
    beginEdit();
    setValue(getValue() > 0.5f ? 0.0f : 1.0f);
    valueChanged();
    endEdit();
    invalid();
}

void SwitchView::drawControl(Pen& pen) {
    const bool isOn = getValue() > 0.5f;
    const double radius = height() / 2;
    Color sign = style::text2;
    if (isOn) {
        const Color fill = mix(color(), ground(), isHovered() ? 0.0 : 0.08);
        pen.round(left(), top(), width(), height(), radius, fill);
        sign = isOff() ? style::text : style::sign;  // a faded fill is dark
    } else {
        pen.round(left(), top(), width(), height(), radius, mix(ground(), style::black, 0.3));
        pen.roundLine(left(), top(), width(), height(), radius, mix(ground(), style::white, isHovered() ? 0.4 : 0.22));
    }
    const std::string caption = entry().caption;
    if (caption == "On") {
        pen.power(centre(), middle() + 0.3, 3.1, sign);
    } else {
        pen.text(centre(), middle() + 3.1, caption, style::Face::semibold, 8.5, sign, Align::centre, width() - 3);
    }
}

// ---- selector

bool SelectorView::isLayer() const { return entry().tag >= tag::layer1 && entry().tag < tag::layer1 + 4; }

void SelectorView::setLamp(int value) {
    if (value == lamp_) return;
    lamp_ = value;
    invalid();
}

void SelectorView::setSource(DragListener& listener, int area, const char* hint) {
    constexpr double reach = 4;  // a click is none
    drag_.emplace(listener, area, body().getCenter(), reach, [this](VSTGUI::CPoint where) { leaveIfOutside(where); });
    hint_ = hint;
}

void SelectorView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    if (!isPlainClick(event)) return;
    event.ignoreFollowUpMoveAndUpEvents(!drag_);
    setValue(1);
    valueChanged();
    invalid();
    if (drag_) drag_->press(event.mousePosition);
}

void SelectorView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!drag_ || !drag_->isPressed()) return;
    event.consumed = true;
    drag_->move(event.mousePosition);
}

void SelectorView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    if (!drag_) return;
    event.consumed = true;
    drag_->release(event.mousePosition);
}

void SelectorView::leaveIfOutside(VSTGUI::CPoint where) {
    if (body().pointInside(where)) return;
    setHovered(false);
    window().controlHovered(*this, false);
}

void SelectorView::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    if (drag_) drag_->cancel();
}

void SelectorView::drawControl(Pen& pen) {
    if (isLayer()) {
        drawLayer(pen);
    } else {
        drawTab(pen);
    }
}

void SelectorView::drawLayer(Pen& pen) {
    const bool isSelected = getValue() > 0.5f;
    const Color fill = mix(style::band, style::white, isSelected ? 0.15 : isHovered() ? 0.09 : 0.04);
    pen.round(left(), top(), width(), height(), 6, fill);
    if (isSelected) pen.roundLine(left(), top(), width(), height(), 6, style::text2);
    pen.text(centre(), top() + 30, entry().caption, style::Face::title, 19, isSelected ? style::text : style::text2,
             Align::centre);
    const double x = left() + width() - 9, y = top() + 9, glow = lamp_ / 127.0;
    pen.dot(x, y, 3, mix(fill, style::black, 0.45));
    if (lamp_ == 0) return;
    pen.glow(x, y, 9, fade(style::lampOn, 0.5 * glow));
    pen.dot(x, y, 3, mix(fill, style::lampOn, 0.25 + 0.75 * glow));
}

void SelectorView::drawTab(Pen& pen) {
    const bool isSelected = getValue() > 0.5f;
    if (isSelected) {
        pen.round(left(), top(), width(), height(), 4, mix(ground(), color(), 0.17));
        pen.round(left() + 10, top() + height() - 2, width() - 20, 2, 1, color());
    } else if (isHovered()) {
        pen.round(left(), top(), width(), height(), 4, mix(ground(), style::white, 0.06));
    }
    pen.text(centre(), middle() + 3.4, entry().caption, isSelected ? style::Face::semibold : style::Face::medium, 9.5,
             isSelected || isHovered() ? style::text : style::text2, Align::centre, width() - 2);
}

// ---- button

void ButtonView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (!event.buttonState.isLeft()) return event.ignoreFollowUpMoveAndUpEvents(true);
    isPressed_ = true;
    invalid();
}

void ButtonView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    if (!isPressed_) return;
    isPressed_ = false;
    invalid();
    if (body().pointInside(event.mousePosition)) window().controlPressed(*this, event.modifiers);
}

void ButtonView::drawControl(Pen& pen) {
    switch (entry().tag) {
        case tag::shop: return drawWordMark(pen);
        case tag::browser: return drawBrowser(pen);
        case tag::previousPatch:
        case tag::nextPatch:
            pen.chevron(centre(), middle(), entry().tag == tag::previousPatch ? Pointing::left : Pointing::right, 5,
                        isHovered() ? style::text : style::text2, 1.8);
            return;
        default: break;
    }
    pen.round(left(), top(), width(), height(), 3, isHovered() ? style::hover : style::raised);
    if (entry().tag % 2 == tag::sampleLoad1 % 2) {
        drawFolder(pen);
    } else {
        drawPencil(pen);
    }
}

// The O of the word mark is the ring of the knobs, its notch in the oscillators' colour.
void ButtonView::drawWordMark(Pen& pen) {
    const double line = middle() + 4.4, notch = (0.75 + 1.5 * 0.66) * std::numbers::pi;
    double x = left() + 3;
    for (const char letter : std::string("VANTORIC")) {
        if (letter != 'O') {
            x += pen.text(x, line, std::string(1, letter), style::Face::title, 12.5, style::text) + 1.7;
            continue;
        }
        x += 5.6;
        pen.arc(x, line - 4.5, 3.9, 0, 2 * std::numbers::pi, style::text, 2.4);
        pen.arc(x, line - 4.5, 3.9, notch - 0.62, notch + 0.62, style::band, 3.2);
        pen.arc(x, line - 4.5, 3.9, notch - 0.40, notch + 0.40, style::oscillators, 2.4);
        x += 5.6 + 1.6;
    }
}

void ButtonView::drawBrowser(Pen& pen) {
    pen.round(left(), top(), width(), height(), 4, isHovered() || isOpen() ? style::hover : style::raised);
    const Color ink = isOpen() ? style::oscillators : style::text;
    constexpr double lengths[] = {9, 6, 9};
    for (int row = 0; row < 3; ++row) {
        const double y = middle() + 6 * (row - 1);
        pen.dot(centre() - 8, y, 1.3, ink);
        pen.line({{centre() - 3.5, y}, {centre() + lengths[row], y}}, ink, 1.6);
    }
}

void ButtonView::drawFolder(Pen& pen) {
    const double x = left(), y = top();
    pen.polygonLine(
        {{x + 3.5, y + 12}, {x + 3.5, y + 4.5}, {x + 6.8, y + 4.5}, {x + 8, y + 6.2}, {x + 12.5, y + 6.2}, {x + 12.5, y + 12}},
        style::text, 1.1);
}

void ButtonView::drawPencil(Pen& pen) {
    const double x = left(), y = top();
    pen.polygonLine({{x + 4.4, y + 11.6}, {x + 5.2, y + 8.8}, {x + 10, y + 4}, {x + 12, y + 6}, {x + 7.2, y + 10.8}}, style::text,
                    1.1);
}

// ---- head of a menu

void MenuButtonView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    isPressed_ = event.buttonState.isLeft();
    if (isPressed_) window().controlListWanted(*this);
}

void MenuButtonView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!isPressed_) return;
    event.consumed = true;
    window().controlPointer(event.mousePosition, false);
}

void MenuButtonView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    if (!isPressed_) return;
    event.consumed = true;
    isPressed_ = false;
    window().controlPointer(event.mousePosition, true);
}

void MenuButtonView::drawControl(Pen& pen) {
    const bool isLit = isHovered() || isOpen();
    if (entry().tag == tag::zoomMenu) {  // shows the zoom, which it changes
        pen.round(left(), top(), width(), height(), 4, isLit ? style::hover : style::raised);
        pen.text(left() + 6, middle() + 3.4, text(), style::Face::medium, 9.5, style::text);
        pen.chevron(left() + width() - 7, middle() + 0.2, Pointing::down, 2.1, style::text3);
        return;
    }
    if (isLit) pen.round(left(), top(), width(), height(), 4, style::hover);
    pen.text(centre(), middle() + 3.5, entry().caption, style::Face::medium, 10, isLit ? style::text : style::text2,
             Align::centre, width() - 4);
}

}  // namespace vantoric
