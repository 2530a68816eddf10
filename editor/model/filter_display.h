// The response of a filter, as its display draws it.
#pragma once

#include <optional>
#include <span>

#include "editor/model/display_traces.h"
#include "editor/model/voice_on_show.h"
#include "parameters/parameter_model.h"
#include "sound/filter_response.h"

namespace vantoric {

// The filter that a display shows.
struct ShownFilter {
    int type = 0;         // list index
    float cutoff = 0.0f;  // 0 to 0.99
    float resonance = 0.0f;
    float analog = 0.0f;

    bool operator==(const ShownFilter&) const = default;
};

// The cutoff that is drawn: with a voice moved by its envelope and its note as the voice moves it, else the parameter alone.
float displayCutoff(float cutoff, float filEnv, float filKey, float envelope, double note);
inline float displayCutoff(float cutoff) { return displayCutoff(cutoff, 0.5f, 0.5f, 0.0f, 64.0); }

// Filter 0 or 1 of layer 0 to 3, as its parameters and the voice on show give it.
ShownFilter shownFilter(const ParameterModel& parameters, int layer, int filter, const std::optional<ShownVoice>& voice);

// Pixels up from the middle line at each column, from the magnitudes of bins 0 to 512 at 88200 Hz: 30 Hz to 20 kHz by
// octaves, and 72 dB over the height, the flat response a third above the middle. values: one a column.
void drawResponse(std::span<const double, FilterResponse::bins> magnitudes, float halfHeight, std::span<float> values);

// One a filter. Window's thread.
class FilterDisplay {
public:
    // Draws the response anew if it has become another or is dirty. True if it did.
    bool refresh(const ShownFilter& filter, const DisplayLayout& layout, bool isDirty = false);
    const DisplayTraces& traces() const { return traces_; }

private:
    FilterResponse response_;
    std::optional<ShownFilter> drawn_;
    DisplayLayout drawnLayout_;
    DisplayTraces traces_;
};

}  // namespace vantoric
