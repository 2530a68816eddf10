#include "voice/tuning.h"

#include <bit>

#include "base/math.h"
#include "base/numbers.h"

namespace vantoric {

namespace {

// Rows of `Microtun`.
constexpr int justIntonation = 6;
constexpr int firstFixed = 7;
constexpr int lastRow = 10;

struct TuningMode {
    double scale;  // table cents to voice cents
    double limit;  // bound of the cents
    double m3up, m3down, m4, min5, min3, majr;
    double octave, twoOctavesLow, twoOctavesHigh;
};

// Rows 1 to 6.
constexpr TuningMode tuningModes[] = {
    {0.5, 5, 9, 1, 4, 8, 10, 9, 1, 1.1785, 0.8333333333333334},               // Analog light
    {0.4, 5, 9, 1, 2, 8, 10, 7, 1, 1.1785, 0.8333333333333334},               // Analog medium
    {0.4, 5, 9, 1, 1, 8, 10, 6, 1, 1.1785, 0.8333333333333334},               // Analog heavy
    {0.8, 7.5, 8.25, 0.25, 1, 7.25, 9.25, 6, 1, 1.1785, 0.8333333333333334},  // Fat tune clean
    {0.5, 5, 9, 1, 4, 8, 10, 9, 1.5, 1.76775, 1.25},                          // Fat tune soft
    {1, 20, 8, 0, 0, 7, 9, 5, 0, 0, 0},                                       // Just inton.
};

// Rows 7 to 10: 432, 424, 449 and 457 Hz.
constexpr double fixedFactors[] = {0.9818181991577148, 0.9621999859809875, 1.0194400548934937, 1.0392600297927856};

enum class When : std::uint8_t { Always, Never, Untouched };

// A set of pitch classes, as semitones above the first, and the cents that each gets where all of them sound.
struct Rule {
    int size;   // classes
    When when;  // Untouched: only where the first class has no cents yet
    int above[4];
    double cents[4];
};

constexpr int ruleCount = 23;
using Rules = std::array<Rule, ruleCount>;

// In the order of application; a later one overrides.
constexpr Rules rulesOf(const TuningMode& m, bool just) {
    const When justOnly = just ? When::Always : When::Never;
    const When justUntouched = just ? When::Untouched : When::Never;
    const When fourths = m.m4 > 0 ? When::Always : When::Never;
    constexpr When always = When::Always;
    return {{
        {2, justUntouched, {0, 6}, {9, -9}},
        {2, justOnly, {0, 1}, {-6, 6}},
        {2, always, {0, 2}, {-2, 2}},
        {2, always, {0, 3}, {-(8 + m.m3down), m.m3up}},
        {2, always, {0, 4}, {7, -7}},
        {2, justOnly, {0, 5}, {1, -1}},
        {2, fourths, {0, 5}, {1 - m.m4, m.m4 - 1}},
        {3, always, {0, 4, 6}, {7, -7, -3}},
        {3, always, {0, 2, 6}, {3, 7, -7}},
        {3, always, {0, 3, 5}, {-2, 2, 2}},
        {3, always, {0, 2, 5}, {-2, -2, 2}},
        {3, always, {0, 3, 7}, {m.m4 - m.min5, m.min3, -5 - m.m4}},            // minor triad
        {3, always, {0, 4, 7}, {m.majr, -9 - m.m3down, 7 - m.m4 + m.m3down}},  // major triad
        {3, always, {0, 5, 10}, {0, 0, 0}},
        {3, always, {0, 2, 3}, {-8, -4, 8}},
        {3, always, {0, 1, 3}, {-8, 4, 8}},
        {3, always, {0, 3, 4}, {0, 0, 0}},
        {3, always, {0, 1, 4}, {0, 0, 0}},
        {3, always, {0, 2, 4}, {0, 0, 0}},
        {4, always, {0, 4, 7, 10}, {7, -7, 7, 0}},
        {4, always, {0, 4, 7, 11}, {6, -6, 6, -6}},
        {4, always, {0, 3, 7, 10}, {0, 4, -4, 0}},
        {4, always, {0, 2, 5, 7}, {0, 0, 0, 0}},
    }};
}

constexpr std::array<Rules, justIntonation> makeRules() {
    std::array<Rules, justIntonation> rules{};
    for (int i = 0; i < justIntonation; ++i)
        rules[static_cast<std::size_t>(i)] = rulesOf(tuningModes[i], i + 1 == justIntonation);
    return rules;
}

constexpr std::array<Rules, justIntonation> rulesByMode = makeRules();

// Writes the cents of every place where the rule applies. classes: bit c is set if pitch class c sounds.
void apply(const Rule& rule, unsigned classes, std::array<double, 12>& cents) {
    const unsigned twice = classes | classes << 12;
    unsigned roots = classes;
    for (int k = 1; k < rule.size; ++k) roots &= twice >> rule.above[k];
    for (; roots != 0; roots &= roots - 1) {
        const int c = std::countr_zero(roots);
        if (rule.when == When::Untouched && cents[static_cast<std::size_t>(c)] != 0.0) continue;
        for (int k = 0; k < rule.size; ++k) cents[static_cast<std::size_t>((c + rule.above[k]) % 12)] = rule.cents[k];
    }
}

void repair(const TunedVoice& voice) {
    if (*voice.note < 0) *voice.note = 0;
    *voice.tuneOffset = clampTo(*voice.tuneOffset, -30.0, 30.0);
    *voice.tuneFactor = clampTo(*voice.tuneFactor, 0.9, 1.1);
}

}  // namespace

void Retuner::retune(const Voices& voices, int microtuning, bool oneVoice) {
    int held = 0;
    for (const TunedVoice& voice : voices) {
        repair(voice);
        held += voice.volume->held() ? 1 : 0;
    }
    const int row = clampTo(microtuning, 0, lastRow);
    if (row < firstFixed && held < 2) return;
    const bool fixed = row >= firstFixed && !(row == firstFixed && oneVoice);
    for (const TunedVoice& voice : voices) {
        *voice.tuneOffset = 0.0;
        *voice.tuneFactor = fixed ? fixedFactors[row - firstFixed] : 1.0;
    }
    if (oneVoice && row <= firstFixed) return;
    if (row == 0 || fixed) {
        keyVoice.fill(0);
        standing_ = {};
        return;
    }
    const Chord chord = chordOf(voices, row);
    if (chord != standing_) return tune(voices, chord);
    for (std::size_t i = 0; i < voices.size(); ++i) {
        *voices[i].tuneOffset = standingOffset_[i];
        *voices[i].tuneFactor = lastFactor_[i];
    }
}

void Retuner::tune(const Voices& voices, const Chord& chord) {
    const auto index = static_cast<std::size_t>(chord.row - 1);
    const TuningMode& mode = tuningModes[index];
    const unsigned classes = census(chord);
    const int count = std::popcount(classes);
    for (const Rule& rule : rulesByMode[index])
        if (rule.size <= count && rule.when != When::Never) apply(rule, classes, chordCents);
    for (const TunedVoice& voice : voices)
        *voice.tuneOffset = mode.scale * chordCents[static_cast<std::size_t>(*voice.note % 12)];
    if (mode.octave > 0.0) stretchOctaves(voices, mode.octave, mode.twoOctavesLow, mode.twoOctavesHigh);
    for (std::size_t i = 0; i < voices.size(); ++i) {
        *voices[i].tuneOffset = clampTo(*voices[i].tuneOffset, -mode.limit, mode.limit);
        setFactor(voices[i], i);
        standingOffset_[i] = *voices[i].tuneOffset;
    }
    standing_ = chord;
}

// The keys that the voices hold, and which of them count: those that sound, voices early in their release among them.
Retuner::Chord Retuner::chordOf(const Voices& voices, int row) {
    Chord chord{.row = row};
    for (std::size_t i = 0; i < voices.size(); ++i) {
        const Envelope& volume = *voices[i].volume;
        chord.notes[i] = *voices[i].note;
        if (volume.held() || (volume.state == Envelope::Release && volume.phase > 0.8f)) chord.counted |= 1u << i;
    }
    return chord;
}

// Notes the keys that count, and clears the cents. Returns their pitch classes as bits.
unsigned Retuner::census(const Chord& chord) {
    unsigned classes = 0;
    keyVoice.fill(0);
    for (std::uint32_t rest = chord.counted; rest != 0; rest &= rest - 1) {
        const int voice = std::countr_zero(rest);
        const int note = chord.notes[static_cast<std::size_t>(voice)];
        classes |= 1u << (note % 12);
        keyVoice[static_cast<std::size_t>(note)] = static_cast<std::uint8_t>(64 + voice);
    }
    chordCents.fill(0.0);
    return classes;
}

void Retuner::stretchOctaves(const Voices& voices, double octave, double low, double high) {
    const auto offset = [&](int key) -> double* {
        const int entry = keyVoice[static_cast<std::size_t>(key)];
        return entry != 0 ? voices[static_cast<std::size_t>(entry - 64)].tuneOffset : nullptr;
    };
    for (int key = 24; key <= 90; ++key) {
        double* const here = offset(key);
        if (here == nullptr) continue;
        double* const oneUp = offset(key + 12);
        double* const twoUp = offset(key + 24);
        if (oneUp != nullptr && twoUp != nullptr) {
            *here -= low;
            *twoUp += high;
        } else if (oneUp != nullptr || twoUp != nullptr) {
            *here -= octave;
            *(oneUp != nullptr ? oneUp : twoUp) += octave;
        }
    }
}

void Retuner::setFactor(const TunedVoice& voice, std::size_t index) {
    if (*voice.tuneOffset != lastOffset_[index]) {
        lastOffset_[index] = *voice.tuneOffset;
        lastFactor_[index] = math::exp(*voice.tuneOffset * 0.00057753393);
    }
    *voice.tuneFactor = lastFactor_[index];
}

}  // namespace vantoric
