// Whether a thread may still be in a place that others wait for it to leave.
#pragma once

#include <atomic>
#include <cstdint>

namespace vantoric {

// Counts how often a thread has gone into a place and out again. Plain stores: one thread at a time is inside. What is
// taken away under a flag that keeps the thread out has no reader left once everybody who had gone in by then is out.
class Passes {
public:
    // Stands while the thread is inside. Begins before the thread looks at any flag.
    class Scope {
    public:
        explicit Scope(Passes& passes) : passes_(passes) { step(passes_.entered_); }
        ~Scope() { step(passes_.left_); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        static void step(std::atomic<std::uint64_t>& count) {
            count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_seq_cst);
        }
        Passes& passes_;
    };

    // Any thread.
    std::uint64_t entered() const { return entered_.load(std::memory_order_seq_cst); }
    std::uint64_t left() const { return left_.load(std::memory_order_seq_cst); }

private:
    std::atomic<std::uint64_t> entered_{0}, left_{0};
};

}  // namespace vantoric
