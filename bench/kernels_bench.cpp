// Time per oscillator and internal sample of every kernel, alone and for sixteen voices side by side, against its aim; then
// of the tone stage and the mix: bench-kernels [part of a name] [increment]. "synced": restarted once in 96 samples.
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "base/math.h"
#include "sound/filters/wide_loops.h"
#include "sound/kernel_batch.h"
#include "sound/kernel_reads.h"
#include "sound/oscillator_control.h"
#include "thread_time.h"

using namespace vantoric;

namespace {

constexpr int tick = 96;
constexpr int calls = 2000;
constexpr int rounds = 20;

struct Measured {
    const char* name;
    Kernel kernel;
    double aim = 0;  // ns side by side; 0: none
    bool synced = false, deep = false;
};
constexpr double fmAim = 1.2, analogAim = 1.6, stackAim = 2.0, noiseAim = 1.5;
const Measured all[] = {
    {"frameNearest", kernels::frameNearest},
    {"frameLinear", kernels::frameLinear},
    {"frameBlend", kernels::frameBlend},
    {"frameFmNearest", kernels::frameFmNearest, fmAim},
    {"frameFmLinear", kernels::frameFmLinear, fmAim},
    {"frameFmLinear synced", kernels::frameFmLinear, 0, true},
    {"frameFmLinear deep", kernels::frameFmLinear, 0, false, true},
    {"scanNearest", kernels::scanNearest},
    {"scanLinear", kernels::scanLinear},
    {"scanDouble", kernels::scanDouble},
    {"scanFmLinear", kernels::scanFmLinear, fmAim},
    {"analogPlain", kernels::analogPlain, analogAim},
    {"analogFm", kernels::analogFm, analogAim + fmAim},
    {"analogFm synced", kernels::analogFm, 0, true},
    {"analogPulse", kernels::analogPulse, analogAim},
    {"hypersaw3", kernels::hypersaw3, stackAim},
    {"hypersaw5", kernels::hypersaw5, stackAim},
    {"hypersaw7", kernels::hypersaw7, stackAim},
    {"hypersaw9", kernels::hypersaw9, stackAim},
    {"hypersquare9", kernels::hypersquare9, stackAim},
    {"hypernoise9", kernels::hypernoise9, stackAim},
    {"supersawJp", kernels::supersawJp, stackAim},
    {"supersawClean", kernels::supersawClean, stackAim},
    {"supernoise", kernels::supernoise, stackAim},
    {"White", kernels::noiseWhite, noiseAim},
    {"Lowpass", kernels::noiseLowpass, noiseAim},
    {"Bandpass", kernels::noiseBandpass, noiseAim},
    {"Random", kernels::noiseRandom, noiseAim},
    {"Random Ramp", kernels::noiseRandomRamp, noiseAim},
    {"Digital", kernels::noiseDigital, noiseAim},
    {"Bandlimit", kernels::noiseBandlimit, noiseAim},
    {"Synced", kernels::noiseSynced, noiseAim},
    {"Pink", kernels::noisePink, noiseAim},
    {"8Bit", kernels::noise8Bit, noiseAim},
    {"Fractal1", kernels::fractal1, noiseAim},
    {"Fractal2", kernels::fractal2, noiseAim},
    {"Fractal3", kernels::fractal3, noiseAim},
    {"Fractal4", kernels::fractal4, noiseAim},
};

struct Bench {
    EngineState engine;
    WaveStore waves;
    RandomSources random;
    std::vector<std::int16_t> wave;
    std::int16_t in[tick], loud[tick], out[voiceCount][tick];
    std::uint32_t increment;

    explicit Bench(std::uint32_t step) : wave(cycleOffset(128, 0, mipLevels)), increment(step) {
        engine.internalRate = 96000.0f;
        LinearCongruence chance{1};
        for (std::int16_t& sample : wave) sample = static_cast<std::int16_t>(chance.next() >> 17);
        for (int i = 0; i < wtWaveCount; ++i) waves.setWave(i, false, wave.data(), 128);
        waves.buildWaveRows();
        for (int i = 0; i < tick; ++i) {
            in[i] = static_cast<std::int16_t>(i * 40 - 2000);
            loud[i] = static_cast<std::int16_t>(16000 * math::sin(2 * math::pi * i / 48));
        }
    }

    OscillatorState started(const Measured& measured) const {
        OscillatorState state;
        state.table = wave.data();
        state.frameCount = 128;
        state.frame = state.framePending = 40;
        state.blend = state.blendPending = 30000;
        state.increment = increment;
        state.scanIncrement = 200;
        state.fmDepth = measured.deep ? 21000 : 3000;
        state.synced = measured.synced ? 1 : 0;
        state.hiss = 80;
        return state;
    }

    const std::int16_t* input(const Measured& measured) const { return measured.deep ? loud : in; }

    // ns a sample.
    double alone(const Measured& measured) {
        OscillatorState state = started(measured);
        const KernelContext context{engine, waves, random};
        return bench::bestTime(rounds, calls, [&] { measured.kernel(context, out[0], tick, state, input(measured)); }) * 1e9 /
               tick;
    }
    double sideBySide(const Measured& measured) {
        OscillatorState states[voiceCount];
        for (OscillatorState& state : states) state = started(measured);
        const auto layer = [&] {
            KernelBatch batch(engine, waves, random, tick);
            for (int voice = 0; voice < voiceCount; ++voice)
                batch.add(batchedKernel(measured.kernel), out[voice], states[voice], input(measured));
            batch.render();
        };
        return bench::bestTime(rounds, calls / voiceCount, layer) * 1e9 / (tick * voiceCount);
    }

    void print(const Measured& measured) {
        filters::useWideLoops(false);
        const double narrowAlone = alone(measured), narrow = sideBySide(measured);
        filters::useWideLoops(true);
        const double wideAlone = alone(measured), wide = sideBySide(measured);
        std::printf("%-20s %6.2f %6.2f   %6.2f %6.2f", measured.name, narrowAlone, narrow, wideAlone, wide);
        if (measured.aim > 0) std::printf("   %4.1f %s", measured.aim, wide <= measured.aim ? "" : "missed");
        std::printf("\n");
    }
};

}  // namespace

int main(int argc, char** argv) {
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    Bench rig(argc > 2 ? static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10)) : 76896);
    std::printf("ns a sample            four lanes      eight lanes    aim\n");
    std::printf("                     alone    of 16   alone  of 16\n");
    for (const Measured& measured : all)
        if (std::string_view(measured.name).find(wanted) != std::string_view::npos) rig.print(measured);
    std::int32_t toneState = 0;
    const auto measure = [](const char* name, auto work) {
        std::printf("%-20s %6.2f\n", name, bench::bestTime(rounds, calls, work) * 1e9 / tick);
    };
    measure("tone stage", [&] { toneStage(rig.out[0], tick, toneState, 2000, {500, 523}); });
    static float f1[tick * voiceCount], f2[tick * voiceCount];
    const MixSource one{{rig.in, rig.out[0], rig.in}, {{9000, 3000}, {100, 20000}, {5000, 5000}}};
    const MixSource voices[mixVoices] = {one, one, one, one};
    measure("mix of four voices", [&] { mixToLanes(voices, tick, f1, f2); });
    return 0;
}
