// Reverbs: family 1 of an effect slot. Three structures make eleven effects: a chain of swirling
// comb-allpass stages a side ("Reverb Theater", "Reverb Hangar"), a figure-of-eight tank of six lines
// (all other reverbs) and a bank of dispersing allpasses ("Laser Punch"). All in double precision.
#pragma once

#include <array>

#include "effects/effect_tools.h"
#include "effects/reverb_plan.h"
#include "effects/ring.h"

namespace vantoric {

// Audio thread only. Nothing allocates after construction.
class ReverbCore {
public:
    // Allocates fourteen rings of 32768 samples, mapped as they are used.
    ReverbCore();

    // Silences delay lines and states; parameters, variant, rate and tempo stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family; the type table lists those in use. With any other, audio passes unchanged.
    void setVariant(int variant);
    // Index 0 is the mix, 1 to 4 the parameters, values 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. Any count; the sound
    // does not depend on how it is cut into blocks.
    void process(float* left, float* right, int count);

private:
    using Line = Ring<double, 15>;
    using Sides = Lanes<double, 2>;  // the two sides of a structure

    // One pass of the tank takes at most this many samples.
    static constexpr int chunkSize = 64;
    using Chunk = std::array<Sides, chunkSize>;

    struct ChainStageState {
        Sides phase{0.0}, damped{0.0};
        AllpassStage<Sides> allpass;
    };

    void runChain(const ChainPlan& plan, float* left, float* right, int count);
    void runTank(const TankPlan& plan, float* left, float* right, int count);
    void tankChunk(const TankPlan& plan, float* left, float* right, int count);
    void diffuse(const TankPlan& plan, const float* left, const float* right, Chunk& input, int count);
    void feedSides(const TankPlan& plan, Chunk& signal, int count);
    template <bool fourPoint>
    void runLines(const TankPlan& plan, const Chunk& signal, float* left, float* right, int count);
    void runPunch(const PunchPlan& plan, float* left, float* right, int count);
    void enterFixedShape(double shape);

    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    int variant_ = 0;

    // Tank lines A to F, then diffusers G to J; for the chains left and right rings of stage after stage.
    std::array<Line, 12> lines_;
    std::array<Line, 2> predelay_;
    int position_ = 0;
    int diffusionPosition_ = 0;

    std::array<ChainStageState, 6> chain_;
    std::array<double, 2> swirlPhase_{};
    OnePole<Sides> damp_, lowCut_, outputCut_, outputDamp_;
    std::array<AllpassStage<Sides>, 20> dispersers_;
    std::array<AllpassStage<Sides>, maxPunchStages> punch_;
    double lastShape_ = 0.0;  // 0.45 after "Reverb Room", 0.5 after "Reverb Hall"
};

}  // namespace vantoric
