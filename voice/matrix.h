// The modulation matrix: fifteen slots a layer, each reading a source and adding to one parameter of a voice.
// What all voices share (which slots do anything, sources that are equal for all of them) is worked out once
// per control tick of the layer; a voice only runs the slots that are in use.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>

#include "base/engine_state.h"
#include "base/parameters.h"
#include "base/random.h"
#include "voice/envelope.h"

namespace vantoric {

inline constexpr int matrixSlotCount = 15;  // the sixteenth triple of parameters is stored and read by nothing

// Parameters whose copies are slewed by the layer; voices see the slewed values.
inline constexpr std::array<int, 26> slewedParameters = {
    parameter::Timbre1,  parameter::Timbre1 + 1,  parameter::Timbre1 + 2,   //
    parameter::Pw1,      parameter::Pw1 + 1,      parameter::Pw1 + 2,       //
    parameter::Vol1,     parameter::Vol1 + 1,     parameter::Vol1 + 2,      //
    parameter::FiltMix1, parameter::FiltMix1 + 1, parameter::FiltMix1 + 2,  //
    parameter::Fm1,      parameter::Fm1 + 1,                                //
    parameter::Cutoff1,  parameter::Cutoff1 + 1,                            //
    parameter::Reso1,    parameter::Reso1 + 1,                              //
    parameter::FilVol1,  parameter::FilVol1 + 1,                            //
    parameter::FilPan1,  parameter::FilPan1 + 1,                            //
    parameter::Drive1,   parameter::Drive1 + 1,                             //
    parameter::LayerVol, parameter::FxInMix,
};

// Parameters that exist only as modulation inputs: what a patch stores in them has no effect, they start at 0.5.
inline constexpr std::array<int, 8> modulationInputs = {
    parameter::Pitch,      parameter::Fine,      parameter::Pitch1,        parameter::Pitch1 + 1,
    parameter::Pitch1 + 2, parameter::PitchOct1, parameter::PitchOct1 + 1, parameter::PitchOct1 + 2,
};

// What a slot reads.
enum class MatrixSource : std::uint8_t {
    None,
    // Of the voice.
    LfoBipolar,
    LfoUnipolar,
    StepLfo,
    StepLfoBipolar,
    EnvelopeLevel,
    Random,
    FlipFlop,
    Noise,
    Key,
    Velocity,
    KeySaturated,
    VoiceNumber,
    HeldKeys,
    Impulse,
    Decay,
    // The same for all voices.
    Static,
    Modwheel,
    PitchWheel,
    Aftertouch,
    Controller,
    Sine,
};

// The parameter number of a destination list index, 0 for "Off", separators and indices beyond the list.
int destinationNumber(int listIndex);

// The four falling curves of a note, time constants of 5003, 1250, 78.1 and 9.76 ticks. Their second and fourth
// powers are sources of their own.
struct DecayGenerators {
    float a = 0.0f, b = 0.0f, c = 0.0f, d = 0.0f;

    // Start of a note: all at 1.
    void restart() { a = b = c = d = 1.0f; }
    // One control tick, after the matrix has run.
    void step() {
        a *= 0.99980015f;
        b *= 0.99920034f;
        c *= 0.9872804f;
        d *= 0.9026593f;
    }
};

// Calls a function object that outlives it and returns its float. The step LFO is asked through one, as often as
// slots read it: some of its shapes draw a random number each time.
class ValueReader {
public:
    template <class Function>
    ValueReader(Function& function)
        : object_(&function), call_([](void* object) { return static_cast<float>((*static_cast<Function*>(object))()); }) {}
    float operator()() const { return call_(object_); }

private:
    void* object_;
    float (*call_)(void*);
};

// What a voice hands to its matrix.
struct MatrixInputs {
    std::array<double, 3> lfo;           // `output` of the three LFOs; clamped here
    ValueReader stepLfo;                 // the step LFO's value, 0 to 1
    std::array<Envelope, 4>& envelopes;  // in list order; a level that is read is clamped in place
    const DecayGenerators& decays;
    float impulse;      // 1 on the first tick of a note
    float randomValue;  // 0 to 1, drawn at note-on
    float flipFlop;     // 0 or 1
    int note;           // 0 to 127
    int velocity;       // 0 to 127
    float voiceNumber;  // active voices at note-on / play mode limit
    int limit;          // the play mode's limit, at least 1
    RandomSources& random;
};

class ModBase;

// The slots of a layer as its voices run them. Audio thread only; allocates nothing.
class MatrixSlots {
public:
    // Reads the fifteen slots from a layer's parameters (324 floats by number). Once per layer tick, before the
    // voices; also before `targets` is asked about parameters that may have changed. Sources that do not depend on
    // the voice are evaluated here.
    void compile(const float* layerBlock, const EngineState& engine);

    // Whether any of the fifteen slots, whatever its source, has this parameter as its destination.
    bool targets(int parameterNumber) const { return targets_[parameterNumber]; }

private:
    friend class ModBase;
    friend void runMatrix(const MatrixSlots&, const ModBase&, const MatrixInputs&, float*, std::uint64_t&);

    struct Slot {
        MatrixSource source = MatrixSource::None;
        std::uint8_t which = 0;         // LFO, envelope or decay curve
        std::uint16_t amount = 0;       // parameter number of the slot's own amount
        std::uint16_t destination = 0;  // parameter number; 0 is written and read by nothing
        float value = 0.0f;             // of a source that all voices share; HeldKeys: the number of keys
    };

    void compilePass(bool amountPass);
    static float evaluate(const Slot& slot, const MatrixInputs& inputs);

    // What the slots were compiled from, as stored.
    struct Stored {
        std::array<float, matrixSlotCount> sources{}, destinations{};
    };
    Stored stored_;
    bool compiled_ = false;
    std::array<Slot, matrixSlotCount> slots_;  // the amount pass's, then the other pass's, each in slot order
    int count_ = 0;
    std::bitset<layerParameterEnd> targets_;
};

// What every voice's `mod` starts from on a tick: the layer's parameters with the slewed ones replaced by their copies and
// the modulation inputs at 0.5; 0 to 23 are 0. It knows what has changed since the tick before, which mostly is little: a
// voice that was ticked then takes only that and what its slots had moved.
class ModBase {
public:
    // Once a layer tick, with the layer's parameters and their slewed copies (324 floats by number each).
    void prepare(const float* layerBlock, const float* smoothed);
    const std::array<float, layerParameterEnd>& values() const { return values_; }

    // Makes `mod` (324 floats) what this tick starts from. `seen` belongs to `mod`: the tick that it was last restored
    // on, 0 for one that was filled by other means. slots: of this tick.
    void restore(const MatrixSlots& slots, float* mod, std::uint64_t& seen) const;

private:
    static constexpr int listed = 32;  // changes that are worth a list

    void compare(const std::array<float, layerParameterEnd>& next, int first, int end);

    std::array<float, layerParameterEnd> values_{};
    std::array<std::uint16_t, listed> changed_{};
    int changedCount_ = 0;
    bool everything_ = true;  // there are too many changes to list, or slots aim elsewhere
    std::uint64_t tick_ = 1;
};

// Restores `mod` (324 floats) and adds the slots' contributions: first those whose destination is an amount, in slot order
// and with the amounts as left by the slots before, then all others. Nothing is clamped.
void runMatrix(const MatrixSlots& slots, const ModBase& base, const MatrixInputs& inputs, float* mod, std::uint64_t& seen);

}  // namespace vantoric
