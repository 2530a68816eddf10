// One effect slot: a box that can turn into any of the instrument's effects. It holds one of each family,
// so that a change of type allocates nothing.
#pragma once

#include <array>

#include "base/random.h"
#include "effects/chorus.h"
#include "effects/delay2.h"
#include "effects/drive_core.h"
#include "effects/effect_texts.h"
#include "effects/equalizer.h"
#include "effects/filter_degrader.h"
#include "effects/reverb_core.h"
#include "effects/stereo.h"
#include "effects/type_table.h"
#include "effects/vocoder_core.h"

namespace vantoric {

// The audio thread owns a slot and feeds it right before the audio that it governs. setType and
// setParameter may also come from the window's thread: nothing is freed or moved, so the worst that can
// happen is a click.
class Multieffect {
public:
    // Allocates all delay lines (about twenty megabytes, mapped only as they are used).
    explicit Multieffect(RandomSources& random);
    Multieffect(const Multieffect&) = delete;
    Multieffect& operator=(const Multieffect&) = delete;

    // Silences the family of the current type; off and separators have nothing to silence. Cheap at any
    // moment.
    void clearState();
    // Silences every family.
    void clearAll();
    // The engine's internal rate in Hz. Returns at once if it is the one last given; clears nothing.
    void setSampleRate(float rate);
    // Turns the slot into a type, 0 to 76; other numbers read as 0. A type other than the last one given
    // starts with silent delay lines. Returns true if it was another type.
    bool setType(int type);
    // Index 0 is the mix, 1 to 4 the parameters, values 0 to 1. Every family gets it. Indices 5 to 7 are
    // only kept, others ignored.
    void setParameter(int index, float value);
    // The value last given; 0 for an index outside 0 to 7.
    float getParameter(int index) const;
    // Passes the song's tempo and its position in quarter notes.
    void setTempo(float beatsPerMinute, double songPosition);
    // Processes `count` samples in place; nothing happens for a count of 0 or less. A block in which an
    // effect stops giving finite numbers is silenced and the effect cleared.
    void process(float* left, float* right, int count);

    // Texts: `text` takes effectTextSize characters.
    // The slot's name of the current type; "Illegal type" above 73.
    void getTypeName(char* text) const;
    void getParameterName(int index, char* text) const;
    // What a parameter shows at its present value.
    void getParameterDisplay(int index, char* text) const;

    int type() const { return type_; }
    // True once construction has ended.
    bool ready() const { return ready_; }

private:
    void setVariant(const EffectType& row);
    void runFamily(float* left, float* right, int count);

    bool ready_ = false;
    int type_ = 0;
    int lastType_ = -1;
    ReverbCore reverb_;
    Delay2 delay_;
    Chorus modulation_;
    Filter degrade_;
    Stereo dynamics_;
    DriveCore drive_;
    VocoderCore vocoder_;
    Equalizer equalizer_;
    std::array<float, 8> parameters_;
    float lastSampleRate_ = 0.0f;
};

}  // namespace vantoric
