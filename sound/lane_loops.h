// The loops of kernel_loops.h over registers of N lanes. Two sources include this, one for each number of lanes.
#pragma once

#include <algorithm>
#include <array>

#include "sound/kernel_loops.h"
#include "sound/kernel_reads.h"
#include "sound/sample_lanes.h"

namespace vantoric {

template <int N>
struct LaneLoops {
    using Floats = FloatLanes<N>;
    using Ints = IntLanes<N>;
    using Bits = BitLanes<N>;

    static Floats loaded(const float* row) { return Floats(row, stdx::element_aligned); }
    static void store(const Floats& x, float* row) { x.copy_to(row, stdx::element_aligned); }

    // ---- stacks ----

    template <int voices>
    static void voicesSummed(const std::int16_t* cycle, StackPhases& stack, float* row, int count) {
        Bits phases[voices], steps[voices];
        for (int k = 0; k < voices; ++k) {
            phases[k] = Bits(stack.phase[k]) + Bits(stack.step[k]) * countedUp<N>();
            steps[k] = Bits(stack.step[k] * N);
            stack.phase[k] += stack.step[k] * static_cast<std::uint32_t>(count);
        }
        for (int i = 0; i < count; i += N) {
            Ints sum(0);
#pragma GCC unroll 9
            for (int k = 0; k < voices; ++k) {
                sum += samplesAt<N>(cycle, phases[k] >> 21);
                phases[k] += steps[k];
            }
            store(toFloats<N>(sum), row + i);
        }
    }
    static void tableSums(const std::int16_t* cycle, StackPhases& stack, float* row, int count) {
        switch (stack.voices) {
            case 3: return voicesSummed<3>(cycle, stack, row, count);
            case 5: return voicesSummed<5>(cycle, stack, row, count);
            case 7: return voicesSummed<7>(cycle, stack, row, count);
            default: return voicesSummed<9>(cycle, stack, row, count);
        }
    }

    static void sawSums(StackPhases& stack, int alternate, float* row, int count) {
        Ints phases[stackVoices], steps[stackVoices];
        for (int k = 0; k < stack.voices; ++k) {
            // How many steps the voice has taken after each sample, and whether it takes two at once.
            const bool alternates = alternate >= 0;
            const std::uint32_t first = alternates && (k & 1) != alternate ? 1 : 0;
            const std::uint32_t step = alternates ? 2 * stack.step[k] : stack.step[k];
            const auto taken = [&](const auto& samples) { return alternates ? (samples + first) >> 1 : samples; };
            phases[k] = asInts<N>(Bits(stack.phase[k] ^ 0x80000000u) + Bits(step) * taken(countedUp<N>()));
            steps[k] = Ints(static_cast<std::int32_t>(stack.step[k] * N));
            stack.phase[k] += step * taken(static_cast<std::uint32_t>(count));
        }
        for (int i = 0; i < count; i += N) {
            Ints sum(0);
            for (int k = 0; k < stack.voices; ++k) {
                sum += phases[k] >> 17;  // 8 bits of the word and 9 of the saw
                phases[k] += steps[k];
            }
            store(toFloats<N>(sum), row + i);
        }
    }

    // ---- draws ----

    static void drawnRow(const Bits& drawn, float unit, float range, float offset, float* row) {
        store(fromUnsigned<Floats>(drawn) * Floats(unit) * Floats(range) - Floats(offset), row);
    }

    static void hashRow(HashNoise& hash, float range, float offset, float* row, int count) {
        Bits counters = Bits(hash.counter - 1u) + countedUp<N>();
        for (int i = 0; i < count; i += N, counters += Bits(std::uint32_t{N}))
            drawnRow(hashMix(counters ^ Bits(hash.seed)), 2.3283064e-10f, range, offset, row + i);
        hash.counter += static_cast<std::uint32_t>(count);
    }

    // Two registers of draws in turn, as each product takes long.
    static void congruenceRow(LinearCongruence& random, float range, float offset, float* row, int count) {
        Bits even = congruenceStates<N>(random.state), odd = congruencesOn<N, N>(even);
        for (int i = 0;; i += 2 * N) {
            drawnRow(even, 2.33e-10f, range, offset, row + i);
            if (count - i <= N) return keepLast(random, even, count - i);
            drawnRow(odd, 2.33e-10f, range, offset, row + i + N);
            if (count - i <= 2 * N) return keepLast(random, odd, count - i - N);
            even = congruencesOn<N, 2 * N>(even);
            odd = congruencesOn<N, 2 * N>(odd);
        }
    }
    // `taken` of these draws were the last.
    static void keepLast(LinearCongruence& random, const Bits& drawn, int taken) {
        random.state = drawn[static_cast<std::size_t>(taken - 1)];
    }

    static void pairedDraws(LinearCongruence& random, float scale, float middle, float* row, int count) {
        Bits first = congruenceStates<N, 2>(random.state);
        for (int i = 0; i < count; i += N, first = congruencesOn<N, 2 * N>(first)) {
            const Bits second = congruencesOn<N, 1>(first);
            const Floats a = fromUnsigned<Floats>(first), b = fromUnsigned<Floats>(second);
            store(a * Floats(scale) - Floats(middle) + b * Floats(scale) - Floats(middle), row + i);
            if (count - i <= N) keepLast(random, second, count - i);
        }
    }

    // ---- analog ----

    // The phases of N samples from the first one on, of 24 bits.
    struct Phases {
        Bits next;
        Bits step;

        explicit Phases(const RunningPhase& at) : next(Bits(at.phase) + Bits(at.step) * countedUp<N>()), step(at.step * N) {}
        Bits take() {
            const Bits taken = next & Bits(phaseMask);
            next += step;
            return taken;
        }
    };
    static void pass(RunningPhase& at, int count) {
        at.phase = (at.phase + at.step * static_cast<std::uint32_t>(count)) & phaseMask;
    }

    static void wideReads(const std::int16_t* cycle, RunningPhase& at, std::int32_t* row, int count) {
        Phases phases(at);
        for (int i = 0; i < count; i += N) linearSums<N>(cycle, Bits(0u), phases.take()).copy_to(row + i, stdx::element_aligned);
        pass(at, count);
    }

    static void pulseReads(const std::int16_t* cycle, std::uint32_t width, RunningPhase& at, std::int32_t* row, int count) {
        const Bits ahead(width << 13), behind((1024u - width) << 13), mask(phaseMask);
        const auto read = [&](const Bits& phases) { return linearSums<N>(cycle, Bits(0u), phases & mask); };
        Phases phases(at);
        for (int i = 0; i < count; i += N) {
            const Bits now = phases.take();
            ((read(now + ahead) - read(now + behind)) >> 1).copy_to(row + i, stdx::element_aligned);
        }
        pass(at, count);
    }

    static void driven(const std::int32_t* kept, int shift, float pole, float* row, int count) {
        for (int i = 0; i < count; i += N) {
            const Ints before(kept + i, stdx::element_aligned), now(kept + i + 1, stdx::element_aligned);
            store(Floats(pole) * toFloats<N>(before + (now << shift)), row + i);
        }
    }

    static void analogSamples(const float* row, const float* hiss, bool turned, std::int16_t* out, int count) {
        const Ints sign(turned ? 0 : -1);
        const auto samples = [&](int i) {
            const Floats y = loaded(row + i) * Floats(3.05185e-5f) + loaded(hiss + i);
            return (toInts<N>(limit(y, Floats(-32767.0f), Floats(32767.0f))) ^ sign) - sign;
        };
        storeRow(out, count, samples);
    }

    // ---- output ----

    // Stores the low 16 bits of samples(i), N from sample i on.
    template <class Samples>
    static void storeRow(std::int16_t* out, int count, Samples samples) {
        int i = 0;
        for (; i + N <= count; i += N) storeWrapped<N>(samples(i), out + i);
        if (i == count) return;
        std::int16_t last[N];
        storeWrapped<N>(samples(i), last);
        for (int k = 0; i < count; ++i, ++k) out[i] = last[k];
    }

    static void truncated(const float* row, float scale, std::int16_t* out, int count) {
        const Floats low(-2147483648.0f), high(2147483520.0f);
        storeRow(out, count, [&](int i) { return toInts<N>(limit(loaded(row + i) * Floats(scale), low, high)); });
    }

    // ---- reads with FM ----

    // What N samples of a modulated oscillator read by.
    struct Group {
        Bits phases;  // 24 bits, with the FM offset
        Ints steps;   // effective steps in table samples
        Ints totals;  // phases before they were cut to 24 bits
        Ints lastTotals;
    };
    using Mask = typename Ints::mask_type;

    // Groups of N samples until one of them has to go one by one: breaks(group) is where, beside restarts. read(group, i)
    // reads the others. Depths and increments far beyond what the parameters reach go one by one as well, as their products
    // need more than 32 bits.
    template <class Breaks, class Read>
    static int modulatedGroups(ModulatedPhase& at, const std::int16_t* in, int count, Breaks breaks, Read read) {
        const std::int64_t lastDepth = at.depth + static_cast<std::int64_t>(at.depthStep) * count;
        const auto within = [](std::int64_t x, std::int64_t bound) { return x > -bound && x < bound; };
        if (!within(at.depth, 1 << 18) || !within(lastDepth, 1 << 18) || !within(at.increment, 1 << 28) ||
            !within(at.lastOffset, 1 << 29))
            return 0;
        const Bits up = countedUp<N>(), step(at.step * N);
        const Ints depthStep(at.depthStep * N), increment(at.increment);
        Bits phases = Bits(at.phase) + Bits(at.step) * up;
        Ints depths = Ints(at.depth) + Ints(at.depthStep) * asInts<N>(up - Bits(1u));
        Ints inputs(at.lastInput), offsets(at.lastOffset), totals(at.lastTotal);
        const Mask synced(at.synced);
        int done = 0;
        for (; count - done >= N; done += N) {
            const Ints x = widened<N>(in + done);
            // (x depth) >> 4 in two parts of 16 bits.
            const Ints offset =
                halvesMultiplied<N>(x, (depths >> 4) & Ints(0xffff)) + (halvesMultiplied<N>(x, depths & Ints(15)) >> 4);
            const Ints total = asInts<N>(phases & Bits(phaseMask)) + offset;
            const Group group{asBits<N>(total) & Bits(phaseMask),
                              magnitude(increment - oneEarlier<N>(offsets, offset) + offset) >> 13, total,
                              oneEarlier<N>(totals, total)};
            const Mask restarts = synced && x > Ints(0) && oneEarlier<N>(inputs, x) < Ints(1);
            if (anyOf(restarts || breaks(group))) break;
            read(group, done);
            phases += step;
            depths += depthStep;
            inputs = x;
            offsets = offset;
            totals = total;
        }
        at.phase = (at.phase + at.step * static_cast<std::uint32_t>(done)) & phaseMask;
        at.depth += at.depthStep * done;
        if (at.synced) at.lastInput = static_cast<std::int16_t>(lastLane<N>(inputs));
        at.lastOffset = lastLane<N>(offsets);
        at.lastTotal = lastLane<N>(totals);
        return done;
    }
    static Ints magnitude(const Ints& x) { return (x ^ (x >> 31)) - (x >> 31); }

    static int modulatedNearest(ModulatedPhase& at, const std::int16_t* cycle, const std::int16_t* in, std::int16_t* out,
                                int count) {
        return modulatedGroups(
            at, in, count, [](const Group&) { return Mask(false); },
            [&](const Group& group, int i) { storeSmall<N>(samplesAt<N>(cycle, group.phases >> 13) >> 1, out + i); });
    }

    // The running frames of a scan.
    struct ScannedFrames {
        Bits next, step, frames;

        explicit ScannedFrames(const FrameScan& scan)
            : next(Bits(scan.phase) + Bits(scan.increment) * countedUp<N>()), step(scan.increment * N), frames(scan.frames) {}
        // Where the frames of N samples begin, in samples.
        Bits take() {
            // (phase frames) >> 23 in two parts, so that 32 bits hold the products.
            constexpr int half = 11;
            const Bits phase = next & Bits(FrameScan::mask);
            const Bits low = ((phase & Bits((1u << half) - 1)) * frames) >> half;
            next += step;
            return (((phase >> half) * frames + low) >> (FrameScan::bits - half)) * Bits(std::uint32_t{cycleSamples});
        }
    };

    // frames(): where the frames of the next N samples begin.
    template <class Frames>
    static int linearWithFm(ModulatedPhase& at, const ModulatedWave& wave, const std::int16_t* in, std::int16_t* out, int count,
                            Frames frames) {
        if (wave.frames > 32767) return 0;
        const Ints levelStride(wave.frames);
        const std::int16_t* const table = wave.table;
        const Mask latches(wave.latches);
        const auto breaks = [&](const Group& group) {
            return group.steps >= Ints(boxStep) || (latches && group.totals < group.lastTotals);
        };
        return modulatedGroups(at, in, count, breaks, [&](const Group& group, int i) {
            // Levels by three quarters of the steps: the exponent of 2 x + 1 is the number of the bits of x.
            const Ints odd = ((group.steps + group.steps + group.steps) >> 1) | Ints(1);
            const Ints levels = (std::bit_cast<Ints>(toFloats<N>(odd)) >> 23) - Ints(127);
            const Bits cycles = asBits<N>(halvesMultiplied<N>(levels, levelStride) << 11) + frames();
            storeSmall<N>(linearSums<N>(table, cycles, group.phases) >> 14, out + i);
        });
    }

    static int modulatedLinear(ModulatedPhase& at, const ModulatedWave& wave, const std::int16_t* in, std::int16_t* out,
                               int count) {
        return linearWithFm(at, wave, in, out, count, [] { return Bits(0u); });
    }
    static int modulatedScan(ModulatedPhase& at, const ModulatedWave& wave, FrameScan& scan, const std::int16_t* in,
                             std::int16_t* out, int count) {
        ScannedFrames frames(scan);
        const int done = linearWithFm(at, wave, in, out, count, [&] { return frames.take(); });
        scan.step(done);
        return done;
    }

    static void scannedNearest(const std::int16_t* level, RunningPhase& at, FrameScan& scan, std::int16_t* out, int count) {
        Phases phases(at);
        ScannedFrames frames(scan);
        storeRow(out, count, [&](int) { return samplesAt<N>(level, frames.take() + (phases.take() >> 13)) >> 1; });
        pass(at, count);
        scan.step(count);
    }
    static void scannedLinear(const std::int16_t* level, RunningPhase& at, FrameScan& scan, std::int16_t* out, int count) {
        Phases phases(at);
        ScannedFrames frames(scan);
        storeRow(out, count, [&](int) { return linearSums<N>(level, frames.take(), phases.take()) >> 14; });
        pass(at, count);
        scan.step(count);
    }

    // ---- side by side ----

    // Steps every register of `bank` through its rows. step(lanes, x): the samples from x.
    template <template <class> class Chain>
    static void chains(LaneBank<Chain>& bank, Row* rows, int runs, int count) {
        constexpr int most = rowCount / N;
        const int registers = (runs + N - 1) / N;
        Chain<Floats> lanes[most];
        for (int g = 0; g < registers; ++g) lanes[g] = bank.template load<N>(g * N);
        for (int i = 0; i < count; i += N)
            for (int g = 0; g < registers; ++g) {
                Floats x[N];
                for (int k = 0; k < N; ++k) x[k] = loaded(rows[g * N + k] + i);
                turn<N>(x);
                Chain<Floats> chain = lanes[g];
                for (int k = 0; k < N; ++k)
                    if (i + k < count) x[k] = chain.step(x[k]);
                lanes[g] = chain;
                turn<N>(x);
                for (int k = 0; k < N; ++k) store(x[k], rows[g * N + k] + i);
            }
        for (int g = 0; g < registers; ++g) bank.template store<N>(g * N, lanes[g], 0xffff);
    }

    // Attractors in `registers` registers from `first` on, in turn, step by step: one computes while another waits. uneven:
    // they take more or fewer steps a sample.
    template <template <class> class System, int registers, bool uneven>
    static void attractorRegisters(Attractors<System>& all, Row* rows, int first, int fewest, int most, int count) {
        AttractorOf<System, Floats> chains[registers];
        Bits draws[registers];
        Ints subSteps[registers];
        for (int g = 0; g < registers; ++g) {
            const int lane = first + g * N;
            chains[g] = all.bank.template load<N>(lane);
            draws[g] = Bits(all.draws + lane, stdx::element_aligned);
            subSteps[g] = Ints(all.subSteps + lane, stdx::element_aligned);
        }
        Floats x[registers][N];
        for (int i = 0; i < count; i += N) {
            for (int k = 0; k < std::min(N, count - i); ++k) {
                for (int step = 0; step < fewest; ++step)
                    for (int g = 0; g < registers; ++g) {
                        draws[g] = congruenceStep(draws[g]);
                        chains[g].move(fromUnsigned<Floats>(draws[g]));
                    }
                if constexpr (uneven)
                    for (int step = fewest; step < most; ++step)
                        for (int g = 0; g < registers; ++g) moveSome(chains[g], draws[g], Ints(step) < subSteps[g]);
                for (int g = 0; g < registers; ++g) x[g][k] = chains[g].output();
            }
            for (int g = 0; g < registers; ++g) {
                turn<N>(x[g]);
                for (int k = 0; k < N; ++k) store(x[g][k], rows[first + g * N + k] + i);
            }
        }
        for (int g = 0; g < registers; ++g) {
            all.bank.template store<N>(first + g * N, chains[g], 0xffff);
            draws[g].copy_to(all.draws + first + g * N, stdx::element_aligned);
        }
    }
    // A step of the lanes of `moves`.
    template <class Chain>
    static void moveSome(Chain& chain, Bits& draws, const typename Ints::mask_type& moves) {
        const Bits drawn = congruenceStep(draws);
        Chain moved = chain;
        moved.move(fromUnsigned<Floats>(drawn));
        draws = select(std::bit_cast<typename Bits::mask_type>(moves), drawn, draws);
        const auto lanes = std::bit_cast<typename Floats::mask_type>(moves);
        chain.p = {select(lanes, moved.p.x, chain.p.x), select(lanes, moved.p.y, chain.p.y), select(lanes, moved.p.z, chain.p.z)};
        chain.slopeOfX = select(lanes, moved.slopeOfX, chain.slopeOfX);
    }
    template <template <class> class System>
    static void attractors(Attractors<System>& all, Row* rows, int runs, int count) {
        for (int first = 0; first < runs;) {
            const bool two = runs - first > N;
            const int lanes = two ? 2 * N : N;
            const auto [fewest, most] = std::minmax_element(all.subSteps + first, all.subSteps + std::min(runs, first + lanes));
            const auto loop = two ? *fewest == *most ? attractorRegisters<System, 2, false> : attractorRegisters<System, 2, true>
                                  : attractorRegisters<System, 1, true>;
            loop(all, rows, first, *fewest, *most, count);
            first += lanes;
        }
    }

    static constexpr KernelLoops table = {
        .tableSums = tableSums,
        .sawSums = sawSums,
        .hashRow = hashRow,
        .congruenceRow = congruenceRow,
        .pairedDraws = pairedDraws,
        .wideReads = wideReads,
        .pulseReads = pulseReads,
        .driven = driven,
        .analogSamples = analogSamples,
        .modulatedNearest = modulatedNearest,
        .modulatedLinear = modulatedLinear,
        .modulatedScan = modulatedScan,
        .scannedNearest = scannedNearest,
        .scannedLinear = scannedLinear,
        .truncated = truncated,
        .stackHighpass = chains<StackHighpass>,
        .twoStackHighpasses = chains<TwoStackHighpasses>,
        .outputLowpass = chains<OutputLowpass>,
        .noiseLowpass = chains<NoiseLowpass>,
        .noiseBandpass = chains<NoiseBandpass>,
        .pinkFilter = chains<PinkFilter>,
        .lorenz = attractors<Lorenz>,
        .rossler = attractors<Rossler>,
        .chua = attractors<Chua>,
    };
};

}  // namespace vantoric
