// Signals and single filters for the tests of the voice filters.
#pragma once

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "sound/filter_bank.h"
#include "sound/filter_labels.h"
#include "sound/voice_filter.h"

namespace vantoric {

// The list indices that name a filter.
inline std::vector<int> filterIndices() {
    std::vector<int> indices;
    for (int i = 0; i < 128; ++i)
        if (filterNumber(i) >= 0) indices.push_back(i);
    return indices;
}

inline std::string labelOf(int index) { return filterLabels[static_cast<std::size_t>(index)]; }
inline int indexOfFilter(const std::string& label) {
    for (const int i : filterIndices())
        if (labelOf(i) == label) return i;
    ADD_FAILURE() << "no filter " << label;
    return 0;
}

enum class Signal { noise, square, silence };

// Sample `i` of a signal of full scale; the square has 100 samples a cycle.
class SignalSource {
public:
    explicit SignalSource(std::uint32_t seed) : chance_{seed} {}
    float next(Signal signal) {
        const int i = position_++;
        if (signal == Signal::noise) return static_cast<float>(chance_.next() * 4.656612873077393e-10 - 1.0);
        if (signal == Signal::square) return i % 100 < 50 ? 1.0f : -1.0f;
        return 0.0f;
    }

private:
    LinearCongruence chance_;
    int position_ = 0;
};

inline std::vector<float> noise(int count, float amplitude = 0.5f, std::uint32_t seed = 4711) {
    SignalSource source(seed);
    std::vector<float> x(static_cast<std::size_t>(count));
    for (float& sample : x) sample = amplitude * source.next(Signal::noise);
    return x;
}

// One filter and its chance, run in ticks of 88 samples at 88200 Hz.
struct FilterUnderTest {
    RandomSources random;
    VoiceFilter filter{random};
    FilterSettings settings;

    explicit FilterUnderTest(const std::string& label, float cutoff = 0.5f, float resonance = 0.5f, float analog = 0.0f) {
        settings.type = indexOfFilter(label);
        set(cutoff, resonance, analog);
    }
    void set(float cutoff, float resonance, float analog) {
        settings.cutoff = cutoff;
        settings.resonance = resonance;
        settings.analog = analog;
        filter.setup(settings);
    }
    std::vector<float> run(std::vector<float> x) {
        for (std::size_t i = 0; i < x.size(); i += 88)
            filter.run(x.data() + i, static_cast<int>(std::min<std::size_t>(88, x.size() - i)));
        return x;
    }
};

// Denormal numbers off while a test runs, as in an audio block.
class Filters : public ::testing::Test {
protected:
    Filters() : saved_(_mm_getcsr()) { _mm_setcsr(saved_ | 0x8040u); }
    ~Filters() override { _mm_setcsr(saved_); }

private:
    unsigned saved_;
};

}  // namespace vantoric
