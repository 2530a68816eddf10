// What the lamps and meters of the window show. Any thread.
#pragma once

#include "base/numbers.h"

namespace vantoric {

// The lamp of a layer, 0 (dark) to 127, by the ticks (milliseconds) since its last note and its switch as stored, 0 to 1.
inline int activityLamp(int ticksSinceNote, float layerOn) {
    if (!(layerOn > 0.5f)) return 0;
    return clampTo(127 - ticksSinceNote / 8, 0, 127);
}

// A level meter, 0 to 1, by the engine's peak value.
inline float levelMeter(float peak) { return clampUnit(peak * 4.0f); }

}  // namespace vantoric
