// vantoric-samples OUTDIR: makes the samples of the factory patches.
#include <sndfile.h>
#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "base/version.h"
#include "factory/samples/recipes.h"

namespace {

namespace fs = std::filesystem;
using namespace vantoric;

enum Exit { done = 0, wrongUse = 2, fileTrouble = 3 };

int complain(const fs::path& path, const char* what) {
    std::fprintf(stderr, "vantoric-samples: %s: %s\n", path.c_str(), what);
    return fileTrouble;
}

// Mono, 16 bits, with its loop markers.
bool write(const made::Recipe& recipe, const fs::path& path) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(made::rate);
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) return false;
    const auto [wave, loop] = recipe.make();
    // Without a loop the markers stand around the whole, which is then played to its end.
    SF_INSTRUMENT instrument{};
    instrument.basenote = 48;
    instrument.velocity_hi = instrument.key_hi = 127;
    instrument.gain = 1;
    instrument.loop_count = 1;
    instrument.loops[0] = {SF_LOOP_FORWARD, static_cast<std::uint32_t>(loop), static_cast<std::uint32_t>(wave.size()), 0};
    sf_command(file, SFC_SET_INSTRUMENT, &instrument, sizeof instrument);
    std::vector<short> frames;
    for (const double sample : wave) frames.push_back(static_cast<short>(std::lround(sample * 32767.0)));
    const bool whole =
        sf_write_short(file, frames.data(), static_cast<sf_count_t>(frames.size())) == static_cast<sf_count_t>(frames.size());
    return sf_close(file) == 0 && whole;
}

int makeAll(const fs::path& folder) {
    std::error_code trouble;
    fs::create_directories(folder, trouble);
    if (!fs::is_directory(folder, trouble)) return complain(folder, "this folder cannot be made");
    for (const made::Recipe& recipe : made::recipes()) {
        const fs::path path = folder / (std::string(recipe.name) + ".wav");
        if (!write(recipe, path)) return complain(path, "cannot be written");
    }
    std::printf("%zu samples: %s\n", made::recipes().size(), folder.c_str());
    return done;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app(
        "Makes the samples of the factory patches: drums, strings, bars, tubes and a voice, by physical and formant models.",
        "vantoric-samples");
    std::string folder;
    app.set_version_flag("--version", std::string("vantoric-samples ") + versionText);
    app.add_option("OUTDIR", folder, "folder for the wave files")->required();
    app.footer("Exit codes: 0 done, 2 wrong use, 3 a file that cannot be written.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? done : wrongUse;
    }
    return makeAll(folder);
}
