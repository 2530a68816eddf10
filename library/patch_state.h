// What a whole patch is at one moment, kept cheaply: states that have a wave or a sample in common share it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/instrument.h"
#include "library/shared_contents.h"
#include "sound/custom_wave.h"

namespace vantoric {

// Where a patch stands in the lists, as whoever keeps the lists names it: nothing else reads these texts.
struct PatchPlace {
    std::string category, patch;
    std::string file{};  // the name of its file; empty for a patch in no list
    // Saving goes by the name: one that a host renamed stands where a patch of that name stands.
    bool operator==(const PatchPlace& other) const { return category == other.category && patch == other.patch; }
};

// The wavetables that the custom waves were made of, as far as that is known: layer x 3 + oscillator.
using WaveNames = std::array<std::string, chunk::waveCount>;

using PatchValues = std::array<float, parameterCount>;  // by host index, 0 to 1

// The sound of an oscillator, whichever kind the oscillator plays.
struct KeptSample {
    std::vector<std::int16_t> samples;
    std::int32_t loopStart = 0, loopEnd = 0;  // samples
    std::uint32_t sampleRate = 44100;         // Hz
    bool operator==(const KeptSample&) const = default;
};

// Contents are shared by what they hold: equal contents of two states are one object, as long as one maker took both.
struct PatchState {
    template <class Content>
    using Shared = std::shared_ptr<const Content>;

    Shared<PatchValues> values;
    std::string name;
    PatchPlace place;
    WaveNames waveNames;
    std::array<Shared<CustomCycle>, chunk::waveCount> waves;   // layer x 3 + oscillator
    std::array<Shared<KeptSample>, chunk::waveCount> samples;  // null: no sample
    std::array<unsigned, chunk::waveCount> waveGenerations{};  // of the slots (see CustomWaveSlot) when the state was taken

    // Whether waves and samples are the same. A cycle that the worker has smoothed in between is the one that it was.
    bool hasSameSounds(const PatchState& other) const;
};

// Takes states of the patch in force and puts them back. Any thread but the audio thread, one at a time; each call takes its
// turn at the engine.
class PatchStates {
public:
    explicit PatchStates(Instrument& instrument) : instrument_(instrument) {}

    // Costs a copy of what has changed since the state before, and comparing the rest. May throw std::bad_alloc.
    std::shared_ptr<const PatchState> take(const PatchPlace& place, WaveNames waveNames = {});

    // Loads a state as a patch is loaded, in silence; all values are then exactly those of the state, and the program has
    // its name. False with short memory: the patch may then be half loaded. Place and names of waves are for the caller to
    // show.
    bool put(const PatchState& state);

    // Bytes of all contents that any state still holds, and of those of the state that was taken last.
    std::size_t bytesKept() const { return values_.bytes() + waves_.bytes() + samples_.bytes(); }
    std::size_t bytesOfLast() const;

private:
    std::shared_ptr<const CustomCycle> takeWave(std::size_t index, const CustomWaveSlot& slot);
    std::shared_ptr<const KeptSample> takeSample(std::size_t index, const Sample& sample);
    ChunkBytes chunkOf(const PatchState& state) const;

    Instrument& instrument_;
    SharedContents<PatchValues> values_;
    SharedContents<CustomCycle> waves_;
    SharedContents<KeptSample> samples_;
    std::shared_ptr<const PatchState> last_;
};

}  // namespace vantoric
