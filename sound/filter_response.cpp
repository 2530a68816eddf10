#include "sound/filter_response.h"

#include <cmath>

#include "base/math.h"
#include "base/thread_check.h"

namespace vantoric {

const std::array<double, FilterResponse::bins>& FilterResponse::measure(const FilterSettings& settings) {
    notInsideAnyBlock();
    filter_.setup(settings);
    filter_.setup(settings);
    filter_.reset();
    answer_.fill(0.0f);
    answer_[0] = 0.5f;
    filter_.run(answer_.data(), samples);
    return magnitudesOf(answer_);
}

const std::array<double, FilterResponse::bins>& FilterResponse::magnitudesOf(std::span<const float, samples> answer) {
    for (int i = 0; i < samples; ++i)
        windowed_[i] = answer[i] * 100000.0 * (1.0 + math::cos(2.0 * math::pi * i / (2.0 * samples)));
    transform_.forward(windowed_.data(), real_.data(), imaginary_.data());
    for (int k = 0; k < bins; ++k) magnitude_[k] = std::sqrt(real_[k] * real_[k] + imaginary_[k] * imaginary_[k]);
    return magnitude_;
}

}  // namespace vantoric
