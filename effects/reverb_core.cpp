#include "effects/reverb_core.h"

#include <algorithm>

namespace vantoric {

namespace {

using Sides = Lanes<double, 2>;

constexpr int mask = (1 << 15) - 1;

Sides sides(double first, double second) {
    return Sides([&](auto side) { return side == 0 ? first : second; });
}

// The values of single precision. As lanes throughout: GCC 12 forgets the rounding where two rounded
// numbers are put together to a pair.
Sides inSingle(Sides x) { return lanesTo<Sides>(lanesTo<Lanes<float, 2>>(x)); }

// One step of a triangle a side, and its value.
Sides stepTriangle(Sides& phase, Sides increment) {
    const Sides next = phase + increment;
    phase = select(next >= Sides(1.0), next - Sides(1.0), next);
    return select(phase > Sides(0.5), Sides(2.0) - Sides(2.0) * phase, Sides(2.0) * phase);
}

// N neighbouring samples of a ring from `first` on, copied where they run over its end.
template <int N>
struct Window {
    Window(const double* ring, int first) : start_(ring + (first & mask)) {
        if ((first & mask) <= mask + 1 - N) return;
        for (int i = 0; i < N; ++i) copy_[i] = ring[(first + i) & mask];
        start_ = copy_;
    }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    double operator[](int i) const { return start_[i]; }

private:
    const double* start_;
    double copy_[N];
};

// Reads of two lines, each at an index and with a fraction that moves it towards older samples.
template <bool fourPoint>
Sides readPair(const double* first, int firstIndex, const double* second, int secondIndex, Sides f) {
    if constexpr (fourPoint) {
        const Window<4> a(first, firstIndex - 3), b(second, secondIndex - 3);
        const auto y = [&](int i) { return sides(a[i], b[i]); };
        return fourPointCurve<Sides>(Sides(1.0) - f, y(0), y(1), y(2), y(3));
    } else {
        const Window<6> a(first, firstIndex - 4), b(second, secondIndex - 4);
        const auto y = [&](int i) { return sides(a[i], b[i]); };
        return sixPointCurve<Sides>(f, y(0), y(1), y(2), y(3), y(4), y(5));
    }
}

// A few allpasses in series over a whole buffer, with their states in registers: so one sample's stages
// overlap with the next one's. With `rounded` each hands on its value in single precision.
template <int N, bool rounded>
void runAllpasses(AllpassStage<Sides>* stages, Sides* signal, int count, Sides c) {
    std::array<AllpassStage<Sides>, N> s;
    std::copy_n(stages, N, s.begin());
    for (int n = 0; n < count; ++n) {
        Sides x = signal[n];
        for (AllpassStage<Sides>& stage : s) {
            x = stage.step(x, c);
            if constexpr (rounded) x = inSingle(x);
        }
        signal[n] = x;
    }
    std::copy_n(s.begin(), N, stages);
}

template <bool rounded>
void runAllpassChain(AllpassStage<Sides>* stages, int number, Sides* signal, int count, Sides c) {
    int stage = 0;
    for (; stage + 5 <= number; stage += 5) runAllpasses<5, rounded>(stages + stage, signal, count, c);
    for (; stage < number; ++stage) runAllpasses<1, rounded>(stages + stage, signal, count, c);
}

// The longest stretch whose reads `length` behind all lie before its writes.
int stretchOf(int length) { return (length & mask) == 0 ? mask + 1 : length & mask; }

}  // namespace

ReverbCore::ReverbCore() = default;

void ReverbCore::reset() {
    for (Line& line : lines_) line.clear();
    for (Line& line : predelay_) line.clear();
    position_ = 0;
    diffusionPosition_ = 0;
    chain_.fill({});
    swirlPhase_.fill(0.0);
    damp_ = lowCut_ = outputCut_ = outputDamp_ = {};
    dispersers_.fill({});
    punch_.fill({});
}

void ReverbCore::touchMemory(int variant) {
    const Row* row = rowOf(rows, variant);
    if (row == nullptr) return;
    for (int line = 0; line < row->lines.lines; ++line) lines_[line].touch();
    if (row->lines.shortOnes)
        for (Line& line : predelay_) line.touch();
}

void ReverbCore::setSampleRate(float rate) { sampleRate_ = rate; }

void ReverbCore::setParameter(int index, float value) { parameters_.set(index, value); }

void ReverbCore::process(float* left, float* right, int count) {
    if (count > 0 && row_ != nullptr) (this->*row_->run)(left, right, count);
}

void ReverbCore::chain(float* left, float* right, int count) {
    runChain(chainPlan(row_->variant, parameters_, sampleRate_), left, right, count);
}

void ReverbCore::tank(float* left, float* right, int count) {
    runTank(tankPlan(row_->variant, parameters_, sampleRate_), left, right, count);
}

// The two tanks of fixed shape share their lines: the room starts with empty ones if the last of them was the hall.
void ReverbCore::hall(float* left, float* right, int count) {
    lastShape_ = 0.5;
    tank(left, right, count);
}

void ReverbCore::room(float* left, float* right, int count) {
    if (lastShape_ != 0.45)
        for (int line = 0; line < 6; ++line) lines_[line].clear();
    lastShape_ = 0.45;
    tank(left, right, count);
}

void ReverbCore::laserPunch(float* left, float* right, int count) {
    runPunch(punchPlan(parameters_, sampleRate_), left, right, count);
}

void ReverbCore::runChain(const ChainPlan& plan, float* left, float* right, int count) {
    struct Stage {
        double *left, *right;
        int leftLength, rightLength;
        Sides increment, excursion, feedback;
    };
    std::array<Stage, 6> stages;
    for (int s = 0; s < plan.stages; ++s) {
        const ChainStagePlan& stage = plan.stage[s];
        Line &leftLine = lines_[2 * s], &rightLine = lines_[2 * s + 1];
        leftLine.beginBlock(position_, count);
        rightLine.beginBlock(position_, count);
        stages[s] = {leftLine.data(),
                     rightLine.data(),
                     stage.length[0],
                     stage.length[1],
                     sides(stage.increment[0], stage.increment[1]),
                     sides(stage.excursion[0], stage.excursion[1]),
                     sides(stage.feedback[0], stage.feedback[1])};
    }
    const bool delayed = plan.predelay >= 0;
    if (delayed)
        for (Line& line : predelay_) line.beginBlock(position_ + plan.predelay, count);

    const Sides damp = plan.damp, undamped = 1.0 - plan.damp, allpass = plan.allpass;
    const Sides readOffset = sides(0.00001, 0.0), writeOffset = sides(0.0, 0.00001);  // against denormal numbers
    for (int n = 0; n < count; ++n) {
        const int position = position_ + n;
        const Sides in = sides(left[n], right[n]);
        Sides x = (static_cast<double>(left[n]) + static_cast<double>(right[n])) * 0.5;
        for (int s = plan.stages - 1; s >= 0; --s) {
            const Stage& stage = stages[s];
            ChainStageState& state = chain_[s];
            const Sides offset = stepTriangle(state.phase, stage.increment) * stage.excursion;
            const int leftWhole = static_cast<int>(offset[0]), rightWhole = static_cast<int>(offset[1]);
            const Sides f = offset - sides(leftWhole, rightWhole);
            const int i = position - stage.leftLength + leftWhole, j = position - stage.rightLength + rightWhole;
            const Sides v = (Sides(1.0) - f) * sides(stage.left[(i - 1) & mask], stage.right[(j - 1) & mask]) +
                            f * sides(stage.left[i & mask], stage.right[j & mask]) + readOffset;
            state.damped = v * damp + state.damped * undamped;
            const Sides dispersed = state.allpass.step(state.damped, allpass);
            const Sides written = x - state.damped * stage.feedback + writeOffset;
            stage.left[position & mask] = written[0];
            stage.right[position & mask] = written[1];
            x = x + dispersed * Sides(0.5) - state.damped * Sides(0.25);
        }
        Sides wet = x * Sides(0.5) - in * Sides(0.5);
        if (delayed) {
            predelay_[0][position + plan.predelay] = wet[0];
            predelay_[1][position + plan.predelay] = wet[1];
            wet = sides(predelay_[0][position], predelay_[1][position]);
        }
        const Sides out = wet * Sides(plan.mix) + in * Sides(1.0 - plan.mix);
        left[n] = static_cast<float>(out[0]);
        right[n] = static_cast<float>(out[1]);
    }
    position_ = (position_ + count) & mask;
}

void ReverbCore::runTank(const TankPlan& plan, float* left, float* right, int count) {
    for (int line = 0; line < 6; ++line) lines_[line].beginBlock(position_, count);
    if (plan.diffusion > 0.2f)
        for (int line = 6; line < 10; ++line) lines_[line].beginBlock(diffusionPosition_, count);
    if (plan.oneTriangle) swirlPhase_[1] = swirlPhase_[0];
    const int stretch = std::min({chunkSize, stretchOf(plan.length[2]), stretchOf(plan.length[5])});
    for (int done = 0; done < count; done += stretch) tankChunk(plan, left + done, right + done, std::min(stretch, count - done));
}

// A stretch in which the loop is fed only by what was written before it.
void ReverbCore::tankChunk(const TankPlan& plan, float* left, float* right, int count) {
    Chunk signal;
    // The right input enters the first side, the left input the second.
    for (int n = 0; n < count; ++n) signal[n] = sides(right[n], left[n]);
    if (plan.diffusion > 0.2f) diffuse(plan, left, right, signal, count);
    feedSides(plan, signal, count);
    runAllpassChain<false>(dispersers_.data(), plan.dispersers, signal.data(), count, plan.dispersion);
    if (plan.fourPoint)
        runLines<true>(plan, signal, left, right, count);
    else
        runLines<false>(plan, signal, left, right, count);
}

// Two allpasses a side smear the input before it enters the loop.
void ReverbCore::diffuse(const TankPlan& plan, const float* left, const float* right, Chunk& input, int count) {
    double *g = lines_[6].data(), *h = lines_[7].data(), *i = lines_[8].data(), *j = lines_[9].data();
    const Sides half = 0.5, diffused = plan.diffusion, direct = 1.0 - plan.diffusion;
    const auto& length = plan.diffuserLength;
    for (int n = 0; n < count; ++n) {
        const int position = diffusionPosition_;
        const Sides first = sides(g[(position - length[0]) & mask], i[(position - length[2]) & mask]);
        const Sides second = sides(h[(position - length[1]) & mask], j[(position - length[3]) & mask]);
        const Sides a = input[n] - first * half;
        const Sides b = a * half + first - second * half;
        g[position] = a[0];
        i[position] = a[1];
        h[position] = b[0];
        j[position] = b[1];
        input[n] = sides(left[n], right[n]) * direct + (b * half + second) * diffused;
        diffusionPosition_ = (position + 1) & mask;
    }
}

// Adds the other side's last line to the input, then low-pass and low-cut.
void ReverbCore::feedSides(const TankPlan& plan, Chunk& signal, int count) {
    const double *c = lines_[2].data(), *f = lines_[5].data();
    const Sides loopGain = plan.loopGain, damp = plan.damp, undamped = 1.0 - plan.damp;
    const Sides cut = plan.lowCut, kept = 1.0 - plan.lowCut, offset = 0.00001;
    for (int n = 0; n < count; ++n) {
        const int position = position_ + n;
        const Sides fed = sides(f[(position - plan.length[5]) & mask], c[(position - plan.length[2]) & mask]);
        const Sides x = (loopGain * fed + signal[n] + offset) * damp + undamped * damp_.state;
        damp_.state = x;
        lowCut_.state = kept * lowCut_.state + x * cut;
        signal[n] = x - lowCut_.state;
    }
}

// The moving lines, their allpasses, the output taps and the blend, sample by sample.
template <bool fourPoint>
void ReverbCore::runLines(const TankPlan& plan, const Chunk& signal, float* left, float* right, int count) {
    std::array<double*, 6> line;
    for (int i = 0; i < 6; ++i) line[i] = lines_[i].data();
    const auto [a, b, c, d, e, f] = line;
    const auto& length = plan.length;
    const Sides increment = sides(plan.increment[0], plan.increment[1]);
    const Sides g = plan.allpassGain, readGain = plan.readGain, excursionAD = plan.excursion[0], excursionBE = plan.excursion[1];
    const Sides cut = plan.outputCut, damp = plan.outputDamp, dry = plan.dry, wet = plan.wet;
    Sides phase = sides(swirlPhase_[0], swirlPhase_[1]);
    for (int n = 0; n < count; ++n) {
        const Sides t = stepTriangle(phase, increment);
        const Sides moveAD = sides(t[0], 1.0 - t[0]) * excursionAD, moveBE = sides(t[1], 1.0 - t[1]) * excursionBE;
        const int moveA = static_cast<int>(moveAD[0]), moveD = static_cast<int>(moveAD[1]);
        const int moveB = static_cast<int>(moveBE[0]), moveE = static_cast<int>(moveBE[1]);
        const int position = position_;
        const Sides first = readGain * readPair<fourPoint>(a, position - moveA - length[0], d, position - moveD - length[3],
                                                           moveAD - sides(moveA, moveD));
        const Sides second = readGain * readPair<fourPoint>(b, position - moveB - length[1], e, position - moveE - length[4],
                                                            moveBE - sides(moveB, moveE));
        const Sides a1 = signal[n] - first * g;
        const Sides a2 = a1 * g + first - second * g;
        const Sides last = a2 * g + second;
        const auto write = [position](double* one, double* other, Sides x) {
            const Sides held = heldInLoop(x);
            one[position] = held[0];
            other[position] = held[1];
        };
        write(a, d, a1);
        write(b, e, a2);
        write(c, f, last);
        position_ = (position + 1) & mask;

        const Sides tap = sides(c[(position_ - plan.tapLeft) & mask], f[(position_ - plan.tapRight) & mask]);
        outputCut_.state = (Sides(1.0) - cut) * outputCut_.state + tap * cut;
        outputDamp_.state = (tap - outputCut_.state) * damp + (Sides(1.0) - damp) * outputDamp_.state;
        const Sides out = sides(left[n], right[n]) * dry + outputDamp_.state * wet;
        left[n] = static_cast<float>(out[0]);
        right[n] = static_cast<float>(out[1]);
    }
    swirlPhase_ = {phase[0], phase[1]};
}

void ReverbCore::runPunch(const PunchPlan& plan, float* left, float* right, int count) {
    Chunk signal;
    for (int done = 0; done < count; done += chunkSize) {
        const int length = std::min(chunkSize, count - done);
        float *l = left + done, *r = right + done;
        for (int n = 0; n < length; ++n) signal[n] = inSingle(sides(l[n], r[n]) + Sides(0.00001));
        runAllpassChain<true>(punch_.data(), plan.stages, signal.data(), length, plan.coefficient);
        for (int n = 0; n < length; ++n) {
            l[n] = static_cast<float>(l[n] * (1.0 - plan.wet) + signal[n][0] * plan.wet);
            r[n] = static_cast<float>(r[n] * (1.0 - plan.wet) + signal[n][1] * plan.wet);
        }
    }
}

}  // namespace vantoric
