#include "faces/standalone/player.h"

#include <algorithm>
#include <ctime>

namespace vantoric::standalone {

double clockSeconds() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

Player::Player(Instrument& instrument, Recorder& recorder) : instrument_(instrument), recorder_(recorder) {}

void Player::prepare(double rate) {
    const double before = rate_.exchange(rate);
    recorder_.expectRate(static_cast<int>(rate));
    if (before != rate || frames() == 0) {
        songStart_ += static_cast<double>(songFrames_) / before * songTempo_ / 60.0;
        songFrames_ = 0;
        instrument_.stop();
        instrument_.setSampleRate(static_cast<float>(rate));
        instrument_.start();
    }
    lastBlock_ = clockSeconds();
}

// ---- messages -----------------------------------------------------------------------------------------------

void Player::place(int frame, const ShortMessage& message) noexcept {
    events_.addMidi(frame, message.status, message.data1, message.data2);
    messagesIn_.fetch_add(1, std::memory_order_relaxed);
    markKey(message);
}

void Player::letGo(HeldKeys& held, int frame) noexcept {
    held.release([&](const ShortMessage& message) { place(frame, message); });
}

void Player::receive(int frame, const ShortMessage& message) noexcept {
    device_.follow(message);
    place(frame, message);
}

void Player::touch(const ShortMessage& message) noexcept { hands_.push({0, message}); }

void Player::receiveAt(double seconds, const ShortMessage& message) noexcept { sequencer_.push({seconds, message}); }

void Player::markKey(const ShortMessage& message) noexcept {
    const int kind = message.status & 0xf0;
    if (kind == 0xb0 && (message.data1 == 120 || message.data1 == 123)) unmarkKeys();
    if (kind != 0x80 && kind != 0x90) return;
    auto& keys = keys_[message.data1 >> 6 & 1];
    const std::uint64_t bit = std::uint64_t{1} << (message.data1 & 63);
    const std::uint64_t before = keys.load(std::memory_order_relaxed);
    const bool isDown = kind == 0x90 && message.data2 != 0;
    keys.store(isDown ? before | bit : before & ~bit, std::memory_order_relaxed);
}

void Player::unmarkKeys() noexcept {
    for (auto& keys : keys_) keys.store(0, std::memory_order_relaxed);
}

bool Player::isKeyDown(int key) const {
    return (keys_[static_cast<std::size_t>(key >> 6 & 1)].load(std::memory_order_relaxed) >> (key & 63) & 1) != 0;
}

// What the hands did until now is over. Keys that still wait for their tick get their end; the pedal comes up with the silence.
void Player::dropHands() noexcept {
    while (const Timed* item = hands_.ring.front()) {
        hands_.held.follow(item->message);
        hands_.ring.pop();
    }
    hands_.held.release([&](const ShortMessage& message) {
        if ((message.status & 0xf0) == 0x80) place(0, message);
    });
    unmarkKeys();
}

// What came in during the last block sounds in this one, at the same distance: a constant delay in place of jitter.
void Player::collect(double now, int frames) noexcept {
    if (isSilenceWanted_.exchange(false, std::memory_order_acq_rel)) {
        dropHands();
        instrument_.silenceNextBlock();
    }
    while (const Timed* item = hands_.ring.front()) {
        hands_.held.follow(item->message);
        place(0, item->message);
        hands_.ring.pop();
    }
    for (const Timed* item = sequencer_.ring.front(); item != nullptr && item->seconds < now; item = sequencer_.ring.front()) {
        sequencer_.held.follow(item->message);
        place(std::clamp(static_cast<int>((item->seconds - lastBlock_) * rate()), 0, frames - 1), item->message);
        sequencer_.ring.pop();
    }
    for (Line* line : {&hands_, &sequencer_})
        if (line->isBroken.exchange(false, std::memory_order_acq_rel)) letGo(line->held, frames - 1);
    if (isDeviceLoose_.exchange(false, std::memory_order_acq_rel)) letGo(device_, frames - 1);
    lastBlock_ = now;
}

// ---- sound --------------------------------------------------------------------------------------------------

void Player::play(float* left, float* right, int frames) noexcept {
    if (frames <= 0) return;
    const double begin = clockSeconds();
    collect(begin, frames);
    events_.play(instrument_, left, right, frames, transport());
    songFrames_ += static_cast<std::uint64_t>(frames);
    recorder_.hear(left, right, frames);
    measure(clockSeconds() - begin, frames);
    frames_.fetch_add(static_cast<std::uint64_t>(frames), std::memory_order_relaxed);
}

// Of the block that follows. Another tempo begins where the song stands.
Transport Player::transport() noexcept {
    if (const double wanted = tempo(); wanted != songTempo_) {
        songStart_ += static_cast<double>(songFrames_) / rate() / 60.0 * songTempo_;
        songFrames_ = 0;
        songTempo_ = wanted;
    }
    Transport transport;
    transport.known = true;
    transport.offline = isOffline_.load(std::memory_order_relaxed);
    transport.tempo = songTempo_;
    transport.ppqPos = songStart_ + static_cast<double>(songFrames_) / rate() * songTempo_ / 60.0;
    return transport;
}

void Player::measure(double seconds, int frames) noexcept {
    constexpr double falling = 0.7;  // seconds until a peak has fallen to a third
    const double blockSeconds = frames / rate();
    const double fallen = load() * (1.0 - std::min(1.0, blockSeconds / falling));
    load_.store(std::max(fallen, seconds / blockSeconds), std::memory_order_relaxed);
}

}  // namespace vantoric::standalone
