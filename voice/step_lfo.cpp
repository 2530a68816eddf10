#include "voice/step_lfo.h"

#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "base/numbers.h"
#include "voice/lfo.h"

namespace vantoric {

namespace {

enum Shape : int {
    Rectangle = 0,
    Smooth12 = 1,
    Smooth100 = 4,
    LinearToLeft = 5,
    CubicToLeft = 6,
    AnalogSlow = 7,
    AnalogMedium = 8,
    AnalogFast = 9,
    AnalogReverse = 10,
    SawDown = 12,
    SawUp = 13,
    Triangle = 14,
    Triangle25 = 15,
    Triangle75 = 16,
    Pulse0 = 17,
    Pulse50 = 18,
    Cosine = 19,
    Cosine180 = 20,
    Decay1 = 21,
    Decay2 = 22,
    Attack1 = 23,
    Attack2 = 24,
    CosineHalf = 25,
    SineHalf = 26,
    SineBoth = 27,
    FmSine = 29,
    FmSquare = 30,
    FmSawDown = 31,
    FmSawUp = 32,
    Noise = 34,
    Diffusion = 35,
};

// Positions beyond this are meaningless; the bound keeps whole parts inside 64 bits.
constexpr double furthest = 1e12;

std::int64_t wholePart(double x) { return static_cast<std::int64_t>(std::floor(x)); }

// Index modulo `count`, from 0 also below 0.
std::size_t wrapped(std::int64_t index, int count) {
    const std::int64_t rest = index % count;
    return static_cast<std::size_t>(rest < 0 ? rest + count : rest);
}

double ratioOf(double speed, int modulus) {
    return tempoRatios[static_cast<std::size_t>(truncateTo(speed * 13.99, 0, 1 << 30) % modulus)];
}

double bend(double x, double v) { return shapeCurve(x, 0.8 * v); }

// One step and its neighbours, at `f` of the way through it.
struct Place {
    double c, prev, next;
    double f, g;
};

// Shapes whose steps are levels, with a transition between them.
double levelShape(int shape, const Place& at) {
    switch (shape) {
        case LinearToLeft: return at.g * at.c + at.f * at.next;
        case CubicToLeft: {
            const double d = 0.5 - at.f;
            const double w = 2.0643514979629836 * d * d * d - 1.51666658 * d;
            return (0.5 - w) * at.c + (w + 0.5) * at.next;
        }
        case AnalogSlow: return bend(at.g, 0.5) * (at.prev - at.c) + at.c;
        case AnalogMedium: return bend(at.g, 1.0) * (at.prev - at.c) + at.c;
        case AnalogFast: return bend(bend(at.g, 0.5), 1.0) * (at.prev - at.c) + at.c;
        case AnalogReverse: return bend(at.f, 1.0) * (at.next - at.c) + at.c;
        default: return at.c;
    }
}

// Shapes whose steps are the size of a waveform inside the step.
double waveShape(int shape, const Place& at) {
    constexpr double turn = 2.0 * math::pi;
    const double c = at.c, f = at.f, g = at.g;
    switch (shape) {
        case SawDown: return g * c;
        case SawUp: return f * c;
        case Triangle: return (f <= 0.5 ? 2.0 * f : 2.0 - 2.0 * f) * c;
        case Triangle25: return (f < 0.25 ? 4.0 * f : 1.0 - (f - 0.25) * 1.33333) * c;
        case Triangle75: return (f <= 0.75 ? 1.0 - (0.75 - f) * 1.33333 : 4.0 * g) * c;
        case Pulse0: return f < 0.5 ? c : 0.0;
        case Pulse50: return f <= 0.5 ? 0.0 : c;
        case Cosine: return (0.5 * math::sin(turn * f + 4.71238911151886) + 0.5) * c;
        case Cosine180: return (0.5 * math::sin(turn * f + 7.853981852531433) + 0.5) * (f < 0.5 ? c : at.next);
        case Decay1: return bend(g, 0.5) * c;
        case Decay2: return bend(g, 1.0) * c;
        case Attack1: return (1.0 - bend(g, 0.5)) * c;
        case Attack2: return (1.0 - bend(g, 1.0)) * c;
        case CosineHalf: return (0.5 * math::sin(math::pi * f + 1.5707963705062866) + 0.5) * c;
        case SineHalf: return math::sin(math::pi * f) * c;
        default: return (c > 1.0 ? 1.5 - c : c - 0.5) * math::sin(turn * f) + 0.5;
    }
}

// Shapes whose steps are the number of cycles inside the step, 1 to 16.
double cycleShape(int shape, const Place& at) {
    const double n = truncateTo(15.0 * at.c + 1.0, -16, 16) * at.f;
    const double part = n - std::floor(n);
    switch (shape) {
        case FmSine: return 0.5 * math::sin(2.0 * math::pi * n + 4.71238911151886) + 0.5;
        case FmSquare: return part < 0.5 ? 1.0 : 0.0;
        case FmSawDown: return 1.0 - part;
        default: return part;
    }
}

}  // namespace

void StepLfo::trigger(const Start& start, bool free, bool once) {
    shape = start.shape;
    speed = start.speed;
    tempo = start.tempo;
    tickRate = start.tickRate > 0.0 ? start.tickRate : 1000.0;
    freeRunning = free;
    oneShot = once;
    stepCount = stepsPlayed(start.stepCount);
    increment = ratioOf(speed, tempoRatioCount) * tempo / 15.0 / tickRate;
    // The place counts one row fewer than the pace: at the fastest speed it takes the slowest row.
    const double place = free ? start.songPosition * ratioOf(speed, tempoRatioCount - 1) * 4.0 : 0.0;
    position = place >= -furthest && place <= furthest ? place : 0.0;
}

int StepLfo::stepsPlayed(float value) {
    return std::clamp(truncateTo(static_cast<double>(value) * 14.99999 + 2.0, 0, 100), 1, 16);
}

void StepLfo::noteOn(int modeIndex, const Start& start, int activeVoices, const StepLfo* oldest) {
    trigger(start, modeIndex == FreeLoop, modeIndex == EnvelopeMode);
    if (modeIndex != MonoLoop || activeVoices <= 1 || oldest == nullptr) return;
    shape = oldest->shape;
    position = oldest->position;
    increment = oldest->increment;
    tempo = oldest->tempo;
    stepCount = oldest->stepCount;
    freeRunning = oldest->freeRunning;
    oneShot = oldest->oneShot;
}

void StepLfo::advance() {
    const double next = position + increment;
    if ((oneShot && next >= stepCount) || !(next < furthest)) return;
    position = next;
}

// The smooth shapes glide from one step to the next in a straight line read at 16 points a step. The line starts
// `lead` points before the step and is `length` points long. Its first one runs from whatever the sixteenth step
// holds, whether it is played or not.
double StepLfo::smoothValue() const {
    static constexpr int leads[] = {1, 3, 6, 10};
    static constexpr int lengths[] = {2, 4, 8, 16};
    const int row = shape - Smooth12;
    const int points = oneShot ? 256 : 16 * stepCount;
    const auto point = [&](std::int64_t index) {
        const int from = (static_cast<int>(wrapped(index, points)) + leads[row]) & 255;
        const auto step = static_cast<std::size_t>(from >> 4);
        const int along = from & 15;
        if (along >= lengths[row]) return static_cast<double>(steps[step]);
        const float w = static_cast<float>(along) / static_cast<float>(lengths[row]);
        return static_cast<double>((1.0f - w) * steps[(step + 15) & 15] + w * steps[step]);
    };
    const double q = 16.0 * position;
    const std::int64_t whole = wholePart(q);
    const double a = point(whole);
    return a + (point(whole + 1) - a) * (q - static_cast<double>(whole));
}

float StepLfo::value(LinearCongruence& random) const {
    const std::int64_t i = wholePart(position);
    const std::size_t present = wrapped(i, stepCount);
    const std::size_t after = wrapped(i + 1, stepCount);
    Place at;
    at.c = static_cast<double>(steps[present]);
    at.prev = static_cast<double>(steps[wrapped(i - 1, stepCount)]);
    at.next = static_cast<double>(oneShot && after < present ? steps[present] : steps[after]);
    at.f = position - static_cast<double>(i);
    at.g = 1.0 - at.f;
    double v = at.c;
    if (shape >= Smooth12 && shape <= Smooth100) {
        v = smoothValue();
    } else if (shape <= AnalogReverse) {
        v = levelShape(shape, at);
    } else if (shape >= SawDown && shape <= SineBoth) {
        v = waveShape(shape, at);
    } else if (shape >= FmSine && shape <= FmSawUp) {
        v = cycleShape(shape, at);
    } else if (shape == Noise) {
        v = static_cast<double>(random.unit()) * at.c;
    } else if (shape == Diffusion) {
        const double place = static_cast<double>(random.unit()) - 0.5 + position + 16.0;
        v = static_cast<double>(steps[wrapped(wholePart(place), stepCount)]);
    }
    return static_cast<float>(clampUnit(v));
}

}  // namespace vantoric
