// The loops of kernel_loops.h over registers of N lanes. Two sources include this, one for each number of lanes.
#pragma once

#include <algorithm>
#include <array>

#include "sound/kernel_chains.h"
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

    // Sources give N samples at a take().
    template <class Source>
    static void fillRow(Source& source, float* row, int count) {
        for (int i = 0; i < count; i += N) store(source.take(), row + i);
    }

    // Stores the low 16 bits of the first `count` samples, at most N.
    static void storeSome(const Ints& samples, std::int16_t* out, int count) {
        if (count >= N) return storeWrapped<N>(samples, out);
        std::int16_t last[N];
        storeWrapped<N>(samples, last);
        std::copy_n(last, count, out);
    }
    // Stores samples(i), N from sample i on.
    template <class Samples>
    static void storeRow(std::int16_t* out, int count, Samples samples) {
        for (int i = 0; i < count; i += N) storeSome(samples(i), out + i, count - i);
    }

    // ---- stacks ----

    // Two voices at a time, and the centre by itself.
    template <int voices>
    struct TableSums {
        static constexpr int pairs = voices / 2;
        static_assert(voices % 2 == 1 && pairs <= N);

        const std::int16_t* cycle;
        std::uint32_t centre, centreStep;
        PhasePair phases[pairs], steps[pairs];
        Ints sum{0};

        TableSums(const std::int16_t* from, StackPhases& stack, int count)
            : cycle(from), centre(stack.phase[0]), centreStep(stack.step[0]) {
            for (int k = 0; k < pairs; ++k) {
                const int lower = 2 * k + 1, upper = lower + 1;
                phases[k] = PhasePair(stack.phase[lower], stack.phase[upper]);
                steps[k] = PhasePair(stack.step[lower], stack.step[upper]);
            }
            for (int k = 0; k < voices; ++k) stack.phase[k] += stack.step[k] * static_cast<std::uint32_t>(count);
        }
        Floats take() {
#pragma GCC unroll 8
            for (int k = 0; k < N; ++k) takePart(k);
            return taken();
        }
        // The same in N parts.
        void takePart(int k) {
            if (k < pairs) sum += nextSampleSums<N>(cycle, phases[k], steps[k]);
            if (k == N - 1) sum += nextSamples<N>(cycle, centre, centreStep);
        }
        Floats taken() {
            const Floats all = toFloats<N>(sum);
            sum = Ints(0);
            return all;
        }
    };

    struct SawSums {
        static constexpr int voices = 7;

        Bits phases[voices], steps[voices];

        SawSums(StackPhases& stack, int alternate, int count) {
            const bool alternates = alternate >= 0;
            for (int k = 0; k < voices; ++k) {
                // How many steps the voice has taken after each sample, of two at once if it takes turns.
                const std::uint32_t first = alternates && (k & 1) != alternate ? 1 : 0;
                const std::uint32_t step = alternates ? 2 * stack.step[k] : stack.step[k];
                const auto taken = [&](const auto& samples) { return alternates ? (samples + first) >> 1 : samples; };
                phases[k] = Bits(stack.phase[k] ^ 0x80000000u) + Bits(step) * taken(countedUp<N>());
                steps[k] = Bits(stack.step[k] * N);
                stack.phase[k] += step * taken(static_cast<std::uint32_t>(count));
            }
        }
        Floats take() {
            Ints sum(0);
            for (int k = 0; k < voices; ++k) {
                sum += asInts<N>(phases[k]) >> 17;  // 8 bits of the word and 9 of the saw
                phases[k] += steps[k];
            }
            return toFloats<N>(sum);
        }
    };

    static void tableSums(const std::int16_t* cycle, StackPhases& stack, float* row, int count) {
        const auto fill = [&](auto source) { fillRow(source, row, count); };
        switch (stack.voices) {
            case 3: return fill(TableSums<3>(cycle, stack, count));
            case 5: return fill(TableSums<5>(cycle, stack, count));
            case 7: return fill(TableSums<7>(cycle, stack, count));
            default: return fill(TableSums<9>(cycle, stack, count));
        }
    }
    static void sawSums(StackPhases& stack, int alternate, float* row, int count) {
        SawSums source(stack, alternate, count);
        fillRow(source, row, count);
    }

    // ---- draws ----

    // (u x unit) x range - offset.
    struct Level {
        float range, offset;

        Floats of(const Bits& drawn, float unit) const {
            return fromUnsigned<Floats>(drawn) * Floats(unit) * Floats(range) - Floats(offset);
        }
    };

    struct HashDraws {
        Bits counters, seed;
        Level level;

        HashDraws(HashNoise& hash, const Level& of, int count)
            : counters(Bits(hash.counter - 1u) + countedUp<N>()), seed(hash.seed), level(of) {
            hash.counter += static_cast<std::uint32_t>(count);
        }
        Floats take() {
            const Bits drawn = hashMix(counters ^ seed);
            counters += Bits(std::uint32_t{N});
            return level.of(drawn, 2.3283064e-10f);
        }
    };

    // Two registers of states in turn, as each product takes long.
    struct CongruenceDraws {
        Bits now, next;
        LinearCongruence& random;
        int left;
        Level level;

        CongruenceDraws(LinearCongruence& from, const Level& of, int count)
            : now(congruenceStates<N>(from.state)), next(congruencesOn<N, N>(now)), random(from), left(count), level(of) {}
        Floats take() {
            const Bits drawn = now;
            now = next;
            next = congruencesOn<N, 2 * N>(drawn);
            keepLast(random, drawn, left);
            left -= N;
            return level.of(drawn, 2.33e-10f);
        }
    };
    // The last of the draws that are left, if it is among these.
    static void keepLast(LinearCongruence& random, const Bits& drawn, int left) {
        if (left > 0 && left <= N) random.state = drawn[static_cast<std::size_t>(left - 1)];
    }

    static void hashRow(HashNoise& hash, float range, float offset, float* row, int count) {
        HashDraws draws(hash, {range, offset}, count);
        fillRow(draws, row, count);
    }
    static void congruenceRow(LinearCongruence& random, float range, float offset, float* row, int count) {
        CongruenceDraws draws(random, {range, offset}, count);
        fillRow(draws, row, count);
    }
    static void pairedDraws(LinearCongruence& random, float scale, float middle, float* row, int count) {
        Bits first = congruenceStates<N, 2>(random.state);
        for (int i = 0; i < count; i += N, first = congruencesOn<N, 2 * N>(first)) {
            const Bits second = congruencesOn<N, 1>(first);
            const Floats a = fromUnsigned<Floats>(first), b = fromUnsigned<Floats>(second);
            store(a * Floats(scale) - Floats(middle) + b * Floats(scale) - Floats(middle), row + i);
            keepLast(random, second, count - i);
        }
    }

    // ---- analog ----

    // The phases of N samples from the first one on, of 24 bits.
    struct Phases {
        Bits next, step;

        Phases(RunningPhase& at, int count) : next(Bits(at.phase) + Bits(at.step) * countedUp<N>()), step(at.step * N) {
            at.move(count);
        }
        Bits take() {
            const Bits taken = next & Bits(phaseMask);
            next += step;
            return taken;
        }
    };

    // linearSum at N phases of a running one, which is moved on by `count` samples.
    struct LinearReads {
        const std::int16_t* cycle;
        std::uint32_t phase, step;  // at the top of their words
        Phases phases;

        LinearReads(const std::int16_t* from, RunningPhase& at, int count)
            : cycle(from), phase(at.phase << 8), step(at.step << 8), phases(at, count) {}
        Ints take() {
            const Bits now = phases.take();
            if (!anyOf((now >> 13) == Bits(2047u))) return weighted<N>(nextPairs<N>(cycle, phase, step), now);
            phase += step * N;
            return linearSums<N>(cycle, Bits(0u), now);
        }
    };

    // The input of the low-pass: pole x (share of each read + what is kept of the one before).
    struct Driven {
        Ints before;
        std::int32_t& last;
        int left;
        Floats pole;

        Driven(std::int32_t& previous, float lowpassPole, int count)
            : before(previous), last(previous), left(count), pole(lowpassPole) {}
        Floats of(const Ints& shares, const Ints& kept) {
            const Ints sum = asInts<N>(asBits<N>(oneEarlier<N>(before, kept)) + asBits<N>(shares));
            before = kept;
            if (left > 0 && left <= N) last = kept[static_cast<std::size_t>(left - 1)];
            left -= N;
            return pole * toFloats<N>(sum);
        }
    };
    struct PlainReads {
        LinearReads reads;
        Driven driven;

        PlainReads(const AnalogReads& of, RunningPhase& at, std::int32_t& previous, int count)
            : reads(of.cycle, at, count), driven(previous, of.pole, count) {}
        Floats take() {
            const Ints read = reads.take();
            return driven.of(read, read);
        }
    };
    struct PulseReads {
        LinearReads ahead, behind;
        Driven driven;

        PulseReads(const AnalogReads& of, RunningPhase& at, std::int32_t& previous, int count)
            : ahead(shifted(of, of.width, at, count)),
              behind(shifted(of, 1024u - of.width, at, count)),
              driven(previous, of.pole, count) {
            at.move(count);
        }
        // So many samples later.
        static LinearReads shifted(const AnalogReads& of, std::uint32_t samples, RunningPhase at, int count) {
            at.phase += samples << 13;
            return {of.cycle, at, count};
        }
        Floats take() {
            const Ints difference = (ahead.take() - behind.take()) >> 1;
            return driven.of(difference, difference);
        }
    };
    struct FmReads {
        const std::int16_t* reads;
        Driven driven;

        FmReads(const AnalogReads& of, std::int32_t& previous, int count) : reads(of.cycle), driven(previous, of.pole, count) {}
        Floats take() {
            const Ints read = widened<N>(reads);
            reads += N;
            return driven.of(read << 15, read);
        }
    };
    static void plainReads(const AnalogReads& reads, RunningPhase& at, std::int32_t& previous, float* row, int count) {
        PlainReads source(reads, at, previous, count);
        fillRow(source, row, count);
    }
    static void pulseReads(const AnalogReads& reads, RunningPhase& at, std::int32_t& previous, float* row, int count) {
        PulseReads source(reads, at, previous, count);
        fillRow(source, row, count);
    }
    static void fmReads(const AnalogReads& reads, std::int32_t& previous, float* row, int count) {
        FmReads source(reads, previous, count);
        fillRow(source, row, count);
    }

    // Samples behind the low-pass with hiss of one draw each.
    template <class Draws>
    struct AnalogOutput {
        Draws draws;
        Ints sign;

        template <class Random>
        AnalogOutput(Random& random, const AnalogSound& sound, int count)
            : draws(random, {2.0f * sound.hiss, sound.hiss}, count), sign(sound.turned ? 0 : -1) {}
        Ints of(const Floats& lowpass) {
            const Floats y = lowpass * Floats(3.05185e-5f) + draws.take();
            return (toInts<N>(limited<N>(y, -32767.0f, 32767.0f)) ^ sign) - sign;
        }
    };
    using HashOutput = AnalogOutput<HashDraws>;
    using CongruenceOutput = AnalogOutput<CongruenceDraws>;

    static void analogOverHash(const float* row, HashNoise& hash, const AnalogSound& sound, std::int16_t* out, int count) {
        HashOutput output(hash, sound, count);
        storeRow(out, count, [&](int i) { return output.of(loaded(row + i)); });
    }
    static void analogOverCongruence(const float* row, LinearCongruence& random, const AnalogSound& sound, std::int16_t* out,
                                     int count) {
        CongruenceOutput output(random, sound, count);
        storeRow(out, count, [&](int i) { return output.of(loaded(row + i)); });
    }

    // ---- one oscillator with all its parts ----

    // Runs a recursive part between a source and an output in one loop: while it waits for itself, the processor goes on
    // with the samples around.
    template <class Chain, class Source, class Output>
    static void runAlone(Chain& memory, Source source, Output output, std::int16_t* out, int count) {
        Chain chain = memory;
        Floats x = source.take();
        for (int i = 0; i < count; i += N) {
            const int now = std::min(N, count - i);
            float samples[N];
            store(x, samples);
            const auto step = [&](int k) {
                if (k < now) samples[k] = chain.step(samples[k]);
            };
            if constexpr (requires { source.takePart(0); }) {
                // Long work goes between the samples: behind them it would not be reached while they wait.
#pragma GCC unroll 8
                for (int k = 0; k < N; ++k) {
                    step(k);
                    source.takePart(k);
                }
                x = source.taken();
            } else {
                x = source.take();
#pragma GCC unroll 8
                for (int k = 0; k < N; ++k) step(k);
            }
            storeSome(output(Floats([&](auto k) { return samples[k]; })), out + i, now);
        }
        memory = chain;
    }

    static Ints truncatedLanes(const Floats& x, float scale) {
        return toInts<N>(limited<N>(x * Floats(scale), -2147483648.0f, 2147483520.0f));
    }

    static void hypernoiseAlone(const std::int16_t* cycle, StackPhases& stack, StackHighpass<float>& chain, float scale,
                                std::int16_t* out, int count) {
        runAlone(chain, TableSums<9>(cycle, stack, count), [&](const Floats& x) { return truncatedLanes(x, scale); }, out, count);
    }
    static void supersawAlone(const std::int16_t* cycle, StackPhases& stack, TwoStackHighpasses<float>& chain, float scale,
                              std::int16_t* out, int count) {
        runAlone(chain, TableSums<7>(cycle, stack, count), [&](const Floats& x) { return truncatedLanes(x, scale); }, out, count);
    }
    static void supersawJpAlone(StackPhases& stack, int alternate, TwoStackHighpasses<float>& chain, float scale,
                                std::int16_t* out, int count) {
        runAlone(chain, SawSums(stack, alternate, count), [&](const Floats& x) { return truncatedLanes(x, scale); }, out, count);
    }
    static void analogPlainAlone(const AnalogReads& reads, RunningPhase& at, std::int32_t& previous, OutputLowpass<float>& chain,
                                 HashNoise& hash, const AnalogSound& sound, std::int16_t* out, int count) {
        HashOutput output(hash, sound, count);
        runAlone(chain, PlainReads(reads, at, previous, count), [&](const Floats& x) { return output.of(x); }, out, count);
    }
    static void analogPulseAlone(const AnalogReads& reads, RunningPhase& at, std::int32_t& previous, OutputLowpass<float>& chain,
                                 LinearCongruence& random, const AnalogSound& sound, std::int16_t* out, int count) {
        CongruenceOutput output(random, sound, count);
        runAlone(chain, PulseReads(reads, at, previous, count), [&](const Floats& x) { return output.of(x); }, out, count);
    }

    // ---- output ----

    static void truncated(const float* row, float scale, std::int16_t* out, int count) {
        storeRow(out, count, [&](int i) { return truncatedLanes(loaded(row + i), scale); });
    }

    // ---- plain reads ----

    static void nearest(const std::int16_t* cycle, RunningPhase& at, std::int16_t* out, int count) {
        Phases phases(at, count);
        storeRow(out, count, [&](int) { return samplesAt<N>(cycle, phases.take() >> 13) >> 1; });
    }
    static void linear(const std::int16_t* cycle, RunningPhase& at, std::int16_t* out, int count) {
        LinearReads reads(cycle, at, count);
        storeRow(out, count, [&](int) { return reads.take() >> 14; });
    }
    static void blended(const BlendedCycles& cycles, RunningPhase& at, std::int16_t* out, int count) {
        const std::int16_t *const near = cycles.near, *const far = cycles.far;
        const std::uint32_t step = at.step << 8;
        std::uint32_t phase = at.phase << 8;
        Phases phases(at, count);
        // Weights of 16 bits, less 32768, which is made up for by what that would have taken away: unsigned, as two samples
        // of -32768 wrap on the way.
        const Ints weights(static_cast<std::int32_t>((static_cast<std::uint32_t>(cycles.blend - 32768) << 16) |
                                                     (static_cast<std::uint32_t>(32767 - cycles.blend) & 0xffffu)));
        const Ints offset(static_cast<std::int32_t>(0x80008000u));
        const Bits low(0xffffu), high(0xffff0000u);
        const auto blend = [&](const Bits& both) {
            const Ints pairs = asInts<N>(both);
            return asBits<N>(halvesMultiplied<N>(pairs, weights)) - asBits<N>(halvesMultiplied<N>(pairs, offset));
        };
        const auto read = [&](const Ints& nearPairs, const Ints& farPairs, const Bits& now) {
            const Bits a = asBits<N>(nearPairs), b = asBits<N>(farPairs);
            const Bits left = blend((a & low) | (b << 16)), right = blend((a >> 16) | (b & high));
            return weighted<N>(asInts<N>((left >> 16) | (right & high)), now) >> 14;
        };
        storeRow(out, count, [&](int) {
            const Bits now = phases.take(), places = now >> 13;
            std::uint32_t again = phase;
            if (!anyOf(places == Bits(2047u))) return read(nextPairs<N>(near, again, step), nextPairs<N>(far, phase, step), now);
            phase += step * N;
            return read(cyclicPairsAt<N>(near, Bits(0u), places), cyclicPairsAt<N>(far, Bits(0u), places), now);
        });
    }

    // ---- reads with FM ----

    // What N samples of a modulated oscillator read by.
    struct Group {
        Bits phases;        // 24 bits, with the FM offset
        Ints steps;         // effective steps in table samples
        Ints totals;        // phases before they were cut to 24 bits
        Ints totalsBefore;  // of which the last lane counts

        bool wraps() const { return anyOf(totals < oneEarlier<N>(totalsBefore, totals)); }
    };

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
        const bool synced = at.synced;
        int done = 0;
        for (; count - done >= N; done += N) {
            const Ints x = widened<N>(in + done);
            // (x depth) >> 4 in two parts of 16 bits.
            const Ints offset =
                halvesMultiplied<N>(x, (depths >> 4) & Ints(0xffff)) + (halvesMultiplied<N>(x, depths & Ints(15)) >> 4);
            const Ints total = asInts<N>(phases & Bits(phaseMask)) + offset;
            const Group group{asBits<N>(total) & Bits(phaseMask),
                              magnitude<N>(increment - oneEarlier<N>(offsets, offset) + offset) >> 13, total, totals};
            if (synced && anyOf(x > Ints(0) && oneEarlier<N>(inputs, x) < Ints(1))) break;
            if (breaks(group)) break;
            read(group, done);
            phases += step;
            depths += depthStep;
            inputs = x;
            offsets = offset;
            totals = total;
        }
        at.phase = (at.phase + at.step * static_cast<std::uint32_t>(done)) & phaseMask;
        at.depth += at.depthStep * done;
        if (synced) at.lastInput = static_cast<std::int16_t>(lastLane<N>(inputs));
        at.lastOffset = lastLane<N>(offsets);
        at.lastTotal = lastLane<N>(totals);
        return done;
    }

    static int modulatedNearest(ModulatedPhase& at, const std::int16_t* cycle, const std::int16_t* in, std::int16_t* out,
                                int count) {
        return modulatedGroups(
            at, in, count, [](const Group&) { return false; },
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

    // boxRead of the samples whose steps reach boxStep, of frames that begin at `frames` in level 7; the others stay.
    static Ints withBoxReads(const Ints& samples, const std::int16_t* level7, const Bits& frames, const Group& group) {
        const Bits middle = group.phases >> 13;
        // Those so far to the left and to the right of the middle.
        const auto pair = [&](std::uint32_t apart) {
            return samplesAt<N>(level7, frames + ((middle - Bits(apart)) & Bits(2047u))) +
                   samplesAt<N>(level7, frames + ((middle + Bits(apart)) & Bits(2047u)));
        };
        Ints sum = pair(64), bits(1);  // of as many samples as 1 << bits
        for (std::uint32_t end = 128; end < 1024; end *= 2) {
            const auto wider = group.steps > Ints(static_cast<std::int32_t>(2 * end));
            if (!anyOf(wider)) break;
            Ints more(0);
            for (std::uint32_t apart = end + 64; apart < 2 * end; apart += 128) more += pair(apart);
            sum += select(wider, more, Ints(0));
            bits += select(wider, Ints(1), Ints(0));
        }
        // A quotient is cut towards 0.
        const Ints mean = (sum + ((sum >> 31) & ((Ints(1) << bits) - Ints(1)))) >> bits;
        const Ints box = select(group.steps > Ints(2048), Ints(0), mean >> 1);
        return select(group.steps >= Ints(boxStep), box, samples);
    }

    // frames(): where the frames of the next N samples begin.
    template <class Frames>
    static int linearWithFm(ModulatedPhase& at, const ModulatedWave& wave, const std::int16_t* in, std::int16_t* out, int count,
                            Frames frames) {
        if (wave.frames > 32767) return 0;
        const Ints levelStride(wave.frames), mostLinear(boxStep - 1);
        const std::int16_t* const table = wave.table;
        const std::int16_t* const level7 = table + cycleOffset(wave.frames, 0, 7);
        const bool latches = wave.latches;
        const auto breaks = [&](const Group& group) { return latches && group.wraps(); };
        return modulatedGroups(at, in, count, breaks, [&](const Group& group, int i) {
            // Levels by three quarters of the steps: the number of the bits of 3 x >> 2 is the exponent of 3 x | 2 less 1.
            const Ints steps = stdx::min(group.steps, mostLinear);
            const Ints scaled = (steps + steps + steps) | Ints(2);
            const Ints levels = (std::bit_cast<Ints>(toFloats<N>(scaled)) >> 23) - Ints(128);
            const Bits frame = frames();
            const Bits cycles = asBits<N>(halvesMultiplied<N>(levels, levelStride) << 11) + frame;
            Ints samples = linearSums<N>(table, cycles, group.phases) >> 14;
            if (anyOf(group.steps > mostLinear)) samples = withBoxReads(samples, level7, frame, group);
            storeSmall<N>(samples, out + i);
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
        Phases phases(at, count);
        ScannedFrames frames(scan);
        storeRow(out, count, [&](int) { return samplesAt<N>(level, frames.take() + (phases.take() >> 13)) >> 1; });
        scan.step(count);
    }
    static void scannedLinear(const std::int16_t* level, RunningPhase& at, FrameScan& scan, std::int16_t* out, int count) {
        Phases phases(at, count);
        ScannedFrames frames(scan);
        storeRow(out, count, [&](int) { return linearSums<N>(level, frames.take(), phases.take()) >> 14; });
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
        .plainReads = plainReads,
        .pulseReads = pulseReads,
        .fmReads = fmReads,
        .analogOverHash = analogOverHash,
        .analogOverCongruence = analogOverCongruence,
        .nearest = nearest,
        .linear = linear,
        .blended = blended,
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
        .henonMap = chains<HenonMap>,
        .lorenz = attractors<Lorenz>,
        .rossler = attractors<Rossler>,
        .chua = attractors<Chua>,
        .hypernoiseAlone = hypernoiseAlone,
        .supersawAlone = supersawAlone,
        .supersawJpAlone = supersawJpAlone,
        .analogPlainAlone = analogPlainAlone,
        .analogPulseAlone = analogPulseAlone,
    };
};

}  // namespace vantoric
