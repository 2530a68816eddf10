// How loud a channel is, for whoever shows it.
#pragma once

#include <atomic>
#include <cmath>

namespace vantoric {

// A peak that falls as time goes on, in quarters: full scale is 0.25, which a window's meter shows as full.
class PeakMeter {
public:
    // Takes what is heard next: `count` samples at `rate` Hz. The audio thread.
    void take(const float* samples, int count, float rate) {
        float highest = 0.0f;
        for (int i = 0; i < count; ++i) {
            const float magnitude = std::fabs(samples[i]);
            highest = magnitude > highest ? magnitude : highest;
        }
        // Falls to a hundredth in about a second.
        const float left = 1.0f - fallPerSecond * static_cast<float>(count) / (rate > 1.0f ? rate : 1.0f);
        const float fallen = left > 0.0f ? peak() * left : 0.0f;
        const float now = 0.25f * highest;
        peak_.store(now > fallen ? now : fallen, std::memory_order_relaxed);
    }

    // The latest value, 0 and more. Any thread.
    float peak() const { return peak_.load(std::memory_order_relaxed); }

private:
    static constexpr float fallPerSecond = 5.0f;

    std::atomic<float> peak_{0.0f};
};

}  // namespace vantoric
