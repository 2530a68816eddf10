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
    if (placedCount_ == mostMessages) return;
    placed_[placedCount_++] = {frame, message};
    messagesIn_.fetch_add(1, std::memory_order_relaxed);
    markKey(message);
}

void Player::receive(int frame, const ShortMessage& message) noexcept { place(frame, message); }

void Player::touch(const ShortMessage& message) noexcept { hands_.push({0, message}); }

void Player::receiveAt(double seconds, const ShortMessage& message) noexcept { sequencer_.push({seconds, message}); }

void Player::markKey(const ShortMessage& message) noexcept {
    const int kind = message.status & 0xf0;
    if (kind == 0xb0 && (message.data1 == 120 || message.data1 == 123)) {
        for (auto& keys : keys_) keys.store(0, std::memory_order_relaxed);
    }
    if (kind != 0x80 && kind != 0x90) return;
    auto& keys = keys_[message.data1 >> 6 & 1];
    const std::uint64_t bit = std::uint64_t{1} << (message.data1 & 63);
    const std::uint64_t before = keys.load(std::memory_order_relaxed);
    const bool isDown = kind == 0x90 && message.data2 != 0;
    keys.store(isDown ? before | bit : before & ~bit, std::memory_order_relaxed);
}

bool Player::isKeyDown(int key) const {
    return (keys_[static_cast<std::size_t>(key >> 6 & 1)].load(std::memory_order_relaxed) >> (key & 63) & 1) != 0;
}

// What came in during the last block sounds in this one, at the same distance: a constant delay in place of jitter.
void Player::collect(double now, int frames) noexcept {
    while (const Timed* item = hands_.front()) {
        place(0, item->message);
        hands_.pop();
    }
    for (const Timed* item = sequencer_.front(); item != nullptr && item->seconds < now; item = sequencer_.front()) {
        place(std::clamp(static_cast<int>((item->seconds - lastBlock_) * rate()), 0, frames - 1), item->message);
        sequencer_.pop();
    }
    lastBlock_ = now;
}

// By insertion: nearly always in order, and nothing is allocated.
void Player::sortByFrame() noexcept {
    for (std::size_t i = 1; i < placedCount_; ++i)
        for (std::size_t j = i; j > 0 && placed_[j].frame < placed_[j - 1].frame; --j) std::swap(placed_[j], placed_[j - 1]);
}

// ---- sound --------------------------------------------------------------------------------------------------

void Player::play(float* left, float* right, int frames) noexcept {
    if (frames <= 0) return;
    const double begin = clockSeconds();
    collect(begin, frames);
    sortByFrame();
    renderPieces(left, right, frames);
    placedCount_ = 0;
    recorder_.hear(left, right, frames);
    measure(clockSeconds() - begin, frames);
    frames_.fetch_add(static_cast<std::uint64_t>(frames), std::memory_order_relaxed);
}

// In more than one piece where there are more messages than the instrument's queue takes.
void Player::renderPieces(float* left, float* right, int frames) noexcept {
    std::size_t next = 0;
    int from = 0;
    while (from < frames) {
        std::size_t given = 0;
        int to = std::min(frames, from + longestBlock);
        for (; next < placedCount_ && placed_[next].frame < to; ++next, ++given) {
            const Placed& item = placed_[next];
            if (given >= queueShare && item.frame > placed_[next - 1].frame) to = item.frame;
            if (item.frame >= to) break;
            instrument_.receive({item.frame - from, item.message.status, item.message.data1, item.message.data2});
        }
        renderPiece(left + from, right + from, to - from);
        from = to;
    }
}

void Player::renderPiece(float* left, float* right, int frames) noexcept {
    const double played = static_cast<double>(songFrames_) / rate() / 60.0;
    if (const double wanted = tempo(); wanted != songTempo_) {
        songStart_ += played * songTempo_;
        songFrames_ = 0;
        songTempo_ = wanted;
    }
    Transport transport;
    transport.known = true;
    transport.tempo = songTempo_;
    transport.ppqPos = songStart_ + static_cast<double>(songFrames_) / rate() * songTempo_ / 60.0;
    instrument_.render(left, right, frames, transport);
    songFrames_ += static_cast<std::uint64_t>(frames);
}

void Player::measure(double seconds, int frames) noexcept {
    constexpr double falling = 0.7;  // seconds until a peak has fallen to a third
    const double blockSeconds = frames / rate();
    const double fallen = load() * (1.0 - std::min(1.0, blockSeconds / falling));
    load_.store(std::max(fallen, seconds / blockSeconds), std::memory_order_relaxed);
}

}  // namespace vantoric::standalone
