#include "voice/voice.h"

#include <algorithm>
#include <cmath>

#include "base/numbers.h"
#include "base/parameters.h"
#include "samples/sample_kernels.h"
#include "sound/kernels.h"
#include "sound/oscillator_control.h"
#include "voice/layer.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr int ticksPerRefresh = 100;
constexpr float audible = 0.005f;     // volume or FM depth below which an oscillator does nothing
constexpr float clickAttack = 0.02f;  // attacks below it start at full gain

// Volume, filter, aux 1, aux 2 stand side by side in every family of envelope parameters.
static_assert(par::AttAux2 - par::AttVol == auxEnvelope2 && par::ShapAux2 - par::ShapVol == auxEnvelope2);

}  // namespace

Voice::Voice(Layer& layer, int index) : layer_(layer), index_(index) {
    for (int i = 0; i < oscillatorCount; ++i) oscillators[i].oscillatorIndex = static_cast<std::uint8_t>(i);
}

// ---- note-on ------------------------------------------------------------------------------------------------

void Voice::noteOn(int newNote, int newVelocity) {
    const EngineState& engine = layer_.engine();
    if (engine.flags.engineLocked.isSet()) return;
    tuneFactor = 1.0;
    velocity = static_cast<std::int8_t>(newVelocity);
    note = static_cast<std::int8_t>(newNote);
    age = 0;
    ticksToRefresh = 0;
    flipFlop = layer_.flipFlop;
    // The last number has no function.
    std::copy_n(layer_.block().begin() + globalParameterCount, layerParameterEnd - 1 - globalParameterCount,
                mod.begin() + globalParameterCount);
    modSeen_ = 0;
    startEnvelopes();
    randomValue = layer_.random().congruence.unit();
    layer_.bank().output.clearLevels(index_);
    firstTick_ = true;
    impulse = 1.0f;
    decays.restart();
    voiceNumber = static_cast<float>(layer_.activeVoiceCount()) / static_cast<float>(layer_.limit());
    for (int i = 0; i < lfoCount; ++i) startLfo(i);
    startStepLfo();
    for (FilterBank& filter : layer_.bank().filters) filter.reset(index_);
    setUpDistortions();
    drift_ = Drift::forMicrotuning(engine.microtuning);
    analogMode = false;
    for (int i = 0; i < oscillatorCount; ++i) startOscillator(i);
    layer_.bank().setAnalog(index_, analogMode);
}

void Voice::startEnvelopes() {
    for (int which = 0; which < envelopeCount; ++which) {
        envelopes[which].start();
        setUpEnvelope(which);
    }
}

void Voice::setUpEnvelope(int which) {
    envelopes[which].setup(mod[par::AttVol + which], mod[par::HoldVol + which], mod[par::DecVol + which],
                           mod[par::SusVol + which], mod[par::RelVol + which], mod[par::ShapVol + which]);
}

Lfo::Start Voice::lfoStart(int which) const {
    const EngineState& engine = layer_.engine();
    return {.wave = listAt(par::LfoWave1 + which),
            .speed = mod[par::LfoSpd1 + which],
            .startPhase = mod[par::LfoPhas1 + which],
            .note = note,
            .fade = mod[par::LfoFade1 + which],
            .tempo = engine.tempoBpm,
            .songPosition = engine.songPosition,
            .tickRate = engine.ticksPerSecond};
}

void Voice::startLfo(int which) {
    const int oldest = layer_.oldestActiveVoice();
    lfos[which].noteOn(listAt(par::LfoMode1 + which), lfoStart(which), layer_.activeVoiceCount(),
                       oldest < 0 ? nullptr : &layer_.voice(oldest).lfos[which]);
}

void Voice::startStepLfo() {
    const EngineState& engine = layer_.engine();
    const int oldest = layer_.oldestActiveVoice();
    std::copy_n(&mod[par::Step1], stepLfo.steps.size(), stepLfo.steps.begin());
    stepLfo.noteOn(listAt(par::StepMode),
                   {.shape = listAt(par::StepShap),
                    .speed = mod[par::StepSped],
                    .stepCount = mod[par::Steps],
                    .tempo = engine.tempoBpm,
                    .songPosition = engine.songPosition,
                    .tickRate = engine.ticksPerSecond},
                   layer_.activeVoiceCount(), oldest < 0 ? nullptr : &layer_.voice(oldest).stepLfo);
}

void Voice::startOscillator(int i) {
    pitch[i].target = keyTarget(layer_.engine().keyIncrement, note, mod[par::KeyFol1 + i]);
    pitch[i].position = 0.0;  // no glide, unless the layer names a note to come from
    pitch[i].tuning = 1.0;
    kernels_[i] = {};
    oscillatorOn[i] = prepared_[i] = oscillatorActive(i);
    if (!oscillatorOn[i]) return;
    prepareOscillatorState(i);
    chooseKernelOf(i);
    if (listAt(par::SynType1 + i) == analogType) analogMode = true;
}

// What an oscillator needs before its first sample: at the note-on, or when it comes into a sounding note.
void Voice::prepareOscillatorState(int i) {
    RandomSources& random = layer_.random();
    OscillatorState& state = oscillators[i];
    state = OscillatorState();
    state.oscillatorIndex = static_cast<std::uint8_t>(i);
    layer_.bank().oscillators.clearTone(index_, i);
    drawStartPhases(state, random.congruence);
    pitch[i].startDrift(drift_, random.congruence);
    state.synced = i > 0 && syncedBy(mod[par::Sync1 + i - 1]);
    const int synType = listAt(par::SynType1 + i);
    vantoric::prepareOscillator(state,
                                {.synType = synType,
                                 .wtWave = listAt(par::WTWave1 + i),
                                 .ssWave = listAt(par::SSWave1 + i),
                                 .noiWave = listAt(par::NoiWave1 + i),
                                 .anaWave = listAt(par::AnaWave1 + i),
                                 .customWave = &layer_.customWave(i)},
                                layer_.waves());
    if (synType == sampleType) writeSampleGuards(layer_.sample(i), listAt(par::LoopMod1 + i) == loopModeLoop);
    if (synType == analogType) pitch[i].tuning = drawAnalogTuning(i, i > 0 ? pitch[i - 1].tuning : 1.0, random.congruence);
}

void Voice::chooseKernelOf(int i) {
    hearsPrevious_[i] = oscillatorModulated(i);
    const Kernel kernel = chooseKernel({.synType = listAt(par::SynType1 + i),
                                        .quality = layer_.engine().quality,
                                        .modulated = hearsPrevious_[i],
                                        .internalRate = layer_.engine().internalRate,
                                        .ssWave = listAt(par::SSWave1 + i),
                                        .noiWave = listAt(par::NoiWave1 + i),
                                        .hasSample = layer_.sample(i).length != 0,
                                        .anaWave = listAt(par::AnaWave1 + i)},
                                       sampleKernels);
    if (kernel != kernels_[i].kernel) kernels_[i] = batchedKernel(kernel);
}

bool Voice::oscillatorActive(int i) const {
    if (!(mod[par::On1 + i] >= 0.5f)) return false;
    if (note < listAt(par::KeyStar1 + i) || note > listAt(par::KeyEnd1 + i)) return false;
    if (listAt(par::SynType1 + i) == sampleType && layer_.sample(i).length == 0) return false;
    if (mod[par::Vol1 + i] > audible || layer_.matrix().targets(par::Vol1 + i)) return true;
    if (i + 1 >= oscillatorCount) return false;
    return mod[par::Fm1 + i] > audible || switchOn(mod[par::Sync1 + i]) || layer_.matrix().targets(par::Fm1 + i);
}

bool Voice::oscillatorModulated(int i) const {
    if (i == 0) return false;
    const int fm = par::Fm1 + i - 1;
    return vantoric::oscillatorModulated(i, mod[par::On1 + i - 1], mod[fm], mod[par::Sync1 + i - 1], layer_.matrix().targets(fm));
}

void Voice::setUpDistortions() {
    for (int i = 0; i < filterCount; ++i) {
        layer_.bank().distortions[i].setType(index_, listAt(par::DisType1 + i));
        layer_.bank().noteDistortionType(i, index_, listAt(par::DisType1 + i));
        layer_.bank().distortions[i].setSampleRate(layer_.engine().internalRate);
    }
}

void Voice::refreshKernels() {
    setUpDistortions();
    for (int i = 0; i < oscillatorCount; ++i) {
        oscillatorOn[i] = oscillatorActive(i);
        if (oscillatorOn[i] && !prepared_[i]) {
            prepareOscillatorState(i);
            prepared_[i] = true;
        }
        if (i > 0) oscillators[i].synced = syncedBy(mod[par::Sync1 + i - 1]);
        chooseKernelOf(i);
    }
}

// ---- changes of a sounding note -----------------------------------------------------------------------------

void Voice::noteOff() {
    for (Envelope& envelope : envelopes) envelope.noteOff();
}

void Voice::retrigger() {
    for (Envelope& envelope : envelopes) envelope.retrigger();
    impulse = 1.0f;
    decays.restart();
    for (int i = 0; i < lfoCount; ++i) lfos[i].retrigger(listAt(par::LfoMode1 + i), lfoStart(i));
    constexpr int single = 0;
    for (int i = 0; i < oscillatorCount; ++i)
        if (listAt(par::SynType1 + i) == sampleType && listAt(par::LoopMod1 + i) == single) restartSample(i);
}

void Voice::restartSample(int i) {
    const float start = drawStart(mod[par::Start1 + i], layer_.random().congruence);
    oscillators[i].phase = sampleStart(start, static_cast<std::uint32_t>(layer_.sample(i).length));
}

void Voice::endGlide() {
    smoothedNote = note;
    for (OscillatorPitch& oscillator : pitch) oscillator.jump(oscillator.target);
}

void Voice::cut() { envelopes[volumeEnvelope].silence(); }

void Voice::reset() {
    for (Envelope& envelope : envelopes) envelope.silence();
    for (int i = 0; i < oscillatorCount; ++i) {
        oscillators[i] = OscillatorState();
        oscillators[i].oscillatorIndex = static_cast<std::uint8_t>(i);
        pitch[i] = OscillatorPitch();
        kernels_[i] = {};
        oscillatorOn[i] = prepared_[i] = false;
    }
    smoothedNote = 60.0;
    tuneOffset = 0.0;
    tuneFactor = 1.0;
    layer_.bank().reset(index_);
    std::copy(layer_.block().begin(), layer_.block().end(), mod.begin());
    modSeen_ = 0;
    analogMode = false;
    age = neverPlayedAge;
}

// ---- the control tick ---------------------------------------------------------------------------------------

void Voice::tick() {
    ++age;
    if (ticksToRefresh < 1) {
        ticksToRefresh = ticksPerRefresh;
        refreshKernels();
    }
    --ticksToRefresh;
    stepModulators();
    evaluateMatrix();
    impulse = 0.0f;
    decays.step();
    tickOscillators();
    tickFilters();
    tickOutput();
}

void Voice::stepModulators() {
    // Envelopes and speeds still see what the matrix left on the tick before.
    for (int which = 0; which < envelopeCount; ++which) {
        setUpEnvelope(which);
        envelopes[which].step();
    }
    for (int i = 0; i < lfoCount; ++i) {
        lfos[i].setSpeed(mod[par::LfoSpd1 + i]);
        lfos[i].step();
    }
    std::copy_n(&layer_.block()[par::Step1], stepLfo.steps.size(), stepLfo.steps.begin());
    stepLfo.shape = layer_.present().stepShape;
    stepLfo.advance();
}

void Voice::tickOscillators() {
    const EngineState& engine = layer_.engine();
    OscillatorBank& bank = layer_.bank().oscillators;
    const LayerTick& tick = layer_.present();
    const float glide = tick.glide;
    smoothedNote = smoothNote(smoothedNote, note, glide);
    const double shared =
        voicePitchFactor(mod[par::Pitch], mod[par::Fine], layer_.arpeggiator().slideFactor(), tuneFactor, engine.pitchBendFactor);
    for (int i = 0; i < oscillatorCount; ++i) {
        bank.setMix(index_, i, mixGains(oscillatorOn[i], mod[par::Vol1 + i], mod[par::FiltMix1 + i]));
        if (!oscillatorOn[i]) continue;
        OscillatorState& state = oscillators[i];
        OscillatorPitch& osc = pitch[i];
        if (state.phaseInit != 0) {
            setupFirstTickPhases(state, mod[par::Start1 + i], mod[par::Pw1 + i], listAt(par::SSWave1 + i),
                                 listAt(par::SynType1 + i), static_cast<std::uint32_t>(layer_.sample(i).length),
                                 layer_.random().congruence);
            state.phaseInit = 0;
        }
        const double drift = osc.stepDrift(drift_, layer_.random().congruence);
        osc.stepGlide(glide);
        const double d = oscillatorIncrement(osc,
                                             {.oct = mod[par::Oct1 + i],
                                              .interv = mod[par::Interv1 + i],
                                              .semi = mod[par::Semi1 + i],
                                              .detune = mod[par::Detune1 + i],
                                              .pitch = mod[par::Pitch1 + i],
                                              .pitchOct = mod[par::PitchOct1 + i]},
                                             drift, shared);
        frequency[i] = d;
        state.increment = increment24(d);
        state.loopOn = tick.loopOn[i];
        state.scanIncrement = scanIncrement(d, mod[par::Pw1 + i]);
        setPosition(state, mod[par::Pw1 + i]);
        if (i > 0) state.fmDepthStep = fmDepthStep(fmDepthTarget(mod[par::Fm1 + i - 1]), state.fmDepth, engine.tickSamples);
        bank.setTone(index_, i, toneCoefficient(d), toneGains(mod[par::Timbre1 + i]));
    }
}

void Voice::tickFilters() {
    const LayerTick& tick = layer_.present();
    const float e = envelopes[filterEnvelope].clampLevel();
    VoiceBank& bank = layer_.bank();
    for (int i = 0; i < filterCount; ++i) {
        bank.filters[i].setup(
            index_, {.sampleRate = tick.filterRate,
                     .tickSamples = layer_.engine().tickSamples,
                     .type = tick.filterType[i],
                     .cutoff = voiceCutoff(smoothedNote, mod[par::FilKey1 + i], mod[par::FilEnv1 + i], mod[par::Cutoff1 + i], e),
                     .resonance = mod[par::Reso1 + i],
                     .analog = mod[par::FilAnalo]});
        bank.noteFilterType(i, index_, tick.filterType[i]);
        bank.distortions[i].setDrive(index_, mod[par::Drive1 + i]);
    }
    bank.setSerial(index_, tick.serial);
}

void Voice::tickOutput() {
    const OutputTargets targets = outputTargets({.envelope = envelopes[volumeEnvelope].clampLevel(),
                                                 .layerVolume = mod[par::LayerVol],
                                                 .pan1 = mod[par::FilPan1],
                                                 .pan2 = mod[par::FilPan1 + 1],
                                                 .volume1 = mod[par::FilVol1],
                                                 .volume2 = mod[par::FilVol1 + 1],
                                                 .ringmod = mod[par::Ringmod]});
    layer_.bank().output.setTargets(index_, targets, layer_.engine().tickSamples, firstTick_ && mod[par::AttVol] < clickAttack);
    firstTick_ = false;
}

void Voice::evaluateMatrix() {
    auto stepValue = [this] { return stepLfo.value(layer_.random().congruence); };
    const MatrixInputs inputs{.lfo = {lfos[0].output, lfos[1].output, lfos[2].output},
                              .stepLfo = stepValue,
                              .envelopes = envelopes,
                              .decays = decays,
                              .impulse = impulse,
                              .randomValue = randomValue,
                              .flipFlop = flipFlop,
                              .note = note,
                              .velocity = velocity,
                              .voiceNumber = voiceNumber,
                              .limit = layer_.present().limit,
                              .random = layer_.random()};
    runMatrix(layer_.matrix(), layer_.modBase(), inputs, mod.data(), modSeen_);
}

// ---- audio --------------------------------------------------------------------------------------------------

bool Voice::oscillatorsDraw() const {
    for (int i = 0; i < oscillatorCount; ++i)
        if (oscillatorOn[i] && kernels_[i].mayDraw()) return true;
    return false;
}

void Voice::gatherOscillators(OscillatorRuns& runs) {
    OscillatorBank& bank = layer_.bank().oscillators;
    for (int i = 0; i < oscillatorCount; ++i) {
        if (!oscillatorOn[i]) continue;
        const auto& previous = bank.buffer(index_, (i + oscillatorCount - 1) % oscillatorCount);
        runs.kernels(i, hearsPrevious_[i])
            .add(kernels_[i], bank.buffer(index_, i).data(), oscillators[i], previous.data(), &layer_.sample(i));
        if (!bank.toneIsHeard(index_, i)) continue;
        runs.addTone(bank.toneRun(index_, i), i, i + 1 < oscillatorCount && hearsPrevious_[i + 1]);
    }
}

}  // namespace vantoric
