// The magnitudes of a filter's answer to a click, as the editor draws them.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "base/fft.h"
#include "sound/voice_filter.h"

namespace vantoric {

// Keeps a private filter with random numbers of its own. One thread at a time; not for the audio thread.
class FilterResponse {
public:
    static constexpr int samples = 1024;
    static constexpr int bins = samples / 2 + 1;

    explicit FilterResponse(const RandomSources& random = {}) : random_(random), filter_(random_), transform_(samples) {}

    // Sets the filter up (twice where its delay would glide), clears its memories and sends a click of 0.5
    // through it; the answer, under the second half of a raised cosine, gives |X| of bins 0 to 512. A flat
    // response reads 100000.
    const std::array<double, bins>& measure(const FilterSettings& settings);

    // |X| of bins 0 to 512 of any answer under the same window, the answer times 100000.
    const std::array<double, bins>& magnitudesOf(std::span<const float, samples> answer);
    // What that transformed.
    const std::array<double, samples>& windowed() const { return windowed_; }

private:
    RandomSources random_;
    VoiceFilter filter_;
    RealFft transform_;
    std::array<float, samples> answer_{};
    std::array<double, samples> windowed_{};
    std::array<double, bins> real_{}, imaginary_{}, magnitude_{};
};

}  // namespace vantoric
