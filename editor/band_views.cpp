#include "editor/band_views.h"

#include <algorithm>
#include <cmath>

namespace vantoric {
namespace {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;

const Color trough = mix(style::bandPanel, style::black, 0.4);

}  // namespace

// ---- the patch

PatchLine::PatchLine(const CRect& area, std::function<void()> openCategories, std::function<void()> openPatches)
    : CView(area), openCategories_(std::move(openCategories)), openPatches_(std::move(openPatches)) {
    setTransparency(true);
}

void PatchLine::setShown(const Shown& shown) {
    if (shown == shown_) return;
    shown_ = shown;
    invalid();
}

void PatchLine::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CRect& r = getViewSize();
    const double x = r.left, upper = r.top + 11, lower = r.top + 32;
    const std::string category = shown_.category.empty() ? "Custom" : shown_.category;
    const Color bright = hovered_ == Part::category ? style::text : style::text2;
    const double width = pen.text(x + 1, upper, category, Face::medium, 9.5, bright, Align::left, 150);
    pen.chevron(x + width + 9, upper - 3, Pointing::down, 2.2, bright);
    std::string place;
    if (shown_.place > 0) place = std::to_string(shown_.place) + " of " + std::to_string(shown_.count);
    double end = x + width + 23;
    end += pen.text(end, upper, place, Face::medium, 9.5, style::text3);
    if (shown_.isChanged) {
        pen.dot(end + 10, upper - 3.2, 2, style::multilayer);
        pen.text(end + 16, upper, "edited", Face::medium, 9, style::text2);
    }
    pen.text(x, lower, shown_.name, Face::title, 17, hovered_ == Part::name ? style::white : style::text, Align::left,
             r.getWidth() - 2);
    setDirty(false);
}

PatchLine::Part PatchLine::partAt(CPoint where) const {
    if (!getViewSize().pointInside(where)) return Part::none;
    return where.y < getViewSize().top + 15 ? Part::category : Part::name;
}

void PatchLine::setHovered(Part part) {
    if (part == hovered_) return;
    hovered_ = part;
    invalid();
    CRect place = getViewSize();
    part == Part::category ? place.bottom = place.top + 15 : place.top += 15;
    if (hoverHeard_) hoverHeard_(static_cast<int>(part), place);
}

void PatchLine::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    event.ignoreFollowUpMoveAndUpEvents(true);
    if (event.buttonState.isRight()) {
        if (notesWanted_) notesWanted_();
        return;
    }
    if (partAt(event.mousePosition) == Part::category) return openCategories_();
    openPatches_();
}

void PatchLine::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) { setHovered(partAt(event.mousePosition)); }
void PatchLine::onMouseExitEvent(VSTGUI::MouseExitEvent&) { setHovered(Part::none); }

// ---- the star

FavouriteView::FavouriteView(const CRect& area, VSTGUI::IControlListener* listener, int tag) : CControl(area, listener, tag) {
    setTransparency(true);
}

void FavouriteView::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CPoint at = getViewSize().getCenter();
    const bool isOn = getValue() > 0.5f;
    pen.star(at.x, at.y, 7, isOn ? style::oscillators : isHovered_ ? style::text : style::text3, isOn);
    setDirty(false);
}

void FavouriteView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    event.ignoreFollowUpMoveAndUpEvents(true);
    if (event.buttonState.isLeft()) press();
}

void FavouriteView::press() {
    setValue(getValue() > 0.5f ? 0.0f : 1.0f);
    valueChanged();
    if (isHovered_) tellHover(true);  // what is said of it is another thing now
    invalid();
}

void FavouriteView::onMouseEnterEvent(VSTGUI::MouseEnterEvent&) {
    isHovered_ = true;
    tellHover(true);
    invalid();
}

void FavouriteView::onMouseExitEvent(VSTGUI::MouseExitEvent&) {
    isHovered_ = false;
    tellHover(false);
    invalid();
}

// ---- wheels

WheelView::WheelView(const CRect& area, VSTGUI::IControlListener* listener, int tag, bool springsBack)
    : CControl(area, listener, tag), springsBack_(springsBack) {
    setTransparency(true);
    if (springsBack) setValue(0.5f);
}

void WheelView::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CRect& r = getViewSize();
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, trough);
    const double y = r.top + 6 + (1 - getValue()) * (r.getHeight() - 12);
    if (springsBack_) {
        pen.rect(r.left + 3, (r.top + r.bottom) / 2, r.getWidth() - 6, pen.hair(), style::text3);
    } else {
        pen.round(r.left, y, r.getWidth(), r.bottom - y, 4, mix(style::bandPanel, style::output, 0.22));
    }
    pen.round(r.left + 1, y - 3.5, r.getWidth() - 2, 7, 2.5, hexColor(isHeld_ ? 0x707B84 : 0x59636B));
    pen.rect(r.left + 3, y - 0.7, r.getWidth() - 6, 1.4, style::handle);
    setDirty(false);
}

void WheelView::setByHand(float value) {
    if (value == getValue()) return;
    setValue(value);
    valueChanged();
    invalid();
}

void WheelView::follow(CPoint where) {
    const CRect& r = getViewSize();
    setByHand(static_cast<float>(std::clamp(1 - (where.y - r.top - 6) / (r.getHeight() - 12), 0.0, 1.0)));
    tellHover(true);
}

void WheelView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (!event.buttonState.isLeft()) {
        event.ignoreFollowUpMoveAndUpEvents(true);
        if (event.buttonState.isRight() && menuWanted_) menuWanted_();
        return;
    }
    isHeld_ = true;
    valueBefore_ = getValue();
    beginEdit();
    follow(event.mousePosition);
    invalid();
}

void WheelView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!isHeld_) return;
    event.consumed = true;
    follow(event.mousePosition);
}

void WheelView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    letGo();
}

void WheelView::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    letGo();
}

void WheelView::cancel() {
    if (!isHeld_) return;
    if (!springsBack_) setByHand(valueBefore_);
    letGo();
}

void WheelView::letGo() {
    if (!isHeld_) return;
    isHeld_ = false;
    if (springsBack_) setByHand(0.5f);
    endEdit();
    invalid();
}

// ---- the meter

MeterView::MeterView(const CRect& area) : CView(area) { setTransparency(true); }

int MeterView::lit(float level) { return std::clamp(static_cast<int>(std::lround(level * segments)), 0, segments); }

void MeterView::setLevels(float left, float right) {
    if (lit(left) == left_ && lit(right) == right_) return;
    left_ = lit(left);
    right_ = lit(right);
    invalid();
}

void MeterView::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CRect& r = getViewSize();
    const Color quiet = hexColor(0x5F6B72);
    for (int channel = 0; channel < 2; ++channel) {
        const double x = r.left + 8 * channel;
        pen.round(x, r.top, 6, r.getHeight(), 2, trough);
        const int shown = channel == 0 ? left_ : right_;
        for (int i = 0; i < shown; ++i) {
            const double t = (i + 1.0) / segments;
            pen.rect(x + 1, r.bottom - 3 - i * 3.85, 4, 2.7, t < 0.9 ? mix(quiet, style::output, t) : style::alarm);
        }
    }
    setDirty(false);
}

// ---- the hint line

HintLine::HintLine(const CRect& area) : CView(area) {
    setTransparency(true);
    setMouseEnabled(false);
}

void HintLine::setText(const std::string& text, Kind kind) {
    if (text == text_ && kind == kind_) return;
    text_ = text;
    kind_ = kind;
    invalid();
}

void HintLine::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CRect& r = getViewSize();
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, mix(style::band, style::black, 0.3));
    if (kind_ != Kind::help)
        pen.round(r.left, r.top, 3, r.getHeight(), 1.5, kind_ == Kind::alarm ? style::alarm : style::multilayer);
    std::string line = text_;
    std::replace(line.begin(), line.end(), '\n', ' ');
    pen.text(r.left + 8, r.top + 11.4, line, Face::medium, 9.5, kind_ == Kind::help ? style::text2 : style::text, Align::left,
             r.getWidth() - 16);
    setDirty(false);
}

}  // namespace vantoric
