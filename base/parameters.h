// Parameter numbers by name. Numbers below 24 are global; the others are numbers within a layer, whose
// host index is the number + 300 x layer. A family (three oscillators, sixteen steps ...) is named by its
// first member: the others follow it directly.
#pragma once

namespace vantoric {

inline constexpr int parameterCount = 1224;       // all that the host sees
inline constexpr int globalParameterCount = 24;   // numbers 0 to 23
inline constexpr int layerParameterStride = 300;  // host indices from one layer to the next
inline constexpr int layerParameterEnd = 324;     // numbers 24 to 323 belong to a layer
inline constexpr int storedMatrixSlots = 16;      // of a layer; the sixteenth is kept and cleaned, and neither runs nor shows

namespace parameter {

enum Number : int {
    Volume = 0,
    Modwheel = 1,
    EqLow = 2,
    EqMid = 3,
    EqHigh = 4,
    FxMaType = 5,
    FxMaMix = 6,
    FxMaPar1 = 7,  // to FxMaPar4
    Layer1On = 11,
    Layer2On = 12,
    Layer3On = 13,
    Layer4On = 14,
    SoundMod = 19,
    Microtun = 20,
    Quality = 21,
    PitchWhl = 22,
    Oct1 = 24,       // to Oct3
    Interv1 = 27,    // to Interv3
    Detune1 = 30,    // to Detune3
    Timbre1 = 33,    // to Timbre3
    Pw1 = 36,        // to Pw3
    Vol1 = 39,       // to Vol3
    On1 = 42,        // to On3
    FiltMix1 = 45,   // to FiltMix3
    Start1 = 48,     // to Start3
    KeyFol1 = 51,    // to KeyFol3
    KeyStar1 = 54,   // to KeyStar3
    KeyEnd1 = 57,    // to KeyEnd3
    SynType1 = 60,   // to SynType3
    WTWave1 = 63,    // to WTWave3
    SSWave1 = 66,    // to SSWave3
    NoiWave1 = 69,   // to NoiWave3
    Semi1 = 72,      // to Semi3
    Pitch1 = 75,     // to Pitch3
    OscAnal1 = 78,   // to OscAnal3
    LoopSta1 = 81,   // to LoopSta3
    LoopEnd1 = 84,   // to LoopEnd3
    LoopMod1 = 87,   // to LoopMod3
    PitchOct1 = 90,  // to PitchOct3
    Sync1 = 93,      // to Sync2
    Fm1 = 95,        // to Fm2
    Cutoff1 = 97,    // to Cutoff2
    Reso1 = 99,      // to Reso2
    FilVol1 = 101,   // to FilVol2
    FilPan1 = 103,   // to FilPan2
    Drive1 = 105,    // to Drive2
    FilKey1 = 107,   // to FilKey2
    FilEnv1 = 109,   // to FilEnv2
    FilType1 = 111,  // to FilType2
    DisType1 = 113,  // to DisType2
    FilAnalo = 115,
    Ringmod = 116,
    FilSerial = 117,
    FilLink = 118,
    FilBypas = 119,
    LayerVol = 120,
    FxInType = 121,
    FxInMix = 122,
    FxInPar1 = 123,  // to FxInPar4
    MidiSpli = 127,
    PlayMode = 128,
    GlideSpd = 129,
    VelRange = 130,
    Split = 131,
    Pitch = 132,
    Fine = 133,
    AnaWave1 = 134,  // to AnaWave3
    LfoSpd1 = 137,   // to LfoSpd3
    LfoWave1 = 140,  // to LfoWave3
    LfoPhas1 = 143,  // to LfoPhas3
    LfoMode1 = 146,  // to LfoMode3
    LfoFade1 = 149,  // to LfoFade3
    StepSped = 152,
    StepSmoo = 153,
    StepShap = 154,
    StepMode = 155,
    StepLoop = 157,
    Steps = 158,
    Step1 = 159,  // to Step16
    AttVol = 175,
    AttFil = 176,
    AttAux1 = 177,
    AttAux2 = 178,
    HoldVol = 179,
    HoldFil = 180,
    HoldAux1 = 181,
    HoldAux2 = 182,
    DecVol = 183,
    DecFil = 184,
    DecAux1 = 185,
    DecAux2 = 186,
    SusVol = 187,
    SusFil = 188,
    SusAux1 = 189,
    SusAux2 = 190,
    RelVol = 191,
    RelFil = 192,
    RelAux1 = 193,
    RelAux2 = 194,
    ShapVol = 195,
    ShapFil = 196,
    ShapAux1 = 197,
    ShapAux2 = 198,
    VelVol = 199,
    VelFil = 200,
    VelAux1 = 201,
    VelAux2 = 202,
    ArpSpeed = 203,
    ArpType = 204,
    ArpMode = 205,
    ArpLoop = 206,
    ArpRetri = 207,
    ArpRange = 208,
    ArpChord = 209,
    ArpSwing = 210,
    ArpStp1 = 211,    // to ArpStp32
    ArpVol1 = 243,    // to ArpVol32
    MatSrc1 = 275,    // to MatSrc16
    MatDst1 = 291,    // to MatDst16
    MatVal1 = 307,    // to MatVal16
    FxIn2Type = 269,  // the second insert lives in the slots named ArpVol27 to ArpVol32
    FxIn2Mix = 270,
    FxIn2Par1 = 271,  // to FxIn2Par4
};

}  // namespace parameter

// The number within a layer of a host index (24 to 323), or the index itself below 24.
constexpr int numberOfParameter(int index) {
    return index < globalParameterCount ? index : (index - globalParameterCount) % layerParameterStride + globalParameterCount;
}

// The host index of number `n` in layer 0 to 3.
constexpr int hostIndex(int n, int layer) { return n + layerParameterStride * layer; }

}  // namespace vantoric
