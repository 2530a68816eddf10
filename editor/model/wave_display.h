// The wave of an oscillator, as its display draws it, and the markers of its sample.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "editor/model/display_traces.h"
#include "editor/model/voice_on_show.h"
#include "engine/instrument.h"
#include "library/parameter_edits.h"

namespace vantoric {

// Pixels up from the middle line at each column of `trace`, of a cycle that fills the width. cycle: 2048 samples.
void drawCycle(std::span<const std::int16_t> cycle, float halfHeight, std::span<float> trace);

// One an oscillator. Window's thread. Waves and samples are read as they stand: while they are exchanged a refresh may show
// half of each.
class WaveDisplay {
public:
    // oscillator: 0 to 2.
    WaveDisplay(Instrument& instrument, int oscillator) : instrument_(instrument), oscillator_(oscillator) {}

    // Draws anew what the oscillator of layer 0 to 3 plays, if it has become another or is dirty; noise always. True if it
    // did. voice: that of the layer on show.
    bool refresh(int layer, const std::optional<ShownVoice>& voice, const DisplayLayout& layout, bool isDirty = false);
    // Two traces: the wave over the middle line, or the highest and the lowest of a sample.
    const DisplayTraces& traces() const { return traces_; }

    // Whether the oscillator plays a sample and has none.
    bool lacksSample() const { return lacksSample_; }

    SampleMarkers& markers() { return markers_; }
    const SampleMarkers& markers() const { return markers_; }
    // In idle time: where a drag of the markers has ended, the sample's loop and its start point go there. True if they did.
    bool writeMarkers(int layer, ParameterEdits& edits);

private:
    // What is drawn. A change of any of it draws anew.
    struct Shown {
        int layer = 0;
        int synType = 0;
        int wave = 0;                         // list index of the type's own list
        int frame = 0;                        // of a table
        const std::int16_t* table = nullptr;  // of a bank or a sample; to tell it from another
        float position = 0.0f;                // `Pw`, of a stack that has no table
        unsigned generation = 0;              // of a custom wave
        std::int32_t length = 0, loopStart = 0, loopEnd = 0;
        float playStart = 0.0f;
        DisplayLayout layout;

        bool operator==(const Shown&) const = default;
    };

    Shown look(int layer, float position, const DisplayLayout& layout);
    void draw(const Shown& shown);
    void drawSample(const Shown& shown);
    void drawKernel(const Shown& shown, int cycles);
    void takeMarkers(const Shown& shown);
    int listOf(int layer, int number) const;

    Instrument& instrument_;
    int oscillator_;
    std::optional<Shown> drawn_;
    DisplayTraces traces_;
    SampleMarkers markers_;
    bool lacksSample_ = false;

    // What kernels without a table are run with.
    OscillatorState state_;
    EngineState engine_;
    RandomSources random_;
};

}  // namespace vantoric
