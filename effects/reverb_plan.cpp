#include "effects/reverb_plan.h"

#include <cmath>
#include <cstdint>

namespace vantoric {

namespace {

// The five values in double precision.
struct Settings {
    explicit Settings(const EffectParameters& parameters)
        : mix(clampUnit(parameters.mix())),
          p1(clampUnit(parameters[1])),
          p2(clampUnit(parameters[2])),
          p3(clampUnit(parameters[3])),
          p4(clampUnit(parameters[4])) {}
    double mix, p1, p2, p3, p4;
};

constexpr int longest = 1 << 24;  // of a length in samples, far beyond the rings

int samples(double length) { return truncateTo(length, 0, longest); }

double squared(double x) { return x * x; }

// --- the old chain

struct LadderRow {
    double leftScale, leftFeedback, rightScale, rightFeedback;
};
constexpr std::array<LadderRow, 4> theaterLadder = {{
    {50, 0.75, 45.85, 0.768},
    {42.045, 0.785, 38.555, 0.801},
    {35.355, 0.816, 32.421, 0.83},
    {29.73, 0.843, 27.263, 0.855},
}};

struct HangarRow {
    double leftSlope, leftBase, leftFeedback, rightSlope, rightBase, rightFeedback;
};
constexpr std::array<HangarRow, 6> hangarLadder = {{
    {0.14172335, 0.056689344, 0.75, 0.13571429, 0.054285716, 0.759},
    {0.12996031, 0.051984128, 0.768, 0.12445011, 0.049780045, 0.777},
    {0.119175166, 0.047670066, 0.785, 0.11412132, 0.045648526, 0.793},
    {0.10928288, 0.043713152, 0.801, 0.10465136, 0.041860547, 0.809},
    {0.10021258, 0.040085033, 0.816, 0.09596372, 0.038385488, 0.823},
    {0.091896266, 0.036758505, 0.83, 0.08799887, 0.035199545, 0.836},
}};

int stageLength(double length) { return std::max(samples(length) - 1, 1); }
// The lengths of "Reverb Theater" are kept in 16 bits.
int shortStageLength(double length) { return std::max<int>(static_cast<std::uint16_t>(samples(length) - 1), 1); }

void layOutTheater(ChainPlan& plan, double p1, double sampleRate) {
    const double s = (p1 * 0.0013605442 + 0.0006802721) * sampleRate;
    for (const LadderRow& row : theaterLadder)
        plan.stage[plan.stages++] = {{shortStageLength(s * row.leftScale), shortStageLength(s * row.rightScale)},
                                     {row.leftFeedback, row.rightFeedback},
                                     {},
                                     {}};
}

void layOutHangar(ChainPlan& plan, double p1, double sampleRate) {
    for (const HangarRow& row : hangarLadder)
        plan.stage[plan.stages++] = {{stageLength((p1 * row.leftSlope + row.leftBase) * sampleRate),
                                      stageLength((p1 * row.rightSlope + row.rightBase) * sampleRate)},
                                     {row.leftFeedback, row.rightFeedback},
                                     {},
                                     {}};
}

// Each stage swings at a pace and by an amount that go with its length.
void setSwirl(ChainPlan& plan, double swirl, double rate) {
    for (ChainStagePlan& stage : plan.stage)
        for (int side = 0; side < 2; ++side) {
            stage.increment[side] = fraction(rate / std::max(stage.length[side], 1));
            stage.excursion[side] = stage.length[side] * swirl;
        }
}

// --- the tank

// What the tank is played with; each effect sets some of it by its four parameters.
struct TankSettings {
    double decay, size, predelay, swirl, highDamp, lowDamp, outputLow, outputHigh, diffusion, gain;
};

TankSettings tankSettings(ReverbVariant variant, const Settings& s) {
    const double p1 = s.p1, p2 = s.p2, p3 = s.p3, p4 = s.p4;
    switch (variant) {
        case ReverbVariant::cathedral:
            return {p1 * 0.3 + 0.4,
                    std::sqrt(p1) * 0.33 + 0.25,
                    p4,
                    p3 * 0.8,
                    std::min(1.25 * p2, 1.0),
                    0.2,
                    std::max(1.25 * p2 - 1.0, 0.0),
                    0.25,
                    0,
                    0.75};
        case ReverbVariant::infinity: return {p4 * 0.5 + 0.5, p1 * 0.7 + 0.3, 0, p3 * 0.75, p2, 0.15, 0, 0.5, 1, 1};
        case ReverbVariant::glass: return {p4 * 0.5 + 0.5, p1, 0, p3, 0, p2, 0, 0.25, 0, 1};
        case ReverbVariant::plate: return {p4 * 0.5 + 0.5, p1, 0, p3 * 0.75, 1 - p2 * p2, p2 * p2, 0, 0.15, 0, 1};
        case ReverbVariant::cold: return {std::sqrt(p4) * 0.75, p1, 0, 0, p2, 0, p2 * 0.25, 0, p3, 1};
        default: return {p4, p1, 0, p3 * 0.75, p2, 0.2, 0, 0.25, 1, 1};  // big
    }
}

double highDamping(double highDamp, double sampleRate) { return trueDamping(squared(1 - highDamp) * 42777 + 1323, sampleRate); }

// The output's low-pass knows no rate below 44100 Hz, where its coefficient is 1. Above 2 it would swell
// without end; it stops well before.
double outputDamping(double hertz, double sampleRate) { return std::min(hertz / sampleRate, 1.5); }
double outputDampingOf(double outputLow, double sampleRate) {
    return outputDamping(squared(1 - outputLow) * 42335.99905371666 + 1764, sampleRate);
}

// Lengths of A to F in units; the moving lines A and D give up `lead` samples so that they swing about
// their length.
void setLengths(TankPlan& plan, const std::array<int, 6>& units, double lead) {
    for (int line = 0; line < 6; ++line) {
        const double length = static_cast<double>(units[line]) * plan.unit;
        plan.length[line] = samples(line % 3 == 0 ? length - lead : length);
    }
}

constexpr std::array<int, 6> openShape = {79, 47, 109, 71, 59, 113};
constexpr std::array<int, 6> fixedShape = {71, 31, 97, 79, 41, 109};

TankPlan openTank(const TankSettings& t, double mix, double sr) {
    TankPlan plan;
    plan.unit = samples((t.size * t.size * 0.8 + 0.2) * sr * 0.0021088435);
    const double q = 0.5 - (t.size - 0.5) * 0.5;
    const double depth = t.swirl * t.swirl / q * sr;
    const double increment = (q * q * 3 + 0.25) / sr;
    setLengths(plan, openShape, depth * 0.000707);
    plan.increment = {increment * 0.7072135613293842, increment};
    plan.excursion = {depth * 0.001414, depth * 0.001};
    plan.loopGain = std::sqrt(t.decay * 0.99 + 0.01);
    plan.allpassGain = plan.loopGain >= 0.75 ? 0.6 : plan.loopGain * 0.5 + 0.125;
    plan.damp = highDamping(t.highDamp, sr);
    plan.lowCut = trueDamping(t.lowDamp * t.lowDamp * 2205, sr);
    plan.outputCut = t.outputHigh * t.outputHigh * 5440 / sr;
    plan.outputDamp = outputDampingOf(t.outputLow, sr);
    const double predelay = samples(sr * 0.65 * t.predelay * t.predelay);
    plan.tapLeft = samples(sr * 0.02 + 1 + predelay);
    plan.tapRight = samples(sr * 0.01 + 1 + predelay);
    plan.diffusion = t.diffusion;
    plan.diffuserLength = {13 * plan.unit, 29 * plan.unit, 17 * plan.unit, 23 * plan.unit};
    plan.wet = mix * t.gain;
    return plan;
}

TankPlan hallTank(const Settings& s, double sr) {
    TankPlan plan;
    plan.unit = samples(sr * 0.4 * 0.0021088435);
    const double k = s.p1 * 0.375 + 0.25;
    const double c2 = 2 * k - k * k;
    const double w = squared(2 * s.p3 - s.p1 * s.p3 * 0.5);
    setLengths(plan, fixedShape, w * 0.001414 * sr);
    plan.increment = {0.7072135785007072 / sr, 0.7072135785007072 / sr};
    plan.excursion = {w * 0.002828 * sr, w * 0.002 * sr};
    plan.oneTriangle = true;
    plan.readGain = plan.loopGain = math::pow(c2 * 0.999 + 0.001, 0.75);
    plan.allpassGain = 0.6;
    plan.damp = highDamping(s.p2, sr);
    plan.lowCut = 1 - math::exp(-138.47400619027027 / sr);
    plan.outputCut = 870.4000259399415 / sr;
    plan.outputDamp = outputDampingOf(s.p2 * 0.5, sr);
    plan.dispersers = 10;
    const double predelay = samples(sr * 0.3 * s.p4);
    plan.tapLeft = samples(sr * 0.02 + 1 + sr * 0.01 + predelay);
    plan.tapRight = samples(sr * 0.01 + 1 + predelay);
    plan.wet = (2 - c2) * s.mix * (s.p2 * s.p2 * 0.5 + 0.75) * 0.8;
    return plan;
}

TankPlan roomTank(const Settings& s, double sr) {
    TankPlan plan;
    plan.unit = samples(sr * 0.0007634013538194352);
    const double k = s.p1 * 0.35 + 0.1;
    const double c2 = 2 * k - k * k;
    const double w = squared(1.5 * s.p3 - s.p1 * s.p3 * 0.2);
    setLengths(plan, fixedShape, w * 0.0013466667605203338 * sr);
    plan.increment = {0.7615805507435333 / sr, 1.0768749248981493 / sr};
    plan.excursion = {w * 0.0026933335210406677 * sr, w * 0.0019047619912629806 * sr};
    plan.fourPoint = true;
    plan.loopGain = c2 * 0.999 + 0.001;
    plan.readGain = std::sqrt(plan.loopGain);
    plan.allpassGain = 0.5;
    plan.damp = highDamping(s.p2, sr);
    plan.lowCut = 1 - math::exp(-311.5665294037842 / sr);
    plan.outputCut = 1227.3999691963197 / sr;
    plan.outputDamp = outputDamping(44099.99905371666, sr);
    const double predelay = samples(sr * 0.65 * s.p4 * s.p4);
    plan.tapLeft = samples(sr * 0.0181 + 1 + sr * 0.01 + predelay);
    plan.tapRight = samples(sr * 0.01 + 1 + predelay);
    plan.wet = (2 - c2) * s.mix * 0.8;
    return plan;
}

}  // namespace

ChainPlan chainPlan(ReverbVariant variant, const EffectParameters& parameters, float sampleRate) {
    const Settings s(parameters);
    const double sr = sampleRate;
    const bool hangar = variant == ReverbVariant::hangar;
    ChainPlan plan;
    if (hangar)
        layOutHangar(plan, s.p1, sr);
    else
        layOutTheater(plan, s.p1, sr);
    plan.damp = trueDamping((1 - s.p2) * (hangar ? 6480.0005 : 7200.0005) + 2400, sr);
    plan.allpass = 1000 / sr;
    setSwirl(plan, s.p3 * s.p3 * 0.024, 8000 / sr);
    if (s.p4 > 0.05f) plan.predelay = samples(s.p4 * sr * s.p4 * 0.65);
    plan.mix = s.mix;
    return plan;
}

TankPlan tankPlan(ReverbVariant variant, const EffectParameters& parameters, float sampleRate) {
    const Settings s(parameters);
    const double sr = sampleRate;
    TankPlan plan = variant == ReverbVariant::hall   ? hallTank(s, sr)
                    : variant == ReverbVariant::room ? roomTank(s, sr)
                                                     : openTank(tankSettings(variant, s), s.mix, sr);
    plan.dispersion = math::exp(-1256 / sr);
    plan.dry = 1 - s.mix;
    for (double& increment : plan.increment) increment = fraction(increment);
    return plan;
}

PunchPlan punchPlan(const EffectParameters& parameters, float sampleRate) {
    const Settings s(parameters);
    PunchPlan plan;
    plan.stages = truncateTo(s.p1 * 80, 0, maxPunchStages);
    plan.coefficient = math::exp((-628 - s.p2 * s.p2 * s.p2 * 37052) / sampleRate);
    plan.wet = s.mix * s.mix;
    return plan;
}

}  // namespace vantoric
