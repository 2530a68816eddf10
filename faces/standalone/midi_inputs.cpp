#include "faces/standalone/midi_inputs.h"

namespace vantoric::standalone {

void MidiInputs::openSequencer() {
    if (sequencer_ || clockSeconds() < nextTry_) return;
    sequencer_ = SequencerInput::open(player_, problem_);
    nextTry_ = clockSeconds() + retryEvery;
}

void MidiInputs::poll(MidiPort* device) {
    openSequencer();
    inputs_.clear();
    hasOwn_ = device != nullptr && !device->inputs().empty();
    if (device != nullptr) follow(*device, hasOwn_);
    if (sequencer_) follow(*sequencer_, !hasOwn_);
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
    return sequencer_ ? "ALSA sequencer, port " + sequencer_->address() : "no ALSA sequencer: " + problem_;
}

}  // namespace vantoric::standalone
