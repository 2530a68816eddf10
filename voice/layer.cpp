#include "voice/layer.h"

#include <algorithm>
#include <cmath>

#include "base/numbers.h"
#include "voice/layer_stack.h"

namespace vantoric {

namespace {

namespace par = parameter;

// Voices that each play mode lets sound; the labels above "Polyphonic 16" keep the limit of 16.
constexpr std::array<int, 14> limits = {1, 1, 2, 3, 4, 6, 8, 12, 16, 16, 16, 16, 16, 1};
constexpr int modeMonophonic = 0, modeLegato = 1, modePolyphonic1 = 13;

// Inclusive ranges of the lists `Split` and `VelRange`; rows without a rule accept all.
struct Range {
    int low, high;
};
constexpr std::array<Range, 9> keyRanges = {
    {{0, 127}, {0, 127}, {0, 59}, {60, 127}, {0, 127}, {0, 47}, {48, 59}, {60, 71}, {72, 127}}};
constexpr std::array<Range, 9> velocityRanges = {
    {{0, 127}, {0, 127}, {0, 63}, {64, 127}, {0, 127}, {0, 31}, {32, 63}, {64, 95}, {96, 127}}};

bool inRange(const std::array<Range, 9>& ranges, int row, int value) {
    if (row < 0 || row >= static_cast<int>(ranges.size())) return true;
    return value >= ranges[row].low && value <= ranges[row].high;
}

constexpr float glideThreshold = 0.01f;  // glide above it starts a voice for keys that no oscillator covers

constexpr float slewKeep = 0.96f, slewTake = 0.04f, slewSnap = 0.001f;

}  // namespace

int playModeLimit(int playMode) { return playMode >= 0 && playMode < static_cast<int>(limits.size()) ? limits[playMode] : 16; }
bool isOneVoiceMode(int playMode) { return playMode != modePolyphonic1 && playModeLimit(playMode) < 2; }
bool keyPasses(int split, int note) { return inRange(keyRanges, split, note); }
bool velocityPasses(int velocityRange, int velocity) { return inRange(velocityRanges, velocityRange, velocity); }

Layer::Layer(int index, const EngineState& engine, RandomSources& random, const WaveStore& waves, SleepFunction sleep)
    : index_(index), engine_(engine), random_(random), waves_(waves), sleep_(sleep), bank_(std::make_unique<VoiceBank>(random)) {
    for (auto& insert : inserts_) insert = std::make_unique<Multieffect>(random);
    for (int i = 0; i < voiceCount; ++i) {
        voices_[i] = std::make_unique<Voice>(*this, i);
        Voice& voice = *voices_[i];
        tuned_[i] = {&voice.note, &voice.envelopes[volumeEnvelope], &voice.tuneOffset, &voice.tuneFactor};
    }
}

// ---- what a layer is told -----------------------------------------------------------------------------------

bool Layer::passes(int note, int velocity) const {
    return keyPasses(listAt(par::Split), note) && velocityPasses(listAt(par::VelRange), velocity);
}

void Layer::noteOn(int note, int velocity) {
    if (passes(note, velocity)) arpeggiator_.noteOn(note, velocity, block_.data(), *this);
}

void Layer::noteOff(int note) {
    if (keyPasses(listAt(par::Split), note)) arpeggiator_.noteOff(note, block_.data(), *this);
}

void Layer::releaseUnheldNotes() {
    if (arpeggiator_.hasKeys()) return;
    for (auto& voice : voices_)
        if (voice->envelopes[volumeEnvelope].awaitsNoteOff()) voice->noteOff();
}

void Layer::releaseLateNotes(const std::bitset<128>& keysHeard) {
    keylessTicks_ = keysHeard.any() ? 0 : std::min(keylessTicks_ + 1, lateTicks + 1);
    if (arpeggiator_.hasKeys()) {
        unheldTicks_.fill(0);
        if (keylessTicks_ != lateTicks) return;
        for (int key = 0; key < 128; ++key) arpeggiator_.noteOff(key, block_.data(), *this);
        return;
    }
    const bool anyKeyHolds = oneVoiceMode() && keysHeard.any();
    for (int i = 0; i < voiceCount; ++i) {
        Voice& voice = *voices_[i];
        const bool isHeld = anyKeyHolds || (voice.note >= 0 && keysHeard.test(static_cast<std::size_t>(voice.note)));
        if (isHeld || !voice.envelopes[volumeEnvelope].awaitsNoteOff()) {
            unheldTicks_[i] = 0;
        } else if (++unheldTicks_[i] >= lateTicks) {
            voice.noteOff();
        }
    }
}

void Layer::keepUnheldNotes() {
    unheldTicks_.fill(0);
    keylessTicks_ = 0;
}

void Layer::releaseAllEnvelopes() {
    for (auto& voice : voices_) voice->noteOff();
}

// ---- note-on ------------------------------------------------------------------------------------------------

bool Layer::covered(int note) const {
    for (int i = 0; i < oscillatorCount; ++i)
        if (switchOn(block_[par::On1 + i]) && listAt(par::KeyStar1 + i) <= note && note <= listAt(par::KeyEnd1 + i)) return true;
    return block_[par::GlideSpd] > glideThreshold;
}

void Layer::startNote(int note, int velocity) {
    if (!layerOn) return;
    ticksSinceNote = 0;
    note = std::max(note, 0);
    flipFlop = flipFlop == 0.0f ? 1.0f : 0.0f;
    if (oneVoiceMode())
        startOneVoice(note, velocity);
    else
        startPolyphonic(note, velocity);
}

int Layer::countPassingHeldKeys(int velocity) const {
    int count = 0;
    for (int key = 0; key < 128; ++key)
        if (engine_.heldNote[key] != 0 && passes(key, velocity)) ++count;
    return count;
}

void Layer::startOneVoice(int note, int velocity) {
    for (int i = 1; i < voiceCount; ++i) voices_[i]->cut();
    Voice& first = *voices_[0];
    const bool legato = listAt(par::PlayMode) == modeLegato;
    const int held = countPassingHeldKeys(velocity);
    const bool phraseBegins = legato && held == 1;
    if (phraseBegins || (!legato && held >= 1)) currentNote = note;
    if (first.sounding()) {
        if (held >= 1) moveMonoVoice(note, held == 1 || !legato);
        first.velocity = static_cast<std::int8_t>(velocity);
    } else {
        startVoice(0, note, velocity);
    }
    if (phraseBegins) first.endGlide();
}

void Layer::startVoice(int voice, int note, int velocity) {
    voices_[voice]->noteOn(note, velocity);
    if (observer_ != nullptr) observer_->onVoiceStarted(index_, voice);
}

void Layer::moveMonoVoice(int note, bool retrigger) {
    Voice& voice = *voices_[0];
    for (int i = 0; i < oscillatorCount; ++i)
        voice.pitch[i].target = keyTargetOfMove(engine_.keyIncrement, note, block_[par::KeyFol1 + i]);
    voice.flipFlop = flipFlop;
    voice.randomValue = random_.congruence.unit();
    voice.note = static_cast<std::int8_t>(note);
    if (retrigger) voice.retrigger();
    if (observer_ != nullptr) observer_->onVoiceMoved(index_, note, retrigger);
}

void Layer::startPolyphonic(int note, int velocity) {
    if (!covered(note)) return;
    // High indices first and voice 0 as the blind fallback: this decides which voice cuts when all sound.
    int chosen = voiceCount - 1;
    while (chosen > 0 && voices_[chosen]->sounding()) --chosen;
    startVoice(chosen, note, velocity);
    Voice& voice = *voices_[chosen];
    for (int i = 0; i < oscillatorCount; ++i) voice.pitch[i].position = engine_.keyIncrement[std::clamp(currentNote, 0, 255)];
    voice.smoothedNote = currentNote;
    currentNote = note;
    stealVoices();
}

int Layer::oldestVoice(bool releasedOnly) const {
    int oldest = -1;
    std::int32_t age = 0;
    for (int i = 0; i < voiceCount; ++i) {
        const Voice& voice = *voices_[i];
        const bool eligible = releasedOnly ? voice.state() == Envelope::Release : voice.active();
        if (eligible && voice.age > age) {
            age = voice.age;
            oldest = i;
        }
    }
    return oldest;
}

// Oldest released voices first, then the oldest of all; a stolen voice fades.
void Layer::stealVoices() {
    const int active = activeVoiceCount();
    int excess = active - limit() + (active >= voiceCount ? 1 : 0);
    for (int round = 0; round < active && excess > 0; ++round) {
        const int oldest = oldestVoice(true);
        if (oldest < 0) break;
        voices_[oldest]->envelopes[volumeEnvelope].fade();
        --excess;
    }
    for (; excess > 0; --excess) voices_[std::max(oldestVoice(false), 0)]->envelopes[volumeEnvelope].fade();
}

// ---- note-off -----------------------------------------------------------------------------------------------

void Layer::stopNote(int note) {
    if (!layerOn) return;
    if (oneVoiceMode()) return stopOneVoice();
    for (auto& voice : voices_)
        if (voice->note == note) voice->noteOff();
}

void Layer::stopOneVoice() {
    Voice& first = *voices_[0];
    int held = 0;
    for (int key = 0; key < 128; ++key)
        if (engine_.heldNote[key] != 0 && keyPasses(listAt(par::Split), key)) ++held;
    if (held == 0) first.noteOff();
    const auto currentHeld = [this] { return currentNote >= 0 && currentNote < 128 && engine_.heldNote[currentNote] != 0; };
    if (!currentHeld()) currentNote = first.note;
    if (engine_.pedalRelease || held < 1) return;
    if (!currentHeld()) {
        // The highest held key, whatever the key range: that is how the line falls back.
        for (int key = 127; key >= 0; --key)
            if (engine_.heldNote[key] != 0) {
                currentNote = key;
                break;
            }
    }
    moveMonoVoice(currentNote, currentNote != first.note && listAt(par::PlayMode) != modeLegato);
}

// ---- the control tick ---------------------------------------------------------------------------------------

void Layer::tick() {
    const bool on = switchOn(block_[par::Layer1On + index_]);
    if (on && !layerOn) reset();
    layerOn = on;
    if (!on || engine_.flags.engineLocked.isSet()) return;
    ++ticksSinceNote;
    slew();
    arpeggiator_.tick(block_.data(), engine_, *this);
    retune();
    tickVoices();
    feedInserts();
}

void Layer::blockChanged() { matrix_.compile(block_.data(), engine_); }

void Layer::slew() {
    for (const int n : slewedParameters) {
        const float target = block_[n];
        const float value = smoothed_[n] * slewKeep + target * slewTake;
        const float distance = value < target ? target - value : value - target;
        smoothed_[n] = distance < slewSnap ? target : value;
    }
}

LaneMask Layer::soundingMask() const {
    unsigned mask = 0;
    for (int i = 0; i < voiceCount; ++i)
        if (voices_[i]->sounding()) mask |= 1u << i;
    return static_cast<LaneMask>(mask);
}

// What all voices of this tick have in common.
void Layer::prepareVoices() {
    matrix_.compile(block_.data(), engine_);
    modBase_.prepare(block_.data(), smoothed_.data());
    bank_->output.setMode(engine_.soundMode, engine_.internalRateExact);
    present_.glide = glideFactor(block_[par::GlideSpd]);
    present_.limit = limit();
    present_.stepShape = listAt(par::StepShap);
    for (int i = 0; i < oscillatorCount; ++i) present_.loopOn[i] = listAt(par::LoopMod1 + i) == loopModeLoop;
    for (int f = 0; f < filterCount; ++f) present_.filterType[f] = listAt(par::FilType1 + f);
    present_.serial = switchOn(block_[par::FilSerial]);
    present_.filterRate = std::trunc(engine_.internalRate);
}

void Layer::tickVoices() {
    for (int k = 0; k < 5; ++k) {
        // The mix starts from its slewed value, the parameters from the stored ones: what the voices start from.
        const float base = k == 0 ? smoothed_[par::FxInMix] : block_[par::FxInMix + k];
        insertFeed_[k] = {base, base, base};
    }
    const LaneMask sounding = soundingMask();
    if (sounding == 0) return;
    prepareVoices();
    for (int i = 0; i < voiceCount; ++i) {
        if (((sounding >> i) & 1) == 0) continue;
        Voice& voice = *voices_[i];
        voice.tick();
        for (int k = 0; k < 5; ++k) {
            InsertFeed& feed = insertFeed_[k];
            feed.lowest = std::min(feed.lowest, voice.mod[par::FxInMix + k]);
            feed.highest = std::max(feed.highest, voice.mod[par::FxInMix + k]);
        }
    }
}

void Layer::feedInserts() {
    const auto finish = [this](Multieffect& slot) {
        slot.setSampleRate(engine_.internalRate);
        slot.setTempo(static_cast<float>(engine_.tempoBpm), engine_.songPosition);
    };
    Multieffect& first = *inserts_[0];
    first.setType(listAt(par::FxInType));
    for (int k = 0; k < 5; ++k)
        first.setParameter(k, extremeValue(insertFeed_[k].base, insertFeed_[k].lowest, insertFeed_[k].highest));
    finish(first);
    Multieffect& second = *inserts_[1];
    second.setType(listAt(par::FxIn2Type));
    for (int k = 0; k < 5; ++k) second.setParameter(k, block_[par::FxIn2Mix + k]);
    finish(second);
}

void Layer::retune() { retuner_.retune(tuned_, engine_.microtuning, oneVoiceMode()); }

// ---- audio --------------------------------------------------------------------------------------------------

void Layer::renderBlock(float* left, float* right, int count) {
    Layer* const self = this;
    renderLayers({&self, 1}, left, right, count);
}

bool Layer::beginBlock(int count) {
    if (!layerOn || count <= 0) return false;
    busy_.set();
    std::fill_n(scratchLeft_.begin(), count, 0.0f);
    std::fill_n(scratchRight_.begin(), count, 0.0f);
    sounding_ = soundingMask();
    return true;
}

DrawStages Layer::drawStages() const {
    DrawStages stages = bank_->drawStages(sounding_);
    for (int i = 0; i < voiceCount; ++i)
        if (((sounding_ >> i) & 1) != 0 && voices_[i]->oscillatorsDraw()) stages.add(DrawStage::oscillators);
    for (const auto& insert : inserts_)
        if (insert->type() != 0) stages.add(DrawStage::inserts);
    return stages;
}

void Layer::gatherOscillators(OscillatorRuns& runs) {
    for (int i = 0; i < voiceCount; ++i)
        if (((sounding_ >> i) & 1) != 0) voices_[i]->gatherOscillators(runs);
}

void Layer::endBlock(float* left, float* right, int count) {
    for (auto& insert : inserts_) insert->process(scratchLeft_.data(), scratchRight_.data(), count);
    for (int i = 0; i < count; ++i) {
        left[i] += scratchLeft_[i];
        right[i] += scratchRight_[i];
    }
    busy_.clear();
}

// ---- resets and counts --------------------------------------------------------------------------------------

void Layer::reset() {
    waitUntilClear(busy_, 1000, 1, sleep_);
    for (const int n : slewedParameters) smoothed_[n] = block_[n];
    for (auto& voice : voices_) voice->reset();
    currentNote = 60;
    flipFlop = 1.0f;
    arpeggiator_.reset(block_.data());
    for (auto& insert : inserts_) insert->clearState();
    ticksSinceNote = 0;
}

void Layer::clearArpeggiator() { arpeggiator_.reset(block_.data()); }

int Layer::activeVoiceCount() const {
    return static_cast<int>(std::count_if(voices_.begin(), voices_.end(), [](const auto& voice) { return voice->active(); }));
}

int Layer::heldKeyCount() const {
    return static_cast<int>(
        std::count_if(engine_.heldNote.begin(), engine_.heldNote.end(), [](std::uint8_t held) { return held != 0; }));
}

int Layer::oldestActiveVoice() const { return oldestVoice(false); }

}  // namespace vantoric
