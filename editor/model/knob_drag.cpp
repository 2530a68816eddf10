#include "editor/model/knob_drag.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/numbers.h"

namespace vantoric {

namespace {

constexpr float wholeRangePixels = 250.0f;  // of mouse travel
constexpr float depthPerPixel = 0.0016666667f;
constexpr float gripLeft = 44.0f, gripWidth = 13.0f, stripHeight = 15.0f;
constexpr float turn = 2.0f * std::numbers::pi_v<float>;

}  // namespace

KnobDrag::Press KnobDrag::press(const KnobMouse& mouse, float value, float modDepth) {
    drag_ = Drag::none;
    value_ = clampTo(value, shape_.minimum, shape_.maximum);
    if (mouse.isDouble) {
        value_ = clampTo(shape_.defaultValue, shape_.minimum, shape_.maximum);
        return Press::reset;
    }
    if (mouse.button == MouseButton::right) return Press::menu;
    if (mouse.button == MouseButton::left && modDepth != 0.0f && inDepthStrip(mouse.x, mouse.y)) {
        drag_ = Drag::depth;
        modDepthAtClick_ = modDepth;
        return Press::depth;
    }
    drag_ = mouse.button == MouseButton::left ? Drag::linear : Drag::angle;
    startX_ = mouse.x;
    startY_ = mouse.y;
    isFine_ = mouse.isFine;
    if (drag_ == Drag::angle) value_ = lastTaken_ = valueOfAngle(mouse.x, mouse.y);
    startValue_ = value_;
    return Press::value;
}

float KnobDrag::move(const KnobMouse& mouse) {
    if (drag_ == Drag::linear) value_ = moveLinear(mouse);
    if (drag_ == Drag::angle) value_ = moveByAngle(mouse);
    return value_;
}

float KnobDrag::depth(const KnobMouse& mouse) const { return depthOfDrag(mouse.x, mouse.y, modDepthAtClick_); }

float KnobDrag::coefficient(bool isFine) const {
    return (shape_.maximum - shape_.minimum) / (wholeRangePixels * slowness_ * (isFine ? shape_.zoomFactor : 1.0f));
}

float KnobDrag::moveLinear(const KnobMouse& mouse) {
    const float way = (mouse.x - startX_) + (startY_ - mouse.y);
    const float value = clampTo(startValue_ + way * coefficient(isFine_), shape_.minimum, shape_.maximum);
    if (mouse.isFine != isFine_) {
        // From here on the drag begins anew, so that the value does not jump.
        isFine_ = mouse.isFine;
        startX_ = mouse.x;
        startY_ = mouse.y;
        startValue_ = value;
    }
    return value;
}

float KnobDrag::moveByAngle(const KnobMouse& mouse) {
    const float wanted = valueOfAngle(mouse.x, mouse.y);
    if (std::fabs(wanted - lastTaken_) > (shape_.maximum - shape_.minimum) * 0.5f)
        return wanted < lastTaken_ ? shape_.maximum : shape_.minimum;
    return lastTaken_ = wanted;
}

// In the gap between the maximum and the minimum the nearer one counts.
float KnobDrag::valueOfAngle(float x, float y) const {
    const float range = std::fabs(shape_.rangeAngle);
    float angle = std::atan2(y - shape_.height * 0.5f, x - shape_.width * 0.5f) - shape_.startAngle;
    if (shape_.rangeAngle < 0.0f) angle = -angle;
    angle -= turn * std::floor(angle / turn);
    if (angle > range) angle = angle - range < turn - angle ? range : 0.0f;
    const float share = range > 0.0f ? std::min(angle / range, 1.0f) : 0.0f;
    return shape_.minimum + share * (shape_.maximum - shape_.minimum);
}

std::optional<int> KnobDrag::hoverCursor(float x, float y, int modCount) const {
    if (modCount <= 0 || isDragging()) return {};
    return inDepthStrip(x, y) ? depthStripCursor : plainCursor;
}

bool inDepthStrip(float x, float y) { return x >= gripLeft && x <= gripLeft + gripWidth && y >= 0.0f && y < stripHeight; }

float depthOfDrag(float x, float y, float modDepthAtClick) {
    return clampUnit((x - y - 51.0f) * depthPerPixel + modDepthAtClick * 0.5f + 0.5f);
}

float angleOfValue(const KnobShape& shape, float value) {
    const float span = shape.maximum - shape.minimum;
    return shape.startAngle + (span > 0.0f ? (value - shape.minimum) / span : 0.0f) * shape.rangeAngle;
}

ModulationArc modulationArc(float position, float modDepth, bool modBipolar) {
    const float reach = modBipolar ? std::fabs(modDepth) : std::fabs(modDepth) * 0.5f;
    const bool goesDown = modBipolar || modDepth < 0.0f, goesUp = modBipolar || modDepth > 0.0f;
    return {goesDown ? position - reach : position, goesUp ? position + reach : position};
}

ArcParts arcParts(const ModulationArc& arc) {
    ArcParts parts;
    const auto add = [&](float low, float high, bool isInRange) {
        if (low < high) parts.parts[static_cast<std::size_t>(parts.count++)] = {low, high, isInRange};
    };
    add(arc.low, std::min(arc.high, 0.0f), false);
    add(std::max(arc.low, 0.0f), std::min(arc.high, 1.0f), true);
    add(std::max(arc.low, 1.0f), arc.high, false);
    return parts;
}

}  // namespace vantoric
