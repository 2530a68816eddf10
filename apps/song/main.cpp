// vantoric-song SCORE.song OUT.mid: compiles a song from text.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "apps/song/score.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: vantoric-song SCORE.song OUT.mid\n");
        return 2;
    }
    std::ifstream input(argv[1], std::ios::binary);
    if (!input) {
        std::fprintf(stderr, "vantoric-song: %s: cannot be opened\n", argv[1]);
        return 3;
    }
    const std::string score{std::istreambuf_iterator<char>(input), {}};
    std::vector<std::uint8_t> midi;
    std::string problem;
    if (!vantoric::song::compile(score, midi, problem)) {
        std::fprintf(stderr, "%s: %s\n", argv[1], problem.c_str());
        return 3;
    }
    std::ofstream output(argv[2], std::ios::binary);
    output.write(reinterpret_cast<const char*>(midi.data()), static_cast<std::streamsize>(midi.size()));
    output.close();
    if (!output) {
        std::fprintf(stderr, "vantoric-song: %s: cannot be written\n", argv[2]);
        return 3;
    }
    return 0;
}
