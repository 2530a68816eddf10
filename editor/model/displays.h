// The displays of the window: the layer on show's waves, filter responses, envelope and LFO, drawn anew when they are
// others.
#pragma once

#include <array>
#include <functional>

#include "editor/model/display_flags.h"
#include "editor/model/envelope_display.h"
#include "editor/model/filter_display.h"
#include "editor/model/lfo_display.h"
#include "editor/model/pages.h"
#include "editor/model/wave_display.h"

namespace vantoric {

// On the thread of the window.
class Displays {
public:
    Displays(Instrument& instrument, const OnShow& onShow, const Pages& pages)
        : instrument_(instrument), onShow_(onShow), pages_(pages) {}

    // What is to be drawn anew at the next refresh, whether it seems another or not.
    DisplayFlags& flags() { return flags_; }

    // Draws all that is another by now, for a layout of that scale, 1 or 1.5; calls `drawn` with the tag of each that was.
    void refresh(float layoutScale, const std::function<void(int tag)>& drawn);

    // Takes over the markers of samples whose drag has ended.
    void writeMarkers(ParameterEdits& edits);

    WaveDisplay& wave(int oscillator) { return waves_[static_cast<std::size_t>(oscillator)]; }
    const FilterDisplay& filter(int which) const { return filters_[static_cast<std::size_t>(which)]; }
    const EnvelopeDisplay& envelope() const { return envelope_; }
    const LfoDisplay& lfo() const { return lfo_; }

private:
    Instrument& instrument_;
    const OnShow& onShow_;
    const Pages& pages_;
    DisplayFlags flags_;
    std::array<WaveDisplay, oscillatorCount> waves_{WaveDisplay(instrument_, 0), WaveDisplay(instrument_, 1),
                                                    WaveDisplay(instrument_, 2)};
    std::array<FilterDisplay, filterCount> filters_;
    EnvelopeDisplay envelope_;
    LfoDisplay lfo_;
};

}  // namespace vantoric
