// Chaotic systems as oscillators: three attractors integrated by Euler's rule, and the Henon map.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "base/numbers.h"
#include "sound/kernel_loops.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"
#include "sound/row_rendering.h"
#include "sound/side_by_side.h"

namespace vantoric {

namespace {

float colour(const OscillatorState& state) { return static_cast<float>(std::max(state.framePending, 0)); }

}  // namespace

ChaosStep chaosStep(int noiWave, std::uint32_t increment) {
    struct Law {
        float perIncrement, limit;
    };
    static constexpr Law laws[] = {{3.9142375e-7f, 0.015f}, {7.381439e-7f, 0.06f}, {3.59416e-7f, 0.02f}};
    const Law law = laws[noiWave - 8];
    // A pitch above the sample rate counts as the sample rate: at most 512 steps.
    ChaosStep step{static_cast<float>(std::min(increment, phaseMask)) * law.perIncrement, 1};
    for (; step.dt > law.limit; step.subSteps *= 2) step.dt *= 0.5f;
    return step;
}

float chaosParameter(int noiWave, int frame) {
    const auto c = static_cast<float>(frame);
    switch (noiWave) {
        case 8: return 0.1f + 4.5776367e-5f * c * c;
        case 9: return 0.0008789063f * c;
        case 10: return 10.0f * std::sqrt(c / 256.0f) - 26.2f;
        default: return 1.4f * (0.5f * std::sqrt(c / 256.0f) + 0.5f);
    }
}

void startHenonMap(OscillatorState& state) {
    state.work[0] = 1.0f;
    state.work[1] = 1.0f;
}

namespace {

bool isFinite(float x) { return x - x == 0.0f; }

// An attractor from the point in work[0] to work[2].
template <template <class> class System>
AttractorOf<System, float> attractorOf(const KernelCall& call, const System<float>& system, float dt) {
    const float* work = call.state->work;
    return {system, {work[0], work[1], work[2]}, 0.0f, dt};
}

// A point that has left the numbers starts again from the origin.
void storePoint(const Point<float>& p, OscillatorState& state) {
    const bool sound = isFinite(p.x) && isFinite(p.y) && isFinite(p.z);
    state.work[0] = sound ? p.x : 0.0f;
    state.work[1] = sound ? p.y : 0.0f;
    state.work[2] = sound ? p.z : 0.0f;
}

template <template <class> class System>
void attractorAlone(const KernelCall& call, const System<float>& system, const ChaosStep& step, int count) {
    auto attractor = attractorOf<System>(call, system, step.dt);
    LinearCongruence& random = call.random->congruence;
    for (int i = 0; i < count; ++i) {
        for (int k = 0; k < step.subSteps; ++k) attractor.move(static_cast<float>(random.next()));
        call.out[i] = truncateToSample(attractor.output());
    }
    storePoint(attractor.p, *call.state);
}

// systemOf(colour): the system of a call by its colour, 0 to 255.
template <template <class> class System, class SystemOf>
void renderAttractors(int noiWave, AttractorLoop<System>* KernelLoops::* loop, std::span<const KernelCall> calls, int count,
                      SystemOf systemOf) {
    const auto stepOf = [&](const KernelCall& call) { return chaosStep(noiWave, call.state->increment); };
    const auto systemIn = [&](const KernelCall& call) { return systemOf(colour(*call.state)); };
    if (calls.size() == 1) return attractorAlone<System>(calls[0], systemIn(calls[0]), stepOf(calls[0]), count);
    Attractors<System> all;
    const int runs = static_cast<int>(calls.size());
    // Those of many steps a sample first, so that registers hold like ones.
    std::uint8_t order[rowCount] = {};
    std::iota(order, order + runs, std::uint8_t{0});
    const auto isLonger = [&](int a, int b) { return calls[a].state->increment > calls[b].state->increment; };
    for (int k = 1; k < runs; ++k) std::rotate(std::upper_bound(order, order + k, order[k], isLonger), order + k, order + k + 1);
    for (int k = 0; k < runs; ++k) {
        const KernelCall& call = calls[order[k]];
        const ChaosStep step = stepOf(call);
        all.bank.put(k, attractorOf<System>(call, systemIn(call), step.dt));
        all.subSteps[k] = step.subSteps;
        all.draws[k] = call.random->congruence.state;
    }
    const KernelLoops& loops = kernelLoops();
    Row rows[rowCount];
    for (int at = 0; at < count; at += rowSamples) {
        const int now = std::min(rowSamples, count - at);
        (loops.*loop)(all, rows, runs, now);
        for (int k = 0; k < runs; ++k) loops.truncated(rows[k], 1.0f, calls[order[k]].out + at, now);
    }
    for (int k = 0; k < runs; ++k) {
        calls[order[k]].random->congruence.state = all.draws[k];
        storePoint(all.bank.get(k).p, *calls[order[k]].state);
    }
}

// Henon's map from x, y, level and slope in work.
class HenonRun {
public:
    explicit HenonRun(const KernelCall& call) : call_(call), increment_(std::min(call.state->increment, phaseMask)) {}

    bool ready() const { return true; }
    HenonMap<float> chain() const {
        const float* work = call_.state->work;
        const auto whole = [](std::uint32_t phase) { return static_cast<float>(phase); };
        return {.a = chaosParameter(11, static_cast<int>(colour(*call_.state))),
                .rate = whole(increment_) * 5.9604645e-8f,
                .increment = whole(increment_),
                .wrap = whole(phaseMask + 1 - increment_),
                .phase = whole(call_.state->phase & phaseMask),
                .x = work[0],
                .y = work[1],
                .level = work[2],
                .slope = work[3]};
    }
    void fill(float* row, int, int count) { std::fill_n(row, count, 0.0f); }  // nothing comes in
    void finish(const float* row, int at, int count) const { kernelLoops().truncated(row, 6000.0f, call_.out + at, count); }
    void store(const HenonMap<float>& map) const {
        OscillatorState& state = *call_.state;
        state.phase = static_cast<std::uint32_t>(map.phase);
        const bool sound = isFinite(map.x) && isFinite(map.y) && isFinite(map.level) && isFinite(map.slope);
        state.work[0] = sound ? map.x : 1.0f;
        state.work[1] = sound ? map.y : 1.0f;
        state.work[2] = sound ? map.level : 0.0f;
        state.work[3] = sound ? map.slope : 0.0f;
    }
    // Wraps are rare: a jump costs less than what lanes work out for nothing.
    void alone(HenonMap<float>& chain, int count) const {
        HenonMap<float> map = chain;
        std::uint32_t phase = call_.state->phase & phaseMask;
        float levels[maxTickSamples];
        for (int i = 0; i < count; ++i) {
            for (int half = 0; half < 2; ++half) {
                phase += increment_;
                if (phase > phaseMask) {
                    phase &= phaseMask;
                    const float xn = 1.0f + map.y - map.a * map.x * map.x;
                    map.y = 0.3f * map.x;
                    map.x = xn;
                    map.slope = (xn - map.level) * map.rate;
                }
                map.level += map.slope;
            }
            levels[i] = map.level;
        }
        finish(levels, 0, count);
        map.phase = static_cast<float>(phase);
        chain = map;
    }

private:
    const KernelCall& call_;
    std::uint32_t increment_;
};

}  // namespace

void sideBySide::fractal1(std::span<const KernelCall> calls, int count) {
    renderAttractors<Lorenz>(8, &KernelLoops::lorenz, calls, count,
                             [](float c) { return Lorenz<float>{chaosParameter(8, static_cast<int>(c)), 1200.0f - 3.125f * c}; });
}
void sideBySide::fractal2(std::span<const KernelCall> calls, int count) {
    renderAttractors<Rossler>(9, &KernelLoops::rossler, calls, count,
                              [](float c) { return Rossler<float>{chaosParameter(9, static_cast<int>(c))}; });
}
void sideBySide::fractal3(std::span<const KernelCall> calls, int count) {
    renderAttractors<Chua>(10, &KernelLoops::chua, calls, count,
                           [](float c) { return Chua<float>{chaosParameter(10, static_cast<int>(c))}; });
}
void sideBySide::fractal4(std::span<const KernelCall> calls, int count) {
    renderRows<HenonRun, HenonMap>(kernelLoops().henonMap, calls, count);
}

namespace kernels {

// "Fractal1": Lorenz.
void fractal1(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::fractal1, context, out, count, state, in);
}

// "Fractal2": Rossler.
void fractal2(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::fractal2, context, out, count, state, in);
}

// "Fractal3": Chua.
void fractal3(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::fractal3, context, out, count, state, in);
}

// "Fractal4": Henon's map.
void fractal4(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::fractal4, context, out, count, state, in);
}

}  // namespace kernels

}  // namespace vantoric
