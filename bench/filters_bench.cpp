// What each filter type costs, in ns per voice and sample at 96 kHz: one voice alone, four and sixteen voices
// as lanes; and a setup with a new cutoff, in ns.
// Usage: bench-filters [milliseconds a figure] [list index]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <xmmintrin.h>

#include "sound/filter_bank.h"
#include "sound/voice_filter.h"

namespace {

using namespace vantoric;
using Clock = std::chrono::steady_clock;

constexpr int tick = 96;

class Bench {
public:
    explicit Bench(int milliseconds) : milliseconds_(milliseconds) {
        LinearCongruence chance{1};
        for (float& x : noise_) x = chance.unit() - 0.5f;
    }

    void report(int index) {
        settings_ = {
            .sampleRate = 96000.0f, .tickSamples = tick, .type = index, .cutoff = 0.7f, .resonance = 0.6f, .analog = 0.5f};
        std::printf("%3d %4d %9.2f %9.2f %9.2f %9.0f\n", index, filterNumber(index), alone(), lanes(4), lanes(16), setup());
    }

private:
    // The best of several stretches, in ns a call.
    template <class Work>
    double time(Work&& work) const {
        double best = 1e9;
        const auto end = Clock::now() + std::chrono::milliseconds(milliseconds_);
        do {
            const auto start = Clock::now();
            for (int i = 0; i < 8; ++i) work();
            const std::chrono::duration<double, std::nano> spent = Clock::now() - start;
            best = std::min(best, spent.count() / 8);
        } while (Clock::now() < end);
        return best;
    }

    double alone() {
        VoiceFilter filter(random_);
        filter.setup(settings_);
        return time([&] {
                   std::memcpy(buffer_, noise_, tick * sizeof(float));
                   filter.run(buffer_, tick);
               }) /
               tick;
    }
    double lanes(int voices) {
        FilterBank bank(random_);
        const auto mask = static_cast<LaneMask>(0xffff << (voiceCount - voices));
        for (int v = 0; v < voiceCount; ++v) bank.setup(v, settings_);
        return time([&] {
                   std::memcpy(buffer_, noise_, sizeof buffer_ / maxTickSamples * tick);
                   bank.run(buffer_, tick, mask);
               }) /
               (tick * voices);
    }
    double setup() {
        FilterBank bank(random_);
        FilterSettings settings = settings_;
        return time([&] {
            settings.cutoff = settings.cutoff > 0.8f ? 0.6f : settings.cutoff + 0.001f;
            bank.setup(3, settings);
        });
    }

    int milliseconds_;
    RandomSources random_;
    FilterSettings settings_;
    alignas(64) LaneBuffer noise_, buffer_;
};

}  // namespace

int main(int argc, char** argv) {
    _mm_setcsr(_mm_getcsr() | 0x8040u);
    static Bench bench(argc > 1 ? std::atoi(argv[1]) : 20);
    std::printf("  #  no.     alone   4 lanes  16 lanes     setup\n");
    for (int index = 0; index < 64; ++index)
        if (filterNumber(index) >= 0 && (argc < 3 || std::atoi(argv[2]) == index)) bench.report(index);
    return 0;
}
