// MIDI on its way from the host to the layers: the controller map acts at once, everything else waits
// in a table until the tick that reaches it.
#pragma once

#include <array>
#include <atomic>
#include <bitset>
#include <cstdint>

#include "base/engine_state.h"
#include "engine/controller_map.h"
#include "parameters/parameter_model.h"

namespace vantoric {

// What becomes of the messages. Called from whichever thread drains the queue or stops the notes.
class MidiListener {
public:
    // A key for one layer (0 to 3), before the layer's own filter. key 0 to 127, velocity 1 to 127.
    virtual void noteOn(int layer, int key, int velocity) = 0;
    virtual void noteOff(int layer, int key) = 0;
    // Controllers 120 and 123, in this order.
    virtual void allNotesOff() = 0;
    virtual void resetEngine() = 0;
    // A program change, 0 to 127.
    virtual void programPending(int number) = 0;

protected:
    ~MidiListener() = default;
};

// One place of the queue.
struct MidiMessage {
    std::uint8_t status = 0;  // 0: the place is free
    std::uint8_t data1 = 0;
    std::uint8_t data2 = 0;
    std::int32_t offset = 0;  // host frames
};

// Key table, bend factor, controllers and the pedal's release mark are written into the EngineState,
// where the voices read them.
class MidiIntake {
public:
    static constexpr int queuePlaces = 256;
    using Keys = std::bitset<128>;

    MidiIntake(EngineState& state, ParameterModel& parameters, ControllerMap& ccMap, MidiListener& listener);

    // One MIDI event of the host: learns and applies the controller map at once, then queues. Data bytes
    // with the high bit set are replaced by 0, in the caller's event as well. offset: host frames from the
    // start of the block. Any thread, usually the audio thread: two that meet cost at most one event.
    void receive(std::uint8_t status, std::uint8_t& data1, std::uint8_t& data2, std::int32_t offset);

    // Queues an event at the first free place; if all 256 are taken place 0 is overwritten. A key's end that is lost by this
    // is made up for at the begin of the next block, so that no note hangs. Any thread: two that meet cost at most one event,
    // and an event is never torn.
    void enqueueMidi(std::uint8_t status, std::uint8_t data1, std::uint8_t data2, std::int32_t offset);

    // A block of the host begins. What two blocks with a tick have not reached, as it lay beyond them, is due at once in the
    // third: blocks may stay shorter for good. Audio thread.
    void beginBlock() { blockBegan_ = true; }

    // Acts on every queued event whose offset is not above `pos` (host frames), in the order of the places,
    // and frees them. Does nothing while `engineLocked` is set. Audio thread.
    void drainMidiQueue(int pos);

    // Arms MIDI learn: the next controller gets this parameter. ControllerMap::none disarms. Any thread.
    void setLearnPending(int parameter) { learnPending_.store(parameter, std::memory_order_relaxed); }
    int learnPending() const { return learnPending_.load(std::memory_order_relaxed); }
    // True once a controller has been learned, or the window has changed the map, until the window has taken note.
    bool ccMapDirty() const { return ccMapDirty_.isSet(); }
    // The window's thread: tells of a change of its own; whether there was one since it last asked. A change that falls
    // into the asking is told now or by the next one.
    void setCcMapDirty() { ccMapDirty_.set(); }
    bool takeCcMapDirty() {
        const bool wasDirty = ccMapDirty_.isSet();
        if (wasDirty) ccMapDirty_.clear();
        return wasDirty;
    }

    // Sets the key table and offers the key to each layer whose `MidiSpli` is 0 or channel + 1.
    // key 0 to 127, velocity 1 to 127, channel 0 to 15. Audio thread.
    void noteOn(int key, int velocity, int channel);
    // Clears it there, and offers the end to the same layers. Audio thread.
    void noteOff(int key, int channel);

    // Clears the key table and sends a note-off for keys 0 to 126 (127 is left out) to all four layers,
    // whatever their channel. Audio thread, or while the block is silent.
    void allNotesOff();

    // The intake's share of an engine reset: sustain off, deferred note-offs forgotten. The queue stays.
    void resetPedal();

    // What stands now: audio thread, or any other while the block is silent.
    float pitchWheel() const { return pitchWheel_; }            // 0 to 1, 0.5 is the centre
    float channelPressure() const { return channelPressure_; }  // 0 to 1
    bool sustainOn() const { return sustainOn_; }
    // Whether no key is held on any channel and the pedal is up.
    bool nothingHeld() const;
    // The keys that are down on the channels that a layer (0 to 3) hears.
    Keys keysHeard(int layer) const;
    bool sustainedOff(int key) const { return sustainedOff_[key] != 0; }
    MidiMessage queued(int place) const { return unpacked(queue_[place].load(std::memory_order_relaxed)); }

private:
    // A place is one word, so that a thread which looks in at any moment sees a whole event or none.
    using Word = std::uint64_t;
    static Word packed(const MidiMessage& message);
    static MidiMessage unpacked(Word word);

    void loseEnd(int key, int channel);
    bool isBeginQueued(int key, int channel) const;
    void makeUpForLostEnds();
    void hurryWhatWaits();
    void act(const MidiMessage& message);
    void turnWheel(int lsb, int msb);
    void actOnKeyRelease(int key, int channel);
    void takeOff(int key, int channel);
    void actOnController(int number, int value);
    void releasePedal();
    void resetControllers();
    bool layerHears(int layer, int channel) const;

    EngineState& state_;
    ParameterModel& parameters_;
    ControllerMap& ccMap_;
    MidiListener& listener_;
    std::array<std::atomic<Word>, queuePlaces> queue_{};
    std::array<std::atomic<std::uint8_t>, queuePlaces> blocksWaited_{};  // of the event at the place
    // Ends of keys that a full queue lost, a bit a channel, and whether there are any.
    std::array<std::atomic<std::uint16_t>, 128> lostEnds_{};
    Flag hasLostEnds_;
    bool blockBegan_ = false;
    std::atomic<std::int32_t> learnPending_{ControllerMap::none};
    Flag ccMapDirty_;
    // Keys that are really down, by channel: the engine's table has one place for a key of all channels.
    std::array<Keys, 16> down_{};
    std::array<std::uint8_t, 128> sustainedOff_{};
    bool sustainOn_ = false;
    float pitchWheel_ = 0.5f;
    float channelPressure_ = 0.0f;
};

}  // namespace vantoric
