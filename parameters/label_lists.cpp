#include "parameters/label_lists.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "base/lfo_waves.h"
#include "effects/distortion_labels.h"
#include "effects/type_labels.h"
#include "sound/filter_labels.h"
#include "sound/noise_labels.h"
#include "sound/stack_waves.h"

namespace vantoric {

namespace {

// clang-format off
constexpr const char* soundMode[] = {
    "Linear sound", "Dynamic loud", "Dynamic bass", "Bright", "Loudness", "Analog boost", "LowCut 140Hz",
    "HighCut analog", "Scientific", "Transient shaper", "Transient + Bass",
};
constexpr const char* microtune[] = {
    "Well temp.", "Analog light", "Analog medium", "Analog heavy", "Fat tune clean", "Fat tune soft", "Just inton.",
    "432Hz -32cent", "424Hz -66cent", "449Hz +33cent", "457Hz +66cent",
};
constexpr const char* quality[] = {
    "Low CPU", "High quality", "Crossblend PW",
};
constexpr const char* pitchRange[] = {
    "Pitchwheel off", "Pitchwheel +-1", "Pitchwheel +-2", "Pitchwheel +-3", "Pitchwheel +-4", "Pitchwheel +-7",
    "Pitchwheel +-12", "Pitchwheel +-24",
};
constexpr const char* synthesisType[] = {
    "Wavetable", "Hypersaw", "Noise / Fractal", "Sample", "Custom Wave", "Analog",
};
constexpr const char* wavetableWaves[] = {
    "VA Tri Saw", "VA Square Imp", "FM Waveforms", "PD Sine Saw", "PD Sine Square", "PD Parabolids", "PD RES 1",
    "PD RES 2", "RES Filter", "RES Laser", "SNC Saw", "SNC Square", "WT Sine", "WT NSquare", "WT Organ", "WT Bell",
    "WT Combssaw", "FX Bitnoise", "EL DoubleSaw", "EL SquareSaw", "EL Alpha1", "EL Alpha2", "EL NoisySquare",
    "EL NoisySaw", "FM SawAdd", "FM SquareAdd", "FM ImpulseAdd", "FM PrimePairs", "WT Waves1", "WT Waves2",
    "WT Waves3", "WT Waves4", "WT Waves5", "WT Waves6", "WT Waves7", "WT Waves8",
};
constexpr const char* scannedWaves[stackWaveFirst] = {
    "Saw 3x", "Multinoise", "Pulse 6x",
};
constexpr auto superWaves = [] {
    std::array<const char*, stackWaveEnd> all{};
    auto* const behind = std::copy(std::begin(scannedWaves), std::end(scannedWaves), all.begin());
    std::transform(stackWaves.begin(), stackWaves.end(), behind, [](const StackWave& stack) { return stack.label; });
    return all;
}();
constexpr const char* analogWaves[] = {
    "Saw", "Square", "Tri", "Sine", "Half Sine", "Comb", "Pulse Invert", "Pulse PW", "Pulse 1/2", "Pulse 2/5",
    "Pulse 1/3", "Pulse 1/4", "Pulse 1/5", "Pulse 1/6", "Pulse 1/8", "Saw Invert", "Sine Flip", "Comb 2", "Comb 3",
    "Impulse",
};
constexpr const char* loopMode[] = {
    "Single", "Loop",
};
constexpr const char* playMode[] = {
    "Monophonic", "Legato", "Polyphonic 2", "Polyphonic 3", "Polyphonic 4", "Polyphonic 6", "Polyphonic 8",
    "Polyphonic 12", "Polyphonic 16", "Polyphonic 24", "Polyphonic 32", "Polyphonic 48", "Polyphonic 64",
    "Polyphonic 1",
};
constexpr const char* velocityRange[] = {
    "All velocities", "-", "Velocity 0-63", "Velocity 64-128", "-", "Velocity 0-31", "Velocity 32-63",
    "Velocity 64-95", "Velocity 96-128",
};
constexpr const char* keySplit[] = {
    "All keys", "-", "Split low", "Split high", "-", "Octave 0-4", "Octave 5", "Octave 6", "Octave 7-10",
};
constexpr const char* midiChannel[] = {
    "All channels", "Midi chn 1", "Midi chn 2", "Midi chn 3", "Midi chn 4", "Midi chn 5", "Midi chn 6", "Midi chn 7",
    "Midi chn 8", "Midi chn 9", "Midi chn 10", "Midi chn 11", "Midi chn 12", "Midi chn 13", "Midi chn 14",
    "Midi chn 15", "Midi chn 16",
};
constexpr const char* lfoModes[] = {
    "Free", "Free BPM", "Trigger BPM", "Trigger", "Key 25%", "Key 50%", "Key 75%", "Key 100%", "Mono", "Mono BPM",
};
constexpr const char* stepShapes[] = {
    "Rectangle", "Smooth 12%", "Smooth 25%", "Smooth 50%", "Smooth 100%", "Linear to left", "Cubic to left",
    "Analog slow", "Analog medium", "Analog fast", "Analog reverse", "-", "Saw down", "Saw up", "Triangle",
    "Triangle 25%", "Triangle 75%", "Pulse 0%", "Pulse 50%", "Cosine", "Cosine 180", "Decay 1", "Decay 2", "Attack 1",
    "Attack 2", "Cosine /2", "Sine /2", "Sine +-", "-", "FM Sine", "FM Square", "FM Saw down", "FM Saw up", "-",
    "Noise", "Diffusion",
};
constexpr const char* stepModes[] = {
    "Free loop", "Trigger loop", "Mono loop", "Envelope",
};
constexpr const char* arpType[] = {
    "Off", "-", "Up", "Up 2", "Up 3", "Up 4", "Down", "Down 2", "Down 3", "Down 4", "Altup", "Altdown", "Pop", "Pop2",
    "-", "Chordgate", "-", "Stack", "Chord root",
};
constexpr const char* arpSpeed[] = {
    "1/4 BPM", "1/3 BPM", "1/2 BPM", "2/3 BPM", "1 BPM", "4/3 BPM", "3/2 BPM", "2 BPM", "3 BPM", "4 BPM", "6 BPM",
    "8 BPM", "16 BPM",
};
constexpr const char* arpChord[] = {
    "Key", "-", "Triad", "Chord B", "Chord C", "Chord D", "Chord E", "-", "Fifth 2", "Fifth 3", "Fifth 4", "-",
    "Third 2", "Third 3", "Third Oct", "Third 4", "-", "Minor 2", "Minor 3", "Minor 4", "-", "Major 2", "Major 3",
    "Major 4",
};
constexpr const char* arpRetrigger[] = {
    "Song", "Trigger",
};
constexpr const char* arpStepVolume[] = {
    ".", "-", "1", "2", "3", "4", "5", "6", "7", "8", "-", "R", "-", "L", "E", "-", "S",
};
constexpr const char* arpStepNote[] = {
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "16", "17", "19", "24", "-24", "-19", "-17",
    "-16", "-12", "-11", "-10", "-9", "-8", "-7", "-6", "-5", "-4", "-3", "-2", "-1", "-", "\\24", "\\12", "\\7",
    "\\6", "\\5", "\\4", "\\3", "\\2", "\\1", "/1", "/2", "/3", "/4", "/5", "/6", "/7", "/12", "/24", "-", "13", "14",
    "15", "18", "20", "21", "22", "23", "25", "26", "27", "28", "29", "30", "31", "32", "33", "34", "35", "36", "-36",
    "-35", "-34", "-33", "-32", "-31", "-30", "-29", "-28", "-27", "-26", "-25", "-23", "-22", "-21", "-20", "-18",
    "-15", "-14", "-13", "-", "3/4", "15/16",
};
constexpr const char* matrixSource[] = {
    "Off", "-", "Lfo1+-", "Lfo2+-", "Lfo3+-", "Step Lfo", "Step Lfo+-", "Vol Env", "Filt Env", "Aux1 Env", "Aux2 Env",
    "-", "Static", "Random", "Flipflop", "Noise", "-", "Key", "Velocity", "Modwheel", "Pitchwh.", "Afterto.",
    "KeySat.", "Breath", "Foot", "MainVol", "Express.", "CC16", "CC17", "CC18", "CC19", "Hold", "-", "VoiceNr",
    "NumKeys", "-", "Impulse", "Decay8ms", "Decay16ms", "Decay32ms", "Decay64ms", "Decay0.1s", "Decay0.2s",
    "Decay0.5s", "Decay1s", "Decay2s", "Decay4s", "Decay8s", "Decay16s", "-", "Lfo1+", "Lfo2+", "Lfo3+", "-",
    "Sine 1/64Hz", "Sine 1/32Hz", "Sine 1/16Hz", "Sine 1/8Hz", "Sine 1/4Hz", "Sine 1/2Hz", "Sine 1Hz", "Sine 1.4Hz",
    "Sine 2Hz", "Sine 2.8Hz", "Sine 4Hz", "Sine 5.6Hz", "Sine 8Hz", "Sine 11Hz", "Sine 16Hz", "Sine 32Hz",
    "Sine 64Hz",
};
constexpr const char* matrixDestination[] = {
    "Off", "-", "Volume", "Pitch", "-", "Oct1", "Oct2", "Oct3", "Interval1", "Interval2", "Interval3", "Semi1",
    "Semi2", "Semi3", "Fine1", "Fine2", "Fine3", "Pitch1", "Pitch2", "Pitch3", "Timbre1", "Timbre2", "Timbre3", "PW1",
    "PW2", "PW3", "FM2", "FM3", "OscVol1", "OscVol2", "OscVol3", "-", "Cutoff1", "Cutoff2", "Reso1", "Reso2",
    "Drive1", "Drive2", "FiltVol1", "FiltVol2", "Pan1", "Pan2", "Analog", "Ringmod", "-", "Lfo1Speed", "Lfo2Speed",
    "Lfo3Speed", "-", "Matrix1", "Matrix2", "Matrix3", "Matrix4", "Matrix5", "Matrix6", "Matrix7", "Matrix8",
    "Matrix9", "Matrix10", "-", "Vol A", "Vol D", "Vol S", "Vol R", "Filt A", "Filt D", "Filt S", "Filt R", "Aux1 A",
    "Aux1 D", "Aux1 S", "Aux1 R", "Aux2 A", "Aux2 D", "Aux2 S", "Aux2 R", "-", "FilterEnv1", "FilterEnv2", "-",
    "Fine", "Start1", "Start2", "Start3", "Mix1", "Mix2", "Mix3", "-", "FX Mix", "FX Par1", "FX Par2", "FX Par3",
    "FX Par4", "-", "PitchOct1", "PitchOct2", "PitchOct3",
};
constexpr const char* octave[] = {
    "-4", "-3", "-2", "-1", "0", "1", "2", "3", "4",
};
constexpr const char* interval[] = {
    "1", "6/5", "5/4", "4/3", "3/2", "5/3", "7/4",
};
constexpr const char* tempo[] = {
    "1/32", "1/16", "1/8", "1/4", "1/2", "3/4", "1", "3/2", "2", "3", "4", "6", "8", "16",
};
// clang-format on

// "C-1" to "G9": the octave number rises at each C.
constexpr int keyCount = 128;

constexpr std::array<std::array<char, 5>, keyCount> keyTexts = [] {
    constexpr const char* tones[] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};
    std::array<std::array<char, 5>, keyCount> texts{};
    for (int key = 0; key < keyCount; ++key) {
        char* out = texts[static_cast<std::size_t>(key)].data();
        for (const char* tone = tones[key % 12]; *tone != 0; ++tone) *out++ = *tone;
        const int number = key / 12 - 1;
        if (number < 0) *out++ = '-';
        *out = static_cast<char>('0' + (number < 0 ? 1 : number));
    }
    return texts;
}();

constexpr std::array<const char*, keyCount> keyNames = [] {
    std::array<const char*, keyCount> names{};
    for (std::size_t key = 0; key < keyCount; ++key) names[key] = keyTexts[key].data();
    return names;
}();

}  // namespace

constinit const LabelList soundModeLabels = soundMode;
constinit const LabelList microtuneLabels = microtune;
constinit const LabelList qualityLabels = quality;
constinit const LabelList pitchRangeLabels = pitchRange;
constinit const LabelList synthesisTypeLabels = synthesisType;
constinit const LabelList wavetableWaveLabels = wavetableWaves;
constinit const LabelList superWaveLabels = superWaves;
constinit const LabelList noiseTypeLabels = noiseLabels;
constinit const LabelList analogWaveLabels = analogWaves;
constinit const LabelList loopModeLabels = loopMode;
constinit const LabelList keyNameLabels = keyNames;
constinit const LabelList playModeLabels = playMode;
constinit const LabelList velocityRangeLabels = velocityRange;
constinit const LabelList keySplitLabels = keySplit;
constinit const LabelList midiChannelLabels = midiChannel;
constinit const LabelList lfoWaveLabels = lfo::waveLabels;
constinit const LabelList lfoModeLabels = lfoModes;
constinit const LabelList stepShapeLabels = stepShapes;
constinit const LabelList stepModeLabels = stepModes;
constinit const LabelList arpTypeLabels = arpType;
constinit const LabelList arpSpeedLabels = arpSpeed;
constinit const LabelList arpChordLabels = arpChord;
constinit const LabelList arpRetriggerLabels = arpRetrigger;
constinit const LabelList arpStepVolumeLabels = arpStepVolume;
constinit const LabelList arpStepNoteLabels = arpStepNote;
constinit const LabelList filterTypeLabels = filterLabels;
constinit const LabelList distortionTypeLabels = distortionLabels;
constinit const LabelList matrixSourceLabels = matrixSource;
constinit const LabelList matrixDestinationLabels = matrixDestination;
constinit const LabelList octaveLabels = octave;
constinit const LabelList intervalLabels = interval;
constinit const LabelList tempoLabels = tempo;
constinit const LabelList insertTypeMenuLabels = insertTypeLabels;
constinit const LabelList masterTypeMenuLabels = masterTypeLabels;

}  // namespace vantoric
