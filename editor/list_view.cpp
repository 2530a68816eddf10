#include "editor/list_view.h"

#include "base/parameters.h"

namespace vantoric {

void ListView::setLevel(float level) {
    if (level == level_) return;
    level_ = level;
    invalid();
}

void ListView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    isPressed_ = event.buttonState.isLeft();
    if (event.buttonState.isRight()) return window().controlMenuWanted(*this);
    window().controlListWanted(*this);
}

void ListView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!isPressed_) return;
    event.consumed = true;
    window().controlPointer(event.mousePosition, false);
}

void ListView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    if (!isPressed_) return;
    event.consumed = true;
    isPressed_ = false;
    window().controlPointer(event.mousePosition, true);
}

void ListView::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    event.consumed = true;
    const double turn = event.deltaY + event.deltaX;
    if (turn != 0) window().controlStepped(*this, turn > 0 ? -1 : 1);
}

bool ListView::isCell() const { return entry().section == Section::Arpeggiator && entry().kind == WidgetKind::SmallList; }

// Lists that stand at a display join it without a gap.
Corners ListView::corners() const {
    constexpr double r = 4;
    switch (entry().section) {
        case Section::Oscillators:
            if (entry().kind != WidgetKind::LargeList) return 3;
            return entry().tag < parameter::SynType1 + 3 && entry().tag >= parameter::SynType1 ? Corners(r, r, 0, 0)
                                                                                               : Corners(0, 0, r, r);
        case Section::Filters: return entry().kind == WidgetKind::List ? Corners(0, r, 0, 0) : Corners(3);
        case Section::Lfo:
            return entry().tag >= parameter::LfoWave1 && entry().tag < parameter::LfoWave1 + 3 ? Corners(0, 0, r, r) : Corners(3);
        default: return 3;
    }
}

void ListView::drawControl(Pen& pen) {
    if (isCell()) return drawCell(pen);
    const bool isLit = isHovered() || isOpen();
    const Color fill = isLit ? style::hover : style::raised;
    pen.round(left(), top(), width(), height(), corners(), fill);
    if (entry().kind == WidgetKind::SmallList) return drawSmall(pen, fill);
    pen.chevron(left() + width() - 10, middle() + 0.2, isOpen() ? Pointing::up : Pointing::down, 2.6, style::text3);
    const bool isType = entry().tag >= parameter::SynType1 && entry().tag < parameter::SynType1 + 3;
    pen.text(left() + 7, middle() + 3.5, text(), isType ? style::Face::semibold : style::Face::medium, 10,
             isOff() ? style::text3 : style::text, Align::left, width() - 24);
}

void ListView::drawSmall(Pen& pen, const Color&) {
    const double right = left() + width() - 2.5, bottom = top() + height() - 2.5;
    pen.polygon({{right, bottom - 4}, {right, bottom}, {right - 4, bottom}}, style::text3);
    pen.text(centre(), middle() + 3.2, text(), style::Face::medium, 9, isOff() ? style::text3 : style::text, Align::centre,
             width() - 4);
}

void ListView::drawCell(Pen& pen) {
    const bool isLevel = entry().tag >= parameter::ArpVol1;
    const int step = (entry().tag - (isLevel ? parameter::ArpVol1 : parameter::ArpStp1));
    Color fill = mix(ground(), style::black, step % 4 == 0 ? 0.42 : 0.30);
    if (isHovered() || isOpen()) fill = style::hover;
    pen.round(left(), top(), width(), height(), 3, fill);
    if (isLevel && level_ > 0) {
        const Pen::Clip clip(pen, left(), top(), width() * level_, height());
        pen.round(left(), top(), width(), height(), 3, mix(fill, color(), 0.28));
    }
    const bool isRest = text() == "." || (!isLevel && text() == "0");
    pen.text(centre(), middle() + 3.4, text() == "." ? "\u00b7" : text(), isRest ? style::Face::medium : style::Face::semibold,
             9.5, isRest ? style::text2 : style::text, Align::centre, width() - 4);
}

}  // namespace vantoric
