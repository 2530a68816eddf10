// One note of a layer: its modulators, its three oscillators and everything that happens once per control
// tick. The audio behind the oscillators' mix lives in the layer's VoiceBank, in the lane of the voice.
#pragma once

#include <array>
#include <cstdint>

#include "base/numbers.h"
#include "sound/oscillator_control.h"
#include "sound/oscillator_state.h"
#include "voice/envelope.h"
#include "voice/lfo.h"
#include "voice/matrix.h"
#include "voice/oscillator_bank.h"
#include "voice/pitch.h"
#include "voice/step_lfo.h"

namespace vantoric {

class Layer;

// Order of a voice's four envelopes.
enum EnvelopeIndex : int { volumeEnvelope, filterEnvelope, auxEnvelope1, auxEnvelope2, envelopeCount };

inline constexpr int lfoCount = 3;                          // per voice, beside the step LFO
inline constexpr std::int32_t neverPlayedAge = 1410065407;  // looks older than any real voice

// All operations belong to the audio thread, `reset` also to a thread that has silenced it.
class Voice {
public:
    Voice(Layer& layer, int index);

    // Starts a note: copies the layer's parameters, starts envelopes and LFOs, chooses the kernels. Does
    // nothing while a patch is being loaded. note 0 to 127, velocity 1 to 127.
    void noteOn(int note, int velocity);
    // One control tick. Only for voices that sound.
    void tick();
    // Adds what fills the oscillator buffers to `runs`. Only for voices that sound.
    void gatherOscillators(OscillatorRuns& runs);
    // Whether that may draw random numbers.
    bool oscillatorsDraw() const;
    // Full clear: idle, silent, memories gone.
    void reset();
    // Every 0.1 s, and on a note's first tick: which oscillators sound, and by which kernel.
    void refreshKernels();

    // Whether oscillator 0 to 2 has anything to do in this note.
    bool oscillatorActive(int oscillator) const;
    // Whether it takes the kernel with FM and sync.
    bool oscillatorModulated(int oscillator) const;

    // Releases the four envelopes.
    void noteOff();
    // Retriggers envelopes, LFOs and single-shot samples for a new `note` of a one-voice line.
    void retrigger();
    // Restarts the sample of an oscillator at its start point.
    void restartSample(int oscillator);
    // Jumps to the pitch that the note glides to.
    void endGlide();
    // Idles at once, without a fade.
    void cut();

    // The state of the volume envelope is the state of the voice: 0 is idle, 6 a fast fade.
    int state() const { return envelopes[volumeEnvelope].state; }
    bool sounding() const { return state() != Envelope::Idle; }
    // Neither idle nor fading.
    bool active() const { return state() != Envelope::Idle && state() != Envelope::Fade; }

    std::array<Envelope, envelopeCount> envelopes;
    std::array<Lfo, lfoCount> lfos;
    StepLfo stepLfo;

    std::array<float, layerParameterEnd> mod{};  // the modulated copy of the parameters, by number
    std::array<OscillatorState, oscillatorCount> oscillators;
    std::array<OscillatorPitch, oscillatorCount> pitch;
    std::array<bool, oscillatorCount> oscillatorOn{};  // sounds in this note
    std::array<double, oscillatorCount> frequency{};   // cycles per sample, as of the last tick

    // Matrix sources of their own.
    float impulse = 0.0f;
    DecayGenerators decays;
    float flipFlop = 1.0f;
    float randomValue = 0.0f;
    float voiceNumber = 0.0f;

    std::int8_t note = 60;
    std::int8_t velocity = 0;
    std::int32_t age = neverPlayedAge;  // ticks since the note-on
    double tuneFactor = 1.0;            // frequency factor of the retuning pass
    double tuneOffset = 0.0;            // cents of the retuning pass
    double smoothedNote = 60.0;         // the note as glided, for the filters' key tracking
    bool analogMode = false;            // an active oscillator is of the analog type
    std::int32_t ticksToRefresh = 0;

private:
    void startEnvelopes();
    void setUpEnvelope(int which);
    void startLfo(int which);
    void startStepLfo();
    void startOscillator(int oscillator);
    void prepareOscillatorState(int oscillator);
    void chooseKernelOf(int oscillator);
    void setUpDistortions();
    void stepModulators();
    void evaluateMatrix();
    void tickOscillators();
    void tickFilters();
    void tickOutput();
    Lfo::Start lfoStart(int which) const;
    int listAt(int parameter) const { return listIndex(mod[parameter]); }

    Layer& layer_;
    int index_;
    bool firstTick_ = true;
    std::uint64_t modSeen_ = 0;                     // the tick that `mod` is of; 0: it was filled by other means
    std::array<bool, oscillatorCount> prepared_{};  // its wave and phases are those of this note
    std::array<BatchedKernel, oscillatorCount> kernels_{};
    std::array<bool, oscillatorCount> hearsPrevious_{};  // its kernel reads the oscillator before
    Drift drift_;
};

}  // namespace vantoric
