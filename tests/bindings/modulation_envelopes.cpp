#include <stdexcept>

#include "golden_runner/golden.h"
#include "voice/envelope.h"

namespace {

using golden::json;
using namespace vantoric;

struct Parameters {
    float attack = 0, hold = 0, decay = 0, sustain = 0, release = 0, shape = 0;

    void read(const json& j) {
        const std::pair<const char*, float*> fields[] = {{"attack", &attack},   {"hold", &hold},       {"decay", &decay},
                                                         {"sustain", &sustain}, {"release", &release}, {"shape", &shape}};
        for (const auto& [name, field] : fields)
            if (j.contains(name)) *field = golden::asFloat(j[name]);
    }
};

void apply(Envelope& envelope, Parameters& parameters, const std::string& what, const json& value) {
    if (what == "noteOn")
        envelope.start();
    else if (what == "noteOff")
        envelope.noteOff();
    else if (what == "retrigger")
        envelope.retrigger();
    else if (what == "fade")
        envelope.fade();
    else if (what == "set")
        parameters.read(value);
    else
        throw std::runtime_error("unknown event " + what);
}

json run(const golden::Case& c) {
    Envelope envelope;
    Parameters p;
    p.read(c.input);
    json changes = json::array(), states = json::array(), levels = json::array(), phases = json::array();
    const json& at = c.input["at"];
    std::size_t next = 0;
    int lastState = -1;
    for (int tick = 0; tick < c.input["ticks"].get<int>(); ++tick) {
        for (const json& event : c.input["events"])
            if (event[0].get<int>() == tick) apply(envelope, p, event[1].get<std::string>(), event[2]);
        envelope.setup(p.attack, p.hold, p.decay, p.sustain, p.release, p.shape);
        envelope.step();
        if (envelope.state != lastState) changes.push_back({tick, envelope.state});
        lastState = envelope.state;
        if (next < at.size() && at[next].get<int>() == tick) {
            states.push_back(envelope.state);
            levels.push_back(envelope.level);
            phases.push_back(envelope.phase);
            ++next;
        }
    }
    return {{"changes", changes},
            {"state", states},
            {"level", levels},
            {"phase", phases},
            {"releaseLevel", envelope.releaseLevel},
            {"releasePending", envelope.releasePending}};
}

// States and the ticks of their changes are exact whatever the tolerance of the levels.
golden::Outcome check(const golden::Case& c) {
    json tolerance = c.tolerance;
    if (tolerance.contains("abs") || tolerance.contains("rel")) {
        const json all = tolerance;
        tolerance = {{"level", all}, {"phase", all}, {"releaseLevel", all}};
    }
    return golden::compare(c.expected, run(c), tolerance);
}

const golden::Binding envelopes("modulation", "envelope*", check);

}  // namespace
