#include "effects/chorus.h"

#include <algorithm>

namespace vantoric {

namespace {

constexpr float antiDenormal = 0.00001f;
constexpr float walkerDraw = 0.000000000104850004f;   // 0.8 to 1.25 over the generator's range
constexpr float ensembleDraw = 0.00000000009320001f;  // 0.8 to 1.2

float square(float x) { return x * x; }
template <class T>
T cube(T x) {
    return x * x * x;
}

// The rotors turn for minutes at one speed: their increments stay in double, only the phase is stored in single
// precision.
float stepRotor(float& phase, double increment) {
    phase = static_cast<float>(fraction(phase + increment));
    return phase;
}

}  // namespace

float phaserCoefficient(float u, float sampleRate) {
    const float f = static_cast<float>(fastExp(-6.0f * u)) / sampleRate;
    return clampTo(1.0f - 132300.0f * f + 1944810000.0f * f * f, -1.0f, 0.9999f);
}

Chorus::Chorus(RandomSources& random) : random_(random) {}

void Chorus::reset() {
    for (Line* ring : {&ringA_, &ringB_, &ringC_, &ringD_}) ring->clear();
    position_ = 0;
    phase1_ = phase2_ = phase3_ = 0.0f;
    sweepLeft_ = 0;
    lowLeft_ = lowRight_ = 0.0f;
    walk_.fill(0.0f);
    slope_.fill(0.0f);
    feedbackLeft_ = feedbackRight_ = 0.0f;
    allpassLeft_ = allpassRight_ = {};
}

void Chorus::touchMemory(int variant) {
    if (const Row* row = rowOf(rows, variant)) touchLines({&ringA_, &ringB_, &ringC_, &ringD_}, row->lines.lines);
}

void Chorus::setSampleRate(float rate) { sampleRate_ = rate; }

void Chorus::setParameter(int index, float value) { parameters_.set(index, clampUnit(value)); }

// The lines write from `position_` or the sample after it on.
void Chorus::announce(int count) {
    ringA_.beginBlock(position_, count + 1);
    ringB_.beginBlock(position_, count + 1);
}

void Chorus::process(float* left, float* right, int count) {
    if (count <= 0) return;
    if (row_ == nullptr) return;
    announce(count);
    (this->*row_->run)(left, right, count);
}

// Two taps a side, one twice as far as the other; their difference is fed back.
void Chorus::flanger(float* left, float* right, int count) {
    const float mix = parameters_.mix(), dry = 1.0f - mix;
    const float increment = (cube(parameters_[1]) * 0.99f + 0.01f) / sampleRate_ * 5.0f;
    const float depth = square(parameters_[2]) * sampleRate_;
    const float center = (1.0f - parameters_[4]) * sampleRate_;
    const float gain = (2.0f - parameters_[3]) * parameters_[3] * 0.7f;

    const auto side = [&](Line& ring, float& feedback, float near, float far, float in) {
        const float tap = linearTap(ring, position_, near);
        feedback = (heldInLoop((tap - linearTap(ring, position_, far)) * gain) + feedback) * 0.5f;
        ring[position_ + 1] = heldInLoop(feedback + in);
        return (in + tap) * mix * 0.5f + in * dry;
    };
    for (int n = 0; n < count; ++n, advance()) {
        const float t = triangle(stepPhase(phase1_, increment));
        const float near = t * depth * 0.0025f + center * 0.0015f;
        const float far = t * depth * 0.005f + center * 0.003f;
        left[n] = side(ringA_, feedbackLeft_, near, far, left[n]);
        right[n] = side(ringB_, feedbackRight_, near, far, right[n]);
    }
}

// A bass rotor and a horn behind a crossover, each moving in delay and level, the right ear opposite the left.
void Chorus::rotary(float* left, float* right, int count) {
    ringC_.beginBlock(position_, count);
    ringD_.beginBlock(position_, count);
    if (sweepStep_ == 0) {
        sweepRotors(count);
        return turnRotors(left, right, count);
    }
    for (int done = 0; done < count;) {
        if (sweepLeft_ == 0) {
            sweepRotors(sweepStep_);
            sweepLeft_ = sweepStep_;
        }
        const int length = std::min(count - done, sweepLeft_);
        turnRotors(left + done, right + done, length);
        sweepLeft_ -= length;
        done += length;
    }
}

// The speed of both rotors is swept slowly.
void Chorus::sweepRotors(int samples) {
    const double rate = sampleRate_;
    const double drift = (cube(static_cast<double>(parameters_[3])) * 0.999 + 0.001) * samples / rate;
    stepRotor(phase3_, drift);
}

void Chorus::turnRotors(float* left, float* right, int count) {
    const float mix = parameters_.mix(), level = parameters_[2];
    const double rate = sampleRate_;
    const double slow = phase3_;
    const double sweep = slow > 0.5 ? 1.0 - slow : slow;
    const double speed = fastExp(((sweep - 0.25) * parameters_[4] + parameters_[1]) * 4.0);
    const double increment1 = 0.625 * speed / rate, increment2 = 0.90625 * speed / rate;
    const float k1 = sampleRate_ * 0.0008f, k2 = sampleRate_ * 0.0005f / 0.90625f;
    const float c = 6174.0f / sampleRate_;

    const auto split = [&](Line& lows, Line& highs, float& low, float in) {
        low = c * in + (1.0f - c) * low + antiDenormal;
        lows[position_] = low;
        highs[position_] = in - low;
    };
    for (int n = 0; n < count; ++n, advance()) {
        const float b1 = bump(stepRotor(phase1_, increment1));
        const float b2 = bump(stepRotor(phase2_, increment2));
        split(ringA_, ringC_, lowLeft_, left[n]);
        split(ringB_, ringD_, lowRight_, right[n]);
        const float wetLeft = linearTap(ringC_, position_, (b2 + 1.0f) * k2) * (level * b2 + 1.0f - level) +
                              linearTap(ringA_, position_, (b1 + 0.5f) * k1) * (level * b1 + 1.0f - level);
        const float wetRight = linearTap(ringD_, position_, (2.0f - b2) * k2) * (1.0f - level * b2) +
                               linearTap(ringB_, position_, (1.5f - b1) * k1) * (1.0f - level * b1);
        left[n] = dryWet(left[n], wetLeft, mix);
        right[n] = dryWet(right[n], wetRight, mix);
    }
}

// A walker goes to and fro between 0 and 1; at each end it draws the slope of its way back, before the step
// that would leave the range.
void Chorus::moveWalker(int index, float speed, float randomFactor) {
    float& slope = slope_[index];
    const auto draw = [&] { return static_cast<float>(random_.congruence.next()) * randomFactor + 0.8f; };
    if (walk_[index] + slope >= 1.0f) slope = draw() * -speed / sampleRate_;
    if (walk_[index] + slope <= 0.0f) slope = draw() * speed / sampleRate_;
    walk_[index] += slope;
}

// One wandering tap a side. Near full wet there is no dry signal to be late against: the static delay goes
// away, and one walker moves both sides in opposite directions.
void Chorus::chorus(float* left, float* right, int count) {
    const float mix = parameters_.mix();
    const bool wetOnly = mix > 0.9f;
    const float speed = parameters_[1] * 10.0f + 1.0f;
    const float depth = (parameters_[2] * 5512.5f + 2756.25f) * sampleRate_ / speed * 0.0000015625f;
    float base1 = sampleRate_ * 0.011f, base2 = sampleRate_ * 0.007f;
    if (wetOnly) {
        base1 -= base2;
        base2 = 0.0f;
    }
    if (slope_[0] == 0.0f || slope_[1] == 0.0f) {
        slope_[0] = speed / sampleRate_;
        slope_[1] = -speed / sampleRate_;
    }
    const float& rightWalk = walk_[wetOnly ? 0 : 1];
    for (int n = 0; n < count; ++n, advance()) {
        moveWalker(0, speed, walkerDraw);
        moveWalker(1, speed, walkerDraw);
        write(left[n], right[n]);
        left[n] = dryWet(left[n], cubicTap(ringA_, position_, depth * walk_[0] + base1), mix);
        right[n] = dryWet(right[n], cubicTap(ringB_, position_, (1.0f - rightWalk) * depth + base2), mix);
    }
}

// Four walkers of different speeds, two taps a side; each one's depth goes against its speed.
void Chorus::ensemble(float* left, float* right, int count) {
    constexpr std::array<float, 4> factors{1.0f, 1.2f, 1.7f, 1.9f};
    const float mix = parameters_.mix(), dry = 1.0f - mix;
    const float speed = parameters_[1] * 8.0f + 0.8f;
    const float depth = (parameters_[2] * 5512.5f + 2756.25f) * sampleRate_ / speed;
    float base1 = sampleRate_ * 0.005f, base2 = sampleRate_ * 0.007f, base3 = sampleRate_ * 0.012f, base4 = sampleRate_ * 0.013f;
    if (mix > 0.9f) {
        base2 -= base1;
        base3 -= base1;
        base4 -= base1;
        base1 = 0.0f;
    }
    if (std::find(slope_.begin(), slope_.end(), 0.0f) != slope_.end())
        for (int i = 0; i < 4; ++i) slope_[i] = speed * factors[i] / sampleRate_;
    for (int n = 0; n < count; ++n, advance()) {
        for (int i = 0; i < 4; ++i) moveWalker(i, speed * factors[i], ensembleDraw);
        write(left[n], right[n]);
        const float sumLeft = linearTap(ringA_, position_, depth * 0.0000008223684f * walk_[0] + base2) +
                              linearTap(ringA_, position_, depth * 0.000001201923f * walk_[2] + base4);
        const float sumRight = linearTap(ringB_, position_, depth * 0.00000091911755f * walk_[1] + base1) +
                               linearTap(ringB_, position_, depth * 0.0000015625f * walk_[3] + base3);
        left[n] = sumLeft * mix * 0.6f + left[n] * dry;
        right[n] = sumRight * mix * 0.6f + right[n] * dry;
    }
}

float Chorus::PhaserChain::run(float x, int count, float a) {
    for (int i = 0; i < count; ++i) x = stages[i].step(x, a);
    return x;
}

void Chorus::phaser(float* left, float* right, int count) {
    const float mix = parameters_.mix(), dry = 1.0f - mix;
    const int stages = 2 + 2 * static_cast<int>(parameters_[3] * 7.999f);
    const float increment = (cube(parameters_[1]) * 0.99f + 0.01f) / sampleRate_ * 5.0f;
    const float top = 1.0f - (1.0f - parameters_[4]) * 0.4f;
    const float depth = square(parameters_[2]) * 0.6f;
    for (int n = 0; n < count; ++n) {
        const float a = phaserCoefficient(1.0f - (top - triangle(stepPhase(phase1_, increment)) * depth), sampleRate_);
        const float inLeft = left[n] + antiDenormal, inRight = right[n] + antiDenormal;
        const float chainLeft = allpassLeft_.run(inLeft, stages, a);
        const float chainRight = allpassRight_.run(inRight, stages, a);
        left[n] = (chainLeft + inLeft) * 0.5f * mix + left[n] * dry;
        right[n] = (chainRight + inRight) * 0.5f * mix + right[n] * dry;
    }
}

// `opposite`: the right side's notches fall while the left side's rise.
void Chorus::sweepPhaser(float* left, float* right, int count, bool opposite) {
    const float mix = parameters_.mix(), dry = 1.0f - mix;
    const int stages = 2 + 2 * static_cast<int>(parameters_[3] * 5.999f);
    const float p4 = parameters_[4];
    const float feedback = p4 <= 0.5f ? 1.7f * p4 - 0.85f : 1.6f * p4 - 0.8f;
    const float center = (stages == 2 ? 0.3f : 0.15f) + std::max(feedback, 0.0f) * 0.8f;
    const float increment = (square(parameters_[1]) * 0.99f + 0.01f) / sampleRate_;
    const float top = 1.0f - center * 0.4f;
    const float depth = parameters_[2] * 0.9f;

    const auto side = [&](PhaserChain& chain, float& last, float a, float in) {
        last = heldInLoop(chain.run(feedback * last + in + antiDenormal, stages, a));
        return (last + in + antiDenormal) * 0.5f * mix + in * dry;
    };
    for (int n = 0; n < count; ++n) {
        const float t = triangle(stepPhase(phase1_, increment));
        const float a = phaserCoefficient(1.0f - (top - t * depth), sampleRate_);
        const float b = opposite ? phaserCoefficient(1.0f - (top - (1.0f - t) * depth), sampleRate_) : a;
        left[n] = side(allpassLeft_, feedbackLeft_, a, left[n]);
        right[n] = side(allpassRight_, feedbackRight_, b, right[n]);
    }
}

void Chorus::phaserFeedback(float* left, float* right, int count) { sweepPhaser(left, right, count, false); }
void Chorus::phaserStereo(float* left, float* right, int count) { sweepPhaser(left, right, count, true); }

void Chorus::stereoFlanger(float* left, float* right, int count) {
    const float mix = parameters_.mix();
    const float increment = (cube(parameters_[1]) * 0.99f + 0.01f) / sampleRate_ * 3.0f;
    const float depth = square(parameters_[2]) * sampleRate_ * 0.00625f;
    const float gain = parameters_[3] * 0.85f;
    for (int n = 0; n < count; ++n) {
        const float t = triangle(stepPhase(phase1_, increment));
        advance();
        write(heldInLoop(left[n] - gain * feedbackLeft_ + antiDenormal),
              heldInLoop(right[n] - gain * feedbackRight_ + antiDenormal));
        feedbackLeft_ = cubicTap(ringA_, position_, t * depth);
        feedbackRight_ = cubicTap(ringB_, position_, (1.0f - t) * depth);
        left[n] = dryWet(left[n], feedbackLeft_, mix);
        right[n] = dryWet(right[n], feedbackRight_, mix);
    }
}

// An allpass a side around a moving line: all frequencies keep their level.
void Chorus::chorusWhite(float* left, float* right, int count) {
    const float mix = parameters_.mix();
    const float increment = (square(parameters_[1]) * 3.0f + 0.25f) / sampleRate_;
    const float depth = parameters_[2] * 0.004f * sampleRate_, base = sampleRate_ * 0.00015f;
    const float gain = parameters_[3] * 0.7071f;

    const auto side = [&](Line& ring, float& feedback, float delay, float in) {
        const float v = in - feedback * gain;
        ring[position_] = v;
        feedback = cubicTap(ring, position_, delay);
        return dryWet(in, v * gain + feedback, mix);
    };
    for (int n = 0; n < count; ++n) {
        const float t = triangle(stepPhase(phase1_, increment));
        advance();
        left[n] = side(ringA_, feedbackLeft_, t * depth + base, left[n]);
        right[n] = side(ringB_, feedbackRight_, (1.0f - t) * depth + base, right[n]);
    }
}

// The excursion shrinks as the rate grows, so that the depth in pitch stays.
void Chorus::bendPitch(float* left, float* right, int count, bool opposite) {
    const float mix = parameters_.mix();
    const float rate = square(parameters_[1]) * 20.0f + 1.0f;
    const float increment = rate / sampleRate_;
    const float depth = parameters_[2] * 6.0f * sampleRate_ / rate * 0.001f;
    for (int n = 0; n < count; ++n, advance()) {
        const float s = bump(stepPhase(phase1_, increment));
        write(left[n], right[n]);
        left[n] = dryWet(left[n], cubicTap(ringA_, position_, s * depth), mix);
        right[n] = dryWet(right[n], cubicTap(ringB_, position_, (opposite ? 1.0f - s : s) * depth), mix);
    }
}

void Chorus::vibrato(float* left, float* right, int count) { bendPitch(left, right, count, false); }
void Chorus::vibratoStereo(float* left, float* right, int count) { bendPitch(left, right, count, true); }

// The mix is the depth.
void Chorus::swellLevel(float* left, float* right, int count, bool opposite) {
    const float mix = parameters_.mix();
    const float increment = (square(parameters_[1]) * 23.0f + 0.25f) / sampleRate_;
    for (int n = 0; n < count; ++n) {
        const float s = bump(stepPhase(phase1_, increment));
        left[n] = dryWet(left[n], left[n] * s, mix);
        right[n] = dryWet(right[n], right[n] * (opposite ? 1.0f - s : s), mix);
    }
}

void Chorus::tremolo(float* left, float* right, int count) { swellLevel(left, right, count, false); }
void Chorus::tremoloStereo(float* left, float* right, int count) { swellLevel(left, right, count, true); }

// Both shares of the mix are raised towards its middle, which keeps the loudness.
void Chorus::chorusStandard(float* left, float* right, int count) {
    const float mix = parameters_.mix();
    const float gain = mix <= 0.5f ? mix + 1.0f : 1.5f - (mix - 0.5f);
    const float wet = gain * mix, dry = gain * (1.0f - mix);
    const float increment = (square(parameters_[1]) * 3.0f + 0.25f) / sampleRate_;
    const float depth = parameters_[2] * 0.01f * sampleRate_;
    const float base = sampleRate_ * 0.015f - parameters_[2] * 0.005f * sampleRate_;
    for (int n = 0; n < count; ++n, advance()) {
        const float t = triangle(stepPhase(phase1_, increment));
        write(left[n], right[n]);
        left[n] = cubicTap(ringA_, position_, t * depth + base) * wet + left[n] * dry;
        right[n] = cubicTap(ringB_, position_, (1.0f - t) * depth + base) * wet + right[n] * dry;
    }
}

// The taps of Hyper Unison: sizes 0 to 3 have 1, 2, 3 and 4 a side. u and `phase` are the two sweeps, 0 to 1.
template <int size>
Chorus::Pair Chorus::unisonTaps(float depth, float base, float u, float phase) const {
    // Rises to top / 2 at the middle of the cycle and falls back.
    const auto mirrored = [](float x, float top, float cycle) { return cycle > 0.5f ? top - x : x; };
    const auto tapLeft = [&](float delay) { return linearTap(ringA_, position_, delay); };
    const auto tapRight = [&](float delay) { return linearTap(ringB_, position_, delay); };
    if constexpr (size == 0) {
        const float t = triangle(u);
        return {tapLeft(depth * t + base), tapRight((1.0f - t) * depth + 0.8f * base)};
    } else if constexpr (size == 1) {
        const float a = mirrored(2.8f * u, 2.8f, u), b = mirrored(5.6f * u, 5.6f, u);
        return {tapLeft(a * depth + base) + tapLeft((2.8f - b) * depth + 0.6f * base),
                tapRight(b * depth + 0.5f * base) + tapRight((1.4f - a) * depth + 0.9f * base)};
    } else if constexpr (size == 2) {
        const float a = mirrored(2.57f * u, 2.57f, u), b = mirrored(5.14f * u, 5.14f, u);
        const float c = mirrored(4.535294f * phase, 4.535294f, phase);
        return {
            tapLeft(a * depth + base) + tapLeft((2.57f - b) * depth + 0.6f * base) +
                tapLeft((2.267647f - c) * depth + 0.7f * base),
            tapRight(b * depth + 0.5f * base) + tapRight((1.285f - a) * depth + 0.9f * base) + tapRight(c * depth + 0.8f * base)};
    } else {
        const float t = triangle(u);
        const float c = mirrored(3.5294118f * phase, 3.5294118f, phase);
        const float e = mirrored(4.7058825f * phase, 4.7058825f, phase);
        return {tapLeft(t * depth + base) + tapLeft(2.0f * (1.0f - t) * depth + 0.5f * base) +
                    tapLeft((1.7647059f - c) * depth + 0.6f * base) + tapLeft(e * depth + 0.2f * base),
                tapRight((1.0f - t) * depth + 0.9f * base) + tapRight(2.0f * t * depth + 0.4f * base) +
                    tapRight(c * depth + 0.7f * base) + tapRight((2.3529413f - e) * depth + 0.1f * base)};
    }
}

template <int size>
void Chorus::unison(float* left, float* right, int count) {
    constexpr std::array<float, 4> loss{0.25f, 0.4f, 0.45f, 0.5f};
    const float mix = parameters_.mix(), width = parameters_[4];
    const float gain = 1.0f - mix * loss[size];
    const float increment = (parameters_[3] * 3.6f + 0.4f) / sampleRate_;
    const float spread = parameters_[1] / (parameters_[3] * 0.9f + 0.1f);
    const float depth = (size == 0 ? spread * 0.002f + 0.0004f : spread * 0.001f + 0.0002f) * sampleRate_;
    const float base = static_cast<float>(static_cast<int>(sampleRate_ * 0.015f));
    for (int n = 0; n < count; ++n) {
        const float u = fraction(stepPhase(phase1_, increment) + 0.25f);
        const float phase = stepPhase(phase2_, increment * 1.7f);
        advance();
        write(left[n] + antiDenormal, right[n] + antiDenormal);
        const Pair sum = unisonTaps<size>(depth, base, u, phase);
        const float l = (sum.left * mix + left[n]) * gain, r = (sum.right * mix + right[n]) * gain;
        const float middle = (l + r) * (1.0f - width) * 0.5f;
        left[n] = l * width + middle;
        right[n] = r * width + middle;
    }
}

void Chorus::hyperUnison(float* left, float* right, int count) {
    switch (static_cast<int>(parameters_[2] * 3.999f)) {
        case 0: return unison<0>(left, right, count);
        case 1: return unison<1>(left, right, count);
        case 2: return unison<2>(left, right, count);
        default: return unison<3>(left, right, count);
    }
}

// One side comes a little later than the other.
void Chorus::haas(float* left, float* right, int count) {
    const float mix = parameters_.mix();
    const int delay = static_cast<int>(parameters_[1] * 0.04f * sampleRate_);
    const bool leftLate = parameters_[2] < 0.5f;
    const int delayLeft = leftLate ? delay : 0, delayRight = leftLate ? 0 : delay;
    for (int n = 0; n < count; ++n, advance()) {
        write(left[n] + antiDenormal, right[n] + antiDenormal);
        left[n] = dryWet(left[n], ringA_[position_ - delayLeft], mix);
        right[n] = dryWet(right[n], ringB_[position_ - delayRight], mix);
    }
}

}  // namespace vantoric
