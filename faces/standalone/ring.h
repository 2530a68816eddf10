// What one thread hands to another without waiting.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace vantoric::standalone {

// A queue with one writing and one reading thread: no locks, no allocation. `capacity` is a power of two.
template <class Item, std::size_t capacity>
class Ring {
    static_assert((capacity & (capacity - 1)) == 0);

public:
    // The writing thread. False, with nothing done, if it is full.
    bool push(const Item& item) {
        const std::size_t end = end_.load(std::memory_order_relaxed);
        if (end - begin_.load(std::memory_order_acquire) == capacity) return false;
        items_[end % capacity] = item;
        end_.store(end + 1, std::memory_order_release);
        return true;
    }

    // The reading thread: the oldest item, null if there is none. It stays until `pop`.
    const Item* front() const {
        const std::size_t begin = begin_.load(std::memory_order_relaxed);
        return begin == end_.load(std::memory_order_acquire) ? nullptr : &items_[begin % capacity];
    }
    // The reading thread, after `front` gave an item.
    void pop() { begin_.store(begin_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

private:
    std::array<Item, capacity> items_{};
    std::atomic<std::size_t> begin_{0}, end_{0};
};

}  // namespace vantoric::standalone
