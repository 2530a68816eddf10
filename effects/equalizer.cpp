#include "effects/equalizer.h"

#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "base/numbers.h"
#include "effects/effect_tools.h"

namespace vantoric {

namespace {

constexpr double roundPi = 3.14159012;

BiquadCoefficients lowBand(double v, double sampleRate) {
    const double g = v > 0.5 ? (v - 0.5) * 6.0 + 1.0 : 2.0 * v;
    const double w = clampTo(172.3809738177806 / sampleRate, 0.0001, 0.45);
    const double k = math::tan(static_cast<float>(w * roundPi));
    const double r = 2.2222222810910086;
    const double d = 1.0 + r * k + k * k;
    const double width = std::sqrt(std::max(g, 0.0)) * k * r;
    return {(1.0 + width + g * k * k) / d, (2.0 * g * k * k - 2.0) / d, (1.0 - width + g * k * k) / d, (2.0 - 2.0 * k * k) / d,
            -(1.0 - k * r + k * k) / d};
}

// The bands stay below half of the rate, also at rates that no engine runs at.
constexpr double topOfRate = 0.49;

BiquadCoefficients highBand(double v, double sampleRate) {
    const double a = math::exp(static_cast<float>((v - 0.5) * 1.25));
    return highShelf(a, std::min(34557.491302490234 / sampleRate, topOfRate * 2.0 * roundPi));
}

BiquadCoefficients midBand(double v, double f, double sampleRate) {
    const double k = math::tan(static_cast<float>(std::min((f * f * 4000.0 + 250.0) / sampleRate, topOfRate) * roundPi));
    return peak(k, 16.0 - v * 14.5, math::exp(static_cast<float>((v - 0.5) * 3.0)));
}

// Near the centre, or not a number: the band is left out.
bool isSkipped(float value) { return !(value < 0.45f || value > 0.55f); }

}  // namespace

Equalizer::Equalizer() { setSampleRate(44100.0); }

void Equalizer::setParameter(int index, float value) {
    switch (index) {
        case 1: setLowGain(value); break;
        case 2: setMidGain(value); break;
        case 3: setMidFrequency(value); break;
        case 4: setHighGain(value); break;
        default: break;
    }
}

void Equalizer::setSampleRate(double rate) {
    sampleRate_ = rate;
    knownLow_ = knownHigh_ = knownMid_ = knownFrequency_ = -1.0;
    update();
}

void Equalizer::reset() {
    memory_ = {};
    knownLow_ = knownHigh_ = knownMid_ = knownFrequency_ = -1.0;
}

BiquadCoefficients Equalizer::coefficients(Band band) {
    update();
    return coefficients_[band];
}

void Equalizer::update() {
    if (lowGain_ != knownLow_) {
        knownLow_ = lowGain_;
        coefficients_[low] = lowBand(knownLow_, sampleRate_);
    }
    if (highGain_ != knownHigh_) {
        knownHigh_ = highGain_;
        coefficients_[high] = highBand(knownHigh_, sampleRate_);
    }
    if (midGain_ != knownMid_ || midFrequency_ != knownFrequency_) {
        knownMid_ = midGain_;
        knownFrequency_ = midFrequency_;
        coefficients_[mid] = midBand(knownMid_, knownFrequency_, sampleRate_);
    }
}

// One pass for all bands that act: each rounds to float for the next, as passes of their own would.
template <bool Low, bool High, bool Mid>
void Equalizer::run(float* left, float* right, int count) {
    auto section = [](Memory& m, const BiquadCoefficients& c, const Pair& in) {
        const Pair x = in + 0.00001;
        const Pair y = c.b0 * x + m.s1 + m.s3;
        m.s3 = m.s2;
        m.s1 = y * c.feedback1 + x * c.b1;
        m.s2 = y * c.feedback2 + x * c.b2;
        return lanesTo<Pair>(lanesTo<Lanes<float, 2>>(y));
    };
    const auto c = coefficients_;
    auto m = memory_;
    for (int i = 0; i < count; ++i) {
        Pair x([&](auto side) { return static_cast<double>(side == 0 ? left[i] : right[i]); });
        if constexpr (Low) x = section(m[low], c[low], x);
        if constexpr (High) x = section(m[high], c[high], x);
        if constexpr (Mid) x = section(m[mid], c[mid], x);
        left[i] = static_cast<float>(x[0]);
        right[i] = static_cast<float>(x[1]);
    }
    memory_ = m;
}

void Equalizer::process(float* left, float* right, int count) {
    if (count <= 0) return;
    update();
    const int bands = (isSkipped(lowGain_) ? 0 : 1) | (isSkipped(highGain_) ? 0 : 2) | (isSkipped(midGain_) ? 0 : 4);
    switch (bands) {
        case 0: return;
        case 1: run<true, false, false>(left, right, count); break;
        case 2: run<false, true, false>(left, right, count); break;
        case 3: run<true, true, false>(left, right, count); break;
        case 4: run<false, false, true>(left, right, count); break;
        case 5: run<true, false, true>(left, right, count); break;
        case 6: run<false, true, true>(left, right, count); break;
        default: run<true, true, true>(left, right, count); break;
    }
    Pair sum = 0.0;
    for (const Memory& m : memory_) sum += m.s1 + m.s2 + m.s3;
    if (!std::isfinite(sum[0] + sum[1]) || !allFinite(left, right, count)) {
        reset();
        std::fill_n(left, count, 0.0f);
        std::fill_n(right, count, 0.0f);
    }
}

}  // namespace vantoric
