#include "library/history.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vantoric {

namespace {

using namespace std::chrono_literals;

constexpr auto longestTurn = 50ms;  // of a gesture that is one click of a wheel
constexpr auto joinWithin = 1s;
constexpr auto atTheSameTime = 20ms;

bool isSwitch(int index) { return parameterInfo(numberOfParameter(index)).kind == ControlKind::Switch; }
bool isLayerSwitch(int index) { return index >= parameter::Layer1On && index < parameter::Layer1On + layerCount; }

// What a step weighs besides the contents of its state.
template <class Step>
std::size_t weightOf(const Step& step) {
    return sizeof(Step) + step.name.capacity() + step.changes.capacity() * sizeof(step.changes[0]);
}

}  // namespace

std::string nameOfParameter(int index) {
    for (const int slots : {parameter::MatSrc1, parameter::MatDst1, parameter::MatVal1}) {
        const int slot = numberOfParameter(index) - slots;
        if (slot >= 0 && slot < 16) return "Modulation " + std::to_string(slot + 1);
    }
    const std::string name = parameterInfo(numberOfParameter(index)).name;
    std::size_t digits = name.size();
    while (digits > 0 && name[digits - 1] >= '0' && name[digits - 1] <= '9') --digits;
    const bool isNumbered = digits > 0 && digits < name.size();
    return isNumbered ? name.substr(0, digits) + " " + name.substr(digits) : name;
}

History::History(Instrument& instrument, ParameterEdits& edits, PatchPlaceKeeper* places)
    : instrument_(instrument), edits_(edits), places_(places), states_(instrument), loadsSeen_(instrument.patchesLoaded()) {
    files_[state_] = place();
    edits_.setListener(this);
}

History::~History() { edits_.setListener(nullptr); }

// Null with short memory.
History::State History::take() try {
    return states_.take(place(), places_ != nullptr ? places_->waveNames() : WaveNames());
} catch (const std::bad_alloc&) {
    return nullptr;
}

// ---- steps ------------------------------------------------------------------------------------------------------

void History::push(Step step) {
    dropRedo();
    step.before = state_;
    state_ = step.after;
    stepBytes_ += weightOf(step);
    steps_.push_back(std::move(step));
    done_ = steps_.size();
    dropOldest();
}

// A file's mark goes with the last way to its state.
void History::forgetFile(StateId state) {
    if (state != state_ && state != otherId_) files_.erase(state);
}

void History::dropRedo() {
    while (steps_.size() > done_) {
        forgetFile(steps_.back().after);
        stepBytes_ -= weightOf(steps_.back());
        steps_.pop_back();
    }
}

// The newest step stays, whatever it weighs.
void History::dropOldest() {
    while (memoryUsed() > memoryLimit_ && done_ > 1) {
        forgetFile(steps_.front().before);
        stepBytes_ -= weightOf(steps_.front());
        steps_.pop_front();
        --done_;
    }
}

std::size_t History::memoryUsed() const {
    const std::size_t kept = states_.bytesKept(), inForce = states_.bytesOfLast();
    return stepBytes_ + (kept > inForce ? kept - inForce : 0);
}

void History::setMemoryLimit(std::size_t bytes) {
    memoryLimit_ = bytes;
    dropOldest();
}

void History::dropAll() {
    steps_.clear();
    done_ = 0;
    stepBytes_ = 0;
    files_.clear();
    state_ = ++lastId_;
    beginOpenGesturesAnew();
}

void History::clear() {
    dropAll();
    files_[state_] = place();
}

void History::follow() {
    if (commands_ > 0 || isTravelling_ || instrument_.patchesLoaded() == loadsSeen_) return;
    loadsSeen_ = instrument_.patchesLoaded();
    clear();
}

// ---- gestures ---------------------------------------------------------------------------------------------------

History::Change* History::changeOf(int index) {
    const auto found = std::find_if(gesture_.begin(), gesture_.end(), [=](const Change& c) { return c.index == index; });
    return found == gesture_.end() ? nullptr : &*found;
}

void History::editBegan(int index, float value) {
    if (isTravelling_) return;
    follow();
    if (std::find(open_.begin(), open_.end(), index) == open_.end()) open_.push_back(index);
    if (commands_ > 0) return;
    if (gesture_.empty()) gestureBegan_ = now();
    isWritten_ = false;
    if (changeOf(index) == nullptr) gesture_.push_back({index, value, value});
}

void History::editEnded(int index, float value) {
    if (isTravelling_) return;
    std::erase(open_, index);
    if (commands_ > 0) return;
    if (Change* const change = changeOf(index)) change->after = value;
    if (open_.empty() && actions_ == 0) finishGestures();
}

void History::valueWritten(int index, float before) {
    const bool isOpen = std::find(open_.begin(), open_.end(), index) != open_.end();
    const float value = instrument_.parameters().getParameter(index);
    if (isTravelling_ || commands_ > 0 || isOpen || value == before) return;
    follow();
    if (gesture_.empty()) gestureBegan_ = now();
    if (changeOf(index) == nullptr) gesture_.push_back({index, before, before});
    changeOf(index)->after = value;
    if (open_.empty() && actions_ == 0) finishGestures();
}

// Makes a step of what the gestures have changed so far; those that go on begin anew.
void History::finishGestures() {
    for (const int index : open_)
        if (Change* const change = changeOf(index)) change->after = instrument_.parameters().getParameter(index);
    Step step{Kind::gesture, {}};
    step.changes = std::exchange(gesture_, {});
    std::erase_if(step.changes, [](const Change& c) { return c.before == c.after; });
    if (!step.changes.empty()) {
        step.ended = now();
        step.isTurn = step.ended - gestureBegan_ <= longestTurn;
        step.isWritten = isWritten_;
        if (joinsLast(step)) {
            joinLast(step);
        } else {
            step.name = nameOf(step.changes);
            step.changes.shrink_to_fit();
            step.after = ++lastId_;
            push(std::move(step));
        }
    }
    beginOpenGesturesAnew();
}

void History::beginOpenGesturesAnew() {
    gesture_.clear();
    gestureBegan_ = now();
    isWritten_ = open_.empty();
    for (const int index : open_) {
        const float value = instrument_.parameters().getParameter(index);
        gesture_.push_back({index, value, value});
    }
}

// A layer that a touch woke is not what the touch was about.
std::string History::nameOf(const std::vector<Change>& changes) const {
    const auto named =
        std::find_if(changes.begin(), changes.end(), [](const Change& change) { return !isLayerSwitch(change.index); });
    const int index = named != changes.end() ? named->index : changes.front().index;
    if (!namer_) return nameOfParameter(index);
    std::vector<int> indices;
    for (const Change& change : changes)
        if (numberOfParameter(change.index) == numberOfParameter(index)) indices.push_back(change.index);
    return namer_(indices);
}

// Clicks of a wheel on the same knobs are one step; each click on a switch is one of its own. There always is a way back to
// what was saved.
bool History::joinsLast(const Step& step) const {
    if (done_ == 0 || done_ != steps_.size() || files_.contains(state_)) return false;
    const Step& last = steps_.back();
    if (step.isWritten && last.isWritten && gestureBegan_ - last.ended <= atTheSameTime) return true;
    if (!step.isTurn || !last.isTurn || gestureBegan_ - last.ended > joinWithin) return false;
    return std::all_of(step.changes.begin(), step.changes.end(), [&](const Change& change) {
        return !isSwitch(change.index) &&
               std::any_of(last.changes.begin(), last.changes.end(), [&](const Change& c) { return c.index == change.index; });
    });
}

void History::joinLast(const Step& step) {
    Step& last = steps_.back();
    stepBytes_ -= weightOf(last);
    for (const Change& change : step.changes) {
        const auto known =
            std::find_if(last.changes.begin(), last.changes.end(), [&](const Change& c) { return c.index == change.index; });
        if (known != last.changes.end())
            known->after = change.after;
        else
            last.changes.push_back(change);
    }
    stepBytes_ += weightOf(last);
    last.ended = step.ended;
    state_ = last.after = ++lastId_;
    if (std::any_of(last.changes.begin(), last.changes.end(), [](const Change& c) { return c.before != c.after; })) return;
    state_ = last.before;
    stepBytes_ -= weightOf(last);
    steps_.pop_back();
    --done_;
}

// ---- commands ---------------------------------------------------------------------------------------------------

void History::commandBegins(const std::string& name) {
    if (commands_ == 0) {
        follow();
        finishGestures();
        beforeCommand_ = take();
        commandName_ = name;
    }
    ++commands_;
}

void History::commandEnded() {
    if (--commands_ > 0) return;
    loadsSeen_ = instrument_.patchesLoaded();
    const State after = take();
    if (beforeCommand_ != nullptr && after != nullptr)
        addCommand(after);
    else
        dropAll();  // there is no way back past what was too large to be kept
    beforeCommand_ = nullptr;
    beginOpenGesturesAnew();
    if (const Mark atEnd = std::exchange(markAtEnd_, Mark::none); atEnd != Mark::none) mark(atEnd);
}

void History::addCommand(const State& after) {
    const PatchState& before = *beforeCommand_;
    Step step{Kind::values, commandName_};
    const bool isSamePatch = before.name == after->name && before.place == after->place && before.hasSameSounds(*after);
    if (!isSamePatch) {
        step.kind = Kind::patch;
        step.other = beforeCommand_;
    } else {
        for (int i = 0; i < parameterCount; ++i) {
            const auto at = static_cast<std::size_t>(i);
            const float was = (*before.values)[at], is = (*after->values)[at];
            if (was != is) step.changes.push_back({i, was, is});
        }
        step.changes.shrink_to_fit();
        if (step.changes.empty()) return;
    }
    step.after = ++lastId_;
    beforeCommand_ = nullptr;  // what the step does not need is not weighed
    push(std::move(step));
}

void History::mark(Mark mark) {
    if (commands_ > 0) {
        markAtEnd_ = mark;
        return;
    }
    follow();
    finishGestures();
    const PatchPlace here = place();
    if (mark == Mark::saved) std::erase_if(files_, [&](const auto& file) { return file.second == here; });
    files_[state_] = here;
}

// ---- back and forth ---------------------------------------------------------------------------------------------

bool History::undo() {
    follow();
    if (commands_ > 0) return false;
    finishGestures();
    if (done_ == 0 || !travel(steps_[done_ - 1], true)) return false;
    --done_;
    return true;
}

// Where each step keeps a whole patch, the last state is fetched alone, and those between move on to the steps that lead to
// them.
bool History::undoTo(StateId state) {
    follow();
    if (commands_ > 0) return false;
    finishGestures();
    std::size_t first = done_;
    while (first > 0 && steps_[first - 1].before != state) --first;
    if (first == 0) return false;
    --first;
    const auto begin = steps_.begin() + static_cast<std::ptrdiff_t>(first),
               end = steps_.begin() + static_cast<std::ptrdiff_t>(done_);
    if (std::any_of(begin, end, [](const Step& step) { return step.kind != Kind::patch; })) {
        while (done_ > first)
            if (!undo()) return false;
        return true;
    }
    if (!travel(*begin, true)) return false;
    for (auto step = begin; step + 1 != end; ++step) std::swap(step->other, (step + 1)->other);
    done_ = first;
    return true;
}

bool History::redo() {
    follow();
    if (commands_ > 0) return false;
    finishGestures();
    if (done_ == steps_.size() || !travel(steps_[done_], false)) return false;
    ++done_;
    return true;
}

std::string History::undoName() const { return done_ > 0 ? steps_[done_ - 1].name : std::string(); }
std::string History::redoName() const { return done_ < steps_.size() ? steps_[done_].name : std::string(); }

bool History::travel(Step& step, bool back) {
    isTravelling_ = true;
    const bool isDone = apply(step, back);
    isTravelling_ = false;
    loadsSeen_ = instrument_.patchesLoaded();
    if (isDone) state_ = back ? step.before : step.after;
    beginOpenGesturesAnew();
    return isDone;
}

bool History::apply(Step& step, bool back) {
    switch (step.kind) {
        case Kind::gesture:
        case Kind::values: writeValues(step, back); return true;
        case Kind::copyToOther:
            std::swap(other_, step.other);
            std::swap(otherId_, step.otherId);
            return true;
        case Kind::patch:
        case Kind::compare: break;
    }
    State& other = step.kind == Kind::compare ? other_ : step.other;
    const State was = exchangePatch(other);
    if (was == nullptr) return false;
    other = was;
    if (step.kind == Kind::compare) {
        otherId_ = state_;
        slot_ = 1 - slot_;
    }
    return true;
}

// Values that a command wrote are told to the host as those of a patch: no host wants to record them one by one.
void History::writeValues(const Step& step, bool back) {
    for (const Change& change : step.changes) {
        const float value = back ? change.before : change.after;
        if (step.kind == Kind::gesture)
            edits_.change(change.index, value);
        else
            edits_.write(change.index, value);
    }
    if (step.kind == Kind::values && host() != nullptr) host()->patchChanged();
}

// Puts a patch in force and returns the one that was. Null, with that in force, if memory is short.
History::State History::exchangePatch(const State& state) {
    const State was = take();
    if (was == nullptr) return nullptr;
    if (!states_.put(*state)) {
        states_.put(*was);
        return nullptr;
    }
    loadsSeen_ = instrument_.patchesLoaded();
    if (places_ != nullptr) {
        places_->showPlace(state->place);
        places_->showWaveNames(state->waveNames);
    }
    if (host() != nullptr) host()->patchChanged();
    return was;
}

// ---- two patches ------------------------------------------------------------------------------------------------

// Coming straight back leaves no steps.
bool History::compare() {
    follow();
    if (commands_ > 0) return false;
    finishGestures();
    if (done_ > 0 && steps_[done_ - 1].kind == Kind::compare) {
        if (!travel(steps_[done_ - 1], true)) return false;
        --done_;
        dropRedo();
        return true;
    }
    if (other_ == nullptr) other_ = take();
    if (other_ == nullptr) return false;
    if (otherId_ == 0) otherId_ = state_;
    Step step{Kind::compare, "Compare with " + otherSlotName(), state_, otherId_};
    if (!travel(step, false)) return false;
    state_ = step.before;
    push(std::move(step));
    return true;
}

bool History::copyToOther() {
    follow();
    if (commands_ > 0) return false;
    finishGestures();
    State copy = take();
    if (copy == nullptr) return false;
    if (other_ == nullptr) {
        other_ = copy;
        otherId_ = state_;
        return true;
    }
    Step step{Kind::copyToOther, "Copy to " + otherSlotName(), state_, state_};
    step.other = std::exchange(other_, std::move(copy));
    step.otherId = std::exchange(otherId_, state_);
    push(std::move(step));
    return true;
}

}  // namespace vantoric
