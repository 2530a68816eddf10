#include "engine/q7audio.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/config_files.h"
#include "engine/denormals.h"
#include "engine/rates.h"
#include "engine/wave_library.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/thread.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr char effectName[] = "Vantoric";
constexpr char vendor[] = "vantoric.example";
constexpr std::int32_t vendorVersion = 3300;
constexpr std::int32_t uniqueId = ('Q' << 24) | ('7' << 16) | ('D' << 8) | 'I';

constexpr int bankTries = 5000, bankPause = 1;  // milliseconds that a start may wait for the wave banks

constexpr float smoothTake = 0.02f, smoothKeep = 0.98f;

float smoothed(float target, float value) { return target * smoothTake + value * smoothKeep; }

void writeText(char* text, const std::string& source) { copyText(text, source.c_str(), textBufferSize - 1); }

}  // namespace

MasterControls masterControls(const ParameterModel& parameters) {
    MasterControls controls{parameters.getParameter(par::EqLow),
                            parameters.getParameter(par::EqMid),
                            parameters.getParameter(par::EqHigh),
                            masterTypeFromValue(parameters.getParameter(par::FxMaType)),
                            {},
                            parameters.getListIndex(par::SoundMod),
                            SoundModeStage::gainOfVolume(parameters.getParameter(par::Volume))};
    for (int k = 0; k < 5; ++k) controls.effect[k] = parameters.getParameter(par::FxMaMix + k);
    return controls;
}

void smoothControllers(EngineState& state, float modwheel, float pitchWheel, float channelPressure) {
    state.modwheelSmoothed = smoothed(modwheel, state.modwheelSmoothed);
    state.pitchWheelSmoothed = smoothed(pitchWheel, state.pitchWheelSmoothed);
    state.channelPressureSmoothed = smoothed(channelPressure, state.channelPressureSmoothed);
}

// ---- start and stop -----------------------------------------------------------------------------------------

Q7Audio::Q7Audio(HostCallback host, platform::Dialogs& dialogs)
    : AudioEffectX(host, 1, parameterCount),
      dialogs_(dialogs),
      midi_(state_, parameters_, controllerMap_, *this),
      program_(dialogs),
      layers_{std::make_unique<Layer>(0, state_, random_, WaveLibrary::shared().store(), platform::sleepMilliseconds),
              std::make_unique<Layer>(1, state_, random_, WaveLibrary::shared().store(), platform::sleepMilliseconds),
              std::make_unique<Layer>(2, state_, random_, WaveLibrary::shared().store(), platform::sleepMilliseconds),
              std::make_unique<Layer>(3, state_, random_, WaveLibrary::shared().store(), platform::sleepMilliseconds)},
      master_(random_),
      patchChunk_(state_, parameters_, program_, patchWaves(), *this, dialogs, platform::sleepMilliseconds),
      patchFiles_(patchChunk_, program_, *this, dialogs),
      sampleLoader_(state_.flags, parameters_, patchWaves().samples, dialogs, platform::sleepMilliseconds),
      quickImport_(patchFiles_, program_, parameters_, sampleLoader_, dialogs),
      sampleEditor_(state_.flags, parameters_, patchWaves().samples, dialogs, platform::sleepMilliseconds),
      customWaveLoader_(state_.flags, parameters_, customWaves(), dialogs, platform::sleepMilliseconds),
      sfzImport_(state_.flags, parameters_, program_, patchWaves().samples, sampleLoader_, *this, dialogs,
                 platform::sleepMilliseconds),
      worker_(state_.flags, WaveLibrary::shared(), dialogs, parameters_, allOscillators()) {
    state_.flags.audioMuted.set();
    describeToHost();
    for (auto* pair : {&internal_, &widened_})
        for (auto& side : *pair) side.assign(bufferSamples, 0.0f);
    setSampleRate(hostRate_);
    controllerMap_.load(controllerMapPath());

    worker_.start();
    // Custom waves are only taken once the worker has started.
    waitUntilClear(state_.flags.bootPending, 1000, 1, platform::sleepMilliseconds, false);
    const std::string welcome = welcomePatchPath();
    if (!platform::exists(welcome)) dialogs_.message("Error", "The factory sounds are missing. Please reinstall the software.");
    patchFiles_.loadPatchFile(welcome);

    // A host may render faster than time as soon as it has the instance, so the banks are to be there first.
    waitUntilClear(state_.flags.audioMuted, bankTries, bankPause, platform::sleepMilliseconds, false);
    resetEngine();
    AudioEffectX::resume();  // not yet its own: events are asked for when the host switches on
}

Q7Audio::~Q7Audio() {
    state_.flags.editorClosing.set();
    worker_.askToStop();
    controllerMap_.save(controllerMapPath());
    storeInstallPath();
    worker_.stop();
    for (auto& layer : layers_) layer.reset();
}

void Q7Audio::describeToHost() {
    setNumInputs(0);
    setNumOutputs(2);
    setUniqueID(uniqueId);
    setVersion(vendorVersion);
    canProcessReplacing();
    programsAreChunks();
    isSynth();
}

AllOscillators Q7Audio::allOscillators() {
    AllOscillators all;
    for (int i = 0; i < layerCount * oscillatorCount; ++i) {
        Layer& layer = *layers_[i / oscillatorCount];
        all[i] = {&layer.sample(i % oscillatorCount), &layer.customWave(i % oscillatorCount)};
    }
    return all;
}

PatchWaves Q7Audio::patchWaves() {
    PatchWaves waves;
    const AllOscillators all = allOscillators();
    for (std::size_t i = 0; i < all.size(); ++i) {
        waves.samples[i] = all[i].sample;
        waves.customWaves[i] = all[i].customWave->cycle.data();
        waves.slots[i] = all[i].customWave;
    }
    return waves;
}

CustomWaveHolders Q7Audio::customWaves() {
    CustomWaveHolders waves;
    const AllOscillators all = allOscillators();
    for (std::size_t i = 0; i < all.size(); ++i) waves[i] = all[i].customWave;
    return waves;
}

// ---- rates, suspend and resume ------------------------------------------------------------------------------

void Q7Audio::setSampleRate(float rate) {
    AudioEffectX::setSampleRate(rate);
    hostRate_ = rate;
    setRates(state_, rate);
    stage_.setSampleRate(state_.internalRateExact);
    equalizer_.setSampleRate(state_.internalRateExact);
}

// `oversampled` needs no refresh here: setSampleRate set it with the rate that it follows from.
float Q7Audio::getSampleRate() { return internalRateOf(hostRate_); }

void Q7Audio::suspend() {
    readParameters();
    for (auto& layer : layers_)
        if (layer->layerOn) layer->clearArpeggiator();
    allNotesOff();
    midi_.resetPedal();
    loadSmoothedControllers();
    for (auto& layer : layers_)
        if (layer->layerOn) layer->reset();
    master_.clearState();
    resetStage();
    song_.reset(state_);
}

void Q7Audio::resume() {
    justResumed_ = true;
    song_.reset(state_);
    wantEvents();
}

// Everything is silent here, so the volume may stand where it is wanted at once: the first block does not
// ramp towards it, and sounds the same whatever its length.
void Q7Audio::resetStage() {
    stage_.setTargetGain(SoundModeStage::gainOfVolume(parameters_.getParameter(par::Volume)));
    stage_.reset();
}

void Q7Audio::allNotesOff() { midi_.allNotesOff(); }

void Q7Audio::resetEngine() {
    readParameters();
    midi_.resetPedal();
    loadSmoothedControllers();
    for (auto& layer : layers_) layer->reset();
    master_.clearState();
    resetStage();
    song_.reset(state_);
    justResumed_ = true;
    decimatorReset_.set();
}

// ---- the block ----------------------------------------------------------------------------------------------

void Q7Audio::processReplacing(float**, float** outputs, std::int32_t frames) {
    const DenormalsOff denormalsOff;
    audioThread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    const int longest = state_.oversampled ? bufferSamples / 2 : bufferSamples;
    int done = 0;
    do {
        const int piece = std::min(frames - done, longest);
        renderPiece(outputs[0] + done, outputs[1] + done, piece, done);
        done += piece;
    } while (done < frames);
}

void Q7Audio::processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) {
    static_cast<void>(inputs);
    const DenormalsOff denormalsOff;
    audioThread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    const int longest = state_.oversampled ? bufferSamples / 2 : bufferSamples;
    int done = 0;
    do {
        const int piece = std::min(frames - done, longest);
        renderPiece(widened_[0].data(), widened_[1].data(), piece, done);
        for (int side = 0; side < 2; ++side) std::copy_n(widened_[side].begin(), piece, outputs[side] + done);
        done += piece;
    } while (done < frames);
}

// `firstFrame` is the place of the piece in the host's block, from which events count their offsets.
void Q7Audio::renderPiece(float* left, float* right, int frames, int firstFrame) {
    if (!state_.oversampled) return renderAudioBlock(left, right, frames, firstFrame);
    renderAudioBlock(internal_[0].data(), internal_[1].data(), 2 * frames, firstFrame);
    observe(BlockStep::decimator, 2 * frames);
    if (decimatorReset_.isSet()) {
        decimatorReset_.clear();
        decimator_.reset();
    }
    decimator_.process(internal_[0].data(), internal_[1].data(), 2 * frames, left, right);
}

void Q7Audio::renderAudioBlock(float* left, float* right, int count, int firstFrame) {
    observe(BlockStep::clearOutputs, count);
    std::fill_n(left, count, 0.0f);
    std::fill_n(right, count, 0.0f);
    EngineFlags& flags = state_.flags;
    flags.audioRunning.set();
    if (flags.editorClosing.isSet() || flags.audioMuted.isSet() || flags.engineLocked.isSet()) return flags.audioRunning.clear();
    if (flags.bootPending.isSet()) return;  // the next waiter or the next block clears the mark
    if (state_.tickSamples == 0) return flags.audioRunning.clear();
    clock_.run(
        count, state_,
        [&](int length, int pos) {
            observe(BlockStep::renderSubBlock, length, pos);
            renderSubBlock(left + pos, right + pos, length);
        },
        [&](int eventPos) { tick(firstFrame + eventPos); });
    runMasterChain(left, right, count);
    flags.audioRunning.clear();
}

// Above 257 kHz a tick is longer than what a voice renders at once.
void Q7Audio::renderSubBlock(float* left, float* right, int count) {
    for (int done = 0; done < count; done += maxTickSamples) {
        const int length = std::min(count - done, maxTickSamples);
        for (auto& layer : layers_) layer->renderBlock(left + done, right + done, length);
    }
}

void Q7Audio::runMasterChain(float* left, float* right, int count) {
    const MasterControls controls = masterControls(parameters_);
    observe(BlockStep::equalizer, count);
    equalizer_.setLowGain(controls.eqLow);
    equalizer_.setMidGain(controls.eqMid);
    equalizer_.setHighGain(controls.eqHigh);
    equalizer_.process(left, right, count);

    observe(BlockStep::masterEffect, count);
    master_.setType(controls.effectType);
    for (int k = 0; k < 5; ++k) master_.setParameter(k, controls.effect[k]);
    master_.setSampleRate(state_.internalRate);
    master_.setTempo(static_cast<float>(state_.tempoBpm), state_.songPosition);
    master_.process(left, right, count);

    observe(BlockStep::finalStage, count);
    stage_.setMode(controls.soundMode);
    stage_.setTargetGain(controls.gain);
    stage_.process(left, right, count);
}

// ---- the tick -----------------------------------------------------------------------------------------------

void Q7Audio::tick(int eventPos) {
    readParameters();
    observe(BlockStep::drainMidiQueue, eventPos);
    midi_.drainMidiQueue(eventPos);
    observe(BlockStep::smoothControllers);
    smoothControllers(state_, parameters_.getParameter(par::Modwheel), midi_.pitchWheel(), midi_.channelPressure());
    observe(BlockStep::tempoAndPosition);
    readHostTime();
    if (state_.flags.bootPending.isSet()) return;
    for (int i = 0; i < layerCount; ++i) {
        observe(BlockStep::layerTick, i);
        layers_[i]->tick();
    }
}

// One reading of every parameter a tick: whatever other threads write meanwhile, notes and voices of this
// tick see the same values.
void Q7Audio::readParameters() {
    state_.quality = parameters_.getListIndex(par::Quality);
    state_.soundMode = parameters_.getListIndex(par::SoundMod);
    state_.microtuning = parameters_.getListIndex(par::Microtun);
    for (int i = 0; i < layerCount; ++i) {
        parameters_.snapshotLayer(i, layers_[i]->block().data());
        layers_[i]->block()[par::Layer1On + i] = parameters_.getParameter(par::Layer1On + i);
        layers_[i]->blockChanged();
    }
}

void Q7Audio::loadSmoothedControllers() {
    state_.modwheelSmoothed = parameters_.getParameter(par::Modwheel);
    state_.pitchWheelSmoothed = midi_.pitchWheel();
    state_.channelPressureSmoothed = midi_.channelPressure();
}

void Q7Audio::readHostTime() {
    const VstTimeInfo* info = getTimeInfo(timeTempoValid | timePpqPosValid);
    if (info == nullptr) return song_.tick(state_, nullptr);
    const HostTime time{info->tempo, info->ppqPos};
    song_.tick(state_, &time);
}

// ---- events, programs, texts --------------------------------------------------------------------------------

std::int32_t Q7Audio::processEvents(VstEvents* events) {
    for (int i = 0; i < events->numEvents; ++i) {
        if (events->events[i]->type != midiEventType) continue;
        auto* event = reinterpret_cast<VstMidiEvent*>(events->events[i]);
        auto* bytes = reinterpret_cast<std::uint8_t*>(event->midiData);
        midi_.receive(bytes[0], bytes[1], bytes[2], event->deltaFrames);
    }
    return 1;
}

void Q7Audio::programPending(int number) {
    if (EditorLink* link = parameters_.editorLink()) link->programPending(number);
}

void Q7Audio::refreshAll() {
    if (EditorLink* link = parameters_.editorLink()) link->refreshAll();
}

void Q7Audio::setBusy(bool busy) {
    if (EditorLink* link = parameters_.editorLink()) link->busyChanged(busy);
}

void Q7Audio::lookUpPatchName() {
    if (EditorLink* link = parameters_.editorLink()) link->patchLoaded(program_.getProgramName());
}

void Q7Audio::setParameter(std::int32_t index, float value) {
    parameters_.setParameter(index, value);
    if (choosesWave(index) && std::this_thread::get_id() != audioThread_.load(std::memory_order_relaxed)) worker_.wavesChosen();
}
float Q7Audio::getParameter(std::int32_t index) { return parameters_.getParameter(index); }
void Q7Audio::getParameterLabel(std::int32_t index, char* text) { parameters_.getParameterLabel(index, text); }
void Q7Audio::getParameterDisplay(std::int32_t index, char* text) { parameters_.getParameterDisplay(index, text); }
void Q7Audio::getParameterName(std::int32_t index, char* text) { parameters_.getParameterName(index, text); }

bool Q7Audio::canParameterBeAutomated(std::int32_t index) {
    char product[textBufferSize] = {};
    getHostProductString(product);
    return ParameterModel::canParameterBeAutomated(index, product);
}

void Q7Audio::setProgram(std::int32_t index) { program_.setProgram(index); }
std::int32_t Q7Audio::getProgram() { return program_.getProgram(); }
void Q7Audio::setProgramName(const char* text) { program_.setProgramName(text); }
void Q7Audio::getProgramName(char* text) { writeText(text, program_.getProgramName()); }

bool Q7Audio::getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text) {
    std::string name;
    if (!program_.getProgramNameIndexed(category, index, name)) return false;
    writeText(text, name);
    return true;
}

std::int32_t Q7Audio::getChunk(void** data, bool) {
    const ChunkBytes bytes = patchChunk_.getChunk();
    if (bytes.size <= 0) return 0;
    *data = std::malloc(static_cast<std::size_t>(bytes.size));
    if (*data == nullptr) return 0;
    std::memcpy(*data, bytes.data.get(), static_cast<std::size_t>(bytes.size));
    return bytes.size;
}

std::int32_t Q7Audio::setChunk(void* data, std::int32_t size, bool) {
    return patchChunk_.setChunk(static_cast<const std::uint8_t*>(data), size);
}

bool Q7Audio::getOutputProperties(std::int32_t index, VstPinProperties* properties) {
    if (index < 0 || index > 1) return false;
    copyText(properties->label, index == 0 ? "Vantoric Out 1" : "Vantoric Out 2", sizeof properties->label - 1);
    // Fills its eight bytes; the cleared ones behind it end it.
    static_assert(sizeof effectName - 1 == sizeof properties->shortLabel);
    std::memcpy(properties->shortLabel, effectName, sizeof properties->shortLabel);
    properties->flags = pinIsActive | pinIsStereo;
    return true;
}

bool Q7Audio::getEffectName(char* text) {
    writeText(text, effectName);
    return true;
}
bool Q7Audio::getVendorString(char* text) {
    writeText(text, vendor);
    return true;
}
bool Q7Audio::getProductString(char* text) { return getEffectName(text); }
std::int32_t Q7Audio::getVendorVersion() { return vendorVersion; }
PlugCategory Q7Audio::getPlugCategory() { return categorySynth; }

// Doubles are the widened floats, so the instrument does not advertise them, but renders them to a host that asks.
bool Q7Audio::setProcessPrecision(std::int32_t precision) { return precision == 0 || precision == 1; }

std::int32_t Q7Audio::canDo(const char* text) {
    for (const char* known : {"receiveVstEvents", "receiveVstMidiEvent", "midiProgramNames", "receiveVstTimeInfo"})
        if (std::strcmp(text, known) == 0) return 1;
    return -1;
}

}  // namespace vantoric
