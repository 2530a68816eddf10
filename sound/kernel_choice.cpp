// Which kernel serves an oscillator, and what note-on prepares for it.
#include <algorithm>
#include <cmath>
#include <utility>

#include "base/numbers.h"
#include "sound/custom_wave.h"
#include "sound/kernels.h"

namespace vantoric {

const std::array<Kernel, stackWaveEnd - stackWaveFirst> stackKernels = {
    kernels::hypersaw3,   kernels::hypersaw5,  kernels::hypersaw7,     kernels::hypersaw9,  kernels::hypersquare9,
    kernels::hypernoise9, kernels::supersawJp, kernels::supersawClean, kernels::supernoise,
};

namespace {

struct NoiseRow {
    const char* label;
    Kernel kernel;
};

// By NoiWave.
constexpr NoiseRow noiseRows[noiseKernelCount] = {
    {"White", kernels::noiseWhite},
    {"Lowpass", kernels::noiseLowpass},
    {"Bandpass", kernels::noiseBandpass},
    {"Random", kernels::noiseRandom},
    {"Random Ramp", kernels::noiseRandomRamp},
    {"Digital", kernels::noiseDigital},
    {"Bandlimit", kernels::noiseBandlimit},
    {"Synced", kernels::noiseSynced},
    {"Fractal1", kernels::fractal1},
    {"Fractal2", kernels::fractal2},
    {"Fractal3", kernels::fractal3},
    {"Fractal4", kernels::fractal4},
    {"Pink", kernels::noisePink},
    {"8Bit", kernels::noise8Bit},
};

template <class Field>
constexpr auto columnOf(Field NoiseRow::* field) {
    std::array<Field, noiseKernelCount> column{};
    for (std::size_t i = 0; i < column.size(); ++i) column[i] = noiseRows[i].*field;
    return column;
}

}  // namespace

constinit const std::array<Kernel, noiseKernelCount> noiseKernels = columnOf(&NoiseRow::kernel);
constinit const std::array<const char*, noiseKernelCount> noiseLabels = columnOf(&NoiseRow::label);

namespace {

constexpr int fadeInSamples = 256;

struct PlainAndModulated {
    Kernel plain, modulated;
};

// By quality grade.
constexpr PlainAndModulated wavetableKernels[] = {
    {kernels::frameNearest, kernels::frameFmNearest},
    {kernels::frameLinear, kernels::frameFmLinear},
    {kernels::frameBlend, kernels::frameFmLinear},
};
constexpr PlainAndModulated scanKernels[] = {
    {kernels::scanNearest, kernels::scanFmLinear},
    {kernels::scanLinear, kernels::scanFmLinear},
    {kernels::scanLinear, kernels::scanFmLinear},
};
constexpr PlainAndModulated customWaveKernels[] = {
    {kernels::frameLinear, kernels::frameFmNearest},
    {kernels::frameBlend, kernels::frameFmLinear},
    {kernels::frameBlend, kernels::frameFmLinear},
};

Kernel hypersawKernel(const KernelChoice& choice, int quality) {
    if (choice.ssWave >= stackWaveEnd) return kernels::silent;
    if (choice.ssWave >= stackWaveFirst) return stackKernels[static_cast<std::size_t>(choice.ssWave - stackWaveFirst)];
    if (choice.modulated) return scanKernels[quality].modulated;
    if (quality != lowCpu && choice.internalRate <= 48000.0f) return kernels::scanDouble;
    return scanKernels[quality].plain;
}

Kernel sampleKernel(const KernelChoice& choice, int quality, const SampleKernels& sample) {
    if (!choice.hasSample) return kernels::silent;
    if (!choice.modulated) return sample.read;
    return quality == lowCpu ? sample.fmPlain : sample.fmLevels;
}

Kernel analogKernel(const KernelChoice& choice) {
    if (choice.anaWave == pulseWidthRow) return kernels::analogPulse;
    return choice.modulated ? kernels::analogFm : kernels::analogPlain;
}

// The line-up of a stack's voices before the note: voice i starts at (1 + k t a) w + offset cycles.
struct LineUp {
    double a;
    int count;
    struct {
        double k, offset;
    } voice[stackVoices];
};
constexpr LineUp lineUps[] = {
    {0.0125, 3, {{0, 0}, {1, 0}, {-1, 0.5}}},
    {0.00625, 5, {{0, 0}, {1, 0.5}, {-1, 0.4}, {2, 0.4}, {-2, 0.2}}},
    {0.0041625, 7, {{0, 0}, {1, 0.5}, {-1, 0.715}, {2, 0.429}, {-2, 0.857}, {3, 0}, {-3, 0.714}}},
    {0.003125, 9, {{0, 0}, {1, 0.5}, {-1, 0.4}, {2, 0.4}, {-2, 0.2}, {3, 0.7778}, {-3, 0.4444}, {4, 0.8889}, {-4, 0.4444}}},
};

// A value in cycles as a 24-bit phase, modulo one cycle.
std::uint32_t phaseOf(double cycles) {
    const double scaled = clampTo(cycles * 16777216.0, -9.0e15, 9.0e15);
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(scaled)) & phaseMask;
}

std::uint32_t randomPhase(LinearCongruence& random) {
    return static_cast<std::uint32_t>(random.next() * 0.003909091) & phaseMask;
}

void lineUpStack(OscillatorState& state, const LineUp& lineUp, double start, float pw) {
    const double width = clampUnit(pw);
    const double spread = width * width * lineUp.a;
    const double w = start / (spread + 1e-6);
    for (int i = 0; i < lineUp.count; ++i) {
        const double cycles = (1.0 + spread * lineUp.voice[i].k) * w + lineUp.voice[i].offset;
        state.subPhase[i] = phaseOf(cycles - std::floor(cycles));
    }
}

void scatterSupersaw(OscillatorState& state, LinearCongruence& random) {
    state.subPhase[0] = state.subPhase[1] = randomPhase(random);
    state.subPhase[2] = (state.subPhase[1] - 0x800000) & phaseMask;
    for (int i = 3; i < stackVoices; ++i) state.subPhase[i] = randomPhase(random);
}

void prepareAnalog(OscillatorState& state, int anaWave) {
    const int row = std::min(anaWave, analogRowCount - 1);
    state.analogRow = static_cast<std::uint8_t>(row);
    state.hiss = static_cast<std::int16_t>(analogRows[static_cast<std::size_t>(row)].hiss);
    state.polarity = analogRows[static_cast<std::size_t>(row)].polarity;
    state.frameCount = row == pulseWidthRow ? 512 : 1;
    state.phaseDirection = 1;
    state.previousRead = 0;
    state.lowpass = 0.0f;
    state.scanPhase = 0;
}

}  // namespace

Kernel chooseKernel(const KernelChoice& choice, const SampleKernels& sample) {
    const int quality = std::clamp(choice.quality, 0, 2);
    const auto from = [&](const PlainAndModulated(&table)[3]) {
        return choice.modulated ? table[quality].modulated : table[quality].plain;
    };
    switch (choice.synType) {
        case wavetableType: return from(wavetableKernels);
        case hypersawType: return hypersawKernel(choice, quality);
        case noiseType:
            return choice.noiWave < noiseKernelCount ? noiseKernels[static_cast<std::size_t>(choice.noiWave)] : kernels::silent;
        case sampleType: return sampleKernel(choice, quality, sample);
        case customWaveType: return from(customWaveKernels);
        case analogType: return analogKernel(choice);
        default: return kernels::silent;
    }
}

void keepSilent(std::int16_t* out, int count, OscillatorState& state) {
    std::fill_n(out, count, 0);
    state.fadeIn = fadeInSamples;
}

bool beginKernel(std::int16_t* out, int count, OscillatorState& state, std::uint16_t& fadeIn) {
    if (state.customWave != nullptr) {
        state.table = state.customWave->samples();
        if (state.table == nullptr) {
            keepSilent(out, count, state);
            return false;
        }
    }
    fadeIn = std::exchange(state.fadeIn, std::uint16_t{0});
    return true;
}

// A kernel that has kept silent again begins a fade of its own.
void endKernel(std::int16_t* out, int count, OscillatorState& state, std::uint16_t fadeIn) {
    if (fadeIn == 0 || state.fadeIn != 0) return;
    const int faded = std::min<int>(fadeIn, count);
    for (int i = 0; i < faded; ++i) out[i] = static_cast<std::int16_t>(out[i] * (fadeInSamples - fadeIn + i) / fadeInSamples);
    state.fadeIn = static_cast<std::uint16_t>(fadeIn - faded);
}

void runKernel(Kernel kernel, const KernelContext& context, std::int16_t* out, int count, OscillatorState& state,
               const std::int16_t* in) {
    std::uint16_t fadeIn;
    if (!beginKernel(out, count, state, fadeIn)) return;
    kernel(context, out, count, state, in);
    endKernel(out, count, state, fadeIn);
}

void prepareOscillator(OscillatorState& state, const OscillatorSetup& setup, const WaveStore& waves) {
    state.table = nullptr;
    state.customWave = nullptr;
    state.frameCount = 1;
    const auto takeWave = [&](const BankWave* wave) {
        if (wave == nullptr) return;
        state.table = wave->samples;
        state.frameCount = wave->frames;
    };
    switch (setup.synType) {
        case wavetableType: takeWave(waves.wave(setup.wtWave)); break;
        case hypersawType: takeWave(waves.wave(setup.ssWave, true)); break;
        case noiseType:
            state.frameCount = 256;
            if (setup.noiWave == 11) startHenonMap(state);
            break;
        case customWaveType:
            state.customWave = setup.customWave;
            state.table = setup.customWave != nullptr ? setup.customWave->samples() : nullptr;
            state.frameCount = customFrames;
            break;
        case analogType: prepareAnalog(state, setup.anaWave); break;
        default: break;
    }
}

void drawStartPhases(OscillatorState& state, LinearCongruence& random) {
    for (std::uint32_t& phase : state.subPhase) phase = randomPhase(random);
}

float drawStart(float start, LinearCongruence& random) { return start > 0.99f ? random.unit() : start; }

std::uint32_t sampleStart(float start, std::uint32_t sampleLength) { return (phaseOf(start) >> 11) * sampleLength; }

void setupFirstTickPhases(OscillatorState& state, float start, float pw, int ssWave, int synType, std::uint32_t sampleLength,
                          LinearCongruence& random) {
    const float s = drawStart(start, random);
    state.phase = state.scanPhase = phaseOf(s);
    if (synType == sampleType) state.phase = sampleStart(s, sampleLength);
    if (ssWave >= 3 && ssWave <= 8) lineUpStack(state, lineUps[std::min(ssWave - 3, 3)], s, pw);
    if (ssWave >= 9 && ssWave <= 11) scatterSupersaw(state, random);
}

double drawAnalogTuning(int oscillatorIndex, double previousTuning, LinearCongruence& random) {
    const auto draw = [&] { return 0.9985 + random.next() * 6.99e-13; };
    const double tuning = draw();
    return oscillatorIndex > 0 && std::fabs(tuning - previousTuning) < 0.0005 ? draw() : tuning;
}

}  // namespace vantoric
