#include "factory/samples/singer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/math.h"
#include "factory/samples/recipes.h"

namespace vantoric::made {

namespace {

constexpr double vibratoHertz = 5.5;

// The flow through the glottis, differentiated: it swells for six tenths of a period and is cut off (D. H. Klatt and L. C.
// Klatt, "Analysis, synthesis, and perception of voice quality variations", 1990).
double flow(double phase) {
    constexpr double open = 0.6;
    return phase < open ? (2.0 * phase / open - 3.0 * phase * phase / (open * open)) : 0.0;
}

double between(double from, double to, double part) {
    return from + (to - from) * (0.5 - 0.5 * math::cos(math::pi * std::clamp(part, 0.0, 1.0)));
}

// G. E. Peterson and H. L. Barney, "Control methods used in a study of the vowels" (1952), men; glides by their start.
struct Named {
    const char* name;
    std::array<double, 5> formants;
};
constexpr Named mouths[] = {
    {"a", {730, 1090, 2440, 3400, 4500}}, {"e", {530, 1840, 2480, 3500, 4500}}, {"i", {270, 2290, 3010, 3600, 4500}},
    {"o", {570, 840, 2410, 3300, 4400}},  {"u", {300, 870, 2240, 3300, 4400}},  {"w", {290, 610, 2150, 3300, 4400}},
    {"r", {340, 1180, 1580, 3000, 4200}}, {"y", {260, 2200, 3000, 3600, 4500}}, {"g", {250, 1750, 2150, 3300, 4400}},
    {"m", {250, 1000, 2100, 3200, 4300}}, {"@", {500, 1400, 2400, 3400, 4500}}, {"d", {260, 1700, 2600, 3400, 4500}},
};

}  // namespace

Mouth mouthOf(const char* sound) {
    Mouth mouth{{}, {70, 90, 130, 220, 300}};
    for (const Named& named : mouths)
        if (!std::strcmp(named.name, sound)) mouth.formants = named.formants;
    return mouth;
}

Wave speak(const std::vector<Sound>& sounds, double vibrato, std::uint32_t seed) {
    Wave wave;
    std::array<Formant, 5> throat;
    std::array<Formant, 3> higher;  // what a throat has above, in everything it says
    for (std::size_t k = 0; k < higher.size(); ++k)
        higher[k].tune(5500.0 + 1050.0 * static_cast<double>(k), 420.0 + 90.0 * static_cast<double>(k));
    Noise noise(seed);
    OnePole tilt(5200.0), lips(9000.0);
    Sound last = sounds.front();
    double phase = 0.0, trembling = 0.0;
    for (const Sound& sound : sounds) {
        const std::size_t frames = framesOf(sound.move + sound.hold);
        for (std::size_t i = 0; i < frames; ++i) {
            const double part = sound.move > 0.0 ? static_cast<double>(i) / (sound.move * rate) : 1.0;
            if (i % 32 == 0)
                for (std::size_t k = 0; k < 5; ++k)
                    throat[k].tune(between(last.mouth.formants[k], sound.mouth.formants[k], part),
                                   between(last.mouth.widths[k], sound.mouth.widths[k], part));
            const double glide = static_cast<double>(i) / static_cast<double>(frames);
            const double hertz =
                (last.hertz + (sound.hertz - last.hertz) * glide) * (1.0 + vibrato * math::sin(2.0 * math::pi * trembling));
            trembling += vibratoHertz / rate;
            phase += hertz / rate;
            phase -= std::floor(phase);
            const double voice = between(last.voice, sound.voice, part), breath = between(last.breath, sound.breath, part);
            double sample = voice * tilt.low(flow(phase)) + breath * 0.15 * noise.next() * (phase < 0.6 ? 1.0 : 0.4);
            for (Formant& formant : throat) sample = formant.run(sample);
            for (Formant& formant : higher) sample = formant.run(sample);
            wave.push_back(lips.low(sample));
        }
        last = sound;
    }
    return wave;
}

Sample vowel(const char* which, double hertz) {
    const Mouth mouth = mouthOf(which);
    Wave wave = speak(
        {{mouth, 0.0, 0.0, 0.0, 0.3, hertz * 0.985}, {mouth, 0.12, 0.1, 1.0, 0.1, hertz}, {mouth, 0.1, 1.9, 1.0, 0.06, hertz}},
        0.004, 91);
    const std::size_t loop = closeLoop(wave, wave.size() / 2, framesOf(0.25));
    finish(wave, 0.9, 0.0);
    return {wave, loop};
}

Wave phrase() {
    auto say = [](const char* sound, double move, double hold, double voice, double hertz, double breath = 0.04) {
        return Sound{mouthOf(sound), move, hold, voice, breath, hertz};
    };
    Wave wave = speak({say("w", 0.0, 0.02, 0.0, 118), say("w", 0.04, 0.03, 0.7, 120), say("i", 0.10, 0.08, 1.0, 126),
                       say("w", 0.10, 0.03, 0.7, 122), say("r", 0.10, 0.09, 0.9, 120), say("@", 0.08, 0.03, 0.9, 124),
                       say("w", 0.08, 0.03, 0.7, 130), say("e", 0.11, 0.10, 1.0, 142), say("i", 0.12, 0.04, 0.9, 128),
                       say("@", 0.09, 0.04, 0.8, 120), say("y", 0.09, 0.04, 0.8, 122), say("i", 0.05, 0.08, 1.0, 130),
                       say("r", 0.14, 0.05, 0.9, 118), say("@", 0.08, 0.04, 0.8, 112), say("g", 0.06, 0.035, 0.25, 106, 0.02),
                       say("g", 0.006, 0.01, 0.6, 108, 0.7), say("o", 0.07, 0.12, 1.0, 108), say("u", 0.14, 0.05, 0.8, 92),
                       say("u", 0.12, 0.28, 0.0, 88, 0.0)},
                      0.0, 95);
    finish(wave, 0.95, 0.02);
    return wave;
}

Wave syllable() {
    Wave wave = speak({{mouthOf("d"), 0.0, 0.01, 0.0, 0.0, home * 0.97},
                       {mouthOf("d"), 0.004, 0.008, 0.4, 1.0, home * 0.98},
                       {mouthOf("a"), 0.06, 0.12, 1.0, 0.08, home},
                       {mouthOf("a"), 0.1, 0.35, 0.9, 0.06, home},
                       {mouthOf("@"), 0.2, 0.05, 0.0, 0.04, home * 0.985}},
                      0.0, 97);
    finish(wave, 0.95, 0.03);
    return wave;
}

}  // namespace vantoric::made
