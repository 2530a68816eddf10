// One cycle of an LFO, as its display draws it.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "editor/model/display_traces.h"
#include "parameters/parameter_model.h"

namespace vantoric {

inline constexpr int stepLfoTab = 3;

// What the shape of an LFO rests on; its speed does not matter.
struct LfoSettings {
    int tab = 0;         // 0 to 2, or stepLfoTab
    int wave = 0;        // list index of the wave, or of the step LFO's shape
    int mode = 0;        // list index
    float phase = 0.0f;  // start phase
    float fade = 0.0f;   // of the one-shot waves
    float steps = 0.0f;  // how many, as stored
    std::array<float, 16> stepValues{};

    bool operator==(const LfoSettings&) const = default;
};
// Those of tab 0 to 3 of layer 0 to 3.
LfoSettings lfoSettings(const ParameterModel& parameters, int layer, int tab);

// The levels, 0 to 1, of one cycle from the start phase on, or of all steps once: one a column. Runs a private LFO.
void runLfo(const LfoSettings& settings, std::span<float> levels);

// Window's thread.
class LfoDisplay {
public:
    // Draws the cycle anew if it has become another or is dirty. True if it did.
    bool refresh(const LfoSettings& settings, const DisplayLayout& layout, bool isDirty = false);
    // The cycle over the middle line.
    const DisplayTraces& traces() const { return traces_; }

private:
    std::optional<LfoSettings> drawn_;
    DisplayLayout drawnLayout_;
    DisplayTraces traces_;
};

}  // namespace vantoric
