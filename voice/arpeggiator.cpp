#include "voice/arpeggiator.h"

#include <algorithm>
#include <bit>

#include "base/math.h"
#include "base/numbers.h"
#include "base/parameters.h"

namespace vantoric {

namespace {

namespace par = parameter;

enum class Walk : std::uint8_t { None, Up, Down, AlternateUp, AlternateDown, Pop, Pop2, ChordGate, Stack, Root };

constexpr int typeOff = 0;
constexpr int octavePeriod = 12;
constexpr int noEnd = 33;
constexpr int forcedWrap = 126;  // the event code that starts a new pass
constexpr int loopCode = -2, endCode = -3;
constexpr int thirdCode = 300, tenthCode = 301;
constexpr int glideDown = 100, glideUp = 200;  // codes of a glide: these + semitones

using OctaveRow = std::array<std::int8_t, octavePeriod>;

constexpr OctaveRow oneOctave = {};
constexpr OctaveRow twoUp = {0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1};
constexpr OctaveRow twoDown = {1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0};
constexpr OctaveRow threeUp = {-1, 0, 1, -1, 0, 1, -1, 0, 1, -1, 0, 1};
constexpr OctaveRow threeDown = {1, 0, -1, 1, 0, -1, 1, 0, -1, 1, 0, -1};
constexpr OctaveRow fourUp = {-1, 0, 1, 2, -1, 0, 1, 2, -1, 0, 1, 2};
constexpr OctaveRow fourDown = {2, 1, 0, -1, 2, 1, 0, -1, 2, 1, 0, -1};

struct TypeRow {
    Walk walk = Walk::None;
    const OctaveRow* octaves = &oneOctave;
};

// By list index; separators run and play nothing.
constexpr std::array<TypeRow, 19> types = {{
    {},
    {},
    {Walk::Up, &oneOctave},
    {Walk::Up, &twoUp},
    {Walk::Up, &threeUp},
    {Walk::Up, &fourUp},
    {Walk::Down, &oneOctave},
    {Walk::Down, &twoDown},
    {Walk::Down, &threeDown},
    {Walk::Down, &fourDown},
    {Walk::AlternateUp, &oneOctave},
    {Walk::AlternateDown, &oneOctave},
    {Walk::Pop, &oneOctave},
    {Walk::Pop2, &oneOctave},
    {},
    {Walk::ChordGate, &oneOctave},
    {},
    {Walk::Stack, &oneOctave},
    {Walk::Root, &oneOctave},
}};

TypeRow typeAt(int index) { return index < static_cast<int>(types.size()) ? types[static_cast<std::size_t>(index)] : TypeRow{}; }

// Steps per sixteenth note.
constexpr std::array<double, 13> speeds = {0.25, 0.33333, 0.5, 0.66666, 1, 1.33333, 1.5, 2, 3, 4, 6, 8, 16};

// Event column: a velocity, -1 release, -2 loop, -3 end, 0 continue.
constexpr std::array<std::int16_t, 17> eventCodes = {0,   0, 14, 28, 42,       56,      70, 84,        98,
                                                     127, 0, -1, 0,  loopCode, endCode, 0,  forcedWrap};

// Pitch column: semitones, or a code from glideDown on.
// clang-format off
constexpr std::array<std::int16_t, 96> pitchCodes = {
    0,   1,   2,   3,   4,   5,   6,   7,   8,   9,   10,  11,  12,  16,  17,  19,         // 0
    24,  -24, -19, -17, -16, -12, -11, -10, -9,  -8,  -7,  -6,  -5,  -4,  -3,  -2,         // 16
    -1,  0,   124, 112, 107, 106, 105, 104, 103, 102, 101, 201, 202, 203, 204, 205,        // 32
    206, 207, 212, 224, 0,   13,  14,  15,  18,  20,  21,  22,  23,  25,  26,  27,         // 48
    28,  29,  30,  31,  32,  33,  34,  35,  36,  -36, -35, -34, -33, -32, -31, -30,        // 64
    -29, -28, -27, -26, -25, -23, -22, -21, -20, -18, -15, -14, -13, 0,   thirdCode, tenthCode,  // 80
};
// clang-format on

// Semitones to the third above each pitch class, C to B, in the scale of C major.
constexpr std::array<std::int8_t, 12> thirds = {4, 3, 3, 3, 3, 4, 3, 4, 3, 3, 4, 3};

// A note of a chord above its root: semitones, or the root's third plus semitones.
struct ChordNote {
    std::int8_t semitones = 0;
    bool third = false;
};
constexpr ChordNote T{0, true}, T12{12, true}, T24{24, true};

struct ChordRow {
    std::int8_t count = 0;
    std::array<ChordNote, 8> notes{};
};

// By list index; separators have no notes.
constexpr std::array<ChordRow, 24> chords = {{
    {},
    {},
    {3, {{{0}, T, {7}}}},
    {4, {{{0}, T, {7}, {12}}}},
    {6, {{{0}, T, {7}, {12}, {19}, T12}}},
    {4, {{{0}, {12}, {19}, T12}}},
    {8, {{{0}, {7}, {12}, {19}, T12, {24}, {31}, T24}}},
    {},
    {2, {{{0}, {7}}}},
    {3, {{{0}, {7}, {12}}}},
    {4, {{{0}, {7}, {12}, {19}}}},
    {},
    {2, {{{0}, T}}},
    {3, {{{0}, {12}, T}}},
    {3, {{{0}, {12}, T12}}},
    {4, {{{0}, {12}, T, T12}}},
    {},
    {2, {{{0}, {3}}}},
    {3, {{{0}, {3}, {7}}}},
    {4, {{{0}, {3}, {7}, {12}}}},
    {},
    {2, {{{0}, {4}}}},
    {3, {{{0}, {4}, {7}}}},
    {4, {{{0}, {4}, {7}, {12}}}},
}};
constexpr int firstChord = 2;

template <std::size_t count>
int codeAt(const std::array<std::int16_t, count>& codes, float value) {
    const auto index = static_cast<std::size_t>(listIndex(value));
    return index < count ? codes[index] : 0;
}

int thirdAbove(int root) { return thirds[static_cast<std::size_t>(root < 0 ? 0 : root % 12)]; }

// The keys of a chord on a root, 0 to 127; keys beyond 127 are left out.
KeySet chordKeys(int chord, int root) {
    KeySet keys;
    if (chord >= static_cast<int>(chords.size())) return keys;
    const ChordRow& row = chords[static_cast<std::size_t>(chord)];
    for (int i = 0; i < row.count; ++i) {
        const ChordNote note = row.notes[static_cast<std::size_t>(i)];
        const int key = root + note.semitones + (note.third ? thirdAbove(root) : 0);
        if (key <= 127) keys.add(key);
    }
    return keys;
}

template <class Function>
void forEachKey(const KeySet& keys, Function function) {
    for (int key = keys.above(-1); key >= 0; key = keys.above(key)) function(key);
}

void stopAllKeys(ArpeggiatorTarget& target) {
    for (int key = 0; key < 128; ++key) target.stopNote(key);
}

int firstFound(int key, int otherwise) { return key >= 0 ? key : otherwise; }

// `position` is never negative.
std::int64_t wholeSteps(float position) { return static_cast<std::int64_t>(position); }

// Swing delays the second to fourth step of each four by a third, two thirds and a third of a step.
float swung(float position, float swing) {
    constexpr std::array<float, 4> shares = {0.0f, 0.333f, 0.666f, 0.333f};
    return clampTo(position - shares[static_cast<std::size_t>(wholeSteps(position) % 4)] * swing, 0.0f, 1e15f);
}

// Pitch classes as bits, C lowest.
unsigned pitchClasses(const KeySet& keys) {
    unsigned classes = 0;
    forEachKey(keys, [&](int key) { classes |= 1u << (key % 12); });
    return classes;
}

// Intervals above the root, each later one overriding the earlier: thirds, the fifth, the whole tone.
constexpr std::array<std::array<int, 1>, 4> pairPatterns = {{{3}, {4}, {7}, {2}}};
constexpr std::array<std::array<int, 2>, 3> triadPatterns = {{{3, 7}, {4, 7}, {5, 7}}};

// The root class of the last pattern that fits, at the highest class where it does; -1 for none.
template <class Patterns>
int rootClass(unsigned classes, const Patterns& patterns) {
    int root = -1;
    for (const auto& pattern : patterns)
        for (int c = 0; c < 12; ++c) {
            unsigned wanted = 1u << c;
            for (const int interval : pattern) wanted |= 1u << ((c + interval) % 12);
            if (classes == wanted) root = c;
        }
    return root;
}

}  // namespace

int chordRoot(const KeySet& keys) {
    const unsigned classes = pitchClasses(keys);
    const int size = std::popcount(classes);
    const int root = size == 2 ? rootClass(classes, pairPatterns) : size == 3 ? rootClass(classes, triadPatterns) : -1;
    if (root >= 0)
        for (int key = keys.lowest(); key >= 0; key = keys.above(key))
            if (key % 12 == root) return key;
    return keys.lowest();
}

// ---- keys -----------------------------------------------------------------------------------------------------

void Arpeggiator::noteOn(int note, int velocity, const float* layerBlock, ArpeggiatorTarget& target) {
    if (listIndex(layerBlock[par::ArpType]) == typeOff) return target.startNote(note, velocity);
    if (stackMode_) return stackOn(note, velocity, listIndex(layerBlock[par::ArpChord]), target);
    if (rootMode_) return rootOn(note, velocity, target);
    if (!sequenceKeys_.any()) {
        ticks_ = 0;
        lastStep_ = -1;
    }
    if (chordExpanded_) sequenceKeys_.clear();
    sequenceKeys_.add(note);
    heldKeys_.add(note);
}

void Arpeggiator::noteOff(int note, const float* layerBlock, ArpeggiatorTarget& target) {
    if (listIndex(layerBlock[par::ArpType]) == typeOff) return target.stopNote(note);
    if (stackMode_) return stackOff(note, listIndex(layerBlock[par::ArpChord]), target);
    if (rootMode_) return rootOff(note, target);
    if (!chordExpanded_) {
        sequenceKeys_.remove(note);
        return;
    }
    heldKeys_.remove(note);
    if (!heldKeys_.any()) sequenceKeys_.clear();
}

void Arpeggiator::stackOn(int note, int velocity, int chord, ArpeggiatorTarget& target) {
    const KeySet before = sequenceKeys_;
    heldKeys_.add(note);
    sequenceKeys_.add(note);
    rebuildChord(note, chord);
    forEachKey(sequenceKeys_, [&](int key) {
        if (before.has(key)) target.stopNote(key);
        target.startNote(key, velocity);
    });
}

void Arpeggiator::stackOff(int note, int chord, ArpeggiatorTarget& target) {
    if (chord < firstChord)
        target.stopNote(note);
    else
        forEachKey(chordKeys(chord, note), [&](int key) { target.stopNote(key); });
    heldKeys_.remove(note);
    if (heldKeys_.any()) return;
    stopAllKeys(target);
    sequenceKeys_.clear();
}

void Arpeggiator::rootOn(int note, int velocity, ArpeggiatorTarget& target) {
    heldKeys_.add(note);
    const int root = chordRoot(heldKeys_);
    if (root != lastRoot_) {
        stopAllKeys(target);
        if (root > 0) {
            target.startNote(root, velocity);
            lastRoot_ = root;
        }
    }
    if (root >= 0) sequenceKeys_.add(root);
}

void Arpeggiator::rootOff(int note, ArpeggiatorTarget& target) {
    heldKeys_.remove(note);
    if (!heldKeys_.any()) {
        stopAllKeys(target);
        lastRoot_ = -1;
        return;
    }
    if (note != lastRoot_) return;
    const int root = chordRoot(heldKeys_);
    stopAllKeys(target);
    if (root > 0) target.startNote(root, 64);
    lastRoot_ = root;
    if (root >= 0) sequenceKeys_.add(root);
}

void Arpeggiator::rebuildChord(int root, int chord) {
    if (chord < firstChord) return;
    sequenceKeys_.clear();
    if (root >= 0) sequenceKeys_ = chordKeys(chord, root);
}

// ---- the control tick -----------------------------------------------------------------------------------------

void Arpeggiator::reset(const float* layerBlock) {
    *this = Arpeggiator{};
    readSteps(layerBlock);
    readMode(listIndex(layerBlock[par::ArpType]), listIndex(layerBlock[par::ArpChord]));
}

void Arpeggiator::clearKeys() {
    sequenceKeys_.clear();
    previousKeys_.clear();
    heldKeys_.clear();
}

void Arpeggiator::readSteps(const float* layerBlock) {
    for (std::size_t i = 0; i < stepCodes_.size(); ++i) {
        stepCodes_[i] = codeAt(eventCodes, layerBlock[par::ArpVol1 + i]);
        stepPitches_[i] = codeAt(pitchCodes, layerBlock[par::ArpStp1 + i]);
    }
}

void Arpeggiator::readMode(int type, int chord) {
    typeMemory_ = type;
    chordMemory_ = chord;
    stackMode_ = typeAt(type).walk == Walk::Stack;
    rootMode_ = typeAt(type).walk == Walk::Root;
}

void Arpeggiator::tick(const float* layerBlock, const EngineState& engine, ArpeggiatorTarget& target) {
    const int type = listIndex(layerBlock[par::ArpType]);
    if (type == typeOff) {
        if (active_) stopAllKeys(target);
        active_ = false;
        return;
    }
    active_ = true;
    readSteps(layerBlock);
    const int chord = listIndex(layerBlock[par::ArpChord]);
    if (type != typeMemory_ || chord != chordMemory_) {
        stopAllKeys(target);
        clearKeys();
    }
    readMode(type, chord);
    if (stackMode_ || rootMode_) return;

    const bool anyKey = sequenceKeys_.any();
    rebuildChord(sequenceKeys_.lowest(), chord);
    chordExpanded_ = chord != 0;

    const bool trigger = listIndex(layerBlock[par::ArpRetri]) != 0;
    if (ticks_ == 0) beginSequence(type, trigger);
    if (trigger && ended_) return;
    const float exact = sequencePosition(layerBlock, engine, trigger);
    if (trigger && wholeSteps(exact) % loopLength_ > endStep_) {
        stopAllKeys(target);
        ended_ = true;
        return;
    }
    const float position = swung(exact, layerBlock[par::ArpSwing]);
    const int step = static_cast<int>(wholeSteps(position) % loopLength_);
    if (isNewStep(step, type)) playStep(step, type, anyKey, target);
    slide(step, position - static_cast<float>(wholeSteps(position)));
    ++ticks_;
    lastStep_ = step;
    previousKeys_ = sequenceKeys_;
}

// Steps since the sequence or the song began.
float Arpeggiator::sequencePosition(const float* layerBlock, const EngineState& engine, bool trigger) const {
    const auto index = static_cast<std::size_t>(listIndex(layerBlock[par::ArpSpeed]));
    const double speed = speeds[std::min(index, speeds.size() - 1)];
    const double sixteenths =
        trigger ? static_cast<double>(ticks_) / engine.ticksPerSecond * engine.tempoBpm / 15.0 : engine.songPosition * 4.0;
    return static_cast<float>(clampTo(sixteenths * speed, 0.0, 1e15));
}

void Arpeggiator::beginSequence(int type, bool trigger) {
    loopLength_ = static_cast<std::uint8_t>(stepCodes_.size());
    endStep_ = noEnd;
    ended_ = false;
    for (std::size_t i = stepCodes_.size() - 1; i > 0; --i) {
        const auto step = static_cast<std::uint8_t>(i);
        if (stepCodes_[i] == loopCode) loopLength_ = step;
        if (stepCodes_[i] == endCode) (trigger ? endStep_ : loopLength_) = step;
    }
    octaveCounter_ = octavePeriod - 1;
    placeWalk(type);
}

// Places the walk so that its first move arrives at its first key.
void Arpeggiator::placeWalk(int type) {
    const int lowest = sequenceKeys_.lowest();
    const int highest = sequenceKeys_.highest();
    switch (typeAt(type).walk) {
        case Walk::Up: position_ = highest; break;
        case Walk::Down: position_ = lowest; break;
        case Walk::AlternateUp:
            position_ = firstFound(sequenceKeys_.above(lowest), lowest);
            direction_ = -1;
            break;
        case Walk::AlternateDown:
            position_ = firstFound(sequenceKeys_.below(highest), highest);
            direction_ = 1;
            break;
        case Walk::Pop:
            position_ = highest;
            direction_ = 1;
            break;
        case Walk::Pop2:
            savedPosition_ = lowest;
            position_ = sequenceKeys_.above(lowest);
            direction_ = 0;
            break;
        case Walk::ChordGate: chordGateFresh_ = false; break;
        default: break;
    }
}

// A step is new when its number changes; a chord gate also starts one for each key that joins.
bool Arpeggiator::isNewStep(int step, int type) {
    if (typeAt(type).walk != Walk::ChordGate) return step != lastStep_;
    if (step != 0) chordGateFresh_ = true;
    return step != lastStep_ || sequenceKeys_.without(previousKeys_).any();
}

void Arpeggiator::playStep(int step, int type, bool anyKey, ArpeggiatorTarget& target) {
    const int code = stepCodes_[static_cast<std::size_t>(step)];
    if (code != 0) target.releaseAllEnvelopes();
    if (code < 1 || !anyKey) return;
    noteVelocity_ = static_cast<std::uint8_t>(code);
    int pitch = stepPitches_[static_cast<std::size_t>(step)];
    if (pitch == thirdCode) pitch = thirdAbove(sequenceKeys_.lowest());
    if (pitch == tenthCode) pitch = thirdAbove(sequenceKeys_.lowest()) + 12;
    slideFactor_ = 1.0f;
    walk(type, pitch <= glideDown ? pitch : 0, target);
}

void Arpeggiator::walk(int type, int offset, ArpeggiatorTarget& target) {
    const bool wrap = noteVelocity_ == forcedWrap;
    switch (typeAt(type).walk) {
        case Walk::Up: walkUp(wrap); break;
        case Walk::Down: walkDown(wrap); break;
        case Walk::AlternateUp: walkAlternating(wrap, 1, sequenceKeys_.lowest()); break;
        case Walk::AlternateDown: walkAlternating(wrap, -1, sequenceKeys_.highest()); break;
        case Walk::Pop: walkPedal(true, wrap); break;
        case Walk::Pop2: walkPedal(false, wrap); break;
        case Walk::ChordGate: return playChord(type, offset, target);
        default: return;
    }
    play(position_, type, offset, target);
}

void Arpeggiator::walkUp(bool wrap) {
    const int next = wrap ? -1 : sequenceKeys_.above(position_);
    if (next < 0) stepOctave();
    position_ = firstFound(next, sequenceKeys_.lowest());
}

void Arpeggiator::walkDown(bool wrap) {
    const int next = wrap ? -1 : sequenceKeys_.below(position_);
    if (next < 0) stepOctave();
    position_ = firstFound(next, sequenceKeys_.highest());
}

// Turns round where there is no further key. The octave steps at the turn that leads into `octaveDirection`; a key
// without neighbours is `lonelyKey`.
void Arpeggiator::walkAlternating(bool wrap, int octaveDirection, int lonelyKey) {
    const auto neighbour = [this] { return direction_ == 1 ? sequenceKeys_.above(position_) : sequenceKeys_.below(position_); };
    int next = wrap ? -1 : neighbour();
    if (next < 0) {
        direction_ = direction_ == 1 ? -1 : 1;
        if (direction_ == octaveDirection) stepOctave();
        next = neighbour();
    }
    position_ = firstFound(next, lonelyKey);
}

// The lowest key on every other visit, between them a walk over the others.
void Arpeggiator::walkPedal(bool upward, bool wrap) {
    const int lowest = sequenceKeys_.lowest();
    if (direction_ != 0) {
        savedPosition_ = position_;
        position_ = lowest;
        direction_ = 0;
        return;
    }
    int next = wrap ? -1 : upward ? sequenceKeys_.above(savedPosition_) : sequenceKeys_.below(savedPosition_);
    if (next < 0 || (!upward && next <= lowest)) {
        next = upward ? firstFound(sequenceKeys_.above(lowest), lowest) : sequenceKeys_.highest();
        stepOctave();
    }
    position_ = next;
    direction_ = 1;
}

void Arpeggiator::playChord(int type, int offset, ArpeggiatorTarget& target) {
    stepOctave();
    const KeySet keys = chordGateFresh_ ? sequenceKeys_ : sequenceKeys_.without(previousKeys_);
    forEachKey(keys, [&](int key) { play(key, type, offset, target); });
}

void Arpeggiator::play(int key, int type, int offset, ArpeggiatorTarget& target) const {
    if (key < 0) return;
    const int sum = key + 12 * (*typeAt(type).octaves)[octaveCounter_] + offset;
    const auto note = static_cast<std::int8_t>(static_cast<std::uint8_t>(sum));  // beyond 127 turns negative
    target.startNote(note < 0 ? 0 : note, noteVelocity_);
}

// A glide runs across the length of its step.
void Arpeggiator::slide(int step, float fraction) {
    constexpr double semitone = 1.059463;
    const int pitch = stepPitches_[static_cast<std::size_t>(step)];
    if (pitch < glideDown || pitch >= thirdCode) return;
    const int semitones = pitch < glideUp ? glideDown - pitch : pitch - glideUp;
    slideFactor_ = static_cast<float>(math::pow(semitone, semitones * static_cast<double>(fraction)));
}

}  // namespace vantoric
