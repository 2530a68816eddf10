#include "effects/type_table.h"

#include "base/numbers.h"

namespace vantoric {

namespace {

constexpr std::array<EffectType, effectTypeCount> table = {{
    /*  0 */ {"off", EffectFamily::off, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /*  1 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /*  2 */ {"Reverb medium", EffectFamily::reverb, 11, {0.33f, 0.9f, 0.35f, 0.4f, 0.25f}},
    /*  3 */ {"Reverb large", EffectFamily::reverb, 4, {0.25f, 1.0f, 0.33f, 0.5f, 0.25f}},
    /*  4 */ {"Reverb small", EffectFamily::reverb, 12, {0.4f, 0.5f, 0.5f, 0.33f, 0.25f}},
    /*  5 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /*  6 */ {"Delay", EffectFamily::delay, 0, {0.5f, 0.7f, 0.5f, 0.25f, 0.5f}},
    /*  7 */ {"PingPong", EffectFamily::delay, 2, {0.5f, 0.7f, 0.66f, 0.7f, 0.5f}},
    /*  8 */ {"PingPong Band", EffectFamily::delay, 1, {0.5f, 0.5f, 0.5f, 0.4f, 0.33f}},
    /*  9 */ {"Multitap", EffectFamily::delay, 3, {0.5f, 0.5f, 0.5f, 0.5f, 0.35f}},
    /* 10 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 11 */ {"Chorus", EffectFamily::modulation, 7, {0.5f, 0.2f, 0.16f, 0.5f, 0.5f}},
    /* 12 */ {"Ensemble", EffectFamily::modulation, 8, {1.0f, 0.3f, 0.25f, 0.5f, 0.5f}},
    /* 13 */ {"Phaser", EffectFamily::modulation, 9, {1.0f, 0.25f, 0.85f, 0.45f, 0.75f}},
    /* 14 */ {"Flanger", EffectFamily::modulation, 2, {1.0f, 0.25f, 1.0f, 0.5f, 0.98f}},
    /* 15 */ {"Rotary", EffectFamily::modulation, 3, {1.0f, 0.5f, 0.66f, 0.5f, 0.5f}},
    /* 16 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 17 */ {"Trancegate", EffectFamily::dynamics, 1, {1.0f, 0.08f, 0.5f, 0.6f, 0.0f}},
    /* 18 */ {"Compressor", EffectFamily::dynamics, 0, {1.0f, 0.5f, 0.0f, 0.2f, 1.0f}},
    /* 19 */ {"Tube Amp", EffectFamily::drive, 2, {1.0f, 1.0f, 0.5f, 0.5f, 0.5f}},
    /* 20 */ {"Equalizer", EffectFamily::equalizer, 0, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 21 */ {"Surround encode", EffectFamily::dynamics, 2, {1.0f, 1.0f, 0.5f, 0.5f, 0.5f}},
    /* 22 */ {"Vocoder SVC linear", EffectFamily::vocoder, 5, {1.0f, 0.5f, 0.0f, 0.5f, 0.5f}},
    /* 23 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 24 */ {"Reverb Infinity", EffectFamily::reverb, 6, {0.25f, 0.75f, 0.25f, 0.5f, 0.8f}},
    /* 25 */ {"Reverb Big", EffectFamily::reverb, 7, {0.25f, 0.5f, 0.25f, 0.5f, 0.7f}},
    /* 26 */ {"Reverb Glass", EffectFamily::reverb, 8, {0.3f, 0.5f, 0.75f, 0.5f, 0.9f}},
    /* 27 */ {"Reverb Plate", EffectFamily::reverb, 9, {0.25f, 0.5f, 0.5f, 0.5f, 0.7f}},
    /* 28 */ {"Reverb Real", EffectFamily::reverb, 10, {0.25f, 0.66f, 0.0f, 0.0f, 0.5f}},
    /* 29 */ {"Reverb Hall old", EffectFamily::reverb, 0, {0.33f, 1.0f, 0.0f, 0.4f, 0.3f}},
    /* 30 */ {"Reverb Cathedral old", EffectFamily::reverb, 1, {0.33f, 1.0f, 0.0f, 0.5f, 0.3f}},
    /* 31 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 32 */ {"Smart Unison", EffectFamily::modulation, 13, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 33 */ {"Phaser FB", EffectFamily::modulation, 10, {1.0f, 0.5f, 0.5f, 0.5f, 0.88f}},
    /* 34 */ {"Phaser Stereo ", EffectFamily::modulation, 11, {1.0f, 0.5f, 0.5f, 0.5f, 0.88f}},
    /* 35 */ {"Vibrato", EffectFamily::modulation, 14, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 36 */ {"Vibrato Stereo", EffectFamily::modulation, 15, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 37 */ {"Tremolo", EffectFamily::modulation, 16, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 38 */ {"Tremolo Stereo", EffectFamily::modulation, 17, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 39 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 40 */ {"Vocoder SVC", EffectFamily::vocoder, 2, {1.0f, 0.5f, 0.0f, 0.0f, 0.0f}},
    /* 41 */ {"Vocoder Pro", EffectFamily::vocoder, 4, {1.0f, 0.5f, 0.0f, 0.0f, 0.0f}},
    /* 42 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 43 */ {"Delay wide", EffectFamily::delay, 11, {0.4f, 0.5f, 0.5f, 0.5f, 0.25f}},
    /* 44 */ {"Delay Fat", EffectFamily::delay, 9, {0.5f, 0.5f, 0.25f, 0.125f, 0.5f}},
    /* 45 */ {"Delay Diffuse", EffectFamily::delay, 6, {0.4f, 0.5f, 0.5f, 0.0f, 0.5f}},
    /* 46 */ {"Delay Dual", EffectFamily::delay, 5, {0.4f, 0.7f, 0.5f, 0.5f, 0.5f}},
    /* 47 */ {"Tape Delay", EffectFamily::delay, 7, {0.5f, 0.68f, 0.5f, 0.4f, 0.35f}},
    /* 48 */ {"Echo", EffectFamily::delay, 4, {0.3f, 0.495f, 0.505f, 0.5f, 0.5f}},
    /* 49 */ {"Resonator", EffectFamily::delay, 8, {0.4f, 0.25f, 0.95f, 0.25f, 0.25f}},
    /* 50 */ {"Reflections", EffectFamily::delay, 10, {0.5f, 0.3f, 1.0f, 0.25f, 0.5f}},
    /* 51 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 52 */ {"Saturate", EffectFamily::drive, 24, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 53 */ {"Soft Clip", EffectFamily::drive, 14, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 54 */ {"Hard Clip", EffectFamily::drive, 21, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 55 */ {"Recitify", EffectFamily::drive, 16, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 56 */ {"Bitcrush", EffectFamily::drive, 22, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 57 */ {"Warp", EffectFamily::drive, 17, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 58 */ {"Waveshape", EffectFamily::drive, 18, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 59 */ {"Ripple", EffectFamily::drive, 19, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 60 */ {"Amp Sim", EffectFamily::drive, 12, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 61 */ {"Multiband Dist", EffectFamily::drive, 25, {1.0f, 0.75f, 0.5f, 0.5f, 0.5f}},
    /* 62 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 63 */ {"Degrader", EffectFamily::degrade, 6, {1.0f, 0.63f, 0.5f, 0.5f, 0.5f}},
    /* 64 */ {"Noise", EffectFamily::drive, 13, {1.0f, 0.2f, 0.0f, 0.0f, 0.0f}},
    /* 65 */ {"Chorus 2", EffectFamily::modulation, 18, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 66 */ {"Stereo Flanger", EffectFamily::modulation, 12, {1.0f, 0.33f, 0.5f, 0.7f, 0.5f}},
    /* 67 */ {"Surround Pan", EffectFamily::dynamics, 3, {1.0f, 0.045f, 0.5f, 0.5f, 0.5f}},
    /* 68 */ {"Stereo Width", EffectFamily::dynamics, 4, {1.0f, 0.25f, 0.5f, 0.5f, 0.5f}},
    /* 69 */ {"Laser Punch", EffectFamily::reverb, 13, {1.0f, 0.6f, 0.6f, 0.5f, 0.5f}},
    /* 70 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 71 */ {"Reverb Gated", EffectFamily::delay, 12, {0.35f, 0.7f, 1.0f, 0.5f, 0.25f}},
    /* 72 */ {"Reverb Gated Echo", EffectFamily::delay, 13, {0.35f, 0.7f, 0.8f, 0.6f, 0.25f}},
    /* 73 */ {"Reverb Reverse", EffectFamily::delay, 14, {0.4f, 1.0f, 1.0f, 0.25f, 0.2f}},
    /* 74 */ {"-", EffectFamily::separator, 0, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}},
    /* 75 */ {"Hyper", EffectFamily::modulation, 19, {1.0f, 0.5f, 0.5f, 0.167f, 1.0f}},
    /* 76 */ {"Haas Effect", EffectFamily::modulation, 20, {1.0f, 0.5f, 0.0f, 0.5f, 0.5f}},
}};

}  // namespace

int legalEffectType(int type) { return type >= 0 && type < effectTypeCount ? type : 0; }

const EffectType& effectType(int type) { return table[legalEffectType(type)]; }

int typeFromValue(float value) { return legalEffectType(listIndex(value)); }

int masterTypeFromValue(float value) {
    const int type = typeFromValue(value);
    return type == trancegateType ? 0 : type;
}

float extremeValue(float base, float lowest, float highest) {
    return clampUnit(highest - base > base - lowest ? highest : lowest);
}

}  // namespace vantoric
