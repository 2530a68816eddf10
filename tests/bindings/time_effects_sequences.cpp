// Scripts of calls on one effect slot.
#include <stdexcept>

#include "bindings/time_effects_render.h"
#include "effects/multieffect.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::Outcome;
using golden::StereoSignal;
using namespace vantoric;

class Script {
public:
    void run(const json& operations) {
        for (const json& operation : operations) perform(operation.at(0).get<std::string>(), operation);
    }
    // The sound of each process call.
    const std::vector<StereoSignal>& sounds() const { return sounds_; }

private:
    void perform(const std::string& name, const json& arguments) {
        const auto number = [&](std::size_t i) { return asFloat(arguments.at(i)); };
        if (name == "setRandomState") {
            random_.congruence.state = arguments.at(1);
        } else if (name == "setSampleRate") {
            rate_ = number(1);
            slot_.setSampleRate(rate_);
        } else if (name == "setTempo") {
            slot_.setTempo(number(1), arguments.size() > 2 ? arguments[2].get<double>() : 0.0);
        } else if (name == "setType") {
            slot_.setType(arguments.at(1));
        } else if (name == "setParameter") {
            slot_.setParameter(arguments.at(1), number(2));
        } else if (name == "setParameters") {
            for (std::size_t i = 0; i < arguments.at(1).size(); ++i)
                slot_.setParameter(static_cast<int>(i), asFloat(arguments[1][i]));
        } else if (name == "clearState") {
            slot_.clearState();
        } else if (name == "clearAll") {
            slot_.clearAll();
        } else if (name == "process") {
            process(arguments);
        } else {
            throw std::runtime_error("unknown operation " + name);
        }
    }
    void process(const json& arguments) {
        const int count = arguments.at(1);
        StereoSignal sound = golden::timeSignals(arguments.at(2), arguments.at(3), count, rate_);
        if (count == 0) slot_.process(sound.left.data(), sound.right.data(), 0);
        golden::processInBlocks(slot_, sound, arguments.at(4));
        sounds_.push_back(std::move(sound));
    }

    RandomSources random_;
    Multieffect slot_{random_};
    float rate_ = 44100.0f;
    std::vector<StereoSignal> sounds_;
};

Outcome sequence(const Case& c) {
    Script script;
    script.run(c.input.at("operations"));
    Outcome outcome;
    for (const json& window : c.expected.at("windows")) {
        const std::size_t index = window.value("process", std::size_t{0});
        golden::compareWindow(outcome, window, script.sounds().at(index), c.tolerance.value("abs", 0.0),
                              "process " + std::to_string(index) + " ");
    }
    return outcome;
}

const golden::Binding bindings[] = {{"time_effects", "slot_sequences", sequence}};

}  // namespace
