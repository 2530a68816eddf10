// fuzz-replay CORPUS: runs every target on its kept inputs (CORPUS/<target>/), on its seeds and on some
// thousand simple mutations of both, the same each time. fuzz-replay --seeds DIR writes the seeds.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "base/random.h"
#include "platform/files.h"
#include "tests/fuzz/targets.h"

namespace {

namespace fs = std::filesystem;
using vantoric::fuzz::Bytes;

struct Target {
    const char* name;
    void (*run)(const std::uint8_t*, std::size_t);
    std::vector<Bytes> (*seeds)();
    int mutations;  // of each input
};
const Target targets[] = {
    {"chunk", vantoric::fuzz::chunk, vantoric::fuzz::chunkSeeds, 60},
    {"patch_file", vantoric::fuzz::patchFile, vantoric::fuzz::patchFileSeeds, 40},
    {"controller_map", vantoric::fuzz::controllerMap, vantoric::fuzz::controllerMapSeeds, 200},
    {"size_file", vantoric::fuzz::sizeFile, vantoric::fuzz::sizeFileSeeds, 50},
    {"bank_file", vantoric::fuzz::bankFile, vantoric::fuzz::bankFileSeeds, 100},
    {"wave_file", vantoric::fuzz::waveFile, vantoric::fuzz::waveFileSeeds, 100},
    {"sfz_file", vantoric::fuzz::sfzFile, vantoric::fuzz::sfzFileSeeds, 500},
    {"resynthesis", vantoric::fuzz::resynthesis, vantoric::fuzz::resynthesisSeeds, 20},
#ifdef CLAP_MODULE
    {"clap_state", vantoric::fuzz::clapState, vantoric::fuzz::stateSeeds, 3},
#endif
#ifdef LV2_MODULE
    {"lv2_state", vantoric::fuzz::lv2State, vantoric::fuzz::stateSeeds, 3},
#endif
#ifdef VST3_MODULE
    {"vst3_state", vantoric::fuzz::vst3State, vantoric::fuzz::stateSeeds, 3},
#endif
};

// A copy of exactly the input's size, so that a read beyond it is seen.
void runOn(const Target& target, const Bytes& input) {
    const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[input.size()]);
    std::copy(input.begin(), input.end(), exact.get());
    target.run(exact.get(), input.size());
}

Bytes mutated(Bytes input, vantoric::LinearCongruence& random) {
    static const std::uint8_t edges[] = {0, 1, 0x7f, 0x80, 0xff};
    const int changes = 1 + static_cast<int>(random.next() >> 30);
    for (int k = 0; k < changes && !input.empty(); ++k) {
        const std::size_t at = static_cast<std::size_t>(random.next() >> 8) % input.size();
        switch (random.next() >> 30) {
            case 0: input[at] = static_cast<std::uint8_t>(random.next() >> 24); break;
            case 1: input[at] = edges[(random.next() >> 16) % 5]; break;
            case 2: input.resize(at); break;
            default: input.insert(input.begin() + static_cast<std::ptrdiff_t>(at), 4, edges[(random.next() >> 16) % 5]);
        }
    }
    return input;
}

std::vector<Bytes> inputsOf(const Target& target, const fs::path& corpus) {
    std::vector<Bytes> inputs = target.seeds();
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(corpus / target.name, error)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        Bytes bytes;
        if (vantoric::platform::readFile(file.string(), bytes)) inputs.push_back(bytes);
    }
    return inputs;
}

void writeSeeds(const Target& target, const fs::path& folder) {
    fs::create_directories(folder / target.name);
    int number = 0;
    for (const Bytes& seed : target.seeds()) {
        const fs::path file = folder / target.name / ("seed" + std::to_string(number++));
        vantoric::platform::writeFile(file.string(), seed.data(), seed.size());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--seeds") == 0) {
        for (const Target& target : targets) writeSeeds(target, argv[2]);
        return 0;
    }
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz-replay CORPUS | --seeds DIR\n");
        return 2;
    }
    for (const Target& target : targets) {
        vantoric::LinearCongruence random{1};
        const std::vector<Bytes> inputs = inputsOf(target, argv[1]);
        for (const Bytes& input : inputs) {
            runOn(target, input);
            for (int k = 0; k < target.mutations; ++k) runOn(target, mutated(input, random));
        }
        std::printf("%s: %zu inputs, each with %d mutations\n", target.name, inputs.size(), target.mutations);
    }
    return 0;
}
