#include "editor/model/work_history.h"

#include "editor/model/step_names.h"

namespace vantoric {

WorkHistory::WorkHistory(Instrument& instrument, Q7Editor& editor)
    : editor_(editor), history_(instrument, editor.edits(), this), autosave_(instrument) {
    editor_.commands().log().setListener(this);
    history_.setNamer([&instrument](const std::vector<int>& indices) { return stepName(instrument.parameters(), indices); });
}

WorkHistory::~WorkHistory() { editor_.commands().log().setListener(nullptr); }

std::string WorkHistory::undo() {
    const std::string name = history_.undoName();
    if (name.empty()) return "Nothing to undo";
    return history_.undo() ? "Undone: " + name : "There is not enough memory to undo " + name;
}

std::string WorkHistory::redo() {
    const std::string name = history_.redoName();
    if (name.empty()) return "Nothing to redo";
    return history_.redo() ? "Done again: " + name : "There is not enough memory to redo " + name;
}

std::string WorkHistory::compare() {
    if (!history_.compare()) return "There is not enough memory to compare";
    return history_.comparedSlot() == 0 ? "Patch A plays" : "Patch B plays";
}

std::string WorkHistory::copyToOther() {
    const bool isA = history_.comparedSlot() == 0;
    if (!history_.copyToOther()) return "There is not enough memory to copy";
    return isA ? "A was copied to B" : "B was copied to A";
}

void WorkHistory::follow() {
    history_.follow();
    autosave_.follow({history_.isChanged(), history_.stateId(), editor_.commands().patch().category(), editor_.patchName()});
}

PatchPlace WorkHistory::place() const {
    const PatchOnShow& patch = editor_.commands().patch();
    return {patch.category(), editor_.patchName(), patch.file()};
}

void WorkHistory::showPlace(const PatchPlace& place) {
    editor_.commands().patch().showAgain(place.category, place.file, place.patch);
}

}  // namespace vantoric
