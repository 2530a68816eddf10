#include "faces/standalone/icon.h"

#include <algorithm>
#include <cmath>

namespace vantoric::standalone {
namespace {

struct Colour {
    double red, green, blue;
};
constexpr Colour tile{0x18, 0x1d, 0x20}, left{0xff, 0xc0, 0x61}, right{0x5a, 0xd1, 0xee};

// How much of a pixel lies within an edge at a signed distance (negative inside), in parts of the square.
double coverage(double distance, int size) { return std::clamp(0.5 - distance * size, 0.0, 1.0); }

// From a rounded tile that fills the unit square but for a margin.
double tileDistance(double x, double y) {
    constexpr double half = 0.47, radius = 0.2;
    const double dx = std::max(std::fabs(x - 0.5) - half + radius, 0.0), dy = std::max(std::fabs(y - 0.5) - half + radius, 0.0);
    return std::hypot(dx, dy) - radius;
}

// From a stroke with round ends.
double strokeDistance(double x, double y, double x0, double y0, double x1, double y1) {
    const double dx = x1 - x0, dy = y1 - y0;
    const double along = std::clamp(((x - x0) * dx + (y - y0) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    return std::hypot(x - x0 - along * dx, y - y0 - along * dy) - 0.062;
}

Colour over(const Colour& below, const Colour& above, double part) {
    return {below.red + (above.red - below.red) * part, below.green + (above.green - below.green) * part,
            below.blue + (above.blue - below.blue) * part};
}

}  // namespace

std::vector<std::uint32_t> iconPixels(int size) {
    std::vector<std::uint32_t> pixels;
    for (int row = 0; row < size; ++row)
        for (int column = 0; column < size; ++column) {
            const double x = (column + 0.5) / size, y = (row + 0.5) / size;
            Colour colour = over(tile, right, coverage(strokeDistance(x, y, 0.74, 0.27, 0.5, 0.73), size));
            colour = over(colour, left, coverage(strokeDistance(x, y, 0.26, 0.27, 0.5, 0.73), size));
            const auto byte = [](double value) { return static_cast<std::uint32_t>(std::lround(value)); };
            const std::uint32_t alpha = byte(255 * coverage(tileDistance(x, y), size));
            pixels.push_back(alpha << 24 | byte(colour.red) << 16 | byte(colour.green) << 8 | byte(colour.blue));
        }
    return pixels;
}

}  // namespace vantoric::standalone
