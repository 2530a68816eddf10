// Oscillator kernels that play a sample, and what a note does to a sample before it plays. Audio thread.
//
// `phase` is here an unsigned position in the sample with 13 fraction bits, so 524287 samples are the reach.
#pragma once

#include <algorithm>
#include <cstdint>

#include "samples/sample.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace vantoric {

namespace kernels {

KernelFunction sampleRead;      // six-point read, linear in the two lowest copies; no FM
KernelFunction sampleFmPlain;   // FM and plain sync, linear, one level a call
KernelFunction sampleFmLevels;  // FM and plain sync, linear, level per sample

}  // namespace kernels

// What the voice hands to chooseKernel.
inline constexpr SampleKernels sampleKernels{kernels::sampleRead, kernels::sampleFmPlain, kernels::sampleFmLevels};

// Step of the position per output sample for an increment: at an increment of 130.81277 Hz the sample plays
// at its recorded speed. Held to 31 bits.
std::uint32_t sampleStep(std::uint32_t sampleRate, std::uint32_t increment);

// Copy that is read at a step of the position, and by an effective step of the oscillator's increment.
inline int sampleLevel(std::uint32_t step) { return std::min<int>(mipMap[(step >> 13) & 2047], sampleLevels - 1); }
inline int sampleFmLevel(std::uint32_t effective) {
    return std::min<int>(mipMap[(std::min<std::uint32_t>(effective, 127) * 3) >> 4], sampleLevels - 1);
}

// Writes the 8 guard samples behind each level, which the kernels read without a test: from the loop's start
// on for a looped sample, else the last sample again. For every note-on. Does nothing to an empty sample.
void writeSampleGuards(Sample& sample, bool loop);

}  // namespace vantoric
