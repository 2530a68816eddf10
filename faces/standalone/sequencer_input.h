// MIDI by the ALSA sequencer: one port that every program can send to, and that keyboards are connected to.
#pragma once

#include <alsa/asoundlib.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "faces/standalone/senders.h"
#include "faces/standalone/sound_device.h"

namespace vantoric::standalone {

// On the program's main thread. Messages go to the player, which outlives it, from a thread of its own.
class SequencerInput final : public SystemMidi {
public:
    // Null with a reason where the system has no sequencer.
    static std::unique_ptr<SequencerInput> open(Player& player, std::string& problem);
    ~SequencerInput() override;
    SequencerInput(const SequencerInput&) = delete;
    SequencerInput& operator=(const SequencerInput&) = delete;

    std::string description() const override;
    std::vector<MidiInput> inputs() override;
    void connect(const std::string& id, bool wanted) override;

private:
    struct Close {
        void operator()(snd_seq_t* sequencer) const { snd_seq_close(sequencer); }
        void operator()(snd_midi_event_t* decoder) const { snd_midi_event_free(decoder); }
    };

    explicit SequencerInput(Player& player) : player_(player) {}
    bool isConnected(int client, int port) const;
    void run();
    void take(const snd_seq_event_t& event);
    void receive(const ShortMessage& message) { player_.receiveAt(clockSeconds(), message); }

    Player& player_;
    std::unique_ptr<snd_seq_t, Close> sequencer_;
    std::unique_ptr<snd_midi_event_t, Close> decoder_;
    int port_ = 0;
    Senders senders_;  // the thread's
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

}  // namespace vantoric::standalone
