// The reverb family, rendered, with what it works out before a block.
#include "bindings/time_effects_render.h"
#include "bindings/time_effects_tools.h"
#include "effects/reverb_plan.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::Outcome;
using namespace vantoric;

// Whole numbers as whole numbers, the rest within "derived_rel".
void compareDerived(Outcome& outcome, const json& expected, const json& got, double rel, const std::string& where) {
    if (expected.is_array() || expected.is_object()) {
        for (const auto& [key, value] : expected.items()) {
            const json& found = expected.is_array() ? got.at(std::stoul(key)) : got.at(key);
            compareDerived(outcome, value, found, rel, where + "." + key);
        }
    } else {
        outcome.number(got, expected, 0.0, expected.is_number_integer() ? 0.0 : rel, where);
    }
}

json derived(const TankPlan& plan) {
    return {{"U", plan.unit},
            {"lengths_A_to_F", plan.length},
            {"triangle1_inc", plan.increment[0]},
            {"triangle2_inc", plan.increment[1]},
            {"excursion_AD", plan.excursion[0]},
            {"excursion_BE", plan.excursion[1]},
            {"read_gain", plan.readGain},
            {"loop_gain", plan.loopGain},
            {"allpass_gain", plan.allpassGain},
            {"damp", plan.damp},
            {"low_cut", plan.lowCut},
            {"out_low", plan.outputCut},
            {"out_high", plan.outputDamp},
            {"dispersion", plan.dispersion},
            {"dispersing_allpasses", plan.dispersers},
            {"tap_left", plan.tapLeft},
            {"tap_right", plan.tapRight},
            {"wet_gain", plan.wet}};
}

void inspectReverb(Outcome& outcome, ReverbCore&, const Case& c) {
    if (!c.expected.contains("derived")) return;
    EffectParameters parameters;
    for (int i = 0; i < 5; ++i) parameters.set(i, asFloat(c.input.at("parameters").at(static_cast<std::size_t>(i))));
    const TankPlan plan =
        tankPlan(ReverbVariant{c.input.at("variant").get<int>()}, parameters, asFloat(c.input.at("sampleRate")));
    compareDerived(outcome, c.expected["derived"], derived(plan), c.tolerance.value("derived_rel", 0.0), "derived");
}

const golden::Binding bindings[] = {
    {"time_effects", "reverb_*", golden::renderedEffect<ReverbCore, inspectReverb>},
};

// Per row of size and rate the lengths of every stage, left and right.
template <ReverbVariant variant>
json stageLengths(const Case& c) {
    json rows = json::array();
    for (const json& row : c.input.at("p1_and_sampleRate")) {
        EffectParameters parameters;
        parameters.set(1, asFloat(row.at(0)));
        const ChainPlan plan = chainPlan(variant, parameters, asFloat(row.at(1)));
        json lengths = json::array();
        for (int s = 0; s < plan.stages; ++s) lengths.push_back(plan.stage[static_cast<std::size_t>(s)].length);
        rows.push_back(lengths);
    }
    return {{"lengths", rows}};
}

const golden::Tool tools[] = {
    {"stage_lengths_0*", golden::checkValues<stageLengths<ReverbVariant::theater>>},
    {"stage_lengths_1*", golden::checkValues<stageLengths<ReverbVariant::hangar>>},
};

}  // namespace
