// MIDI by WinMM: the system's inputs, each of which one program can open.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "faces/standalone/sound_device.h"

namespace vantoric::standalone {

// On the program's main thread. Messages go to the player, which outlives it, from threads of the system.
class WinmmInputs final : public SystemMidi {
public:
    explicit WinmmInputs(Player& player);
    ~WinmmInputs() override;
    WinmmInputs(const WinmmInputs&) = delete;
    WinmmInputs& operator=(const WinmmInputs&) = delete;

    std::string description() const override { return "Windows"; }
    std::vector<MidiInput> inputs() override;
    void connect(const std::string& id, bool wanted) override;

private:
    class Open;

    void receive(const ShortMessage& message);

    Player& player_;
    std::mutex taking_;  // several inputs, one ring
    std::map<std::string, std::unique_ptr<Open>> open_;
};

}  // namespace vantoric::standalone
