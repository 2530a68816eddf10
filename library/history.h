// Undo and redo of all that a user changes, two patches to compare, and whether there is something to save.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "library/parameter_edits.h"
#include "library/patch_state.h"

namespace vantoric {

// Whoever keeps the lists of patches and waves: a history asks where a patch stands and what its waves were made of, and says
// it again when it takes a patch back.
class PatchPlaceKeeper {
public:
    virtual PatchPlace place() const = 0;
    virtual WaveNames waveNames() const { return {}; }
    virtual void showPlace(const PatchPlace& place) = 0;
    virtual void showWaveNames(const WaveNames& names) { static_cast<void>(names); }

protected:
    ~PatchPlaceKeeper() = default;
};

// What a step is called that changed the parameter with these host indices, at least one: one number's in different layers.
using ParameterNamer = std::function<std::string(const std::vector<int>& indices)>;

// "Cutoff 1" for host index 97 or 397; "Modulation 3" for what belongs to that slot of the matrix.
std::string nameOfParameter(int index);

// On the thread of the window. Every change of a user is a step: a gesture on parameters (all that overlap, or that begin
// within one Action), or a command. Short gestures on the same knobs within a second are one step, as a wheel gives them; a
// gesture or command that changes nothing is none. What the host or MIDI change makes no step, and a patch that the host
// loads ends the history: its steps were another patch's.
//
// Steps of parameters alone keep the differences: 12 bytes a parameter and some 150 a step, so a million turns of knobs take
// 160 MB. Other steps keep one whole patch each: 5 KB of values and what waves and samples no other state has. There is no
// end of steps but that of memory: the oldest go once all that is kept is above `memoryLimit` besides the patch in force.
class History final : public EditListener {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr std::size_t defaultMemoryLimit = std::size_t{256} << 20;

    // Follows the edits from now on. `places` may be null. All outlive it.
    History(Instrument& instrument, ParameterEdits& edits, PatchPlaceKeeper* places);
    ~History();
    History(const History&) = delete;
    History& operator=(const History&) = delete;

    // A command that changes the patch, however it does: a step of that name if the patch is another at its end. Commands
    // within commands are part of the outer one.
    class Command {
    public:
        Command(History& history, const std::string& name) : history_(history) { history_.commandBegins(name); }
        ~Command() { history_.commandEnded(); }
        Command(const Command&) = delete;
        Command& operator=(const Command&) = delete;

    private:
        History& history_;
    };
    void commandBegins(const std::string& name);
    void commandEnded();

    // While it stands, the gestures that begin are one step, named by the first: what one event of the window does.
    class Action {
    public:
        explicit Action(History& history) : history_(history) { ++history_.actions_; }
        ~Action() {
            if (--history_.actions_ == 0 && history_.open_.empty()) history_.finishGestures();
        }
        Action(const Action&) = delete;
        Action& operator=(const Action&) = delete;

    private:
        History& history_;
    };

    // How steps are named from now on; without one, by `nameOfParameter`.
    void setNamer(ParameterNamer namer) { namer_ = std::move(namer); }

    void editBegan(int index, float value) override;
    void editEnded(int index, float value) override;
    // One without a gesture and outside of commands, such as those of a matrix slot that is filled, is a part of a step with
    // those that come at the same time.
    void valueWritten(int index, float before) override;

    // One step back or forth; a gesture that is being made counts as done so far. Parameters alone are written, and the host
    // hears of each that a gesture made; a whole patch comes back as by a load, with the place that it had. False, and
    // nothing changes, if there is no step or memory is short.
    bool undo();
    bool redo();
    // All steps back to that state (see stateId) at once. False, and nothing changes, if no step goes back to it.
    bool undoTo(std::uint64_t state);
    // What they would take back or do again; empty if there is nothing.
    std::string undoName() const;
    std::string redoName() const;
    std::size_t undoCount() const { return done_; }
    std::size_t redoCount() const { return steps_.size() - done_; }
    // Forgets all steps; what is in force counts as saved. The other patch to compare stays.
    void clear();

    // The patch in force, or the one that the running command makes, is that of a file: it was loaded from one, or saved to
    // one, which no longer holds what was saved there before.
    void markLoaded() { mark(Mark::loaded); }
    void markSaved() { mark(Mark::saved); }
    // Whether the patch is another than that of its file. One that undo or redo brought back to the state that was loaded or
    // saved is not; what automation and MIDI move does not count.
    bool isChanged() const { return !files_.contains(state_); }
    // A number that each state of the patch has for itself: the same after undo and redo.
    std::uint64_t stateId() const { return state_; }

    // Two patches to compare, A (in force at first) and B (like A until it is first called for). `compare` puts the other in
    // force and keeps the one that was; false, with all as it was, if memory is short.
    bool compare();
    // 0: A, 1: B.
    int comparedSlot() const { return slot_; }
    // Makes the other patch like the one in force. False if memory is short.
    bool copyToOther();

    // Looks whether the host loaded a patch. All others do so too; for whoever shows the names.
    void follow();

    // In bytes, above 0. Of what is kept besides the patch in force.
    void setMemoryLimit(std::size_t bytes);
    std::size_t memoryUsed() const;

    // A clock of one's own, for tests.
    void setClock(std::function<Time()> clock) { clock_ = std::move(clock); }

private:
    using State = std::shared_ptr<const PatchState>;
    using StateId = std::uint64_t;
    enum class Kind : unsigned char { gesture, values, patch, compare, copyToOther };
    enum class Mark : unsigned char { none, loaded, saved };

    struct Change {
        int index;
        float before, after;
    };
    struct Step {
        Kind kind;
        std::string name;
        StateId before = 0, after = 0;
        std::vector<Change> changes{};  // of gestures and values
        State other{};                  // of patch: the state on the far side; of copyToOther: the patch that it replaced
        StateId otherId = 0;            // of copyToOther
        bool isTurn = false;            // a short gesture, which others may join
        bool isWritten = false;         // without gestures
        Time ended{};
    };
    Time now() const { return clock_ ? clock_() : std::chrono::steady_clock::now(); }
    PatchPlace place() const { return places_ != nullptr ? places_->place() : PatchPlace{}; }
    State take();
    Change* changeOf(int index);
    void finishGestures();
    void beginOpenGesturesAnew();
    std::string nameOf(const std::vector<Change>& changes) const;
    bool joinsLast(const Step& step) const;
    void joinLast(const Step& step);
    void push(Step step);
    void dropRedo();
    void dropOldest();
    void dropAll();
    void forgetFile(StateId state);
    bool travel(Step& step, bool back);
    bool apply(Step& step, bool back);
    void writeValues(const Step& step, bool back);
    State exchangePatch(const State& state);
    void addCommand(const State& after);
    void mark(Mark mark);
    std::string otherSlotName() const { return slot_ == 0 ? "B" : "A"; }
    HostPort* host() const { return instrument_.hostPort(); }

    Instrument& instrument_;
    ParameterEdits& edits_;
    PatchPlaceKeeper* places_;
    PatchStates states_;
    std::function<Time()> clock_;
    ParameterNamer namer_;
    std::size_t memoryLimit_ = defaultMemoryLimit;

    std::deque<Step> steps_;
    std::size_t done_ = 0;  // steps that undo would take back; the rest is for redo
    std::size_t stepBytes_ = 0;
    StateId state_ = 1, lastId_ = 1;
    std::map<StateId, PatchPlace> files_;  // states that are those of files
    std::uint32_t loadsSeen_;

    std::vector<int> open_;        // parameters of the gestures that go on
    std::vector<Change> gesture_;  // what they have changed, and those that ended with them
    Time gestureBegan_{};
    bool isWritten_ = true;  // no gesture so far
    int actions_ = 0;

    int commands_ = 0;
    std::string commandName_;
    State beforeCommand_;
    Mark markAtEnd_ = Mark::none;
    bool isTravelling_ = false;

    int slot_ = 0;
    State other_;
    StateId otherId_ = 0;
};

}  // namespace vantoric
