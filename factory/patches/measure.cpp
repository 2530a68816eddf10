// measure-patches PATCH.fxp...: plays every patch and prints a row of its table of levels. Without patches: all that
// were compiled.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "factory/patches/studio.h"

namespace {

namespace fs = std::filesystem;
using namespace vantoric::factory;

double decibels(double level) { return 20.0 * std::log10(std::max(level, 1e-6)); }

double cents(double hertz, double expected) { return hertz > 0.0 ? 1200.0 * std::log2(hertz / expected) : NAN; }

void measure(Studio& studio, const fs::path& path) {
    if (!studio.load(path.string())) {
        std::printf("| %s | not loaded |\n", path.c_str());
        return;
    }
    const Take chord = studio.play({60, 64, 67, 72}, 100, 3.0, 12.0);
    const Take soft = studio.play({60, 64, 67, 72}, 40, 3.0, 1.0);
    // Phases differ from note to note, so the highest of a few tries.
    double highest = 0.0;
    for (int round = 0; round < 3; ++round)
        highest = std::max(highest, studio.play({36, 43, 48, 52, 55, 60, 64, 67, 71, 74}, 127, 1.5, 1.0).peak);
    std::string singles;
    double pitch = NAN;
    for (const int key : {36, 60, 84}) {
        const Take loud = studio.play({key}, 100, 2.0, 1.0), quiet = studio.play({key}, 40, 2.0, 1.0);
        char text[40];
        std::snprintf(text, sizeof text, " %.1f / %.1f |", loud.loudness, quiet.loudness);
        singles += text;
        const double expected = 440.0 * std::exp2((key - 69) / 12.0);
        if (key == 60) pitch = cents(fundamental(loud.left, 0.5, 0.4, expected), expected);
    }
    std::printf("| %s | %.1f / %.1f |%s %.1f | %.1f | %.0f | %.1f | %+.1f |\n",
                (path.parent_path().filename() / path.stem()).c_str(), chord.loudness, soft.loudness, singles.c_str(),
                decibels(chord.peak), decibels(highest), decibels(chord.offset), chord.tailSeconds, pitch);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<fs::path> paths(argv + 1, argv + argc);
    if (paths.empty())
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(MADE_FOLDER) / "Vantoric_sounds"))
            if (entry.path().extension() == ".fxp") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::printf(
        "| Patch | chord 100 / 40, LUFS | C2 100 / 40 | C4 100 / 40 | C6 100 / 40 | chord peak, dBFS | ten keys, dBFS |"
        " mean, dB | tail, s | C4, cents |\n|---|---|---|---|---|---|---|---|---|---|\n");
    Studio studio;
    for (const fs::path& path : paths) measure(studio, path);
}
