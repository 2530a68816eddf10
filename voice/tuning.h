// Dynamic microtuning: the voices of a layer are retuned by the chord that they sound together.
#pragma once

#include <array>
#include <cstdint>

#include "base/engine_state.h"
#include "voice/envelope.h"

namespace vantoric {

// What the pass reads and writes of a voice. The pointers stand for the life of the layer.
struct TunedVoice {
    std::int8_t* note = nullptr;       // a negative one is set to 0
    const Envelope* volume = nullptr;  // state and phase tell whether the voice counts
    double* tuneOffset = nullptr;      // cents, -30 to 30
    double* tuneFactor = nullptr;      // frequency factor, 0.9 to 1.1
};

// One per layer; audio thread. Allocates nothing, cannot fail.
class Retuner {
public:
    // One pass, to run once a tick ahead of the voice ticks. voices: by voice index. microtuning: list index of
    // `Microtun`, rows above 10 read as 10. oneVoice: the layer is in a one-voice play mode. Below row 7 nothing
    // changes while fewer than two voices are held: a lone note keeps its tuning.
    void retune(const std::array<TunedVoice, voiceCount>& voices, int microtuning, bool oneVoice);

    std::array<double, 12> chordCents{};       // by pitch class, before scaling
    std::array<std::uint8_t, 256> keyVoice{};  // by key: 64 + index of a voice that sounds it, 0 for none

private:
    using Voices = std::array<TunedVoice, voiceCount>;

    // All that the offsets follow from. row 0: none.
    struct Chord {
        int row = 0;
        std::uint32_t counted = 0;  // the voices that are, as bits
        std::array<std::int8_t, voiceCount> notes{};
        bool operator==(const Chord&) const = default;
    };

    static Chord chordOf(const Voices& voices, int row);
    void tune(const Voices& voices, const Chord& chord);
    unsigned census(const Chord& chord);
    void stretchOctaves(const Voices& voices, double octave, double low, double high);
    void setFactor(const TunedVoice& voice, std::size_t index);

    // The last chord and what it led to, as chords mostly stand still.
    Chord standing_;
    std::array<double, voiceCount> standingOffset_{};
    // The factors computed last.
    std::array<double, voiceCount> lastOffset_{};
    std::array<double, voiceCount> lastFactor_ = [] {
        std::array<double, voiceCount> ones;
        ones.fill(1.0);
        return ones;
    }();
};

}  // namespace vantoric
