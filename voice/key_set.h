// A set of the 128 MIDI keys with the searches that walks over held keys need, each a few instructions.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace vantoric {

// Keys are 0 to 127; searches return -1 for none.
class KeySet {
public:
    constexpr bool has(int key) const { return ((words_[word(key)] >> (key & 63)) & 1) != 0; }
    constexpr void add(int key) { words_[word(key)] |= bit(key); }
    constexpr void remove(int key) { words_[word(key)] &= ~bit(key); }
    constexpr void clear() { words_ = {}; }
    constexpr bool any() const { return (words_[0] | words_[1]) != 0; }

    // The lowest key from 1 on: key 0 is never found by this search.
    constexpr int lowest() const { return above(0); }
    constexpr int highest() const { return below(128); }

    // The next key above `key`, which is -1 to 127.
    constexpr int above(int key) const {
        const int from = key + 1;
        if (from < 64) {
            const std::uint64_t low = words_[0] & (~std::uint64_t{0} << from);
            if (low != 0) return std::countr_zero(low);
        }
        if (from >= 128) return -1;
        const std::uint64_t high = from <= 64 ? words_[1] : words_[1] & (~std::uint64_t{0} << (from - 64));
        return high != 0 ? 64 + std::countr_zero(high) : -1;
    }
    // The next key below `key`, which is -1 to 128.
    constexpr int below(int key) const {
        if (key > 64) {
            const std::uint64_t high = key >= 128 ? words_[1] : words_[1] & ~(~std::uint64_t{0} << (key - 64));
            if (high != 0) return 127 - std::countl_zero(high);
        }
        if (key <= 0) return -1;
        const std::uint64_t low = key >= 64 ? words_[0] : words_[0] & ~(~std::uint64_t{0} << key);
        return low != 0 ? 63 - std::countl_zero(low) : -1;
    }

    // The keys of this set that are not in the other.
    constexpr KeySet without(const KeySet& other) const {
        KeySet rest;
        for (int i = 0; i < 2; ++i) rest.words_[i] = words_[i] & ~other.words_[i];
        return rest;
    }

private:
    static constexpr std::size_t word(int key) { return static_cast<std::size_t>(key >> 6); }
    static constexpr std::uint64_t bit(int key) { return std::uint64_t{1} << (key & 63); }

    std::array<std::uint64_t, 2> words_{};
};

}  // namespace vantoric
