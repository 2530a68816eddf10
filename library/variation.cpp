#include "library/variation.h"

#include <algorithm>
#include <span>

#include "base/numbers.h"
#include "base/random.h"

namespace vantoric {

namespace {

namespace par = parameter;
using enum VariedSection;

enum class Way : unsigned char {
    range,   // anything from low to high
    cutoff,  // the same where a low-pass lets the rest through; else near where it is
    octave,  // up to one up or down
    rows,    // one of the rows of a list, if it is at one of them
    steps,   // one of the rows, but for steps that are commands
    values,  // one of some values
};

struct Rule {
    VariedSection section;
    int first, count;
    Way way;
    float low = 0.0f, high = 1.0f;
    std::span<const int> rows{};
    std::span<const float> values{};
};

// Rows that stand several times come up more often.
constexpr int synthesisTypes[] = {0, 1, 5};
constexpr int hypersawWaves[] = {0, 2, 3, 4, 5, 6, 7, 9, 10};
constexpr int wavetables[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 18,
                              19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35};
constexpr int noises[] = {0, 1, 2, 5, 6, 12};
constexpr int analogWaves[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 15, 16};
constexpr int lowPasses[] = {2, 3, 4, 30, 31, 32, 50, 51, 53};
constexpr int distortions[] = {0, 2, 3, 5};
constexpr int lfoWaves[] = {2, 3, 4, 5, 6, 8, 9, 10, 11};
constexpr int stepShapes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
constexpr int arpTypes[] = {2, 3, 4, 6, 7, 8, 10, 11, 12, 13};
constexpr int arpSpeeds[] = {2, 4, 7, 8, 9};
constexpr int arpChords[] = {0, 0, 2, 8, 9, 12, 13, 17, 18, 21, 22};
constexpr int arpNotes[] = {0, 0, 0, 0, 3, 5, 7, 7, 10, 12, 21, 26};  // 21 and 26: an octave and a fifth down
constexpr int arpVolumes[] = {0, 0, 6, 7, 8, 9, 9, 9};                // 0: a rest
constexpr int soundingVolumes[] = {8, 9};
constexpr int firstCommand = 11;                                 // rows of step volumes from here on are commands
constexpr float intervals[] = {0.0f, 0.0f, 0.0f, 0.64f};         // 3/2
constexpr float semitones[] = {0.0f, 0.0f, 0.0f, 0.42f, 0.58f};  // +5, +7
constexpr float stepCounts[] = {0.15f, 0.42f, 0.42f, 0.95f};     // 4, 8, 16

constexpr Rule rules[] = {
    {oscillators, par::Oct1, 3, Way::octave},
    {oscillators, par::Interv1, 3, Way::values, 0.0f, 1.0f, {}, intervals},
    {oscillators, par::Detune1, 3, Way::range, 0.46f, 0.54f},
    {oscillators, par::Timbre1, 3, Way::range, 0.1f, 0.9f},
    {oscillators, par::Pw1, 3, Way::range, 0.3f, 1.0f},
    {oscillators, par::SynType1, 3, Way::rows, 0.0f, 1.0f, synthesisTypes},
    {oscillators, par::WTWave1, 3, Way::rows, 0.0f, 1.0f, wavetables},
    {oscillators, par::SSWave1, 3, Way::rows, 0.0f, 1.0f, hypersawWaves},
    {oscillators, par::NoiWave1, 3, Way::rows, 0.0f, 1.0f, noises},
    {oscillators, par::AnaWave1, 3, Way::rows, 0.0f, 1.0f, analogWaves},
    {oscillators, par::Semi1, 3, Way::values, 0.0f, 1.0f, {}, semitones},
    {oscillators, par::Fm1, 2, Way::range, 0.0f, 0.3f},
    {oscillators, par::Ringmod, 1, Way::range, 0.0f, 0.2f},

    {filters, par::FilType1, 2, Way::rows, 0.0f, 1.0f, lowPasses},
    {filters, par::Cutoff1, 2, Way::cutoff, 0.52f, 0.95f},
    {filters, par::Reso1, 2, Way::range, 0.0f, 0.6f},
    {filters, par::FilPan1, 2, Way::range, 0.35f, 0.65f},
    {filters, par::Drive1, 2, Way::range, 0.0f, 0.4f},
    {filters, par::FilKey1, 2, Way::range, 0.5f, 0.8f},
    {filters, par::FilEnv1, 2, Way::range, 0.48f, 0.8f},
    {filters, par::DisType1, 2, Way::rows, 0.0f, 1.0f, distortions},
    {filters, par::FilAnalo, 1, Way::range, 0.0f, 0.5f},

    {envelopes, par::AttVol, 1, Way::range, 0.0f, 0.45f},
    {envelopes, par::AttFil, 3, Way::range, 0.0f, 0.6f},
    {envelopes, par::HoldVol, 4, Way::range, 0.0f, 0.4f},
    {envelopes, par::DecVol, 4, Way::range, 0.45f, 0.8f},
    {envelopes, par::SusVol, 1, Way::range, 0.5f, 1.0f},
    {envelopes, par::SusFil, 3, Way::range, 0.0f, 1.0f},
    {envelopes, par::RelVol, 4, Way::range, 0.2f, 0.72f},
    {envelopes, par::ShapVol, 4, Way::range, 0.3f, 0.9f},

    {lfos, par::LfoSpd1, 3, Way::range, 0.15f, 0.7f},
    {lfos, par::LfoWave1, 3, Way::rows, 0.0f, 1.0f, lfoWaves},
    {lfos, par::LfoPhas1, 3, Way::range, 0.0f, 0.98f},
    {lfos, par::LfoFade1, 3, Way::range, 0.0f, 0.7f},
    {lfos, par::StepSped, 1, Way::range, 0.1f, 0.45f},
    {lfos, par::StepShap, 1, Way::rows, 0.0f, 1.0f, stepShapes},
    {lfos, par::Steps, 1, Way::values, 0.0f, 1.0f, {}, stepCounts},
    {lfos, par::Step1, 16, Way::range},

    {arpeggiator, par::ArpSpeed, 1, Way::rows, 0.0f, 1.0f, arpSpeeds},
    {arpeggiator, par::ArpType, 1, Way::rows, 0.0f, 1.0f, arpTypes},
    {arpeggiator, par::ArpChord, 1, Way::rows, 0.0f, 1.0f, arpChords},
    {arpeggiator, par::ArpSwing, 1, Way::range, 0.0f, 0.4f},
    {arpeggiator, par::ArpStp1, 16, Way::rows, 0.0f, 1.0f, arpNotes},
    {arpeggiator, par::ArpVol1, 1, Way::steps, 0.0f, 1.0f, soundingVolumes},
    {arpeggiator, par::ArpVol1 + 1, 15, Way::steps, 0.0f, 1.0f, arpVolumes},
};

bool contains(std::span<const int> rows, int row) { return std::find(rows.begin(), rows.end(), row) != rows.end(); }

// Draws for one layer. Each parameter draws as often whatever it holds, so that one does not change the luck of the others.
class Chance {
public:
    Chance(const ParameterModel& parameters, int layer, std::uint32_t seed) : parameters_(parameters), layer_(layer) {
        random_.seed = hashMix(seed + 1u);
    }

    float present(int number) const { return parameters_.getParameter(hostIndex(number, layer_)); }
    int row(int number) const { return parameters_.getListIndex(hostIndex(number, layer_)); }

    float another(const Rule& rule, int number) {
        const float luck = unit();
        const float value = present(number);
        switch (rule.way) {
            case Way::range: return rule.low + luck * (rule.high - rule.low);
            case Way::cutoff:
                if (contains(lowPasses, row(par::FilType1 + number - par::Cutoff1)))
                    return rule.low + luck * (rule.high - rule.low);
                return clampUnit(value + nearCutoff * (2.0f * luck - 1.0f));
            case Way::octave: return octave(value, luck);
            case Way::rows: return contains(rule.rows, row(number)) ? listValue(pick(rule.rows, luck)) : value;
            case Way::steps: return row(number) < firstCommand ? listValue(pick(rule.rows, luck)) : value;
            case Way::values: return pick(rule.values, luck);
        }
        return value;
    }

    // Not out of the range, but a value that is beyond it may stay there.
    float nearby(const Rule& rule, int number) {
        const bool moves = unit() < 0.5f;
        const float value = present(number);
        const float by = mostMoved * (rule.high - rule.low) * (2.0f * unit() - 1.0f);
        const bool isKnob = rule.way == Way::range || rule.way == Way::cutoff;
        return moves && isKnob ? std::clamp(value + by, std::min(rule.low, value), std::max(rule.high, value)) : value;
    }

private:
    static constexpr float nearCutoff = 0.1f, mostMoved = 0.125f;
    static constexpr float octaves = 8.99f;                    // -4 to 4 as 0 to 8, truncated
    static constexpr int lowestOctave = 2, highestOctave = 6;  // that are gone to

    // 0 to below 1.
    float unit() { return static_cast<float>(random_.next() >> 8) * 0x1p-24f; }

    template <class T>
    static T pick(std::span<const T> all, float luck) {
        return all[static_cast<std::size_t>(luck * static_cast<float>(all.size()))];
    }

    // Mostly the same one.
    static float octave(float value, float luck) {
        const int step = luck < 0.15f ? -1 : luck < 0.3f ? 1 : 0;
        const int now = truncateTo(value * octaves, 0, 8);
        const int there = std::clamp(now + step, std::min(now, lowestOctave), std::max(now, highestOctave));
        return there == now ? value : (static_cast<float>(there) + 0.5f) / octaves;
    }

    const ParameterModel& parameters_;
    int layer_;
    HashNoise random_;
};

using Draw = float (Chance::*)(const Rule&, int);

std::vector<VariedParameter> vary(const ParameterModel& parameters, int layer, VariedSection section, std::uint32_t seed,
                                  Draw draw) {
    Chance chance(parameters, layer, seed);
    std::vector<VariedParameter> varied;
    for (const Rule& rule : rules) {
        if (section != all && rule.section != section) continue;
        for (int number = rule.first; number < rule.first + rule.count; ++number) {
            const float value = (chance.*draw)(rule, number);
            if (value != chance.present(number)) varied.push_back({hostIndex(number, layer), value});
        }
    }
    return varied;
}

std::string nameOf(VariedSection section) {
    switch (section) {
        case oscillators: return "oscillators";
        case filters: return "filters";
        case envelopes: return "envelopes";
        case lfos: return "LFOs";
        case arpeggiator: return "arpeggiator";
        case all: break;
    }
    return "layer";
}

}  // namespace

std::vector<VariedParameter> randomised(const ParameterModel& parameters, int layer, VariedSection section, std::uint32_t seed) {
    return vary(parameters, layer, section, seed, &Chance::another);
}

std::vector<VariedParameter> mutated(const ParameterModel& parameters, int layer, VariedSection section, std::uint32_t seed) {
    return vary(parameters, layer, section, seed, &Chance::nearby);
}

void VariationCommands::randomise(VariedSection section, std::uint32_t seed) {
    apply("Randomise " + nameOf(section), randomised(instrument_.parameters(), onShow_.layer, section, seed));
}

void VariationCommands::mutate(VariedSection section, std::uint32_t seed) {
    apply("Mutate " + nameOf(section), mutated(instrument_.parameters(), onShow_.layer, section, seed));
}

void VariationCommands::apply(const std::string& name, const std::vector<VariedParameter>& varied) {
    {
        const History::Command command(history_, name);
        for (const VariedParameter& parameter : varied) edits_.write(parameter.index, parameter.value);
    }
    if (instrument_.hostPort() != nullptr) instrument_.hostPort()->patchChanged();
}

}  // namespace vantoric
