// The course of an envelope, as its display draws it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "editor/model/display_traces.h"
#include "parameters/parameter_model.h"

namespace vantoric {

// The six parameters of an envelope, 0 to 1.
struct EnvelopeSettings {
    float attack, hold, decay, sustain, release, shape;

    bool operator==(const EnvelopeSettings&) const = default;
};
// Those of tab 0 to 3 (volume, filter, aux 1, aux 2) of layer 0 to 3.
EnvelopeSettings envelopeSettings(const ParameterModel& parameters, int layer, int tab);

// The levels of an envelope from its start to its end, one a tick, 0 to 127: in whole numbers, and as they are.
struct EnvelopeCourse {
    std::vector<std::uint8_t> levels;
    std::vector<float> exactLevels;
    int firstPart = 0;   // ticks until the sustain
    int sustainEnd = 0;  // and until its end, 500 ticks later
};
// Runs a private envelope: to its sustain or its end, 500 ticks on, and to the end after a release.
EnvelopeCourse runEnvelope(const EnvelopeSettings& settings);

// Window's thread.
class EnvelopeDisplay {
public:
    // Draws the course anew if it has become another or is dirty. True if it did.
    bool refresh(const EnvelopeSettings& settings, const DisplayLayout& layout, bool isDirty = false);
    // The course in whole levels over its floor.
    const DisplayTraces& traces() const { return traces_; }
    // The course as it is, in pixels up from the middle line as the traces have them: no stairs show in a large window.
    const std::array<float, DisplayTraces::maxColumns>& exactTrace() const { return exactTrace_; }
    // The columns where the line breaks: the sustain begins, and ends. One at the end of the display breaks nothing.
    const std::array<int, 2>& breaks() const { return breaks_; }

private:
    std::optional<EnvelopeSettings> drawn_;
    DisplayLayout drawnLayout_;
    DisplayTraces traces_;
    std::array<float, DisplayTraces::maxColumns> exactTrace_{};
    std::array<int, 2> breaks_{};
};

}  // namespace vantoric
