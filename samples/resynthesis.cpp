#include "samples/resynthesis.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

#include "base/numbers.h"
#include "base/thread_check.h"
#include "samples/autotune.h"
#include "samples/wave_file.h"

namespace vantoric {

namespace {

using Sound = std::span<const std::int16_t>;

std::int16_t bounded(double value) { return static_cast<std::int16_t>(truncateTo(value, -32767, 32767)); }

// The whole sound as one cycle; the last read goes on to the first sample.
void takeWhole(Sound sound, CycleSpan cycle) {
    const std::size_t n = sound.size();
    for (std::size_t i = 0; i < cycle.size(); ++i) {
        const double p = static_cast<double>(i * n) / cycleSamples;
        const auto at = static_cast<std::size_t>(p);
        const double z = p - static_cast<double>(at);
        cycle[i] = bounded(0.9 * ((1.0 - z) * sound[at] + z * sound[(at + 1) % n]));
    }
}

// Linear read; silence behind the end.
double readAt(Sound sound, std::size_t at, double z) {
    const double here = at < sound.size() ? sound[at] : 0.0;
    const double next = at + 1 < sound.size() ? sound[at + 1] : 0.0;
    return (1.0 - z) * here + z * next;
}

// One period from the middle on, the second half fading over to the period before.
void takePeriod(Sound sound, std::size_t lag, CycleSpan cycle) {
    const std::size_t middle = sound.size() / 2;
    for (std::size_t i = 0; i < cycle.size(); ++i) {
        const double p = static_cast<double>(lag * i) / cycleSamples;
        const auto at = static_cast<std::size_t>(p);
        const double z = p - static_cast<double>(at);
        double v = readAt(sound, middle + at, z);
        if (i > 1024) {
            const double earlier = readAt(sound, middle + at - lag, z);
            const double place = static_cast<double>(i);
            v = earlier * (place - 1024.0) / 1024.0 + v * (2.0 - place / 1024.0);
        }
        cycle[i] = bounded(0.25 * v);
    }
}

// Returns the peak that was there.
int scaleToPeak(CycleSpan cycle) {
    int peak = 0;
    for (const int s : cycle) peak = std::max(peak, std::abs(s));
    if (peak == 0) return 0;
    const double factor = static_cast<double>(resynthesisPeak) / peak;
    for (std::int16_t& s : cycle) s = bounded(s * factor);
    return peak;
}

}  // namespace

CycleSource resynthesizeSound(Sound sound, CycleSpan cycle) {
    notInsideAnyBlock();
    CycleSource source;
    if (sound.empty()) {
        std::fill(cycle.begin(), cycle.end(), std::int16_t{0});
    } else if (sound.size() <= longestCycle) {
        takeWhole(sound, cycle);
    } else {
        source.lag = bestLag(sound.data(), static_cast<std::int32_t>(sound.size()));
        takePeriod(sound, static_cast<std::size_t>(source.lag), cycle);
    }
    source.peakBefore = scaleToPeak(cycle);
    return source;
}

Outcome resynthesizeWave(std::span<const std::uint8_t> file, const std::string& title, CycleSpan cycle) {
    const WaveLayout layout = parseWave(file);
    if (layout.error != WaveError::none) return Outcome::failure(title, waveErrorText(layout.error));
    const std::vector<std::int16_t> sound = convertWave(file, layout, 0, resynthesisFloatScale);
    if (sound.empty()) return Outcome::failure(title, waveErrorText(WaveError::noData));  // less than one frame
    resynthesizeSound(sound, cycle);
    return Outcome::success();
}

Outcome resynthesizeFile(const std::string& path, CycleSpan cycle) try {
    std::vector<std::uint8_t> file;
    switch (readWaveFile(path, file, maxResynthesisBytes)) {
        case WaveRead::unreadable:
        case WaveRead::stopped: return Outcome::silentFailure();
        case WaveRead::tooLarge:
            return Outcome::failure("Error",
                                    "This file is too large and not suitable for resynthesis. Please choose a smaller one!");
        case WaveRead::done: break;
    }
    return resynthesizeWave(file, path, cycle);
} catch (const std::bad_alloc&) {
    return Outcome::failure("Error", notEnoughMemory);
}

}  // namespace vantoric
