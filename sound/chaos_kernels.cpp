// Chaotic systems as oscillators: three attractors integrated by Euler's rule, and the Henon map.
#include <algorithm>
#include <cmath>

#include "base/numbers.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace vantoric {

namespace {

float colour(const OscillatorState& state) { return static_cast<float>(std::max(state.framePending, 0)); }

}  // namespace

ChaosStep chaosStep(int noiWave, std::uint32_t increment) {
    struct Law {
        float perIncrement, limit;
    };
    static constexpr Law laws[] = {{3.9142375e-7f, 0.015f}, {7.381439e-7f, 0.06f}, {3.59416e-7f, 0.02f}};
    const Law law = laws[noiWave - 8];
    // A pitch above the sample rate counts as the sample rate: at most 512 steps.
    ChaosStep step{static_cast<float>(std::min(increment, phaseMask)) * law.perIncrement, 1};
    for (; step.dt > law.limit; step.subSteps *= 2) step.dt *= 0.5f;
    return step;
}

float chaosParameter(int noiWave, int frame) {
    const auto c = static_cast<float>(frame);
    switch (noiWave) {
        case 8: return 0.1f + 4.5776367e-5f * c * c;
        case 9: return 0.0008789063f * c;
        case 10: return 10.0f * std::sqrt(c / 256.0f) - 26.2f;
        default: return 1.4f * (0.5f * std::sqrt(c / 256.0f) + 0.5f);
    }
}

void startHenonMap(OscillatorState& state) {
    state.work[0] = 1.0f;
    state.work[1] = 1.0f;
}

namespace kernels {

namespace {

struct Point {
    float x, y, z;
};

bool isFinite(float x) { return x - x == 0.0f; }

// Integrates an attractor from the point in work[0] to work[2]. slope(point, u): its derivative, u a draw of
// 32 bits; output(point, slope): the sample before truncation. All three coordinates move at once. A point
// that has left the numbers starts again from the origin.
template <class Slope, class Output>
void attractor(int noiWave, const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, Slope slope,
               Output output) {
    const ChaosStep step = chaosStep(noiWave, state.increment);
    Point p{state.work[0], state.work[1], state.work[2]};
    Point d{};
    LinearCongruence random = context.random.congruence;
    for (int i = 0; i < count; ++i) {
        for (int k = 0; k < step.subSteps; ++k) {
            d = slope(p, static_cast<float>(random.next()));
            p.x += d.x * step.dt;
            p.y += d.y * step.dt;
            p.z += d.z * step.dt;
        }
        out[i] = truncateToSample(output(p, d));
    }
    context.random.congruence = random;
    const bool sound = isFinite(p.x) && isFinite(p.y) && isFinite(p.z);
    state.work[0] = sound ? p.x : 0.0f;
    state.work[1] = sound ? p.y : 0.0f;
    state.work[2] = sound ? p.z : 0.0f;
}

float limited(float x) { return clampTo(x, -16000.0f, 16000.0f); }

}  // namespace

// Lorenz.
void fractal1(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const float c = colour(state);
    const float b = chaosParameter(8, static_cast<int>(c));
    const float gain = 1200.0f - 3.125f * c;
    attractor(
        8, context, out, count, state,
        [b](const Point& p, float u) {
            const float r = u * 4.66e-14f - 0.0001f;
            return Point{8.0f * (p.y - p.x) + r, (28.0f - p.z) * p.x - p.y, p.x * p.y - b * p.z};
        },
        [gain](const Point& p, const Point&) { return limited(p.x * gain); });
}

// Rossler.
void fractal2(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const float a = chaosParameter(9, static_cast<int>(colour(state)));
    attractor(
        9, context, out, count, state,
        [a](const Point& p, float u) {
            const float r = u * 4.66e-12f - 0.01f;
            return Point{r - p.y - p.z, p.x + a * p.y, 0.2f + (p.x - 10.0f) * p.z};
        },
        [](const Point&, const Point& d) { return limited(d.x * 400.0f); });
}

// Chua, with a cubic for the diode.
void fractal3(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const float g = chaosParameter(10, static_cast<int>(colour(state)));
    attractor(
        10, context, out, count, state,
        [g](const Point& p, float u) {
            const float r = u * 4.66e-14f - 0.0001f;
            const float diode = p.x * p.x * p.x / 16.0f - p.x / 6.0f;
            return Point{10.91865f * (p.y - diode + r), p.x - p.y + p.z, g * p.y - 0.05f * p.z};
        },
        [](const Point&, const Point& d) { return d.x * 2000.0f; });
}

// Henon's map at twice the pitch, its values joined by straight lines. work: x, y, level, slope.
void fractal4(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const float a = chaosParameter(11, static_cast<int>(colour(state)));
    const std::uint32_t increment = std::min(state.increment, phaseMask);
    const float rate = static_cast<float>(increment) * 5.9604645e-8f;
    float x = state.work[0], y = state.work[1], level = state.work[2], slope = state.work[3];
    std::uint32_t phase = state.phase;
    for (int i = 0; i < count; ++i) {
        for (int half = 0; half < 2; ++half) {
            phase += increment;
            if (phase > phaseMask) {
                phase &= phaseMask;
                const float xn = 1.0f + y - a * x * x;
                y = 0.3f * x;
                x = xn;
                slope = (xn - level) * rate;
            }
            level += slope;
        }
        out[i] = truncateToSample(level * 6000.0f);
    }
    state.phase = phase;
    const bool sound = isFinite(x) && isFinite(y) && isFinite(level) && isFinite(slope);
    state.work[0] = sound ? x : 1.0f;
    state.work[1] = sound ? y : 1.0f;
    state.work[2] = sound ? level : 0.0f;
    state.work[3] = sound ? slope : 0.0f;
}

}  // namespace kernels

}  // namespace vantoric
