// The plug-in object that the host sees: it owns everything and does little itself. Each of its jobs is a
// class of its own in this room; this one puts them in order.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "base/engine_state.h"
#include "base/random.h"
#include "effects/equalizer.h"
#include "effects/multieffect.h"
#include "effects/sound_mode_stage.h"
#include "engine/block_observer.h"
#include "engine/controller_map.h"
#include "engine/custom_wave_loader.h"
#include "engine/decimator.h"
#include "engine/midi_intake.h"
#include "engine/parameter_model.h"
#include "engine/patch_chunk.h"
#include "engine/patch_file.h"
#include "engine/program_slot.h"
#include "engine/quick_import.h"
#include "engine/sample_editor.h"
#include "engine/sample_loader.h"
#include "engine/sfz_import.h"
#include "engine/song_clock.h"
#include "engine/tick_clock.h"
#include "engine/wave_library.h"
#include "engine/wave_worker.h"
#include "platform/dialogs.h"
#include "voice/layer.h"
#include "vst/audio_effect.h"

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

class Q7Audio final : public AudioEffectX, private MidiListener, private PatchHost {
public:
    // Boxes go to `dialogs`, which must outlive the object. Starts the wave worker and loads the welcome
    // patch from the data folder.
    explicit Q7Audio(HostCallback host, platform::Dialogs& dialogs = platform::desktopDialogs());
    ~Q7Audio() override;

    // What the host asks for; see AudioEffect for threads and bounds.
    void suspend() override;
    void resume() override;
    void setSampleRate(float rate) override;
    // The internal rate in Hz, which every reader of a rate in the instrument gets. Any thread.
    float getSampleRate() override;
    void processReplacing(float** inputs, float** outputs, std::int32_t frames) override;
    void processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) override;
    void setParameter(std::int32_t index, float value) override;
    float getParameter(std::int32_t index) override;
    void getParameterLabel(std::int32_t index, char* text) override;
    void getParameterDisplay(std::int32_t index, char* text) override;
    void getParameterName(std::int32_t index, char* text) override;
    bool canParameterBeAutomated(std::int32_t index) override;
    void setProgram(std::int32_t index) override;
    std::int32_t getProgram() override;
    void setProgramName(const char* text) override;
    void getProgramName(char* text) override;
    bool getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text) override;
    std::int32_t getChunk(void** data, bool isPreset) override;
    std::int32_t setChunk(void* data, std::int32_t size, bool isPreset) override;
    bool getOutputProperties(std::int32_t index, VstPinProperties* properties) override;
    std::int32_t processEvents(VstEvents* events) override;
    bool getEffectName(char* text) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    std::int32_t getVendorVersion() override;
    std::int32_t canDo(const char* text) override;
    PlugCategory getPlugCategory() override;
    bool setProcessPrecision(std::int32_t precision) override;

    // Full reset of voices, effects and controllers' smoothing. On the audio thread, or while it is silent.
    void resetEngine() override;
    // Clears the key table and releases all keys of all layers. Same threads.
    void allNotesOff() override;

    // Parts, for the window, the library and tests.
    const EngineState& state() const { return state_; }
    EngineFlags& flags() { return state_.flags; }
    ParameterModel& parameters() { return parameters_; }
    MidiIntake& midi() { return midi_; }
    ControllerMap& controllerMap() { return controllerMap_; }
    ProgramSlot& program() { return program_; }
    PatchFiles& patchFiles() { return patchFiles_; }
    PatchChunk& patchChunk() { return patchChunk_; }
    SampleLoader& sampleLoader() { return sampleLoader_; }
    QuickImport& quickImport() { return quickImport_; }
    SampleEditor& sampleEditor() { return sampleEditor_; }
    CustomWaveLoader& customWaveLoader() { return customWaveLoader_; }
    WaveWorker& waveWorker() { return worker_; }
    SfzImport& sfzImport() { return sfzImport_; }
    Layer& layer(int index) { return *layers_[index]; }
    Multieffect& masterEffect() { return master_; }
    RandomSources& random() { return random_; }
    int instanceNumber() const { return membership_.number(); }
    float samplesToTick() const { return clock_.samplesToTick(); }
    double lastPpqPos() const { return song_.lastPpqPos(); }
    // Null for none. While no block runs.
    void setBlockObserver(BlockObserver* observer) { observer_ = observer; }

private:
    // Blocks are rendered in pieces of at most this many internal samples.
    static constexpr int bufferSamples = 65536;
    using StereoBuffer = std::array<std::vector<float>, 2>;

    // A key that passed the MIDI channel test; a program change without an editor is lost.
    void noteOn(int layer, int key, int velocity) override { layers_[layer]->noteOn(key, velocity); }
    void noteOff(int layer, int key) override { layers_[layer]->noteOff(key); }
    void programPending(int number) override;
    void refreshAll() override;
    void lookUpPatchName() override;
    void setBusy(bool busy) override;
    void prepareToSound() override { worker_.touchBanks(); }

    void describeToHost();
    void renderPiece(float* left, float* right, int frames, int firstFrame);
    void renderAudioBlock(float* left, float* right, int count, int firstFrame);
    void renderSubBlock(float* left, float* right, int count);
    void runMasterChain(float* left, float* right, int count);
    void tick(int eventPos);
    void readParameters();
    void loadSmoothedControllers();
    void resetStage();
    void readHostTime();
    void observe(BlockStep step, int first = 0, int second = 0) {
        if (observer_ != nullptr) observer_->onStep(step, first, second);
    }
    AllOscillators allOscillators();
    PatchWaves patchWaves();
    CustomWaveHolders customWaves();

    EngineState state_;
    RandomSources random_;
    platform::Dialogs& dialogs_;
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
    float hostRate_ = 44100.0f;
    std::atomic<std::thread::id> audioThread_{};  // of the last block: it rings no bells
    BlockObserver* observer_ = nullptr;
    bool justResumed_ = true;  // kept for the host's start and stop; nothing reads it
    StereoBuffer internal_, widened_;
};

}  // namespace vantoric
