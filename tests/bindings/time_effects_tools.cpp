// The effect families' tools, one case each.
#include "bindings/time_effects_tools.h"

#include <string>
#include <vector>

#include "effects/chorus.h"
#include "effects/effect_tools.h"

namespace golden {
namespace {

struct ToolEntry {
    std::string name;
    Check check;
};
std::vector<ToolEntry>& toolTable() {
    static std::vector<ToolEntry> table;
    return table;
}

bool matches(const std::string& pattern, const std::string& name) {
    if (!pattern.ends_with('*')) return pattern == name;
    return name.starts_with(pattern.substr(0, pattern.size() - 1));
}

Outcome tool(const Case& c) {
    for (const ToolEntry& entry : toolTable())
        if (matches(entry.name, c.whole.at("case"))) return entry.check(c);
    Outcome outcome;
    outcome.fail("unknown tool");
    return outcome;
}

const Binding binding("time_effects", "tools", tool);

}  // namespace

Tool::Tool(const char* name, Check check) { toolTable().push_back({name, check}); }

}  // namespace golden

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::Outcome;
using namespace vantoric;

// Keys that end on "nine" tell what another form of the exponential would give.
template <json (*values)(const Case&)>
Outcome ownForm(const Case& c) {
    json expected = c.expected;
    for (const char* other : {"nine", "Dmp_nine"}) expected.erase(other);
    return golden::compare(expected, values(c), c.tolerance);
}

json exponentials(const Case& c) {
    json out = {{"value", json::array()}};
    for (const json& x : c.input.at("x")) out["value"].push_back(fastExp(x.get<double>()));
    return out;
}

json lfoShapes(const Case& c) {
    json out = {{"triangle", json::array()}, {"bump", json::array()}};
    for (const json& phase : c.input.at("phase")) {
        out["triangle"].push_back(triangle(asFloat(phase)));
        out["bump"].push_back(bump(asFloat(phase)));
    }
    return out;
}

json fourPoints(const Case& c) {
    json out = {{"value", json::array()}};
    for (const json& r : c.input.at("rows"))
        out["value"].push_back(
            fourPointCurve(asFloat(r.at(0)), asFloat(r.at(1)), asFloat(r.at(2)), asFloat(r.at(3)), asFloat(r.at(4))));
    return out;
}

// Rows of y0 to y5 and f.
json sixPoints(const Case& c) {
    json out = {{"value", json::array()}};
    for (const json& row : c.input.at("rows")) {
        const std::vector<double> y = row;
        out["value"].push_back(sixPointCurve(y.at(6), y[0], y[1], y[2], y[3], y[4], y[5]));
    }
    return out;
}

json taps(const Case& c) {
    Ring<float, 8> ring;
    const json& samples = c.input.at("ring");
    for (std::size_t i = 0; i < samples.size(); ++i) ring[static_cast<int>(i)] = asFloat(samples[i]);
    const int position = c.input.at("position");
    json out = {{"linear", json::array()}, {"cubic", json::array()}, {"R", json::array()}};
    for (const json& value : c.input.at("d")) {
        const float d = asFloat(value);
        const int whole = static_cast<int>(d);
        out["linear"].push_back(linearTap(ring, position, d));
        out["cubic"].push_back(cubicTap(ring, position, d));
        out["R"].push_back(indexRead(ring, position - whole - 2, d - static_cast<float>(whole)));
    }
    return out;
}

json coefficients(const Case& c) {
    const float rate = asFloat(c.input.at("sampleRate"));
    json out = {{"Dmp", json::array()}, {"a", json::array()}};
    for (const json& f : c.input.at("f")) {
        out["Dmp"].push_back(quickDamping(asFloat(f), rate));
        out["a"].push_back(trueDamping(f, rate));
    }
    return out;
}

// Rates stand in the names of what is expected: "at_88200".
json phaserCoefficients(const Case& c) {
    json out = json::object();
    for (const auto& [name, values] : c.expected.items())
        for (const json& u : c.input.at("u")) out[name].push_back(phaserCoefficient(asFloat(u), std::stof(name.substr(3))));
    return out;
}

json draws(const Case& c) {
    json out = {{"draws", json::array()}};
    for (std::size_t k = 0; k < c.input.at("state").size(); ++k) {
        LinearCongruence generator{c.input["state"][k].get<std::uint32_t>()};
        json row = json::array();
        for (std::size_t i = 0; i < c.expected.at("draws").at(k).size(); ++i) row.push_back(generator.next());
        out["draws"].push_back(row);
    }
    return out;
}

const golden::Tool tools[] = {
    {"fastExp*", ownForm<exponentials>},
    {"lfo_shapes*", golden::checkValues<lfoShapes>},
    {"curve_W*", golden::checkValues<fourPoints>},
    {"six_point*", golden::checkValues<sixPoints>},
    {"taps*", golden::checkValues<taps>},
    {"coefficients_*", ownForm<coefficients>},
    {"phaser_coefficient*", golden::checkValues<phaserCoefficients>},
    {"congruence*", golden::checkValues<draws>},
};

}  // namespace
