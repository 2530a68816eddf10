#include "factory/waves/spectrum.h"

#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "base/random.h"

namespace vantoric::waves {

namespace {

constexpr double tau = 2.0 * math::pi;

// Turns every harmonic by k times the angle whose cosine and sine are given.
void rotate(Spectrum& spectrum, double c1, double s1) {
    double c = 1.0, s = 0.0;
    for (int k = 1; k < harmonicLimit; ++k) {
        const double next = c * c1 - s * s1;
        s = c * s1 + s * c1;
        c = next;
        const double a = spectrum.cosine[k], b = spectrum.sine[k];
        spectrum.cosine[k] = a * c + b * s;
        spectrum.sine[k] = b * c - a * s;
    }
}

}  // namespace

double Spectrum::magnitude(int k) const { return std::sqrt(cosine[k] * cosine[k] + sine[k] * sine[k]); }

void Spectrum::add(const Spectrum& other, double amount) {
    for (int k = 1; k < harmonicLimit; ++k) {
        cosine[k] += amount * other.cosine[k];
        sine[k] += amount * other.sine[k];
    }
}

void Spectrum::advance(double cycles) { rotate(*this, math::cos(tau * cycles), math::sin(tau * cycles)); }

void Spectrum::alignFundamental() {
    const double size = magnitude(1);
    if (size < 1e-9) return;
    rotate(*this, sine[1] / size, -cosine[1] / size);
    // The turn above makes cosine[1] zero but for rounding, and sine[1] positive.
    cosine[1] = 0.0;
}

void Spectrum::shape(const std::function<double(int)>& gain) {
    for (int k = 1; k < harmonicLimit; ++k) {
        const double g = gain(k);
        cosine[k] *= g;
        sine[k] *= g;
    }
}

Spectrum sines(const std::function<double(int)>& amplitude) {
    Spectrum result;
    for (int k = 1; k < harmonicLimit; ++k) result.sine[k] = amplitude(k);
    return result;
}

Spectrum saw() {
    return sines([](int k) { return 1.0 / k; });
}

Spectrum pulse(double width) {
    Spectrum result;
    for (int k = 1; k < harmonicLimit; ++k) {
        const double size = 2.0 / (math::pi * k) * math::sin(math::pi * k * width);
        // cos(2 pi k (t - 1/4)) by the quarter: k mod 4 picks cosine or sine and the sign.
        static constexpr int cosineSign[4] = {1, 0, -1, 0}, sineSign[4] = {0, 1, 0, -1};
        result.cosine[k] = size * cosineSign[k & 3];
        result.sine[k] = size * sineSign[k & 3];
    }
    return result;
}

double chance(std::uint32_t seed, std::uint32_t index) { return hashMix(index ^ hashMix(seed)) * 2.3283064365386963e-10; }

Workshop::Workshop() : fine_(drawnLength), cycle_(cycleLength) {}

Spectrum Workshop::draw(const std::function<double(double)>& f) {
    for (int i = 0; i < drawnLength; ++i) signal_[i] = f((i + 0.5) / drawnLength);
    fine_.forward(signal_.data(), real_.data(), imaginary_.data());
    Spectrum result;
    for (int k = 1; k < harmonicLimit; ++k) {
        result.cosine[k] = real_[k] * 2.0 / drawnLength;
        result.sine[k] = -imaginary_[k] * 2.0 / drawnLength;
    }
    // The points lie in the middle of their steps, which keeps edges at whole steps symmetrical.
    result.advance(-0.5 / drawnLength);
    return result;
}

void Workshop::render(const Spectrum& spectrum, int limit, double* samples) {
    std::fill(real_.begin(), real_.begin() + cycleLength / 2 + 1, 0.0);
    std::fill(imaginary_.begin(), imaginary_.begin() + cycleLength / 2 + 1, 0.0);
    for (int k = 1; k < limit; ++k) {
        real_[k] = spectrum.cosine[k] * (cycleLength / 2);
        imaginary_[k] = -spectrum.sine[k] * (cycleLength / 2);
    }
    cycle_.inverse(real_.data(), imaginary_.data(), samples);
}

}  // namespace vantoric::waves
