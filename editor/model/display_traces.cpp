#include "editor/model/display_traces.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/numbers.h"

namespace vantoric {

void DisplayTraces::makeOutline(int newColumns, float halfHeight) {
    columns = clampTo(newColumns, 0, maxColumns);
    for (std::size_t i = 0; i < static_cast<std::size_t>(columns); ++i) {
        traceLow[i] = halfHeight - std::min(traceA[i], traceB[i]);
        traceHigh[i] = halfHeight - std::max(traceA[i], traceB[i]);
    }
}

void SampleMarkers::press(float position, MouseButton button) {
    if (!showMarkers || (button != MouseButton::left && button != MouseButton::right)) return;
    if (!isDragging()) before_ = {loopStart, loopEnd, playStart};
    button_ = button;
    if (button == MouseButton::left) {
        loopStart = clampUnit(position);
    } else {
        playStart = loopEnd = clampUnit(position);
    }
}

void SampleMarkers::move(float position) {
    if (button_ == MouseButton::left) loopEnd = clampUnit(position);
    if (button_ == MouseButton::right) playStart = clampUnit(position);
}

void SampleMarkers::release() {
    if (!isDragging()) return;
    button_ = MouseButton::none;
    if (loopEnd < loopStart) std::swap(loopStart, loopEnd);
    markersMoved = true;
}

void SampleMarkers::cancel() {
    if (!isDragging()) return;
    button_ = MouseButton::none;
    loopStart = before_.loopStart;
    loopEnd = before_.loopEnd;
    playStart = before_.playStart;
}

bool SampleMarkers::nudge(float start, float end) {
    if (!showMarkers || isDragging()) return false;
    loopStart = clampTo(loopStart + start, 0.0f, loopEnd);
    loopEnd = clampTo(loopEnd + end, loopStart, 1.0f);
    markersMoved = true;
    return true;
}

std::optional<LoopPoints> SampleMarkers::takeMoved(std::int32_t length) {
    if (!std::exchange(markersMoved, false)) return {};
    const auto place = [&](float marker) { return static_cast<std::int32_t>(std::lround(double{marker} * length)); };
    return LoopPoints{place(loopStart), place(loopEnd)};
}

}  // namespace vantoric
