// Time per sample of the sample kernels, and what the slow jobs on a sample of ten seconds take.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "samples/autotune.h"
#include "samples/sample_kernels.h"
#include "samples/sample_levels.h"
#include "samples/wave_file.h"
#include "sound/wave_store.h"

using namespace vantoric;

namespace {

constexpr int tick = 96;
constexpr int seconds10 = 441000;

template <class Work>
double bestOf(int rounds, Work work) {
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

struct Bench {
    EngineState engine;
    WaveStore waves;
    RandomSources random;
    Sample sample;
    std::int16_t in[tick], out[tick];

    Bench() {
        sample.allocate(seconds10);
        sample.length = sample.loopEnd = seconds10;
        LinearCongruence chance{1};
        for (int i = 0; i < seconds10; ++i)
            sample.levels[0][static_cast<std::size_t>(i)] =
                static_cast<std::int16_t>((i % 337) * 90 - 15000 + static_cast<int>(chance.next() >> 22));
        for (int i = 0; i < tick; ++i) in[i] = static_cast<std::int16_t>(i * 40 - 2000);
        buildLevels(sample, true);
        writeSampleGuards(sample, true);
    }

    void kernel(const char* name, Kernel run, std::uint32_t increment) {
        constexpr int calls = 4000;
        OscillatorState state;
        state.increment = increment;
        state.fmDepth = 3000;
        state.loopOn = 1;
        const KernelContext context{engine, waves, random, &sample};
        const double time = bestOf(5, [&] {
            for (int call = 0; call < calls; ++call) run(context, out, tick, state, in);
        });
        std::printf("%-28s %6.2f ns a sample\n", name, time * 1e9 / (static_cast<double>(calls) * tick));
    }
};

}  // namespace

int main() {
    Bench bench;
    bench.kernel("sampleRead, level 0", kernels::sampleRead, 30000);
    bench.kernel("sampleRead, level 3", kernels::sampleRead, 300000);
    bench.kernel("sampleFmPlain", kernels::sampleFmPlain, 30000);
    bench.kernel("sampleFmLevels", kernels::sampleFmLevels, 30000);
    std::printf("%-28s %6.0f ms\n", "four levels of ten seconds", 1e3 * bestOf(3, [&] { buildLevels(bench.sample, true); }));
    std::printf("%-28s %6.0f ms\n", "autotune of ten seconds",
                1e3 * bestOf(3, [&] { bestLag(bench.sample.levels[0].get(), seconds10); }));
    const std::vector<std::uint8_t> file = waveFileBytes({bench.sample.levels[0].get(), seconds10});
    std::printf("%-28s %6.0f ms\n", "parse and convert ten seconds",
                1e3 * bestOf(3, [&] { convertWave(file, parseWave(file), 0); }));
    return 0;
}
