// What a mouse does on a knob, and the band by which a knob shows its modulation. Angles in radians, clockwise on the screen
// from the right; points in pixels from the knob's left upper corner, unscaled.
#pragma once

#include <array>
#include <optional>
#include <span>

namespace vantoric {

enum class MouseButton { none, left, right, other };

// A mouse event on a knob.
struct KnobMouse {
    float x = 0.0f, y = 0.0f;
    MouseButton button = MouseButton::left;
    bool isFine = false;  // the Shift key is down
    bool isDouble = false;
};

// What a knob is. Sizes in pixels.
struct KnobShape {
    float width = 60.0f, height = 60.0f;
    float minimum = 0.0f, maximum = 1.0f, defaultValue = 0.5f;
    float zoomFactor = 1.5f;         // by which the fine drag is slower
    float startAngle = 2.35619449f;  // of the minimum
    float rangeAngle = 4.71238898f;  // from there to the maximum; below 0 counter-clockwise
};

// The cursors that knobs ask for.
enum KnobCursor : int { plainCursor = 0, depthDragCursor = 3, depthStripCursor = 9 };

// One drag after the other on one knob. Any thread, one at a time.
class KnobDrag {
public:
    explicit KnobDrag(const KnobShape& shape = {}) : shape_(shape) {}

    // What a press begins.
    enum class Press {
        reset,  // the value takes its default, at once
        menu,   // the knob's menu is to open
        depth,  // a drag of the modulation's depth: `depth` tells the amount
        value,  // a drag of the value: `move` tells it
    };
    // By which factor the range of a drag of the value is longer: where the mouse is told in other pixels than the layout's.
    void setSlowness(float factor) { slowness_ = factor; }
    // A press at a value between the knob's limits; modDepth: of the modulation that the knob shows, 0 for none.
    Press press(const KnobMouse& mouse, float value, float modDepth = 0.0f);
    // The value at a place of the mouse in a drag of the value. While none runs, the value of the last one.
    float move(const KnobMouse& mouse);
    // The amount 0 to 1 at a place of the mouse in a drag of the depth.
    float depth(const KnobMouse& mouse) const;
    // The button went up.
    void release() { drag_ = Drag::none; }

    bool isDragging() const { return drag_ != Drag::none; }
    bool isDepthDragging() const { return drag_ == Drag::depth; }
    // Of the value as the drag left it, between the limits.
    float value() const { return value_; }

    // The cursor over the knob: with no button down, for a knob that `modCount` slots aim at. None: it is left alone.
    std::optional<int> hoverCursor(float x, float y, int modCount) const;

private:
    enum class Drag { none, linear, angle, depth };

    float coefficient(bool isFine) const;
    float moveLinear(const KnobMouse& mouse);
    float moveByAngle(const KnobMouse& mouse);
    float valueOfAngle(float x, float y) const;

    KnobShape shape_;
    Drag drag_ = Drag::none;
    float slowness_ = 1.0f;
    float value_ = 0.0f;
    float startX_ = 0.0f, startY_ = 0.0f, startValue_ = 0.0f;
    bool isFine_ = false;
    float lastTaken_ = 0.0f;  // by angle
    float modDepthAtClick_ = 0.0f;
};

// Whether a place lies in the depth strip: where the grip of the depth is drawn.
bool inDepthStrip(float x, float y);

// The amount 0 to 1 of a depth drag at a place of the mouse.
float depthOfDrag(float x, float y, float modDepthAtClick);

// The angle at which a knob's handle stands for a value between its limits; beyond them it goes on.
float angleOfValue(const KnobShape& shape, float value);

// Over which positions, 0 to 1 being those that the knob can take, a modulation moves the knob.
struct ModulationArc {
    float low, high;
    bool belowRange() const { return low < 0.0f; }
    bool aboveRange() const { return high > 1.0f; }
};
// position 0 to 1, modDepth -1 to 1. A bipolar source moves to both sides by the depth, another one by half of it to the side
// of its sign.
ModulationArc modulationArc(float position, float modDepth, bool modBipolar);

// A stretch of an arc that is drawn in one colour.
struct ArcPart {
    float low, high;
    bool isInRange;
};
// The parts of an arc, from low to high, those without a length left out.
struct ArcParts {
    std::array<ArcPart, 3> parts;
    int count = 0;
    std::span<const ArcPart> all() const { return {parts.data(), static_cast<std::size_t>(count)}; }
};
ArcParts arcParts(const ModulationArc& arc);

}  // namespace vantoric
