// The instrument itself, whatever it is plugged into: it owns everything and does little of its own. Each of its jobs
// is a class in this room or below; this one puts them in order. It knows no plug-in format and no window: a face drives
// it, and whoever wants to follow what happens pulls.
#pragma once

#include <array>
#include <atomic>
#include <bitset>
#include <memory>
#include <string>
#include <vector>

#include "base/engine_access.h"
#include "base/engine_state.h"
#include "base/messages.h"
#include "base/numbers.h"
#include "base/parameters.h"
#include "base/random.h"
#include "effects/equalizer.h"
#include "effects/multieffect.h"
#include "effects/sound_mode_stage.h"
#include "engine/block_observer.h"
#include "engine/controller_map.h"
#include "engine/decimator.h"
#include "engine/host_port.h"
#include "engine/midi_intake.h"
#include "engine/peak_meter.h"
#include "engine/program_changes.h"
#include "engine/song_clock.h"
#include "engine/tick_clock.h"
#include "engine/transport.h"
#include "engine/wave_library.h"
#include "engine/wave_worker.h"
#include "loading/custom_wave_loader.h"
#include "loading/quick_import.h"
#include "loading/sample_editor.h"
#include "loading/sample_loader.h"
#include "loading/sfz_import.h"
#include "parameters/parameter_model.h"
#include "patch/patch_chunk.h"
#include "patch/patch_file.h"
#include "patch/program_slot.h"
#include "voice/layer.h"

namespace vantoric {

// What a block hands to the master chain.
struct MasterControls {
    float eqLow, eqMid, eqHigh;   // 0 to 1
    int effectType;               // of the slot, 0 to 127; the insert type that no master slot runs reads as 0
    std::array<float, 5> effect;  // mix and the four parameters, 0 to 1
    int soundMode;                // list index
    float gain;                   // of `Volume`, 0 to 4
};
MasterControls masterControls(const ParameterModel& parameters);

// One tick of the smoothed wheels: each goes a fiftieth of its way. Arguments 0 to 1.
void smoothControllers(EngineState& state, float modwheel, float pitchWheel, float channelPressure);

// What leaves the master chain stays within this magnitude, whatever an effect sings.
inline constexpr float loudest = 16.0f;
// Holds samples to it, in place. A number that is none becomes 0, so that it never reaches the decimator, which would keep it.
void holdWithinLoudest(float* samples, int count);

class Instrument final : private MidiListener, private PatchHost {
public:
    // Starts the wave worker and loads the welcome patch from the
    // data folder; waits until the wave banks are there, at most 5 seconds. Throws std::bad_alloc or what the system
    // throws for a thread that cannot be made; nothing is left behind then.
    Instrument();
    // Saves the controller map. No other thread may be at work in the object any more.
    ~Instrument();
    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;

    // ---- the audio thread, inside its block or between two blocks

    // Renders `frames` (0 or more, any number) stereo frames over what the outputs hold. Allocates nothing, locks nothing,
    // waits for nothing but, where the transport says that the host renders offline, for waves that are being built. If
    // another thread is inside the block, the outputs are silent. Never throws.
    void render(float* left, float* right, int frames, const Transport& transport) noexcept;
    // The same, widened.
    void render(double* left, double* right, int frames, const Transport& transport) noexcept;
    // A part of a host's block: `frames` frames that begin `firstFrame` (0 or more) frames behind the block's begin, from which
    // events count. The parts of a block follow each other, with the same transport. What was set between two parts is heard
    // from the second one's begin on, where it acts at once, and otherwise from its next tick on.
    void renderPart(float* left, float* right, int frames, int firstFrame, const Transport& transport) noexcept;
    void renderPart(double* left, double* right, int frames, int firstFrame, const Transport& transport) noexcept;
    // A MIDI event of the block that follows, in any order; what lies beyond the block waits for one as long, two blocks at
    // most. 256 events a block: more cost one each, but no note hangs. Also from other threads: two that meet cost at most one
    // event.
    void receive(const MidiEvent& event) noexcept;
    // The keys, 0 to 127, that a voice sounds, released or held; all of them while a load holds the engine.
    std::bitset<128> keysSounding() noexcept;

    // ---- switching on and off, and rates; any thread but the audio thread inside its block, also while a block runs
    // on another: it is silent meanwhile.

    // Switched off: all notes end, effects are cleared, the controllers stand where they are.
    void stop();
    // Switched on: the song begins anew.
    void start();
    // The block that follows begins with everything silent: notes end, the pedal comes up and effects are cleared, as if it were
    // switched off and on, but it waits for nobody. No parameter and no controller moves, as no message has come in, and no
    // layer's lamp lights. Any thread, the audio thread too.
    void silenceNextBlock() noexcept { silenceWanted_.set(); }
    // The host's rate in Hz, any finite number. Below 500 the instrument is silent.
    void setSampleRate(float hostRate);

    // ---- any thread

    // The internal rate in Hz, which every reader of a rate in the instrument gets.
    float internalRate() const;
    float hostRate() const { return hostRate_.load(std::memory_order_relaxed); }
    // Sets a parameter as `parameters().setParameter` does. Where it chooses another effect or filter, the pages of its lines
    // are touched first; where it chooses another wave, the worker fetches its bank: so the block need not. On a thread that
    // has ever rendered a block of a host that plays in time, of this instrument or another, it only sets.
    void setParameter(int index, float value, ChangeSource source = ChangeSource::host);
    // The parameters: values, texts, and what has changed in them. Values on any thread; texts are built in memory of their
    // own, which is nothing for the audio thread.
    ParameterModel& parameters() { return parameters_; }
    const ParameterModel& parameters() const { return parameters_; }
    // What has come in of program changes.
    const ProgramChanges& programChanges() const { return programChanges_; }
    // Counts the patches loaded, so that a follower of the patch's name knows when to look again.
    std::uint32_t patchesLoaded() const { return patchesLoaded_.load(std::memory_order_acquire); }
    // How loud the left (0) or right (1) output is: a falling peak, 0.25 at full scale.
    float peak(int channel) const { return meters_[static_cast<std::size_t>(channel)].peak(); }
    // Whether a patch file is being loaded, or was refused as none.
    bool isBusy() const { return busy_.load(std::memory_order_acquire); }

    // ---- any thread but the audio thread inside its block

    // What there is to tell a user; whoever has one takes it after each call that may have posted something. It has a lock of
    // its own.
    Messages& messages() { return outsideBlock(messages_); }
    // Programs and their names, under a lock of their own.
    ProgramSlot& program() { return outsideBlock(program_); }
    // The worker's thread, to ask of it and to wait for it: without a turn at the engine.
    WaveWorker& waveWorker() { return outsideBlock(worker_); }

    // ---- the same: patches, samples and waves. Each call takes its turn at the engine.

    PatchFiles& patchFiles() { return outsideBlock(patchFiles_); }
    // The patch as bytes, out and in: what a host stores.
    PatchChunk& patchChunk() { return outsideBlock(patchChunk_); }
    SampleLoader& sampleLoader() { return outsideBlock(sampleLoader_); }
    QuickImport& quickImport() { return outsideBlock(quickImport_); }
    SampleEditor& sampleEditor() { return outsideBlock(sampleEditor_); }
    CustomWaveLoader& customWaveLoader() { return outsideBlock(customWaveLoader_); }
    SfzImport& sfzImport() { return outsideBlock(sfzImport_); }
    // After parameters were written in another way than by setParameter(): fetches the waves, effects and filters that they
    // choose.
    void parametersWritten();

    // ---- a face, before it plays and after it has; null for none. The port is then read by any thread but the audio thread.
    void setHostPort(HostPort* port) {
        access_.audioThread().onOwnThreadOrIdle();
        hostPort_ = port;
    }
    HostPort* hostPort() const { return hostPort_; }

    // ---- the engine's own

    // Full reset of voices, effects and controllers' smoothing. On the audio thread, or while the block is silent.
    void resetEngine() override;
    // Clears the key table and releases all keys of all layers. Same threads.
    void allNotesOff() override;
    // Null for none. While no block runs.
    void setBlockObserver(BlockObserver* observer) {
        access_.audioThread().onOwnThreadOrIdle();
        observer_ = observer;
    }

    // ---- parts, for the window's displays and tests. Their own headers say more.

    // What the audio thread writes as it plays: for other threads while it is silent, but for a look at single numbers whose
    // age does not matter, marked as such where it is taken.
    const EngineState& state() const { return state_; }
    Layer& layer(int index) { return *layers_[index]; }
    const Layer& layer(int index) const { return *layers_[index]; }
    // The layers' sources of chance, the frames of the internal rate until the next tick (0 or more), and the song position of
    // the last tick in quarter notes: the audio thread, or any other while no block runs.
    RandomSources& random() { return random_; }
    float samplesToTick() const { return clock_.samplesToTick(); }
    double lastPpqPos() const { return song_.lastPpqPos(); }
    // Any thread.
    EngineFlags& flags() { return state_.flags; }
    int instanceNumber() const { return membership_.number(); }
    // Entries on any thread; load() and save() on any but the audio thread.
    ControllerMap& controllerMap() { return controllerMap_; }
    // Queue, learn and marks on any thread; keys, pedal and wheel belong to the audio thread.
    MidiIntake& midi() { return midi_; }
    // Type and parameters on any thread; process() on one at a time.
    Multieffect& masterEffect() { return master_; }

private:
    // Blocks are rendered in pieces of at most this many frames, which are up to twice as many internal samples.
    static constexpr int longestPiece = 32768;
    static constexpr int bufferSamples = 2 * longestPiece;
    using StereoBuffer = std::array<std::vector<float>, 2>;

    // Hands out what may wait or allocate, but not to the block.
    template <class Part>
    Part& outsideBlock(Part& part) {
        access_.audioThread().notInsideBlock();
        return part;
    }
    // A key that passed the MIDI channel test.
    void noteOn(int layer, int key, int velocity) override { layers_[layer]->noteOn(key, velocity); }
    void noteOff(int layer, int key) override { layers_[layer]->noteOff(key); }
    void programPending(int number) override { programChanges_.post(number); }
    void refreshAll() override { parameters_.changes().noteAll(ChangeSource::patch); }
    void lookUpPatchName() override { patchesLoaded_.fetch_add(1, std::memory_order_release); }
    void prepareToSound() override;
    bool layerIsOn(int layer) const { return switchOn(parameters_.getParameter(parameter::Layer1On + layer)); }
    void touchPatch();
    void touchLayer(int layer);
    void touchChoice(int index, float value);
    void setBusy(bool busy) override { busy_.store(busy, std::memory_order_release); }

    template <class Sample>
    void renderBlock(Sample* left, Sample* right, int frames, int firstFrame, const Transport& transport);
    template <class Sample>
    void renderPieces(Sample* left, Sample* right, int frames, int firstFrame, const Transport& transport);
    void renderMeteredPiece(float* left, float* right, int frames, int firstFrame);
    void renderPiece(float* left, float* right, int frames, int firstFrame);
    bool renderInternally(float* left, float* right, int frames, int firstFrame);
    void renderAudioBlock(float* left, float* right, int count, int firstFrame);
    void renderSubBlock(float* left, float* right, int count);
    void feedMasterChain();
    void runMasterChain(float* left, float* right, int count);
    void tick(int eventPos);
    void readParameters();
    void releaseUnheldNotes();
    void silence();
    void loadSmoothedControllers();
    void resetStage();
    void observe(BlockStep step, int first = 0, int second = 0) {
        if (observer_ != nullptr) observer_->onStep(step, first, second);
    }
    void leaveFiles() noexcept;
    AllOscillators allOscillators();
    PatchWaves patchWaves();
    CustomWaveHolders customWaves();

    EngineState state_;
    RandomSources random_;        // of the layers
    RandomSources masterRandom_;  // of its own: how many ticks a block holds would decide whose turn it is
    Messages messages_;
    EngineAccess access_;
    WaveLibrary::Membership membership_{WaveLibrary::shared()};
    ParameterModel parameters_;
    ControllerMap controllerMap_;
    MidiIntake midi_;
    ProgramSlot program_;
    std::array<std::unique_ptr<Layer>, layerCount> layers_;
    Multieffect master_;
    Equalizer equalizer_;
    SoundModeStage stage_;
    Decimator decimator_;
    std::array<PeakMeter, 2> meters_;
    Flag silenceWanted_;
    Flag decimatorReset_;  // it runs also while a patch is loaded, so it is reset by its own thread
    TickClock clock_;
    SongClock song_;
    PatchChunk patchChunk_;
    PatchFiles patchFiles_;
    SampleLoader sampleLoader_;
    QuickImport quickImport_;
    SampleEditor sampleEditor_;
    CustomWaveLoader customWaveLoader_;
    SfzImport sfzImport_;
    WaveWorker worker_;
    std::atomic<float> hostRate_{44100.0f};
    ProgramChanges programChanges_;
    std::atomic<std::uint32_t> patchesLoaded_{0};
    std::atomic<bool> busy_{false};
    HostPort* hostPort_ = nullptr;
    BlockObserver* observer_ = nullptr;
    bool nothingHeld_ = false;        // at the tick before
    std::uint32_t writesRead_ = ~0u;  // of the parameters, at the last reading
    std::atomic_flag inBlock_;
    Transport transport_;       // of the block that runs
    bool feedsMaster_ = false;  // the piece that follows is the first of a block, or of a part
    StereoBuffer internal_, widened_;
};

}  // namespace vantoric
