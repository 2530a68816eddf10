#include "editor/model/displays.h"

#include <utility>

#include "editor/model/control_table.h"

namespace vantoric {

namespace {

// In units of the small layout.
constexpr int waveColumns = 127, plainColumns = 129;

DisplayLayout layoutOf(int columns, float scale) { return {static_cast<int>(static_cast<float>(columns) * scale), scale}; }

}  // namespace

void Displays::refresh(float layoutScale, const std::function<void(int)>& drawn) {
    const ParameterModel& parameters = instrument_.parameters();
    const int layer = onShow_.layer;
    const auto voice = shownVoice(instrument_.layer(layer));
    const DisplayLayout layout = layoutOf(plainColumns, layoutScale), waveLayout = layoutOf(waveColumns, layoutScale);
    // A flag is taken whether the display was drawn or not: it then shows what is there.
    for (int i = 0; i < oscillatorCount; ++i)
        if (wave(i).refresh(layer, voice, waveLayout, std::exchange(flags_.wave[static_cast<std::size_t>(i)], false)))
            drawn(tag::waveView1 + i);
    for (std::size_t i = 0; i < filters_.size(); ++i) {
        const ShownFilter shown = shownFilter(parameters, layer, static_cast<int>(i), voice);
        if (filters_[i].refresh(shown, layout, std::exchange(flags_.filter[i], false)))
            drawn(tag::filterView1 + static_cast<int>(i));
    }
    if (envelope_.refresh(envelopeSettings(parameters, layer, pages_.envelope()), layout, std::exchange(flags_.envelope, false)))
        drawn(tag::envelopeView);
    if (lfo_.refresh(lfoSettings(parameters, layer, pages_.lfo()), layout, std::exchange(flags_.lfo, false))) drawn(tag::lfoView);
}

void Displays::writeMarkers(ParameterEdits& edits) {
    for (int i = 0; i < oscillatorCount; ++i)
        if (wave(i).writeMarkers(onShow_.layer, edits)) flags_.wave[static_cast<std::size_t>(i)] = true;
}

}  // namespace vantoric
