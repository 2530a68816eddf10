// The sample loops of one vocoder band, for a number type of single precision: float for one band, lanes for
// neighbouring bands side by side. All members are of type T.
#pragma once

#include "base/lanes.h"

namespace vantoric {

// A section of a band-pass: y = b0 x + s1 + s3 and so on, b1 being 0.
template <class T>
struct BandSection {
    T b0 = T(0), b2 = T(0), a1 = T(0), a2 = T(0);
};

// The memory of a section.
template <class T>
struct SectionState {
    T s1 = T(0), s2 = T(0), s3 = T(0);

    T step(const BandSection<T>& c, T x) {
        const T y = x * c.b0 + s1 + s3;
        s3 = s2;
        s1 = y * c.a1;
        s2 = y * c.a2 + x * c.b2;
        return y;
    }
};

// The speech side: four sections, and how loud the band is.
template <class T>
struct BandAnalysis {
    BandSection<T> section;
    T gain = T(0);
    SectionState<T> first, second, third, fourth;
    T e1 = T(0), e2 = T(0), e3 = T(0);

    void clear() {
        first = second = third = fourth = {};
        e1 = e2 = e3 = T(0);
    }
    // One sample of speech. a, rise: coefficient of the three one-poles of the follower, and 1 - a. Returns e3.
    T step(T x, T a, T rise) {
        constexpr float offset = 0.0000001f;
        T y = fourth.step(section, third.step(section, second.step(section, first.step(section, x))));
        y = y * gain;
        e1 = absolute(y + T(offset)) * rise + a * e1;
        e2 = a * e2 + (e1 + T(offset)) * rise;
        e3 = a * e3 + (e2 + T(offset)) * rise;
        return e3;
    }
};

// The carrier side: two sections, the level of the speech, two more sections.
template <class T>
struct BandSynthesis {
    BandSection<T> section;
    T gain = T(0);
    SectionState<T> first, second, third, fourth;

    void clear() { first = second = third = fourth = {}; }
    // One sample of the carrier at the level of the speech; returns the band's part of the sum.
    T step(T x, T level) {
        const T y = second.step(section, first.step(section, x)) * level;
        return fourth.step(section, third.step(section, y)) * gain;
    }
};

}  // namespace vantoric
