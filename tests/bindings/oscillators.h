// How the oscillator vectors are fed: test tables, stores, states and runs of kernels.
#pragma once

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

#include "golden_runner/golden.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace golden {

using vantoric::BankWave;
using vantoric::Kernel;
using vantoric::OscillatorState;
using vantoric::WaveStore;

struct NamedKernel {
    const char* name;
    Kernel kernel;
};
inline constexpr NamedKernel namedKernels[] = {
    {"silent", vantoric::kernels::silent},
    {"frameNearest", vantoric::kernels::frameNearest},
    {"frameLinear", vantoric::kernels::frameLinear},
    {"frameBlend", vantoric::kernels::frameBlend},
    {"frameFmNearest", vantoric::kernels::frameFmNearest},
    {"frameFmLinear", vantoric::kernels::frameFmLinear},
    {"scanNearest", vantoric::kernels::scanNearest},
    {"scanLinear", vantoric::kernels::scanLinear},
    {"scanDouble", vantoric::kernels::scanDouble},
    {"scanFmLinear", vantoric::kernels::scanFmLinear},
    {"analogPlain", vantoric::kernels::analogPlain},
    {"analogFm", vantoric::kernels::analogFm},
    {"analogPulse", vantoric::kernels::analogPulse},
    {"Hypersaw Vir 3x", vantoric::kernels::hypersaw3},
    {"Hypersaw Vir 5x", vantoric::kernels::hypersaw5},
    {"Hypersaw Vir 7x", vantoric::kernels::hypersaw7},
    {"Hypersaw Vir 9x", vantoric::kernels::hypersaw9},
    {"Hypersquare 9x", vantoric::kernels::hypersquare9},
    {"Hypernoise 9x", vantoric::kernels::hypernoise9},
    {"Supersaw JP", vantoric::kernels::supersawJp},
    {"Supersaw clean", vantoric::kernels::supersawClean},
    {"Supernoise", vantoric::kernels::supernoise},
    {"White", vantoric::kernels::noiseWhite},
    {"Lowpass", vantoric::kernels::noiseLowpass},
    {"Bandpass", vantoric::kernels::noiseBandpass},
    {"Random", vantoric::kernels::noiseRandom},
    {"Random Ramp", vantoric::kernels::noiseRandomRamp},
    {"Digital", vantoric::kernels::noiseDigital},
    {"Bandlimit", vantoric::kernels::noiseBandlimit},
    {"Synced", vantoric::kernels::noiseSynced},
    {"Fractal1", vantoric::kernels::fractal1},
    {"Fractal2", vantoric::kernels::fractal2},
    {"Fractal3", vantoric::kernels::fractal3},
    {"Fractal4", vantoric::kernels::fractal4},
    {"Pink", vantoric::kernels::noisePink},
    {"8Bit", vantoric::kernels::noise8Bit},
};

inline Kernel kernelNamed(const std::string& name) {
    for (const NamedKernel& k : namedKernels)
        if (name == k.name) return k.kernel;
    throw std::runtime_error("no kernel " + name);
}
inline std::string nameOf(Kernel kernel) {
    for (const NamedKernel& k : namedKernels)
        if (kernel == k.kernel) return k.name;
    return "?";
}

// A test table, level-major.
inline std::vector<std::int16_t> makeTable(const json& recipe) {
    using namespace vantoric;
    const int frames = recipe.at("frames");
    const std::string kind = recipe.at("kind");
    std::vector<std::int16_t> table(static_cast<std::size_t>(frames) * mipLevels * cycleSamples);
    LinearCongruence congruence{kind == "congruence" ? recipe.at("seed").get<std::uint32_t>() : 0};
    std::size_t at = 0;
    for (int level = 0; level < mipLevels; ++level)
        for (int frame = 0; frame < frames; ++frame)
            for (int i = 0; i < cycleSamples; ++i) {
                int value = 0;
                if (kind == "congruence")
                    value = static_cast<std::int16_t>(congruence.next() >> 16) & recipe.at("mask").get<int>();
                else if (kind == "saw")
                    value = ((2 * i - 2047) * (15 - level) * (128 - (frame & 63))) >> 7;
                else if (kind == "constant")
                    value = recipe.contains("value") ? recipe.at("value").get<int>() : recipe.at("k").get<int>();
                else if (kind == "parabola") {
                    const int j = i & 1023;
                    const int h = (j * (1024 - j)) >> 3;
                    value = ((i >= 1024 ? -h : h) * (240 - 16 * level - (frame & 63))) >> 8;
                } else
                    throw std::runtime_error("no table kind " + kind);
                table[at++] = static_cast<std::int16_t>(value);
            }
    return table;
}

inline int waveIndex(const std::string& stem) {
    for (int i = 0; i < vantoric::wtWaveCount; ++i)
        if (vantoric::wtWaveFiles[i].stem == stem) return i;
    throw std::runtime_error("no wave " + stem);
}

inline void fillStore(WaveStore& store, const json& recipe) {
    for (const auto& [stem, table] : recipe.items()) {
        const auto samples = makeTable(table);
        store.setWave(waveIndex(stem), false, samples.data(), table.at("frames"));
    }
    store.buildWaveRows();
}

inline void setFields(OscillatorState& state, const json& fields) {
    for (const auto& [key, value] : fields.items()) {
        if (key == "phase")
            state.phase = value;
        else if (key == "increment")
            state.increment = value;
        else if (key == "scanPhase")
            state.scanPhase = value;
        else if (key == "scanIncrement")
            state.scanIncrement = value;
        else if (key == "frame")
            state.frame = value;
        else if (key == "framePending")
            state.framePending = value;
        else if (key == "blend")
            state.blend = value;
        else if (key == "blendPending")
            state.blendPending = value;
        else if (key == "fmDepth")
            state.fmDepth = value;
        else if (key == "fmDepthStep")
            state.fmDepthStep = value;
        else if (key == "synced")
            state.synced = value;
        else if (key == "lastSyncInput")
            state.lastSyncInput = value;
        else if (key == "lastFmOffset")
            state.lastFmOffset = value;
        else if (key == "lastTotalPhase")
            state.lastTotalPhase = value;
        else if (key == "phaseDirection")
            state.phaseDirection = static_cast<std::int8_t>(value.get<int>());
        else if (key == "previousRead")
            state.previousRead = value;
        else if (key == "seed")
            state.seed = value;
        else if (key == "subPhase")
            for (std::size_t i = 0; i < value.size(); ++i) state.subPhase[i] = value[i];
        else
            throw std::runtime_error("no state field " + key);
    }
}

inline json fieldsOf(const OscillatorState& state) {
    return {{"phase", state.phase},
            {"increment", state.increment},
            {"scanPhase", state.scanPhase},
            {"frame", state.frame},
            {"framePending", state.framePending},
            {"blend", state.blend},
            {"fmDepth", state.fmDepth},
            {"lastSyncInput", state.lastSyncInput},
            {"lastFmOffset", state.lastFmOffset},
            {"lastTotalPhase", state.lastTotalPhase},
            {"phaseDirection", state.phaseDirection},
            {"previousRead", state.previousRead},
            {"seed", state.seed},
            {"subPhase", state.subPhase}};
}

// One oscillator with all that its kernel reads.
struct KernelRun {
    vantoric::EngineState engine;
    WaveStore waves;
    vantoric::RandomSources random;
    OscillatorState state;
    std::vector<std::int16_t> table;
    Kernel kernel;

    explicit KernelRun(const json& input) : kernel(kernelNamed(input.at("kernel"))) {
        if (input.contains("NoiWave")) requireNoise(input["NoiWave"]);
        engine.internalRate = input.value("internalRate", 96000.0f);
        random.congruence.state = input.value("congruence", 1u);
        random.hash.seed = input.value("hashSeed", random.hash.seed);
        random.hash.counter = input.value("hashCounter", 0u);
        if (input.contains("store")) fillStore(waves, input.at("store"));
        state.frameCount = input.value("frameCount", 1);
        if (input.contains("table") && !input.at("table").is_null()) {
            table = makeTable(input.at("table"));
            state.table = table.data();
            if (!input.contains("frameCount")) state.frameCount = input.at("table").at("frames");
        }
        state.analogRow = static_cast<std::uint8_t>(input.value("analogRow", 0));
        state.polarity = input.value("polarity", 1.0);
        state.hiss = static_cast<std::int16_t>(input.value("hiss", 0));
        if (kernel == vantoric::kernels::fractal4) vantoric::startHenonMap(state);
        if (input.contains("state")) setFields(state, input.at("state"));
    }

    // A noise by its row of the list must be the kernel that was named.
    void requireNoise(int noiWave) const {
        vantoric::KernelChoice choice;
        choice.synType = vantoric::noiseType;
        choice.noiWave = noiWave;
        choice.internalRate = engine.internalRate;
        if (vantoric::chooseKernel(choice, {}) != kernel) throw std::runtime_error("NoiWave is another kernel");
    }

    // One call; `in` may be empty for zeros.
    void call(std::vector<std::int16_t>& out, const std::vector<std::int16_t>& in) {
        std::vector<std::int16_t> previous = in;
        previous.resize(out.size());
        const vantoric::KernelContext context{engine, waves, random};
        kernel(context, out.data(), static_cast<int>(out.size()), state, previous.data());
    }
    // `count` samples in calls of at most 256.
    std::vector<std::int16_t> run(int count) {
        std::vector<std::int16_t> all;
        while (count > 0) {
            std::vector<std::int16_t> out(static_cast<std::size_t>(std::min(count, vantoric::maxTickSamples)));
            call(out, {});
            all.insert(all.end(), out.begin(), out.end());
            count -= static_cast<int>(out.size());
        }
        return all;
    }
};

}  // namespace golden
