// What each filter type costs, in ns per voice and sample at 96 kHz: as scalar code; four and sixteen voices as
// lanes, both filter places of sixteen voices at once where they can be, and a single voice in both places of four layers
// at once, in either width of registers; and a setup with a new cutoff, in ns.
// Usage: bench-filters [milliseconds a figure] [list index]
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <xmmintrin.h>

#include "sound/filter_bank.h"
#include "sound/filter_labels.h"
#include "sound/filter_rack.h"
#include "sound/filters/wide_loops.h"
#include "sound/voice_filter.h"
#include "thread_time.h"

namespace {

using namespace vantoric;

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
        std::printf("%3d %-16s %8.2f ", index, filterLabels[static_cast<std::size_t>(index)], alone());
        for (const bool wide : {false, true}) {
            filters::useWideLoops(wide);
            std::printf("| %8.2f %8.2f ", lanes(4), lanes(16));
            const double pair = bothPlaces();
            if (pair > 0.0)
                std::printf("%8.2f ", pair);
            else
                std::printf("       - ");
            std::printf("%8.2f ", rack());
        }
        std::printf("| %6.0f\n", setup());
    }

private:
    // The best of several stretches, in ns a call.
    template <class Work>
    double time(Work&& work) const {
        double best = 1e9;
        const double end = bench::threadSeconds() + 1e-3 * milliseconds_;
        do best = std::min(best, bench::bestTime(1, 64, work) * 1e9);
        while (bench::threadSeconds() < end);
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
    // Per filter.
    double bothPlaces() {
        static FilterRack runner;
        FilterBank first(random_), second(random_);
        for (int v = 0; v < voiceCount; ++v) {
            first.setup(v, settings_);
            second.setup(v, settings_);
        }
        const std::array places{FilterPlace{&first, buffer_, 0xffff}, FilterPlace{&second, other_, 0xffff}};
        return time([&] {
                   std::memcpy(buffer_, noise_, sizeof buffer_ / maxTickSamples * tick);
                   std::memcpy(other_, noise_, sizeof buffer_ / maxTickSamples * tick);
                   runner.run(places, tick);
               }) /
               (tick * 2 * voiceCount);
    }
    // Per filter.
    double rack() {
        static FilterRack runner;
        static LaneBuffer buffers[FilterRack::maxPlaces];
        std::vector<std::unique_ptr<FilterBank>> banks;
        std::vector<FilterPlace> places;
        for (LaneBuffer& buffer : buffers) {
            banks.push_back(std::make_unique<FilterBank>(random_));
            banks.back()->setup(15, settings_);
            places.push_back({banks.back().get(), buffer, 0x8000});
        }
        return time([&] {
                   for (const FilterPlace& place : places)
                       std::memcpy(place.buffer, noise_, sizeof noise_ / maxTickSamples * tick);
                   runner.run(places, tick);
               }) /
               (tick * FilterRack::maxPlaces);
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
    alignas(64) LaneBuffer noise_, buffer_, other_;
};

}  // namespace

int main(int argc, char** argv) {
    _mm_setcsr(_mm_getcsr() | 0x8040u);
    static Bench rig(argc > 1 ? std::atoi(argv[1]) : 20);
    std::printf("%-21s %8s | %-35s | %s\n", "", "scalar", "registers of four lanes",
                filters::wideLoopsInUse() ? "of eight lanes" : "no registers of eight lanes: the same again");
    std::printf("%-21s %8s ", "  # filter", "");
    for (int width = 0; width < 2; ++width) std::printf("| %8s %8s %8s %8s ", "4 voices", "16", "both", "4 layers");
    std::printf("| %6s\n", "setup");
    for (int index = 0; index < filters::menuSize; ++index)
        if (filterNumber(index) >= 0 && (argc < 3 || std::atoi(argv[2]) == index)) rig.report(index);
    return 0;
}
