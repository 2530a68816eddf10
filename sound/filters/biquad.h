// Second-order sections: the designs, and the filter types built from one or two of them.
#pragma once

#include <array>

#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_row.h"

namespace vantoric::filters {

// y = b0 x + b1 x1 + b2 x2 + a1 y1 + a2 y2: the feedback terms carry the sign with which they are added.
struct BiquadDesign {
    double b0 = 0.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
};

enum BiquadKind : int {
    biquadLowPass = 1,  // 0 is the same
    biquadHighPass = 2,
    biquadBandPass = 3,
    biquadPeakNine = 4,
    biquadPeakEighteen = 5,
    biquadNotch = 6,
    biquadLowShelf = 7,
    biquadHighShelf = 8,
    biquadPeakRatio = 9,
    biquadPeakNarrow = 10,
    biquadAllPass = 11,
    biquadPeakWide = 12
};

// A section of `kind` (0 to 12; others are as 0) at cutoff c (not clamped; the frequency is) with resonance r
// (clamped to 0 to 1). The shelves follow the audio EQ cookbook.
BiquadDesign designBiquad(int kind, double c, double r, double sampleRate);

// Direct form I, with a small constant on the input that keeps denormal numbers off.
template <class T>
struct Section {
    T b0, b1, b2, a1, a2;
    T x1, x2, y1, y2;

    void clear() { x1 = x2 = y1 = y2 = T(0); }
    void set(const BiquadDesign& design) {
        b0 = T(design.b0);
        b1 = T(design.b1);
        b2 = T(design.b2);
        a1 = T(design.a1);
        a2 = T(design.a2);
    }
    T step(T x) {
        x += T(ScalarOf<T>(1e-6));
        const T y = b0 * x + b1 * x1 + b2 * x2 + a2 * y2 + a1 * y1;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        return y;
    }
};

// One section.
template <class T>
struct BiquadOne {
    using Variant = OneForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    Section<T> section1;
    T gain;

    void clear() { section1.clear(); }
    template <Variant>
    T step(T x, Draws<T>&) {
        return section1.step(x) * gain;
    }
};

void setupHpDigital(const FilterInputs& in, BiquadOne<float>& filter);
void setupNotch(const FilterInputs& in, BiquadOne<float>& filter);
template <>
inline constexpr FilterRow<BiquadOne> filterRows<BiquadOne>[] = {
    {10, "HP Digital", 1, setupHpDigital},
    {21, "EQ Notch", 3, setupNotch},
};

// The second section on the first's output, or both on the input.
enum class BiquadPair { cascade, parallel, count };

// Two sections.
template <class T>
struct BiquadTwo {
    using Variant = BiquadPair;
    static constexpr DrawCounts draws(Variant) { return {}; }

    Section<T> section1, section2;
    T gain;

    void clear() {
        section1.clear();
        section2.clear();
    }
    template <Variant V>
    T step(T x, Draws<T>&) {
        const T y = section1.step(x);
        if constexpr (V == BiquadPair::cascade)
            return section2.step(y) * gain;
        else
            return (y + section2.step(x)) * gain;
    }
};

void setupLpDigital(const FilterInputs& in, BiquadTwo<float>& filter);
void setupBpDigital(const FilterInputs& in, BiquadTwo<float>& filter);
void setupLowShelf(const FilterInputs& in, BiquadTwo<float>& filter);
void setupHighShelf(const FilterInputs& in, BiquadTwo<float>& filter);
void setupWide(const FilterInputs& in, BiquadTwo<float>& filter);
void setupPeak(const FilterInputs& in, BiquadTwo<float>& filter);
void setupVocals(const FilterInputs& in, BiquadTwo<float>& filter);
void setupVocals2(const FilterInputs& in, BiquadTwo<float>& filter);
void setupBoobs(const FilterInputs& in, BiquadTwo<float>& filter);
void setupMShape(const FilterInputs& in, BiquadTwo<float>& filter);
void setupElliptic(const FilterInputs& in, BiquadTwo<float>& filter);
template <>
inline constexpr FilterRow<BiquadTwo> filterRows<BiquadTwo>[] = {
    {5, "LP Digital", 0, setupLpDigital, BiquadPair::cascade},
    {15, "BP Digital", 2, setupBpDigital, BiquadPair::cascade},
    {17, "EQ LoSh", 7, setupLowShelf, BiquadPair::cascade},
    {18, "EQ HiSh", 8, setupHighShelf, BiquadPair::cascade},
    {19, "EQ Wide", 4, setupWide, BiquadPair::cascade},
    {20, "EQ Peak", 5, setupPeak, BiquadPair::cascade},
    {26, "Vocals", 17, setupVocals, BiquadPair::cascade},
    {41, "Vocals 2", 70, setupVocals2, BiquadPair::parallel},
    {44, "BP Boobs", 15, setupBoobs, BiquadPair::parallel},
    {45, "M Shape", 11, setupMShape, BiquadPair::cascade},
    {52, "LP Elliptic", 26, setupElliptic, BiquadPair::cascade, Recompute::everySetup},
};

// "LP AM": two sections with an amplitude modulation at the filter's own frequency between them.
template <class T>
struct BiquadAm {
    using Variant = OneForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    Section<T> section1, section2;
    T rate, depth, gain;
    T phase;

    void clear() {
        section1.clear();
        section2.clear();
        phase = T(0);
    }
    template <Variant>
    T step(T x, Draws<T>&) {
        const T v = section1.step(x);
        phase = wrapped(phase + rate);
        return section2.step(v + v * depth * shape(phase)) * gain;
    }
};

void setupAm(const FilterInputs& in, BiquadAm<float>& filter);
template <>
inline constexpr FilterRow<BiquadAm> filterRows<BiquadAm>[] = {{43, "LP AM", 107, setupAm}};

// The modulation of "LP AM": steps of the phase per sample, depth, and the level that makes up for it.
struct AmLaw {
    double rate, depth, scale;
};
AmLaw amLaw(double fn, double r);

}  // namespace vantoric::filters
