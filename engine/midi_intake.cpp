#include "engine/midi_intake.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/pitch_wheel.h"

namespace vantoric {

namespace {

constexpr int kindMask = 0xf0;
constexpr int kindNoteOff = 0x80;
constexpr int kindNoteOn = 0x90;
constexpr int kindController = 0xb0;
constexpr int kindProgram = 0xc0;
constexpr int kindPressure = 0xd0;
constexpr int kindWheel = 0xe0;

constexpr int controllerModwheel = 1;
constexpr int controllerSustain = 64;
constexpr int controllerSoundOff = 120;
constexpr int controllerReset = 121;
constexpr int controllerNotesOff = 123;

bool isKeyBegin(const MidiMessage& m) { return (m.status & kindMask) == kindNoteOn && m.data2 != 0; }
bool isKeyEnd(const MidiMessage& m) {
    return (m.status & kindMask) == kindNoteOff || ((m.status & kindMask) == kindNoteOn && m.data2 == 0);
}
std::uint16_t bitOf(int channel) { return static_cast<std::uint16_t>(1u << channel); }

}  // namespace

MidiIntake::MidiIntake(EngineState& state, ParameterModel& parameters, ControllerMap& ccMap, MidiListener& listener)
    : state_(state), parameters_(parameters), ccMap_(ccMap), listener_(listener) {}

MidiIntake::Word MidiIntake::packed(const MidiMessage& m) {
    return static_cast<Word>(static_cast<std::uint32_t>(m.offset)) << 32 | Word{m.data2} << 16 | Word{m.data1} << 8 | m.status;
}

MidiMessage MidiIntake::unpacked(Word word) {
    return {static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8), static_cast<std::uint8_t>(word >> 16),
            static_cast<std::int32_t>(static_cast<std::uint32_t>(word >> 32))};
}

void MidiIntake::receive(std::uint8_t status, std::uint8_t& data1, std::uint8_t& data2, std::int32_t offset) {
    if (data1 > 127) data1 = 0;
    if (data2 > 127) data2 = 0;
    if ((status & kindMask) == kindController) {
        const int learning = learnPending();
        if (learning != ControllerMap::none) {
            ccMap_.set(data1, learning);
            setLearnPending(ControllerMap::none);
            ccMapDirty_.set();
        }
        const int parameter = ccMap_.get(data1);
        if (parameter != ControllerMap::none)
            parameters_.setParameter(parameter, static_cast<float>(data2) / 128.0f, ChangeSource::midi);
    }
    enqueueMidi(status, data1, data2, offset);
}

void MidiIntake::enqueueMidi(std::uint8_t status, std::uint8_t data1, std::uint8_t data2, std::int32_t offset) {
    const MidiMessage message{status, data1, data2, offset};
    // Struck again, it has an end of its own to come.
    if (isKeyBegin(message))
        lostEnds_[data1 & 127].fetch_and(static_cast<std::uint16_t>(~bitOf(status & 0x0f)), std::memory_order_relaxed);
    int place = 0;
    while (place < queuePlaces && queued(place).status != 0) ++place;
    const bool isFull = place == queuePlaces;
    if (isFull) place = 0;
    blocksWaited_[place].store(0, std::memory_order_relaxed);
    const Word lost = queue_[place].exchange(packed(message), std::memory_order_relaxed);
    if (const MidiMessage end = unpacked(lost); isFull && isKeyEnd(end)) loseEnd(end.data1 & 127, end.status & 0x0f);
}

void MidiIntake::loseEnd(int key, int channel) {
    lostEnds_[key].fetch_or(bitOf(channel), std::memory_order_relaxed);
    hasLostEnds_.set();
}

void MidiIntake::drainMidiQueue(int pos) {
    if (state_.flags.engineLocked.isSet()) return;
    if (std::exchange(blockBegan_, false)) {
        if (hasLostEnds_.isSet()) makeUpForLostEnds();
        hurryWhatWaits();
    }
    for (int place = 0; place < queuePlaces; ++place) {
        const MidiMessage message = queued(place);
        if (message.status == 0 || message.offset > pos) continue;
        act(message);
        queue_[place].store(0, std::memory_order_relaxed);
    }
}

// A key that is only about to begin ends a block later.
void MidiIntake::makeUpForLostEnds() {
    hasLostEnds_.clear();
    for (int key = 0; key < 128; ++key) {
        const unsigned channels = lostEnds_[key].exchange(0, std::memory_order_relaxed);
        for (int channel = 0; channels >> channel != 0; ++channel) {
            if ((channels >> channel & 1u) == 0) continue;
            if (isBeginQueued(key, channel)) {
                loseEnd(key, channel);
            } else {
                actOnKeyRelease(key, channel);
            }
        }
    }
}

bool MidiIntake::isBeginQueued(int key, int channel) const {
    for (int place = 0; place < queuePlaces; ++place) {
        const MidiMessage message = queued(place);
        if (isKeyBegin(message) && message.data1 == key && (message.status & 0x0f) == channel) return true;
    }
    return false;
}

void MidiIntake::hurryWhatWaits() {
    constexpr int patience = 2;
    for (int place = 0; place < queuePlaces; ++place) {
        Word word = queue_[place].load(std::memory_order_relaxed);
        if (word == 0) continue;
        if (blocksWaited_[place].load(std::memory_order_relaxed) < patience) {
            blocksWaited_[place].fetch_add(1, std::memory_order_relaxed);
            continue;
        }
        MidiMessage message = unpacked(word);
        message.offset = 0;
        queue_[place].compare_exchange_strong(word, packed(message), std::memory_order_relaxed);
    }
}

void MidiIntake::act(const MidiMessage& message) {
    if (message.data1 > 127) return;
    const int channel = message.status & 0x0f;
    switch (message.status & kindMask) {
        case kindNoteOff: actOnKeyRelease(message.data1, channel); break;
        case kindNoteOn:
            if (message.data2 == 0) {
                actOnKeyRelease(message.data1, channel);
            } else {
                noteOn(message.data1, clampTo(static_cast<int>(message.data2), 1, 127), channel);
            }
            break;
        case kindController: actOnController(message.data1, message.data2); break;
        case kindProgram: listener_.programPending(message.data1); break;
        case kindPressure: channelPressure_ = static_cast<float>(message.data1) / 128.0f; break;
        case kindWheel: turnWheel(message.data1, message.data2); break;
        default: break;
    }
}

void MidiIntake::turnWheel(int lsb, int msb) {
    pitchWheel_ = pitchWheelPosition(lsb, msb);
    state_.pitchBendFactor = pitchBendFactorOf(pitchWheel_, parameters_.getParameter(parameter::PitchWhl));
}

// A key whose own channel does not hold it was begun on another: one end takes one key off.
void MidiIntake::takeOff(int key, int channel) {
    const auto at = static_cast<std::size_t>(key);
    const auto holdsIt = [at](const Keys& keys) { return keys.test(at); };
    Keys& own = down_[static_cast<std::size_t>(channel)];
    if (holdsIt(own)) {
        own.reset(at);
    } else if (const auto other = std::find_if(down_.begin(), down_.end(), holdsIt); other != down_.end()) {
        other->reset(at);
    }
}

void MidiIntake::actOnKeyRelease(int key, int channel) {
    takeOff(key, channel);
    if (sustainOn_) {
        sustainedOff_[key] = 1;
    } else {
        noteOff(key, channel);
    }
}

void MidiIntake::actOnController(int number, int value) {
    const float position = static_cast<float>(value) / 128.0f;
    state_.ccValue[number] = position;
    switch (number) {
        case controllerModwheel: parameters_.setParameter(parameter::Modwheel, position, ChangeSource::midi); break;
        case controllerSustain:
            if (value >= 64) {
                sustainOn_ = true;
            } else {
                releasePedal();
            }
            break;
        case controllerSoundOff:
        case controllerNotesOff:
            listener_.allNotesOff();
            listener_.resetEngine();
            break;
        case controllerReset: resetControllers(); break;
        default: break;
    }
}

// The deferred note-offs go out on channel 0, whichever channel the keys were played on.
void MidiIntake::releasePedal() {
    state_.pedalRelease = true;
    sustainOn_ = false;
    for (int key = 0; key < 128; ++key) {
        if (sustainedOff_[key] == 0) continue;
        noteOff(key, 0);
        sustainedOff_[key] = 0;
    }
    state_.pedalRelease = false;
}

void MidiIntake::resetControllers() {
    state_.pitchBendFactor = 1.0f;
    state_.ccValue.fill(0.0f);
    channelPressure_ = 0.0f;
    pitchWheel_ = 0.5f;
}

bool MidiIntake::layerHears(int layer, int channel) const {
    const int split = parameters_.getListIndex(hostIndex(parameter::MidiSpli, layer));
    return split == 0 || split == channel + 1;
}

void MidiIntake::noteOn(int key, int velocity, int channel) {
    state_.heldNote[key] = 1;
    down_[static_cast<std::size_t>(channel)].set(static_cast<std::size_t>(key));
    for (int layer = 0; layer < layerCount; ++layer) {
        if (layerHears(layer, channel)) listener_.noteOn(layer, key, velocity);
    }
}

void MidiIntake::noteOff(int key, int channel) {
    state_.heldNote[key] = 0;
    for (int layer = 0; layer < layerCount; ++layer) {
        if (layerHears(layer, channel)) listener_.noteOff(layer, key);
    }
}

void MidiIntake::allNotesOff() {
    state_.heldNote.fill(0);
    down_.fill({});
    for (int key = 0; key < 127; ++key) {
        for (int layer = 0; layer < layerCount; ++layer) listener_.noteOff(layer, key);
    }
}

bool MidiIntake::nothingHeld() const {
    return !sustainOn_ && std::none_of(down_.begin(), down_.end(), [](const auto& keys) { return keys.any(); });
}

MidiIntake::Keys MidiIntake::keysHeard(int layer) const {
    const int split = parameters_.getListIndex(hostIndex(parameter::MidiSpli, layer));
    if (split > 16) return {};
    if (split > 0) return down_[static_cast<std::size_t>(split - 1)];
    return std::accumulate(down_.begin(), down_.end(), Keys{}, std::bit_or<>());
}

void MidiIntake::resetPedal() {
    sustainOn_ = false;
    state_.pedalRelease = false;
    sustainedOff_.fill(0);
}

}  // namespace vantoric
