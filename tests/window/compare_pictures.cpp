#include "tests/window/compare_pictures.h"

#include <algorithm>
#include <cmath>

namespace testhost {
namespace {

// How much of each pixel from `from` on lies within the stretch [begin, end).
struct Stretch {
    int from;
    std::vector<double> shares;
};

Stretch stretchOf(double begin, double end, int count) {
    Stretch stretch{static_cast<int>(begin), {}};
    for (int i = stretch.from; i < end && i < count; ++i)
        stretch.shares.push_back(std::min(end, i + 1.0) - std::max(begin, static_cast<double>(i)));
    return stretch;
}

using Planes = std::vector<double>;  // three values a pixel

// The mean of five by five pixels: a caption's place at 450 pixels, and more than an edge of a letter.
Planes smoothed(const Picture& picture) {
    constexpr int aside = 2, above = 2;
    Planes result(picture.rgb.size());
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            for (int channel = 0; channel < 3; ++channel) {
                double sum = 0;
                int count = 0;
                for (int j = std::max(0, y - above); j <= std::min(picture.height - 1, y + above); ++j)
                    for (int i = std::max(0, x - aside); i <= std::min(picture.width - 1, x + aside); ++i, ++count)
                        sum += picture.rgb[static_cast<std::size_t>((j * picture.width + i) * 3 + channel)];
                result[static_cast<std::size_t>((y * picture.width + x) * 3 + channel)] = sum / count;
            }
    return result;
}

}  // namespace

Picture reduced(const Picture& picture, int width) {
    const double scale = static_cast<double>(picture.width) / width;
    Picture result{width, static_cast<int>(std::lround(picture.height / scale)), {}};
    std::vector<Stretch> columns;
    for (int x = 0; x < width; ++x) columns.push_back(stretchOf(x * scale, (x + 1) * scale, picture.width));
    for (int y = 0; y < result.height; ++y) {
        const Stretch rows = stretchOf(y * scale, (y + 1) * scale, picture.height);
        for (const Stretch& across : columns) {
            double sums[3]{}, whole = 0;
            for (std::size_t j = 0; j < rows.shares.size(); ++j)
                for (std::size_t i = 0; i < across.shares.size(); ++i) {
                    const double share = rows.shares[j] * across.shares[i];
                    const std::size_t at = (static_cast<std::size_t>(rows.from) + j) * static_cast<std::size_t>(picture.width) +
                                           static_cast<std::size_t>(across.from) + i;
                    for (std::size_t channel = 0; channel < 3; ++channel) sums[channel] += share * picture.rgb[3 * at + channel];
                    whole += share;
                }
            for (const double sum : sums)
                result.rgb.push_back(static_cast<std::uint8_t>(std::lround(whole > 0 ? sum / whole : 0)));
        }
    }
    return result;
}

Difference difference(const Picture& picture, const Picture& reference) {
    if (picture.isEmpty() || reference.isEmpty()) return {255, 0, 0};
    const Picture small = reduced(picture, reference.width);
    if (small.height != reference.height) return {255, 0, 0};
    const Planes a = smoothed(small), b = smoothed(reference);
    Difference result;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double here = std::abs(a[i] - b[i]);
        if (here <= result.largest) continue;
        const int pixel = static_cast<int>(i / 3);
        result = {here, pixel % reference.width, pixel / reference.width};
    }
    return result;
}

}  // namespace testhost
