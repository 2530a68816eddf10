#include "faces/standalone/silent_device.h"

#include <chrono>

namespace vantoric::standalone {

void BlockPacer::waitForNext() {
    const double now = clockSeconds();
    due_ += blockSeconds_;
    if (due_ < now - 1.0) due_ = now;  // the first block, or the machine slept
    if (due_ > now) std::this_thread::sleep_for(std::chrono::duration<double>(due_ - now));
}

SilentDevice::SilentDevice(Player& player, double rate, int period)
    : player_(player), period_(period), left_(static_cast<std::size_t>(period)), right_(left_.size()) {
    player_.prepare(rate);
    thread_ = std::thread([this, rate] { run(rate); });
}

SilentDevice::~SilentDevice() {
    isEnding_ = true;
    thread_.join();
}

void SilentDevice::run(double rate) {
    BlockPacer pacer(period_ / rate);
    while (!isEnding_) {
        player_.play(left_.data(), right_.data(), period_);
        pacer.waitForNext();
    }
}

}  // namespace vantoric::standalone
