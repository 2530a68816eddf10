#include "editor/knob.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "editor/model/window_layout.h"
#include "editor/picture.h"
#include "vstgui/lib/cframe.h"

namespace vantoric {
namespace {

using VSTGUI::CPoint;
using VSTGUI::CRect;

// From half past seven to half past four.
double angleOf(double value) { return angleOfValue({}, static_cast<float>(value)); }

// A drag is measured in pixels of the normal layout, from the left upper corner of what that layout calls the knob: so far
// from the middle that the depth strip lies around the grip.
constexpr float pixelsAUnit = 1.5f;
struct KnobPixels {
    float width, height, centreX, centreY;
};
KnobPixels knobPixels(WidgetKind kind) {
    return kind == WidgetKind::LargeKnob ? KnobPixels{169.4f, 112, 84.7f, 42} : KnobPixels{144, 76, 72, 26};
}

KnobShape shapeOf(const ControlEntry& entry) {
    const KnobPixels pixels = knobPixels(entry.kind);
    KnobShape shape;
    shape.width = pixels.width;
    shape.height = 2 * pixels.centreY;  // angles are those around the drawn middle
    shape.defaultValue = entry.defaultValue;
    return shape;
}

vantoric::MouseButton buttonOf(const VSTGUI::MouseEventButtonState& state) {
    if (state.isLeft()) return vantoric::MouseButton::left;
    return state.isRight() ? vantoric::MouseButton::right : vantoric::MouseButton::other;
}

CRect viewOf(const ControlEntry& entry) {
    const KnobMeasures& m = knobMeasures(entry.kind);
    const double side = entry.kind == WidgetKind::Knob ? 30 : 34;  // with room for a caption beside it
    return {entry.x - side, entry.y - m.bandOuter - 2, entry.x + side, entry.y + m.captionLine + 4};
}

}  // namespace

const KnobMeasures& knobMeasures(WidgetKind kind) {
    static constexpr KnobMeasures plain{12.4, 2.2, 9.8, 5.0, 2.3, 14.4, 17.4, 25.5, 12};
    static constexpr KnobMeasures large{20.6, 3.0, 17.0, 10.4, 3.2, 23.0, 27.0, 36.0, 21};
    return kind == WidgetKind::LargeKnob ? large : plain;
}

MYCKnob::MYCKnob(const ControlEntry& entry, ControlListener& listener, DepthListener& depth)
    : CKnob(viewOf(entry), &listener, entry.tag, nullptr, nullptr),
      ControlFace(entry, listener),
      depth_(depth),
      measures_(knobMeasures(entry.kind)),
      drag_(shapeOf(entry)) {
    setTransparency(true);
}

CRect MYCKnob::body() {
    const double r = measures_.hitRadius + 1;
    return {entry().x - r, entry().y - r, entry().x + r, entry().y + r};
}

void MYCKnob::setModulation(const KnobModulation& modulation, const Color& source) {
    if (modulation.modDepth == modulation_.modDepth && modulation.modCount == modulation_.modCount &&
        modulation.modBipolar == modulation_.modBipolar && modulation.source == modulation_.source && source == sourceColor_)
        return;
    modulation_ = modulation;
    sourceColor_ = source;
    invalid();
}

void MYCKnob::setTargetRing(const std::optional<Color>& ring, bool isNearest) {
    if (ring == targetRing_ && isNearest == isNearestTarget_) return;
    targetRing_ = ring;
    isNearestTarget_ = isNearest;
    invalid();
}

// ---- drawing

void MYCKnob::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    kept_.show(pen, getViewSize(), [this](Pen& picture) {
        drawGround(picture);
        drawValue(picture);
        if (modulation_.modDepth != 0) drawModulation(picture);
        drawMarks(picture);
        drawCaption(picture);
        drawFocus(picture, measures_.hitRadius);
        drawDimming(picture, getViewSize());
    });
    setDirty(false);
}

// Comes with every change, also from `invalid`.
void MYCKnob::invalidRect(const CRect& rect) {
    kept_.changed();
    CKnob::invalidRect(rect);
}

// All that does not depend on the value: the ring's trough and the body, the same for many knobs.
void MYCKnob::drawGround(Pen& pen) {
    const bool isLit = isHovered() || isEditing();
    const double x = entry().x, y = entry().y, reach = measures_.arc + measures_.arcWidth;
    const Color at = ground();
    const std::string key = (entry().kind == WidgetKind::LargeKnob ? "large knob " : "knob ") + std::to_string(isLit) +
                            std::to_string(isMultilayer()) + std::to_string(at.red);
    showShared(pen, key, CRect(x - reach, y - reach, x + reach, y + reach), [&](Pen& picture) {
        picture.arc(x, y, measures_.arc, angleOf(0), angleOf(1), mix(at, style::white, 0.11), measures_.arcWidth, true);
        drawBody(picture);
    });
}

void MYCKnob::drawBody(Pen& pen) {
    const double x = entry().x, y = entry().y;
    const bool isLit = isHovered() || isEditing();
    Color top = hexColor(isLit ? 0x5A646C : 0x485158), bottom = hexColor(isLit ? 0x343B41 : 0x2A3035);
    if (isMultilayer()) {
        top = mix(style::multilayer, style::white, 0.12);
        bottom = mix(style::multilayer, style::black, 0.22);
    }
    pen.dot(x, y + 0.8, measures_.body + 0.5, fade(style::black, 0.38));
    pen.verticalGradientDot(x, y, measures_.body, top, bottom);
    constexpr double degree = std::numbers::pi / 180;
    pen.arc(x, y, measures_.body - 0.35, 200 * degree, 340 * degree, fade(style::white, 0.16), 0.7);
    const Color hole = mix(ground(), style::black, 0.42);
    pen.dot(x, y, measures_.hole, hole);
    pen.arc(x, y, measures_.hole + 0.1, 20 * degree, 160 * degree, fade(style::white, 0.10), 0.6);
}

void MYCKnob::drawValue(Pen& pen) {
    const double x = entry().x, y = entry().y, value = getValueNormalized();
    const double from = entry().bipolar ? std::min(0.5, value) : 0.0, to = entry().bipolar ? std::max(0.5, value) : value;
    if (to - from > 0.004) {
        pen.arc(x, y, measures_.arc, angleOf(from), angleOf(to), color(), measures_.arcWidth, true);
    } else if (entry().bipolar) {
        pen.dot(x, y - measures_.arc, measures_.arcWidth / 2, mix(ground(), color(), 0.55));
    }
    const double angle = angleOf(value), inner = measures_.hole + 0.2, outer = measures_.body - 0.6;
    const Color notch = isMultilayer() ? hexColor(0x1A1408) : isOff() ? style::text3 : style::handle;
    pen.line(
        {{x + std::cos(angle) * inner, y + std::sin(angle) * inner}, {x + std::cos(angle) * outer, y + std::sin(angle) * outer}},
        notch, measures_.pointer);
    if (entry().kind == WidgetKind::LargeKnob)
        pen.text(x, y + 2.9, text(), style::Face::semibold, 8.2, style::text, Align::centre, 2 * measures_.hole - 1);
}

void MYCKnob::drawModulation(Pen& pen) {
    const double x = entry().x, y = entry().y, r = (measures_.bandInner + measures_.bandOuter) / 2;
    const double width = measures_.bandOuter - measures_.bandInner;
    const ModulationArc arc = modulationArc(getValueNormalized(), modulation_.modDepth, modulation_.modBipolar);
    const Color band = isDepthDragging() ? fade(sourceColor_, 0.75) : style::modulated;
    constexpr float shownBeyond = 0.12f;   // past it the two ends would meet
    const ArcParts parts = arcParts(arc);  // outlives the loop
    for (const ArcPart& part : parts.all()) {
        const double from = angleOf(std::max(part.low, -shownBeyond)), to = angleOf(std::min(part.high, 1 + shownBeyond));
        if (!(to > from)) continue;
        pen.arc(x, y, r, from, to, part.isInRange ? band : style::beyondRange, width);
        if (part.isInRange) pen.arc(x, y, measures_.bandOuter - 0.5, from, to, sourceColor_, 1.2);
    }
    drawGrip(pen);
}

// Within the depth strip, clear of the band; a large knob has it near, as it may stand at a panel's edge.
CPoint MYCKnob::gripCentre() const {
    if (entry().kind == WidgetKind::LargeKnob) return {entry().x - 22.8, entry().y - 22.2};
    return {entry().x - 14.9, entry().y - 13.8};
}

void MYCKnob::drawGrip(Pen& pen) {
    const CPoint at = gripCentre();
    pen.dot(at.x, at.y, 4.6, mix(ground(), style::black, 0.3));
    // Three quarters of a disc, open towards the knob.
    constexpr double begin = 0.5 * std::numbers::pi + 0.25 * std::numbers::pi - 0.785 + 0.785;
    pen.pie(at.x, at.y, isDepthDragging() ? 4.2 : 3.6, begin, begin + 4.71, sourceColor_);
}

void MYCKnob::drawMarks(Pen& pen) {
    const double x = entry().x, y = entry().y;
    if (ccNumber() >= 0) pen.dot(x + measures_.body * 1.25, y - measures_.body * 1.25, 2.1, style::alarm);
    if (ccNumber() == -2) drawRing(pen, measures_.arc + 3.4, fade(style::alarm, 0.35 + 0.65 * learnGlow()), 1.6);
    if (targetRing_) {
        const double r = measures_.arc + (isNearestTarget_ ? 4.2 : 3.2);
        if (isNearestTarget_) drawRing(pen, r + 2.5, fade(*targetRing_, 0.3), 4);
        drawRing(pen, r, fade(*targetRing_, isNearestTarget_ ? 1.0 : 0.6), isNearestTarget_ ? 2.4 : 1.0);
    }
}

// Around the knob, open where its caption stands beside it.
void MYCKnob::drawRing(Pen& pen, double radius, const Color& color, double width) {
    constexpr double captionReach = 7;  // above and below the knob's middle
    const double open = captionStandsBeside(entry()) ? std::asin(captionReach / radius) : 0;
    pen.arc(entry().x, entry().y, radius, open, 2 * std::numbers::pi - open, color, width);
}

void MYCKnob::drawCaption(Pen& pen) {
    const std::string caption = entry().caption;
    const bool isLit = isHovered() || isEditing();
    if (captionStandsBeside(entry())) {  // between two rows there is no room below
        pen.text(entry().x + 14.8, entry().y + 3.2, caption, style::Face::medium, 8.5, isLit ? style::text : style::text2);
        return;
    }
    const double size = entry().kind == WidgetKind::Knob ? 9 : 9.5;
    pen.text(entry().x, entry().y + measures_.captionLine, caption, style::Face::medium, size, isLit ? style::text : style::text2,
             Align::centre);
}

// ---- the hand

bool MYCKnob::hitTest(const CPoint& where, const VSTGUI::Event&) {
    const double dx = where.x - entry().x, dy = where.y - entry().y, r = measures_.arc + 1.6;
    if (dx * dx + dy * dy <= r * r) return true;
    const KnobMouse mouse = mouseAt(where);
    return modulation_.modCount > 0 && inDepthStrip(mouse.x, mouse.y);
}

KnobMouse MYCKnob::mouseAt(CPoint where) const {
    const KnobPixels pixels = knobPixels(entry().kind);
    KnobMouse mouse;
    mouse.x = static_cast<float>(where.x - entry().x) * pixelsAUnit + pixels.centreX;
    mouse.y = static_cast<float>(where.y - entry().y) * pixelsAUnit + pixels.centreY;
    return mouse;
}

KnobMouse MYCKnob::mouseOf(const VSTGUI::MouseEvent& event) const {
    KnobMouse mouse = mouseAt(event.mousePosition);
    mouse.button = button_;
    mouse.isFine = event.modifiers.has(VSTGUI::ModifierKey::Shift);
    return mouse;
}

void MYCKnob::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    endDrag();
    if (event.modifiers.has(VSTGUI::ModifierKey::Alt)) {
        event.ignoreFollowUpMoveAndUpEvents(true);
        return window().controlTypingWanted(*this);
    }
    button_ = buttonOf(event.buttonState);
    drag_.setSlowness(pixelsAUnit / window().layoutScale());  // the range is as long in the pixels of any layout
    KnobMouse mouse = mouseOf(event);
    mouse.isDouble = button_ == vantoric::MouseButton::left && clicks_.isSecond(event.mousePosition);
    switch (drag_.press(mouse, getValueNormalized(), modulation_.modDepth)) {
        case KnobDrag::Press::reset: event.ignoreFollowUpMoveAndUpEvents(true); return window().controlResetWanted(*this);
        case KnobDrag::Press::menu: event.ignoreFollowUpMoveAndUpEvents(true); return window().controlMenuWanted(*this);
        case KnobDrag::Press::depth:
            showCursor(depthDragCursor);
            depth_.depthDragBegan(*this);
            break;
        case KnobDrag::Press::value: beginEdit(); break;
    }
    invalid();
}

void MYCKnob::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    const KnobMouse mouse = mouseOf(event);
    clicks_.moved(event.mousePosition);
    if (drag_.isDepthDragging()) {
        event.consumed = true;
        return depth_.depthDragged(*this, drag_.depth(mouse));
    }
    if (drag_.isDragging()) {
        event.consumed = true;
        const float value = drag_.move(mouse);
        if (value == getValueNormalized()) return;
        setValueNormalized(value);
        valueChanged();
        return invalid();
    }
    if (const auto cursor = drag_.hoverCursor(mouse.x, mouse.y, modulation_.modCount)) showCursor(*cursor);
}

// The model's cursors have the library's numbers.
void MYCKnob::showCursor(int cursor) {
    static_assert(depthDragCursor == static_cast<int>(VSTGUI::kCursorVSize));
    static_assert(depthStripCursor == static_cast<int>(VSTGUI::kCursorHand));
    getFrame()->setCursor(static_cast<VSTGUI::CCursorType>(cursor));
}

void MYCKnob::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    endDrag();
    event.consumed = true;
}

void MYCKnob::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    endDrag();
    event.consumed = true;
}

void MYCKnob::endDrag() {
    if (!drag_.isDragging()) return;
    const bool wasDepth = drag_.isDepthDragging();
    drag_.release();
    if (wasDepth) {
        showCursor(plainCursor);
        depth_.depthDragEnded(*this);
    } else {
        endEdit();
    }
    invalid();
}

void MYCKnob::cancelDrag() {
    if (!drag_.isDragging()) return;
    if (drag_.isDepthDragging()) {
        depth_.depthDragCancelled(*this);
    } else {
        window().controlCancelled(*this);
    }
    endDrag();
}

void MYCKnob::onMouseEnterEvent(VSTGUI::MouseEnterEvent& event) {
    setHovered(true);
    window().controlHovered(*this, true);
    event.consumed = true;
}

void MYCKnob::onMouseExitEvent(VSTGUI::MouseExitEvent& event) {
    setHovered(false);
    showCursor(plainCursor);
    window().controlHovered(*this, false);
    event.consumed = true;
}

void MYCKnob::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    const float step = event.modifiers.has(VSTGUI::ModifierKey::Shift) ? 0.001f : 0.01f;
    const float value = std::clamp(getValueNormalized() + step * static_cast<float>(event.deltaY + event.deltaX), 0.0f, 1.0f);
    event.consumed = true;
    if (value == getValueNormalized()) return;
    beginEdit();
    setValueNormalized(value);
    valueChanged();
    endEdit();
    invalid();
}

}  // namespace vantoric
