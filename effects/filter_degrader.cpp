#include "effects/filter_degrader.h"

namespace vantoric {

namespace {

constexpr int longestHold = 1 << 24;

}  // namespace

Filter::Filter() = default;

void Filter::reset() {
    left_ = right_ = {};
    counter_ = 0;
}

void Filter::setSampleRate(float rate) { sampleRate_ = rate; }

void Filter::setParameter(int index, float value) { parameters_.set(index, value); }

int Filter::factor(float p1, float sampleRate) {
    const float reduced = std::min(static_cast<float>(fastExp(5.0f * p1)) * 100.0f, sampleRate);
    return truncateTo(sampleRate / reduced, 1, longestHold);
}

void Filter::process(float* left, float* right, int count) {
    if (row_ != nullptr && count <= longestBlock) (this->*row_->run)(left, right, count);
}

// A box average over `factor` samples, held until the next one is complete.
void Filter::degrader(float* left, float* right, int count) {
    const int samples = factor(parameters_[1], sampleRate_);
    const float whole = static_cast<float>(samples), wet = parameters_.mix(), dry = 1.0f - wet;
    for (int i = 0; i < count; ++i) {
        left_.sum += left[i];
        right_.sum += right[i];
        if (++counter_ >= samples) {
            left_ = {0.0f, left_.sum / whole};
            right_ = {0.0f, right_.sum / whole};
            counter_ = 0;
        }
        left[i] = left_.held * wet + left[i] * dry;
        right[i] = right_.held * wet + right[i] * dry;
    }
}

}  // namespace vantoric
