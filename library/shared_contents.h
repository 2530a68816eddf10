// Equal contents, kept once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <unordered_map>

namespace vantoric {

// A number that equal bytes share and others hardly ever: eight bytes at a time, by the multiplier of Knuth's linear
// congruence (The Art of Computer Programming 2, 3.3.4).
inline std::uint64_t fingerprint(std::span<const std::byte> bytes) {
    constexpr std::uint64_t multiplier = 6364136223846793005u;
    std::uint64_t sum = bytes.size();
    while (!bytes.empty()) {
        const std::size_t count = bytes.size() < 8 ? bytes.size() : 8;
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), count);
        sum = (sum ^ word) * multiplier;
        sum ^= sum >> 29;
        bytes = bytes.subspan(count);
    }
    return sum;
}

// One thread. What `keep` returned may outlive it and go on any thread.
template <class Content>
class SharedContents {
public:
    // The content itself or an equal one that somebody still holds. `words` are the bytes that tell contents apart, `bytes`
    // what it weighs. May throw std::bad_alloc.
    std::shared_ptr<const Content> keep(Content&& content, std::span<const std::byte> words, std::size_t bytes) {
        forgetUnused();
        const std::uint64_t print = fingerprint(words);
        const auto [first, last] = kept_.equal_range(print);
        for (auto at = first; at != last; ++at)
            if (auto held = at->second.lock(); held != nullptr && *held == content) return held;
        auto weight = weight_;
        std::shared_ptr<const Content> fresh(new Content(std::move(content)), [weight, bytes](const Content* gone) {
            *weight -= bytes;
            delete gone;
        });
        *weight_ += bytes;
        kept_.emplace(print, fresh);
        return fresh;
    }

    // Of all that is still held.
    std::size_t bytes() const { return *weight_; }

private:
    // Now and then, so that it costs nothing on the whole.
    void forgetUnused() {
        if (kept_.size() < nextSweep_) return;
        std::erase_if(kept_, [](const auto& entry) { return entry.second.expired(); });
        nextSweep_ = 2 * kept_.size() + 64;
    }

    std::unordered_multimap<std::uint64_t, std::weak_ptr<const Content>> kept_;
    std::shared_ptr<std::size_t> weight_ = std::make_shared<std::size_t>(0);
    std::size_t nextSweep_ = 64;
};

}  // namespace vantoric
