// What the reverbs work out from their settings before each block: line lengths, coefficients and gains.
// Pure arithmetic without state, in double precision.
#pragma once

#include <array>

#include "effects/effect_tools.h"

namespace vantoric {

// The effects of the family, by the number that the type table gives them.
enum class ReverbVariant : int {
    theater = 0,
    hangar = 1,
    cathedral = 4,
    infinity = 6,
    big = 7,
    glass = 8,
    plate = 9,
    cold = 10,
    hall = 11,
    room = 12,
    laserPunch = 13,
};

// One comb-allpass stage of the old reverbs; index 0 is the left chain, 1 the right.
struct ChainStagePlan {
    std::array<int, 2> length;  // samples, 1 or more; beyond the ring it wraps
    std::array<double, 2> feedback;
    std::array<double, 2> increment{};  // of the triangle, cycles per sample
    std::array<double, 2> excursion{};  // of the read, samples
};

// The old reverbs: a chain of stages a side, run from the last to the first.
struct ChainPlan {
    int stages = 0;
    std::array<ChainStagePlan, 6> stage{};
    double damp = 0.0;     // low-pass coefficient of a stage
    double allpass = 0.0;  // allpass coefficient of a stage
    int predelay = -1;     // samples; -1 leaves the predelay out
    double mix = 0.0;
};

// The tank: six lines A to F in a figure of eight, A to C on one side, D to F on the other.
struct TankPlan {
    int unit = 0;                       // samples; all lengths are multiples of it
    std::array<int, 6> length{};        // of A to F, samples
    std::array<double, 2> increment{};  // triangles, cycles per sample: of A and D, of B and E
    std::array<double, 2> excursion{};  // samples: of A and D, of B and E
    bool oneTriangle = false;           // the first triangle moves all four lines
    bool fourPoint = false;             // reads on four points instead of six
    double readGain = 1.0;              // of the four moving lines
    double loopGain = 0.0;              // of the feedback from side to side
    double allpassGain = 0.0;
    double damp = 0.0, lowCut = 0.0;      // low-pass and low-cut of the loop
    double outputCut = 0.0;               // low-cut of the output
    double outputDamp = 0.0;              // low-pass of the output
    double dispersion = 0.0;              // coefficient of the dispersing allpasses
    int dispersers = 20;                  // of these a side
    int tapLeft = 0, tapRight = 0;        // output taps on C and F, samples
    double diffusion = 0.0;               // share of the diffused input; up to 0.2 there is none
    std::array<int, 4> diffuserLength{};  // of G to J, samples
    double dry = 1.0, wet = 0.0;          // gains
};

// A chain of dispersing allpasses.
struct PunchPlan {
    int stages = 0;  // 0 to 80
    double coefficient = 0.0;
    double wet = 0.0;
};

inline constexpr int maxPunchStages = 80;

// The plan of a variant for parameters of 0 to 1 (others are held there, NaN reads as 0) and a rate in Hz,
// above 0. chainPlan serves theater and hangar, tankPlan cathedral to room. Any thread.
ChainPlan chainPlan(ReverbVariant variant, const EffectParameters& parameters, float sampleRate);
TankPlan tankPlan(ReverbVariant variant, const EffectParameters& parameters, float sampleRate);
PunchPlan punchPlan(const EffectParameters& parameters, float sampleRate);

}  // namespace vantoric
