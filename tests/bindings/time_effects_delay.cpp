// The delay family: rendered, its notes, its patterns and its gated taps.
#include "bindings/time_effects_render.h"
#include "effects/multieffect.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::Outcome;
using namespace vantoric;

// The distances of taps 1 to n of the gated types.
void inspectTaps(Outcome& outcome, Delay2& delay, const Case& c) {
    if (!c.expected.contains("taps")) return;
    const Delay2::GatedTaps taps = delay.gatedTaps();
    const auto distances = [&](int side) {
        return std::vector<int>(taps.distance[side].begin() + 1, taps.distance[side].begin() + 1 + taps.count);
    };
    const json got = {{"n", taps.count}, {"left", distances(0)}, {"right", distances(1)}};
    golden::compareInto(outcome, c.expected["taps"], got, {{"abs", 0}, {"rel", 0}}, "taps");
}

json patterns(const Case& c) {
    json out = {{"left", json::array()}, {"right", json::array()}};
    for (std::size_t i = 0; i < c.input.at("patterns").size(); ++i) {
        out["left"].push_back(multitapPatterns.at(i).left);
        out["right"].push_back(multitapPatterns.at(i).right);
    }
    return out;
}

// The note that the slot's text shows for a delay time.
std::string shownNote(float p) {
    RandomSources random;
    Multieffect slot(random);
    slot.setType(6);
    slot.setParameter(1, p);
    char text[effectTextSize];
    slot.getParameterDisplay(1, text);
    return std::string(text).substr(sizeof "Time " - 1);
}

json noteChoices(const Case& c) {
    json out = {{"sounding", json::array()}, {"displayed", json::array()}, {"beats", noteBeats}, {"labels", json::array()}};
    std::vector<std::string> labels;
    for (std::size_t i = 0; i < noteBeats.size(); ++i) labels.push_back(shownNote((static_cast<float>(i) + 0.5f) / 11.99f));
    for (const json& p : c.input.at("p")) {
        out["sounding"].push_back(noteIndex(asFloat(p)));
        out["displayed"].push_back(std::find(labels.begin(), labels.end(), shownNote(asFloat(p))) - labels.begin());
    }
    out["labels"] = labels;
    return out;
}

json noteLengths(const Case& c) {
    json out = {{"samples", json::array()}};
    for (const json& row : c.input.at("rows"))
        out["samples"].push_back(noteSamples(asFloat(row.at(2)), asFloat(row.at(0)), asFloat(row.at(1))));
    return out;
}

Outcome notes(const Case& c) {
    if (c.input.contains("class")) return golden::renderedEffect<Delay2>(c);
    return golden::compare(c.expected, c.input.contains("rows") ? noteLengths(c) : noteChoices(c), c.tolerance);
}

const golden::Binding bindings[] = {
    {"time_effects", "delay_*", golden::renderedEffect<Delay2, inspectTaps>},
    {"time_effects", "delay_03_patterns", golden::checkValues<patterns>},
    {"time_effects", "delay_notes", notes},
};

}  // namespace
