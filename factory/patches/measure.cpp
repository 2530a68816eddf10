// measure-patches [--page] [PATCH.fxp...]: plays every patch and prints a row of its table of levels. Without patches: all
// that were compiled. --page prints what tools/library_page.py reads instead, one patch a line, with tabs between: name, LUFS
// of a chord, dBFS of ten keys, seconds of the tail, percent of a core, picture.
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

const std::vector<int> chordKeys = {60, 64, 67, 72};

// Highest level of ten keys at full force. Phases differ from note to note, so the highest of a few tries.
double highestOfTenKeys(Studio& studio) {
    double highest = 0.0;
    for (const std::uint32_t chance : {1, 2, 3}) {
        studio.setChance(chance);
        highest = std::max(highest, studio.play({36, 43, 48, 52, 55, 60, 64, 67, 71, 74}, 127, 1.5, 1.0).peak);
    }
    studio.setChance(0);
    return highest;
}

// Third octaves over the first four seconds: column by column, each from the lowest band up, a digit of base 36 a band, 2 dB a
// step below the loudest.
std::string picture(const Take& take) {
    const std::vector<double> powers = thirdOctaves(take, 64, 4.0);
    const double loudest = *std::max_element(powers.begin(), powers.end());
    std::string digits;
    for (const double power : powers) {
        const int step = std::clamp(static_cast<int>(std::lround(35.0 + 5.0 * std::log10(power / loudest))), 0, 35);
        digits += "0123456789abcdefghijklmnopqrstuvwxyz"[step];
    }
    return digits;
}

void measureForPage(Studio& studio, const fs::path& path) {
    if (!studio.load(path.string())) return;
    const Take chord = studio.play(chordKeys, 100, 3.0, 0.0);
    const Take whole = studio.play(chordKeys, 100, 3.0, 12.0);
    const double cost = 100.0 * chord.spent * studioRate / static_cast<double>(chord.left.size());
    std::printf("%s\t%.1f\t%.1f\t%.1f\t%.1f\t%s\n", (path.parent_path().filename() / path.stem()).c_str(), whole.loudness,
                decibels(highestOfTenKeys(studio)), whole.tailSeconds, cost, picture(whole).c_str());
    std::fflush(stdout);
}

void measure(Studio& studio, const fs::path& path) {
    if (!studio.load(path.string())) {
        std::printf("| %s | not loaded |\n", path.c_str());
        return;
    }
    const Take chord = studio.play(chordKeys, 100, 3.0, 12.0);
    const Take soft = studio.play(chordKeys, 40, 3.0, 1.0);
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
                decibels(chord.peak), decibels(highestOfTenKeys(studio)), decibels(chord.offset), chord.tailSeconds, pitch);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<fs::path> paths(argv + 1, argv + argc);
    const bool forPage = !paths.empty() && paths.front() == "--page";
    if (forPage) paths.erase(paths.begin());
    if (paths.empty())
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(MADE_FOLDER) / "Vantoric_sounds"))
            if (entry.path().extension() == ".fxp") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    if (!forPage)
        std::printf(
            "| Patch | chord 100 / 40, LUFS | C2 100 / 40 | C4 100 / 40 | C6 100 / 40 | chord peak, dBFS | ten keys, dBFS |"
            " mean, dB | tail, s | C4, cents |\n|---|---|---|---|---|---|---|---|---|---|\n");
    Studio studio;
    for (const fs::path& path : paths) (forPage ? measureForPage : measure)(studio, path);
}
