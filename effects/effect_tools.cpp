#include "effects/effect_tools.h"

#include <cstdint>
#include <cstring>

namespace vantoric {

const float loopBound = 16.0f;

std::array<float, 16> shaperFilter(double cutoff, double factor) {
    constexpr double roundPi = 3.14159;
    std::array<double, 16> taps;
    double sum = 0.0;
    for (int i = 0; i < 16; ++i) {
        const int k = i - 8;
        taps[i] = math::sin(roundPi * i / 16) * (k == 0 ? 1.0 : math::sin(cutoff * k) * factor / k);
        sum += taps[i];
    }
    std::array<float, 16> filter;
    for (int i = 0; i < 16; ++i) filter[i] = static_cast<float>(taps[i] / sum);
    return filter;
}

namespace {

// Infinities and NaN have the largest exponents of all.
std::uint32_t nonFinite(const float* buffer, int count) {
    constexpr std::uint32_t bound = 0x7d000000u;  // 1.06e37
    std::uint32_t found = 0;
    for (int i = 0; i < count; ++i) {
        std::uint32_t bits;
        std::memcpy(&bits, buffer + i, sizeof bits);
        found |= (bits & 0x7fffffffu) >= bound ? 1u : 0u;
    }
    return found;
}

}  // namespace

bool allFinite(const float* left, const float* right, int count) {
    return (nonFinite(left, count) | nonFinite(right, count)) == 0;
}

}  // namespace vantoric
