// A whole engine's block: the order of its work, what it hands on, its queries.
#include <cstring>
#include <stdexcept>

#include "engine/engine_rig.h"
#include "faces/vst2/q7audio.h"
#include "golden_runner/golden.h"
#include "sound/kernel_reads.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using namespace vantoric;
using test::EngineRig;

const char* nameOf(BlockStep step) {
    switch (step) {
        case BlockStep::clearOutputs: return "clearOutputs";
        case BlockStep::drainMidiQueue: return "drainMidiQueue";
        case BlockStep::smoothControllers: return "smoothControllers";
        case BlockStep::tempoAndPosition: return "tempoAndPosition";
        case BlockStep::layerTick: return "Layer::tick";
        case BlockStep::renderSubBlock: return "renderSubBlock";
        case BlockStep::equalizer: return "Equalizer";
        case BlockStep::masterEffect: return "masterEffect";
        case BlockStep::finalStage: return "finalStage";
        case BlockStep::decimator: return "decimator";
    }
    return "";
}

int argumentsOf(BlockStep step) {
    if (step == BlockStep::smoothControllers || step == BlockStep::tempoAndPosition) return 0;
    return step == BlockStep::renderSubBlock ? 2 : 1;
}

// Writes down the steps of one block, and how far its ticks have come.
struct BlockLog final : BlockObserver {
    json steps = json::array();
    int ticks = 0, eventPos = 0;
    bool rendered = false;

    void onStep(BlockStep step, int first, int second) override {
        json entry = {nameOf(step)};
        if (argumentsOf(step) > 0) entry.push_back(first);
        if (argumentsOf(step) > 1) entry.push_back(second);
        steps.push_back(entry);
        if (step == BlockStep::drainMidiQueue) {
            ++ticks;
            eventPos = first;
        }
        if (step == BlockStep::finalStage) rendered = true;
    }
};

json blockOrder(const Case& c) {
    EngineRig rig(asFloat(c.input.at("hostRate")));
    json blocks = json::array();
    for (const json& frames : c.input.at("blocks")) {
        BlockLog log;
        rig.audio.setBlockObserver(&log);
        rig.block(frames);
        blocks.push_back(log.steps);
    }
    rig.audio.setBlockObserver(nullptr);
    return {{"blocks", blocks}};
}

void setFlag(EngineFlags& flags, const std::string& name, bool on) {
    const std::pair<const char*, Flag*> named[] = {{"engineLocked", &flags.engineLocked},
                                                   {"bootPending", &flags.bootPending},
                                                   {"audioMuted", &flags.audioMuted},
                                                   {"editorClosing", &flags.editorClosing},
                                                   {"audioRunning", &flags.audioRunning}};
    for (const auto& [flagName, flag] : named)
        if (name == flagName) return on ? flag->set() : flag->clear();
    throw std::runtime_error("unknown flag " + name);
}

json blockFlags(const Case& c) {
    EngineRig rig(asFloat(c.input.at("hostRate")));
    json steps = json::array();
    for (const json& step : c.input.at("steps")) {
        if (step.contains("set"))
            for (const auto& [name, on] : step["set"].items()) setFlag(rig.audio.flags(), name, on);
        BlockLog log;
        rig.audio.setBlockObserver(&log);
        rig.block(step.at("frames"));
        steps.push_back({{"rendered", log.rendered},
                         {"ticks", log.ticks},
                         {"audioRunning", rig.audio.flags().audioRunning.isSet()},
                         {"samplesToTick", rig.audio.samplesToTick()}});
    }
    rig.audio.setBlockObserver(nullptr);
    return {{"steps", steps}};
}

// Each note started tells that its event was taken.
struct ArrivalLog final : NoteObserver {
    EngineRig& rig;
    BlockLog* block = nullptr;
    int number = 0;
    json applied = json::array();

    explicit ArrivalLog(EngineRig& r) : rig(r) {}
    void onVoiceStarted(int layer, int voice) override {
        applied.push_back({rig.audio.layer(layer).voice(voice).note, number, block->ticks - 1, block->eventPos});
    }
    void onVoiceMoved(int, int, bool) override {}
};

json eventTiming(const Case& c) {
    EngineRig rig(asFloat(c.input.at("hostRate")));
    rig.clearParameters();
    rig.plainLayer();
    rig.audio.resetEngine();
    ArrivalLog arrivals(rig);
    rig.audio.layer(0).setNoteObserver(&arrivals);
    json waiting = json::array();
    for (const json& block : c.input.at("blocks")) {
        std::vector<test::Midi> events;
        for (const json& event : block.at("events")) events.push_back({0x90, event[1], 100, event[0]});
        BlockLog log;
        arrivals.block = &log;
        rig.audio.setBlockObserver(&log);
        rig.send(events);
        rig.block(block.at("frames"));
        json left = json::array();
        for (int place = 0; place < MidiIntake::queuePlaces; ++place)
            if (const MidiMessage m = rig.audio.midi().queued(place); m.status != 0) left.push_back(m.data1);
        waiting.push_back(left);
        ++arrivals.number;
    }
    rig.audio.setBlockObserver(nullptr);
    rig.audio.layer(0).setNoteObserver(nullptr);
    return {{"applied", arrivals.applied}, {"waiting", waiting}};
}

json handover(const Case& c) {
    ParameterModel parameters;
    for (const json& entry : c.input.at("parameters"))
        parameters.writeRaw(entry[entry.size() - 2], asFloat(entry[entry.size() - 1]));
    const MasterControls controls = masterControls(parameters);
    return {{"equalizer", {controls.eqLow, controls.eqMid, controls.eqHigh}},
            {"effectType", controls.effectType},
            {"effectParameters", controls.effect},
            {"stageMode", controls.soundMode},
            {"stageGain", controls.gain}};
}

json controllerSmoothing(const Case& c) {
    EngineState state;
    float modwheel = 0.0f, wheel = 0.5f, pressure = 0.0f;
    state.modwheelSmoothed = modwheel;
    state.pitchWheelSmoothed = wheel;
    state.channelPressureSmoothed = pressure;
    const json& wanted = c.expected.at("trace");
    json trace = json::array();
    for (int tick = 0; tick < c.input.at("ticks").get<int>(); ++tick) {
        for (const json& entry : c.input.at("script")) {
            if (entry.at("tick") != tick) continue;
            if (entry.contains("mod")) modwheel = asFloat(entry["mod"]);
            if (entry.contains("wheel")) wheel = asFloat(entry["wheel"]);
            if (entry.contains("pressure")) pressure = asFloat(entry["pressure"]);
        }
        smoothControllers(state, modwheel, wheel, pressure);
        if (trace.size() < wanted.size() && wanted[trace.size()][0] == tick)
            trace.push_back({tick, state.modwheelSmoothed, state.pitchWheelSmoothed, state.channelPressureSmoothed});
    }
    return {{"trace", trace}};
}

json outputOf(Q7Audio& audio, int index) {
    VstPinProperties pin{};
    if (!audio.getOutputProperties(index, &pin)) return nullptr;
    const std::string shortLabel(pin.shortLabel, strnlen(pin.shortLabel, sizeof pin.shortLabel));
    return {pin.label, shortLabel, pin.flags};
}

json queries(const Case& c) {
    test::sharedDataFolder();
    platform::RecordedDialogs dialogs;
    Q7Audio audio(nullptr, dialogs);
    json got;
    for (const auto& [key, value] : c.expected.items()) {
        if (key == "entries") {
            got[key] = json::array();
            for (const json& row : value) got[key].push_back({row[0], levelOf(row[0].get<std::uint32_t>() << 13)});
        } else if (key.find_first_not_of("0123456789") == std::string::npos) {
            got[key] = outputOf(audio, std::stoi(key));
        } else {
            got[key] = audio.canDo(key.c_str());
        }
    }
    return got;
}

const golden::Binding bindings[] = {
    {"events", "block_order", golden::checkValues<blockOrder>},
    {"events", "block_flags", golden::checkValues<blockFlags>},
    {"events", "event_timing", golden::checkValues<eventTiming>},
    {"events", "master_handover", golden::checkValues<handover>},
    {"events", "controller_smoothing", golden::checkValues<controllerSmoothing>},
    {"events", "engine_queries", golden::checkValues<queries>},
};

}  // namespace
