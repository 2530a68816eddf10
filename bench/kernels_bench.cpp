// Time per sample of every oscillator kernel, the tone stage and the mix: bench-kernels [increment]
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "sound/kernel_reads.h"
#include "sound/kernels.h"
#include "sound/oscillator_control.h"
#include "thread_time.h"

using namespace vantoric;

namespace {

constexpr int tick = 96;
constexpr int calls = 4000;

struct Bench {
    EngineState engine;
    WaveStore waves;
    RandomSources random;
    std::vector<std::int16_t> wave;
    std::int16_t in[tick], out[tick];
    std::uint32_t increment;

    explicit Bench(std::uint32_t step) : wave(cycleOffset(128, 0, mipLevels)), increment(step) {
        engine.internalRate = 96000.0f;
        LinearCongruence chance{1};
        for (std::int16_t& sample : wave) sample = static_cast<std::int16_t>(chance.next() >> 17);
        for (int i = 0; i < wtWaveCount; ++i) waves.setWave(i, false, wave.data(), 128);
        waves.buildWaveRows();
        for (int i = 0; i < tick; ++i) in[i] = static_cast<std::int16_t>(i * 40 - 2000);
    }

    template <class Work>
    void measure(const char* name, Work work) {
        std::printf("%-16s %6.2f ns\n", name, bench::bestTime(5, calls, work) * 1e9 / tick);
    }

    void kernel(const char* name, Kernel run) {
        OscillatorState state;
        state.table = wave.data();
        state.frameCount = 128;
        state.frame = state.framePending = 40;
        state.blend = state.blendPending = 30000;
        state.increment = increment;
        state.scanIncrement = 200;
        state.fmDepth = 3000;
        state.synced = 1;
        state.hiss = 80;
        const KernelContext context{engine, waves, random};
        measure(name, [&] { run(context, out, tick, state, in); });
    }
};

struct Named {
    const char* name;
    Kernel kernel;
};
const Named all[] = {
    {"frameNearest", kernels::frameNearest},
    {"frameLinear", kernels::frameLinear},
    {"frameBlend", kernels::frameBlend},
    {"frameFmNearest", kernels::frameFmNearest},
    {"frameFmLinear", kernels::frameFmLinear},
    {"scanNearest", kernels::scanNearest},
    {"scanLinear", kernels::scanLinear},
    {"scanDouble", kernels::scanDouble},
    {"scanFmLinear", kernels::scanFmLinear},
    {"analogPlain", kernels::analogPlain},
    {"analogFm", kernels::analogFm},
    {"analogPulse", kernels::analogPulse},
    {"hypersaw3", kernels::hypersaw3},
    {"hypersaw5", kernels::hypersaw5},
    {"hypersaw7", kernels::hypersaw7},
    {"hypersaw9", kernels::hypersaw9},
    {"hypersquare9", kernels::hypersquare9},
    {"hypernoise9", kernels::hypernoise9},
    {"supersawJp", kernels::supersawJp},
    {"supersawClean", kernels::supersawClean},
    {"supernoise", kernels::supernoise},
    {"White", kernels::noiseWhite},
    {"Lowpass", kernels::noiseLowpass},
    {"Bandpass", kernels::noiseBandpass},
    {"Random", kernels::noiseRandom},
    {"Random Ramp", kernels::noiseRandomRamp},
    {"Digital", kernels::noiseDigital},
    {"Bandlimit", kernels::noiseBandlimit},
    {"Synced", kernels::noiseSynced},
    {"Pink", kernels::noisePink},
    {"8Bit", kernels::noise8Bit},
    {"Fractal1", kernels::fractal1},
    {"Fractal2", kernels::fractal2},
    {"Fractal3", kernels::fractal3},
    {"Fractal4", kernels::fractal4},
};

}  // namespace

int main(int argc, char** argv) {
    Bench rig(argc > 1 ? static_cast<std::uint32_t>(std::strtoul(argv[1], nullptr, 10)) : 76896);
    for (const Named& named : all) rig.kernel(named.name, named.kernel);
    std::int32_t toneState = 0;
    rig.measure("tone stage", [&] { toneStage(rig.out, tick, toneState, 2000, {500, 523}); });
    static float f1[tick * voiceCount], f2[tick * voiceCount];
    const MixSource one{{rig.in, rig.out, rig.in}, {{9000, 3000}, {100, 20000}, {5000, 5000}}};
    const MixSource voices[mixVoices] = {one, one, one, one};
    rig.measure("mix of four voices", [&] { mixToLanes(voices, tick, f1, f2); });
    return 0;
}
