#include "editor/style.h"

#include <cmath>

namespace vantoric {
namespace {

std::uint8_t between(std::uint8_t a, std::uint8_t b, double t) {
    return static_cast<std::uint8_t>(std::lround(a + (static_cast<double>(b) - a) * t));
}

}  // namespace

Color mix(const Color& a, const Color& b, double t) {
    return {between(a.red, b.red, t), between(a.green, b.green, t), between(a.blue, b.blue, t), a.alpha};
}

Color fade(const Color& color, double t) {
    return {color.red, color.green, color.blue, static_cast<std::uint8_t>(std::lround(255 * t))};
}

}  // namespace vantoric
