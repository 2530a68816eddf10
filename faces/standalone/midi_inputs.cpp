#include "faces/standalone/midi_inputs.h"

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
    hasOwn_ = device != nullptr && !device->inputs().empty();
    if (device != nullptr) follow(*device, hasOwn_);
    if (system_) follow(*system_, !hasOwn_);
}

void MidiInputs::follow(MidiPort& port, bool isChosen) {
    for (MidiInput& input : port.inputs()) {
        const bool wanted = isChosen && isWanted(input.name);
        if (wanted != input.isConnected) port.connect(input.id, wanted);
        input.isConnected = wanted;
        if (isChosen) inputs_.push_back(std::move(input));
    }
}

void MidiInputs::setWanted(const std::string& name, bool wanted) {
    if (wanted) {
        unwanted_.erase(name);
    } else {
        unwanted_.insert(name);
    }
}

std::string MidiInputs::description() const {
    if (hasOwn_) return "JACK, port midi_in";
    return system_ ? system_->description() : problem_;
}

}  // namespace vantoric::standalone
