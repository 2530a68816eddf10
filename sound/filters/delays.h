// Filters on a delay line: the combs and the plucked and blown strings. They read at places of their own,
// so they run a voice at a time.
#pragma once

#include <cstdlib>
#include <memory>
#include <new>

#include "sound/filters/draws.h"
#include "sound/filters/filter_row.h"

namespace vantoric::filters {

// A line of 16384 samples. Clearing it is free: samples from before are told by their age and read as 0.
class DelayLine {
public:
    static constexpr int size = 16384;
    static constexpr int mask = size - 1;

    // `memory`: `size` floats that outlive the line, of any content.
    explicit DelayLine(float* memory = nullptr) : memory_(memory) {}

    void clear() { position_ = written_ = 0; }
    // Writes the present sample.
    void write(float x) {
        memory_[position_] = x;
        written_ += written_ < size ? 1 : 0;
    }
    void add(float x) { memory_[position_] += x; }
    void advance() { position_ = (position_ + 1) & mask; }
    // The sample of so many steps ago; 0 is the present one. Ages wrap at the size.
    float at(int age) const {
        age &= mask;
        return age < written_ ? memory_[(position_ - age) & mask] : 0.0f;
    }

private:
    float* memory_;
    int position_ = 0, written_ = 0;
};

// Zeroed memory for `count` lines, which the system maps as it is touched. Throws std::bad_alloc.
struct FreeMemory {
    void operator()(float* memory) const { std::free(memory); }
};
using LineMemory = std::unique_ptr<float[], FreeMemory>;
inline LineMemory allocateLines(int count) {
    auto* memory = static_cast<float*>(std::calloc(static_cast<std::size_t>(count) * DelayLine::size, sizeof(float)));
    if (memory == nullptr) throw std::bad_alloc();
    return LineMemory(memory);
}

// The delay of these types glides from the last setup's to this one's in the length of a tick.
template <class T>
struct Glide {
    T delay, from, slide, reciprocal;

    void set(const FilterInputs& in, double newDelay) {
        from = static_cast<T>(in.memory.delay);
        delay = static_cast<T>(newDelay);
        slide = T(0);
        reciprocal = static_cast<T>(1.0 / (in.tickSamples + 1e-5));
        in.memory.delay = newDelay;
    }
    T next() {
        slide += T(1);
        const T m = minimum(slide * reciprocal, T(1));
        return (T(1) - m) * from + m * delay;
    }
};

// "Comb+" and "Comb-", which sound alike.
template <class T>
struct Comb {
    using Variant = OneForm;
    static constexpr bool byVoice = true;
    static constexpr DrawCounts draws(Variant) { return {}; }

    Glide<T> glide;
    T fb, gain;
    T memo;

    void clear() { memo = T(0); }
    T step(T x, DelayLine& line) {
        const T in = x + 1e-6f;
        line.write(in);
        const T d = glide.next();
        const int whole = static_cast<int>(d);
        const T a = line.at(whole + 3), b = line.at(whole + 2), c = line.at(whole + 1), f = line.at(whole);
        const T t = 1.0f - (d - static_cast<T>(whole));
        const T m = (c - a) * 0.5f;
        const T u = (f - a) * 0.5f + 1.5f * (b - c);
        const T v = ((a - b + m - u + u * t) * t + m) * t + b + in;
        memo = 0.3333f * memo + 0.6666f * v;
        line.add(memo * fb);
        line.advance();
        return v * gain;
    }
};

void setupComb(const FilterInputs& in, Comb<float>& filter);
template <>
inline constexpr FilterRow<Comb> filterRows<Comb>[] = {
    {24, "Comb+", 33, setupComb, Recompute::everySetup},
    {25, "Comb-", 34, setupComb, Recompute::everySetup},
};

// "Phys String", "Phys Flute": a damping one-pole in the loop, a fifth-order reading.
template <class T>
struct Phys {
    using Variant = OneForm;
    static constexpr bool byVoice = true;
    static constexpr DrawCounts draws(Variant) { return {}; }

    Glide<T> glide;
    T sign, fb, damp, gain;
    T memo;

    void clear() { memo = T(0); }
    T step(T x, DelayLine& line) {
        const T in = x + 1e-6f;
        line.write(in);
        const T d = glide.next();
        const int whole = static_cast<int>(d);
        const T p0 = line.at(whole + 2), p1 = line.at(whole + 1), p2 = line.at(whole), p3 = line.at(whole - 1);
        const T t = 1.0f - (d - static_cast<T>(whole));
        const T fifth = 6.0f * (p2 - p1) + 2.0f * (p0 - p3);
        const T fourth = 15.0f * (p1 - p2) + 5.0f * (p3 - p0) + t * fifth;
        const T third = 9.0f * (p2 - p1) + 3.0f * (p0 - p3) + t * fourth;
        const T second = (p2 - 2.0f * p1 + p0) + t * third;
        const T read = p1 + 0.5f * t * ((p2 - p0) + t * second);
        const T v = read * sign + in;
        memo = (1.0f - damp) * memo + damp * v;
        line.add(memo * fb);
        line.advance();
        return v * gain;
    }
};

void setupString(const FilterInputs& in, Phys<float>& filter);
void setupFlute(const FilterInputs& in, Phys<float>& filter);
template <>
inline constexpr FilterRow<Phys> filterRows<Phys>[] = {
    {47, "Phys String", 160, setupString, Recompute::everySetup},
    {48, "Phys Flute", 161, setupFlute, Recompute::everySetup},
};

}  // namespace vantoric::filters
