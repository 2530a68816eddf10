// The decimator alone, and the value that the first insert gets.
#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "effects/type_table.h"
#include "engine/decimator.h"
#include "golden_runner/golden.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using namespace vantoric;

std::vector<float> signal(const json& s, int count) {
    std::vector<float> x(static_cast<std::size_t>(count), 0.0f);
    const std::string kind = s.at("kind");
    const double height = s.at("height");
    if (kind == "constant") {
        x.assign(x.size(), static_cast<float>(height));
    } else if (kind == "impulse") {
        x.at(s.at("at").get<std::size_t>()) = static_cast<float>(height);
    } else if (kind == "noise") {
        std::uint32_t state = s.at("seed");
        for (float& value : x) {
            state = state * 196314165u + 907633515u;
            value = static_cast<float>(static_cast<std::int32_t>(state) / 2147483648.0 * height);
        }
    } else {
        throw std::runtime_error("unknown signal " + kind);
    }
    return x;
}

json decimate(const Case& c) {
    int frames = 0;
    for (const json& block : c.input.at("blocksInFrames")) frames += block.get<int>();
    const std::vector<float> left = signal(c.input.at("left"), 2 * frames), right = signal(c.input.at("right"), 2 * frames);
    std::vector<float> outLeft(static_cast<std::size_t>(frames)), outRight(static_cast<std::size_t>(frames));
    Decimator decimator;
    int at = 0;
    for (const json& block : c.input["blocksInFrames"]) {
        const int length = block;
        decimator.process(left.data() + 2 * at, right.data() + 2 * at, 2 * length, outLeft.data() + at, outRight.data() + at);
        at += length;
    }
    json out = {{"left", json::array()}, {"right", json::array()}, {"ringIndexLow5", decimator.ringIndex()}};
    for (int i = 0; i < frames; i += c.input.at("stride").get<int>()) {
        out["left"].push_back(outLeft[static_cast<std::size_t>(i)]);
        out["right"].push_back(outRight[static_cast<std::size_t>(i)]);
    }
    return out;
}

json extremes(const Case& c) {
    json values = json::array();
    for (const json& row : c.input.at("rows")) {
        const float base = asFloat(row.at("base"));
        float lowest = base, highest = base;
        for (const json& voice : row.at("voices")) {
            lowest = std::min(lowest, asFloat(voice));
            highest = std::max(highest, asFloat(voice));
        }
        values.push_back(extremeValue(base, lowest, highest));
    }
    return {{"values", values}};
}

const golden::Binding bindings[] = {
    {"events", "decimator", golden::checkValues<decimate>},
    {"events", "insert_extreme", golden::checkValues<extremes>},
};

}  // namespace
