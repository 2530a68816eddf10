#include "factory/waves/pictures.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vantoric::waves {

namespace {

constexpr int panelWidth = 512, height = 512, gap = 16;
constexpr int width = 2 * panelWidth + gap;
constexpr int shownHarmonics = 256;
constexpr double floorDecibels = -72.0;

struct Canvas {
    std::vector<unsigned char> pixels = std::vector<unsigned char>(static_cast<std::size_t>(width) * height * 3, 24);
    void set(int x, int y, int red, int green, int blue) {
        if (x < 0 || y < 0 || x >= width || y >= height) return;
        unsigned char* pixel = pixels.data() + (static_cast<std::size_t>(y) * width + x) * 3;
        pixel[0] = static_cast<unsigned char>(red);
        pixel[1] = static_cast<unsigned char>(green);
        pixel[2] = static_cast<unsigned char>(blue);
    }
};

// Black over blue, red and yellow to white, x from 0 to 1.
void heat(double x, int& red, int& green, int& blue) {
    red = static_cast<int>(255 * std::clamp(2.0 * x - 0.4, 0.0, 1.0));
    green = static_cast<int>(255 * std::clamp(2.5 * x - 1.3, 0.0, 1.0));
    blue = static_cast<int>(255 * std::clamp(x < 0.4 ? 2.0 * x : x > 0.8 ? 5.0 * (x - 0.8) : 1.6 - 2.0 * x, 0.0, 1.0));
}

void drawSpectra(const Bank& bank, Canvas& canvas) {
    RealFft fft(cycleLength);
    std::vector<double> signal(cycleLength), real(cycleLength / 2 + 1), imaginary(cycleLength / 2 + 1);
    std::vector<std::vector<double>> magnitudes;
    double strongest = 1e-12;
    for (int frame = 0; frame < bank.frames; ++frame) {
        std::copy_n(bank.cycle(0, frame), cycleLength, signal.begin());
        fft.forward(signal.data(), real.data(), imaginary.data());
        auto& row = magnitudes.emplace_back();
        for (int k = 0; k <= shownHarmonics; ++k) row.push_back(std::hypot(real[k], imaginary[k]));
        strongest = std::max(strongest, *std::max_element(row.begin() + 1, row.end()));
    }
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < panelWidth; ++x) {
            const int k = static_cast<int>(std::exp2(8.0 * (x + 0.5) / panelWidth));
            const double decibels = 20.0 * std::log10(magnitudes[y * bank.frames / height][k] / strongest + 1e-9);
            int red, green, blue;
            heat(std::clamp(1.0 - decibels / floorDecibels, 0.0, 1.0), red, green, blue);
            canvas.set(x, y, red, green, blue);
        }
}

void drawCycles(const Bank& bank, Canvas& canvas) {
    const int rows = std::min(bank.frames, 32);
    const double spacing = static_cast<double>(height) / (rows + 2);
    for (int row = 0; row < rows; ++row) {
        const std::int16_t* cycle = bank.cycle(0, rows > 1 ? row * (bank.frames - 1) / (rows - 1) : 0);
        int before = 0;
        for (int x = 0; x < panelWidth; ++x) {
            const double value = cycle[x * cycleLength / panelWidth] / 32768.0;
            const int y = static_cast<int>((row + 1.5) * spacing - value * spacing * 1.6);
            for (int at = x == 0 ? y : std::min(y, before), end = x == 0 ? y : std::max(y, before); at <= end; ++at)
                canvas.set(panelWidth + gap + x, at, 120, 220 - 4 * row, 140 + 3 * row);
            before = y;
        }
    }
}

}  // namespace

bool drawBank(const Bank& bank, const std::filesystem::path& path) {
    Canvas canvas;
    drawSpectra(bank, canvas);
    drawCycles(bank, canvas);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, canvas.pixels.data(), 0, nullptr) != 0;
}

}  // namespace vantoric::waves
