// The loops of the voices' distortions. Each is a struct over its number type: float for one voice, lanes for
// voices side by side, the same bits either way.
#pragma once

#include <array>

#include "base/engine_state.h"
#include "base/numbers.h"
#include "base/random.h"
#include "effects/distortion_labels.h"
#include "effects/drive_shapes.h"

namespace vantoric {

// What a distortion remembers. One set serves all types of a voice, so that a change of type goes on where the
// other one stopped. All zero after a clear.
template <class T>
struct DistortionMemory {
    T last;                      // last value of the input stage
    T sign, previous;            // "Selfsync": 0 counts as +1; its last input
    T accumulator, previousBit;  // "Scream"
    T held, counter;             // "Degrade"
    T history[shaperTaps - 1];   // inputs of the low-pass, oldest first
};

// What a loop is set up from, once a run.
template <class T>
struct DistortionSettings {
    T drive;               // not clamped
    float sampleRate;      // Hz
    IntegersOf<T> random;  // state of the congruence; drawing loops step it
};

namespace distortion {

inline constexpr float offset = 1e-5f;   // keeps decaying signals from denormal numbers
inline constexpr float least = 0.0001f;  // gated types pass the signal unchanged at or below this drive

// Applies a scalar function to each lane: for set-up, not for sample loops.
template <class T, class Function>
inline T eachLane(const T& x, Function function) {
    if constexpr (LaneTraits<T>::size == 1)
        return function(x);
    else
        return T([&](auto lane) { return function(x[lane]); });
}
template <class T>
inline T setupExp(const T& x) {
    return eachLane(x, [](float v) { return static_cast<float>(fastExp(v)); });
}

// Samples that "Degrade" holds each value for, 0 to the sample rate.
inline float holdLength(float drive, float sampleRate) {
    if (!(drive >= 0.01f)) return 1.0f;
    const float length = static_cast<float>(fastExp(3.0f * drive)) * sampleRate * 3.3333334e-5f;
    return static_cast<float>(truncateTo(length, 0, static_cast<int>(sampleRate)));
}

// Shares of the shaped sum and of the dry input: all wet from `edge` on, a crossfade below.
template <class T>
struct WetDry {
    T wet, dry;

    void setup(T drive, float full, float edge) {
        const auto whole = drive >= T(edge);
        wet = select(whole, T(full), drive * T(full / edge));
        dry = select(whole, T(0), T(1) - drive * T(1.0f / edge));
    }
    T of(T shaped, T x) const { return wet * shaped + dry * x; }
};

// The sum of shape(v) over eight points from the last low-passed input to y, both `scale` times as large.
template <class T, class Shape>
inline T eightFromLast(DistortionMemory<T>& m, T y, Shape shape, float scale = 1.0f) {
    const T p = m.last;
    m.last = y;
    return sumOfEight(T(scale) * p, T(scale) * y, shape);
}

// Common traits. gated: bypassed at small drive. filtered: step takes the low-passed input y as well. random:
// draws from the congruence.
struct Plain {
    static constexpr bool gated = false, filtered = false, random = false;
};
struct Gated : Plain {
    static constexpr bool gated = true;
};
struct Filtered : Plain {
    static constexpr bool filtered = true;
};

// An exponential of one sign: even harmonics.
template <class T>
struct Tube : Gated {
    static constexpr const char* label = "Tube";
    static constexpr int index = 2, variant = 8;
    T a, k;
    void setup(const DistortionSettings<T>& s) {
        a = T(25) * s.drive + T(0.5f);
        k = T(0.225f) / a + T(0.0125f);
    }
    T step(DistortionMemory<T>& m, T x) const {
        const auto f = [](T v) { return maximum(T(1) - exponential(-v), T(-0.5f)); };
        const T p = m.last, u = a * x + T(offset);
        m.last = u;
        return k * (f(T(0.75f) * u + T(0.25f) * p) + f(T(0.5f) * u + T(0.5f) * p) + f(T(0.25f) * u + T(0.75f) * p) + f(u));
    }
};

template <class T>
struct Asym : Gated {
    static constexpr const char* label = "Asym";
    static constexpr int index = 5, variant = 3;
    T a, b, k, bias;
    void setup(const DistortionSettings<T>& s) {
        a = T(25) * s.drive + T(0.5f);
        b = T(50) * s.drive + T(1);
        k = T(0.1125f) / a + T(0.0015625f);
        bias = T(2) * s.drive;
    }
    T step(DistortionMemory<T>& m, T x) const {
        const auto g = [this](T v) { return maximum(T(1) - exponential(bias - v) + bias, T(-1)); };
        const T p = m.last, u = a * x + T(offset);
        m.last = u;
        return k * (g(T(1.5f) * p + T(0.5f) * u) + g(p + u) + g(T(0.5f) * p + T(1.5f) * u) + g(b * x + T(2e-5f)));
    }
};

template <class T>
struct Soft : Gated {
    static constexpr const char* label = "Soft";
    static constexpr int index = 3, variant = 9;
    T wet, dry;
    void setup(const DistortionSettings<T>& s) {
        wet = T(0.03125f) * s.drive;
        dry = T(1) - s.drive;
    }
    T step(DistortionMemory<T>& m, T x) const {
        const auto s = [](T v) { return v / (T(3) / (v * v + T(2)) + absolute(v)); };
        const T p = m.last, u = x + T(offset);
        m.last = u;
        return wet * (s(T(7.2f) * p + T(21.6f) * u) + s(T(21.6f) * p + T(7.2f) * u) + s(T(14.4f) * (p + u)) + s(T(28.8f) * u)) +
               dry * u;
    }
};

// The sign of eight points. Those at the middle and at the end are judged without the offset.
template <class T>
struct Fuzz : Plain {
    static constexpr const char* label = "Fuzz";
    static constexpr int index = 4, variant = 11;
    T wet, dry;
    void setup(const DistortionSettings<T>& s) {
        wet = s.drive;
        dry = T(1) - s.drive;
    }
    static T level(T v, float edge) { return select(v >= T(edge), T(0.00425f), T(-0.00425f)); }
    T step(DistortionMemory<T>& m, T x) const {
        const T p = m.last, u = x + T(offset);
        m.last = u;
        T sum = level(T(0.875f) * p + T(0.125f) * u, 0.0f);
        sum = sum + level(T(0.75f) * p + T(0.25f) * u, 0.0f);
        sum = sum + level(T(0.625f) * p + T(0.375f) * u, 0.0f);
        sum = sum + level(T(0.5f) * p + T(0.5f) * u, -offset);
        sum = sum + level(T(0.375f) * p + T(0.625f) * u, 0.0f);
        sum = sum + level(T(0.25f) * p + T(0.75f) * u, 0.0f);
        sum = sum + level(T(0.125f) * p + T(0.875f) * u, 0.0f);
        sum = sum + level(u, -offset);
        return wet * sum + dry * u;
    }
};

// Coarse levels; 398 takes back what keeps the four truncations on one side of zero, less a half each.
template <class T>
struct Crush : Gated {
    static constexpr const char* label = "Crush";
    static constexpr int index = 7, variant = 6;
    T q, scale;
    void setup(const DistortionSettings<T>& s) {
        q = setupExp(T(6) - T(4.2f) * s.drive);
        scale = T(0.25f) / q;
    }
    T step(DistortionMemory<T>& m, T x) const {
        const T p = m.last, u = x + T(offset);
        m.last = u;
        return (sumOfFour(p, u, [this](T v) { return crushLevel(v, q); }) - T(398)) * scale;
    }
};

template <class T>
struct ShapSin : Plain {
    static constexpr const char* label = "ShapSin";
    static constexpr int index = 8, variant = 7;
    T gain;
    void setup(const DistortionSettings<T>& s) { gain = T(8) * setupExp(T(3) * s.drive); }
    T step(DistortionMemory<T>& m, T x) const {
        const T p = m.last, u = gain * x + T(offset);
        m.last = u;
        return sumOfEight(p, u, [](T v) { return polynomialSine(v); }) * T(1.0f / 64);
    }
};

// A triangle of parabolas, never mixed with the dry input.
template <class T>
struct ShapTri : Filtered {
    static constexpr const char* label = "ShapTri";
    static constexpr int index = 9, variant = 26;
    T h;
    void setup(const DistortionSettings<T>& s) { h = T(32) * s.drive + T(2); }
    T shape(T v) const {
        const T f = fractionAbove(v * h - T(0.25f));
        const T w = f - T(0.5f);
        const T g = fractionAbove(f + T(0.5f)) - T(0.5f);
        return T(4) * (w * w - g * g);
    }
    T step(DistortionMemory<T>& m, T, T y) const {
        return eightFromLast(m, y, [this](T v) { return shape(v); }) * T(1.0f / 64);
    }
};

template <class T>
struct ShapAsy : Filtered {
    static constexpr const char* label = "ShapAsy";
    static constexpr int index = 10, variant = 27;
    T h;
    WetDry<T> share;
    void setup(const DistortionSettings<T>& s) {
        h = T(32) * s.drive + T(2);
        share.setup(s.drive, 1.0f / 64, 0.25f);
    }
    T shape(T v) const {
        const T f = fractionAbove(v * h + T(0.4375f));
        const T w = f - T(0.5f);
        const T g = fractionAbove(f + T(0.125f)) - T(0.5f);
        return T(9.142858f) * (g * g - w * w);
    }
    T step(DistortionMemory<T>& m, T x, T y) const {
        return share.of(eightFromLast(m, y, [this](T v) { return shape(v); }), x);
    }
};

template <class T>
struct ShapPul : Filtered {
    static constexpr const char* label = "ShapPul";
    static constexpr int index = 11, variant = 28;
    T h, slope;
    WetDry<T> share;
    void setup(const DistortionSettings<T>& s) {
        h = T(32) * s.drive + T(2);
        slope = T(112) * s.drive + T(7);
        share.setup(s.drive, 1.0f / 64, 0.25f);
    }
    T shape(T v) const {
        const T z = v * h;
        const T square = z * z;
        const T inside = T(3.5f) * (square * square * z - T(2) * h * v * square) + v * slope;
        return select(absolute(z) <= T(1), inside, T(0));
    }
    T step(DistortionMemory<T>& m, T x, T y) const {
        return share.of(eightFromLast(m, y, [this](T v) { return shape(v); }, 2.0f), x);
    }
};

template <class T>
struct ShapWar : Filtered {
    static constexpr const char* label = "ShapWar";
    static constexpr int index = 12, variant = 29;
    T gain;
    WetDry<T> share;
    void setup(const DistortionSettings<T>& s) {
        gain = T(64) * s.drive + T(4);
        share.setup(s.drive, 1.0f / 64, 0.25f);
    }
    T step(DistortionMemory<T>& m, T x, T y) const {
        return share.of(eightFromLast(m, y, [this](T v) { return warpShape(v * gain); }), x);
    }
};

template <class T>
struct ShapHal : Filtered {
    static constexpr const char* label = "ShapHal";
    static constexpr int index = 13, variant = 30;
    T h, turn;
    WetDry<T> share;
    void setup(const DistortionSettings<T>& s) {
        h = T(32) * s.drive + T(2);
        turn = T(201.06194f) * s.drive + T(12.566371f);
        share.setup(s.drive, 1.0f / 64, 0.25f);
    }
    T shape(T v) const { return select(v * h <= T(0.25f), polynomialSine(v * turn), T(1)); }
    T step(DistortionMemory<T>& m, T x, T y) const {
        return share.of(eightFromLast(m, y, [this](T v) { return shape(v); }, 2.0f), x);
    }
};

template <class T>
struct ShapZap : Filtered {
    static constexpr const char* label = "ShapZap";
    static constexpr int index = 14, variant = 31;
    T gain;
    WetDry<T> share;
    void setup(const DistortionSettings<T>& s) {
        gain = T(48) * s.drive + T(3);
        share.setup(s.drive, 1.0f / 64, 0.25f);
    }
    // On loud peaks the sine races through so many turns that they sound as noise.
    T shape(T v) const { return farReachingSine(quickExponential(v * gain) - T(1)); }
    T step(DistortionMemory<T>& m, T x, T y) const {
        return share.of(eightFromLast(m, y, [this](T v) { return shape(v); }), x);
    }
};

template <class T>
struct ShapSym : Filtered {
    static constexpr const char* label = "ShapSym";
    static constexpr int index = 15, variant = 32;
    T h, centre;
    WetDry<T> share;
    void setup(const DistortionSettings<T>& s) {
        h = T(32) * s.drive + T(2);
        centre = T(0.0625f) + T(0.5f) * squareRoot(maximum(s.drive, T(0)));
        share.setup(s.drive, 1.0f / 64, 0.5f);
    }
    T shape(T v) const {
        const T z = v * h;
        const T square = z * z;
        return select(absolute(z) <= T(1), T(2) * (T(2) * square - square * square), T(2)) - centre;
    }
    T step(DistortionMemory<T>& m, T x, T y) const {
        return share.of(eightFromLast(m, y, [this](T v) { return shape(v); }), x);
    }
};

// Turns the polarity over at each rising crossing: an octave down.
template <class T>
struct Selfsync : Plain {
    static constexpr const char* label = "Selfsync";
    static constexpr int index = 17, variant = 33;
    T wet, dry;
    void setup(const DistortionSettings<T>& s) {
        wet = s.drive;
        dry = T(1) - s.drive;
    }
    T step(DistortionMemory<T>& m, T x) const {
        const T u = x + T(offset);
        const T sign = select(m.sign < T(0), T(-1), T(1));
        m.sign = select((x > T(-offset)) && (m.previous <= T(0)), -sign, sign);
        m.previous = u;
        return u * m.sign * wet + u * dry;
    }
};

template <class T>
struct Degrade : Plain {
    static constexpr const char* label = "Degrade";
    static constexpr int index = 18, variant = 34;
    T length;
    void setup(const DistortionSettings<T>& s) {
        length = eachLane(s.drive, [&s](float drive) { return holdLength(drive, s.sampleRate); });
    }
    T step(DistortionMemory<T>& m, T x) const {
        const T count = m.counter + T(1);
        const auto due = count >= length;
        m.held = select(due, x + T(offset), m.held);
        m.counter = select(due, T(0), count);
        return m.held;
    }
};

// One draw of the congruence as a number from 0 to 2^32.
template <class T>
inline T draw(IntegersOf<T>& state) {
    state = congruenceStep(state);
    return lanesTo<T>(state);
}

template <class T>
struct Noise : Plain {
    static constexpr const char* label = "Noise";
    static constexpr int index = 19, variant = 35;
    static constexpr bool random = true;
    T amount;
    IntegersOf<T> state;
    void setup(const DistortionSettings<T>& s) {
        amount = s.drive * s.drive;
        state = s.random;
    }
    T step(DistortionMemory<T>&, T x) { return x + T(offset) + amount * (draw<T>(state) * T(1.165e-10f) - T(0.25f)); }
};

template <class T>
struct NoiseRm : Plain {
    static constexpr const char* label = "NoiseRM";
    static constexpr int index = 20, variant = 36;
    static constexpr bool random = true;
    T scale, rest;
    IntegersOf<T> state;
    void setup(const DistortionSettings<T>& s) {
        scale = s.drive * T(4.66e-10f);
        rest = T(1) - s.drive;
        state = s.random;
    }
    T step(DistortionMemory<T>&, T x) { return (x + T(offset)) * (draw<T>(state) * scale + rest); }
};

// A one-bit follower of limited slope.
template <class T>
struct Scream : Plain {
    static constexpr const char* label = "Scream";
    static constexpr int index = 21, variant = 38;
    T slope;
    WetDry<T> share;
    void setup(const DistortionSettings<T>& s) {
        slope = (T(96000) * s.drive * s.drive * s.drive + T(96.00001f)) / T(s.sampleRate);
        share.setup(s.drive, 1.0f / 16, 0.25f);
    }
    T step(DistortionMemory<T>& m, T x) const {
        const T s = m.previousBit;
        m.accumulator = m.accumulator + (T(8) * x - s);
        const T t = s + select(m.accumulator > T(0), slope, -slope);
        const T bounded = limit(t, T(-1), T(1));
        m.previousBit = bounded;
        return share.of(T(2) * bounded, x);
    }
};

// A loop as an argument: typename Which::template On<T> is the loop over T.
template <template <class> class Loop>
struct Named {
    template <class T>
    using On = Loop<T>;
    using Traits = Loop<float>;
    static constexpr int number = Traits::variant;
};

// The one list of the loops. A new one is a struct as the others are, with its label, its index in the menu and a number of
// its own, named here.
template <template <class> class... Loops>
struct LoopList {
    // Calls visit(Named<Loop>{}) for each until one returns true; whether one did.
    template <class Visit>
    static constexpr bool any(Visit&& visit) {
        return (visit(Named<Loops>{}) || ...);
    }
};
using AllLoops = LoopList<Tube, Soft, Fuzz, Asym, Crush, ShapSin, ShapTri, ShapAsy, ShapPul, ShapWar, ShapHal, ShapZap, ShapSym,
                          Selfsync, Degrade, Noise, NoiseRm, Scream>;

// Calls function(Named<Loop>{}) for the loop of a variant. Returns false for a variant that passes audio through.
template <class Function>
inline bool withLoop(int variant, Function&& function) {
    return AllLoops::any([&](auto which) {
        if (which.number != variant) return false;
        function(which);
        return true;
    });
}

template <class T>
inline T loadSamples(const float* at) {
    if constexpr (LaneTraits<T>::size == 1)
        return *at;
    else
        return T(at, stdx::element_aligned);
}
template <class T>
inline void storeSamples(const T& x, float* at) {
    if constexpr (LaneTraits<T>::size == 1)
        *at = x;
    else
        x.copy_to(at, stdx::element_aligned);
}

// Runs a loop over `count` samples (up to maxTickSamples) in place, `stride` floats apart. `low`: the low-pass
// of the filtered loops. Only the lanes of `wanted` are written; the memory of the others goes astray.
template <class T, class Loop>
inline void run(Loop loop, const ShaperTaps& low, DistortionMemory<T>& stored, float* at, int stride, int count,
                const MaskOf<T>& wanted) {
    DistortionMemory<T> memory = stored;
    const bool whole = allOf(wanted);
    [[maybe_unused]] T line[Loop::filtered ? shaperTaps - 1 + maxTickSamples : 1];
    [[maybe_unused]] const ShaperTaps taps = low;
    if constexpr (Loop::filtered)
        for (int k = 0; k < shaperTaps - 1; ++k) line[k] = memory.history[k];
    for (int i = 0; i < count; ++i, at += stride) {
        const T x = loadSamples<T>(at);
        T y;
        if constexpr (Loop::filtered) {
            const T* newest = line + shaperTaps - 1 + i;
            line[shaperTaps - 1 + i] = x + T(offset);
            y = loop.step(memory, x, filterSum<T>(taps, [newest](int k) { return newest[-k]; }));
        } else {
            y = loop.step(memory, x);
        }
        storeSamples(whole ? y : select(wanted, y, x), at);
    }
    if constexpr (Loop::filtered)
        for (int k = 0; k < shaperTaps - 1; ++k) memory.history[k] = line[count + k];
    stored = memory;
}

}  // namespace distortion

// The loop's number of an index into the list of distortion types; 0, which passes audio through, for
// separators and indices outside the list.
constexpr int distortionVariant(int type) {
    constexpr auto variants = [] {
        std::array<int, distortionTypeCount> all{};
        distortion::AllLoops::any([&](auto which) {
            int& place = all[decltype(which)::Traits::index];
            if (place != 0) throw "two loops have the same index";
            place = which.number;
            return false;
        });
        return all;
    }();
    return type >= 0 && type < distortionTypeCount ? variants[type] : 0;
}

}  // namespace vantoric
