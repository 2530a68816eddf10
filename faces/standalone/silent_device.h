// Time that passes without sound: where there is no device, none is wanted, or one has gone.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

#include "faces/standalone/sound_device.h"

namespace vantoric::standalone {

class SilentDevice final : public SoundDevice {
public:
    // Rate in Hz, frames a block.
    SilentDevice(Player& player, double rate, int period);
    ~SilentDevice() override;
    std::string system() const override { return "none"; }
    int period() const override { return period_; }

private:
    void run(double rate);

    Player& player_;
    int period_;
    std::vector<float> left_, right_;  // made before the thread, in which nobody could say that there is no memory
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

// Lets the thread sleep until the next block of a device that doesn't wait by itself is due.
class BlockPacer {
public:
    explicit BlockPacer(double blockSeconds) : blockSeconds_(blockSeconds) {}
    void waitForNext();

private:
    double blockSeconds_, due_ = 0;
};

}  // namespace vantoric::standalone
