// The labels of all list parameters. A list value is stored as index / 128; "-" is a separator in a menu
// and takes up an index like any other label. The texts are what patches and hosts know, spelling included.
#pragma once

#include <span>

namespace vantoric {

// A label per index. Static, for ever valid, zero-terminated strings; at most 128 of them.
using LabelList = std::span<const char* const>;

extern const LabelList soundModeLabels;
extern const LabelList microtuneLabels;
extern const LabelList qualityLabels;
extern const LabelList pitchRangeLabels;
extern const LabelList synthesisTypeLabels;
extern const LabelList wavetableWaveLabels;
extern const LabelList superWaveLabels;
extern const LabelList noiseTypeLabels;
extern const LabelList analogWaveLabels;
extern const LabelList loopModeLabels;
extern const LabelList keyNameLabels;
extern const LabelList playModeLabels;
extern const LabelList velocityRangeLabels;
extern const LabelList keySplitLabels;
extern const LabelList midiChannelLabels;
extern const LabelList lfoWaveLabels;
extern const LabelList lfoModeLabels;
extern const LabelList stepShapeLabels;
extern const LabelList stepModeLabels;
extern const LabelList arpTypeLabels;
extern const LabelList arpSpeedLabels;
extern const LabelList arpChordLabels;
extern const LabelList arpRetriggerLabels;
extern const LabelList arpStepVolumeLabels;
extern const LabelList arpStepNoteLabels;
extern const LabelList filterTypeLabels;
extern const LabelList distortionTypeLabels;
extern const LabelList matrixSourceLabels;
extern const LabelList matrixDestinationLabels;
extern const LabelList octaveLabels;    // knobs in nine steps
extern const LabelList intervalLabels;  // knobs in seven steps
extern const LabelList tempoLabels;     // speeds of tempo-locked LFOs, in beats
extern const LabelList insertTypeMenuLabels;
extern const LabelList masterTypeMenuLabels;

}  // namespace vantoric
