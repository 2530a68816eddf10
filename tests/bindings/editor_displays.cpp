// What displays draw: filter responses, waves, envelopes, LFOs, the markers of a sample.
#include "editor/model/envelope_display.h"
#include "editor/model/filter_display.h"
#include "editor/model/lfo_display.h"
#include "editor/model/wave_display.h"
#include "editor_bench.h"
#include "sound/kernels.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using namespace vantoric;
using test::EditorBench;

json runCutoff(const Case& c) {
    const float cutoff = asFloat(c.input.at("Cutoff")), filEnv = asFloat(c.input.at("FilEnv")),
                filKey = asFloat(c.input.at("FilKey"));
    const json &envelope = c.input.at("envelope"), &note = c.input.at("note");
    return {{"c", envelope.is_null() && note.is_null()
                      ? displayCutoff(cutoff)
                      : displayCutoff(cutoff, filEnv, filKey, asFloat(envelope), note.get<double>())}};
}

json runVoice(const Case& c) {
    std::vector<VoiceRank> voices;
    for (const json& voice : c.input.at("voices")) voices.push_back({voice[0], voice[1]});
    return {{"voice", voiceOnShow(voices)}};
}

json valuesAt(const json& rows, std::span<const double> values) {
    json got = json::array();
    for (const json& row : rows) got.push_back({row[0], values[row[0].get<std::size_t>()]});
    return got;
}

json runWindow(const Case& c) {
    LinearCongruence source{c.input.at("seed")};
    const double decay = c.input.at("decay");
    std::array<float, FilterResponse::samples> samples;
    double level = 1.0;
    for (float& sample : samples) {
        sample = static_cast<float>(static_cast<std::int32_t>(source.next()) / 2147483648.0 * level);
        level *= decay;
    }
    FilterResponse response;
    const auto& magnitudes = response.magnitudesOf(samples);
    return {{"windowed", valuesAt(c.expected.at("windowed"), response.windowed())},
            {"magnitudes", valuesAt(c.expected.at("magnitudes"), magnitudes)}};
}

json runResponse(const Case& c) {
    FilterResponse response;
    const auto& magnitudes = response.measure({.sampleRate = 88200.0f,
                                               .type = c.input.at("type"),
                                               .cutoff = asFloat(c.input.at("cutoff")),
                                               .resonance = asFloat(c.input.at("resonance")),
                                               .analog = asFloat(c.input.at("analog"))});
    return {{"magnitudes", valuesAt(c.expected.at("magnitudes"), magnitudes)}};
}

json runTraces(const Case& c) {
    DisplayTraces traces;
    const auto count = c.input.at("traceA").size();
    for (std::size_t i = 0; i < count; ++i) {
        traces.traceA[i] = asFloat(c.input.at("traceA")[i]);
        traces.traceB[i] = asFloat(c.input.at("traceB")[i]);
    }
    traces.makeOutline(static_cast<int>(count), asFloat(c.input.at("halfHeight")));
    json low = json::array(), high = json::array();
    for (std::size_t i = 0; i < count; ++i) {
        low.push_back(traces.traceLow[i]);
        high.push_back(traces.traceHigh[i]);
    }
    return {{"traceLow", low}, {"traceHigh", high}};
}

json runEnvelopeDisplay(const Case& c) {
    EditorBench bench;
    bench.setValues(c.input.at("values"));
    const EnvelopeSettings settings = envelopeSettings(bench.rig.audio.parameters(), c.input.at("layer"), c.input.at("tab"));
    const EnvelopeCourse course = runEnvelope(settings);
    EnvelopeDisplay display;
    display.refresh(settings, {.columns = 129, .factor = 1.0f});
    json bytes = json::array(), columns = json::array();
    for (const json& row : c.expected.at("bytes")) bytes.push_back({row[0], course.levels.at(row[0].get<std::size_t>())});
    for (const json& row : c.expected.at("columns"))
        columns.push_back({row[0], display.traces().traceA.at(row[0].get<std::size_t>())});
    return {{"count", course.levels.size()},
            {"firstPart", course.firstPart},
            {"sustainEnd", course.sustainEnd},
            {"bytes", bytes},
            {"columns", columns}};
}

json runLfoDisplay(const Case& c) {
    EditorBench bench;
    bench.setValues(c.input.at("values"));
    std::array<float, 129> levels;
    runLfo(lfoSettings(bench.rig.audio.parameters(), c.input.at("layer"), c.input.at("tab")), levels);
    json rows = json::array();
    for (const json& row : c.expected.at("levels")) rows.push_back({row[0], levels.at(row[0].get<std::size_t>())});
    return {{"levels", rows}};
}

json runWaveDisplay(const Case& c) {
    double whole = 0.0;
    for (const json& part : c.input.at("parts")) whole += part[1].get<double>();
    std::array<std::int16_t, 2048> cycle;
    for (std::size_t i = 0; i < cycle.size(); ++i) {
        double sum = 0.0;
        for (const json& part : c.input.at("parts"))
            sum += part[1].get<double>() *
                   std::sin(2.0 * M_PI * (part[0].get<double>() * static_cast<double>(i) / 2048.0 + part[2].get<double>()));
        cycle[i] = static_cast<std::int16_t>(32000.0 * sum / whole);
    }
    EditorBench bench;
    bench.rig.setList(parameter::SynType1, customWaveType);
    bench.rig.audio.layer(0).customWave(0).cycle = cycle;
    WaveDisplay display(bench.rig.audio, 0);
    const DisplayLayout layout{.columns = 190, .factor = 1.0f};
    display.refresh(0, {}, layout);
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) {
        const auto column = static_cast<std::size_t>(std::lround(row[0].get<double>() * layout.columns));
        rows.push_back({row[0], display.traces().traceA.at(column) / layout.halfHeight()});
    }
    return {{"rows", rows}};
}

json runMarkers(const Case& c) {
    SampleMarkers markers;
    markers.showMarkers = c.input.at("showMarkers");
    markers.loopStart = asFloat(c.input.at("loopStart"));
    markers.loopEnd = asFloat(c.input.at("loopEnd"));
    markers.playStart = asFloat(c.input.at("playStart"));
    for (const json& event : c.input.at("events")) {
        const float position = (asFloat(event[1]) - asFloat(c.input.at("left"))) / asFloat(c.input.at("width"));
        if (event[0] == "down")
            markers.press(position, event[2] == "left" ? MouseButton::left : MouseButton::right);
        else if (event[0] == "move")
            markers.move(position);
        else
            markers.release();
    }
    json got = {{"loopStart", markers.loopStart},
                {"loopEnd", markers.loopEnd},
                {"playStart", markers.playStart},
                {"markersMoved", markers.markersMoved},
                {"points", nullptr}};
    if (const auto points = markers.takeMoved(c.input.at("length"))) got["points"] = {points->start, points->end};
    return got;
}

const golden::Binding b1("editor", "display_cutoff", golden::checkValues<runCutoff>);
const golden::Binding b2("editor", "display_voice", golden::checkValues<runVoice>);
const golden::Binding b3("editor", "display_window", golden::checkValues<runWindow>);
const golden::Binding b4("editor", "display_response", golden::checkValues<runResponse>);
const golden::Binding b5("editor", "display_traces", golden::checkValues<runTraces>);
const golden::Binding b6("editor", "envelope_display", golden::checkValues<runEnvelopeDisplay>);
const golden::Binding b7("editor", "lfo_display", golden::checkValues<runLfoDisplay>);
const golden::Binding b8("editor", "wave_display", golden::checkValues<runWaveDisplay>);
const golden::Binding b9("editor", "marker_drag", golden::checkValues<runMarkers>);

}  // namespace
