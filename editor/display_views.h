// The displays' shapes brought to their views.
#pragma once

#include <array>

#include "editor/control_views.h"
#include "editor/model/envelope_display.h"
#include "editor/model/filter_display.h"
#include "editor/model/lfo_display.h"
#include "editor/model/q7editor.h"
#include "editor/model/wave_display.h"

namespace vantoric {

// Owns the private copies of the engine's objects that the displays run. On the thread of the window.
class DisplayViews {
public:
    // Gives the wave displays of `views` their markers, so it must outlive them.
    DisplayViews(ControlViews& views, Q7Editor& editor, Instrument& instrument);
    ~DisplayViews();

    // Draws anew what has become another, on the pages that show; writes markers that were dragged.
    void refresh();

private:
    void refreshWave(int oscillator, const std::optional<ShownVoice>& voice);
    void refreshFilter(int filter, const std::optional<ShownVoice>& voice);
    void refreshEnvelope();
    void refreshLfo();
    Wavedisplay* view(int tag) const { return views_.withTagAs<Wavedisplay>(tag); }
    DisplayLayout layout() const;

    ControlViews& views_;
    Q7Editor& editor_;
    Instrument& instrument_;
    std::array<WaveDisplay, 3> waves_;
    std::array<FilterDisplay, 2> filters_;
    EnvelopeDisplay envelope_;
    LfoDisplay lfo_;
};

}  // namespace vantoric
