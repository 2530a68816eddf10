#include "voice/output_stage.h"

#include <algorithm>
#include <bit>

#include "base/numbers.h"
#include "sound/filters/wide_loops.h"
#include "voice/output_lanes.h"

namespace vantoric {

#if defined(VANTORIC_WIDE_OUTPUT)
// OutputLanes::render in output_stage_wide.cpp, for processors with AVX2.
void renderOutputWide(OutputMemory& memory, const float* f1, const float* f2, int count, LaneMask mask, int first);
#endif

namespace {

using enum OutputMemory::Gain;
using Gain = OutputMemory::Gain;
constexpr int gainCount = OutputMemory::gainCount;

// Pan law: 0 at 0, 1.33 at 1, 0.9975 in the middle.
double panGain(double x) { return 2.66 * x - 1.33 * x * x; }

// What every processor of the build's architecture runs.
struct Plain;

void renderGroup(OutputMemory& memory, const float* f1, const float* f2, int count, LaneMask mask, int first) {
#if defined(VANTORIC_WIDE_OUTPUT)
    if (filters::wideLoopsInUse()) return renderOutputWide(memory, f1, f2, count, mask, first);
#endif
    OutputLanes<Plain>::render(memory, f1, f2, count, mask, first);
}

}  // namespace

OutputTargets outputTargets(const OutputLevels& levels) {
    const double e = clampUnit(levels.envelope);
    const double volume = clampTo(levels.layerVolume, 0.0f, 9999.0f);
    const double level = e * 1e-8 * volume * volume;
    const double scale = level * 2097152000.0;
    const double r = levels.ringmod;
    OutputTargets t;
    t.left1 = panGain(1.0 - levels.pan1) * levels.volume1 * scale + outputAntiDenormal;
    t.right1 = panGain(levels.pan1) * levels.volume1 * scale + outputAntiDenormal;
    t.left2 = panGain(1.0 - levels.pan2) * levels.volume2 * scale + outputAntiDenormal;
    t.right2 = panGain(levels.pan2) * levels.volume2 * scale + outputAntiDenormal;
    t.ring = r * r * level * level * 2.097152e19 + outputAntiDenormal;
    t.bass = 1.5 - 3.0 * e + 1.5 * e * e + 0.5;
    t.transient = e * e;
    return t;
}

void OutputStage::setTargets(int voice, const OutputTargets& targets, int tickSamples, bool jump) {
    const std::array<double, gainCount> values = {targets.left1, targets.left2, targets.right1,   targets.right2,
                                                  targets.ring,  targets.bass,  targets.transient};
    for (int k = 0; k < gainCount; ++k) {
        if (jump && k < ring) memory_.gain[k][voice] = values[k];
        memory_.step[k][voice] = (values[k] - memory_.gain[k][voice]) / tickSamples;
    }
}

void OutputStage::clearLevels(int voice) {
    for (int k = left1; k <= ring; ++k) memory_.gain[k][voice] = memory_.step[k][voice] = 0.0;
}

void OutputStage::reset(int voice) {
    for (int k = 0; k < gainCount; ++k) memory_.gain[k][voice] = memory_.step[k][voice] = 0.0;
    for (auto& row : memory_.filter) row[voice] = 0.0;
}

void OutputStage::setMode(int soundMode, double sampleRate) {
    memory_.bassOn = soundMode == 1 || soundMode == 2 || soundMode == 10;
    memory_.transientOn = soundMode == 9 || soundMode == 10;
    memory_.bassCoefficient = 1000.0 / sampleRate;
    memory_.transientCoefficient = fastExp(-56520.0 / sampleRate);
}

OutputTargets OutputStage::gains(int voice) const {
    return {memory_.gain[left1][voice], memory_.gain[left2][voice], memory_.gain[right1][voice],   memory_.gain[right2][voice],
            memory_.gain[ring][voice],  memory_.gain[bass][voice],  memory_.gain[transient][voice]};
}

// One voice without the terms of the sound modes, both sides at once: a group that is mostly empty is done sooner so.
// add(i, left, right) takes its samples.
template <class Add>
void OutputStage::renderVoice(const float* f1, const float* f2, int count, int voice, Add add) {
    using Pair = Lanes<double, 2>;
    const auto pair = [voice](const std::array<OutputMemory::Row, gainCount>& rows, Gain left, Gain right) {
        const std::array<double, 2> values = {rows[left][voice], rows[right][voice]};
        return Pair(values.data(), stdx::element_aligned);
    };
    Pair gain1 = pair(memory_.gain, left1, right1), gain2 = pair(memory_.gain, left2, right2);
    const Pair step1 = pair(memory_.step, left1, right1), step2 = pair(memory_.step, left2, right2);
    double gainRing = memory_.gain[ring][voice];
    const double stepRing = memory_.step[ring][voice];
    for (int i = 0; i < count; ++i) {
        gain1 += step1;
        gain2 += step2;
        gainRing += stepRing;
        const double a = f1[i * voiceCount + voice] + outputAntiDenormal, b = f2[i * voiceCount + voice] + outputAntiDenormal;
        const Pair both = gain1 * Pair(a) + gain2 * Pair(b) + Pair(gainRing * a * b);
        add(i, both[0], both[1]);
    }
    const auto keep = [&](Gain left, Gain right, const Pair& gains) {
        memory_.gain[left][voice] = gains[0];
        memory_.gain[right][voice] = gains[1];
    };
    keep(left1, right1, gain1);
    keep(left2, right2, gain2);
    memory_.gain[ring][voice] = gainRing;
    for (const Gain unread : {bass, transient}) memory_.gain[unread][voice] += memory_.step[unread][voice] * count;
}

void OutputStage::render(const float* f1, const float* f2, int count, LaneMask mask, float* left, float* right) {
    const bool plain = !memory_.bassOn && !memory_.transientOn;
    if (plain && std::has_single_bit(mask))
        return renderVoice(f1, f2, count, std::countr_zero(mask), [=](int i, double l, double r) {
            left[i] += static_cast<float>(l);
            right[i] += static_cast<float>(r);
        });
    std::fill_n(memory_.sumLeft.begin(), count * laneGroup, 0.0);
    std::fill_n(memory_.sumRight.begin(), count * laneGroup, 0.0);
    for (int first = 0; first < voiceCount; first += laneGroup) {
        if (((mask >> first) & 15) == 0) continue;
        if (plain && std::popcount(mask >> first & 15u) <= 2)
            for (unsigned rest = mask >> first & 15u; rest != 0; rest &= rest - 1) {
                const int voice = first + std::countr_zero(rest), lane = voice % laneGroup;
                renderVoice(f1, f2, count, voice, [this, lane](int i, double l, double r) {
                    memory_.sumLeft[i * laneGroup + lane] += l;
                    memory_.sumRight[i * laneGroup + lane] += r;
                });
            }
        else
            renderGroup(memory_, f1, f2, count, mask, first);
    }
    for (int i = 0; i < count; ++i) {
        const double* l = &memory_.sumLeft[i * laneGroup];
        const double* r = &memory_.sumRight[i * laneGroup];
        left[i] += static_cast<float>((l[0] + l[1]) + (l[2] + l[3]));
        right[i] += static_cast<float>((r[0] + r[1]) + (r[2] + r[3]));
    }
}

}  // namespace vantoric
