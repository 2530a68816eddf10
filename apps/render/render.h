// The render loop.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "apps/render/plugin.h"
#include "apps/render/song.h"

namespace vantoric::render {

struct RenderSettings {
    double rate = 44100.0;      // Hz
    int block = 512;            // frames, 1 to 32768; the longest one if `randomBlocks`
    bool randomBlocks = false;  // every block another length, the same row of lengths each time
    double start = 0.0;         // seconds of the song
    double end = std::numeric_limits<double>::infinity();
    double tail = -1.0;  // seconds after the last note; negative: until it is silent
    double gain = 1.0;   // factor
};

inline constexpr double silence = 1e-4;        // -80 dB
inline constexpr double silentSeconds = 0.75;  // this long below it is the end
inline constexpr double longestTail = 10.0;    // seconds

struct RenderResult {
    std::int64_t frames = 0;
    std::int64_t badSamples = 0;  // NaN or infinite; written as 0
    double seconds = 0.0;         // spent in the plug-in
    bool written = true;          // the sink took everything
};

// Takes interleaved stereo; false stops the render.
using Sink = std::function<bool(const float* samples, int frames)>;
// Told after every block: frames done, frames expected in all.
using Progress = std::function<void(std::int64_t done, std::int64_t expected)>;
// Called while the plug-in's threads are waited for.
using Waiting = std::function<void()>;

// Plays the song. Prepares the plug-in, waits up to `settle` seconds for its threads, switches it on and off
// again. Blocks also end where more events would come together than a plug-in can be expected to hold.
RenderResult render(PluginHost& plugin, const Song& song, const RenderSettings& settings, double settle, const Sink& sink,
                    const Progress& progress, const Waiting& waiting = {});

}  // namespace vantoric::render
