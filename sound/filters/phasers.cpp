#include "sound/filters/phasers.h"

#include <cmath>

#include "base/math.h"
#include "sound/filters/filter_loops.h"

namespace vantoric::filters {

int setupPhaser(const FilterInputs& in, Phaser<float>& filter) {
    const double v = in.openness() / in.sampleRate;
    filter.a = static_cast<float>(1.0 - 132300.0 * v + 1.94481e9 * v * v);
    return static_cast<int>(5.99 * in.r);
}

int setupFeedbackPhaser(const FilterInputs& in, FeedbackPhaser<float>& filter, FeedbackForm form) {
    const double v = in.openness() / in.sampleRate;
    const bool even = form == phaser3x || form == phaser5x;
    if (even)
        filter.a = clampUnit(math::exp(static_cast<float>(-124689.71 * v)));
    else
        filter.a = static_cast<float>(1.0 - (19845.0 * v <= 0.32 ? 124031.25 * v : 2.0));
    filter.fbk = static_cast<float>(even ? -0.75 * in.r : 0.97 * std::sqrt(in.r));
    filter.wet = static_cast<float>(even ? (1.25 - 0.3125 * in.r) * 0.5 : 2.0 - in.r * 0.5);
    filter.analog = static_cast<float>(in.a);
    return form;
}

template <int Voices>
std::span<const FilterType<Voices>> phaserTypes() {
    static constexpr FilterType<Voices> types[] = {
        filterType<Voices, Phaser, setupPhaser>(23, 150),
        filterType<Voices, FeedbackPhaser, [](const FilterInputs& in, auto& f) { return setupFeedbackPhaser(in, f, phaser2x); }>(
            55, 242),
        filterType<Voices, FeedbackPhaser, [](const FilterInputs& in, auto& f) { return setupFeedbackPhaser(in, f, phaser3x); }>(
            56, 244),
        filterType<Voices, FeedbackPhaser, [](const FilterInputs& in, auto& f) { return setupFeedbackPhaser(in, f, phaser4x); }>(
            57, 243),
        filterType<Voices, FeedbackPhaser, [](const FilterInputs& in, auto& f) { return setupFeedbackPhaser(in, f, phaser5x); }>(
            58, 245),
        filterType<Voices, FeedbackPhaser, [](const FilterInputs& in, auto& f) { return setupFeedbackPhaser(in, f, formant1x); }>(
            60, 246),
        filterType<Voices, FeedbackPhaser, [](const FilterInputs& in, auto& f) { return setupFeedbackPhaser(in, f, formant2x); }>(
            61, 247),
        filterType<Voices, FeedbackPhaser, [](const FilterInputs& in, auto& f) { return setupFeedbackPhaser(in, f, formant3x); }>(
            62, 248),
        filterType<Voices, FeedbackPhaser, [](const FilterInputs& in, auto& f) { return setupFeedbackPhaser(in, f, formant4x); }>(
            63, 249),
    };
    return types;
}

template std::span<const FilterType<1>> phaserTypes<1>();
template std::span<const FilterType<voiceCount>> phaserTypes<voiceCount>();

}  // namespace vantoric::filters
