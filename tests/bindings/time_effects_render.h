// Feeding the rendered time_effects vectors: signals by formula, an effect made by its class and variant,
// blocks, and the comparison of listed windows and energies.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "base/random.h"
#include "bindings/drive_master_signals.h"
#include "effects/chorus.h"
#include "effects/delay2.h"
#include "effects/reverb_core.h"
#include "golden_runner/golden.h"

namespace golden {

struct StereoSignal {
    std::vector<float> left, right;
};

// `count` samples of a signal {"kind", ...}, which sounds from sample "from" up to "to", and silence from there
// to `length`.
inline std::vector<float> timeSignal(const json& s, int count, double sampleRate, int length) {
    std::vector<float> x(static_cast<std::size_t>(std::max(count, length)), 0.0f);
    const std::string kind = s.at("kind");
    const double amplitude = s.value("amplitude", 1.0);
    const int from = std::max(s.value("from", 0), 0), to = std::min(s.value("to", count), count);
    const auto fill = [&](auto value) {
        for (int i = from; i < to; ++i) x[static_cast<std::size_t>(i)] = static_cast<float>(value(i));
    };
    if (kind == "impulse") {
        const int at = s.value("at", 0);
        if (at >= 0 && at < count) x[static_cast<std::size_t>(at)] = static_cast<float>(amplitude);
    } else if (kind == "noise") {
        vantoric::LinearCongruence generator{s.at("seed").get<std::uint32_t>()};
        fill([&](int) { return (generator.next() / 2147483648.0 - 1.0) * amplitude; });
    } else if (kind == "sine") {
        const double turn = 2.0 * M_PI * s.at("frequency").get<double>();
        fill([&](int i) { return amplitude * std::sin(turn * i / sampleRate); });
    } else if (kind == "constant") {
        const double level = s.contains("value") ? s["value"].get<double>() : amplitude;
        fill([&](int) { return level; });
    } else if (kind != "silence") {
        throw std::runtime_error("unknown signal " + kind);
    }
    return x;
}
inline StereoSignal timeSignals(const json& left, const json& right, int count, double sampleRate, int length = 0) {
    return {timeSignal(left, count, sampleRate, length), timeSignal(right, count, sampleRate, length)};
}

// Runs an effect in place over the whole signal in blocks of `block` samples, a number or a list that is cycled.
template <class Effect>
void processInBlocks(Effect& effect, StereoSignal& signal, const json& block) {
    const int count = static_cast<int>(signal.left.size());
    for (int done = 0, turn = 0; done < count; ++turn) {
        const int wanted =
            block.is_array() ? block.at(static_cast<std::size_t>(turn) % block.size()).get<int>() : block.get<int>();
        const int length = std::min(std::max(wanted, 1), count - done);
        effect.process(signal.left.data() + done, signal.right.data() + done, length);
        done += length;
    }
}

// One window {"start", "stride", "left", "right", "abs"}; an empty or missing side is not compared.
inline void compareWindow(Outcome& outcome, const json& window, const StereoSignal& got, double allowance,
                          const std::string& where) {
    const double abs = window.value("abs", allowance);
    const int start = window.at("start"), stride = window.value("stride", 1);
    const auto side = [&](const char* name, const std::vector<float>& samples) {
        if (!window.contains(name)) return;
        for (std::size_t k = 0; k < window[name].size(); ++k) {
            if (window[name][k].is_null()) continue;
            const int index = start + static_cast<int>(k) * stride;
            const std::string place = where + name + "[" + std::to_string(index) + "]";
            if (index < 0 || index >= static_cast<int>(samples.size()))
                outcome.fail(place + " lies outside the run");
            else
                outcome.number(samples[static_cast<std::size_t>(index)], window[name][k], abs, 0.0, place);
        }
    };
    side("left", got.left);
    side("right", got.right);
}

// Energy of each stretch in dB against "energy_db"; what is below -120 dB counts as silent.
inline void compareEnergy(Outcome& outcome, const json& energy, const StereoSignal& got) {
    const std::size_t step = energy.at("step_samples");
    const auto side = [&](const char* name, const std::vector<float>& samples) {
        if (!energy.contains(name)) return;
        for (std::size_t k = 0; k < energy[name].size(); ++k) {
            double sum = 0.0;
            for (std::size_t i = k * step; i < std::min((k + 1) * step, samples.size()); ++i)
                sum += static_cast<double>(samples[i]) * samples[i];
            const double decibels = 10.0 * std::log10(sum + 1e-20);
            outcome.number(std::max(decibels, -120.0), std::max(energy[name][k].get<double>(), -120.0), energy.at("tolerance_db"),
                           0.0, "energy_db." + std::string(name) + "[" + std::to_string(k) + "]");
        }
    };
    side("left", got.left);
    side("right", got.right);
}

// Samples to run: those of the signal, and what the energies need beyond them.
inline int renderLength(const Case& c) {
    int length = c.input.at("count");
    if (c.expected.contains("energy_db")) {
        const json& energy = c.expected["energy_db"];
        length = std::max(length, static_cast<int>(energy.at("left").size()) * energy.at("step_samples").get<int>());
    }
    return length;
}

// Rate, tempo, variant and parameters of the case; the effect starts silent.
template <class Effect>
void prepareEffect(Effect& effect, const json& input) {
    effect.setSampleRate(asFloat(input.at("sampleRate")));
    if constexpr (std::is_same_v<Effect, vantoric::Delay2>)
        if (input.contains("tempo")) effect.setTempo(asFloat(input["tempo"]));
    effect.setVariant(input.at("variant"));
    effect.reset();
    const json& parameters = input.at("parameters");
    for (std::size_t i = 0; i < parameters.size(); ++i) effect.setParameter(static_cast<int>(i), asFloat(parameters[i]));
}

// What a case says of its effect must be that of the class it is bound to.
template <class Effect>
void requireClass(const json& input) {
    using namespace vantoric;
    constexpr bool isChorus = std::is_same_v<Effect, Chorus>, isDelay = std::is_same_v<Effect, Delay2>;
    const std::string name = isChorus ? "Chorus" : isDelay ? "Delay2" : "ReverbCore";
    if (input.value("class", name) != name) throw std::runtime_error("class " + input["class"].dump() + " is bound to " + name);
    requireType(input, isChorus ? EffectFamily::modulation : isDelay ? EffectFamily::delay : EffectFamily::reverb);
}

// Checks what a case tells beside its sound ("derived", "taps"); called when the run is over.
template <class Effect>
using Inspection = void (*)(Outcome&, Effect&, const Case&);

template <class Effect>
Outcome renderWith(Effect& effect, vantoric::RandomSources& random, const Case& c, Inspection<Effect> inspect) {
    Outcome outcome;
    const json& input = c.input;
    prepareEffect(effect, input);
    if (input.contains("random_state")) random.congruence.state = input["random_state"];
    StereoSignal signal =
        timeSignals(input.at("left"), input.at("right"), input.at("count"), input.at("sampleRate"), renderLength(c));
    processInBlocks(effect, signal, input.at("block"));
    const double allowance = c.tolerance.value("abs", 0.0);
    for (const json& window : c.expected.at("windows")) compareWindow(outcome, window, signal, allowance, "");
    if (c.expected.contains("energy_db")) compareEnergy(outcome, c.expected["energy_db"], signal);
    if (c.expected.contains("random_state_after"))
        outcome.number(random.congruence.state, c.expected["random_state_after"], 0.0, 0.0, "random_state_after");
    if (inspect != nullptr) inspect(outcome, effect, c);
    return outcome;
}

// A rendered case of the class Effect: register as
//   {"time_effects", "chorus_*", golden::renderedEffect<vantoric::Chorus>} or, with a look at the object after the
//   run, golden::renderedEffect<vantoric::ReverbCore, inspectReverb>.
template <class Effect, Inspection<Effect> inspect = nullptr>
Outcome renderedEffect(const Case& c) {
    requireClass<Effect>(c.input);
    vantoric::RandomSources random;
    if constexpr (std::is_constructible_v<Effect, vantoric::RandomSources&>) {
        Effect effect(random);
        return renderWith<Effect>(effect, random, c, inspect);
    } else {
        Effect effect;
        return renderWith<Effect>(effect, random, c, inspect);
    }
}

}  // namespace golden
