// The oscillator kernels by name, and the tables that choose one for a note.
//
// All are of type `Kernel`: they fill `out` with `count` (1 to 256) samples and step the state. They run on
// the audio thread, allocate nothing and cannot fail. A kernel without its wave leaves `out` as it stands.
#pragma once

#include <array>

#include "sound/noise_labels.h"
#include "sound/oscillator_state.h"
#include "sound/stack_waves.h"
#include "sound/wave_store.h"

namespace vantoric {

enum SynthesisType : int { wavetableType, hypersawType, noiseType, sampleType, customWaveType, analogType };
enum QualityGrade : int { lowCpu, highQuality, crossblendPw };

inline constexpr int pulseWidthRow = 7;  // of the analog rows: "Pulse PW"

namespace kernels {

KernelFunction silent;  // zeros

// A wave's frames, chosen by Pw.
KernelFunction frameNearest;    // nearest sample, frame as pending at the call
KernelFunction frameLinear;     // linear, frame latched at a wrap
KernelFunction frameBlend;      // linear, crossfade to the next frame
KernelFunction frameFmNearest;  // FM and plain sync, fixed frame and level
KernelFunction frameFmLinear;   // FM and exact sync, level per sample

// A wave's frames, scanned.
KernelFunction scanNearest;
KernelFunction scanLinear;
KernelFunction scanDouble;    // two half steps a sample, for low internal rates
KernelFunction scanFmLinear;  // FM and plain sync

// Single cycles through a model of an analog output stage.
KernelFunction analogPlain;
KernelFunction analogFm;     // FM and reverse sync
KernelFunction analogPulse;  // pulse of variable width from two reads of the saw

// Detuned stacks.
KernelFunction hypersaw3;
KernelFunction hypersaw5;
KernelFunction hypersaw7;
KernelFunction hypersaw9;
KernelFunction hypersquare9;
KernelFunction hypernoise9;
KernelFunction supersawJp;
KernelFunction supersawClean;
KernelFunction supernoise;

// Noise.
KernelFunction noiseWhite;
KernelFunction noiseLowpass;
KernelFunction noiseBandpass;
KernelFunction noiseRandom;
KernelFunction noiseRandomRamp;
KernelFunction noiseDigital;
KernelFunction noiseBandlimit;
KernelFunction noiseSynced;
KernelFunction noisePink;
KernelFunction noise8Bit;

// Chaos.
KernelFunction fractal1;  // Lorenz
KernelFunction fractal2;  // Rossler
KernelFunction fractal3;  // Chua
KernelFunction fractal4;  // Henon

}  // namespace kernels

// The kernels of SSWave 3 to 11 and of NoiWave 0 to 13.
extern const std::array<Kernel, stackWaveEnd - stackWaveFirst> stackKernels;
extern const std::array<Kernel, noiseKernelCount> noiseKernels;

// The kernels of the "Sample" type live with the samples; the voice hands them in.
struct SampleKernels {
    Kernel read = kernels::silent;
    Kernel fmPlain = kernels::silent;   // modulated, "Low CPU"
    Kernel fmLevels = kernels::silent;  // modulated, the other grades
};

// What the choice of a kernel rests on: list indices as the parameters hold them (0 to 127).
struct KernelChoice {
    int synType = 0;
    int quality = 0;
    bool modulated = false;
    float internalRate = 88200.0f;
    int ssWave = 0;
    int noiWave = 0;
    bool hasSample = false;  // the oscillator's sample is of non-zero length
    int anaWave = 0;
};

// The kernel of an oscillator, at note-on and at the refresh every 100 ticks. Types, waves and grades
// beyond their lists: silent kernel, but AnaWave, which reads as its last row, and Quality, as its last grade.
Kernel chooseKernel(const KernelChoice& choice, const SampleKernels& sample);

// Runs the kernel of a sounding oscillator, as kernels run. One whose custom wave is not made yet is silent, and comes in
// smoothly once it is.
void runKernel(Kernel kernel, const KernelContext& context, std::int16_t* out, int count, OscillatorState& state,
               const std::int16_t* in);

// What runKernel() does before and after the kernel, for kernels that run side by side. beginKernel takes the fade that is
// under way out of the state, for endKernel; where it returns false, `out` is silent and neither kernel nor endKernel runs.
bool beginKernel(std::int16_t* out, int count, OscillatorState& state, std::uint16_t& fadeIn);
void endKernel(std::int16_t* out, int count, OscillatorState& state, std::uint16_t fadeIn);

// For kernels whose wave is not made yet: silence, after which runKernel() fades in what comes.
void keepSilent(std::int16_t* out, int count, OscillatorState& state);

// What note-on reads of the parameters for one oscillator.
struct OscillatorSetup {
    int synType = 0;
    int wtWave = 0;
    int ssWave = 0;
    int noiWave = 0;
    int anaWave = 0;
    const CustomWaveSlot* customWave = nullptr;
};

// At note-on, after the state was cleared: sets `table`, `frameCount` and the fields of the type.
void prepareOscillator(OscillatorState& state, const OscillatorSetup& setup, const WaveStore& waves);

// At note-on: nine random start phases of the unison oscillators, one draw each.
void drawStartPhases(OscillatorState& state, LinearCongruence& random);

// On the first tick of a note: start phases from `start` (0 to 1; above 0.99: a random phase) and, by
// `ssWave` whatever the type, the line-up of the unison oscillators, with `pw` held to 0 to 1.
// sampleLength: of the oscillator's sample, read for "Sample" only.
void setupFirstTickPhases(OscillatorState& state, float start, float pw, int ssWave, int synType, std::uint32_t sampleLength,
                          LinearCongruence& random);

// A start point as it is taken: above 0.99 it is drawn.
float drawStart(float start, LinearCongruence& random);

// Position in a sample of `sampleLength` samples, with 13 fraction bits, of a start point; one beyond 0 to 1 wraps.
std::uint32_t sampleStart(float start, std::uint32_t sampleLength);

// At note-on of an "Analog" oscillator: its tuning, within 0.15% of 1. Oscillators 2 and 3 (index 1, 2) are
// drawn once more if they come within 0.0005 of the oscillator before, so that the two do not lock.
double drawAnalogTuning(int oscillatorIndex, double previousTuning, LinearCongruence& random);

// Start of the twelfth noise kernel, the Henon map: x and y at 1. For prepareOscillator.
void startHenonMap(OscillatorState& state);

// Steps of a stack's unison oscillators for an increment and a 16-bit detune value; returns their number.
// ssWave: 3 to 11.
int stackSteps(int ssWave, std::uint32_t increment, std::uint16_t detune, std::uint32_t (&steps)[stackVoices]);

// Coefficient of the 13 kHz low-pass of the analog kernels.
float analogCoefficient(float internalRate);

// Chamberlin pair of the filtered noises: k from the colour (0 to 255), f from the increment.
struct ChamberlinCoefficients {
    float k, f;
};
ChamberlinCoefficients chamberlin(int frame, std::uint32_t increment);

// Integration step of an attractor and how many of them make a sample. noiWave: 8 to 10.
struct ChaosStep {
    float dt;
    int subSteps;
};
ChaosStep chaosStep(int noiWave, std::uint32_t increment);

// The parameter that Pw moves in each attractor; noiWave: 8 (b), 9 (a), 10 (g), 11 (a). frame: 0 to 255.
float chaosParameter(int noiWave, int frame);

}  // namespace vantoric
