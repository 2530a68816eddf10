// Signals of the drive_master vectors, given by formula, and the samples they list.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "effects/type_table.h"
#include "golden_runner/golden.h"

namespace golden {

// Whether an effect type, by its number or by its name, is the family's variant that a case gives.
inline void requireType(const json& input, vantoric::EffectFamily family) {
    if (!input.contains("type")) return;
    const json& type = input["type"];
    bool isFound = false;
    for (int i = 0; i < 77; ++i) {
        const vantoric::EffectType& row = vantoric::effectType(i);
        const bool isMeant = type.is_string() ? type == row.name : type == i;
        isFound = isFound || (isMeant && row.family == family && input.at("variant") == row.variant);
    }
    if (!isFound) throw std::runtime_error("type " + type.dump() + " is another effect");
}

inline std::vector<double> exactSignal(const json& s, int count, double sampleRate) {
    std::vector<double> x(static_cast<std::size_t>(count), 0.0);
    const std::string kind = s.at("kind");
    const double amp = s.value("amp", 1.0);
    if (kind == "constant") {
        x.assign(x.size(), s.at("value").get<double>());
    } else if (kind == "impulse") {
        const int at = s.at("at");
        if (at < count) x[static_cast<std::size_t>(at)] = amp;
    } else if (kind == "step") {
        for (int i = s.at("at"); i < count; ++i) x[static_cast<std::size_t>(i)] = amp;
    } else if (kind == "sine") {
        const double turn = 2.0 * M_PI * s.at("freq").get<double>();
        for (int i = 0; i < count; ++i)
            x[static_cast<std::size_t>(i)] = amp * std::sin(turn * i / sampleRate + s.value("phase", 0.0));
    } else if (kind == "noise") {
        std::uint32_t state = s.at("seed");
        for (double& value : x) {
            state = state * 196314165u + 907633515u;
            value = amp * (state / 2147483648.0 - 1.0);
        }
    } else if (kind == "sum") {
        for (const json& part : s.at("of")) {  // each part is rounded to single precision
            const std::vector<double> y = exactSignal(part, count, sampleRate);
            for (std::size_t i = 0; i < x.size(); ++i) x[i] += static_cast<float>(y[i]);
        }
    } else if (kind == "levels") {
        x = exactSignal(s.at("of"), count, sampleRate);
        double level = 0.0;
        std::size_t next = 0;
        const json& levels = s.at("levels");
        for (int i = 0; i < count; ++i) {
            while (next < levels.size() && levels[next][0].get<int>() <= i) level = levels[next++][1];
            x[static_cast<std::size_t>(i)] *= level;
        }
    } else if (kind != "zero") {
        throw std::runtime_error("unknown signal " + kind);
    }
    return x;
}

// The signal under input[key], silence if there is none, as single-precision samples.
inline std::vector<float> signalOf(const json& input, const char* key, int count, double sampleRate) {
    if (!input.contains(key)) return std::vector<float>(static_cast<std::size_t>(count), 0.0f);
    const std::vector<double> x = exactSignal(input[key], count, sampleRate);
    return std::vector<float>(x.begin(), x.end());
}

// A sample as the files print it: nine digits, which tell every float from its neighbours.
inline double printed(float sample) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(sample));
    return std::strtod(text, nullptr);
}

// The samples that a case lists: at the indices under `key`, else under "out_at", else all.
inline json listed(const json& input, const char* key, const std::vector<float>& samples) {
    const json* at = input.contains(key) ? &input[key] : input.contains("out_at") ? &input["out_at"] : nullptr;
    json values = json::array();
    if (at == nullptr)
        for (const float sample : samples) values.push_back(printed(sample));
    else
        for (const json& i : *at) values.push_back(printed(samples.at(i.get<std::size_t>())));
    return values;
}
inline json listedPair(const json& input, const std::vector<float>& left, const std::vector<float>& right) {
    return {{"left", listed(input, "left_at", left)}, {"right", listed(input, "right_at", right)}};
}

}  // namespace golden
