#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "engine/rates.h"
#include "golden_runner/golden.h"
#include "voice/pitch.h"

namespace {

using golden::json;
using namespace vantoric;

KeyIncrements keysFor(const json& hostRate) {
    EngineState state;
    setRates(state, golden::asFloat(hostRate));
    return state.keyIncrement;
}

json keyTargets(const golden::Case& c) {
    const KeyIncrements keys = keysFor(c.input["hostRate"]);
    json targets = json::array(), moves = json::array();
    for (const json& row : c.input["rows"]) {
        targets.push_back(keyTarget(keys, row[0].get<int>(), golden::asFloat(row[1])));
        moves.push_back(keyTargetOfMove(keys, row[0].get<int>(), golden::asFloat(row[1])));
    }
    return {{"target", targets}, {"monoTarget", moves}};
}

json glide(const golden::Case& c) {
    const KeyIncrements keys = keysFor(c.input["hostRate"]);
    const float factor = glideFactor(golden::asFloat(c.input["GlideSpd"]));
    int note = c.input["note"].get<int>();
    double smoothed = c.input["smoothedNote"].get<double>();
    OscillatorPitch oscillator;
    if (!c.input["fromNote"].is_null()) {
        const int from = c.input["fromNote"].get<int>();
        oscillator.position = keyTargetOfMove(keys, from, 1.0f);
        smoothed = from;
    }
    oscillator.target = keyTargetOfMove(keys, note, 1.0f);
    const json moves = c.input.value("moves", json::array());
    const json& at = c.input["at"];
    json positions = json::array(), notes = json::array();
    std::size_t next = 0;
    for (int tick = 0; tick < c.input["ticks"].get<int>(); ++tick) {
        for (const json& move : moves)
            if (move[0].get<int>() == tick) {
                note = move[1].get<int>();
                oscillator.target = keyTargetOfMove(keys, note, 1.0f);
            }
        smoothed = smoothNote(smoothed, note, factor);
        oscillator.stepGlide(factor);
        if (next < at.size() && at[next].get<int>() == tick) {
            positions.push_back(oscillator.position);
            notes.push_back(smoothed);
            ++next;
        }
    }
    return {{"f", factor}, {"position", positions}, {"smoothedNote", notes}};
}

json drift(const golden::Case& c) {
    const Drift drift = Drift::forMicrotuning(c.input["Microtun"].get<int>());
    LinearCongruence random{c.input["globalRandomState"].get<std::uint32_t>()};
    OscillatorPitch oscillator;
    oscillator.driftPosition = c.input["driftPosition"].get<double>();
    oscillator.driftDirection = c.input["driftDirection"].get<double>();
    const json& at = c.input["at"];
    json positions = json::array(), factors = json::array();
    std::size_t next = 0;
    const int ticks = c.input["ticks"].get<int>();
    double sum = 0, squares = 0, low = 1e9, high = -1e9;
    int turns = 0;
    double sign = oscillator.driftDirection < 0 ? -1 : 1;
    for (int tick = 0; tick < ticks; ++tick) {
        const double factor = oscillator.stepDrift(drift, random);
        const double p = oscillator.driftPosition;
        if (oscillator.driftDirection * sign < 0) {
            ++turns;
            sign = -sign;
        }
        sum += p;
        squares += p * p;
        low = std::min(low, p);
        high = std::max(high, p);
        if (next < at.size() && at[next].get<int>() == tick) {
            positions.push_back(p);
            factors.push_back(factor);
            ++next;
        }
    }
    const json statistics = {
        {"mean", sum / ticks}, {"rms", std::sqrt(squares / ticks)}, {"min", low}, {"max", high}, {"turns", turns}};
    return {{"driftPosition", positions}, {"D", factors}, {"statistics", statistics}, {"endState", random.state}};
}

golden::Outcome checkDrift(const golden::Case& c) {
    const json& expected = c.expected;
    const json got = drift(c);
    golden::Outcome outcome = golden::compare(expected, got, c.tolerance);
    if (expected.contains("endState") && expected["endState"] != got["endState"]) outcome.fail("the generator's state differs");
    return outcome;
}

json increments(const golden::Case& c) {
    const KeyIncrements keys = keysFor(c.input["hostRate"]);
    const json& columns = c.input["columns"];
    json increment = json::array(), phase = json::array();
    for (const json& row : c.input["rows"]) {
        const auto column = [&](const char* name) -> const json& {
            const auto found = std::find(columns.begin(), columns.end(), name);
            if (found == columns.end()) throw std::runtime_error(std::string("no column ") + name);
            return row[static_cast<std::size_t>(found - columns.begin())];
        };
        OscillatorPitch oscillator;
        oscillator.jump(keyTargetOfMove(keys, column("note").get<int>(), 1.0f));
        oscillator.tuning = column("tuning").get<double>();
        OscillatorPitchValues values;
        values.oct = golden::asFloat(column("Oct"));
        values.interv = golden::asFloat(column("Interv"));
        values.semi = golden::asFloat(column("Semi"));
        values.detune = golden::asFloat(column("Detune"));
        values.pitch = golden::asFloat(column("PitchOsc"));
        values.pitchOct = golden::asFloat(column("PitchOct"));
        const double shared = voicePitchFactor(golden::asFloat(column("Pitch")), golden::asFloat(column("Fine")),
                                               column("slideFactor").get<double>(), column("tuneFactor").get<double>(),
                                               column("pitchBendFactor").get<double>());
        const double d = oscillatorIncrement(oscillator, values, column("D").get<double>(), shared);
        increment.push_back(d);
        phase.push_back(static_cast<std::int64_t>(d * 16777216.0));
    }
    return {{"increment", increment}, {"phaseIncrement", phase}};
}

const golden::Binding keyTargetBinding("modulation", "key_target*", golden::checkValues<keyTargets>);
const golden::Binding glideBinding("modulation", "glide*", golden::checkValues<glide>);
const golden::Binding driftBinding("modulation", "drift*", checkDrift);
const golden::Binding incrementBinding("modulation", "increment*", golden::checkValues<increments>);

}  // namespace
