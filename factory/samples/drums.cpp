// Drums from modes and noise. The ratios of a membrane's modes are the zeros of the Bessel functions (N. H. Fletcher and
// T. D. Rossing, "The Physics of Musical Instruments", 18.1); air and head pull the lowest ones together.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/math.h"
#include "factory/samples/recipes.h"

namespace vantoric::made {

namespace {

double falling(std::size_t frame, double seconds) {
    return math::exp(-math::log(1000.0) * static_cast<double>(frame) / (seconds * rate));
}

// Noise between two corners that dies away.
void rattle(Wave& wave, double low, double high, double level, double seconds, std::uint32_t seed, double attack = 0.0005) {
    Noise noise(seed);
    OnePole below(high), below2(high), above(low), above2(low);
    for (std::size_t i = 0; i < wave.size(); ++i) {
        const double rise = std::min(1.0, static_cast<double>(i) / (attack * rate));
        wave[i] += level * rise * falling(i, seconds) * above2.high(above.high(below2.low(below.low(noise.next()))));
    }
}

void squash(Wave& wave, double drive) {
    for (double& sample : wave) sample = std::tanh(drive * sample);
}

}  // namespace

Wave kick(double force) {
    Wave wave(framesOf(0.7));
    const double bend = 1.6 + 1.6 * force;
    const std::array modes = {Mode{54.0, 1.0, 0.75, bend, 0.022}, Mode{54.0 * 1.59, 0.22, 0.24, bend, 0.016},
                              Mode{54.0 * 2.3, 0.12 + 0.1 * force, 0.12, bend, 0.012}, Mode{310.0, 0.10 * force, 0.05}};
    strike(wave, modes);
    rattle(wave, 900.0, 1500.0 + 5000.0 * force, 0.5 + 1.4 * force, 0.02, 11);  // the beater
    rattle(wave, 120.0, 700.0, 0.5, 0.14, 12);                                  // the shell
    squash(wave, 0.7 + 0.9 * force);
    finish(wave, 0.98, 0.05);
    return wave;
}

Wave snare(double force) {
    Wave wave(framesOf(0.55));
    const double head = 182.0;
    const std::array modes = {Mode{head, 0.9, 0.20, 1.0 + 0.25 * force, 0.02},
                              Mode{head * 1.78, 0.6, 0.16, 1.0 + 0.1 * force, 0.02},
                              Mode{head * 2.27, 0.3, 0.12},
                              Mode{head * 2.95, 0.25 * force, 0.09},
                              Mode{head * 4.1, 0.2 * force, 0.06},
                              Mode{2650.0, 0.06 * force, 0.03}};
    strike(wave, modes);
    rattle(wave, 1800.0, 4500.0 + 6500.0 * force, 0.9 + 1.2 * force, 0.26 + 0.12 * force, 21, 0.002);  // the wires
    rattle(wave, 700.0, 9000.0, 0.8 * force + 0.3, 0.03, 22);                                          // the stick
    rattle(wave, 300.0, 1800.0, 0.45, 0.11, 23);
    squash(wave, 0.6 + 0.6 * force);
    finish(wave, 0.98, 0.04);
    return wave;
}

Wave tom(double force) {
    Wave wave(framesOf(1.1));
    const double bend = 1.05 + 0.22 * force;
    std::vector<Mode> modes;
    const double ratios[] = {1.0, 1.59, 2.14, 2.30, 2.65, 2.92, 3.16, 3.5, 3.6, 4.06};
    for (std::size_t k = 0; k < std::size(ratios); ++k)
        modes.push_back({home * ratios[k], 1.0 / (1.0 + static_cast<double>(k) * (2.6 - 1.7 * force)),
                         1.0 / (0.9 + 0.55 * static_cast<double>(k)), bend, 0.05});
    strike(wave, modes);
    rattle(wave, 500.0, 2500.0 + 4000.0 * force, 0.5 + force, 0.025, 31);
    finish(wave, 0.98, 0.1);
    return wave;
}

Wave hat(bool open, double force) {
    // Two sheets of bronze: hundreds of modes, closer together the higher they are; those that the sheets touch die sooner.
    Wave wave(framesOf(open ? 1.0 : 0.22));
    Noise chance(open ? 41 : 42);
    const double length = open ? 0.95 : 0.13;
    std::vector<Mode> modes;
    for (int k = 0; k < 90; ++k) {
        const double hertz = 2600.0 * std::pow(1.021 + 0.002 * force, k) * (1.0 + 0.02 * chance.next());
        const double tilt = std::exp(-std::pow((std::log2(hertz / 8500.0)) / (0.9 + 0.3 * force), 2.0));
        if (hertz < 17000.0) modes.push_back({hertz, tilt * (0.6 + 0.4 * chance.next()), length * (0.75 + 0.35 * chance.next())});
    }
    strike(wave, modes);
    rattle(wave, 6000.0, 14000.0, 8.0, length * 0.8, open ? 43 : 44);
    rattle(wave, 3500.0, 12000.0, 6.0 * force, 0.015, 45);
    OnePole cut(3500.0), cut2(3500.0);
    for (double& sample : wave) sample = cut2.high(cut.high(sample));
    finish(wave, 0.9, open ? 0.1 : 0.02);
    return wave;
}

Wave clap(std::uint32_t seed) {
    // Four pairs of hands, not quite together, and the room.
    Wave wave(framesOf(0.45));
    const double times[] = {0.0, 0.0105, 0.0195, 0.031};
    for (std::uint32_t hand = 0; hand < 4; ++hand) {
        Wave one(wave.size() - framesOf(times[hand]));
        rattle(one, 650.0, 2600.0, 1.0, hand == 3 ? 0.16 : 0.016, seed + hand, 0.0003);
        const Mode palm[] = {{1080.0 + 90.0 * hand, 0.10, 0.02}, {1720.0 - 60.0 * hand, 0.06, 0.015}};
        strike(one, palm);
        for (std::size_t i = 0; i < one.size(); ++i) wave[i + framesOf(times[hand])] += one[i];
    }
    rattle(wave, 500.0, 3500.0, 0.18, 0.4, seed + 9, 0.03);
    finish(wave, 0.98, 0.05);
    return wave;
}

Wave stick() {
    Wave wave(framesOf(0.16));
    const Mode modes[] = {{480.0, 0.5, 0.05}, {1750.0, 1.0, 0.035}, {2420.0, 0.5, 0.03}, {4300.0, 0.25, 0.015}};
    strike(wave, modes);
    rattle(wave, 1500.0, 8000.0, 0.8, 0.008, 61);
    finish(wave, 0.98, 0.02);
    return wave;
}

}  // namespace vantoric::made
