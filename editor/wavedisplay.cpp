#include "editor/wavedisplay.h"

#include <algorithm>
#include <cmath>

#include "base/number_text.h"

namespace vantoric {

using style::Face;

void Wavedisplay::setShown(Shown shown) {
    shown_ = std::move(shown);
    invalid();
}

bool Wavedisplay::nudgeLoop(float start, float end) {
    if (markers_ == nullptr || !markers_->nudge(start, end)) return false;
    invalid();
    return true;
}

std::string Wavedisplay::loopText() const {
    if (markers_ == nullptr || !markers_->showMarkers) return "";
    return "loop " + decimalText(markers_->loopStart * 100, 1) + " to " + decimalText(markers_->loopEnd * 100, 1) + " %";
}

float Wavedisplay::fractionAt(const VSTGUI::MouseEvent& event) const {
    return static_cast<float>((event.mousePosition.x - left()) / width());
}

void Wavedisplay::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    const bool isLeft = event.buttonState.isLeft(), isRight = event.buttonState.isRight();
    if (markers_ == nullptr || !markers_->showMarkers || !(isLeft || isRight)) {
        event.ignoreFollowUpMoveAndUpEvents(true);
        if (isLeft) window().controlTouched(*this);
        return;
    }
    if (isDragged()) endDrag();  // the other button came down: what was dragged stays where it is
    if (isLeft) window().controlTouched(*this);
    markers_->press(fractionAt(event), isRight ? vantoric::MouseButton::right : vantoric::MouseButton::left);
    tellMarked();
}

void Wavedisplay::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!isDragged()) return;
    event.consumed = true;
    markers_->move(fractionAt(event));
    tellMarked();
}

void Wavedisplay::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    if (!isDragged()) return;
    event.consumed = true;
    endDrag();
}

void Wavedisplay::endDrag() {
    markers_->release();
    tellMarked();
}

void Wavedisplay::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    cancelDrag();
    event.consumed = true;
}

void Wavedisplay::cancelDrag() {
    if (!isDragged()) return;
    markers_->cancel();
    tellMarked();
}

void Wavedisplay::tellMarked() {
    window().controlMarked(*this);
    invalid();
}

// Waves and filters join the lists above and below them without a gap.
Corners Wavedisplay::corners() const {
    constexpr double r = 4;
    switch (entry().kind) {
        case WidgetKind::WaveView: return 0;
        case WidgetKind::FilterView: return Corners(0, 0, r, r);
        default: return r;
    }
}

void Wavedisplay::drawControl(Pen& pen) {
    pen.round(left(), top(), width(), height(), corners(), style::inset);
    drawGrid(pen);
    const Pen::Clip clip(pen, left(), top(), width(), height());
    switch (shown_.form) {
        case Shown::Form::curve: drawCurve(pen); break;
        case Shown::Form::region: drawRegion(pen); break;
        case Shown::Form::message: drawMessage(pen); break;
    }
    if (markers_ != nullptr && markers_->showMarkers) drawMarkers(pen);
}

void Wavedisplay::drawGrid(Pen& pen) {
    if (shown_.form == Shown::Form::message) return;
    const int columns = entry().kind == WidgetKind::FilterView ? 5 : 4, rows = entry().kind == WidgetKind::EnvelopeView ? 4 : 3;
    if (entry().kind != WidgetKind::EnvelopeView)
        for (int i = 1; i < columns; ++i)
            pen.rect(left() + width() * i / columns, top() + 3, pen.hair(), height() - 6, style::grid);
    if (entry().kind == WidgetKind::WaveView || entry().kind == WidgetKind::LfoView)
        return pen.rect(left() + 2, middle() - pen.hair() / 2, width() - 4, pen.hair(), style::grid);
    for (int i = 1; i < rows; ++i) pen.rect(left() + 3, top() + height() * i / rows, width() - 6, pen.hair(), style::grid);
}

void Wavedisplay::drawCurve(Pen& pen) {
    if (shown_.curve.size() < 2) return;
    Pen::Points points = shown_.curve;
    for (Pen::Point& point : points) point.offset(left(), top());
    const double base = top() + shown_.base;
    Pen::Points grain = shown_.grain;
    for (Pen::Point& point : grain) point.offset(left(), top());
    if (grain.size() > 1) pen.line(grain, fade(color(), 0.1), pen.hair());
    pen.filledCurve(points, base, color(), base < top() + height() ? 0 : corners().leftBottom);
    pen.line(points, fade(color(), 0.13), 5.2);
    pen.line(points, color(), 1.5);
    for (const Pen::Point& mark : shown_.marks) {
        const double x = left() + mark.x, y = top() + mark.y;
        pen.line({{x, y + 4}, {x, base}}, fade(color(), 0.5), pen.hair(), true);
        pen.dot(x, y, 2.6, style::inset);
        pen.dot(x, y, 1.9, style::white);
    }
}

void Wavedisplay::drawRegion(Pen& pen) {
    Pen::Points outline = shown_.curve;
    outline.insert(outline.end(), shown_.lower.rbegin(), shown_.lower.rend());
    if (outline.size() < 3) return;
    for (Pen::Point& point : outline) point.offset(left(), top());
    pen.polygon(outline, fade(color(), 0.85));
}

void Wavedisplay::drawMarkers(Pen& pen) {
    const double from = markers_->loopStart, to = markers_->loopEnd, play = markers_->playStart;
    pen.rect(left() + std::min(from, to) * width(), top(), std::abs(to - from) * width(), height(), fade(color(), 0.13));
    const auto flag = [&](double at, double side, bool isUp, const Color& fill) {
        const double x = left() + at * width(), y = isUp ? top() : top() + height(), down = isUp ? 6 : -6;
        pen.rect(x - 0.6, top(), 1.2, height(), fill);
        pen.polygon({{x, y}, {x + 6 * side, y}, {x, y + down}}, fill);
    };
    flag(from, from <= to ? 1 : -1, true, style::text);
    flag(to, from <= to ? -1 : 1, true, style::text);
    flag(play, play > 0.9 ? -1 : 1, false, color());
}

void Wavedisplay::drawMessage(Pen& pen) {
    pen.text(centre(), middle() - 2, shown_.line, Face::medium, 9.5, style::text2, Align::centre, width() - 8);
    pen.text(centre(), middle() + 11, shown_.secondLine, Face::medium, 9, style::text2, Align::centre, width() - 8);
}

}  // namespace vantoric
