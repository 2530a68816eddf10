// raw-render PLUGIN SONG.mid PATCH.fxp OUT.raw: plays a song through a plug-in and writes its samples as they are, 32-bit
// floats, left and right in turn. Builds for every system that the plug-in builds for, so that their sounds can be compared.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "apps/midi/midi_file.h"
#include "apps/render/patch_file.h"
#include "apps/render/plugin.h"
#include "apps/render/render.h"
#include "apps/render/song.h"

namespace {

using namespace vantoric;
using namespace vantoric::render;

constexpr float audible = 0.01f;  // of full scale

int complain(const std::string& what, const std::string& problem) {
    std::fprintf(stderr, "raw-render: %s: %s\n", what.c_str(), problem.c_str());
    return 3;
}

int run(const std::string& module, const std::string& song, const std::string& patch, const std::string& out) {
    std::string problem;
    midi::File file;
    if (!midi::load(song, file, problem)) return complain(song, problem);
    const auto plugin = PluginHost::load(module, problem);
    if (!plugin) return complain(module, problem);
    std::vector<std::uint8_t> chunk;
    if (!loadPatch(patch, plugin->uniqueId(), chunk, problem)) return complain(patch, problem);
    if (!plugin->setChunk(chunk)) return complain(patch, "the plug-in does not take it");
    std::ofstream output(out, std::ios::binary);
    float peak = 0;
    const auto write = [&](const float* samples, int frames) {
        for (int i = 0; i < 2 * frames; ++i) peak = std::max(peak, std::fabs(samples[i]));
        output.write(reinterpret_cast<const char*>(samples), static_cast<std::streamsize>(sizeof(float)) * 2 * frames);
        return static_cast<bool>(output);
    };
    RenderSettings settings;
    settings.end = 20.0;
    const RenderResult result =
        vantoric::render::render(*plugin, Song(std::move(file)), settings, 30.0, write, [](std::int64_t, std::int64_t) {});
    output.close();
    if (!result.written || !output) return complain(out, "cannot be written");
    std::printf("%lld frames, %lld bad samples, %d parameters\n", static_cast<long long>(result.frames),
                static_cast<long long>(result.badSamples), plugin->parameters());
    if (peak < audible) return complain(song, "it is silent");
    return result.badSamples == 0 ? 0 : 4;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) return std::fprintf(stderr, "usage: raw-render PLUGIN SONG.mid PATCH.fxp OUT.raw\n"), 2;
    return run(argv[1], argv[2], argv[3], argv[4]);
}
