// What was copied of a layer: its parameters, custom waves and samples.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "library/patch_parts.h"

namespace vantoric {

// The sound of an oscillator's sample.
struct CopiedSample {
    std::vector<std::int16_t> samples;
    std::int32_t loopStart = 0, loopEnd = 0;  // samples
    std::uint32_t sampleRate = 44100;         // Hz
};
CopiedSample copyOf(const Sample& sample);

// Sections of a layer that are pasted alone.
enum class LayerSection { arpeggiator, stepLfo };

// Any thread but the audio thread, one at a time; each call takes its turn at the engine of the parts. Layers are 0 to 3,
// oscillators 0 to 2.
class LayerClipboard {
public:
    static constexpr int firstNumber = 24, lastNumber = 322;                 // of a layer's parameters
    static constexpr int firstOscillatorNumber = 24, endOfOscillators = 90;  // one member an oscillator, in threes

    bool isEmpty() const { return isEmpty_; }
    // The oscillator that was copied alone; -1: none was copied.
    int oscillator() const { return oscillator_; }

    // Copies a whole layer; pasted alone, its oscillator 1 is meant. With short memory throws std::bad_alloc and keeps
    // what was copied before.
    void copyLayer(const PatchParts& parts, int layer);
    void chooseOscillator(int oscillator) { oscillator_ = oscillator; }

    // Puts what was copied into a layer, of which the sound stops for a moment; the worker is asked to rebuild. False,
    // with the layer as it was, if memory is short. Nothing was copied: they change nothing.
    bool pasteLayer(const PatchParts& parts, int layer) const;
    // The chosen oscillator as oscillator `o`: the families of three in numbers 24 to 89, its wave and its sample.
    bool pasteOscillator(const PatchParts& parts, int layer, int o) const;
    void pasteSection(const PatchParts& parts, int layer, LayerSection section) const;

private:
    struct Oscillator {
        CustomCycle wave{};
        CopiedSample sample;
    };

    bool isEmpty_ = true;
    int oscillator_ = -1;
    std::array<float, lastNumber + 1> values_{};
    std::array<Oscillator, oscillatorCount> oscillators_;
};

// Puts a sound into a holder of these parts, whose levels the worker is to make. False, with the holder as it was, if memory
// is short.
bool putSample(const PatchParts& parts, Sample& holder, const CopiedSample& copied);

}  // namespace vantoric
