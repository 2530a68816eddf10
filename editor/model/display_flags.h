// Which displays are to be drawn anew.
#pragma once

#include <array>

namespace vantoric {

struct DisplayFlags {
    std::array<bool, 3> wave{};
    std::array<bool, 2> filter{};
    bool envelope = false;
    bool lfo = false;

    // A parameter of the layer on show has changed, by its number; those that feed no display set nothing.
    void noteParameter(int number);
    // All, as after a patch or another layer.
    void noteAll();
};

}  // namespace vantoric
