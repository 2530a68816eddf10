// The history of a window's work: what its controls and commands change can be undone, compared, and is kept for a crash.
#pragma once

#include <string>

#include "editor/model/q7editor.h"
#include "library/autosave.h"
#include "library/command_log.h"
#include "library/history.h"

namespace vantoric {

// On the thread of the window. Lives as long as the editor, with or without an open window.
class WorkHistory final : private CommandListener, private PatchPlaceKeeper {
public:
    // Follows the editor's edits and commands from now on. Both outlive it.
    WorkHistory(Instrument& instrument, Q7Editor& editor);
    ~WorkHistory();
    WorkHistory(const WorkHistory&) = delete;
    WorkHistory& operator=(const WorkHistory&) = delete;

    // A step back or forth, or over to the other of the two patches to compare. What was done, for the hint line.
    std::string undo();
    std::string redo();
    std::string compare();
    std::string copyToOther();

    // To be called in idle time: notes what a host loaded, and what there is to keep for a crash.
    void follow();

    // Whether the patch has changes that are in no file.
    bool isChanged() const { return history_.isChanged(); }
    History& history() { return history_; }
    const History& history() const { return history_; }
    Autosave& autosave() { return autosave_; }

private:
    void commandBegins(const std::string& name) override { history_.commandBegins(name); }
    void commandEnded() override { history_.commandEnded(); }
    void patchLoaded() override { history_.markLoaded(); }
    void patchSaved() override { history_.markSaved(); }
    PatchPlace place() const override;
    void showPlace(const PatchPlace& place) override;
    WaveNames waveNames() const override { return editor_.commands().waveNames(); }
    void showWaveNames(const WaveNames& names) override { editor_.commands().showWaveNames(names); }

    Q7Editor& editor_;
    History history_;
    Autosave autosave_;
};

}  // namespace vantoric
