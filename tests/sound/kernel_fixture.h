// One oscillator with all that its kernel reads, and a wave whose samples tell where they stand.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace vantoric {

using Samples = std::vector<std::int16_t>;

struct Oscillator {
    EngineState engine;
    WaveStore waves;
    RandomSources random;
    OscillatorState state;
    Samples table;

    Oscillator() {
        engine.internalRate = 96000.0f;
        state.increment = 76896;  // 440 Hz
        random.congruence.state = 12345;
    }

    // A wave of `frames` frames as this note's table; value(level, frame, i) is a sample.
    template <class Value>
    void makeTable(int frames, Value value) {
        table.resize(cycleOffset(frames, 0, mipLevels));
        for (int level = 0; level < mipLevels; ++level)
            for (int frame = 0; frame < frames; ++frame)
                for (int i = 0; i < cycleSamples; ++i)
                    table[cycleOffset(frames, frame, level) + static_cast<std::size_t>(i)] =
                        static_cast<std::int16_t>(value(level, frame, i));
        state.table = table.data();
        state.frameCount = frames;
        state.frame = state.framePending = 0;
    }
    // Random samples in every frame and level.
    void makeRandomTable(int frames, std::uint32_t seed = 7) {
        LinearCongruence source{seed};
        makeTable(frames, [&](int, int, int) { return static_cast<std::int16_t>(source.next() >> 16); });
    }
    // The same wave in every entry of the WTWave list, and the rows.
    template <class Value>
    void fillStore(Value value) {
        makeTable(128, value);
        for (const int index :
             {vaTriangleSaw, vaSquareImpulse, fmWaveforms, wtSine, wtCombsaw, fxBitnoise, elAlpha2, noNoisySaw, wtWaves8})
            waves.setWave(index, false, table.data(), 128);
        waves.buildWaveRows();
    }

    Samples run(Kernel kernel, int count, const Samples& input = {}, std::int16_t fill = 0) {
        Samples all;
        Samples in = input;
        in.resize(static_cast<std::size_t>(count));
        const KernelContext context{engine, waves, random};
        for (int at = 0; at < count; at += maxTickSamples) {
            const int n = std::min(count - at, maxTickSamples);
            Samples out(static_cast<std::size_t>(n), fill);
            kernel(context, out.data(), n, state, in.data() + at);
            all.insert(all.end(), out.begin(), out.end());
        }
        return all;
    }
};

inline double rmsOf(const Samples& samples) {
    double sum = 0;
    for (const double s : samples) sum += s * s;
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

}  // namespace vantoric
