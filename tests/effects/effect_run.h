// Signals for the tests of the effect families, and runs of them in blocks.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/random.h"

namespace vantoric::testing_effects {

// Builds with sanitizers run at a twentieth of the speed and look for other faults than wrong figures: they repeat
// less and leave long measurements out.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool sanitized = true;
#else
inline constexpr bool sanitized = false;
#endif

// Rates from the lowest that a host may give to the highest.
inline std::vector<float> everyRate() {
    if (sanitized) return {8000.0f, 88200.0f};
    return {8000.0f, 11025.0f, 16000.0f, 22050.0f, 32000.0f, 44100.0f, 48000.0f, 88200.0f, 96000.0f, 176400.0f, 192000.0f};
}

struct Sound {
    std::vector<float> left, right;

    explicit Sound(int count) : left(static_cast<std::size_t>(count)), right(static_cast<std::size_t>(count)) {}
    int count() const { return static_cast<int>(left.size()); }
    bool operator==(const Sound&) const = default;
};

inline Sound impulse(int count, float left = 1.0f, float right = 1.0f) {
    Sound signal(count);
    signal.left[0] = left;
    signal.right[0] = right;
    return signal;
}
inline Sound constant(int count, float level) {
    Sound signal(count);
    std::fill(signal.left.begin(), signal.left.end(), level);
    std::fill(signal.right.begin(), signal.right.end(), level);
    return signal;
}
// Noise for `length` samples, all if it is not given; then silence.
inline Sound noise(int count, float amplitude = 0.5f, int length = -1) {
    Sound signal(count);
    LinearCongruence generator{99};
    for (int n = 0; n < (length < 0 ? count : length); ++n) {
        signal.left[n] = (2.0f * generator.unit() - 1.0f) * amplitude;
        signal.right[n] = (2.0f * generator.unit() - 1.0f) * amplitude;
    }
    return signal;
}
// Rises by `slope` a sample: through a moving delay line it comes out late by slope x delay, however the line
// interpolates.
inline Sound ramp(int count, float slope) {
    Sound signal(count);
    for (int n = 0; n < count; ++n) signal.left[n] = signal.right[n] = slope * static_cast<float>(n);
    return signal;
}

template <class Effect>
Sound run(Effect& effect, Sound signal, int block = 88) {
    for (int done = 0; done < signal.count(); done += block)
        effect.process(signal.left.data() + done, signal.right.data() + done, std::min(block, signal.count() - done));
    return signal;
}

inline float peak(const std::vector<float>& samples, int from = 0, int to = -1) {
    float highest = 0.0f;
    for (int n = from; n < (to < 0 ? static_cast<int>(samples.size()) : to); ++n)
        highest = std::max(highest, std::fabs(samples[n]));
    return highest;
}
inline int peakIndex(const std::vector<float>& samples) {
    const auto louder = [](float a, float b) { return std::fabs(a) < std::fabs(b); };
    return static_cast<int>(std::max_element(samples.begin(), samples.end(), louder) - samples.begin());
}
// First sample above a level; -1 if there is none.
inline int onset(const std::vector<float>& samples, float level = 0.01f) {
    for (std::size_t n = 0; n < samples.size(); ++n)
        if (std::fabs(samples[n]) > level) return static_cast<int>(n);
    return -1;
}
inline double energy(const std::vector<float>& samples, int from, int to) {
    double sum = 0.0;
    for (int n = from; n < to; ++n) sum += static_cast<double>(samples[n]) * samples[n];
    return sum;
}
// Level of one frequency (in cycles a sample) of an impulse response.
inline double response(const std::vector<float>& samples, double frequency) {
    double real = 0.0, imaginary = 0.0;
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double angle = 2.0 * M_PI * frequency * static_cast<double>(n);
        real += samples[n] * std::cos(angle);
        imaginary += samples[n] * std::sin(angle);
    }
    return std::hypot(real, imaginary);
}

}  // namespace vantoric::testing_effects
