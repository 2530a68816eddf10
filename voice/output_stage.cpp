#include "voice/output_stage.h"

#include <algorithm>
#include <bit>

#include "base/numbers.h"

namespace vantoric {

namespace {

enum Gain : int { left1, left2, right1, right2, ring, bass, transient };
enum Memory : int { bassLeft, bassRight, fastLeft, slowLeft, fastRight, slowRight };

constexpr double antiDenormal = 1e-6;

// Pan law: 0 at 0, 1.33 at 1, 0.9975 in the middle.
double panGain(double x) { return 2.66 * x - 1.33 * x * x; }

using Quad = Lanes<double, laneGroup>;

Quad quadAt(const std::array<double, voiceCount>& row, int first) { return Quad(&row[first], stdx::element_aligned); }

Quad widened(const float* at) { return Quad(at, stdx::element_aligned); }

}  // namespace

OutputTargets outputTargets(const OutputLevels& levels) {
    const double e = clampUnit(levels.envelope);
    const double volume = clampTo(levels.layerVolume, 0.0f, 9999.0f);
    const double level = e * 1e-8 * volume * volume;
    const double scale = level * 2097152000.0;
    const double r = levels.ringmod;
    OutputTargets t;
    t.left1 = panGain(1.0 - levels.pan1) * levels.volume1 * scale + antiDenormal;
    t.right1 = panGain(levels.pan1) * levels.volume1 * scale + antiDenormal;
    t.left2 = panGain(1.0 - levels.pan2) * levels.volume2 * scale + antiDenormal;
    t.right2 = panGain(levels.pan2) * levels.volume2 * scale + antiDenormal;
    t.ring = r * r * level * level * 2.097152e19 + antiDenormal;
    t.bass = 1.5 - 3.0 * e + 1.5 * e * e + 0.5;
    t.transient = e * e;
    return t;
}

void OutputStage::setTargets(int voice, const OutputTargets& targets, int tickSamples, bool jump) {
    const std::array<double, gainCount> values = {targets.left1, targets.left2, targets.right1,   targets.right2,
                                                  targets.ring,  targets.bass,  targets.transient};
    for (int k = 0; k < gainCount; ++k) {
        if (jump && k < ring) gain_[k][voice] = values[k];
        step_[k][voice] = (values[k] - gain_[k][voice]) / tickSamples;
    }
}

void OutputStage::clearLevels(int voice) {
    for (int k = left1; k <= ring; ++k) gain_[k][voice] = step_[k][voice] = 0.0;
}

void OutputStage::reset(int voice) {
    for (int k = 0; k < gainCount; ++k) gain_[k][voice] = step_[k][voice] = 0.0;
    for (auto& row : memory_) row[voice] = 0.0;
}

void OutputStage::setMode(int soundMode, double sampleRate) {
    bassOn_ = soundMode == 1 || soundMode == 2 || soundMode == 10;
    transientOn_ = soundMode == 9 || soundMode == 10;
    bassCoefficient_ = 1000.0 / sampleRate;
    transientCoefficient_ = fastExp(-56520.0 / sampleRate);
}

OutputTargets OutputStage::gains(int voice) const {
    return {gain_[left1][voice], gain_[left2][voice], gain_[right1][voice],   gain_[right2][voice],
            gain_[ring][voice],  gain_[bass][voice],  gain_[transient][voice]};
}

template <bool withBass, bool withTransient>
void OutputStage::renderGroup(const float* f1, const float* f2, int count, LaneMask mask, int first) {
    const auto active = maskOf<Quad>(mask, first);
    const Quad zero(0.0);
    std::array<Quad, gainCount> gain, step;
    for (int k = 0; k < gainCount; ++k) {
        gain[k] = select(active, quadAt(gain_[k], first), zero);
        step[k] = select(active, quadAt(step_[k], first), zero);
    }
    std::array<Quad, 6> memory;
    for (int k = 0; k < 6; ++k) memory[k] = quadAt(memory_[k], first);
    const Quad kb(bassCoefficient_), keepBass(1.0 - bassCoefficient_);
    const Quad kt(transientCoefficient_), takeTransient(1.0 - transientCoefficient_);

    for (int i = 0; i < count; ++i) {
        for (int k = 0; k <= ring; ++k) gain[k] += step[k];
        if constexpr (withBass) gain[bass] += step[bass];
        if constexpr (withTransient) gain[transient] += step[transient];
        const Quad a = widened(f1 + i * voiceCount + first) + Quad(antiDenormal);
        const Quad b = widened(f2 + i * voiceCount + first) + Quad(antiDenormal);
        const Quad product = gain[ring] * a * b;
        Quad left = gain[left1] * a + gain[left2] * b + product;
        Quad right = gain[right1] * a + gain[right2] * b + product;
        const Quad dryLeft = left, dryRight = right;  // NOLINT(performance-unnecessary-copy-initialization)
        if constexpr (withBass) {
            memory[bassLeft] = keepBass * memory[bassLeft] + dryLeft * kb;
            memory[bassRight] = keepBass * memory[bassRight] + dryRight * kb;
            left += memory[bassLeft] * gain[bass];
            right += memory[bassRight] * gain[bass];
        }
        if constexpr (withTransient) {
            memory[fastLeft] = kt * memory[fastLeft] + dryLeft * takeTransient;
            memory[slowLeft] = kt * memory[slowLeft] + memory[fastLeft] * takeTransient;
            memory[fastRight] = kt * memory[fastRight] + dryRight * takeTransient;
            memory[slowRight] = kt * memory[slowRight] + memory[fastRight] * takeTransient;
            left += (dryLeft - memory[slowLeft]) * gain[transient];
            right += (dryRight - memory[slowRight]) * gain[transient];
        }
        double* sumLeft = &sumLeft_[i * laneGroup];
        double* sumRight = &sumRight_[i * laneGroup];
        (Quad(sumLeft, stdx::element_aligned) + left).copy_to(sumLeft, stdx::element_aligned);
        (Quad(sumRight, stdx::element_aligned) + right).copy_to(sumRight, stdx::element_aligned);
    }

    // A ramp that nobody reads goes its way in one stride.
    if constexpr (!withBass) gain[bass] += step[bass] * Quad(count);
    if constexpr (!withTransient) gain[transient] += step[transient] * Quad(count);
    for (int k = 0; k < gainCount; ++k)
        select(active, gain[k], quadAt(gain_[k], first)).copy_to(&gain_[k][first], stdx::element_aligned);
    for (int k = 0; k < 6; ++k)
        select(active, memory[k], quadAt(memory_[k], first)).copy_to(&memory_[k][first], stdx::element_aligned);
}

// One voice without the terms of the sound modes, both sides at once: a group that is mostly empty is done sooner so.
void OutputStage::renderVoice(const float* f1, const float* f2, int count, int voice) {
    using Pair = Lanes<double, 2>;
    const auto pair = [voice](const std::array<Row, gainCount>& rows, Gain left, Gain right) {
        const std::array<double, 2> values = {rows[left][voice], rows[right][voice]};
        return Pair(values.data(), stdx::element_aligned);
    };
    Pair gain1 = pair(gain_, left1, right1), gain2 = pair(gain_, left2, right2);
    const Pair step1 = pair(step_, left1, right1), step2 = pair(step_, left2, right2);
    double gainRing = gain_[ring][voice];
    const double stepRing = step_[ring][voice];
    double* sumLeft = &sumLeft_[voice % laneGroup];
    double* sumRight = &sumRight_[voice % laneGroup];
    for (int i = 0; i < count; ++i) {
        gain1 += step1;
        gain2 += step2;
        gainRing += stepRing;
        const double a = f1[i * voiceCount + voice] + antiDenormal, b = f2[i * voiceCount + voice] + antiDenormal;
        const Pair both = gain1 * Pair(a) + gain2 * Pair(b) + Pair(gainRing * a * b);
        sumLeft[i * laneGroup] += both[0];
        sumRight[i * laneGroup] += both[1];
    }
    const auto keep = [&](Gain left, Gain right, const Pair& gains) {
        gain_[left][voice] = gains[0];
        gain_[right][voice] = gains[1];
    };
    keep(left1, right1, gain1);
    keep(left2, right2, gain2);
    gain_[ring][voice] = gainRing;
    for (const Gain unread : {bass, transient}) gain_[unread][voice] += step_[unread][voice] * count;
}

void OutputStage::render(const float* f1, const float* f2, int count, LaneMask mask, float* left, float* right) {
    std::fill_n(sumLeft_.begin(), count * laneGroup, 0.0);
    std::fill_n(sumRight_.begin(), count * laneGroup, 0.0);
    for (int first = 0; first < voiceCount; first += laneGroup) {
        if (((mask >> first) & 15) == 0) continue;
        if (bassOn_ && transientOn_)
            renderGroup<true, true>(f1, f2, count, mask, first);
        else if (bassOn_)
            renderGroup<true, false>(f1, f2, count, mask, first);
        else if (transientOn_)
            renderGroup<false, true>(f1, f2, count, mask, first);
        else if (std::popcount(mask >> first & 15u) <= 2)
            for (unsigned rest = mask >> first & 15u; rest != 0; rest &= rest - 1)
                renderVoice(f1, f2, count, first + std::countr_zero(rest));
        else
            renderGroup<false, false>(f1, f2, count, mask, first);
    }
    for (int i = 0; i < count; ++i) {
        const double* l = &sumLeft_[i * laneGroup];
        const double* r = &sumRight_[i * laneGroup];
        left[i] += static_cast<float>((l[0] + l[1]) + (l[2] + l[3]));
        right[i] += static_cast<float>((r[0] + r[1]) + (r[2] + r[3]));
    }
}

}  // namespace vantoric
