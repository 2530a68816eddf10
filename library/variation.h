// New sounds by chance: a layer's section at random, or moved a little, within what is musical.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "library/history.h"
#include "library/on_show.h"
#include "library/parameter_edits.h"

namespace vantoric {

// Sections of a layer.
enum class VariedSection : unsigned char { oscillators, filters, envelopes, lfos, arpeggiator, all };

// A parameter that gets a new value.
struct VariedParameter {
    int index;  // host index
    float value;
};

// Another sound: values at random within ranges in which a patch sounds and can be played. Pitch stays within an octave up and
// down of what it is, loud steps and sustain stay audible, cutoffs let the tone through, releases end. Switches, volumes,
// routing, the matrix and effects stay as they are, and so do lists that are at a row of a kind of its own: what is off stays
// off, a sample a sample, a high-pass a high-pass. The same patch and seed give the same result. Any thread.
std::vector<VariedParameter> randomised(const ParameterModel& parameters, int layer, VariedSection section, std::uint32_t seed);

// The sound, a little different: half of the knobs of a section moved by at most an eighth of their range. Lists and steps stay.
std::vector<VariedParameter> mutated(const ParameterModel& parameters, int layer, VariedSection section, std::uint32_t seed);

// On the thread of the window: both, for the layer on show, as one step of the history. The host reads all values anew.
class VariationCommands {
public:
    // All outlive it.
    VariationCommands(Instrument& instrument, ParameterEdits& edits, History& history, const OnShow& onShow)
        : instrument_(instrument), edits_(edits), history_(history), onShow_(onShow) {}

    void randomise(VariedSection section, std::uint32_t seed);
    void mutate(VariedSection section, std::uint32_t seed);

private:
    void apply(const std::string& name, const std::vector<VariedParameter>& varied);

    Instrument& instrument_;
    ParameterEdits& edits_;
    History& history_;
    const OnShow& onShow_;
};

}  // namespace vantoric
