#include "factory/samples/models.h"

#include <algorithm>
#include <cmath>

#include "base/math.h"

namespace vantoric::made {

void Formant::tune(double hertz, double width) {
    c_ = -math::exp(-2.0 * math::pi * width / rate);
    b_ = 2.0 * math::exp(-math::pi * width / rate) * math::cos(2.0 * math::pi * hertz / rate);
    a_ = 1.0 - b_ - c_;
}

double Formant::run(double input) {
    const double output = a_ * input + b_ * y1_ + c_ * y2_;
    y2_ = y1_;
    return y1_ = output;
}

void OnePole::tune(double hertz) { k_ = 1.0 - math::exp(-2.0 * math::pi * hertz / rate); }

void strike(Wave& wave, std::span<const Mode> modes) {
    for (const Mode& mode : modes) {
        const double decay = math::exp(-math::log(1000.0) / (mode.seconds * rate));
        const double unbend = math::exp(-1.0 / (mode.bendSeconds * rate));
        double level = mode.level, phase = 0.0, bend = mode.bend - 1.0;
        for (double& sample : wave) {
            sample += level * math::sin(2.0 * math::pi * phase);
            phase += mode.hertz * (1.0 + bend) / rate;
            phase -= std::floor(phase);
            level *= decay;
            bend *= unbend;
        }
    }
}

std::size_t closeLoop(Wave& wave, std::size_t around, std::size_t fade) {
    constexpr std::size_t search = 4096;
    const std::size_t tail = wave.size() - fade;
    std::size_t start = around;
    double least = 1e300;
    for (std::size_t place = around; place < around + search && place < tail; ++place) {
        double difference = 0.0;
        for (std::size_t i = 0; i < fade; i += 3) difference += std::pow(wave[place - fade + i] - wave[tail + i], 2.0);
        if (difference < least) least = difference, start = place;
    }
    for (std::size_t i = 0; i < fade; ++i) {
        const double part = (static_cast<double>(i) + 0.5) / static_cast<double>(fade);
        wave[tail + i] += part * (wave[start - fade + i] - wave[tail + i]);
    }
    return start;
}

void finish(Wave& wave, double peak, double fade) {
    double mean = 0.0, highest = 1e-9;
    for (const double sample : wave) mean += sample / static_cast<double>(wave.size());
    const double fadeFrames = fade * rate;
    for (std::size_t i = 0; i < wave.size(); ++i) {
        wave[i] -= mean;
        if (fade > 0.0) wave[i] *= std::min(1.0, static_cast<double>(wave.size() - 1 - i) / fadeFrames);
        highest = std::max(highest, std::fabs(wave[i]));
    }
    for (double& sample : wave) sample *= peak / highest;
}

}  // namespace vantoric::made
