// Banks that are scanned through while they play. From one frame to the next every voice moves on by a whole
// number of cycles over the number of frames, so that the last frame joins the first; at the fastest scan
// a pass lasts 32 cycles, and a voice that moves n cycles in it is n / 32 off pitch. The start phases are chosen
// so that the voices never all cancel during a pass.
#include <cmath>

#include "base/math.h"
#include "factory/waves/makers.h"

namespace vantoric::waves {

namespace {

struct ScanVoice {
    int drift;     // cycles gained or lost in one pass
    double start;  // phase in the first frame, in cycles
    double level;
};

Spectrum voices(const Spectrum& shape, const ScanVoice* list, int count, int frame) {
    Spectrum result;
    for (int i = 0; i < count; ++i) {
        Spectrum voice = shape;
        const double phase = list[i].start + static_cast<double>(list[i].drift) * frame / scanFrames;
        voice.advance(phase - std::floor(phase));
        result.add(voice, list[i].level);
    }
    return result;
}

}  // namespace

Spectrum threeSaws(Workshop&, int frame) {
    static constexpr ScanVoice list[] = {{0, 0.06, 1.0}, {1, 0.24, 0.9}, {-1, 0.38, 0.9}};
    return voices(saw(), list, 3, frame);
}

// Every harmonic drifts by itself, the upper ones further: the beating of a crowd of saws.
Spectrum noisySaws(Workshop&, int frame) {
    constexpr std::uint32_t seed = 0x5c4;
    Spectrum result;
    for (int k = 1; k < harmonicLimit; ++k) {
        const int reach = k < 4 ? 1 : k < 16 ? 3 : 6;
        const int drift = static_cast<int>(chance(seed, k) * (2 * reach + 1)) - reach;
        const double turn = 2.0 * math::pi * (chance(seed + 1, k) + static_cast<double>(drift) * frame / scanFrames);
        const double size = math::exp(-0.8 * math::log(static_cast<double>(k)));
        result.cosine[k] = size * math::sin(turn);
        result.sine[k] = size * math::cos(turn);
    }
    return result;
}

Spectrum sixPulses(Workshop&, int frame) {
    static constexpr ScanVoice list[] = {{-3, 0.15, 0.7}, {-2, 0.99, 0.85}, {-1, 0.01, 1.0},
                                         {1, 0.46, 1.0},  {2, 0.90, 0.85},  {3, 0.54, 0.7}};
    return voices(pulse(0.3), list, 6, frame);
}

}  // namespace vantoric::waves
