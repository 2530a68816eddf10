#include "engine/instrument.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/denormals.h"
#include "engine/rates.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/settings.h"
#include "platform/thread.h"
#include "voice/layer_stack.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr int bankTries = 5000, bankPause = 1;  // milliseconds that a start may wait for the wave banks

constexpr int offlineWait = 10000;  // milliseconds that a host which renders to a file waits for waves

constexpr float smoothTake = 0.02f, smoothKeep = 0.98f;

float smoothed(float target, float value) { return target * smoothTake + value * smoothKeep; }

// Whether this thread has rendered a block in time, for whichever instance: hosts give blocks to any of several threads.
thread_local bool playsInTime = false;

// Pieces in which the master chain runs, in internal samples: no effect sees longer ones, whatever the host's blocks.
constexpr int masterPiece = 256;

}  // namespace

MasterControls masterControls(const ParameterModel& parameters) {
    MasterControls controls{parameters.played(par::EqLow),
                            parameters.played(par::EqMid),
                            parameters.played(par::EqHigh),
                            masterTypeFromValue(parameters.getParameter(par::FxMaType)),
                            {},
                            parameters.getListIndex(par::SoundMod),
                            SoundModeStage::gainOfVolume(parameters.played(par::Volume))};
    for (int k = 0; k < 5; ++k) controls.effect[k] = parameters.played(par::FxMaMix + k);
    return controls;
}

void smoothControllers(EngineState& state, float modwheel, float pitchWheel, float channelPressure) {
    state.modwheelSmoothed = smoothed(modwheel, state.modwheelSmoothed);
    state.pitchWheelSmoothed = smoothed(pitchWheel, state.pitchWheelSmoothed);
    state.channelPressureSmoothed = smoothed(channelPressure, state.channelPressureSmoothed);
}

void holdWithinLoudest(float* samples, int count) {
    for (int i = 0; i < count; ++i) {
        const float x = samples[i] == samples[i] ? samples[i] : 0.0f;
        samples[i] = std::min(std::max(x, -loudest), loudest);
    }
}

// ---- start and stop -----------------------------------------------------------------------------------------

Instrument::Instrument()
    : access_(state_.flags, platform::sleepMilliseconds),
      midi_(state_, parameters_, controllerMap_, *this),
      program_(messages_),
      layers_{std::make_unique<Layer>(0, state_, random_, WaveLibrary::shared().store(), platform::sleepMilliseconds),
              std::make_unique<Layer>(1, state_, random_, WaveLibrary::shared().store(), platform::sleepMilliseconds),
              std::make_unique<Layer>(2, state_, random_, WaveLibrary::shared().store(), platform::sleepMilliseconds),
              std::make_unique<Layer>(3, state_, random_, WaveLibrary::shared().store(), platform::sleepMilliseconds)},
      master_(masterRandom_),
      patchChunk_(access_, parameters_, program_, patchWaves(), *this, messages_),
      patchFiles_(patchChunk_, program_, *this, messages_),
      sampleLoader_(access_, parameters_, patchWaves().samples, messages_),
      quickImport_(patchFiles_, program_, parameters_, sampleLoader_, access_, messages_),
      sampleEditor_(access_, parameters_, patchWaves().samples, messages_),
      customWaveLoader_(access_, parameters_, customWaves(), messages_),
      sfzImport_(access_, parameters_, program_, patchWaves().samples, sampleLoader_, *this, messages_),
      worker_(state_.flags, WaveLibrary::shared(), messages_, parameters_, allOscillators()) {
    state_.flags.audioMuted.set();
    for (auto* pair : {&internal_, &widened_})
        for (auto& side : *pair) side.assign(bufferSamples, 0.0f);
    setSampleRate(hostRate());
    platform::makeOwnFolders();
    controllerMap_.load(controllerMapPath());

    worker_.start();
    // Custom waves are only taken once the worker has started.
    waitUntilClear(state_.flags.bootPending, 1000, 1, platform::sleepMilliseconds, false);
    const std::string welcome = welcomePatchPath();
    if (!platform::exists(welcome)) messages_.post("Error", "The factory sounds are missing. Please reinstall the software.");
    patchFiles_.loadPatchFile(welcome);

    // A host may render faster than time as soon as it has the instance, so the banks are to be there first.
    waitUntilClear(state_.flags.audioMuted, bankTries, bankPause, platform::sleepMilliseconds, false);
    resetEngine();
}

Instrument::~Instrument() {
    state_.flags.editorClosing.set();
    worker_.askToStop();
    leaveFiles();
    worker_.stop();
    for (auto& layer : layers_) layer.reset();
}

// Without memory for it an instrument ends as well.
void Instrument::leaveFiles() noexcept try {
    controllerMap_.save(controllerMapPath());
    platform::writeSetting("Path", platform::dataFolder());  // tells installers where the instrument lives
} catch (...) {
    return;
}

AllOscillators Instrument::allOscillators() {
    AllOscillators all;
    for (int i = 0; i < layerCount * oscillatorCount; ++i) {
        Layer& layer = *layers_[i / oscillatorCount];
        all[i] = {&layer.sample(i % oscillatorCount), &layer.customWave(i % oscillatorCount)};
    }
    return all;
}

PatchWaves Instrument::patchWaves() {
    PatchWaves waves;
    const AllOscillators all = allOscillators();
    for (std::size_t i = 0; i < all.size(); ++i) {
        waves.samples[i] = all[i].sample;
        waves.customWaves[i] = all[i].customWave->cycle.data();
        waves.slots[i] = all[i].customWave;
    }
    return waves;
}

CustomWaveHolders Instrument::customWaves() {
    CustomWaveHolders waves;
    const AllOscillators all = allOscillators();
    for (std::size_t i = 0; i < all.size(); ++i) waves[i] = all[i].customWave;
    return waves;
}

// What the patch in force will read is in memory before it sounds, so that the audio thread waits for no page.
void Instrument::prepareToSound() {
    worker_.touchBanks();
    touchPatch();
}

void Instrument::parametersWritten() {
    worker_.wavesChosen();
    touchPatch();
}

void Instrument::touchPatch() {
    for (int i = 0; i < layerCount; ++i)
        if (layerIsOn(i)) touchLayer(i);
    master_.touchMemory(masterTypeFromValue(parameters_.getParameter(par::FxMaType)));
}

void Instrument::touchLayer(int layer) {
    const auto valueOf = [&](int number) { return parameters_.getParameter(hostIndex(number, layer)); };
    layers_[layer]->insert(0).touchMemory(typeFromValue(valueOf(par::FxInType)));
    layers_[layer]->insert(1).touchMemory(typeFromValue(valueOf(par::FxIn2Type)));
    for (int f = 0; f < filterCount; ++f) layers_[layer]->bank().filters[f].touchMemory(listIndex(valueOf(par::FilType1 + f)));
}

// A layer that is off is touched when it is switched on.
void Instrument::touchChoice(int index, float value) {
    if (index == par::FxMaType) master_.touchMemory(masterTypeFromValue(value));
    for (int i = 0; i < layerCount; ++i) {
        if (index == par::Layer1On + i && switchOn(value)) touchLayer(i);
        if (!layerIsOn(i)) continue;
        if (index == hostIndex(par::FxInType, i)) layers_[i]->insert(0).touchMemory(typeFromValue(value));
        if (index == hostIndex(par::FxIn2Type, i)) layers_[i]->insert(1).touchMemory(typeFromValue(value));
        for (int f = 0; f < filterCount; ++f)
            if (index == hostIndex(par::FilType1 + f, i)) layers_[i]->bank().filters[f].touchMemory(listIndex(value));
    }
}

// ---- rates, switching off and on ----------------------------------------------------------------------------

void Instrument::setSampleRate(float hostRate) {
    const EngineHold hold(access_, HoldFor::settings);
    hostRate_.store(hostRate, std::memory_order_relaxed);
    setRates(state_, hostRate);
    stage_.setSampleRate(state_.internalRateExact);
    equalizer_.setSampleRate(state_.internalRateExact);
}

float Instrument::internalRate() const { return internalRateOf(hostRate()); }

void Instrument::stop() {
    const EngineHold hold(access_, HoldFor::settings);
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

void Instrument::start() {
    const EngineHold hold(access_, HoldFor::settings);
    song_.reset(state_);
}

// Everything is silent here, so the volume may stand where it is wanted at once: the first block does not
// ramp towards it, and sounds the same whatever its length.
void Instrument::resetStage() {
    stage_.setTargetGain(SoundModeStage::gainOfVolume(parameters_.getParameter(par::Volume)));
    stage_.reset();
}

void Instrument::allNotesOff() {
    access_.audioThread().onOwnThreadOrSilent(state_.flags.engineLocked.isSet());
    midi_.allNotesOff();
}

void Instrument::resetEngine() {
    access_.audioThread().onOwnThreadOrSilent(state_.flags.engineLocked.isSet());
    readParameters();
    midi_.resetPedal();
    loadSmoothedControllers();
    for (auto& layer : layers_) layer->reset();
    master_.clearState();
    resetStage();
    song_.reset(state_);
    decimatorReset_.set();
}

// ---- the block ----------------------------------------------------------------------------------------------

void Instrument::receive(const MidiEvent& event) noexcept {
    std::uint8_t data1 = event.data1, data2 = event.data2;
    midi_.receive(event.status, data1, data2, event.frame);
}

void Instrument::render(float* left, float* right, int frames, const Transport& transport) noexcept {
    renderBlock(left, right, frames, 0, transport);
}

void Instrument::render(double* left, double* right, int frames, const Transport& transport) noexcept {
    renderBlock(left, right, frames, 0, transport);
}

void Instrument::renderPart(float* left, float* right, int frames, int firstFrame, const Transport& transport) noexcept {
    renderBlock(left, right, frames, firstFrame, transport);
}

void Instrument::renderPart(double* left, double* right, int frames, int firstFrame, const Transport& transport) noexcept {
    renderBlock(left, right, frames, firstFrame, transport);
}

// Nothing in a block is made to throw. Should it, no exception reaches the host: the block is silent, and so is all that sounded
// when the next one begins.
template <class Sample>
void Instrument::renderBlock(Sample* left, Sample* right, int frames, int firstFrame, const Transport& transport) {
    if (inBlock_.test_and_set(std::memory_order_acquire)) {
        std::fill_n(left, frames, Sample(0));
        std::fill_n(right, frames, Sample(0));
        return;
    }
    try {
        renderPieces(left, right, frames, firstFrame, transport);
    } catch (...) {
        std::fill_n(left, frames, Sample(0));
        std::fill_n(right, frames, Sample(0));
        state_.flags.audioRunning.clear();
        silenceNextBlock();
    }
    inBlock_.clear(std::memory_order_release);
}

// What the host reads at the block's begin is held for all of it, whatever other threads set meanwhile.
template <class Sample>
void Instrument::renderPieces(Sample* left, Sample* right, int frames, int firstFrame, const Transport& transport) {
    if (transport.offline) worker_.waitForWaves(offlineWait);
    const AudioThreadCheck::Scope inside(access_.audioThread());
    const DenormalsOff denormalsOff;
    if (!transport.offline) playsInTime = true;
    transport_ = transport;
    feedsMaster_ = true;
    if (firstFrame == 0) midi_.beginBlock();
    int done = 0;
    do {
        const int piece = std::min(frames - done, longestPiece);
        if constexpr (std::is_same_v<Sample, float>) {
            renderMeteredPiece(left + done, right + done, piece, firstFrame + done);
        } else {
            renderMeteredPiece(widened_[0].data(), widened_[1].data(), piece, firstFrame + done);
            std::copy_n(widened_[0].begin(), piece, left + done);
            std::copy_n(widened_[1].begin(), piece, right + done);
        }
        done += piece;
    } while (done < frames);
}

void Instrument::renderMeteredPiece(float* left, float* right, int frames, int firstFrame) {
    renderPiece(left, right, frames, firstFrame);
    meters_[0].take(left, frames, hostRate());
    meters_[1].take(right, frames, hostRate());
}

// `firstFrame` is the place of the piece in the host's block, from which events count their offsets.
void Instrument::renderPiece(float* left, float* right, int frames, int firstFrame) {
    if (!renderInternally(left, right, frames, firstFrame)) return;
    observe(BlockStep::decimator, 2 * frames);
    if (decimatorReset_.isSet()) {
        decimatorReset_.clear();
        decimator_.reset();
    }
    decimator_.process(internal_[0].data(), internal_[1].data(), 2 * frames, left, right);
}

// True if it went to the internal buffers at twice the rate. The rates belong to whoever holds the engine, so a block reads
// them only behind the flags; a silent one goes by what the host has set.
bool Instrument::renderInternally(float* left, float* right, int frames, int firstFrame) {
    EngineFlags& flags = state_.flags;
    const Passes::Scope reading(flags.blockPasses);
    flags.audioRunning.set();
    const bool isSilent = flags.editorClosing.isSet() || flags.audioMuted.isSet() || flags.engineLocked.isSet();
    const bool oversampled = isSilent ? runsOversampled(hostRate()) : state_.oversampled;
    if (oversampled) {
        left = internal_[0].data();
        right = internal_[1].data();
        frames *= 2;
    }
    observe(BlockStep::clearOutputs, frames);
    std::fill_n(left, frames, 0.0f);
    std::fill_n(right, frames, 0.0f);
    if (isSilent) {
        flags.audioRunning.clear();
    } else {
        renderAudioBlock(left, right, frames, firstFrame);
    }
    return oversampled;
}

void Instrument::renderAudioBlock(float* left, float* right, int count, int firstFrame) {
    EngineFlags& flags = state_.flags;
    if (flags.bootPending.isSet()) return;  // the next waiter or the next block clears the mark
    if (state_.tickSamples == 0) return flags.audioRunning.clear();
    if (silenceWanted_.isSet()) {
        silenceWanted_.clear();
        silence();
    }
    clock_.run(
        count, state_,
        [&](int length, int pos) {
            observe(BlockStep::renderSubBlock, length, pos);
            renderSubBlock(left + pos, right + pos, length);
        },
        [&](int eventPos) { tick(firstFrame + eventPos); });
    if (std::exchange(feedsMaster_, false)) feedMasterChain();
    runMasterChain(left, right, count);
    flags.audioRunning.clear();
}

// A reset wakes the layers' lamps, but nothing was played here.
void Instrument::silence() {
    std::array<std::int32_t, layerCount> sinceNote;
    for (int i = 0; i < layerCount; ++i) sinceNote[i] = layers_[i]->ticksSinceNote;
    allNotesOff();
    resetEngine();
    for (int i = 0; i < layerCount; ++i) layers_[i]->ticksSinceNote = sinceNote[i];
}

// Above 257 kHz a tick is longer than what a voice renders at once.
void Instrument::renderSubBlock(float* left, float* right, int count) {
    std::array<Layer*, layerCount> layers;
    for (int i = 0; i < layerCount; ++i) layers[i] = layers_[i].get();
    for (int done = 0; done < count; done += maxTickSamples)
        renderLayers(layers, left + done, right + done, std::min(count - done, maxTickSamples));
}

// Once a host block, or a part of one, the readers of the master chain get their parameters.
void Instrument::feedMasterChain() {
    const MasterControls controls = masterControls(parameters_);
    equalizer_.setLowGain(controls.eqLow);
    equalizer_.setMidGain(controls.eqMid);
    equalizer_.setHighGain(controls.eqHigh);
    master_.setType(controls.effectType);
    for (int k = 0; k < 5; ++k) master_.setParameter(k, controls.effect[k]);
    master_.setSampleRate(state_.internalRate);
    master_.setTempo(static_cast<float>(state_.tempoBpm), state_.songPosition);
    stage_.setMode(controls.soundMode);
    stage_.setTargetGain(controls.gain);
}

void Instrument::runMasterChain(float* left, float* right, int count) {
    observe(BlockStep::equalizer, count);
    equalizer_.process(left, right, count);
    observe(BlockStep::masterEffect, count);
    for (int done = 0; done < count; done += masterPiece)
        master_.process(left + done, right + done, std::min(count - done, masterPiece));
    observe(BlockStep::finalStage, count);
    stage_.process(left, right, count);
    holdWithinLoudest(left, count);
    holdWithinLoudest(right, count);
}

// As a block is: whoever takes the engine meanwhile waits until the look is over.
std::bitset<128> Instrument::keysSounding() noexcept {
    std::bitset<128> keys;
    EngineFlags& flags = state_.flags;
    const Passes::Scope reading(flags.blockPasses);
    flags.audioRunning.set();
    if (flags.editorClosing.isSet() || flags.audioMuted.isSet() || flags.engineLocked.isSet()) {
        keys.set();
    } else {
        for (const auto& layer : layers_)
            for (int i = 0; i < voiceCount && layer->layerOn; ++i)  // what is off stands still
                if (layer->voice(i).sounding()) keys.set(static_cast<std::size_t>(layer->voice(i).note & 127));
    }
    flags.audioRunning.clear();
    return keys;
}

// ---- the tick -----------------------------------------------------------------------------------------------

void Instrument::tick(int eventPos) {
    readParameters();
    observe(BlockStep::drainMidiQueue, eventPos);
    midi_.drainMidiQueue(eventPos);
    releaseUnheldNotes();
    observe(BlockStep::smoothControllers);
    smoothControllers(state_, parameters_.played(par::Modwheel), midi_.pitchWheel(), midi_.channelPressure());
    observe(BlockStep::tempoAndPosition);
    song_.tick(state_, transport_.known ? &transport_ : nullptr);
    if (state_.flags.bootPending.isSet()) return;
    for (int i = 0; i < layerCount; ++i) {
        observe(BlockStep::layerTick, i);
        layers_[i]->tick();
    }
}

// One reading of every parameter a tick, unless none was written since the last: whatever other threads write meanwhile,
// notes and voices of this tick see the same values.
void Instrument::readParameters() {
    const std::uint32_t writes = parameters_.writes();
    if (writes == writesRead_) return;
    writesRead_ = writes;
    state_.quality = parameters_.getListIndex(par::Quality);
    state_.soundMode = parameters_.getListIndex(par::SoundMod);
    state_.microtuning = parameters_.getListIndex(par::Microtun);
    for (int i = 0; i < layerCount; ++i) {
        parameters_.snapshotLayer(i, layers_[i]->block().data());
        layers_[i]->block()[par::Layer1On + i] = parameters_.getParameter(par::Layer1On + i);
        layers_[i]->blockChanged();
    }
}

// From the second tick on, so that arpeggiators end their own notes first.
void Instrument::releaseUnheldNotes() {
    const bool nothingHeld = midi_.nothingHeld();
    if (nothingHeld && nothingHeld_)
        for (auto& layer : layers_) layer->releaseUnheldNotes();
    nothingHeld_ = nothingHeld;
    for (int i = 0; i < layerCount; ++i) {
        if (midi_.sustainOn()) {
            layers_[i]->keepUnheldNotes();
        } else {
            layers_[i]->releaseLateNotes(midi_.keysHeard(i));
        }
    }
}

void Instrument::setParameter(int index, float value, ChangeSource source) {
    if (!playsInTime) touchChoice(index, value);
    parameters_.setParameter(index, value, source);
    if (!playsInTime && choosesWave(index)) worker_.wavesChosen();
}

void Instrument::loadSmoothedControllers() {
    state_.modwheelSmoothed = parameters_.getParameter(par::Modwheel);
    state_.pitchWheelSmoothed = midi_.pitchWheel();
    state_.channelPressureSmoothed = midi_.channelPressure();
}

}  // namespace vantoric
