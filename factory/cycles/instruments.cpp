// Cycles that are tables of harmonics: organs, blown, bowed and struck instruments, voices, chords of partials.
#include <array>
#include <cmath>
#include <initializer_list>

#include "base/math.h"
#include "factory/cycles/cycle.h"

namespace vantoric::cycles {

namespace {

double decibels(double level) { return math::pow(10.0, level / 20.0); }
double power(int k, double exponent) { return math::pow(k, exponent); }

// ---- organs ----

// Drawbars 0 to 8, 3 dB each, in the order 16' 5 1/3' 8' 4' 2 2/3' 2' 1 3/5' 1 1/3' 1'.
struct Registration {
    const char* name;
    const char* drawbars;
};
constexpr Registration registrations[] = {
    {"Organ Full", "888888888"},     {"Organ Jazz", "888000000"},    {"Organ Gospel", "888800008"},
    {"Organ Whistle", "808000008"},  {"Organ Theatre", "868765432"}, {"Organ Reggae", "008080600"},
    {"Organ Clarinet", "006070540"}, {"Organ Strings", "005746646"}, {"Organ Bottom", "876000000"},
    {"Organ Hollow", "800800850"},
};

Spectrum organ(const std::string& drawbars) {
    static constexpr int harmonics[] = {1, 3, 2, 4, 6, 8, 10, 12, 16};
    // Without the two sub-octave bars the cycle is that of the 8' pipe.
    const int whole = drawbars[0] == '0' && drawbars[1] == '0' ? 2 : 1;
    Spectrum result;
    for (std::size_t i = 0; i < drawbars.size(); ++i)
        if (drawbars[i] != '0') result.sine[harmonics[i] / whole] = decibels(3.0 * (drawbars[i] - '8'));
    return result;
}

// ---- pipes, reeds, brass, strings ----

// Harmonics in decibels from the first on; above them each octave falls by `fall` more decibels, the even
// ones by `even` more still. `resonance`: a gentle hill of that height in decibels about a harmonic.
struct Tone {
    const char* name;
    std::initializer_list<double> levels;
    double fall, even;
    int hill;
    double height;
};
const Tone tones[] = {
    {"Pipe Bourdon", {0, -28, -26, -40, -22, -46, -38}, 18, 8, 0, 0},
    {"Pipe Principal", {0, -6, -12, -16, -21, -25, -29, -33}, 14, 0, 0, 0},
    {"Pipe Mixture", {-4, 0, -5, -2, -14, -4, -18, -5, -20, -22, -24, -8}, 15, 0, 0, 0},
    {"Pipe Trumpet", {-4, 0, 0, -1, -2, -3, -5, -6, -8, -9}, 12, 0, 0, 0},
    {"Flute Concert", {0, -8, -18, -26, -34, -41}, 20, 0, 0, 0},
    {"Flute Overblown", {-14, 0, -26, -12, -34, -22, -40, -28}, 18, 0, 0, 0},
    {"Flute Pan", {0, -24, -8, -28, -15, -34, -24}, 20, 6, 0, 0},
    {"Flute Ocarina", {0, -20, -38, -46}, 26, 0, 0, 0},
    {"Reed Clarinet", {0, -32, -5, -28, -9, -22, -14, -20, -16}, 11, 3, 0, 0},
    {"Reed Oboe", {-9, -5, -2, 0, -1, -8, -14, -18, -20}, 14, 0, 0, 0},
    {"Reed Bassoon", {-10, -4, 0, -1, -7, -13, -16, -19, -20, -22}, 14, 0, 0, 0},
    {"Reed Saxophone", {0, -3, -6, -5, -10, -12, -16, -17, -19}, 10, 0, 10, 5},
    {"Reed Harmonica", {-5, 0, -3, -8, -2, -10, -9, -15, -14}, 9, 0, 14, 6},
    {"Reed Accordion", {0, -4, -5, -3, -9, -8, -13, -11}, 8, 0, 20, 5},
    {"Reed Bagpipe", {-14, -8, -6, 0, -3, -2, -8, -6, -11, -12}, 11, 0, 12, 6},
    {"Brass Horn", {0, -1, -5, -11, -17, -23, -29}, 20, 0, 0, 0},
    {"Brass Trumpet", {-6, -2, 0, -1, -2, -4, -6, -9, -11}, 13, 0, 0, 0},
    {"Brass Trombone", {-3, 0, -1, -3, -6, -9, -12, -16}, 15, 0, 0, 0},
    {"Brass Muted", {-18, -14, -12, -10, -6, -2, 0, -1, -4, -8, -12}, 12, 0, 24, 10},
    {"String Violin", {0, -2, -9, -6, -8, -14, -12, -13, -17}, 9, 0, 9, 6},
    {"String Cello", {-2, 0, -4, -3, -9, -8, -12, -16, -15}, 10, 0, 13, 4},
    {"String Ensemble", {0, -3, -10, -7, -13, -11, -16, -15, -18}, 8, 0, 14, 4},
    {"String Bowed Bright", {-8, -6, -4, -6, -3, -5, -2, -7, -4, -6}, 9, 0, 30, 5},
    {"String Viola", {-6, 0, -1, -10, -5, -16, -8, -12, -20}, 11, 0, 15, 5},
};

Spectrum tone(const Tone& tone) {
    const auto count = static_cast<int>(tone.levels.size());
    const double last = tone.levels.end()[-1];
    return waves::sines([&](int k) {
        double level = k <= count ? tone.levels.begin()[k - 1] : last - tone.fall * math::log(1.0 * k / count) / math::log(2.0);
        if (k > count && k % 2 == 0) level -= tone.even;
        if (tone.hill > 0) {
            const double octaves = math::log(1.0 * k / tone.hill) / math::log(2.0);
            level += tone.height * math::exp(-2.0 * octaves * octaves);
        }
        return decibels(level);
    });
}

// ---- keys: strings struck or plucked at a place ----

struct Struck {
    const char* name;
    double place;     // of the string, 0 to 1/2
    double slope;     // of the harmonics: k to the power of minus this
    double softness;  // harmonic at which a soft hammer has taken off a third
};
constexpr Struck strings[] = {
    {"Key Harpsichord", 0.13, 0.55, 90.0}, {"Key Clavinet", 0.21, 0.35, 40.0}, {"Key Grand", 0.12, 0.9, 14.0},
    {"Key Upright", 0.16, 0.6, 9.0},       {"Pluck Bridge", 0.06, 0.5, 70.0},  {"Pluck Middle", 0.5, 0.5, 40.0},
    {"Pluck Third", 0.3333, 1.0, 30.0},    {"Pluck Nylon", 0.27, 1.3, 12.0},
};

Spectrum struck(const Struck& string) {
    return waves::sines([&](int k) {
        const double excited = std::fabs(math::sin(math::pi * k * string.place));
        return (0.015 + excited) * power(k, -string.slope) * math::exp(-k / (2.5 * string.softness)) + (k == 1 ? 0.15 : 0.0);
    });
}

// ---- bells and chords: a few partials, each with some overtones ----

struct Partial {
    int harmonic;
    double level;  // decibels
};
struct Partials {
    const char* name;
    std::initializer_list<Partial> list;
    int overtones;  // of every partial, each at 1 / n
};
const Partials partials[] = {
    // Free bars ring at 1 : 2.76 : 5.4 : 8.9, tuned bars at 1 : 4 : 10, tubes at 2 : 3 : 4.2 : 5.4, church
    // bells at 1 : 2 : 2.4 : 3 : 4; here as the whole numbers beside them.
    {"Bell Church", {{5, 0}, {10, -2}, {12, -1}, {15, -6}, {20, 0}, {25, -9}, {30, -11}, {40, -14}, {1, -8}}, 1},
    {"Bell Tubular", {{2, 0}, {3, -4}, {4, -2}, {5, -8}, {7, -7}, {9, -12}, {11, -15}, {1, -6}}, 1},
    {"Bell Glass", {{1, 0}, {3, -7}, {7, -10}, {12, -13}, {18, -16}, {25, -20}}, 1},
    {"Bell Music Box", {{1, 0}, {6, -8}, {17, -15}, {34, -24}}, 1},
    {"Bell Celesta", {{1, 0}, {4, -10}, {10, -20}}, 1},
    {"Bell Gamelan", {{3, 0}, {8, -3}, {10, -6}, {17, -9}, {1, -4}, {21, -12}}, 1},
    {"Bell Gong", {{2, -2}, {3, 0}, {5, -1}, {7, -3}, {8, -6}, {11, -5}, {13, -8}, {19, -10}, {1, -3}}, 2},
    {"Bell Cowbell", {{2, 0}, {3, -1}, {1, -12}}, 9},
    {"Chord Fifth", {{2, 0}, {3, -2}, {1, -8}}, 8},
    {"Chord Major", {{4, 0}, {5, -2}, {6, -2}, {1, -6}}, 5},
    {"Chord Minor", {{10, 0}, {12, -1}, {15, -1}, {5, -2}, {1, -10}}, 4},
    {"Chord Seventh", {{4, 0}, {5, -1}, {6, -1}, {7, -2}, {1, -6}}, 4},
    {"Chord Ninth", {{4, 0}, {6, -1}, {9, -2}, {2, -2}, {1, -8}}, 5},
    {"Chord Quartal", {{9, 0}, {12, -1}, {16, -2}, {3, -3}, {1, -8}}, 3},
    {"Spectrum Octaves", {{1, 0}, {2, -3}, {4, -6}, {8, -8}, {16, -11}, {32, -14}, {64, -18}}, 1},
    {"Spectrum Primes",
     {{1, 0}, {2, -6}, {3, -6}, {5, -7}, {7, -8}, {11, -9}, {13, -10}, {17, -12}, {19, -13}, {23, -14}, {29, -16}, {31, -17}},
     1},
    {"Spectrum Fibonacci", {{1, 0}, {2, -4}, {3, -5}, {5, -6}, {8, -8}, {13, -10}, {21, -12}, {34, -15}, {55, -19}}, 1},
    {"Spectrum Squares", {{1, 0}, {4, -4}, {9, -6}, {16, -8}, {25, -11}, {36, -14}, {49, -18}, {64, -22}}, 1},
    {"Spectrum Fifths", {{1, 0}, {3, -4}, {9, -8}, {27, -12}, {81, -16}, {2, -6}, {6, -9}, {18, -13}}, 1},
};

Spectrum sumOf(const Partials& row) {
    Spectrum result;
    for (const Partial& partial : row.list)
        for (int n = 1; n <= row.overtones; ++n) result.sine[partial.harmonic * n] += decibels(partial.level) / n;
    return result;
}

// Harmonic k at amplitude(k): what no short table holds.
struct Row {
    const char* name;
    double (*amplitude)(int k);
};
constexpr Row rows[] = {
    {"Spectrum Flat", [](int k) { return k <= 24 ? 1.0 : 0.0; }},
    {"Spectrum Gap", [](int k) { return k < 4 || (k > 11 && k < 40) ? power(k, -0.7) : 0.0; }},
    {"Spectrum Waves", [](int k) { return power(k, -0.8) * (0.52 + 0.48 * math::cos(0.7 * k)); }},
    {"Spectrum Every Third", [](int k) { return k % 3 == 1 ? power(k, -0.8) : 0.0; }},
    {"Spectrum Every Fifth", [](int k) { return k % 5 < 2 ? power(k, -0.7) : 0.0; }},
    {"Spectrum Air", [](int k) { return k == 1   ? 1.0
                                        : k > 24 ? 0.05 * math::exp(-k / 160.0)
                                                 : 0.0; }},
};

// ---- voices ----

struct Formant {
    double hertz, level;  // level in decibels
};
struct Vowel {
    const char* name;
    double pitch;  // Hz of the voice
    std::array<Formant, 4> formants;
};
constexpr Vowel vowels[] = {
    {"Vocal Ah", 110, {{{750, 0}, {1200, -5}, {2600, -18}, {3500, -24}}}},
    {"Vocal Eh", 110, {{{530, 0}, {1850, -9}, {2550, -14}, {3500, -22}}}},
    {"Vocal Ee", 110, {{{280, 0}, {2250, -14}, {3000, -16}, {3700, -21}}}},
    {"Vocal Oh", 110, {{{450, 0}, {820, -6}, {2500, -26}, {3400, -30}}}},
    {"Vocal Oo", 110, {{{310, 0}, {680, -12}, {2300, -34}, {3300, -38}}}},
    {"Vocal Er", 110, {{{490, 0}, {1300, -8}, {1650, -11}, {3300, -26}}}},
    {"Vocal Nasal", 110, {{{250, 0}, {1050, -14}, {2200, -12}, {3400, -18}}}},
    {"Vocal Bass Ah", 65, {{{620, 0}, {1050, -6}, {2300, -14}, {2800, -14}}}},
    {"Vocal Throat", 65, {{{390, -4}, {780, -8}, {1560, 2}, {3100, -22}}}},
    {"Vocal Soprano Ah", 330, {{{820, 0}, {1250, -6}, {2900, -22}, {3800, -30}}}},
    {"Vocal Child Ee", 260, {{{360, 0}, {2900, -13}, {3700, -16}, {4600, -24}}}},
};

Spectrum vowel(const Vowel& vowel) {
    return waves::sines([&](int k) {
        const double hertz = vowel.pitch * k;
        double sum = 0.004;
        for (const Formant& formant : vowel.formants) {
            const double d = (hertz - formant.hertz) / (45.0 + 0.045 * formant.hertz);
            sum += decibels(formant.level) / (1.0 + d * d);
        }
        return sum * math::exp(-hertz / 6000.0) + (k == 1 ? 0.2 : 0.0);
    });
}

// The table's rows with their harmonics spread over the cycle.
template <class Table, class Maker>
void append(std::vector<Recipe>& recipes, const Table& table, Maker make) {
    for (const auto& row : table)
        recipes.push_back({row.name, [&row, make](Workshop&) {
                               Spectrum spectrum = make(row);
                               spread(spectrum);
                               return spectrum;
                           }});
}

}  // namespace

std::vector<Recipe> instrumentCycles() {
    std::vector<Recipe> result;
    append(result, registrations, [](const Registration& row) { return organ(row.drawbars); });
    append(result, tones, tone);
    append(result, strings, struck);
    return result;
}

std::vector<Recipe> voiceCycles() {
    std::vector<Recipe> result;
    append(result, vowels, vowel);
    return result;
}

std::vector<Recipe> spectralCycles() {
    std::vector<Recipe> result;
    append(result, partials, sumOf);
    append(result, rows, [](const Row& row) { return waves::sines(row.amplitude); });
    return result;
}

}  // namespace vantoric::cycles
