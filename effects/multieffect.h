// One effect slot: a box that can turn into any of the instrument's effects. It holds one of each family,
// so that a change of type allocates nothing.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

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

// One thread at a time, the audio thread, calls process. All else may come from any thread, also while it runs: what is
// set is kept in atomics, and carried out at the head of the next block that is processed.
class Multieffect {
public:
    // Allocates all delay lines (about twenty megabytes, mapped only as they are used).
    explicit Multieffect(RandomSources& random);
    Multieffect(const Multieffect&) = delete;
    Multieffect& operator=(const Multieffect&) = delete;

    // The effect of the current type starts with silent delay lines and filters at the next block. Cheap at any moment.
    void clearState();
    // The same for every family: one that is not in use is silenced whenever one of its types is chosen.
    void clearAll() { clearState(); }
    // The engine's internal rate in Hz, above 0. Clears nothing.
    void setSampleRate(float rate) { sampleRate_.store(rate, std::memory_order_relaxed); }
    // Turns the slot into a type, 0 to 76; other numbers read as 0. A type other than the last one given
    // starts with silent delay lines. Returns true if it was another type.
    bool setType(int type);
    // Index 0 is the mix, 1 to 4 the parameters, values 0 to 1; whichever family is chosen gets them. Indices 5 to 7
    // are only kept, others ignored.
    void setParameter(int index, float value);
    // The value last given; 0 for an index outside 0 to 7.
    float getParameter(int index) const;
    // Passes the song's tempo and its position in quarter notes.
    void setTempo(float beatsPerMinute, double songPosition);
    // Processes `count` samples in place; nothing happens for a count of 0 or less. A block in which an
    // effect stops giving finite numbers is silenced and the effect cleared. How the sound is cut into blocks
    // does not matter, but for effects that pass long ones unchanged: "Amp Sim" more than 256 samples,
    // "Degrader" and the vocoders more than 16384.
    void process(float* left, float* right, int count);

    // In how many blocks `process` had to do that so far. The audio thread's.
    std::uint32_t silencedBlocks() const { return silenced_; }

    // Has the system map the memory that the delay lines of a type use (up to eight megabytes), so that the audio
    // thread need not wait for it. Not for the audio thread; a second time costs little. Best before the type is set,
    // useful as soon as possible after.
    void touchMemory(int type);

    // Texts: `text` takes effectTextSize characters.
    // The slot's name of the current type; "Illegal type" above 73.
    void getTypeName(char* text) const;
    void getParameterName(int index, char* text) const;
    // What a parameter shows at its present value.
    void getParameterDisplay(int index, char* text) const;

    // The type last given, 0 before the first.
    int type() const { return typeOf(wanted_.load(std::memory_order_relaxed)); }
    // True once construction has ended.
    bool ready() const { return ready_; }

private:
    // A start of an effect: the type in the low byte, above it a count that every change of type and every clear raises.
    using Start = std::uint32_t;
    static constexpr int noType = 255;
    static constexpr Start firstCount = 256;
    static int typeOf(Start start) { return (start & 255) == noType ? 0 : static_cast<int>(start & 255); }

    // The rotary cabinet's slow sweep steps by this many samples, whatever the blocks.
    static constexpr int sweepStep = 64;

    // Calls action with the family's object; with none for types without.
    template <class Action>
    void withFamily(EffectFamily family, Action action);
    void feed(const EffectType& row);
    void clearFamily(const EffectType& row);

    // From any thread.
    std::atomic<Start> wanted_{noType};
    std::array<std::atomic<float>, 8> parameters_;
    std::atomic<float> sampleRate_{44100.0f}, tempo_{120.0f};
    std::atomic<double> songPosition_{0.0};
    bool ready_ = false;

    // The audio thread's.
    Start current_ = noType;
    float familiesRate_ = 0.0f;
    std::uint32_t silenced_ = 0;
    ReverbCore reverb_;
    Delay2 delay_;
    Chorus modulation_;
    Filter degrade_;
    Stereo dynamics_;
    DriveCore drive_;
    VocoderCore vocoder_;
    Equalizer equalizer_;
};

}  // namespace vantoric
