#include "faces/standalone/midi_inputs.h"

#include <utility>

#include "faces/standalone/system.h"

namespace vantoric::standalone {

void MidiInputs::openSystem() {
    if (system_ || clockSeconds() < nextTry_) return;
    system_ = openSystemMidi(player_, problem_);
    nextTry_ = clockSeconds() + retryEvery;
}

void MidiInputs::poll(MidiPort* device) {
    openSystem();
    inputs_.clear();
    hasPort_ = device != nullptr;
    hasOwn_ = hasPort_ && !device->inputs().empty();
    std::set<Settled> seen;
    if (device != nullptr) follow(*device, hasOwn_, seen);
    if (system_) follow(*system_, !hasOwn_, seen);
    settled_ = std::move(seen);
}

void MidiInputs::follow(MidiPort& port, bool isChosen, std::set<Settled>& seen) {
    for (MidiInput& input : port.inputs()) {
        const Settled settled{port.portNumber, isChosen, input.id, input.name};
        const bool wanted = isChosen && isWanted(input.name);
        if (!settled_.contains(settled) && wanted != input.isConnected) {
            port.connect(input.id, wanted);
            input.isConnected = wanted;
        }
        seen.insert(settled);
        if (isChosen) inputs_.push_back(std::move(input));
    }
}

void MidiInputs::setWanted(const std::string& name, bool wanted) {
    if (wanted) {
        unwanted_.erase(name);
    } else {
        unwanted_.insert(name);
    }
    std::erase_if(settled_, [&name](const Settled& settled) { return std::get<3>(settled) == name; });
}

std::string MidiInputs::description() const {
    if (hasOwn_) return "JACK, port midi_in";
    if (hasPort_ && !system_) return "JACK, port midi_in; no ALSA sequencer";
    return system_ ? system_->description() : problem_;
}

}  // namespace vantoric::standalone
