#include "editor/model/filter_display.h"

#include <algorithm>
#include <cmath>

#include "base/numbers.h"
#include "sound/filter_settings.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr float highestCutoff = 0.99f;
constexpr float displayRate = 88200.0f;
constexpr double lowestHertz = 30.0, highestHertz = 20000.0;
constexpr double flatMagnitude = 100000.0;
constexpr double bottomDecibels = -48.0, heightDecibels = 72.0;

double decibels(double magnitude) { return 20.0 * std::log10(std::max(magnitude / flatMagnitude, 1e-9)); }

// The loudest of the bins from `from` to `to`, or what lies between two where there are none.
double decibelsBetween(std::span<const double, FilterResponse::bins> magnitudes, double from, double to) {
    const auto first = static_cast<std::size_t>(std::ceil(from)), end = static_cast<std::size_t>(std::ceil(to));
    if (first < end) return decibels(*std::max_element(magnitudes.begin() + first, magnitudes.begin() + end));
    const double middle = 0.5 * (from + to), rest = middle - std::floor(middle);
    const auto below = static_cast<std::size_t>(middle);
    return (1.0 - rest) * decibels(magnitudes[below]) + rest * decibels(magnitudes[below + 1]);
}

}  // namespace

float displayCutoff(float cutoff, float filEnv, float filKey, float envelope, double note) {
    const float c = clampUnit(voiceCutoff(note, filKey, filEnv, cutoff, envelope));
    return std::min(c, highestCutoff);
}

ShownFilter shownFilter(const ParameterModel& parameters, int layer, int filter, const std::optional<ShownVoice>& voice) {
    const auto value = [&](int number) {
        return voice ? voice->mod[static_cast<std::size_t>(number)] : parameters.getParameter(hostIndex(number, layer));
    };
    ShownFilter shown{.type = parameters.getListIndex(hostIndex(par::FilType1 + filter, layer)),
                      .cutoff = displayCutoff(value(par::Cutoff1 + filter)),
                      .resonance = clampUnit(value(par::Reso1 + filter)),
                      .analog = value(par::FilAnalo)};
    if (voice)
        shown.cutoff = displayCutoff(value(par::Cutoff1 + filter), value(par::FilEnv1 + filter), value(par::FilKey1 + filter),
                                     voice->filterEnvelope, voice->smoothedNote);
    return shown;
}

void drawResponse(std::span<const double, FilterResponse::bins> magnitudes, float halfHeight, std::span<float> values) {
    const double perColumn = std::log(highestHertz / lowestHertz) / static_cast<double>(values.size());
    const auto bin = [&](double column) {
        return lowestHertz * std::exp(column * perColumn) * FilterResponse::samples / static_cast<double>(displayRate);
    };
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double level = decibelsBetween(magnitudes, bin(static_cast<double>(i)), bin(static_cast<double>(i) + 1.0));
        const double height = (level - bottomDecibels) / heightDecibels * 2.0 - 1.0;
        values[i] = halfHeight * static_cast<float>(clampTo(height, -1.0, 1.0));
    }
}

bool FilterDisplay::refresh(const ShownFilter& filter, const DisplayLayout& layout, bool isDirty) {
    if (!isDirty && drawn_ == filter && drawnLayout_ == layout) return false;
    drawn_ = filter;
    drawnLayout_ = layout;
    const auto columns = static_cast<std::size_t>(clampTo(layout.columns, 1, DisplayTraces::maxColumns));
    LinearCongruence noise{22222};  // the same grain each time: it would flicker under a knob
    for (std::size_t i = 0; i < columns; ++i) traces_.traceB[i] = static_cast<float>(noise.next()) * 3.495e-09f;
    const auto& magnitudes = response_.measure({.sampleRate = displayRate,
                                                .type = filter.type,
                                                .cutoff = filter.cutoff,
                                                .resonance = filter.resonance,
                                                .analog = filter.analog});
    drawResponse(magnitudes, layout.halfHeight(), std::span(traces_.traceA).first(columns));
    traces_.makeOutline(layout.columns, layout.halfHeight());
    return true;
}

}  // namespace vantoric
