// The drive effects, the degrader and the tools that they share.
#include <algorithm>

#include "base/numbers.h"
#include "bindings/drive_master_signals.h"
#include "effects/drive_core.h"
#include "effects/drive_shapes.h"
#include "effects/filter_degrader.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::listed;
using golden::listedPair;
using golden::Outcome;
using golden::signalOf;
using namespace vantoric;

template <class Function>
json each(const json& values, Function function) {
    json out = json::array();
    for (const json& value : values) out.push_back(function(value));
    return out;
}

json entries(const json& indices, const ShaperTaps& table) {
    return each(indices, [&table](const json& i) { return table.at(i.get<std::size_t>()); });
}

json impulseThroughFilter(const json& input) {
    const int count = input.at("n");
    std::vector<float> x = signalOf(input, "signal", count, 88200.0);
    for (float& value : x) value += 0.00001f;
    x.insert(x.begin(), shaperTaps - 1, 0.0f);
    std::vector<float> out;
    for (int i = 0; i < count; ++i) {
        const float* newest = x.data() + shaperTaps - 1 + i;
        out.push_back(filterSum<float>(halfBand(), [newest](int k) { return newest[-k]; }));
    }
    return {{"y0", listed(input, "out_at", out)}};
}

json congruenceStates(const json& input, std::size_t count) {
    LinearCongruence congruence{input.at("state")};
    json states = json::array();
    for (std::size_t i = 0; i < count; ++i) states.push_back(congruence.next());
    return {{"states", states}};
}

json curve(const json& rows) {
    return each(rows, [](const json& r) {
        return fourPointCurve(asFloat(r[0]), asFloat(r[1]), asFloat(r[2]), asFloat(r[3]), asFloat(r[4]));
    });
}

json tools(const Case& c) {
    json out;
    for (const auto& [key, value] : c.expected.items()) {
        if (key == "fastExp") out[key] = each(c.input.at("x"), [](const json& x) { return fastExp(x.get<double>()); });
        if (key == "SC") out[key] = each(c.input.at("v"), [](const json& v) { return softCurve(asFloat(v)); });
        if (key == "SH") out[key] = each(c.input.at("v"), [](const json& v) { return waveShape(asFloat(v)); });
        if (key == "W") out[key] = curve(c.input.at("t_a_b_c_d"));
        if (key == "halfBand") out[key] = entries(c.input.at("i"), halfBand());
        if (key == "quarterBand") out[key] = entries(c.input.at("i"), quarterBand());
        if (key == "rampTable") out[key] = entries(c.input.at("i"), rampTable());
        if (key == "y0") return impulseThroughFilter(c.input);
        if (key == "states") return congruenceStates(c.input, value.size());
    }
    return out;
}

struct Rendered {
    std::vector<float> left, right;
};

// Runs the case's signals through an effect of either family.
template <class Effect>
Rendered render(const json& input, Effect& effect) {
    const int count = input.at("n");
    const double rate = input.at("sr");
    Rendered out{signalOf(input, "left", count, rate), signalOf(input, "right", count, rate)};
    effect.setSampleRate(static_cast<float>(rate));
    effect.setVariant(input.at("variant"));
    for (int index = 0; index < 5; ++index)
        effect.setParameter(index, asFloat(input.at("m_p1_p2_p3_p4")[static_cast<std::size_t>(index)]));
    effect.reset();
    const int block = input.value("block", 100);
    for (int at = 0; at < count; at += block)
        effect.process(out.left.data() + at, out.right.data() + at, std::min(block, count - at));
    return out;
}

Rendered renderDrive(const json& input) {
    golden::requireType(input, EffectFamily::drive);
    RandomSources random;
    random.congruence.state = input.value("random_state", 1u);
    DriveCore drive(random);
    return render(input, drive);
}

json driveOutput(const Case& c) {
    const Rendered out = renderDrive(c.input);
    json values = listedPair(c.input, out.left, out.right);
    if (c.expected.contains("c"))
        values["c"] = DriveCore::splitCoefficient(asFloat(c.input.at("m_p1_p2_p3_p4")[2]), asFloat(c.input.at("sr")));
    return values;
}

// The four points are taken in the order in which they are written; the other order is not compared.
Outcome ampSim(const Case& c) {
    json expected = {{"left", c.expected.at("left")}, {"right", c.expected.at("right")}};
    return golden::compare(expected, driveOutput(c), c.tolerance);
}

double product(const std::vector<float>& a, const std::vector<float>& b, std::size_t lag) {
    double sum = 0.0;
    for (std::size_t i = lag; i < a.size(); ++i) sum += static_cast<double>(a[i]) * b[i - lag];
    return sum;
}
double rms(const std::vector<float>& x) { return std::sqrt(product(x, x, 0) / static_cast<double>(x.size())); }

// Both channels of noise must have the rms; further the autocorrelation, or what the channels share.
Outcome noiseStatistics(const Case& c, const Rendered& out) {
    Outcome outcome;
    for (const auto* side : {&out.left, &out.right}) {
        json got = {{"rms", rms(*side)}};
        if (c.expected.contains("autocorrelation"))
            for (const std::size_t lag : {1, 10, 100})
                got["autocorrelation"].push_back(product(*side, *side, lag) / product(*side, *side, 0));
        if (c.expected.contains("correlation"))
            got["correlation"] =
                product(out.left, out.right, 0) / std::sqrt(product(out.left, out.left, 0) * product(out.right, out.right, 0));
        golden::compareInto(outcome, c.expected, got, c.tolerance, "");
    }
    return outcome;
}

// Every sample but 0 must be one of the listed values, and each of these must come often enough.
Outcome crackle(const Case& c, const Rendered& out) {
    Outcome outcome;
    const double allowed = c.tolerance.value("abs", 0.0);
    const auto check = [&](const std::vector<float>& side, const json& values, const std::string& name) {
        std::vector<int> counts(values.size(), 0);
        for (const float y : side) {
            if (y == 0.0f) continue;
            const auto hit = std::find_if(values.begin(), values.end(),
                                          [&](const json& v) { return std::fabs(v.get<double>() - y) <= allowed; });
            if (hit == values.end()) return outcome.fail(name + ": " + std::to_string(y) + " is not a crackle");
            ++counts[static_cast<std::size_t>(hit - values.begin())];
        }
        for (const int count : counts)
            if (count < c.expected.at("count_from") || count > c.expected.at("count_to"))
                outcome.fail(name + ": a row came " + std::to_string(count) + " times");
    };
    check(out.left, c.expected.at("left_values"), "left");
    check(out.right, c.expected.at("right_values"), "right");
    return outcome;
}

json pinkAnswer(const json& input) {
    PinkSums sums;
    const int first = input.at("first"), count = input.at("count");
    json pink = json::array();
    for (int i = 0; i < first + count; ++i) {
        const float y = sums.step(i == 0 ? 1.0f : 0.0f);
        if (i >= first) pink.push_back(y);
    }
    return {{"pink", pink}};
}

Outcome noise(const Case& c) {
    if (c.input.contains("first")) return golden::compare(c.expected, pinkAnswer(c.input), c.tolerance);
    if (c.expected.contains("rms")) return noiseStatistics(c, renderDrive(c.input));
    if (c.expected.contains("left_values")) return crackle(c, renderDrive(c.input));
    return golden::compare(c.expected, driveOutput(c), c.tolerance);
}

json degrader(const Case& c) {
    if (c.input.contains("sr_p1"))
        return {{"n", each(c.input["sr_p1"], [](const json& r) { return Filter::factor(asFloat(r[1]), asFloat(r[0])); })}};
    if (c.input.value("family", 4) != static_cast<int>(EffectFamily::degrade)) throw std::runtime_error("another family");
    Filter filter;
    const Rendered out = render(c.input, filter);
    return listedPair(c.input, out.left, out.right);
}

const golden::Binding bindings[] = {
    {"drive_master", "drive_*", golden::checkValues<driveOutput>},
    {"drive_master", "drive_tools", golden::checkValues<tools>},
    {"drive_master", "drive_amp_sim", ampSim},
    {"drive_master", "drive_noise", noise},
    {"drive_master", "drive_degrader", golden::checkValues<degrader>},
};

}  // namespace
