#include "base/numbers.h"
#include "base/random.h"
#include "golden_runner/golden.h"

namespace {

using golden::json;
using namespace vantoric;

json exponential(const golden::Case& c) {
    json values = json::array();
    for (const json& x : c.input["x"]) values.push_back(fastExp(x.get<double>()));
    return {{"E", values}};
}

json shape(const golden::Case& c) {
    json rows = json::array();
    for (const json& k : c.input["k"]) {
        json row = json::array();
        for (const json& x : c.input["x"]) row.push_back(shapeCurve(golden::asFloat(x), golden::asFloat(k)));
        rows.push_back(row);
    }
    return {{"S", rows}};
}

json randomNumbers(const golden::Case& c) {
    LinearCongruence raw{c.input["state"].get<std::uint32_t>()};
    LinearCongruence unit = raw;
    json raws = json::array(), units = json::array();
    for (int i = 0; i < c.input["count"].get<int>(); ++i) {
        raws.push_back(raw.next());
        units.push_back(unit.unit());
    }
    return {{"raw", raws}, {"unit", units}};
}

const golden::Binding exponentials("modulation", "fast_exp*", golden::checkValues<exponential>);
const golden::Binding shapes("modulation", "shape*", golden::checkValues<shape>);
const golden::Binding randoms("modulation", "random*", golden::checkValues<randomNumbers>);

}  // namespace
