// vantoric-song SCORE.song OUT.mid [OUT.patch]: compiles a song from text; the last file gets the name of its patch and the
// decibels by which the recording is to be raised.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "apps/song/score.h"

namespace {

bool save(const char* path, const std::string& bytes) {
    std::ofstream output(path, std::ios::binary);
    output << bytes;
    output.close();
    if (!output) std::fprintf(stderr, "vantoric-song: %s: cannot be written\n", path);
    return static_cast<bool>(output);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: vantoric-song SCORE.song OUT.mid [OUT.patch]\n");
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
    vantoric::song::Advice advice;
    if (!vantoric::song::compile(score, midi, problem, &advice)) {
        std::fprintf(stderr, "%s: %s\n", argv[1], problem.c_str());
        return 3;
    }
    return save(argv[2], std::string(midi.begin(), midi.end())) &&
                   (argc == 3 || save(argv[3], advice.patch + '\n' + std::to_string(advice.level) + '\n'))
               ? 0
               : 3;
}
