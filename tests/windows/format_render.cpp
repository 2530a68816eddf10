// format-render FORMAT MODULE PATCH.fxp OUT.raw: plays some notes through a module of a format (clap, vst3) and writes its
// samples as they are, 32-bit floats, left and right in turn. Builds for every system that the modules build for.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "apps/render/patch_file.h"
#include "tests/formats/format_host.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace testhost {

namespace {

constexpr std::int32_t uniqueId = 0x51374449;  // "Q7DI"

constexpr float audible = 0.01f;  // of full scale

std::filesystem::path modulePath;

// Blocks of a second and a half, notes and a controller at odd frames.
std::vector<Event> phrase(int block) {
    switch (block) {
        case 0: return {Event::note(0, 48), Event::note(37, 60), Event::note(511, 64)};
        case 40: return {Event::note(100, 60, false), Event::controller(101, 1, 80), Event::note(300, 67)};
        case 90: return {Event::note(5, 48, false), Event::note(6, 64, false), Event::note(7, 67, false)};
        default: return {};
    }
}

void write(std::ofstream& file, const Sound& sound) {
    for (std::size_t i = 0; i < sound.left.size(); ++i)
        for (const float sample : {sound.left[i], sound.right[i]})
            file.write(reinterpret_cast<const char*>(&sample), sizeof sample);
}

int run(const std::string& format, const std::string& patch, const char* out) {
    constexpr double rate = 48000;
    constexpr int block = 512, blocks = 141;
    const auto host = format == "clap" ? makeClapHost() : makeVst3Host();
    Bytes state;
    std::string problem;
    if (!vantoric::render::loadPatch(patch, uniqueId, state, problem)) throw std::runtime_error(problem);
    if (!host->load(state, 4099)) throw std::runtime_error("the plug-in does not take the patch");
    if (host->save(7) != host->save(100000)) throw std::runtime_error("the state depends on how it is read");
    host->start(rate, block);
    host->render(block);
    std::ofstream file(out, std::ios::binary);
    float peak = 0;
    for (int i = 0; i < blocks; ++i) {
        const Sound sound = host->render(block, phrase(i));
        for (const float sample : sound.left) peak = std::max(peak, std::fabs(sample));
        write(file, sound);
    }
    host->stop();
    file.close();
    if (!file) throw std::runtime_error("the sound cannot be written");
    if (!(peak > audible)) throw std::runtime_error("it is silent");
    std::printf("%s: %d frames\n", format.c_str(), block * blocks);
    return 0;
}

}  // namespace

// The hosts ask for their format's module.
void* loadModule(const char*, const char* symbol) {
#ifdef _WIN32
    const HMODULE module = LoadLibraryW(modulePath.c_str());
    void* const found = module != nullptr ? reinterpret_cast<void*>(GetProcAddress(module, symbol)) : nullptr;
#else
    void* const module = dlopen(modulePath.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const found = module != nullptr ? dlsym(module, symbol) : nullptr;
#endif
    if (found == nullptr) throw std::runtime_error(std::string(symbol) + " is not to be found");
    return found;
}

}  // namespace testhost

int main(int argc, char** argv) {
    if (argc != 5) return std::fprintf(stderr, "usage: format-render clap|vst3 MODULE PATCH.fxp OUT.raw\n"), 2;
    try {
        testhost::modulePath = std::filesystem::absolute(argv[2]);
        return testhost::run(argv[1], argv[3], argv[4]);
    } catch (const std::exception& error) {
        return std::fprintf(stderr, "format-render: %s\n", error.what()), 1;
    }
}
