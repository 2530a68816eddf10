// Rates, the tick schedule and the song position.
#include "engine/rates.h"
#include "engine/song_clock.h"
#include "engine/tick_clock.h"
#include "golden_runner/golden.h"

namespace {

using golden::Case;
using golden::json;
using vantoric::EngineState;

json runRate(const Case& c) {
    EngineState state;
    vantoric::setRates(state, golden::asFloat(c.input.at("hostRate")));
    json increments = json::array();
    for (const json& row : c.expected.at("keyIncrement")) increments.push_back({row[0], state.keyIncrement[row[0].get<int>()]});
    return {{"oversampled", state.oversampled},      {"internalRate", state.internalRate}, {"reciprocal", state.reciprocalRate},
            {"ratio44100", state.rateTo44100},       {"tickSamples", state.tickSamples},   {"keyIncrement", increments},
            {"ticksPerSecond", state.ticksPerSecond}};
}

json runRateOfKeys(const Case& c) {
    EngineState state;
    vantoric::setRates(state, golden::asFloat(c.input.at("hostRate")));
    json increments = json::array();
    for (const json& key : c.input.at("keys")) increments.push_back(state.keyIncrement[key.get<int>()]);
    return {{"oversampled", state.oversampled ? 1 : 0}, {"internalRate", state.internalRate},
            {"inverseRate", state.reciprocalRate},      {"ratio44100", state.rateTo44100},
            {"tickSamples", state.tickSamples},         {"keyIncrement", increments},
            {"ticksPerSecond", state.ticksPerSecond}};
}

// Internal samples of a block of host frames.
int internalSamples(const EngineState& state, int frames) { return state.oversampled ? 2 * frames : frames; }

json runSchedule(const Case& c) {
    EngineState state;
    vantoric::setRates(state, golden::asFloat(c.input.at("hostRate")));
    vantoric::TickClock clock;
    json blocks = json::array();
    for (const json& block : c.input.at("blocks")) {
        if (block.is_object() && block.contains("setSampleRate")) {
            vantoric::setRates(state, golden::asFloat(block["setSampleRate"]));
            continue;
        }
        const int frames = block.is_object() ? block.at("frames").get<int>() : block.get<int>();
        json subBlocks = json::array(), ticks = json::array();
        int rendered = 0;
        clock.run(
            internalSamples(state, frames), state,
            [&](int count, int pos) {
                subBlocks.push_back({count, pos});
                rendered += count;
            },
            [&](int eventPos) { ticks.push_back({rendered, eventPos}); });
        blocks.push_back(
            {{"frames", frames}, {"subBlocks", subBlocks}, {"ticks", ticks}, {"samplesToTick", clock.samplesToTick()}});
    }
    return {{"blocks", blocks}};
}

json runSong(const Case& c) {
    EngineState state;
    vantoric::setRates(state, golden::asFloat(c.input.at("hostRate")));
    vantoric::TickClock ticks;
    vantoric::SongClock song;
    json rows = json::array();
    int number = 0;
    for (const json& block : c.input.at("blocks")) {
        if (block.value("reset", json(false)) != json(false)) song.reset(state);
        vantoric::Transport time;
        const bool answers = block.contains("host") && block["host"].is_array();
        if (answers) time = {true, block["host"][0], block["host"][1]};
        int tick = 0;
        ticks.run(
            internalSamples(state, block.at("frames")), state, [](int, int) {},
            [&](int) {
                song.tick(state, answers ? &time : nullptr);
                rows.push_back({number, tick++, state.tempoBpm, state.songPosition, song.lastPpqPos()});
            });
        ++number;
    }
    return {{"rows", rows}};
}

const golden::Binding b1("events", "sample_rate", golden::checkValues<runRate>);
const golden::Binding b2("modulation", "sample_rate", golden::checkValues<runRateOfKeys>);
const golden::Binding b3("events", "tick_schedule", golden::checkValues<runSchedule>);
const golden::Binding b4("events", "song_position", golden::checkValues<runSong>);

}  // namespace
