#include "factory/waves/makers.h"

namespace vantoric::waves {

namespace {

// Where a number of frames or a frame matters to the instrument: its analog rows take frames 0 and 63 of
// the triangle to saw, frames 0, 25, 43, 64, 77, 85 and 96 of the square to impulse, 1 and 2 of the FM
// waveforms, 0 of the sine, 1 of the comb saw, 8 of the bit noise, 64 of the second alpha and 0 of the
// last collection; the noise stacks take frame 127 of the noisy saw.
constexpr Recipe table[] = {
    {"VA_Triangle_Saw", triangleSawFrames, Kind::morph, triangleSaw},
    {"VA_Square_Impulse", squareImpulseFrames, Kind::morph, squareImpulse},
    {"FM_Waveforms", fmWaveformFrames, Kind::set, fmWaveforms},
    {"PD_Sine_Saw", phaseFrames, Kind::morph, pdSineSaw},
    {"PD_Sine_Square", phaseFrames, Kind::morph, pdSineSquare},
    {"PD_Parabol_Double", phaseFrames, Kind::morph, pdParabolDouble},
    {"PD_RES_Asym", resonanceFrames, Kind::morph, pdResAsym},
    {"PD_RES_Sym", resonanceFrames, Kind::morph, pdResSym},
    {"RES_Analogfilter", filterFrames, Kind::morph, analogFilter},
    {"RES_Laser", laserFrames, Kind::morph, laser},
    {"SNC_Saw", syncFrames, Kind::morph, syncSaw},
    {"SNC_Square", syncFrames, Kind::morph, syncSquare},
    {"WT_Sine", sineFrames, Kind::morph, foldedSine},
    {"WT_NSquare", nSquareFrames, Kind::morph, nSquare},
    {"WT_Organ", organFrames, Kind::morph, organ},
    {"WT_Bell", bellFrames, Kind::morph, bell},
    {"WT_Combsaw", combFrames, Kind::morph, combSaw},
    {"FX_Bitnoise", bitFrames, Kind::morph, bitNoise},
    {"EL_DoubleSaw", electricFrames, Kind::morph, doubleSaw},
    {"EL_SquareSaw", electricFrames, Kind::morph, squareSaw},
    {"EL_Alpha1", electricFrames, Kind::morph, alpha1},
    {"EL_Alpha2", alpha2Frames, Kind::morph, alpha2},
    {"NO_NoisySquare", noisyFrames, Kind::morph, noisySquare},
    {"NO_NoisySaw", noisyFrames, Kind::morph, noisySaw},
    {"FM_SawAdd", additiveFrames, Kind::morph, fmSawAdd},
    {"FM_SquareAdd", additiveFrames, Kind::morph, fmSquareAdd},
    {"FM_ImpulseAdd", additiveFrames, Kind::morph, fmImpulseAdd},
    {"FM_PrimePairs", primeFrames, Kind::morph, fmPrimePairs},
    {"WT_Waves1", 64, Kind::set, reedsAndPipes},
    {"WT_Waves2", 64, Kind::morph, vowels},
    {"WT_Waves3", 32, Kind::set, stairs},
    {"WT_Waves4", 32, Kind::set, chordsOfPartials},
    {"WT_Waves5", 64, Kind::set, ratios},
    {"WT_Waves6", 32, Kind::set, strings},
    {"WT_Waves7", 32, Kind::set, shapers},
    {"WT_Waves8", 16, Kind::set, impulses},
    {"SS_3Saws", scanFrames, Kind::scan, threeSaws},
    {"SS_NoisySaws", scanFrames, Kind::scan, noisySaws},
    {"SS_6Pulses", scanFrames, Kind::scan, sixPulses},
};

}  // namespace

std::span<const Recipe> recipes() { return table; }

}  // namespace vantoric::waves
