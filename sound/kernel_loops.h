// The inner loops of the kernels: several samples of an oscillator in a register, or the recursive parts of several
// oscillators. They exist for registers of four lanes, which any processor has, and of eight (AVX2): same bits.
#pragma once

#include <cstdint>

#include "base/engine_state.h"
#include "base/random.h"
#include "sound/fm_loop.h"
#include "sound/oscillator_state.h"
#include "sound/side_by_side.h"

namespace vantoric {

// The recursive parts, of kernel_chains.h.
template <template <class> class Topology, class Scalar>
class LaneBank;
template <template <class> class System>
struct Attractors;
template <class T>
struct StackHighpass;
template <class T>
struct TwoStackHighpasses;
template <class T>
struct OutputLowpass;
template <class T>
struct NoiseLowpass;
template <class T>
struct NoiseBandpass;
template <class T>
struct PinkFilter;
template <class T>
struct HenonMap;
template <class T>
struct Lorenz;
template <class T>
struct Rossler;
template <class T>
struct Chua;

inline constexpr int rowSamples = 128;  // what the loops take at once, at most
inline constexpr int widestLanes = 8;

// One row an oscillator. Loops may fill a row beyond `count`, up to a multiple of widestLanes.
using Row = float[rowSamples];

// The running phases of a stack, shifted to the top of their words so that they wrap by themselves.
struct StackPhases {
    int voices;
    std::uint32_t phase[stackVoices], step[stackVoices];
};

// A phase of 24 bits and what it takes per sample.
struct RunningPhase {
    std::uint32_t phase, step;

    void move(int samples) { phase = (phase + step * static_cast<std::uint32_t>(samples)) & phaseMask; }
};

// Two cycles that are crossfaded sample by sample, before they are read: (near (65535 - blend) + far blend) >> 16.
struct BlendedCycles {
    const std::int16_t *near, *far;
    int blend;
};

// What an analog oscillator reads, and the pole of the low-pass behind it.
struct AnalogReads {
    const std::int16_t* cycle;  // or, for FM, the samples that were read
    float pole;
    std::uint32_t width = 0;  // of a pulse, in samples
};
// Its hiss, and whether its wave is turned over, which leaves it as it is read: the stage negates.
struct AnalogSound {
    float hiss;
    bool turned;
};

// The running position in the frames of a wave: 23 bits for one pass.
struct FrameScan {
    static constexpr int bits = 23;
    static constexpr std::uint32_t mask = (1u << bits) - 1;

    std::uint32_t phase, increment, frames;

    void step(int samples = 1) { phase = (phase + increment * static_cast<std::uint32_t>(samples)) & mask; }
    int frame() const { return static_cast<int>((static_cast<std::uint64_t>(phase) * frames) >> bits); }
};

// What an oscillator with FM reads: a frame at level 0 of a wave of so many frames; a scan adds its running frame.
struct ModulatedWave {
    const std::int16_t* table;
    int frames;
    bool latches = false;  // a wrap is to change the frame
};

// The recursive part of the first `runs` oscillators of a bank, in place over `count` samples of their rows. Rows and bank
// up to the next multiple of widestLanes hold zeros.
template <template <class> class Chain>
using ChainLoop = void(LaneBank<Chain, float>& bank, Row* rows, int runs, int count);

// Attractors side by side; their rows are filled.
template <template <class> class System>
using AttractorLoop = void(Attractors<System>& attractors, Row* rows, int runs, int count);

struct KernelLoops {
    // Sums of a stack's nearest reads of a cycle, and of its computed saws. alternate: 0 or 1 if only one group of voices
    // steps at each sample, by twice its step, the group of the odd ones first after 0; below 0: all voices step.
    void (*tableSums)(const std::int16_t* cycle, StackPhases& stack, float* row, int count);
    void (*sawSums)(StackPhases& stack, int alternate, float* row, int count);

    // (u x unit) x range - offset for the draws u of either source.
    void (*hashRow)(HashNoise& hash, float range, float offset, float* row, int count);
    void (*congruenceRow)(LinearCongruence& random, float range, float offset, float* row, int count);
    // Two draws a sample: (a scale - middle) + b scale - middle.
    void (*pairedDraws)(LinearCongruence& random, float scale, float middle, float* row, int count);

    // The input of the analog low-pass: pole x (share of a read + what is kept of the one before). `previous` is what is
    // kept of the last. Plain: linear reads at 29 bits. Pulse: the difference of two of them, `width` samples after the
    // phase and before its opposite, halved. FM: reads of 16 bits, whose shares stand 15 bits above.
    void (*plainReads)(const AnalogReads& reads, RunningPhase& at, std::int32_t& previous, float* row, int count);
    void (*pulseReads)(const AnalogReads& reads, RunningPhase& at, std::int32_t& previous, float* row, int count);
    void (*fmReads)(const AnalogReads& reads, std::int32_t& previous, float* row, int count);
    // The samples behind the low-pass.
    void (*analogOverHash)(const float* row, HashNoise& hash, const AnalogSound& sound, std::int16_t* out, int count);
    void (*analogOverCongruence)(const float* row, LinearCongruence& random, const AnalogSound& sound, std::int16_t* out,
                                 int count);

    // Reads of one cycle, of the nearest sample and linear, or of two crossfaded ones, linear; over their end as well.
    void (*nearest)(const std::int16_t* cycle, RunningPhase& at, std::int16_t* out, int count);
    void (*linear)(const std::int16_t* cycle, RunningPhase& at, std::int16_t* out, int count);
    void (*blended)(const BlendedCycles& cycles, RunningPhase& at, std::int16_t* out, int count);

    // Reads with FM for as many samples as have neither a restart nor a change of the frame, N at a time; returns how many.
    int (*modulatedNearest)(ModulatedPhase& at, const std::int16_t* cycle, const std::int16_t* in, std::int16_t* out, int count);
    int (*modulatedLinear)(ModulatedPhase& at, const ModulatedWave& wave, const std::int16_t* in, std::int16_t* out, int count);
    int (*modulatedScan)(ModulatedPhase& at, const ModulatedWave& wave, FrameScan& scan, const std::int16_t* in,
                         std::int16_t* out, int count);
    // Reads of the scanned frames of a level that begins at `level`.
    void (*scannedNearest)(const std::int16_t* level, RunningPhase& at, FrameScan& scan, std::int16_t* out, int count);
    void (*scannedLinear)(const std::int16_t* level, RunningPhase& at, FrameScan& scan, std::int16_t* out, int count);

    // Samples of a row, scaled, as truncateToSample gives them.
    void (*truncated)(const float* row, float scale, std::int16_t* out, int count);

    ChainLoop<StackHighpass>* stackHighpass;
    ChainLoop<TwoStackHighpasses>* twoStackHighpasses;
    ChainLoop<OutputLowpass>* outputLowpass;
    ChainLoop<NoiseLowpass>* noiseLowpass;
    ChainLoop<NoiseBandpass>* noiseBandpass;
    ChainLoop<PinkFilter>* pinkFilter;
    ChainLoop<HenonMap>* henonMap;
    AttractorLoop<Lorenz>* lorenz;
    AttractorLoop<Rossler>* rossler;
    AttractorLoop<Chua>* chua;

    // The whole of an oscillator that is alone, in one loop: while its recursive part waits, the reads go on.
    void (*hypernoiseAlone)(const std::int16_t* cycle, StackPhases& stack, StackHighpass<float>& chain, float scale,
                            std::int16_t* out, int count);
    void (*supersawAlone)(const std::int16_t* cycle, StackPhases& stack, TwoStackHighpasses<float>& chain, float scale,
                          std::int16_t* out, int count);
    void (*supersawJpAlone)(StackPhases& stack, int alternate, TwoStackHighpasses<float>& chain, float scale, std::int16_t* out,
                            int count);
    void (*analogPlainAlone)(const AnalogReads& reads, RunningPhase& at, std::int32_t& previous, OutputLowpass<float>& chain,
                             HashNoise& hash, const AnalogSound& sound, std::int16_t* out, int count);
    void (*analogPulseAlone)(const AnalogReads& reads, RunningPhase& at, std::int32_t& previous, OutputLowpass<float>& chain,
                             LinearCongruence& random, const AnalogSound& sound, std::int16_t* out, int count);
};

// The loops for this processor, as filters::useWideLoops leaves it.
const KernelLoops& kernelLoops();

}  // namespace vantoric
