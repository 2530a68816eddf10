// What a display holds: two traces of numbers, the outline that they make, and the markers of a sample.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "editor/model/knob_drag.h"

namespace vantoric {

// How large a display is.
struct DisplayLayout {
    int columns = 129;    // 1 to 1024
    float factor = 1.0f;  // of the layout, 1 or 1.5

    float halfHeight() const { return 24.0f * factor; }  // pixels
    bool operator==(const DisplayLayout&) const = default;
};

struct DisplayTraces {
    static constexpr int maxColumns = 1024;

    // Pixels up from the middle line.
    std::array<float, maxColumns> traceA{}, traceB{};
    // Pixels down from the upper edge: where the smaller and the larger of the two is drawn.
    std::array<float, maxColumns> traceLow{}, traceHigh{};
    int columns = 0;  // in use

    // Makes the outline of the first `newColumns` columns.
    void makeOutline(int newColumns, float halfHeight);
};

// The loop of a sample in samples.
struct LoopPoints {
    std::int32_t start, end;
};

// The markers of a sample's loop and start, as fractions 0 to 1 of the display's width, and their drag. One thread.
class SampleMarkers {
public:
    float loopStart = 0.0f;
    float loopEnd = 1.0f;
    float playStart = 0.0f;
    bool showMarkers = false;   // without, nothing can be dragged
    bool markersMoved = false;  // a drag has ended that nobody has taken note of

    // A press of the left button sets the loop's start, the move that follows its end; one of the right button the play start
    // with the loop's end, and its move the play start alone. position: fraction of the width, held to 0 to 1.
    void press(float position, MouseButton button);
    void move(float position);
    // Brings a crossed loop in order.
    void release();
    // Calls the drag off: all stands as it did before the press.
    void cancel();
    // By keys: moves the two ends of the loop by so much, neither past the other. False while no markers show.
    bool nudge(float start, float end);
    bool isDragging() const { return button_ != MouseButton::none; }

    // Once after a drag: where the loop is to be in a sample of `length`.
    std::optional<LoopPoints> takeMoved(std::int32_t length);

private:
    struct Places {
        float loopStart, loopEnd, playStart;
    };

    MouseButton button_ = MouseButton::none;
    Places before_{};  // the press
};

}  // namespace vantoric
