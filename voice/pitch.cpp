#include "voice/pitch.h"

#include "base/math.h"
#include "base/numbers.h"

namespace vantoric {

namespace {

constexpr int middleKey = 60;

// e^x where x is mostly 0, as an untouched control gives it: e^0 is exactly 1.
double expOrOne(double x) { return x == 0.0 ? 1.0 : math::exp(x); }

// The band around the middle of the knob that means a fixed pitch.
bool fixedKey(float keyFollow) { return keyFollow > 0.4583f && keyFollow < 0.546f; }

template <int count>
double pick(const double (&table)[count], double value, double scale) {
    return table[static_cast<int>(scale * clampUnit(value))];
}

}  // namespace

double keyTargetOfMove(const KeyIncrements& keyIncrement, int note, float keyFollow) {
    return static_cast<double>(keyIncrement[fixedKey(keyFollow) ? middleKey : note & 0xff]);
}

double keyTarget(const KeyIncrements& keyIncrement, int note, float keyFollow) {
    const double whole = keyTargetOfMove(keyIncrement, note, keyFollow);
    if (keyFollow >= 0.98f || fixedKey(keyFollow)) return whole;
    return whole / fastPower2((1.0 - static_cast<double>(keyFollow)) * (note - middleKey) / 6.0);
}

double octFactor(float value) {
    static constexpr double factors[] = {0.0625, 0.125, 0.25, 0.5, 1, 2, 4, 8, 16};
    return pick(factors, value, 8.99);
}

double intervFactor(float value) {
    static constexpr double factors[] = {1, 1.2, 1.25, 1.3333334, 1.5, 1.6666666, 1.75};
    return pick(factors, value, 6.99);
}

double semiFactor(float value) {
    static constexpr double factors[] = {1.0,       1.0594630, 1.1224620, 1.1892000, 1.2599209, 1.3348398, 1.4142135,
                                         1.4983000, 1.5874000, 1.6817900, 1.7817900, 1.8877000, 2.0};
    return pick(factors, value, 12.99);
}

double fineFactor(float value) { return static_cast<double>(value) * 0.118926 + 0.940537; }

Drift Drift::forMicrotuning(int index) {
    switch (index) {
        case 1: return {0.0005, 0.25, 0.001};
        case 2: return {0.002, 0.5, 0.001};
        case 3: return {0.004, 2.0, 0.001};
        default: return {};
    }
}

void OscillatorPitch::startDrift(const Drift& drift, LinearCongruence& random) {
    driftPosition = static_cast<double>(random.unit());
    driftDirection = random.unit() < 0.5f ? -drift.step : drift.step;
}

double OscillatorPitch::stepDrift(const Drift& drift, LinearCongruence& random) {
    if (!(drift.amount > 0.0)) return 1.0;
    const bool above = driftPosition > 1.0;
    if (above || driftPosition < -1.0) {
        const double u = static_cast<double>(random.unit());
        const double pace = (u * (drift.speed - 1.0 / drift.speed) + 1.0 / drift.speed) * drift.step;
        driftDirection = above ? -pace : pace;
    }
    driftPosition += driftDirection;
    return fastExp(driftPosition * drift.amount);
}

void OscillatorPitch::stepGlide(float factor) {
    if (position == 0.0) position = target;
    if (!(factor < 1.0f)) {
        position = target;
        return;
    }
    if (position == restPosition_ && target == restTarget_ && factor == restFactor_) return;
    const float from = math::log(static_cast<float>(position));
    const float to = math::log(static_cast<float>(target));
    const double next = static_cast<double>(math::exp(factor * to + (1.0f - factor) * from));
    if (next == position) {
        restFactor_ = factor;
        restTarget_ = target;
        restPosition_ = position;
    }
    position = next;
}

float glideFactor(float glideSpeed) { return static_cast<float>(fastExp(-6.0 * static_cast<double>(glideSpeed))); }

double smoothNote(double smoothed, int note, float factor) {
    if (!(factor < 1.0f)) return note;
    const double f = static_cast<double>(factor);
    return note * f + (1.0 - f) * smoothed;
}

double voicePitchFactor(float pitch, float fine, double slideFactor, double tuneFactor, double bendFactor) {
    return expOrOne((static_cast<double>(pitch) - 0.5) * 4.0) * fineFactor(fine) * slideFactor * tuneFactor * bendFactor;
}

double oscillatorIncrement(const OscillatorPitch& oscillator, const OscillatorPitchValues& values, double driftFactor,
                           double voiceFactor) {
    const double bend = (static_cast<double>(values.pitchOct) - 0.5) * 0.6932 + (static_cast<double>(values.pitch) - 0.5) * 4.0;
    return oscillator.position * voiceFactor * intervFactor(values.interv) * semiFactor(values.semi) * driftFactor *
           octFactor(values.oct) * fineFactor(values.detune) * oscillator.tuning * expOrOne(bend);
}

}  // namespace vantoric
