#include "voice/matrix.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/math.h"
#include "base/numbers.h"

namespace vantoric {

namespace {

namespace par = parameter;

// clang-format off
// Destination list, by index; 0 where the menu has "Off" or a separator.
constexpr std::array<std::uint16_t, 97> destinationTable = {
    0, 0, par::LayerVol, par::Pitch, 0,                                         // 0
    par::Oct1, par::Oct1 + 1, par::Oct1 + 2,                                    // 5
    par::Interv1, par::Interv1 + 1, par::Interv1 + 2,                           // 8
    par::Semi1, par::Semi1 + 1, par::Semi1 + 2,                                 // 11
    par::Detune1, par::Detune1 + 1, par::Detune1 + 2,                           // 14
    par::Pitch1, par::Pitch1 + 1, par::Pitch1 + 2,                              // 17
    par::Timbre1, par::Timbre1 + 1, par::Timbre1 + 2,                           // 20
    par::Pw1, par::Pw1 + 1, par::Pw1 + 2,                                       // 23
    par::Fm1, par::Fm1 + 1,                                                     // 26
    par::Vol1, par::Vol1 + 1, par::Vol1 + 2, 0,                                 // 28
    par::Cutoff1, par::Cutoff1 + 1,                                             // 32
    par::Reso1, par::Reso1 + 1,                                                 // 34
    par::Drive1, par::Drive1 + 1,                                               // 36
    par::FilVol1, par::FilVol1 + 1,                                             // 38
    par::FilPan1, par::FilPan1 + 1,                                             // 40
    par::FilAnalo, par::Ringmod, 0,                                             // 42
    par::LfoSpd1, par::LfoSpd1 + 1, par::LfoSpd1 + 2, 0,                        // 45
    par::MatVal1, par::MatVal1 + 1, par::MatVal1 + 2, par::MatVal1 + 3,         // 49
    par::MatVal1 + 4, par::MatVal1 + 5, par::MatVal1 + 6, par::MatVal1 + 7,     // 53
    par::MatVal1 + 8, par::MatVal1 + 9, 0,                                      // 57
    par::AttVol, par::DecVol, par::SusVol, par::RelVol,                         // 60
    par::AttFil, par::DecFil, par::SusFil, par::RelFil,                         // 64
    par::AttAux1, par::DecAux1, par::SusAux1, par::RelAux1,                     // 68
    par::AttAux2, par::DecAux2, par::SusAux2, par::RelAux2, 0,                  // 72
    par::FilEnv1, par::FilEnv1 + 1, 0,                                          // 77
    par::Fine, par::Start1, par::Start1 + 1, par::Start1 + 2,                   // 80
    par::FiltMix1, par::FiltMix1 + 1, par::FiltMix1 + 2, 0,                     // 84
    par::FxInMix, par::FxInPar1, par::FxInPar1 + 1, par::FxInPar1 + 2, par::FxInPar1 + 3, 0,  // 88
    par::PitchOct1, par::PitchOct1 + 1, par::PitchOct1 + 2,                     // 94
};

using Source = MatrixSource;

struct SourceRow {
    Source source = Source::None;
    std::uint8_t which = 0;  // LFO, envelope, controller number, decay curve or sine
};

// Source list, by index; None where the menu has "Off" or a separator.
constexpr std::array<SourceRow, 71> sourceTable = {{
    {}, {},                                                                                                        // 0
    {Source::LfoBipolar, 0}, {Source::LfoBipolar, 1}, {Source::LfoBipolar, 2},                                     // 2
    {Source::StepLfo}, {Source::StepLfoBipolar},                                                                   // 5
    {Source::EnvelopeLevel, 0}, {Source::EnvelopeLevel, 1}, {Source::EnvelopeLevel, 2}, {Source::EnvelopeLevel, 3}, {},  // 7
    {Source::Static}, {Source::Random}, {Source::FlipFlop}, {Source::Noise}, {},                                   // 12
    {Source::Key}, {Source::Velocity}, {Source::Modwheel}, {Source::PitchWheel}, {Source::Aftertouch},             // 17
    {Source::KeySaturated},                                                                                        // 22
    {Source::Controller, 2}, {Source::Controller, 4}, {Source::Controller, 7}, {Source::Controller, 11},           // 23
    {Source::Controller, 16}, {Source::Controller, 17}, {Source::Controller, 18}, {Source::Controller, 19},        // 27
    {Source::Controller, 64}, {},                                                                                  // 31
    {Source::VoiceNumber}, {Source::HeldKeys}, {}, {Source::Impulse},                                              // 33
    {Source::Decay, 0}, {Source::Decay, 1}, {Source::Decay, 2}, {Source::Decay, 3}, {Source::Decay, 4}, {Source::Decay, 5},    // 37
    {Source::Decay, 6}, {Source::Decay, 7}, {Source::Decay, 8}, {Source::Decay, 9}, {Source::Decay, 10}, {Source::Decay, 11},  // 43
    {},                                                                                                            // 49
    {Source::LfoUnipolar, 0}, {Source::LfoUnipolar, 1}, {Source::LfoUnipolar, 2}, {},                              // 50
    {Source::Sine, 0}, {Source::Sine, 1}, {Source::Sine, 2}, {Source::Sine, 3}, {Source::Sine, 4}, {Source::Sine, 5},          // 54
    {Source::Sine, 6}, {Source::Sine, 7}, {Source::Sine, 8}, {Source::Sine, 9}, {Source::Sine, 10}, {Source::Sine, 11},        // 60
    {Source::Sine, 12}, {Source::Sine, 13}, {Source::Sine, 14}, {Source::Sine, 15}, {Source::Sine, 16},            // 66
}};

// clang-format on

// 2 pi x 60 x frequency of the song-locked sines, 1/64 Hz to 64 Hz.
constexpr std::array<double, 17> sineFactors = {
    5.890486389398575,  11.78097277879715, 23.5619455575943,  47.1238911151886,   94.2477822303772,   188.4955644607544,
    376.9911289215088,  533.0654562950134, 753.9822578430176, 1066.1309125900268, 1507.9645156860352, 2132.638816308975,
    3015.9290313720703, 4265.27763261795,  6031.858062744141, 12063.716125488281, 24127.432250976563};

SourceRow sourceAt(int index) {
    return index >= 0 && index < static_cast<int>(sourceTable.size()) ? sourceTable[static_cast<std::size_t>(index)]
                                                                      : SourceRow{};
}

bool isAmount(int number) { return number >= par::MatVal1 && number < par::MatVal1 + matrixSlotCount; }

// Decay curves in list order: from d to a, each as its fourth power, its square and itself.
float decayValue(const DecayGenerators& decays, int which) {
    const std::array<float, 4> curves = {decays.d, decays.c, decays.b, decays.a};
    const float curve = curves[static_cast<std::size_t>(which / 3)];
    const float square = curve * curve;
    switch (which % 3) {
        case 0: return square * square;
        case 1: return square;
        default: return curve;
    }
}

// A key curve that saturates towards -1 and 1 away from note 64.
float saturatedKey(int note) {
    const float x = static_cast<float>(note) - 64.0f;
    const float d = 0.00711914f * x * x + 2.0f;
    const float s = 0.042187497f / (3.0f / d + std::fabs(0.084374994f * x)) * x + 0.5f;
    return 2.0f * s - 1.0f;
}

// The value of a source that all voices share; for HeldKeys the number of keys, which a voice divides.
float sharedValue(SourceRow row, const EngineState& engine) {
    switch (row.source) {
        case Source::Static: return 1.0f;
        case Source::Modwheel: return engine.modwheelSmoothed;
        case Source::PitchWheel: return 2.0f * engine.pitchWheelSmoothed - 1.0f;
        case Source::Aftertouch: return engine.channelPressureSmoothed;
        case Source::Controller: return engine.ccValue[row.which];
        case Source::Sine: return static_cast<float>(math::sin(engine.songPosition / engine.tempoBpm * sineFactors[row.which]));
        case Source::HeldKeys:
            return static_cast<float>(
                std::count_if(engine.heldNote.begin(), engine.heldNote.end(), [](auto held) { return held != 0; }));
        default: return 0.0f;
    }
}

// Reading these changes something, whether or not the value arrives anywhere.
bool actsWhenRead(Source source) {
    return source == Source::Noise || source == Source::StepLfo || source == Source::StepLfoBipolar ||
           source == Source::EnvelopeLevel;
}

// In the pass over the amounts, the decay curves and the sines read as 0.
bool readsInPass(Source source, bool amountPass) {
    return source != Source::None && !(amountPass && (source == Source::Decay || source == Source::Sine));
}

}  // namespace

int destinationNumber(int listIndex) {
    return listIndex >= 0 && listIndex < static_cast<int>(destinationTable.size())
               ? destinationTable[static_cast<std::size_t>(listIndex)]
               : 0;
}

void MatrixSlots::compilePass(bool amountPass) {
    for (int i = 0; i < matrixSlotCount; ++i) {
        const int destination = destinationNumber(listIndex(stored_.destinations[i]));
        if (isAmount(destination) != amountPass) continue;
        targets_.set(static_cast<std::size_t>(destination));
        const SourceRow row = sourceAt(listIndex(stored_.sources[i]));
        if (!readsInPass(row.source, amountPass)) continue;
        if (destination == 0 && !actsWhenRead(row.source)) continue;
        slots_[static_cast<std::size_t>(count_++)] = {row.source, row.which, static_cast<std::uint16_t>(par::MatVal1 + i),
                                                      static_cast<std::uint16_t>(destination)};
    }
}

void MatrixSlots::compile(const float* layerBlock, const EngineState& engine) {
    Stored now;
    std::copy_n(layerBlock + par::MatSrc1, matrixSlotCount, now.sources.begin());
    std::copy_n(layerBlock + par::MatDst1, matrixSlotCount, now.destinations.begin());
    // Bits are compared. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    if (!compiled_ || std::memcmp(&now, &stored_, sizeof now) != 0) {
        compiled_ = true;
        stored_ = now;
        count_ = 0;
        targets_.reset();
        compilePass(true);
        compilePass(false);
        targets_.reset(0);
    }
    for (int i = 0; i < count_; ++i) slots_[i].value = sharedValue({slots_[i].source, slots_[i].which}, engine);
}

float MatrixSlots::evaluate(const Slot& slot, const MatrixInputs& inputs) {
    switch (slot.source) {
        case Source::LfoBipolar: return static_cast<float>(2.0 * clampUnit(inputs.lfo[slot.which]) - 1.0);
        case Source::LfoUnipolar: return static_cast<float>(clampUnit(inputs.lfo[slot.which]));
        case Source::StepLfo: return inputs.stepLfo();
        case Source::StepLfoBipolar: return 2.0f * inputs.stepLfo() - 1.0f;
        case Source::EnvelopeLevel: return inputs.envelopes[slot.which].clampLevel();
        case Source::Random: return 2.0f * inputs.randomValue - 1.0f;
        case Source::FlipFlop: return 2.0f * inputs.flipFlop - 1.0f;
        case Source::Noise: return 2.0f * inputs.random.congruence.unit() - 1.0f;
        case Source::Key: return 2.0f * (static_cast<float>(inputs.note) / 128.0f) - 1.0f;
        case Source::Velocity: return static_cast<float>(inputs.velocity) / 128.0f;
        case Source::KeySaturated: return saturatedKey(inputs.note);
        case Source::VoiceNumber: return inputs.voiceNumber;
        case Source::HeldKeys: return slot.value / static_cast<float>(inputs.limit);
        case Source::Impulse: return inputs.impulse;
        case Source::Decay: return decayValue(inputs.decays, slot.which);
        default: return slot.value;
    }
}

// Every change from `first` on. Bits count, so that a NaN is not new for ever.
void ModBase::compare(const std::array<float, layerParameterEnd>& next, int first, int end) {
    for (int n = first; n < end; ++n) {
        // Bits are compared. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
        if (std::memcmp(&next[n], &values_[n], sizeof(float)) == 0) continue;
        values_[n] = next[n];
        const bool movesSlots = (n >= par::MatSrc1 && n < par::MatSrc1 + matrixSlotCount) ||
                                (n >= par::MatDst1 && n < par::MatDst1 + matrixSlotCount);
        if (movesSlots || changedCount_ == listed)
            everything_ = true;
        else
            changed_[changedCount_++] = static_cast<std::uint16_t>(n);
    }
}

void ModBase::prepare(const float* layerBlock, const float* smoothed) {
    std::array<float, layerParameterEnd> next;
    std::fill_n(next.begin(), globalParameterCount, 0.0f);
    std::copy(layerBlock + globalParameterCount, layerBlock + layerParameterEnd, next.begin() + globalParameterCount);
    for (const int n : slewedParameters) next[n] = smoothed[n];
    for (const int n : modulationInputs) next[n] = 0.5f;
    everything_ = tick_ == 1;
    changedCount_ = 0;
    ++tick_;
    constexpr int stretch = 18;
    static_assert(layerParameterEnd % stretch == 0);
    for (int n = 0; n < layerParameterEnd; n += stretch)
        // Bits are compared. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
        if (std::memcmp(&next[n], &values_[n], stretch * sizeof(float)) != 0) compare(next, n, n + stretch);
}

void ModBase::restore(const MatrixSlots& slots, float* mod, std::uint64_t& seen) const {
    if (everything_ || seen + 1 != tick_) {
        std::memcpy(mod, values_.data(), sizeof values_);
    } else {
        for (int i = 0; i < slots.count_; ++i) mod[slots.slots_[i].destination] = values_[slots.slots_[i].destination];
        for (int i = 0; i < changedCount_; ++i) mod[changed_[i]] = values_[changed_[i]];
    }
    seen = tick_;
}

void runMatrix(const MatrixSlots& slots, const ModBase& base, const MatrixInputs& inputs, float* mod, std::uint64_t& seen) {
    base.restore(slots, mod, seen);
    for (int i = 0; i < slots.count_; ++i) {
        const MatrixSlots::Slot& slot = slots.slots_[static_cast<std::size_t>(i)];
        const float source = MatrixSlots::evaluate(slot, inputs);
        mod[slot.destination] += (mod[slot.amount] - 0.5f) * 2.0f * source;
    }
}

}  // namespace vantoric
