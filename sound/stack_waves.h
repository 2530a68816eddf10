// The detuned stacks: the entries of the SSWave list from stackWaveFirst on.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "sound/wave_store.h"

namespace vantoric {

inline constexpr int stackWaveFirst = 3;  // SSWave entries from here on have kernels of their own
inline constexpr int stackWaveEnd = 12;

// What all voices of a stack read: one cycle of the WTWave list, at all levels.
struct StackWave {
    static constexpr int computed = -1;  // no wave: the voices are computed

    const char* label;
    int wave, frame;
};

// By SSWave - stackWaveFirst. Which kernel plays each is told by `stackKernels`, in the same order.
inline constexpr std::array<StackWave, stackWaveEnd - stackWaveFirst> stackWaves = {{
    {"Hypersaw Vir 3x", vaTriangleSaw, 63},
    {"Hypersaw Vir 5x", vaTriangleSaw, 63},
    {"Hypersaw Vir 7x", vaTriangleSaw, 63},
    {"Hypersaw Vir 9x", vaTriangleSaw, 63},
    {"Hypersquare 9x", vaSquareImpulse, 0},
    {"Hypernoise 9x", noNoisySaw, 127},
    {"Supersaw JP", StackWave::computed, 0},
    {"Supersaw clean", vaTriangleSaw, 63},
    {"Supernoise", noNoisySaw, 127},
}};

// The entry of the SSWave list that bears a label; 0, which no stack has, for none.
constexpr int stackLabelled(std::string_view label) {
    for (std::size_t i = 0; i < stackWaves.size(); ++i)
        if (stackWaves[i].label == label) return stackWaveFirst + static_cast<int>(i);
    return 0;
}

}  // namespace vantoric
