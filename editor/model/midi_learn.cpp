#include "editor/model/midi_learn.h"

namespace vantoric {

namespace {

constexpr int controllerCount = 128;
constexpr int parameterEnd = 1225;

}  // namespace

bool MidiLearn::removeAssignment(int parameter) {
    if (parameter < 0 || parameter >= parameterEnd) return false;
    bool hadAny = false;
    ControllerMap& map = instrument_.controllerMap();
    for (int controller = 0; controller < controllerCount; ++controller) {
        if (map.get(controller) != parameter) continue;
        map.set(controller, ControllerMap::none);
        hadAny = true;
    }
    if (hadAny) instrument_.midi().setCcMapDirty();
    return hadAny;
}

const char* MidiLearn::assignLearn(int parameter) {
    if (parameter < 0 || parameter >= parameterEnd) return "";
    if (removeAssignment(parameter)) return "Midi learn removed the assignment of the Midi CC.";
    instrument_.midi().setLearnPending(parameter);
    return request;
}

bool MidiLearn::cancel() {
    if (!isPending()) return false;
    instrument_.midi().setLearnPending(ControllerMap::none);
    return true;
}

const char* MidiLearn::removeAll() {
    cancel();  // no control waits any longer either
    instrument_.controllerMap().clear();
    instrument_.midi().setCcMapDirty();
    return "All Midi CCs removed";
}

int MidiLearn::ccNumber(int parameter) const {
    if (instrument_.midi().learnPending() == parameter) return learning;
    for (int controller = 0; controller < controllerCount; ++controller)
        if (instrument_.controllerMap().get(controller) == parameter) return controller;
    return noController;
}

bool MidiLearn::takeMapChange() {
    if (!instrument_.midi().takeCcMapDirty()) return false;
    instrument_.controllerMap().saveChanges(controllerMapPath());
    return true;
}

}  // namespace vantoric
