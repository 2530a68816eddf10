// The makers of the banks' frames, by family. Each gives the cycle of one frame, counted from 0.
#pragma once

#include "factory/waves/bank.h"

namespace vantoric::waves {

// Frames of each bank. The instrument counts on some of them; see the table in recipes.cpp.
inline constexpr int triangleSawFrames = 64, squareImpulseFrames = 128, fmWaveformFrames = 8, phaseFrames = 64,
                     filterFrames = 128, resonanceFrames = 128, laserFrames = 128, syncFrames = 128, sineFrames = 32,
                     nSquareFrames = 64, organFrames = 64, bellFrames = 64, combFrames = 32, bitFrames = 64, electricFrames = 64,
                     alpha2Frames = 128, noisyFrames = 128, additiveFrames = 64, primeFrames = 128, scanFrames = 128;

// Analog shapes (analog.cpp).
Spectrum triangleSaw(Workshop&, int frame);
Spectrum squareImpulse(Workshop&, int frame);
Spectrum doubleSaw(Workshop&, int frame);
Spectrum squareSaw(Workshop&, int frame);
Spectrum alpha1(Workshop&, int frame);
Spectrum alpha2(Workshop&, int frame);
Spectrum noisySquare(Workshop&, int frame);
Spectrum noisySaw(Workshop&, int frame);
Spectrum combSaw(Workshop&, int frame);

// Width of the pulse of a "square to impulse" frame, as a part of the cycle.
double pulseWidth(int frame);

// Phase distortion, resonance, hard sync (phase.cpp).
Spectrum pdSineSaw(Workshop&, int frame);
Spectrum pdSineSquare(Workshop&, int frame);
Spectrum pdParabolDouble(Workshop&, int frame);
Spectrum pdResAsym(Workshop&, int frame);
Spectrum pdResSym(Workshop&, int frame);
Spectrum analogFilter(Workshop&, int frame);
Spectrum laser(Workshop&, int frame);
Spectrum syncSaw(Workshop&, int frame);
Spectrum syncSquare(Workshop&, int frame);

// Frequency modulation and additive (additive.cpp).
Spectrum fmWaveforms(Workshop&, int frame);
Spectrum fmSawAdd(Workshop&, int frame);
Spectrum fmSquareAdd(Workshop&, int frame);
Spectrum fmImpulseAdd(Workshop&, int frame);
Spectrum fmPrimePairs(Workshop&, int frame);
Spectrum foldedSine(Workshop&, int frame);
Spectrum nSquare(Workshop&, int frame);
Spectrum organ(Workshop&, int frame);
Spectrum bell(Workshop&, int frame);
Spectrum bitNoise(Workshop&, int frame);

// Collections of single cycles (collections.cpp).
Spectrum reedsAndPipes(Workshop&, int frame);
Spectrum vowels(Workshop&, int frame);
Spectrum stairs(Workshop&, int frame);
Spectrum chordsOfPartials(Workshop&, int frame);
Spectrum ratios(Workshop&, int frame);
Spectrum strings(Workshop&, int frame);
Spectrum shapers(Workshop&, int frame);
Spectrum impulses(Workshop&, int frame);

// Sounds of several voices, scanned through (scans.cpp).
Spectrum threeSaws(Workshop&, int frame);
Spectrum noisySaws(Workshop&, int frame);
Spectrum sixPulses(Workshop&, int frame);

// Where a frame stands in its bank, 0 for the first to 1 for the last.
inline double position(int frame, int frames) { return static_cast<double>(frame) / (frames - 1); }

}  // namespace vantoric::waves
