// vantoric-song: compiles a song from text.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "apps/song/score.h"
#include "base/version.h"

namespace {

bool save(const std::string& path, const std::string& bytes) {
    std::ofstream output(path, std::ios::binary);
    output << bytes;
    output.close();
    if (!output) std::fprintf(stderr, "vantoric-song: %s: cannot be written\n", path.c_str());
    return static_cast<bool>(output);
}

// The song's path as seen from the folder of the mix.
std::string songFrom(const std::string& mix, const std::string& song) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::path folder = fs::absolute(mix, ignored).parent_path();
    return fs::absolute(song, ignored).lexically_relative(folder);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Turns a readable score into a MIDI file.", "vantoric-song");
    app.set_version_flag("--version", std::string("vantoric-song ") + vantoric::versionText);
    app.footer("Exit codes: 0 done, 2 wrong use, 3 a file that cannot be read, understood or written.");
    std::string in, out, patch, mix;
    app.add_option("SCORE", in, "score to read (.song)")->required();
    app.add_option("OUT", out, "MIDI file to write")->required();
    app.add_option("PATCH", patch, "file for the name of its patch and the decibels by which a recording is to be raised");
    app.add_option("--mix", mix, "file for the song's instruments, their levels and its loudness, which vantoric-render plays");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    std::ifstream input(in, std::ios::binary);
    if (!input) {
        std::fprintf(stderr, "vantoric-song: %s: cannot be opened\n", in.c_str());
        return 3;
    }
    const std::string score{std::istreambuf_iterator<char>(input), {}};
    std::vector<std::uint8_t> midi;
    std::string problem;
    vantoric::song::Advice advice;
    if (!vantoric::song::compile(score, midi, problem, &advice)) {
        std::fprintf(stderr, "%s: %s\n", in.c_str(), problem.c_str());
        return 3;
    }
    return save(out, std::string(midi.begin(), midi.end())) &&
                   (patch.empty() || save(patch, advice.patch + '\n' + std::to_string(advice.level) + '\n')) &&
                   (mix.empty() || save(mix, mixText(advice, songFrom(mix, out))))
               ? 0
               : 3;
}
