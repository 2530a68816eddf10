#include "editor/display_views.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace vantoric {
namespace {

// A trace, in pixels up from the middle line, as points of a view of that size in window units.
Pen::Points pointsOf(const float* trace, int columns, const DisplayLayout& layout, double width, double height, double margin) {
    Pen::Points points;
    points.reserve(static_cast<std::size_t>(columns));
    const double middle = height / 2, scale = (middle - margin) / layout.halfHeight();
    for (int i = 0; i < columns; ++i) points.emplace_back(width * i / (columns - 1), middle - trace[i] * scale);
    return points;
}

}  // namespace

DisplayViews::DisplayViews(ControlViews& views, Q7Editor& editor, Instrument& instrument)
    : views_(views),
      editor_(editor),
      instrument_(instrument),
      waves_{WaveDisplay(instrument, 0), WaveDisplay(instrument, 1), WaveDisplay(instrument, 2)} {
    for (int i = 0; i < 3; ++i)
        if (Wavedisplay* display = view(tag::waveView1 + i)) display->setMarkers(&waves_[i].markers());
}

DisplayViews::~DisplayViews() {
    for (int i = 0; i < 3; ++i)
        if (Wavedisplay* display = view(tag::waveView1 + i)) display->setMarkers(nullptr);
}

// The columns that each skin has.
DisplayLayout DisplayViews::layout() const {
    return editor_.size().largeSkin() ? DisplayLayout{193, 1.5f} : DisplayLayout{129, 1.0f};
}

void DisplayViews::refresh() {
    if (view(tag::envelopeView) == nullptr) return;  // a low window has no displays
    const auto voice = shownVoice(instrument_.layer(editor_.onShow().layer));
    for (int i = 0; i < 3; ++i) refreshWave(i, voice);
    for (int i = 0; i < 2; ++i) refreshFilter(i, voice);
    refreshEnvelope();
    refreshLfo();
}

void DisplayViews::refreshWave(int oscillator, const std::optional<ShownVoice>& voice) {
    Wavedisplay* display = view(tag::waveView1 + oscillator);
    WaveDisplay& wave = waves_[oscillator];
    const int layer = editor_.onShow().layer;
    if (wave.markers().markersMoved) {
        const CommandLog::Running running(editor_.commands().log(), "Loop of oscillator " + std::to_string(oscillator + 1));
        wave.writeMarkers(layer, editor_.edits());
    }
    if (!wave.refresh(layer, voice, layout(), std::exchange(editor_.displayFlags().wave[oscillator], false))) return;
    const ControlEntry& entry = display->entry();
    const DisplayTraces& traces = wave.traces();
    Wavedisplay::Shown shown;
    shown.base = entry.height / 2.0;
    shown.curve = pointsOf(traces.traceA.data(), traces.columns, layout(), entry.width, entry.height, 4);
    if (wave.markers().showMarkers) {
        shown.lower = pointsOf(traces.traceB.data(), traces.columns, layout(), entry.width, entry.height, 4);
        shown.form = Wavedisplay::Shown::Form::region;
    }
    if (wave.lacksSample()) {
        shown.form = Wavedisplay::Shown::Form::message;
        shown.line = "No sample";
        shown.secondLine = "Load, or drop a .wav here";
    }
    display->setShown(std::move(shown));
}

void DisplayViews::refreshFilter(int filter, const std::optional<ShownVoice>& voice) {
    Wavedisplay* display = view(tag::filterView1 + filter);
    const ShownFilter settings = shownFilter(instrument_.parameters(), editor_.onShow().layer, filter, voice);
    if (!filters_[filter].refresh(settings, layout(), std::exchange(editor_.displayFlags().filter[filter], false))) return;
    const ControlEntry& entry = display->entry();
    const DisplayTraces& traces = filters_[filter].traces();
    Wavedisplay::Shown shown;
    shown.base = entry.height;
    shown.curve = pointsOf(traces.traceA.data(), traces.columns, layout(), entry.width, entry.height, 2);
    std::array<float, DisplayTraces::maxColumns> grain;
    for (std::size_t i = 0; i < static_cast<std::size_t>(traces.columns); ++i)
        grain[i] = traces.traceB[i] - layout().halfHeight();
    shown.grain = pointsOf(grain.data(), traces.columns, layout(), entry.width, entry.height, 2);
    display->setShown(std::move(shown));
}

void DisplayViews::refreshEnvelope() {
    const EnvelopeSettings settings =
        envelopeSettings(instrument_.parameters(), editor_.onShow().layer, editor_.pages().envelope());
    if (!envelope_.refresh(settings, layout(), std::exchange(editor_.displayFlags().envelope, false))) return;
    Wavedisplay* display = view(tag::envelopeView);
    const ControlEntry& entry = display->entry();
    const DisplayTraces& traces = envelope_.traces();
    Wavedisplay::Shown shown;
    shown.curve = pointsOf(envelope_.exactTrace().data(), traces.columns, layout(), entry.width, entry.height, 4);
    shown.base = entry.height - 6;
    for (const int column : envelope_.breaks())
        if (column > 0 && column < traces.columns - 1) shown.marks.push_back(shown.curve[static_cast<std::size_t>(column)]);
    display->setShown(std::move(shown));
}

void DisplayViews::refreshLfo() {
    const LfoSettings settings = lfoSettings(instrument_.parameters(), editor_.onShow().layer, editor_.pages().lfo());
    if (!lfo_.refresh(settings, layout(), std::exchange(editor_.displayFlags().lfo, false))) return;
    Wavedisplay* display = view(tag::lfoView);
    const ControlEntry& entry = display->entry();
    const DisplayTraces& traces = lfo_.traces();
    Wavedisplay::Shown shown;
    shown.curve = pointsOf(traces.traceA.data(), traces.columns, layout(), entry.width, entry.height, 7);
    shown.base = editor_.pages().lfo() == stepLfoTab ? entry.height - 7 : entry.height / 2.0;
    display->setShown(std::move(shown));
}

}  // namespace vantoric
