// The recursive parts of the kernels: each waits for the sample before, so that several oscillators are run side by
// side, lane = oscillator. One struct over its number type each; every lane gets the bits that float would.
#pragma once

#include <cstdint>

#include "base/lane_bank.h"
#include "sound/kernel_loops.h"

namespace vantoric {

// One-pole high-pass behind a stack.
template <class T>
struct StackHighpass {
    T pole, rest, memory;

    T step(T x) {
        memory = rest * memory + pole * x;
        return x - memory;
    }
};

// Two of them in series.
template <class T>
struct TwoStackHighpasses {
    StackHighpass<T> first, second;

    T step(T x) { return second.step(first.step(x)); }
};

// The low-pass of the analog output stage, behind the product with its pole.
template <class T>
struct OutputLowpass {
    T rest, memory;

    T step(T driven) { return memory = rest * memory + driven; }
};

// Chamberlin's state variable filter over noise.
template <class T>
struct NoiseFilter {
    T damping, f, low, band;

    void move(T e) {
        const T high = e - low - band * damping;
        band += high * f;
        low += band * f;
    }
};
template <class T>
struct NoiseLowpass : NoiseFilter<T> {
    T step(T e) {
        this->move(e);
        return this->low;
    }
};
template <class T>
struct NoiseBandpass : NoiseFilter<T> {
    T step(T e) {
        this->move(e);
        return this->band;
    }
};

// Paul Kellet's economy filter.
template <class T>
struct PinkFilter {
    T b0, b1, b2;

    T step(T w) {
        b0 = T(0.99765f) * b0 + T(0.099046f) * w;
        b1 = T(0.963f) * b1 + T(0.2965164f) * w;
        b2 = T(0.57f) * b2 + T(1.0526913f) * w;
        return b0 + b1 + b2 + T(0.1848f) * w;
    }
};

// ---- chaos ---------------------------------------------------------------------------------------------------

template <class T>
struct Point {
    T x, y, z;
};

// The attractors: slope(point, u) is the derivative, u a draw of 32 bits. Some are heard by a coordinate, output(x), some by
// its slope.

template <class T>
inline T limitedOutput(T x) {
    return limit(x, T(-16000.0f), T(16000.0f));
}

template <class T>
struct Lorenz {
    static constexpr bool heardBySlope = false;
    T b, gain;

    Point<T> slope(const Point<T>& p, T u) const {
        const T r = u * T(4.66e-14f) - T(0.0001f);
        return {T(8.0f) * (p.y - p.x) + r, (T(28.0f) - p.z) * p.x - p.y, p.x * p.y - b * p.z};
    }
    T output(T x) const { return limitedOutput(x * gain); }
};

template <class T>
struct Rossler {
    static constexpr bool heardBySlope = true;
    T a;

    Point<T> slope(const Point<T>& p, T u) const {
        const T r = u * T(4.66e-12f) - T(0.01f);
        return {r - p.y - p.z, p.x + a * p.y, T(0.2f) + (p.x - T(10.0f)) * p.z};
    }
    T output(T slope) const { return limitedOutput(slope * T(400.0f)); }
};

// With a cubic for the diode.
template <class T>
struct Chua {
    static constexpr bool heardBySlope = true;
    T g;

    Point<T> slope(const Point<T>& p, T u) const {
        const T r = u * T(4.66e-14f) - T(0.0001f);
        const T diode = p.x * p.x * p.x * T(0.0625f) - p.x / T(6.0f);
        return {T(10.91865f) * (p.y - diode + r), p.x - p.y + p.z, g * p.y - T(0.05f) * p.z};
    }
    T output(T slope) const { return slope * T(2000.0f); }
};

// Henon's map at twice the pitch, its values joined by straight lines. A phase of 24 bits is a whole number that float holds;
// `wrap` is what is left of a cycle behind the increment, from where on a step wraps.
template <class T>
struct HenonMap {
    T a, rate, increment, wrap, phase, x, y, level, slope;

    void move() {
        const auto wraps = phase >= wrap;
        phase = select(wraps, phase - wrap, phase + increment);
        const T xn = T(1.0f) + y - a * x * x;
        y = select(wraps, T(0.3f) * x, y);
        x = select(wraps, xn, x);
        slope = select(wraps, (xn - level) * rate, slope);
        level += slope;
    }
    T step(T) {
        move();
        move();
        return level;
    }
};

// An attractor on its way: all three coordinates move at once, by Euler's rule.
template <template <class> class System, class T>
struct AttractorOf {
    System<T> system;
    Point<T> p;
    T slopeOfX;  // kept only where it is heard: registers are short
    T dt;

    void move(T u) {
        const Point<T> d = system.slope(p, u);
        p.x += d.x * dt;
        p.y += d.y * dt;
        p.z += d.z * dt;
        if constexpr (System<T>::heardBySlope) slopeOfX = d.x;
    }
    T output() const { return system.output(System<T>::heardBySlope ? slopeOfX : p.x); }
};

// Attractors in their lanes. subSteps: how many steps make a sample; draws: the states of the linear congruence, which are
// stepped.
template <template <class> class System>
struct Attractors {
    template <class T>
    using Chain = AttractorOf<System, T>;

    LaneBank<Chain> bank;
    std::int32_t subSteps[rowCount] = {};
    std::uint32_t draws[rowCount] = {};
};

}  // namespace vantoric
