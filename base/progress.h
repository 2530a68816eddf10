// How far a piece of work is that somebody waits for, and whether it is still wanted.
#pragma once

#include <algorithm>
#include <atomic>

#include "base/flag.h"

namespace vantoric {

// The worker reports and looks whether it was cancelled; any other thread reads and cancels.
class Progress {
public:
    // What is reported from now on is of this stretch of the whole, 0 to 1.
    void setStretch(double from, double to) {
        from_ = from;
        to_ = to;
        report(0);
    }
    // 0 to 1 of the stretch; what is beyond is held within.
    void report(double part) { part_.store(from_ + (to_ - from_) * std::clamp(part, 0.0, 1.0), std::memory_order_relaxed); }
    // 0 to 1 of the whole.
    double part() const { return part_.load(std::memory_order_relaxed); }

    void cancel() { cancelled_.set(); }
    bool isCancelled() const { return cancelled_.isSet(); }
    const Flag& cancelled() const { return cancelled_; }

private:
    double from_ = 0, to_ = 1;  // the worker's
    std::atomic<double> part_{0};
    Flag cancelled_;
};

}  // namespace vantoric
