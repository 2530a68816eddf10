// What a keyboard holds, so that nothing hangs when it goes.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>

#include "faces/standalone/short_message.h"

namespace vantoric::standalone {

// The keys and pedals that a sender holds, by the messages that it has sent. One thread; nothing is allocated.
class HeldKeys {
public:
    void follow(const ShortMessage& message) {
        const auto channel = static_cast<std::size_t>(message.status & 15);
        switch (message.status & 0xf0) {
            case 0x80: keys_[channel].reset(message.data1 & 127); break;
            case 0x90: keys_[channel].set(message.data1 & 127, message.data2 != 0); break;
            case 0xb0:
                if (message.data1 == pedal) pedals_.set(channel, message.data2 >= 64);
                if (message.data1 == allSoundOff || message.data1 == allNotesOff) forget();
                break;
            default: break;
        }
    }
    void forget() {
        keys_ = {};
        pedals_.reset();
    }
    // Calls `send(message)` with what lets go of all of it, and forgets it.
    template <class Send>
    void release(Send&& send) {
        for (std::size_t channel = 0; channel < keys_.size(); ++channel) {
            for (std::size_t key = 0; key < keys_[channel].size() && keys_[channel].any(); ++key)
                if (keys_[channel].test(key))
                    send(ShortMessage{static_cast<std::uint8_t>(0x80 | channel), static_cast<std::uint8_t>(key), 0});
            if (pedals_.test(channel)) send(ShortMessage{static_cast<std::uint8_t>(0xb0 | channel), pedal, 0});
        }
        forget();
    }

private:
    static constexpr std::uint8_t pedal = 64, allSoundOff = 120, allNotesOff = 123;

    std::array<std::bitset<128>, 16> keys_{};
    std::bitset<16> pedals_;
};

}  // namespace vantoric::standalone
