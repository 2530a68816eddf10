// Notes on their way into voices, tick by tick, in a whole engine; and what a reset leaves.
#include <algorithm>
#include <stdexcept>
#include <utility>

#include "engine/engine_rig.h"
#include "engine/rates.h"
#include "golden_runner/golden.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using namespace vantoric;
using test::EngineRig;

// Entries are [name, host index, value] or [host index, value].
void setAll(EngineRig& rig, const json& entries) {
    for (const json& entry : entries) rig.set(entry[entry.size() - 2].get<int>(), asFloat(entry[entry.size() - 1]));
}

void prepare(EngineRig& rig, const json& parameters) {
    rig.clearParameters();
    setAll(rig, parameters);
    rig.audio.resetEngine();
}

// What a script holds for one tick: first the parameters, then the messages.
void play(EngineRig& rig, const json& script, int tick) {
    for (const json& entry : script) {
        if (entry.at("tick") != tick) continue;
        for (const char* key : {"set", "changes"})
            if (entry.contains(key)) setAll(rig, entry[key]);
        if (!entry.contains("midi")) continue;
        std::vector<test::Midi> messages;
        for (const json& m : entry["midi"]) messages.push_back({m[0], m[1], m[2], 0});
        rig.send(messages);
    }
}

struct NoteLog final : NoteObserver {
    EngineRig& rig;
    int tick = 0;
    json noteOns = json::array(), moves = json::array();

    explicit NoteLog(EngineRig& r) : rig(r) {
        for (int i = 0; i < layerCount; ++i) rig.audio.layer(i).setNoteObserver(this);
    }
    ~NoteLog() {
        for (int i = 0; i < layerCount; ++i) rig.audio.layer(i).setNoteObserver(nullptr);
    }
    void onVoiceStarted(int layer, int number) override {
        const Voice& voice = rig.audio.layer(layer).voice(number);
        noteOns.push_back({tick, layer, number, voice.note, voice.velocity, voice.voiceNumber});
    }
    void onVoiceMoved(int layer, int note, bool retrigger) override { moves.push_back({tick, layer, note, retrigger ? 1 : 0}); }
};

// A layer as a frame shows it, and the part of it whose change makes a new frame.
struct Frame {
    json shown, essence;
};

Frame frameOf(Instrument& audio, int number, int tick) {
    Layer& layer = audio.layer(number);
    json voices = json::array(), essence = json::array();
    for (int i = 0; i < voiceCount; ++i) {
        const Voice& voice = layer.voice(i);
        if (!voice.sounding()) continue;
        voices.push_back({i, voice.note, voice.velocity, voice.state(), voice.age});
        essence.push_back({i, voice.note, voice.state()});
    }
    return {{{"tick", tick},
             {"layer", number},
             {"voices", voices},
             {"currentNote", layer.currentNote},
             {"flipFlop", layer.flipFlop},
             {"activeVoiceCount", layer.activeVoiceCount()},
             {"oldestActiveVoice", layer.oldestActiveVoice()}},
            {essence, layer.currentNote, layer.flipFlop}};
}

// The layers that a case follows.
std::vector<int> layersOf(const json& frames) {
    std::vector<int> layers;
    for (int i = 0; i < layerCount; ++i)
        for (const json& frame : frames)
            if (frame.value("layer", 0) == i) {
                layers.push_back(i);
                break;
            }
    return layers;
}

// Within a tick the cases list one layer after the other.
json byLayer(json events) {
    std::stable_sort(events.begin(), events.end(),
                     [](const json& a, const json& b) { return std::pair(a[0], a[1]) < std::pair(b[0], b[1]); });
    return events;
}

json runVoices(const Case& c, int firstCompared) {
    EngineRig rig(48000.0f);
    prepare(rig, c.input.at("parameters"));
    NoteLog notes(rig);
    const std::vector<int> layers = layersOf(c.expected.at("frames"));
    const int ticks = c.input.at("ticks");
    json frames = json::array();
    std::array<json, layerCount> last;
    for (int tick = 0; tick < ticks; ++tick) {
        // A host that hardly moves: tempo without a running song.
        if (c.input.contains("tempoBpm")) rig.host.tell(c.input["tempoBpm"], tick % 2 == 0 ? 1e-300 : 0.0);
        notes.tick = tick;
        play(rig, c.input.at("script"), tick);
        rig.tick();
        if (tick < firstCompared) continue;
        for (const int layer : layers) {
            const Frame frame = frameOf(rig.audio, layer, tick);
            if (frame.essence != last[layer] || tick == ticks - 1) frames.push_back(frame.shown);
            last[layer] = frame.essence;
        }
    }
    return {{"frames", frames}, {"noteOns", byLayer(notes.noteOns)}, {"moves", byLayer(notes.moves)}};
}

json voices(const Case& c) { return runVoices(c, 0); }
json arpeggiatedVoices(const Case& c) { return runVoices(c, 3); }

json stateOf(Instrument& audio) {
    const EngineState& state = audio.state();
    json layers = json::array(), held = json::array(), deferred = json::array();
    for (int i = 0; i < layerCount; ++i) {
        json sounding = json::array();
        for (int v = 0; v < voiceCount; ++v)
            if (const Voice& voice = audio.layer(i).voice(v); voice.sounding())
                sounding.push_back({v, voice.note, voice.state()});
        layers.push_back(
            {{"currentNote", audio.layer(i).currentNote}, {"flipFlop", audio.layer(i).flipFlop}, {"voices", sounding}});
    }
    for (int key = 0; key < 128; ++key) {
        if (state.heldNote[key] != 0) held.push_back(key);
        if (audio.midi().sustainedOff(key)) deferred.push_back(key);
    }
    json all = {{"sustainOn", audio.midi().sustainOn()},
                {"sustainedOff", deferred},
                {"pedalRelease", state.pedalRelease},
                {"heldNote", held},
                {"modwheelSmoothed", state.modwheelSmoothed},
                {"pitchWheelSmoothed", state.pitchWheelSmoothed},
                {"channelPressureSmoothed", state.channelPressureSmoothed},
                {"pitchWheel", audio.midi().pitchWheel()},
                {"channelPressure", audio.midi().channelPressure()},
                {"pitchBendFactor", state.pitchBendFactor},
                {"songPosition", state.songPosition},
                {"lastPpqPos", audio.lastPpqPos()},
                {"layers", layers}};
    for (int number = 0; number < 128; ++number) all["ccValue" + std::to_string(number)] = state.ccValue[number];
    return all;
}

json engineReset(const Case& c) {
    EngineRig rig(48000.0f);
    prepare(rig, c.input.at("parameters"));
    rig.host.tell(100.0, 5.5);
    for (int tick = 0; tick < c.input.at("ticks").get<int>(); ++tick) {
        play(rig, c.input.at("script"), tick);
        rig.tick();
    }
    json got = {{"before", stateOf(rig.audio)}};
    const std::string call = c.input.at("call");
    if (call == "resetEngine")
        rig.audio.resetEngine();
    else if (call == "allNotesOff")
        rig.audio.allNotesOff();
    else if (call == "suspend")
        rig.audio.stop();
    else if (call == "resume")
        rig.audio.start();
    else
        throw std::runtime_error("unknown call " + call);
    got["after"] = stateOf(rig.audio);
    return got;
}

json layerFilter(const Case& c) {
    const int row = c.input.at("index");
    json split = json::array(), range = json::array();
    for (const json& key : c.input.at("keys")) split.push_back({key, keyPasses(row, key) && velocityPasses(0, 100)});
    for (const json& velocity : c.input.at("velocities"))
        range.push_back({velocity, keyPasses(0, 60) && velocityPasses(row, velocity)});
    return {{"Split", split}, {"VelRange", range}};
}

json layerSlew(const Case& c) {
    if (!c.input.contains("parameter")) {
        json numbers = json::array();
        for (const int n : slewedParameters) numbers.push_back({parameterInfo(n).name, n});
        return {{"numbers", numbers}};
    }
    EngineState state;
    setRates(state, 48000.0f);
    RandomSources random;
    const WaveStore waves;
    Layer layer(0, state, random, waves, platform::sleepMilliseconds);
    const int number = c.input["parameter"][1];
    layer.block()[parameter::Layer1On] = 1.0f;
    layer.block()[number] = asFloat(c.input.at("from"));
    layer.reset();
    const float target = layer.block()[number] = asFloat(c.input.at("to"));
    const json& wanted = c.expected.at("trace");
    json trace = json::array(), snapTick = nullptr;
    for (int tick = 0; tick < c.input.at("ticks").get<int>(); ++tick) {
        layer.tick();
        const float value = layer.smoothed()[number];
        if (snapTick.is_null() && value == target) snapTick = tick;
        if (trace.size() < wanted.size() && wanted[trace.size()][0] == tick) trace.push_back({tick, value});
    }
    return {{"trace", trace}, {"snapTick", snapTick}};
}

// ---- the modulators of one voice ----------------------------------------------------------------------------

int numberNamed(const std::string& name) {
    if (name.find_first_not_of("0123456789") == std::string::npos) return std::stoi(name);  // one without a name
    for (int n = 0; n < layerParameterEnd; ++n)
        if (name == parameterInfo(n).name) return n;
    throw std::runtime_error("no parameter named " + name);
}

json voiceTick(const Case& c) {
    EngineState state;
    setRates(state, asFloat(c.input.at("hostRate")));
    RandomSources random;
    const WaveStore waves;
    Layer layer(0, state, random, waves, platform::sleepMilliseconds);
    ParameterModel parameters;
    parameters.setDefaults();
    parameters.snapshotLayer(0, layer.block().data());
    auto& block = layer.block();
    block[parameter::Layer1On] = block[parameter::On1] = 1.0f;
    block[parameter::PlayMode] = listValue(8);
    for (const auto& [name, value] : c.input.at("layer").items()) block[numberNamed(name)] = asFloat(value);
    for (const json& slot : c.input.at("slots")) {
        const int row = slot[0].get<int>() - 1;
        block[parameter::MatSrc1 + row] = listValue(slot[1]);
        block[parameter::MatDst1 + row] = listValue(slot[2]);
        block[parameter::MatVal1 + row] = asFloat(slot[3]);
    }
    layer.reset();
    layer.blockChanged();
    state.tempoBpm = c.input.at("tempo");
    state.songPosition = c.input.at("songPosition");
    layer.startNote(c.input.at("note"), c.input.at("velocity"));
    const auto playing = [&] {
        for (int i = 0; i < voiceCount; ++i)
            if (layer.voice(i).sounding()) return i;
        throw std::runtime_error("no voice started");
    }();
    Voice& voice = layer.voice(playing);
    voice.randomValue = asFloat(c.input.at("randomValue"));
    voice.flipFlop = asFloat(c.input.at("flipFlop"));
    voice.voiceNumber = asFloat(c.input.at("voiceNumber"));
    std::vector<int> reads;
    for (const json& name : c.input.at("read")) reads.push_back(numberNamed(name));

    const json& at = c.input.at("at");
    json got = {{"mod", json::array()},       {"envLevel", json::array()},    {"envState", json::array()},
                {"lfoOutput", json::array()}, {"increment24", json::array()}, {"smoothedNote", json::array()}};
    for (int tick = 0; tick < c.input.at("ticks").get<int>(); ++tick) {
        if (c.input.contains("noteOffTick") && c.input["noteOffTick"] == tick) voice.noteOff();
        const bool sounding = voice.sounding();
        layer.tick();
        if (!sounding) {  // the cases follow a voice past its end
            layer.blockChanged();
            voice.tick();
        }
        state.songPosition += state.tempoBpm / 60.0 / state.ticksPerSecond;
        if (got["mod"].size() == at.size() || at[got["mod"].size()] != tick) continue;
        json mod = json::array(), levels = json::array(), states = json::array(), lfos = json::array();
        for (const int n : reads) mod.push_back(voice.mod[n]);
        for (const Envelope& envelope : voice.envelopes) {
            levels.push_back(envelope.level);
            states.push_back(static_cast<int>(envelope.state));
        }
        for (const Lfo& lfo : voice.lfos) lfos.push_back(lfo.output);
        got["mod"].push_back(mod);
        got["envLevel"].push_back(levels);
        got["envState"].push_back(states);
        got["lfoOutput"].push_back(lfos);
        got["increment24"].push_back(voice.frequency[0] * 16777216.0);
        got["smoothedNote"].push_back(voice.smoothedNote);
    }
    return got;
}

const golden::Binding bindings[] = {
    {"events", "voices_poly", golden::checkValues<voices>},
    {"events", "voices_mono", golden::checkValues<voices>},
    {"events", "voices_filter", golden::checkValues<voices>},
    {"events", "arp_voices", golden::checkValues<arpeggiatedVoices>},
    {"events", "engine_reset", golden::checkValues<engineReset>},
    {"events", "layer_filter", golden::checkValues<layerFilter>},
    {"events", "layer_slew", golden::checkValues<layerSlew>},
    {"modulation", "voice_tick", golden::checkValues<voiceTick>},
};

}  // namespace
