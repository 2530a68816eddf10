// Reverbs: family 1 of an effect slot. Three structures make eleven effects: a chain of swirling
// comb-allpass stages a side ("Reverb Theater", "Reverb Hangar"), a figure-of-eight tank of six lines
// (all other reverbs) and a bank of dispersing allpasses ("Laser Punch"). All in double precision.
#pragma once

#include <array>

#include "effects/effect_row.h"
#include "effects/effect_tools.h"
#include "effects/reverb_plan.h"
#include "effects/ring.h"

namespace vantoric {

// Family 1: every effect whose input dies away in a room. Audio thread only. Nothing allocates after construction.
class ReverbCore {
public:
    using Variant = ReverbVariant;

    // Allocates fourteen rings of 32768 samples, mapped as they are used.
    ReverbCore();

    // Silences delay lines and states; parameters, variant, rate and tempo stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family by its Variant. With a number not in use, audio passes unchanged.
    void setVariant(int variant) { row_ = rowOf(rows, variant); }
    // Index 0 is the mix, 1 to 4 the parameters, values 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. Any count; the sound
    // does not depend on how it is cut into blocks.
    void process(float* left, float* right, int count);

    // Has the system map what a variant's lines use. Any thread, also while audio runs.
    void touchMemory(int variant);

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

    // How the effects begin.
    void chain(float* left, float* right, int count);
    void tank(float* left, float* right, int count);
    void hall(float* left, float* right, int count);
    void room(float* left, float* right, int count);
    void laserPunch(float* left, float* right, int count);

    void runChain(const ChainPlan& plan, float* left, float* right, int count);
    void runTank(const TankPlan& plan, float* left, float* right, int count);
    void tankChunk(const TankPlan& plan, float* left, float* right, int count);
    void diffuse(const TankPlan& plan, const float* left, const float* right, Chunk& input, int count);
    void feedSides(const TankPlan& plan, Chunk& signal, int count);
    template <bool fourPoint>
    void runLines(const TankPlan& plan, const Chunk& signal, float* left, float* right, int count);
    void runPunch(const PunchPlan& plan, float* left, float* right, int count);

    // What they show.
    struct Text {
        static constexpr ParameterText none{}, damp = shown::percent("Damp %d%%"), swirl = shown::percent("Swirl %d%%"),
                                               decay = shown::percent("Decay %d%%");
        static constexpr ParameterText hallSize = shown::number("Size %.1fm", [](float p) { return p * 20.0f + 10.0f; });
        static constexpr ParameterText cathedralSize = shown::number("Size %.1fm", [](float p) { return p * 53.5f + 21.4f; });
        static constexpr ParameterText bigSize = shown::number("Size %.1fm", [](float p) { return p * p * 160.0f + 40.0f; });
        static constexpr ParameterText frequency =
            shown::number("Frequency %d Hz", [](float p) { return p * p * p * 5900.0f + 100.0f; });
        static constexpr ParameterText predelay = shown::number("Predelay %.2fs", [](float p) { return p * p * 0.65f; });
    };

public:
    using Row = EffectRow<Variant, void (ReverbCore::*)(float* left, float* right, int count)>;
    static constexpr EffectFamily family = EffectFamily::reverb;

    // One row an effect. Lines: see lines_; the short ones are the predelays.
    // clang-format off
    static constexpr Row rows[] = {
        {2, "Reverb Hall", "Reverb medium", Variant::hall, {0.33f, 0.9f, 0.35f, 0.4f, 0.25f}, &ReverbCore::hall,
         {Text::hallSize, Text::damp, Text::swirl, Text::predelay}, {6}},
        {3, "Reverb Cathedral", "Reverb large", Variant::cathedral, {0.25f, 1.0f, 0.33f, 0.5f, 0.25f}, &ReverbCore::tank,
         {Text::cathedralSize, Text::damp, Text::swirl, Text::predelay}, {6}},
        {4, "Reverb Room", "Reverb small", Variant::room, {0.4f, 0.5f, 0.5f, 0.33f, 0.25f}, &ReverbCore::room,
         {shown::number("Size %.1fm", [](float p) { return p * 10.0f + 5.0f; }), Text::damp, Text::swirl, Text::predelay}, {6}},
        {24, "Reverb Infinity", "Reverb Infinity", Variant::infinity, {0.25f, 0.75f, 0.25f, 0.5f, 0.8f}, &ReverbCore::tank,
         {shown::number("Size %.1fm", [](float p) { return p * p * 132.0f + 66.0f; }), Text::damp, Text::swirl,
          Text::decay}, {10}},
        {25, "Reverb Big", "Reverb Big", Variant::big, {0.25f, 0.5f, 0.25f, 0.5f, 0.7f}, &ReverbCore::tank,
         {Text::bigSize, Text::damp, Text::swirl, Text::decay}, {10}},
        {26, "Reverb Glass", "Reverb Glass", Variant::glass, {0.3f, 0.5f, 0.75f, 0.5f, 0.9f}, &ReverbCore::tank,
         {Text::bigSize, shown::percent("Low Damp %d%%"), Text::swirl, Text::decay}, {6}},
        {27, "Reverb Plate", "Reverb Plate", Variant::plate, {0.25f, 0.5f, 0.5f, 0.5f, 0.7f}, &ReverbCore::tank,
         {Text::bigSize, Text::frequency, Text::swirl, Text::decay}, {6}},
        {28, "Reverb Cold", "Reverb Real", Variant::cold, {0.25f, 0.66f, 0.0f, 0.0f, 0.5f}, &ReverbCore::tank,
         {shown::number("Size %.1fm", [](float p) { return p * p * 50.0f + 2.5f; }), Text::damp, shown::percent("Diffuse %d%%"),
          Text::decay}, {10}},
        {29, "Reverb Theater", "Reverb Hall old", Variant::theater, {0.33f, 1.0f, 0.0f, 0.4f, 0.3f}, &ReverbCore::chain,
         {Text::hallSize, Text::damp, Text::swirl, Text::predelay}, {8, true}},
        {30, "Reverb Hangar", "Reverb Cathedral old", Variant::hangar, {0.33f, 1.0f, 0.0f, 0.5f, 0.3f}, &ReverbCore::chain,
         {Text::cathedralSize, Text::damp, Text::swirl, Text::predelay}, {12, true}},
        {69, "Laser Punch", "Laser Punch", Variant::laserPunch, {1.0f, 0.6f, 0.6f, 0.5f, 0.5f}, &ReverbCore::laserPunch,
         {shown::percent("Zzzapp %d%%"), Text::frequency, Text::none, Text::none}},
    };
    // clang-format on

private:
    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    const Row* row_ = rowOf(rows, 0);

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
