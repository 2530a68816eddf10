#include "factory/cycles/sheet.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "platform/files.h"

namespace vantoric::cycles {

namespace {

constexpr int columns = 8, cellWidth = 180, cellHeight = 132, curveWidth = 160, curveHeight = 70, barHeight = 30;
constexpr int shownHarmonics = 64;
constexpr double floorDecibels = -60.0;

__attribute__((format(printf, 2, 3))) void print(std::string& text, const char* format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    text += line;
}

void drawCurve(const Cycle& cycle, std::string& svg) {
    const double turn = curveWidth / 1.25;
    print(svg, "<path class='axis' d='M0 %d h%d M%.1f 0 v%d'/><polyline points='", curveHeight / 2, curveWidth, turn,
          curveHeight);
    for (int x = 0; x <= 4 * curveWidth; ++x) {
        const auto at = static_cast<std::size_t>(x / (4.0 * turn) * waves::cycleLength) % cycle.size();
        print(svg, "%.2f,%.1f ", x / 4.0, 0.5 * curveHeight * (1.0 - cycle[at] / 32768.0));
    }
    svg += "'/>";
}

void drawHarmonics(const Cycle& cycle, RealFft& fft, std::string& svg) {
    std::vector<double> signal(cycle.begin(), cycle.end()), real(cycle.size() / 2 + 1), imaginary(cycle.size() / 2 + 1);
    fft.forward(signal.data(), real.data(), imaginary.data());
    double strongest = 1e-9;
    for (std::size_t k = 1; k < real.size(); ++k) strongest = std::max(strongest, std::hypot(real[k], imaginary[k]));
    svg += "<path class='bars' d='";
    for (int k = 1; k <= shownHarmonics; ++k) {
        const double level = 20.0 * std::log10(std::hypot(real[k], imaginary[k]) / strongest + 1e-9);
        const double height = barHeight * std::max(0.0, 1.0 - level / floorDecibels);
        if (height > 0.0)
            print(svg, "M%.1f %d v%.1f", (k - 0.5) * curveWidth / shownHarmonics, curveHeight + barHeight + 4, -height);
    }
    svg += "'/>";
}

}  // namespace

bool drawSheet(const std::vector<NamedCycle>& cycles, const std::filesystem::path& path) {
    const int lines = (static_cast<int>(cycles.size()) + columns - 1) / columns;
    std::string svg;
    print(svg, "<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d'>\n", columns * cellWidth, lines * cellHeight);
    svg +=
        "<style>text{font:11px sans-serif;fill:#ddd}polyline{fill:none;stroke:#6d9;stroke-width:1.2}"
        ".axis{stroke:#555;fill:none}.bars{stroke:#e95;stroke-width:1.6;fill:none}</style>\n"
        "<rect width='100%' height='100%' fill='#1c1c20'/>\n";
    RealFft fft(waves::cycleLength);
    for (std::size_t i = 0; i < cycles.size(); ++i) {
        print(svg, "<g transform='translate(%d %d)'><text y='-4'>", static_cast<int>(i) % columns * cellWidth + 10,
              static_cast<int>(i) / columns * cellHeight + 20);
        svg += cycles[i].name + "</text>";
        drawCurve(cycles[i].cycle, svg);
        drawHarmonics(cycles[i].cycle, fft, svg);
        svg += "</g>\n";
    }
    svg += "</svg>\n";
    return platform::writeFile(path.string(), svg.data(), svg.size());
}

}  // namespace vantoric::cycles
