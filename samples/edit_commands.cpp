#include "samples/edit_commands.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "base/math.h"
#include "base/numbers.h"
#include "base/thread_check.h"

namespace vantoric {

namespace {

using Range = std::span<std::int16_t>;

std::int16_t toSample(double value, int limit = 32767) { return static_cast<std::int16_t>(truncateTo(value, -limit, limit)); }

std::int32_t lengthOf(const EditSound& sound) { return static_cast<std::int32_t>(sound.samples.size()); }

// Every sample of the range by itself.
template <class Shape>
void shapeRange(EditSound& sound, Shape shape) {
    for (std::int16_t& x : editRange(sound)) x = shape(x);
}

// Silence stays.
void scaleToPeak(Range range, double target) {
    int peak = 0;
    for (const int x : range) peak = std::max(peak, std::abs(x));
    if (peak == 0) return;
    for (std::int16_t& x : range) x = toSample(x * target / peak);
}

void loopAll(EditSound& sound) {
    sound.loopStart = 0;
    sound.loopEnd = lengthOf(sound);
}

// ---- loops --------------------------------------------------------------------------------------------------

template <int divisor>  // 0: the whole
void loopFrom(EditSound& sound, LinearCongruence&) {
    loopAll(sound);
    if constexpr (divisor != 0) sound.loopStart = lengthOf(sound) / divisor;
}

// A seamless loop of the tail: the end fades at equal power into the samples just before the loop's start.
// The loop starts after 1 / divisor of the sound, the fade after `fadeParts` of these parts.
template <int divisor, int fadeParts>
void autoloop(EditSound& sound, LinearCongruence&) {
    std::vector<std::int16_t> copy = sound.samples;
    for (std::int16_t& x : copy) x = static_cast<std::int16_t>(x * 0.5);  // headroom
    const std::size_t n = copy.size();
    const std::size_t start = n / divisor, fade = fadeParts * n / divisor, count = n - fade;
    std::copy(copy.begin(), copy.end(), sound.samples.begin());
    for (std::size_t i = 0; i < count; ++i) {
        const double place = static_cast<double>(i) / static_cast<double>(count);
        const double before = start + i >= count ? copy[start + i - count] : 0.0;
        sound.samples[fade + i] = toSample(std::sqrt(1.0 - place) * copy[fade + i] + std::sqrt(place) * before);
    }
    sound.loopStart = static_cast<std::int32_t>(start);
    sound.loopEnd = lengthOf(sound);
    scaleToPeak(sound.samples, 32760.0);
}

// ---- length and order ---------------------------------------------------------------------------------------

void clearAll(EditSound& sound, LinearCongruence&) { sound = EditSound(); }

void reverse(EditSound& sound, LinearCongruence&) {
    const Range range = editRange(sound);
    std::reverse(range.begin(), range.end());
}

void trim(EditSound& sound, LinearCongruence&) {
    const Range range = editRange(sound);
    sound.samples = std::vector<std::int16_t>(range.begin(), range.end());
    loopAll(sound);
}

void cut(EditSound& sound, LinearCongruence&) {
    const Range range = editRange(sound);
    const auto first = sound.samples.begin() + (range.data() - sound.samples.data());
    sound.samples.erase(first, first + static_cast<std::ptrdiff_t>(range.size()));
    loopAll(sound);
}

template <std::uint32_t rate>
void tune(EditSound& sound, LinearCongruence&) {
    sound.sampleRate = rate;
}

// ---- level --------------------------------------------------------------------------------------------------

void maximize(EditSound& sound, LinearCongruence&) { scaleToPeak(editRange(sound), 32760.0); }

void halve(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return toSample(x * 0.5); });
}

void twice(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return toSample(x * 2.0, 32766); });
}

void fadeIn(EditSound& sound, LinearCongruence&) {
    const Range range = editRange(sound);
    const auto count = static_cast<double>(range.size());
    for (std::size_t i = 0; i < range.size(); ++i) range[i] = toSample(range[i] * static_cast<double>(i) / count);
}

void fadeOut(EditSound& sound, LinearCongruence&) {
    const Range range = editRange(sound);
    const auto count = static_cast<double>(range.size());
    for (std::size_t i = 0; i < range.size(); ++i) range[i] = toSample(range[i] * (1.0 - static_cast<double>(i) / count));
}

void silence(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int) { return std::int16_t{0}; });
}

// Of the whole sound, whatever the range.
void removeDc(EditSound& sound, LinearCongruence&) {
    std::int64_t sum = 0;
    for (const std::int16_t x : sound.samples) sum += x;
    const double mean = static_cast<double>(sum) / static_cast<double>(sound.samples.size());
    for (std::int16_t& x : sound.samples) x = toSample(x - mean);
}

// ---- shapes -------------------------------------------------------------------------------------------------

void tubeSaturate(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return toSample(32767.0 * math::tanh(x / 16384.0)); });
}

// A hard one-bit wave, despite its label.
void rectify(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return std::int16_t{x > 0 ? std::int16_t{10000} : std::int16_t{-10000}}; });
}

void differentiate(EditSound& sound, LinearCongruence&) {
    int last = 0;
    shapeRange(sound, [&last](int x) {
        const int difference = x - last;
        last = x;
        return toSample(difference, 32766);
    });
}

// Full scale folds to one whole sine.
void sinoid(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return toSample(32766.0 * math::sin(0.00019199829 * x)); });
}

// Turns the sign round at each rising zero crossing.
void softSelfsync(EditSound& sound, LinearCongruence&) {
    int sign = 1, last = 0;
    shapeRange(sound, [&](int x) {
        if (x > 0 && last <= 0) sign = -sign;
        last = x;
        return toSample(sign * x);
    });
}

template <int step>
void crush(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return static_cast<std::int16_t>((x / step) * (step - 1)); });
}

template <std::size_t held>
void alias(EditSound& sound, LinearCongruence&) {
    const Range range = editRange(sound);
    for (std::size_t i = 0; i < range.size(); ++i) range[i] = range[i - i % held];
}

void noisify1(EditSound& sound, LinearCongruence& random) {
    shapeRange(sound, [&random](int x) { return toSample(x * (random.next() * 2.2135001e-10)); });
}

void noisify2(EditSound& sound, LinearCongruence& random) {
    shapeRange(sound, [&random](int x) { return toSample(x * (random.next() * 4.4270002e-10 - 0.95)); });
}

// First-order all-pass.
struct PhaseSection {
    double lastIn = 0.0, lastOut = 0.0;
    double step(double in) {
        lastOut = (lastOut - in) * 0.87665856 + lastIn;
        lastIn = in;
        return lastOut;
    }
};

void phaseShift(EditSound& sound, LinearCongruence&) {
    std::array<PhaseSection, 20> sections{};
    shapeRange(sound, [&sections](int x) {
        double y = x;
        for (PhaseSection& section : sections) y = section.step(y);
        return toSample(-0.5 * y);
    });
    scaleToPeak(editRange(sound), 32760.0);
}

void invert(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return toSample(-x, 32765); });
}

void fold(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return toSample(0.9 * std::abs(x)); });
}

// Full scale gives 32735.
void quadrature(EditSound& sound, LinearCongruence&) {
    shapeRange(sound, [](int x) { return toSample(static_cast<double>(x) * x * 3.0487805e-05); });
}

constexpr EditCommand separator{"-", EditRole::separator, nullptr};

}  // namespace

const std::array<EditCommand, editCommandCount> editCommands{{
    {"Undo/Redo", EditRole::undo, nullptr},
    separator,
    {"Clear all", EditRole::clear, clearAll},
    {"Export as wav", EditRole::exportWave, nullptr},
    separator,
    {"Autoloop 75%", EditRole::loop, autoloop<4, 3>},
    {"Autoloop 66%", EditRole::loop, autoloop<3, 2>},
    {"Autoloop 50%", EditRole::loop, autoloop<2, 1>},
    {"Loop all", EditRole::loop, loopFrom<0>},
    {"Loop 50%", EditRole::loop, loopFrom<2>},
    {"Loop 33%", EditRole::loop, loopFrom<3>},
    {"Reverse", EditRole::data, reverse},
    separator,
    {"Autotune", EditRole::autotune, nullptr},
    {"Tune C5 44kHz", EditRole::tune, tune<44100>},
    {"Tune C5 96kHz", EditRole::tune, tune<96000>},
    separator,
    {"Trim", EditRole::data, trim},
    {"Cut", EditRole::data, cut},
    separator,
    {"Maximize", EditRole::data, maximize},
    {"Volume -6dB", EditRole::data, halve},
    {"Volume +6dB", EditRole::data, twice},
    {"Fade in", EditRole::data, fadeIn},
    {"Fade out", EditRole::data, fadeOut},
    {"Silence", EditRole::data, silence},
    {"Remove DC", EditRole::data, removeDc},
    separator,
    {"Tube saturate", EditRole::data, tubeSaturate},
    {"Rectify", EditRole::data, rectify},
    {"Differenciate", EditRole::data, differentiate},
    {"Sinoid shaper", EditRole::data, sinoid},
    {"Soft selfsync", EditRole::data, softSelfsync},
    {"Crush 8bit", EditRole::data, crush<256>},
    {"Crush 4bit", EditRole::data, crush<4096>},
    {"Crush 2bit", EditRole::data, crush<16384>},
    {"Alias 4", EditRole::data, alias<4>},
    {"Alias 16", EditRole::data, alias<16>},
    {"Alias 64", EditRole::data, alias<64>},
    {"Noisify 1", EditRole::data, noisify1},
    {"Noisify 2", EditRole::data, noisify2},
    {"Phase shifter", EditRole::data, phaseShift},
    {"Invert", EditRole::data, invert},
    {"Fold", EditRole::data, fold},
    {"Quadrature", EditRole::data, quadrature},
}};

Range editRange(EditSound& sound) {
    const std::int32_t length = lengthOf(sound);
    const std::int32_t from = sound.loopStart != sound.loopEnd ? std::min(sound.loopStart, sound.loopEnd) : 0;
    const std::int32_t to = std::max(sound.loopStart, sound.loopEnd);
    const std::int32_t begin = clampTo(from, 0, length), end = clampTo(to, begin, length);
    return Range(sound.samples).subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

bool applyEdit(EditSound& sound, int command, LinearCongruence& random) {
    notInsideAnyBlock();
    if (command < 0 || command >= editCommandCount || sound.samples.empty()) return false;
    const EditCommand& row = editCommands[static_cast<std::size_t>(command)];
    if (row.apply == nullptr) return false;
    row.apply(sound, random);
    return true;
}

}  // namespace vantoric
