// One of the four stacked synthesizers: takes notes past its filter and its arpeggiator, deals them out to
// sixteen voices, runs their control ticks and sums their audio through two insert effects.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <memory>

#include "base/engine_state.h"
#include "base/parameters.h"
#include "effects/multieffect.h"
#include "samples/sample.h"
#include "sound/custom_wave.h"
#include "sound/wave_store.h"
#include "voice/arpeggiator.h"
#include "voice/matrix.h"
#include "voice/note_observer.h"
#include "voice/tuning.h"
#include "voice/voice.h"
#include "voice/voice_bank.h"

namespace vantoric {

// Number of voices, 1 to 16, that a play mode (list index) lets sound; 16 for an index that the list does not have.
int playModeLimit(int playMode);
// Whether a play mode runs the one-voice path: "Monophonic" and "Legato".
bool isOneVoiceMode(int playMode);

// Whether a note passes the key range and the velocity range (list indices of `Split` and `VelRange`).
bool keyPasses(int split, int note);
bool velocityPasses(int velocityRange, int velocity);

// What all voices of a layer read of its parameters in a tick and no slot of the matrix moves.
struct LayerTick {
    float glide = 1.0f;  // glideFactor of GlideSpd
    int limit = 1;       // of the play mode
    int stepShape = 0;
    std::array<bool, oscillatorCount> loopOn{};
    std::array<int, filterCount> filterType{};
    bool serial = false;      // the second filter hears the first
    float filterRate = 0.0f;  // internal rate, a whole number of Hz
};

class Layer final : public ArpeggiatorTarget {
public:
    // index 0 to 3. Allocates everything that the layer will ever need.
    Layer(int index, const EngineState& engine, RandomSources& random, const WaveStore& waves, SleepFunction sleep);

    // Events, past the MIDI channel test: note 0 to 127, velocity 1 to 127. What the layer's ranges do not take does nothing.
    // Audio thread, or any other while the block is silent.
    void noteOn(int note, int velocity);
    void noteOff(int note);

    // Ends the notes that still wait for their note-off, unless the arpeggiator has keys: for a tick in which no key is
    // held and no pedal is down, so that a note whose end went to another channel never hangs.
    void releaseUnheldNotes();
    // The same while other keys are held, once a tick: ends the notes whose keys have not been down on any channel that
    // the layer hears for `lateTicks` ticks, and all keys of the arpeggiator once none has been down for as long. A
    // one-voice mode keeps its note while any key is down. So an end that was lost elsewhere holds no note for good.
    void releaseLateNotes(const std::bitset<128>& keysHeard);
    // Begins that count anew: for ticks with the pedal down.
    void keepUnheldNotes();
    static constexpr int lateTicks = 500;

    // What the arpeggiator passes on.
    void startNote(int note, int velocity) override;
    void stopNote(int note) override;
    void releaseAllEnvelopes() override;
    // The change of note without a voice note-on; retrigger restarts envelopes and LFOs.
    void moveMonoVoice(int note, bool retrigger);

    // One control tick: slewing, arpeggiator, retuning, voices, inserts. The block must be fresh. Audio thread.
    void tick();
    // Adds `count` samples (1 to maxTickSamples, never across a tick) to left and right. Audio thread.
    void renderBlock(float* left, float* right, int count);
    // The steps of renderBlock, for renderLayers. beginBlock returns false, and the others are left out, where the layer is
    // off; then come the oscillators, the bank, and the inserts with the sum.
    bool beginBlock(int count);
    void gatherOscillators(OscillatorRuns& runs);
    BankRun bankRun() { return {bank_.get(), sounding_, scratchLeft_.data(), scratchRight_.data()}; }
    void endBlock(float* left, float* right, int count);
    // Where they may draw random numbers.
    DrawStages drawStages() const;
    // Full reset: smoothed parameters at their targets, voices, arpeggiator and inserts cleared. Waits for a
    // render in progress, at most 1000 sleeps of 1 ms; on the audio thread there never is one.
    void reset();
    // Clears arpeggiator and keys only.
    void clearArpeggiator();

    int activeVoiceCount() const;   // states other than 0 and 6
    int heldKeyCount() const;       // keys held in the engine's table
    int oldestActiveVoice() const;  // index, -1 for none
    int limit() const { return playModeLimit(listAt(parameter::PlayMode)); }
    bool oneVoiceMode() const { return isOneVoiceMode(listAt(parameter::PlayMode)); }

    // The layer's parameters by number; numbers 0 to 23 hold the global ones. The engine copies all of them in
    // before each tick, so that a tick sees one value of each.
    std::array<float, layerParameterEnd>& block() { return block_; }
    const std::array<float, layerParameterEnd>& block() const { return block_; }
    const std::array<float, layerParameterEnd>& smoothed() const { return smoothed_; }
    // To be called after the block was written: makes ready what notes ask of the parameters.
    void blockChanged();
    int listAt(int number) const { return listIndex(block_[number]); }

    const EngineState& engine() const { return engine_; }
    RandomSources& random() { return random_; }
    const WaveStore& waves() const { return waves_; }
    VoiceBank& bank() { return *bank_; }
    Voice& voice(int index) { return *voices_[index]; }
    const Voice& voice(int index) const { return *voices_[index]; }
    const MatrixSlots& matrix() const { return matrix_; }
    const ModBase& modBase() const { return modBase_; }
    const LayerTick& present() const { return present_; }
    Arpeggiator& arpeggiator() { return arpeggiator_; }
    const Arpeggiator& arpeggiator() const { return arpeggiator_; }
    Multieffect& insert(int which) { return *inserts_[which]; }
    Sample& sample(int oscillator) { return samples_[oscillator]; }
    const Sample& sample(int oscillator) const { return samples_[oscillator]; }
    CustomWaveSlot& customWave(int oscillator) { return customWaves_[oscillator]; }
    const CustomWaveSlot& customWave(int oscillator) const { return customWaves_[oscillator]; }

    // Null for none. While nothing plays.
    void setNoteObserver(NoteObserver* observer) { observer_ = observer; }

    std::int32_t currentNote = 60;
    float flipFlop = 1.0f;
    bool layerOn = true;  // ran on the previous tick
    std::int32_t ticksSinceNote = 0;

private:
    bool passes(int note, int velocity) const;
    int countPassingHeldKeys(int velocity) const;
    bool covered(int note) const;
    void startVoice(int voice, int note, int velocity);
    void startOneVoice(int note, int velocity);
    void startPolyphonic(int note, int velocity);
    void stealVoices();
    int oldestVoice(bool releasedOnly) const;
    void stopOneVoice();
    void slew();
    void prepareVoices();
    void retune();
    void tickVoices();
    void feedInserts();
    LaneMask soundingMask() const;

    int index_;
    const EngineState& engine_;
    RandomSources& random_;
    const WaveStore& waves_;
    SleepFunction sleep_;
    NoteObserver* observer_ = nullptr;
    Flag busy_;              // a render is in progress
    LaneMask sounding_ = 0;  // voices of that render

    std::array<float, layerParameterEnd> block_{};
    std::array<float, layerParameterEnd> smoothed_{};
    ModBase modBase_;
    LayerTick present_;
    MatrixSlots matrix_;
    Arpeggiator arpeggiator_;
    Retuner retuner_;
    std::array<TunedVoice, voiceCount> tuned_;
    std::unique_ptr<VoiceBank> bank_;
    std::array<std::unique_ptr<Multieffect>, 2> inserts_;
    std::array<std::unique_ptr<Voice>, voiceCount> voices_;
    std::array<Sample, oscillatorCount> samples_;
    std::array<CustomWaveSlot, oscillatorCount> customWaves_;
    std::array<std::int32_t, voiceCount> unheldTicks_{};  // since a voice that awaits its note-off had a key that is down
    std::int32_t keylessTicks_ = 0;                       // since any key was down

    // What the first insert is told: the layer's own value and the extremes of the sounding voices.
    struct InsertFeed {
        float base, lowest, highest;
    };
    std::array<InsertFeed, 5> insertFeed_{};  // FxInMix, FxInPar1 to FxInPar4
    alignas(16) std::array<float, maxTickSamples> scratchLeft_{}, scratchRight_{};
};

}  // namespace vantoric
