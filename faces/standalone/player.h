// What a sound device plays: the instrument with everything that reaches it as MIDI, measured and recorded.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <utility>

#include "engine/instrument.h"
#include "faces/common/block_events.h"
#include "faces/standalone/held_keys.h"
#include "faces/standalone/recorder.h"
#include "faces/standalone/ring.h"
#include "faces/standalone/short_message.h"

namespace vantoric::standalone {

// Seconds on the clock that all threads of the program share.
double clockSeconds();

class Player {
public:
    // Both outlive it.
    Player(Instrument& instrument, Recorder& recorder);

    // ---- while no device plays

    // What follows is of this rate in Hz. The song goes on where it was.
    void prepare(double rate);

    // ---- the device's thread

    // A message at a frame of the block that follows, by a device that knows the frame. See BlockEvents for how many.
    void receive(int frame, const ShortMessage& message) noexcept;
    // Renders a block of any length. No locks, no allocation, no calls of the system but for the time.
    void play(float* left, float* right, int frames) noexcept;
    // The device lost sound.
    void noteDropout() noexcept { dropouts_.fetch_add(1, std::memory_order_relaxed); }

    // ---- others

    // The window's thread: a message of the keys on the screen or of the computer, as soon as possible.
    void touch(const ShortMessage& message) noexcept;
    // Any thread: with the next block all that sounds ends, and so does what the hands hold. No controller is sent for it, which
    // a knob could learn or follow.
    void silence() noexcept { isSilenceWanted_.store(true, std::memory_order_release); }
    // The sequencer's thread: one that came in at a moment of `clockSeconds`. It sounds one block later, at its frame.
    // Of both, more than 1024 between two blocks are lost; whatever was held by their like is let go of then.
    void receiveAt(double seconds, const ShortMessage& message) noexcept;
    // Any thread: a keyboard at the device's own MIDI has gone, so what its keyboards hold is let go of.
    void releaseDevice() noexcept { isDeviceLoose_.store(true, std::memory_order_release); }
    // Any thread: whether the device renders faster than time, and would rather wait than hear a wave unfinished.
    void setOffline(bool isOffline) noexcept { isOffline_.store(isOffline, std::memory_order_relaxed); }

    // Quarter notes a minute, 20 to 300.
    void setTempo(double tempo) { tempo_.store(tempo, std::memory_order_relaxed); }
    double tempo() const { return tempo_.load(std::memory_order_relaxed); }

    double rate() const { return rate_.load(std::memory_order_relaxed); }
    // Frames played since the start, at whatever rate.
    std::uint64_t frames() const { return frames_.load(std::memory_order_relaxed); }
    std::uint64_t messages() const { return messagesIn_.load(std::memory_order_relaxed); }
    // Since the start.
    int dropouts() const { return dropouts_.load(std::memory_order_relaxed); }
    // Since they were last forgotten: the window's thread.
    int newDropouts() const { return dropouts() - forgottenDropouts_; }
    void forgetDropouts() { forgottenDropouts_ = dropouts(); }
    // The part of its time that a block takes, 0 to 1 and above where it takes too long: a falling peak.
    double load() const { return load_.load(std::memory_order_relaxed); }
    // Whether a key, 0 to 127, is down on any channel.
    bool isKeyDown(int key) const;

private:
    struct Timed {
        double seconds = 0;
        ShortMessage message;
    };
    // Messages of one kind of sender on their way, and what these hold.
    struct Line {
        Ring<Timed, 1024> ring;
        HeldKeys held;
        std::atomic<bool> isBroken{false};  // it was full
        void push(const Timed& item) noexcept {
            if (!ring.push(item)) isBroken.store(true, std::memory_order_release);
        }
    };

    void place(int frame, const ShortMessage& message) noexcept;
    void letGo(HeldKeys& held, int frame) noexcept;
    void dropHands() noexcept;
    void collect(double now, int frames) noexcept;
    Transport transport() noexcept;
    void markKey(const ShortMessage& message) noexcept;
    void unmarkKeys() noexcept;
    void measure(double seconds, int frames) noexcept;

    Instrument& instrument_;
    Recorder& recorder_;
    BlockEvents events_;
    Line hands_, sequencer_;
    HeldKeys device_;
    std::atomic<bool> isDeviceLoose_{false}, isOffline_{false}, isSilenceWanted_{false};
    double lastBlock_ = 0;
    // The song: quarter notes at the frame where the tempo last changed.
    double songStart_ = 0, songTempo_ = 120;
    std::uint64_t songFrames_ = 0;
    std::atomic<double> tempo_{120}, rate_{48000}, load_{0};
    std::atomic<std::uint64_t> frames_{0}, messagesIn_{0};
    std::atomic<int> dropouts_{0};
    int forgottenDropouts_ = 0;
    std::array<std::atomic<std::uint64_t>, 2> keys_{};
};

}  // namespace vantoric::standalone
