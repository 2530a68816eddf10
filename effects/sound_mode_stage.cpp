#include "effects/sound_mode_stage.h"

#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "effects/biquad_design.h"
#include "effects/effect_tools.h"

namespace vantoric {

namespace {

constexpr double roundPi = 3.14159;

constexpr float shelfFrequency = 150.0f, shelfSlope = 0.5f, shelfGain = 8.0f;
constexpr float midFrequency = 1500.0f, midGain = 0.2f;
constexpr float presenceFrequency = 11200.0f, presenceGain = 0.4f;
constexpr float lowPassFrequency = 18000.0f, lowPass2Frequency = 13000.0f;
constexpr float hpAmount = 0.9f;

using Coefficients = SoundModeStage::Coefficients;

// Filters of a mode in their order, and the factor at its end.
struct Mode {
    int filterCount;
    std::array<int, 3> filters;
    double factor;
};

constexpr int scientific = 8;  // no filters, no DC blocker, no offset
constexpr std::array<Mode, 11> modes = {{
    {0, {}, 1.3},         // Linear sound
    {1, {8}, 1.2},        // Dynamic loud
    {0, {}, 1.2},         // Dynamic bass
    {2, {9, 4}, 1.0},     // Bright
    {3, {0, 9, 4}, 1.0},  // Loudness
    {3, {0, 3, 2}, 1.0},  // Analog boost
    {1, {6}, 1.2},        // LowCut 140Hz
    {2, {7, 2}, 1.2},     // HighCut analog
    {0, {}, 1.3},         // Scientific
    {0, {}, 1.2},         // Transient shaper
    {0, {}, 1.2},         // Transient + Bass
}};

Coefficients fromFeedback(const BiquadCoefficients& c) { return {c.b0, c.b1, c.b2, -c.feedback1, -c.feedback2}; }

// Low shelf of the audio EQ cookbook, gain in dB.
Coefficients lowShelf(double frequency, double slope, double gain, double sampleRate) {
    const double a = math::exp(gain * 0.025 * 2.302585092994046);
    const double b =
        std::sqrt((math::exp(gain * 0.05 * 2.302585092994046) + 1.0) / std::max(slope, 0.01) - (a - 1.0) * (a - 1.0));
    const double angle = 2.0 * roundPi * frequency / sampleRate;
    const double s = math::sin(angle), c = math::cos(angle);
    const double d = (a + 1.0) + (a - 1.0) * c + b * s;
    return {a * ((a + 1.0) - (a - 1.0) * c + b * s) / d, 2.0 * a * ((a - 1.0) - (a + 1.0) * c) / d,
            a * ((a + 1.0) - (a - 1.0) * c - b * s) / d, -2.0 * ((a - 1.0) + (a + 1.0) * c) / d,
            ((a + 1.0) + (a - 1.0) * c - b * s) / d};
}

// Two-pole sections with K = tan(half the angle) and width r.
Coefficients lowPass(double k, double r) {
    const double d = 1.0 + k * r + k * k;
    return {k * k / d, 2.0 * k * k / d, k * k / d, (2.0 * k * k - 2.0) / d, (1.0 - k * r + k * k) / d};
}
Coefficients highPass(double k, double r) {
    const double d = 1.0 + k * r + k * k;
    return {1.0 / d, -2.0 / d, 1.0 / d, (2.0 * k * k - 2.0) / d, (1.0 - k * r + k * k) / d};
}

double modeShelfAmplitude(double value) { return math::exp(static_cast<float>((value - 0.5) * 1.25)); }

}  // namespace

SoundModeStage::SoundModeStage() { setSampleRate(44100.0); }

void SoundModeStage::setSampleRate(double rate) {
    sampleRate_ = rate;
    hpCoefficient_ = hpAmount * 100.0f / rate;
    const auto held = [&](double frequency) { return std::min(frequency, 0.49 * rate); };
    const auto warped = [&](double frequency) { return math::tan(roundPi * held(frequency) / rate); };
    const auto stagePeak = [&](double frequency, double gain, double r) {
        return fromFeedback(peak(warped(frequency), r, math::exp(gain)));
    };
    const double shelfAngle = 40840.67153930664 / rate;
    coefficients_[0] = lowShelf(held(shelfFrequency), shelfSlope, shelfGain, rate);
    coefficients_[1] = stagePeak(presenceFrequency, presenceGain, 1.0);
    coefficients_[2] = lowPass(warped(lowPassFrequency), 1.3333333333333333);
    coefficients_[3] = lowPass(warped(lowPass2Frequency), 1.3333333333333333);
    coefficients_[4] = stagePeak(midFrequency, midGain, 0.3333333333333333);
    coefficients_[5] = stagePeak(14000.0, 0.3, 3.3333332008785725);
    // Without the factor pi: this is how low the cut sounds.
    coefficients_[6] = highPass(math::tan(held(140.0) / rate), 2.4999999627470975);
    coefficients_[7] = lowPass(warped(7000.0), 1.3333333333333333);
    coefficients_[8] = fromFeedback(highShelf(modeShelfAmplitude(0.57), shelfAngle));
    coefficients_[9] = fromFeedback(highShelf(modeShelfAmplitude(0.65), shelfAngle));
}

void SoundModeStage::reset() {
    memory_ = {};
    dc_ = 0.0;
    gain_ = targetGain_;
}

template <int Filters>
void SoundModeStage::run(const int* order, double factor, float* left, float* right, int count) {
    std::array<Coefficients, Filters> c;
    std::array<Memory, Filters> m;
    for (int k = 0; k < Filters; ++k) {
        c[k] = coefficients_[order[k]];
        m[k] = memory_[order[k]];
    }
    const double hp = hpCoefficient_;
    const double step = (targetGain_ - gain_) / count;
    double g = gain_;
    Pair dc = dc_;
    for (int i = 0; i < count; ++i) {
        g += step;
        Pair x([&](auto side) { return static_cast<double>(side == 0 ? left[i] : right[i]); });
        x += 0.0000001;
        for (int k = 0; k < Filters; ++k) {
            const Pair y = c[k].b0 * x + c[k].b1 * m[k].x1 + c[k].b2 * m[k].x2 - c[k].a1 * m[k].y1 - c[k].a2 * m[k].y2;
            m[k].x2 = m[k].x1;
            m[k].x1 = x;
            m[k].y2 = m[k].y1;
            m[k].y1 = y;
            x = y;
        }
        dc = (1.0 - hp) * dc + hp * x;
        const Pair y = (x - dc) * g * factor + 0.0000001;
        left[i] = static_cast<float>(y[0]);
        right[i] = static_cast<float>(y[1]);
    }
    dc_ = dc;
    for (int k = 0; k < Filters; ++k) memory_[order[k]] = m[k];
}

void SoundModeStage::runScientific(float* left, float* right, int count) {
    const double step = (targetGain_ - gain_) / count;
    double g = gain_;
    for (int i = 0; i < count; ++i) {
        g += step;
        left[i] = static_cast<float>(left[i] * modes[scientific].factor * g);
        right[i] = static_cast<float>(right[i] * modes[scientific].factor * g);
    }
}

void SoundModeStage::process(float* left, float* right, int count) {
    if (count <= 0) return;
    if (mode_ >= 0 && mode_ < static_cast<int>(modes.size())) runMode(left, right, count);
    keepFinite(left, right, count);
}

void SoundModeStage::runMode(float* left, float* right, int count) {
    const Mode& mode = modes[mode_];
    if (mode_ == scientific) {
        runScientific(left, right, count);
    } else {
        switch (mode.filterCount) {
            case 0: run<0>(mode.filters.data(), mode.factor, left, right, count); break;
            case 1: run<1>(mode.filters.data(), mode.factor, left, right, count); break;
            case 2: run<2>(mode.filters.data(), mode.factor, left, right, count); break;
            default: run<3>(mode.filters.data(), mode.factor, left, right, count); break;
        }
    }
    gain_ = targetGain_;
}

void SoundModeStage::keepFinite(float* left, float* right, int count) {
    Pair sum = dc_;
    for (const Memory& m : memory_) sum += m.x1 + m.x2 + m.y1 + m.y2;
    if (std::isfinite(sum[0] + sum[1]) && allFinite(left, right, count)) return;
    memory_ = {};
    dc_ = 0.0;
    std::fill_n(left, count, 0.0f);
    std::fill_n(right, count, 0.0f);
}

}  // namespace vantoric
